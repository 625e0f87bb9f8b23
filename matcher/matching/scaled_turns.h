#pragma once

// The turn tables' cosines and sines as 16-bit numbers, for the bounds of the alignment vote.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/matching/kernels/agreement_bound.h"

namespace orl::matcher {

class ScaledTurns {
  public:
    // The process-wide table; built by the first call, from any thread.
    static const ScaledTurns& Table();

    // REQUIRES: rotation in -255..255, in steps of the 255-step turn.
    ScaledTurn operator[](std::int16_t rotation) const {
        return entries_[static_cast<std::size_t>(rotation + kReach)];
    }

  private:
    static constexpr int kReach = 255;

    ScaledTurns();

    std::array<ScaledTurn, 2 * kReach + 1> entries_;
};

}  // namespace orl::matcher
