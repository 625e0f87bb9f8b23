#pragma once

// Identities have a name for the user and a WINBIO_IDENTITY of type GUID for the framework. The
// store keeps the pair; a new name gets a random GUID.

#include <string>
#include <string_view>

#include "platform/wbf.h"

namespace orl::unit {

// The longest name, in bytes of UTF-8.
inline constexpr std::size_t kMaxNameBytes = 128;

// Checks a name for an identity: 1 to kMaxNameBytes bytes of well-formed UTF-8 without control
// characters. Throws CommandError saying what is wrong.
void checkIdentityName(std::string_view name);

// A fresh identity of type GUID: version 4, random. Throws std::exception when the system has no
// random bytes.
WINBIO_IDENTITY newIdentity();

// The identity for a message: the GUID as {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}, another type as
// "identity of type N".
std::string identityText(const WINBIO_IDENTITY& identity);

}  // namespace orl::unit
