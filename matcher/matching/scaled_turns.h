#pragma once

// The turn tables' cosines and sines as 16-bit numbers, for the bounds of the alignment vote, and
// the two rotations that a pair stands for.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/matching/kernels/agreement_bound.h"

namespace orl::matcher {

// The opposite of a pair's rotation (-255..255), which is its other hypothesis.
//
// Deliberate: it is reduced to 0..255, while a negative first rotation stays negative. The tables
// hold other values for it than for its reduced form, as they have 255 steps a turn.
constexpr std::int16_t oppositeRotation(int rotation) {
    constexpr int kHalfTurnSteps = 128;  // 256-step turn
    return static_cast<std::uint8_t>(rotation + kHalfTurnSteps);
}

class ScaledTurns {
  public:
    // The process-wide table; built by the first call, from any thread.
    static const ScaledTurns& Table();

    // REQUIRES: rotation in -255..255, in steps of the 255-step turn.
    ScaledTurn operator[](int rotation) const { return ofHypotheses(rotation)[0]; }

    // Those of the rotation and of its opposite.
    const std::array<ScaledTurn, 2>& ofHypotheses(int rotation) const {
        return entries_[static_cast<std::size_t>(rotation + kReach)];
    }

  private:
    static constexpr int kReach = 255;

    ScaledTurns();

    std::array<std::array<ScaledTurn, 2>, 2 * kReach + 1> entries_;
};

}  // namespace orl::matcher
