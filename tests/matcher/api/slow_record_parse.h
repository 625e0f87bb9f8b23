#pragma once

// A second, plain reading of finger minutiae records, by index arithmetic with every bound checked
// at the byte that is read. Tests compare the matcher's parse and scan with it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

struct SlowRecord {
    ImageSize imageSize;
    std::vector<MinutiaList> fingers;
};

// The record's image and minutiae, or nothing when the parse must fail before features are built.
std::optional<SlowRecord> SlowParse(const std::vector<std::uint8_t>& record);

// The finger position codes, or nothing when the scan must fail.
std::optional<std::vector<std::uint8_t>> SlowScan(const std::vector<std::uint8_t>& record);

}  // namespace orl::matcher
