#include "tools/orl_unit/file_store.h"

namespace orl::unit {
namespace {

StoreStatus noFileStores() {
    return {StoreFault::kCannotOpen,
            "is a file, and this build keeps stores in memory only (:memory:)"};
}

}  // namespace

bool fileStoresAvailable() {
    return false;
}

StoreStatus createFileStore(const StorageContext& /*context*/,
                            const std::filesystem::path& /*path*/,
                            const StoreFormat& /*format*/) {
    return noFileStores();
}

StoreStatus openFileStore(const StorageContext& /*context*/,
                          const std::filesystem::path& /*path*/,
                          std::unique_ptr<RecordStore>& /*store*/) {
    return noFileStores();
}

StoreStatus eraseFileStore(const StorageContext& /*context*/,
                           const std::filesystem::path& /*path*/) {
    return noFileStores();
}

}  // namespace orl::unit
