#include "tools/orl_unit/bir.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tools/orl_unit/command_error.h"

namespace orl::unit {
namespace {

constexpr WINBIO_BIR_VERSION kBirVersion = 0x11;
constexpr WINBIO_BIR_DATA_FLAGS kProcessedData = 0x80;
constexpr WINBIO_BIR_QUALITY kQualityNotSet = -1;
constexpr std::uint8_t kMaxQuality = 100;

// Bits of ValidFields.
constexpr unsigned kBiometricTypeValid = 0x0040;
constexpr unsigned kBiometricSubtypeValid = 0x0080;
constexpr unsigned kHeaderVersionValid = 0x0100;
constexpr unsigned kPatronHeaderVersionValid = 0x0200;
constexpr unsigned kPurposeValid = 0x0400;
constexpr unsigned kQualityValid = 0x1000;
constexpr unsigned kAlwaysValid = kBiometricTypeValid | kBiometricSubtypeValid |
                                  kHeaderVersionValid | kPatronHeaderVersionValid | kPurposeValid;

static_assert(sizeof(WINBIO_BIR) % WINBIO_BIR_ALIGN_SIZE == 0);
static_assert(kBirDataOffset % WINBIO_BIR_ALIGN_SIZE == 0);

WINBIO_BIR_HEADER headerOf(const SampleDescription& description) {
    const bool qualityKnown = description.quality > 0 && description.quality <= kMaxQuality;
    WINBIO_BIR_HEADER header;
    std::memset(&header, 0, sizeof(header));
    header.ValidFields = static_cast<USHORT>(kAlwaysValid | (qualityKnown ? kQualityValid : 0U));
    header.HeaderVersion = kBirVersion;
    header.PatronHeaderVersion = kBirVersion;
    header.DataFlags = kProcessedData;
    header.Type = WINBIO_TYPE_FINGERPRINT;
    header.Subtype = description.subFactor;
    header.Purpose = description.purpose;
    header.DataQuality =
        qualityKnown ? static_cast<WINBIO_BIR_QUALITY>(description.quality) : kQualityNotSet;
    header.BiometricDataFormat = description.format;
    return header;
}

}  // namespace

SecretBytes wrapRecord(std::span<const std::uint8_t> record, const SampleDescription& description) {
    if (record.size() > kMaxBirBytes - kBirDataOffset) {
        throw CommandError("a record of " + std::to_string(record.size()) +
                           " bytes is too large for a sample");
    }
    WINBIO_BIR bir = {};
    bir.HeaderBlock = {sizeof(WINBIO_BIR_HEADER), sizeof(WINBIO_BIR)};
    bir.StandardDataBlock = {static_cast<ULONG>(record.size()), static_cast<ULONG>(kBirDataOffset)};
    const WINBIO_BIR_HEADER header = headerOf(description);

    SecretBytes bytes(kBirDataOffset + record.size());
    std::memcpy(bytes.data(), &bir, sizeof(bir));
    std::memcpy(bytes.data() + sizeof(bir), &header, sizeof(header));
    std::copy(record.begin(), record.end(), bytes.begin() + kBirDataOffset);
    return bytes;
}

}  // namespace orl::unit
