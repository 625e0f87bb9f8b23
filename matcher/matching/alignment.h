#pragma once

// Second half of a finger match: finds the rotation about an anchor pair under which the most
// minutia pairs agree, and measures how well they do. Positions are grid bytes, rotations direction
// steps; predicted positions and residuals are 32-bit floats, evaluated as written.
//
// Every pair is tried as the anchor with two rotations, its hypotheses: the one between its
// directions, and the opposite one. Hypothesis 2i and 2i + 1 are those of pair i. Most of them are
// settled by an upper bound of their count alone; which one is the best, and which ten are, is what
// counting all of them would tell.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/alignment_records.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/pair_table.h"

namespace orl::matcher {

enum class EvaluationDepth {
    kCountOnly,       // agreeing pairs; the four floats stay 0
    kWithStatistics,  // medians, coverage and matched ratio too
};

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

// The vote on the alignments of one orientation.
class AlignmentVote {
  public:
    // Bounds the counts of all hypotheses. REQUIRES: `pairs` is not empty and outlives the vote.
    // Throws: std::bad_alloc.
    AlignmentVote(std::span<const MinutiaPair> pairs, Scratch& scratch);

    // No hypothesis has a greater count than this.
    std::int32_t countBound() const { return countBound_; }

    // No alignment about any anchor, whatever its rotation, has a greater count than this.
    std::int32_t anyRotationCountBound() const { return anyRotationCountBound_; }

    // Lays the anchor pair's vertices on each other, turns the first finger by `rotation` about
    // them and counts the pairs that agree: position within 18 grid units, direction and relative
    // direction within their limits. The anchor agrees with itself.
    // REQUIRES: anchor < pairs.size(); rotation in -255..255.
    AlignmentEvaluation evaluateAlignment(std::uint32_t anchor,
                                          std::int16_t rotation,
                                          const AlignmentReference& reference,
                                          EvaluationDepth depth) const;

    // The hypothesis with the greatest count, of equal ones the first.
    AlignmentHypothesis findBestAlignment() const;

    // Turns the ten best hypotheses by -24 to 24 degrees in steps of 2 and replaces `best` by
    // whatever is better: greater count, then greater matchedRatio, greater coverage, smaller
    // distanceMedian, smaller angleMedian. Full ties keep the earlier one.
    // REQUIRES: `best` is the best hypothesis's evaluation with statistics.
    void refineAlignment(AlignmentEvaluation& best, const AlignmentReference& reference) const;

  private:
    static constexpr std::size_t kRefinedHypotheses = 10;
    static constexpr std::size_t kRefineSteps = 25;  // -24 to 24 degrees in steps of 2

    using RefinedRotations = std::array<std::int16_t, kRefineSteps>;

    struct Ranking {
        std::array<AlignmentHypothesis, kRefinedHypotheses> hypotheses;
        std::size_t size = 0;
    };

    std::int16_t rotationOf(std::size_t hypothesis) const;
    AlignmentHypothesis counted(std::size_t hypothesis) const;
    BoundTask boundTask(std::size_t place, ScaledTurn turn, ScaledTurn otherTurn) const;
    static RefinedRotations refinedRotations(std::int16_t rotation);
    std::array<std::uint16_t, kRefineSteps + 1> boundsOfRotations(
        std::size_t place, const RefinedRotations& rotations) const;
    Ranking rankHypotheses() const;

    std::span<const MinutiaPair> pairs_;
    PairTable table_;
    AgreementBounds boundsOf_;
    std::span<std::uint16_t> bounds_;     // by hypothesis
    mutable std::span<float> distances_;  // work space of one evaluation, grid units
    mutable std::span<float> angles_;     // degrees
    std::span<std::uint32_t> order_;      // work space of the ranking
    std::int32_t countBound_ = 0;
    std::int32_t anyRotationCountBound_ = 0;
};

// Fewer agreeing pairs than this are no evidence.
inline constexpr std::int32_t kMinAgreeingPairs = 4;

}  // namespace orl::matcher
