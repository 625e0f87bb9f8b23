#include <filesystem>

#include "tools/orl_unit/storage_call.h"
#include "tools/orl_unit/storage_routines.h"
#include "tools/orl_unit/store_opening.h"

namespace orl::unit {

HRESULT WINAPI StorageAdapterAttach(PWINBIO_PIPELINE Pipeline) noexcept {
    if (Pipeline == nullptr) {
        return E_POINTER;
    }
    auto* const context = new (std::nothrow) StorageContext;
    if (context == nullptr) {
        return E_OUTOFMEMORY;
    }
    Pipeline->StorageContext = context;
    return S_OK;
}

HRESULT WINAPI StorageAdapterDetach(PWINBIO_PIPELINE Pipeline) noexcept {
    if (Pipeline == nullptr) {
        return E_POINTER;
    }
    delete contextOf(Pipeline);
    Pipeline->StorageContext = nullptr;
    return S_OK;
}

HRESULT WINAPI StorageAdapterCreateDatabase(PWINBIO_PIPELINE Pipeline,
                                            PGUID /*DatabaseId*/,
                                            WINBIO_BIOMETRIC_TYPE Factor,
                                            PGUID Format,
                                            PCWSTR FilePath,
                                            PCWSTR /*ConnectString*/,
                                            SIZE_T IndexElementCount,
                                            SIZE_T /*InitialSize*/) noexcept {
    if (Format == nullptr || FilePath == nullptr) {
        return E_POINTER;
    }
    if (Factor != WINBIO_TYPE_FINGERPRINT) {
        return WINBIO_E_UNSUPPORTED_FACTOR;
    }
    return withContext(Pipeline, [&](StorageContext& context) {
        return resultOf(context,
                        createStore(context, FilePath, StoreFormat{*Format, IndexElementCount}));
    });
}

HRESULT WINAPI StorageAdapterEraseDatabase(PWINBIO_PIPELINE Pipeline,
                                           PGUID /*DatabaseId*/,
                                           PCWSTR FilePath,
                                           PCWSTR /*ConnectString*/) noexcept {
    if (FilePath == nullptr) {
        return E_POINTER;
    }
    return withContext(Pipeline, [&](StorageContext& context) -> HRESULT {
        if (context.store) {
            return WINBIO_E_INVALID_DEVICE_STATE;
        }
        return resultOf(context, eraseStore(context, FilePath));
    });
}

HRESULT WINAPI StorageAdapterOpenDatabase(PWINBIO_PIPELINE Pipeline,
                                          PGUID /*DatabaseId*/,
                                          PCWSTR FilePath,
                                          PCWSTR /*ConnectString*/) noexcept {
    if (FilePath == nullptr) {
        return E_POINTER;
    }
    return withContext(Pipeline, [&](StorageContext& context) -> HRESULT {
        if (context.store) {
            return WINBIO_E_INVALID_DEVICE_STATE;
        }
        return resultOf(context, openStore(context, FilePath));
    });
}

HRESULT WINAPI StorageAdapterCloseDatabase(PWINBIO_PIPELINE Pipeline) noexcept {
    return withStore(Pipeline, [](StorageContext& context, RecordStore& /*store*/) {
        context.results.clear();
        context.store.reset();
        return S_OK;
    });
}

HRESULT WINAPI StorageAdapterGetDataFormat(PWINBIO_PIPELINE /*Pipeline*/) noexcept {
    return E_NOTIMPL;
}

HRESULT WINAPI StorageAdapterGetDatabaseSize(PWINBIO_PIPELINE /*Pipeline*/,
                                             PSIZE_T /*AvailableRecordCount*/,
                                             PSIZE_T /*TotalRecordCount*/) noexcept {
    return E_NOTIMPL;
}

HRESULT WINAPI StorageAdapterControlUnit(PWINBIO_PIPELINE /*Pipeline*/,
                                         ULONG /*ControlCode*/,
                                         PUCHAR /*SendBuffer*/,
                                         SIZE_T /*SendBufferSize*/,
                                         PUCHAR /*ReceiveBuffer*/,
                                         SIZE_T /*ReceiveBufferSize*/,
                                         PSIZE_T /*ReceiveDataSize*/,
                                         PULONG /*OperationStatus*/) noexcept {
    return E_NOTIMPL;
}

}  // namespace orl::unit
