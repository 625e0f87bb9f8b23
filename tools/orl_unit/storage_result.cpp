#include "tools/orl_unit/storage_result.h"

namespace orl::unit {

HRESULT storageResult(StoreFault fault) {
    switch (fault) {
        case StoreFault::kNone:
            return S_OK;
        case StoreFault::kCannotFind:
            return WINBIO_E_DATABASE_CANT_FIND;
        case StoreFault::kCannotOpen:
            return WINBIO_E_DATABASE_CANT_OPEN;
        case StoreFault::kAlreadyExists:
            return WINBIO_E_DATABASE_ALREADY_EXISTS;
        case StoreFault::kLocked:
            return WINBIO_E_DATABASE_LOCKED;
        case StoreFault::kCorrupt:
            return WINBIO_E_DATABASE_CORRUPTED;
        case StoreFault::kFull:
            return WINBIO_E_DATABASE_FULL;
        case StoreFault::kReadFailed:
            return WINBIO_E_DATABASE_READ_ERROR;
        case StoreFault::kReadOnly:
        case StoreFault::kWriteFailed:
        case StoreFault::kNameTaken:
            return WINBIO_E_DATABASE_WRITE_ERROR;
        case StoreFault::kDuplicate:
            return WINBIO_E_DUPLICATE_ENROLLMENT;
        case StoreFault::kOutOfMemory:
            return E_OUTOFMEMORY;
    }
    return E_FAIL;
}

}  // namespace orl::unit
