#pragma once

// What every storage routine does around its own work: find the context and the open store, keep a
// failure for the host, and stop exceptions.

#include <exception>
#include <new>
#include <utility>

#include "tools/orl_unit/storage_context.h"
#include "tools/orl_unit/storage_result.h"

namespace orl::unit {

inline StorageContext* contextOf(const WINBIO_PIPELINE* pipeline) {
    return static_cast<StorageContext*>(pipeline->StorageContext);
}

// Keeps a failure for the host and turns it into the routine's result.
inline HRESULT resultOf(StorageContext& context, StoreStatus status) {
    const HRESULT result = storageResult(status.fault);
    if (!status.ok()) {
        context.lastFault = std::move(status);
    }
    return result;
}

// Runs a routine's body, which gets the context; stops every exception.
template <typename Body>
HRESULT withContext(PWINBIO_PIPELINE pipeline, Body&& body) noexcept {
    if (pipeline == nullptr) {
        return E_POINTER;
    }
    StorageContext* const context = contextOf(pipeline);
    if (context == nullptr) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    try {
        return body(*context);
    } catch (const std::bad_alloc&) {
        context->lastFault.fault = StoreFault::kOutOfMemory;
        return E_OUTOFMEMORY;
    } catch (const std::exception&) {
        context->lastFault.fault = StoreFault::kReadFailed;
        return E_FAIL;
    }
}

// The same for routines that need an open database.
template <typename Body>
HRESULT withStore(PWINBIO_PIPELINE pipeline, Body&& body) noexcept {
    return withContext(pipeline, [&](StorageContext& context) -> HRESULT {
        return context.store ? body(context, *context.store) : WINBIO_E_INVALID_DEVICE_STATE;
    });
}

}  // namespace orl::unit
