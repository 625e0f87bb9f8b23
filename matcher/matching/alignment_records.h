#pragma once

// What the alignment stage passes on: the hypotheses it voted on and the measure of one alignment.

#include <cstdint>

namespace orl::matcher {

// An alignment of the first finger onto the second: the anchor pair's vertices are laid on each
// other and the rest is turned about them.
struct AlignmentHypothesis {
    std::int32_t count = 0;     // minutia pairs that agree with it, the anchor included
    std::uint32_t anchor = 0;   // index into the minutia pairs
    std::int16_t rotation = 0;  // direction steps, -255..255; negative angles are kept as they are
};

// How well one alignment fits. A count-only evaluation leaves the four floats at 0.
struct AlignmentEvaluation {
    std::int32_t count = 0;       // minutia pairs that agree with it, the anchor included
    std::uint32_t anchor = 0;     // index into the minutia pairs
    std::int16_t rotation = 0;    // direction steps, -255..255
    float distanceMedian = 0.0F;  // of the agreeing pairs' position residuals, grid units
    float angleMedian = 0.0F;     // of the agreeing pairs' direction residuals, degrees
    float coverage = 0.0F;        // mean of the two overlap area ratios, 0..1
    float matchedRatio = 0.0F;    // count over the smaller minutia count, 0..1

    friend bool operator==(const AlignmentEvaluation&, const AlignmentEvaluation&) = default;
};

}  // namespace orl::matcher
