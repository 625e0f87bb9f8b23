#pragma once

// The stored form of a WINBIO_IDENTITY: its type and the bytes of its value that mean something, 16
// for a GUID and Size for a SID. Two identities are the same when these are.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/wbf.h"

namespace orl::unit {

struct IdentityValue {
    ULONG type = 0;
    std::vector<std::uint8_t> bytes;

    auto operator<=>(const IdentityValue&) const = default;
};

// The stored form of an identity of type GUID or SID; nothing for another type, and for a SID
// without bytes or longer than its field.
std::optional<IdentityValue> identityValue(const WINBIO_IDENTITY& identity);

// The identity of a stored form, unused bytes zero; nothing when the form fits no identity.
std::optional<WINBIO_IDENTITY> identityFromValue(ULONG type, std::span<const std::uint8_t> bytes);

// True when both are GUIDs or SIDs of the same value.
bool sameIdentity(const WINBIO_IDENTITY& left, const WINBIO_IDENTITY& right);

}  // namespace orl::unit
