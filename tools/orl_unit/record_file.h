#pragma once

// Finger minutiae records (ISO/IEC 19794-2:2005, "*.fmr") as the host takes them: read whole from a
// file and checked before they are wrapped for the engine, since the engine looks at a sample only
// when it matches and then reports a bad record as "no match".

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/orl_unit/secret_bytes.h"

namespace orl::unit {

struct FingerRecord {
    SecretBytes bytes;                // the whole file
    std::uint8_t fingerPosition = 0;  // position code of the first view
    std::uint8_t quality = 0;         // quality of the first view, 0 to 100; others mean unknown
    std::size_t minutiaCount = 0;     // of the first view, the only one that is compared
};

// The largest record that can be compared, in bytes.
inline constexpr std::size_t kMaxRecordBytes = 6200;
// Fewer minutiae make no triangle, and nothing to compare.
inline constexpr std::size_t kMinMinutiae = 3;

// What makes the record unfit for comparison, as the end of a sentence ("the record ..."), or
// nothing for a fit one. Reads only within the span; never throws but for memory.
std::optional<std::string> recordDefect(std::span<const std::uint8_t> bytes);

// Reads and checks the record at path. Throws CommandError naming the file and the defect.
FingerRecord readRecordFile(const std::filesystem::path& path);

}  // namespace orl::unit
