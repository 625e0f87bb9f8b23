#include "tools/orl_unit/storage_subject.h"

#include "tools/orl_unit/identity_value.h"

namespace orl::unit {
namespace {

bool isWildcard(const WINBIO_IDENTITY& identity) {
    return identity.Type == WINBIO_ID_TYPE_WILDCARD &&
           identity.Value.Wildcard == WINBIO_IDENTITY_WILDCARD;
}

}  // namespace

HRESULT checkSubject(const WINBIO_IDENTITY* identity, WINBIO_BIOMETRIC_SUBTYPE subFactor) {
    if (identity == nullptr) {
        return E_POINTER;
    }
    const bool known = isWildcard(*identity) || identityValue(*identity).has_value();
    return known && subFactor != WINBIO_SUBTYPE_NO_INFORMATION ? S_OK : E_INVALIDARG;
}

std::optional<std::uint8_t> subFactorFilter(WINBIO_BIOMETRIC_SUBTYPE subFactor) {
    return subFactor == WINBIO_SUBTYPE_ANY ? std::nullopt : std::optional(subFactor);
}

RecordFilter subjectFilter(const WINBIO_IDENTITY& identity, WINBIO_BIOMETRIC_SUBTYPE subFactor) {
    RecordFilter filter;
    if (!isWildcard(identity)) {
        filter.identity = identity;
    }
    filter.subFactor = subFactorFilter(subFactor);
    return filter;
}

}  // namespace orl::unit
