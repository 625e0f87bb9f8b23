#include "tools/orl_unit/storage_result.h"

namespace orl::unit {

HRESULT storageResult(StoreFault fault) {
    switch (fault) {
        case StoreFault::None:
            return S_OK;
        case StoreFault::CannotFind:
            return WINBIO_E_DATABASE_CANT_FIND;
        case StoreFault::CannotOpen:
            return WINBIO_E_DATABASE_CANT_OPEN;
        case StoreFault::AlreadyExists:
            return WINBIO_E_DATABASE_ALREADY_EXISTS;
        case StoreFault::Locked:
            return WINBIO_E_DATABASE_LOCKED;
        case StoreFault::Corrupt:
            return WINBIO_E_DATABASE_CORRUPTED;
        case StoreFault::Full:
            return WINBIO_E_DATABASE_FULL;
        case StoreFault::ReadFailed:
            return WINBIO_E_DATABASE_READ_ERROR;
        case StoreFault::ReadOnly:
        case StoreFault::WriteFailed:
        case StoreFault::NameTaken:
            return WINBIO_E_DATABASE_WRITE_ERROR;
        case StoreFault::Duplicate:
            return WINBIO_E_DUPLICATE_ENROLLMENT;
        case StoreFault::OutOfMemory:
            return E_OUTOFMEMORY;
    }
    return E_FAIL;
}

}  // namespace orl::unit
