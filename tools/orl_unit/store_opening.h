#pragma once

// Makes and opens the store of a storage context by its path: a file, or kMemoryStorePath.

#include <filesystem>

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/storage_context.h"

namespace orl::unit {

// Makes an empty store of the given format. One in memory lives in the context.
StoreStatus createStore(StorageContext& context,
                        const std::filesystem::path& path,
                        const StoreFormat& format);

// Opens the store at the path as context.store.
StoreStatus openStore(StorageContext& context, const std::filesystem::path& path);

// Removes the store at the path with all its records.
StoreStatus eraseStore(StorageContext& context, const std::filesystem::path& path);

}  // namespace orl::unit
