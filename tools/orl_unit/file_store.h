#pragma once

// Record stores in files, as far as this build has them: file_store_sqlite.cpp where SQLite is
// available, file_store_absent.cpp elsewhere, where every call fails.

#include <filesystem>
#include <memory>

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/storage_context.h"

namespace orl::unit {

// True when stores in files are built in.
bool fileStoresAvailable();

// Makes an empty store; AlreadyExists when there is one.
StoreStatus createFileStore(const StorageContext& context,
                            const std::filesystem::path& path,
                            const StoreFormat& format);

// Opens a store that is there, and checks that it is a sound one of this program.
StoreStatus openFileStore(const StorageContext& context,
                          const std::filesystem::path& path,
                          std::unique_ptr<RecordStore>& store);

// Removes the file with all its records. Only a file that is a store is removed.
StoreStatus eraseFileStore(const StorageContext& context, const std::filesystem::path& path);

}  // namespace orl::unit
