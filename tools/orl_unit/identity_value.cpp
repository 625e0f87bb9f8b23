#include "tools/orl_unit/identity_value.h"

#include <algorithm>
#include <cstring>

namespace orl::unit {

std::optional<IdentityValue> identityValue(const WINBIO_IDENTITY& identity) {
    IdentityValue value{identity.Type, {}};
    if (identity.Type == WINBIO_ID_TYPE_GUID) {
        value.bytes.resize(sizeof(GUID));
        std::memcpy(value.bytes.data(), &identity.Value.TemplateGuid, sizeof(GUID));
        return value;
    }
    const auto& sid = identity.Value.AccountSid;
    if (identity.Type == WINBIO_ID_TYPE_SID && sid.Size > 0 && sid.Size <= sizeof(sid.Data)) {
        value.bytes.assign(sid.Data, sid.Data + sid.Size);
        return value;
    }
    return std::nullopt;
}

std::optional<WINBIO_IDENTITY> identityFromValue(ULONG type, std::span<const std::uint8_t> bytes) {
    WINBIO_IDENTITY identity;
    std::memset(&identity, 0, sizeof(identity));
    identity.Type = type;
    if (type == WINBIO_ID_TYPE_GUID && bytes.size() == sizeof(GUID)) {
        std::memcpy(&identity.Value.TemplateGuid, bytes.data(), bytes.size());
        return identity;
    }
    auto& sid = identity.Value.AccountSid;
    if (type == WINBIO_ID_TYPE_SID && !bytes.empty() && bytes.size() <= sizeof(sid.Data)) {
        sid.Size = static_cast<ULONG>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), sid.Data);
        return identity;
    }
    return std::nullopt;
}

bool sameIdentity(const WINBIO_IDENTITY& left, const WINBIO_IDENTITY& right) {
    const auto leftValue = identityValue(left);
    return leftValue && leftValue == identityValue(right);
}

}  // namespace orl::unit
