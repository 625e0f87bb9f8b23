#include "tools/orl_unit/sqlite_status.h"

namespace orl::unit {
namespace {

constexpr int kPrimaryCodeMask = 0xFF;

StoreStatus otherFault(const SqliteError& error, StoreAccess access) {
    const std::string reason = error.what();
    switch (access) {
        case StoreAccess::kOpening:
            return {StoreFault::kCannotOpen, "cannot be opened: " + reason};
        case StoreAccess::kReading:
            return {StoreFault::kReadFailed, "cannot be read: " + reason};
        case StoreAccess::kWriting:
            break;
    }
    return {StoreFault::kWriteFailed, "cannot be written: " + reason};
}

}  // namespace

StoreStatus statusOf(const SqliteError& error, StoreAccess access) {
    switch (error.code() & kPrimaryCodeMask) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return {StoreFault::kLocked, "is locked by another process"};
        case SQLITE_CORRUPT:
            return {StoreFault::kCorrupt, std::string("is corrupt: ") + error.what()};
        case SQLITE_NOTADB:
            return {StoreFault::kCorrupt, "is corrupt or no database at all"};
        case SQLITE_FULL:
            return {StoreFault::kFull, "cannot grow: no space left"};
        case SQLITE_READONLY:
            if (error.code() == SQLITE_READONLY_ROLLBACK) {
                return {StoreFault::kReadOnly,
                        "is read-only, but an interrupted change must be undone"};
            }
            return {StoreFault::kReadOnly, "is read-only"};
        case SQLITE_NOMEM:
            return {StoreFault::kOutOfMemory, "needs more memory than there is"};
        default:
            return otherFault(error, access);
    }
}

}  // namespace orl::unit
