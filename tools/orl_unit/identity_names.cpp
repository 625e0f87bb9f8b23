#include "tools/orl_unit/identity_names.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <random>

#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/utf8_text.h"

namespace orl::unit {
namespace {

// Version and variant of a random GUID stand in these bits of its bytes 7 and 8 (in memory).
constexpr std::size_t kVersionByte = 7;
constexpr unsigned kVersionKeptBits = 0x0F;
constexpr unsigned kRandomVersion = 0x40;
constexpr std::size_t kVariantByte = 8;
constexpr unsigned kVariantKeptBits = 0x3F;
constexpr unsigned kVariant = 0x80;
constexpr std::size_t kGuidTextBytes = 40;

}  // namespace

void checkIdentityName(std::string_view name) {
    if (name.empty()) {
        throw CommandError("the name is empty");
    }
    if (name.size() > kMaxNameBytes) {
        throw CommandError("the name is longer than " + std::to_string(kMaxNameBytes) + " bytes");
    }
    if (oneLine(name) != name) {
        throw CommandError("the name " + inQuotes(name) + " holds a control character");
    }
    if (!isWellFormedUtf8(name)) {
        throw CommandError("the name is not well-formed UTF-8");
    }
}

WINBIO_IDENTITY newIdentity() {
    std::random_device random;
    std::array<std::uint8_t, sizeof(GUID)> bytes{};
    std::generate(
        bytes.begin(), bytes.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    bytes[kVersionByte] =
        static_cast<std::uint8_t>((bytes[kVersionByte] & kVersionKeptBits) | kRandomVersion);
    bytes[kVariantByte] =
        static_cast<std::uint8_t>((bytes[kVariantByte] & kVariantKeptBits) | kVariant);
    WINBIO_IDENTITY identity;
    std::memset(&identity, 0, sizeof(identity));
    identity.Type = WINBIO_ID_TYPE_GUID;
    std::memcpy(&identity.Value.TemplateGuid, bytes.data(), bytes.size());
    return identity;
}

std::string identityText(const WINBIO_IDENTITY& identity) {
    if (identity.Type != WINBIO_ID_TYPE_GUID) {
        return "identity of type " + std::to_string(identity.Type);
    }
    const GUID& guid = identity.Value.TemplateGuid;
    const UCHAR* const tail = guid.Data4;
    std::array<char, kGuidTextBytes> text{};
    std::snprintf(text.data(),
                  text.size(),
                  "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}",
                  static_cast<unsigned>(guid.Data1),
                  static_cast<unsigned>(guid.Data2),
                  static_cast<unsigned>(guid.Data3),
                  static_cast<unsigned>(tail[0]),
                  static_cast<unsigned>(tail[1]),
                  static_cast<unsigned>(tail[2]),
                  static_cast<unsigned>(tail[3]),
                  static_cast<unsigned>(tail[4]),
                  static_cast<unsigned>(tail[5]),
                  static_cast<unsigned>(tail[6]),
                  static_cast<unsigned>(tail[7]));
    return text.data();
}

}  // namespace orl::unit
