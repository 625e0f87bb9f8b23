#pragma once

// Angle arithmetic on direction steps. Two turns live side by side here, and each function says
// which one it uses: features are built at 255 steps a turn, matching wraps at 256.
//
// Deliberate: the 255-step differences keep their own conventions (equal directions have a forward
// difference of 255, not 0). Do not unify them with the 256-step ones.
//
// All functions are pure and never throw; safe from any thread.

#include <cstdint>

#include "matcher/features/rounding.h"

namespace orl::matcher {

inline constexpr int kFeatureStepsPerTurn = 255;  // direction bytes, bearings, tables
inline constexpr int kAxialFoldSteps = 128;       // half of it, up: lines come round there

// Degrees 0..360 to steps of the 255-step turn, rounded half away from zero: 360 gives 255,
// 180 gives 128, 1 gives 1.
inline std::int16_t DegreesToSteps(std::uint16_t degrees) {
    constexpr float kStepsPerDegree = 0.7083333F;  // 255 / 360
    return static_cast<std::int16_t>(RoundHalfUp(static_cast<float>(degrees) * kStepsPerDegree));
}

// Smaller angle between two directions, 255-step turn: min(255 - |a - b|, |a - b|).
constexpr std::int16_t CircularDifference(std::int16_t a, std::int16_t b) {
    const int difference = a > b ? a - b : b - a;
    const int other = kFeatureStepsPerTurn - difference;
    return static_cast<std::int16_t>(other < difference ? other : difference);
}

// Smaller angle between two undirected lines: the circular difference m folded to min(128 - m, m).
constexpr std::int16_t AxialDifference(std::int16_t a, std::int16_t b) {
    const int difference = CircularDifference(a, b);
    const int other = kAxialFoldSteps - difference;
    return static_cast<std::int16_t>(other < difference ? other : difference);
}

// Steps from a forward to b, 255-step turn: b - a when b is greater, else b - a + 255 (so equal
// angles give 255).
constexpr std::int16_t ForwardDifference(std::int16_t a, std::int16_t b) {
    return static_cast<std::int16_t>(b > a ? b - a : b - a + kFeatureStepsPerTurn);
}

// |a - b| of two 16-bit values.
constexpr std::int16_t AbsoluteDifference(std::int16_t a, std::int16_t b) {
    return static_cast<std::int16_t>(b > a ? b - a : a - b);
}

}  // namespace orl::matcher
