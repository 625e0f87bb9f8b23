#pragma once

// Rounding without a call to the mathematics library.

#include <cassert>

namespace orl::matcher {

// The nearest whole number, halves rounded up: what std::lround gives. Exact, since the fraction of
// a float is one. Pure; never throws. REQUIRES: 0 <= value < 2^31.
inline int RoundHalfUp(float value) {
    constexpr float kHalf = 0.5F;
    assert(value >= 0.0F && value < 2147483648.0F);
    const int whole = static_cast<int>(value);
    return whole + (value - static_cast<float>(whole) >= kHalf ? 1 : 0);
}

}  // namespace orl::matcher
