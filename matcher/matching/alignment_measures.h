#pragma once

// What one alignment is measured by: the directions of the pairs that it makes agree, the medians
// of their residuals, how much of the fingers they cover, and which of two alignments fits better.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "matcher/features/angles.h"
#include "matcher/matching/alignment_records.h"
#include "matcher/matching/match_context.h"

namespace orl::matcher {

// What an alignment's statistics are measured against, the same for all alignments of one finger
// match.
struct AlignmentReference {
    float firstArea = 0.0F;   // bounding box of all pairs' first vertices, grid units squared
    float secondArea = 0.0F;  // bounding box of all pairs' second vertices
    std::uint64_t firstMinutiaCount = 0;
    std::uint64_t secondMinutiaCount = 0;
};

// The reference of these minutia pairs. REQUIRES: not empty.
AlignmentReference alignmentReference(std::span<const MinutiaPair> pairs,
                                      std::uint64_t firstMinutiaCount,
                                      std::uint64_t secondMinutiaCount);

inline constexpr int kAnchorDirectionRejectedFromSteps = 44;  // axial, after the rotation

// A rotation reduced to 0..255, negative ones included: -10 gives 246.
inline std::uint8_t reducedTurn(int steps) {
    return static_cast<std::uint8_t>(steps);
}

// Angle between the pair's directions, as undirected lines, once the first one is turned; steps.
inline int directionResidual(std::int16_t rotation, const MinutiaPair& pair) {
    const std::uint8_t expected = reducedTurn(pair.first.angle + rotation);
    return AxialDifference(pair.second.angle, expected);
}

// Whether that residual is too large. On a circle of 255 lines are that far apart at 44 to 84
// steps, and seen the other way round at 171 to 211.
inline bool isDirectionRejected(std::int16_t rotation, const MinutiaPair& pair) {
    constexpr unsigned kFirst = kAnchorDirectionRejectedFromSteps;
    constexpr unsigned kLast = kAxialFoldSteps - kFirst;
    constexpr unsigned kFirstOtherWay = kFeatureStepsPerTurn - kLast;
    const int difference = pair.second.angle - reducedTurn(pair.first.angle + rotation);
    const auto apart = static_cast<unsigned>(std::abs(difference));
    return apart - kFirst <= kLast - kFirst || apart - kFirstOtherWay <= kLast - kFirst;
}

// The direction residuals of some pairs: how often each number of steps occurs.
class DirectionResiduals {
  public:
    // REQUIRES: not rejected.
    void add(int steps) {
        ++counts_[static_cast<std::size_t>(steps)];
        ++size_;
    }

    // As medianResidual, in degrees.
    float median() const;

  private:
    float degreesOfRank(std::size_t rank) const;

    std::array<std::uint16_t, kAnchorDirectionRejectedFromSteps> counts_{};
    std::size_t size_ = 0;
};

// The median of some residuals, given by their squares, whose order it changes: rank n/2 in
// ascending order; of an even number the mean with the one below it; 0 of none.
float medianResidual(std::span<float> squared);

// Which part of the reference area an area makes up, 0..1; 0 when there is no reference area.
float overlap(float area, float referenceArea);

// The count over the smaller finger's minutia count, 0..1.
float matchedRatio(std::int32_t count, const AlignmentReference& reference);

// Whether the challenger fits better: greater count, then greater matchedRatio, greater coverage,
// smaller distanceMedian, smaller angleMedian.
bool isBetterEvaluation(const AlignmentEvaluation& challenger, const AlignmentEvaluation& best);

}  // namespace orl::matcher
