#include "tools/orl_unit/record_store.h"

#include "tools/orl_unit/identity_value.h"

namespace orl::unit {

std::optional<std::string> RecordStore::reservedNameOf(const WINBIO_IDENTITY& identity) const {
    if (reservedIdentity_ && sameIdentity(*reservedIdentity_, identity)) {
        return reservedName_;
    }
    return std::nullopt;
}

}  // namespace orl::unit
