#pragma once

// From an alignment's figures to a finger score of 0..1000. Pure functions, never throw. All
// fractional limits are single precision.

#include <cstdint>

#include "matcher/matching/alignment_records.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

inline constexpr std::uint32_t kMaxScore = 1000;

// Score of `matched` agreeing minutia pairs between fingers of countA and countB minutiae:
// matched^2 * 1000 / (countA * countB), reduced in proportion when the smaller count is below 18,
// at most 1000. 0 for fewer than 4 matched and for a finger without minutiae.
// REQUIRES: matched <= 65535.
std::uint32_t scoreFromCount(std::uint64_t matched, std::uint64_t countA, std::uint64_t countB);

// Whether a score is doubtful enough for the fine rotation search: 180..400.
bool isInRefinementBand(std::uint32_t score);

// Bonus of an alignment whose figures pass the quality gate, in tens of points: 0 when they do not,
// 1 for scores of 29 and more, up to 4 below.
std::uint32_t qualityBonus(const AlignmentEvaluation& evaluation,
                           bool refined,
                           std::uint32_t score);

// Penalty for poor figures, in tens of points: 0..4. Meant for scores of 290..400; the caller keeps
// to that band.
std::uint32_t qualityPenaltyLevel(const AlignmentEvaluation& evaluation, std::uint32_t score);

// The same rule with the band: 0 for scores outside 290..400.
std::uint32_t bandedQualityPenaltyLevel(const AlignmentEvaluation& evaluation, std::uint32_t score);

// The score after the bonus (for scores of 180..310) and then the penalty (for scores of 290..400,
// the bonus included).
std::uint32_t applyQualityStages(const AlignmentEvaluation& evaluation,
                                 bool refined,
                                 std::uint32_t score);

// Whether a finger match may still be better than `best`, or tie with it, when no alignment has
// more than `matchedBound` agreeing pairs, nor more than `refinedMatchedBound` after a refinement.
// REQUIRES: matchedBound <= refinedMatchedBound <= 65535.
bool mayBeBetter(const FingerMatchResult& best,
                 std::uint64_t matchedBound,
                 std::uint64_t refinedMatchedBound,
                 std::uint64_t countA,
                 std::uint64_t countB);

// The smallest number of agreeing pairs, 4 at least, for which mayBeBetter holds when no refinement
// gives more than `matchedBound`; matchedBound + 1 when it holds for none up to there. What it
// holds for it holds for all greater numbers.
std::uint64_t leastUsefulMatched(const FingerMatchResult& best,
                                 std::uint64_t matchedBound,
                                 std::uint64_t countA,
                                 std::uint64_t countB);

// Direction steps to degrees at 256 steps a turn, brought into (-180, 180]: -10 gives -14.0625, 246
// the same, 128 gives 180.
float reportedRotationDegrees(std::int16_t rotationSteps);

}  // namespace orl::matcher
