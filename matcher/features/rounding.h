#pragma once

// Rounding without a call to the mathematics library.

#include <cassert>

namespace orl::matcher {

// The nearest whole number, halves rounded up: what std::lround gives. Exact, since a float and a
// half add up in a double without rounding, but for floats so small that the sum stays below 1.
// Pure; never throws. REQUIRES: 0 <= value < 2^31.
inline int RoundHalfUp(float value) {
    assert(value >= 0.0F && value < 2147483648.0F);
    // Right for what comes from a float. NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<int>(static_cast<double>(value) + 0.5);
}

}  // namespace orl::matcher
