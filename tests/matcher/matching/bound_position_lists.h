#pragma once

// Positions for the kernels of the vote on alignments, without minutiae behind them.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "matcher/matching/kernels/agreement_bound.h"

namespace orl::test {

// Positions in the bounds' scales with the entries behind them that a wide read may touch; those
// agree with everything, so that one counted by mistake shows.
class Positions {
  public:
    // At random; coordinates below `extent`, or each at either end of the grid when that is 0.
    Positions(std::mt19937& random, std::size_t count, unsigned extent) {
        for (auto* values : {&firstX_, &firstY_, &secondX_, &secondY_}) {
            values->assign(count + matcher::kBoundLanes, 0);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const auto coordinate = [&] {
                const bool isExtreme = extent == 0;
                return static_cast<int>(isExtreme ? 255 * (random() % 2) : random() % extent);
            };
            firstX_[i] = static_cast<std::int16_t>(64 * coordinate());
            firstY_[i] = static_cast<std::int16_t>(64 * coordinate());
            secondX_[i] = static_cast<std::int16_t>(32 * coordinate());
            secondY_[i] = static_cast<std::int16_t>(32 * coordinate());
        }
        for (std::size_t i = count; i < count + matcher::kBoundLanes; ++i) {
            firstX_[i] = firstX_[0];
            firstY_[i] = firstY_[0];
            secondX_[i] = secondX_[0];
            secondY_[i] = secondY_[0];
        }
    }

    matcher::BoundPositions view() const {
        return {firstX_.data(), firstY_.data(), secondX_.data(), secondY_.data()};
    }

  private:
    std::vector<std::int16_t> firstX_, firstY_, secondX_, secondY_;
};

}  // namespace orl::test
