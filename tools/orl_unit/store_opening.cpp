#include "tools/orl_unit/store_opening.h"

#include "tools/orl_unit/file_store.h"
#include "tools/orl_unit/memory_store.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::unit {
namespace {

bool isMemory(const std::filesystem::path& path) {
    return path == std::filesystem::path(kMemoryStorePath);
}

}  // namespace

StoreStatus createStore(StorageContext& context,
                        const std::filesystem::path& path,
                        const StoreFormat& format) {
    if (!isMemory(path)) {
        return createFileStore(context, path, format);
    }
    if (context.memoryStore) {
        return {StoreFault::kAlreadyExists, "exists already"};
    }
    context.memoryStore = std::make_shared<MemoryStore>(format);
    return {};
}

StoreStatus openStore(StorageContext& context, const std::filesystem::path& path) {
    if (isMemory(path)) {
        context.store = context.memoryStore;
        return context.store ? StoreStatus{}
                             : StoreStatus{StoreFault::kCannotFind, "does not exist"};
    }
    std::unique_ptr<RecordStore> store;
    StoreStatus status = openFileStore(context, path, store);
    context.store = std::move(store);
    return status;
}

StoreStatus eraseStore(StorageContext& context, const std::filesystem::path& path) {
    if (!isMemory(path)) {
        return eraseFileStore(context, path);
    }
    const bool existed = context.memoryStore != nullptr;
    context.memoryStore.reset();
    return existed ? StoreStatus{} : StoreStatus{StoreFault::kCannotFind, "does not exist"};
}

}  // namespace orl::unit
