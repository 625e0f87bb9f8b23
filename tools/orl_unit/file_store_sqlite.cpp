#include <system_error>

#include "tools/orl_unit/file_store.h"
#include "tools/orl_unit/sqlite_store.h"

namespace orl::unit {
namespace {

SqliteStoreOptions optionsOf(const StorageContext& context) {
    return {context.readOnly, context.lockWait};
}

}  // namespace

bool fileStoresAvailable() {
    return true;
}

StoreStatus createFileStore(const StorageContext& context,
                            const std::filesystem::path& path,
                            const StoreFormat& format) {
    return SqliteStore::create(path, format, optionsOf(context));
}

StoreStatus openFileStore(const StorageContext& context,
                          const std::filesystem::path& path,
                          std::unique_ptr<RecordStore>& store) {
    return SqliteStore::open(path, optionsOf(context), store);
}

StoreStatus eraseFileStore(const StorageContext& context, const std::filesystem::path& path) {
    std::unique_ptr<RecordStore> store;
    StoreStatus status = openFileStore(context, path, store);
    std::size_t removedCount = 0;
    if (status.ok()) {
        // Removing overwrites the records' bytes; removing the file alone would not.
        status = store->removeRecords({}, removedCount);
    }
    store.reset();
    std::error_code failure;
    if (status.ok() && !std::filesystem::remove(path, failure)) {
        return {StoreFault::kWriteFailed, "cannot be removed"};
    }
    return status;
}

}  // namespace orl::unit
