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

#include "matcher/matching/alignment_measures.h"
#include "matcher/matching/alignment_records.h"
#include "matcher/matching/kernels/near_pairs.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/pair_table.h"

namespace orl::matcher {

enum class EvaluationDepth {
    kCountOnly,       // agreeing pairs; the four floats stay 0
    kWithStatistics,  // medians, coverage and matched ratio too
};

// The vote on the alignments of one orientation.
class AlignmentVote {
  public:
    // Bounds the counts of all hypotheses; those that cannot reach `leastCount` are left out, as
    // too bad to be of interest. REQUIRES: `pairs` is not empty and outlives the vote.
    // Throws: std::bad_alloc.
    AlignmentVote(std::span<const MinutiaPair> pairs,
                  Scratch& scratch,
                  std::int32_t leastCount = 0);

    // No hypothesis of `leastCount` or more has a greater count than this.
    std::int32_t countBound() const { return countBound_; }

    // No alignment about any anchor, whatever its rotation, has a greater count than this.
    std::int32_t anyRotationCountBound() const { return table_.longestStretch(); }

    // Lays the anchor pair's vertices on each other, turns the first finger by `rotation` about
    // them and counts the pairs that agree: position within 18 grid units, direction and relative
    // direction within their limits. The anchor agrees with itself.
    // REQUIRES: anchor < pairs.size(); rotation in -255..255.
    AlignmentEvaluation evaluateAlignment(std::uint32_t anchor,
                                          std::int16_t rotation,
                                          const AlignmentReference& reference,
                                          EvaluationDepth depth) const;

    // The hypothesis with the greatest count, of equal ones the first. When it has fewer than
    // `leastCount`, any hypothesis of fewer may stand for it, or one of count 0.
    AlignmentHypothesis findBestAlignment() const;

    // Turns the ten best hypotheses by -24 to 24 degrees in steps of 2 and replaces `best` by
    // whatever is better: greater count, then greater matchedRatio, greater coverage, smaller
    // distanceMedian, smaller angleMedian. Full ties keep the earlier one.
    // REQUIRES: `best` is the best hypothesis's evaluation with statistics.
    void refineAlignment(AlignmentEvaluation& best, const AlignmentReference& reference) const;

  private:
    static constexpr std::size_t kRefinedHypotheses = 10;

    struct Ranking {
        std::array<AlignmentHypothesis, kRefinedHypotheses> hypotheses;
        std::array<std::size_t, kRefinedHypotheses> indices;
        std::size_t size = 0;

        bool isFull() const { return size == kRefinedHypotheses; }
        void insert(const AlignmentHypothesis& challenger, std::size_t index);
    };

    // An alignment that a refinement tries.
    struct Refined {
        std::uint32_t anchor;
        std::int16_t rotation;
    };

    // The best evaluation so far of a refinement; the medians follow when they are asked for.
    struct Leader {
        AlignmentEvaluation evaluation;
        std::size_t order = 0;  // of evaluation, 0 for the one before the refinement
        bool hasMedians = false;
    };

    std::span<const BoundTask> tasksReaching(std::int32_t leastCount) const;
    AlignmentHypothesis counted(std::span<const BoundTask> tasks, std::size_t index) const;
    std::span<std::uint64_t> nearPairs(const BoundTask& anchor, std::int16_t rotation) const;
    std::int32_t keepAgreeing(const BoundTask& anchor,
                              std::int16_t rotation,
                              std::span<std::uint64_t> near) const;
    float coverage(const BoundTask& anchor,
                   std::span<const std::uint64_t> agreeing,
                   const AlignmentReference& reference) const;
    float distanceMedian(std::span<const std::uint64_t> agreeing) const;
    float angleMedian(const BoundTask& anchor,
                      std::int16_t rotation,
                      std::span<const std::uint64_t> agreeing) const;
    std::span<const std::uint16_t> boundsOfAll() const;
    std::span<const std::uint32_t> byBound(std::span<const std::uint16_t> bounds) const;
    Ranking rankHypotheses() const;
    std::span<const std::uint16_t> boundsOf(std::span<const Refined> refined) const;
    void challenge(Leader& leader,
                   const Refined& refined,
                   std::size_t order,
                   const AlignmentReference& reference) const;
    void complete(Leader& leader, const AlignmentReference& reference) const;

    std::span<const MinutiaPair> pairs_;
    Scratch& scratch_;
    PairTable table_;
    NearPairs nearPairsOf_;
    std::span<const BoundTask> tasks_;           // the anchors that can reach the least count
    std::span<std::uint16_t> bounds_;            // two a task
    std::span<float> squaredResiduals_;          // work space of one evaluation
    std::span<std::uint64_t> near_;              // the same
    std::span<float> agreeingSquaredResiduals_;  // the same
    std::int32_t countBound_ = 0;
};

// Fewer agreeing pairs than this are no evidence.
inline constexpr std::int32_t kMinAgreeingPairs = 4;

}  // namespace orl::matcher
