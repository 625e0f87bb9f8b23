#pragma once

// Second half of a finger match: finds the rotation about an anchor pair under which the most
// minutia pairs agree, and measures how well they do. Positions are grid bytes, rotations direction
// steps; predicted positions and residuals are 32-bit floats, evaluated as written.

#include <cstdint>
#include <span>

#include "matcher/matching/match_context.h"

namespace orl::matcher {

enum class EvaluationDepth {
    kCountOnly,       // agreeing pairs; the four floats stay 0
    kWithStatistics,  // medians, coverage and matched ratio too
};

// Lays the anchor pair's vertices on each other, turns the first finger by `rotation` about them
// and counts the pairs that agree: position within 18 grid units, direction and relative direction
// within their limits. The anchor agrees with itself.
// REQUIRES: anchor < pairs.size(); rotation in -255..255.
// Throws: std::bad_alloc, with statistics only.
AlignmentEvaluation evaluateAlignment(std::span<const MinutiaPair> pairs,
                                      std::uint32_t anchor,
                                      std::int16_t rotation,
                                      const AlignmentReference& reference,
                                      EvaluationDepth depth);

// Tries every minutia pair of the context as the anchor, with the rotation between its directions
// and with the opposite one, and returns the evaluation of the best: of equal counts the first
// tried. Leaves all hypotheses in context.hypotheses, best first, and the areas of all pairs in
// context.reference. When the best count is below kMinAgreeingPairs the statistics are left at 0.
// REQUIRES: context.minutiaPairs is not empty; the reference's minutia counts are set.
// Throws: std::bad_alloc.
AlignmentEvaluation findBestAlignment(MatchContext& context);

// Fewer agreeing pairs than this are no evidence.
inline constexpr std::int32_t kMinAgreeingPairs = 4;

// Turns the ten best hypotheses by -24 to 24 degrees in steps of 2 and replaces `best` by whatever
// is better: greater count, then greater matchedRatio, greater coverage, smaller distanceMedian,
// smaller angleMedian. Full ties keep the earlier one.
// REQUIRES: findBestAlignment has filled the context.
// Throws: std::bad_alloc.
void refineAlignment(const MatchContext& context, AlignmentEvaluation& best);

}  // namespace orl::matcher
