#pragma once

// Wraps a finger minutiae record into a biometric information record (BIR), as a sensor adapter
// delivers it:
//
//   offset  size  content
//        0    32  WINBIO_BIR: sizes and offsets of the blocks; no vendor block, no signature
//       32    48  WINBIO_BIR_HEADER
//       80     n  the record: the standard data block, which ends the BIR

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/wbf.h"
#include "tools/orl_unit/secret_bytes.h"

namespace orl::unit {

// Where the standard data block begins; a multiple of WINBIO_BIR_ALIGN_SIZE.
inline constexpr std::size_t kBirDataOffset = sizeof(WINBIO_BIR) + sizeof(WINBIO_BIR_HEADER);
// The largest sample of the framework, and so the largest BIR, in bytes.
inline constexpr std::size_t kMaxBirBytes = 0x7FFFFFFF;

// What the header block says about the sample.
struct SampleDescription {
    WINBIO_BIOMETRIC_SUBTYPE subFactor = WINBIO_SUBTYPE_NO_INFORMATION;
    WINBIO_BIR_PURPOSE purpose = WINBIO_NO_PURPOSE_AVAILABLE;
    std::uint8_t quality = 0;              // 1 to 100; anything else means not known
    WINBIO_REGISTERED_FORMAT format = {};  // of the data, as the engine prefers it
};

// The BIR of a record, aligned for a WINBIO_BIR. Throws CommandError when it would pass
// kMaxBirBytes.
SecretBytes wrapRecord(std::span<const std::uint8_t> record, const SampleDescription& description);

}  // namespace orl::unit
