#include "matcher/matching/score.h"

#include <algorithm>

namespace orl::matcher {
namespace {

constexpr std::uint64_t kMinMatchedPairs = 4;
constexpr std::uint64_t kFewMinutiaeBelow = 18;  // a smaller finger's score is reduced

struct ScoreBand {
    std::uint32_t lowest;
    std::uint32_t highest;

    constexpr bool contains(std::uint32_t score) const {
        return score >= lowest && score <= highest;
    }
};

constexpr ScoreBand kRefinementBand = {180, 400};
constexpr ScoreBand kBonusBand = {180, 310};
constexpr ScoreBand kPenaltyBand = {290, 400};
constexpr std::uint32_t kPointsPerLevel = 10;

constexpr std::uint32_t kGradedBonusBelowScore = 29;
constexpr std::uint32_t kThinCoverageLevelFromScore = 33;

// Least coverage and matched ratio, greatest medians (grid units, degrees) that pass.
struct QualityLimits {
    float minCoverage;
    float minMatchedRatio;
    float maxDistanceMedian;
    float maxAngleMedian;
};

constexpr QualityLimits kBonusGate = {0.4F, 0.45F, 10.5F, 12.0F};
constexpr QualityLimits kBonusMiddleTier = {0.52F, 0.5F, 8.75F, 9.5F};
constexpr QualityLimits kBonusUpperTier = {0.6F, 0.52F, 7.5F, 8.0F};
constexpr QualityLimits kPenaltyFree = {0.4F, 0.45F, 9.5F, 12.0F};

// Deliberate: the coverage is held against the matched ratio's limit, 0.45, here.
constexpr float kGoodMinCoverage = 0.45F;
constexpr float kGoodMaxAngleMedian = 11.5F;

// Figures beyond any of these cost a level, whatever the matched ratio.
struct PenaltyLimits {
    float coverageBelow;
    float distanceMedianAbove;
    float angleMedianAbove;
};

constexpr PenaltyLimits kPenaltyLevelTwo = {0.38F, 11.0F, 14.0F};
constexpr PenaltyLimits kPenaltyLevelThree = {0.32F, 12.5F, 18.0F};

// Many pairs that agree on a small patch: the top level.
constexpr float kThinCoverageBelow = 0.4F;
constexpr float kThinMatchedRatioAbove = 0.55F;

bool passes(const AlignmentEvaluation& evaluation, const QualityLimits& limits) {
    return evaluation.coverage >= limits.minCoverage &&
           evaluation.matchedRatio >= limits.minMatchedRatio &&
           evaluation.distanceMedian <= limits.maxDistanceMedian &&
           evaluation.angleMedian <= limits.maxAngleMedian;
}

bool exceeds(const AlignmentEvaluation& evaluation, const PenaltyLimits& limits) {
    return evaluation.coverage < limits.coverageBelow ||
           evaluation.distanceMedian > limits.distanceMedianAbove ||
           evaluation.angleMedian > limits.angleMedianAbove;
}

std::uint32_t bonusTier(const AlignmentEvaluation& evaluation, bool refined) {
    const std::uint32_t refinedStep = refined ? 1 : 0;
    if (passes(evaluation, kBonusUpperTier)) {
        return refinedStep + 2;
    }
    if (passes(evaluation, kBonusMiddleTier)) {
        return refinedStep + 1;
    }
    return 1;
}

}  // namespace

std::uint32_t scoreFromCount(std::uint64_t matched, std::uint64_t countA, std::uint64_t countB) {
    if (matched < kMinMatchedPairs || countA == 0 || countB == 0) {
        return 0;
    }
    std::uint64_t score = matched * matched * kMaxScore / (countA * countB);
    const std::uint64_t smallerCount = std::min(countA, countB);
    if (smallerCount < kFewMinutiaeBelow) {
        score = score * smallerCount / kFewMinutiaeBelow;
    }
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(score, kMaxScore));
}

bool isInRefinementBand(std::uint32_t score) {
    return kRefinementBand.contains(score);
}

std::uint32_t qualityBonus(const AlignmentEvaluation& evaluation,
                           bool refined,
                           std::uint32_t score) {
    if (!passes(evaluation, kBonusGate)) {
        return 0;
    }
    // Deliberate: the driver's scores are 180 and more, so every finger pair that passes the gate
    // gets one level, whatever its tier.
    if (score >= kGradedBonusBelowScore) {
        return 1;
    }
    const std::uint32_t tier = bonusTier(evaluation, refined);
    if (!refined) {
        return tier;
    }
    const bool good =
        evaluation.coverage >= kGoodMinCoverage && evaluation.angleMedian <= kGoodMaxAngleMedian;
    return good ? tier + 1 : tier;
}

// 4 for many pairs on a small patch, 3 and 2 for figures beyond the limits of those levels, 1 for
// such as merely miss what goes without a penalty.
std::uint32_t qualityPenaltyLevel(const AlignmentEvaluation& evaluation, std::uint32_t score) {
    if (score >= kThinCoverageLevelFromScore && evaluation.coverage < kThinCoverageBelow &&
        evaluation.matchedRatio > kThinMatchedRatioAbove) {
        return 4;
    }
    if (exceeds(evaluation, kPenaltyLevelThree)) {
        return 3;
    }
    if (exceeds(evaluation, kPenaltyLevelTwo)) {
        return 2;
    }
    return passes(evaluation, kPenaltyFree) ? 0 : 1;
}

std::uint32_t bandedQualityPenaltyLevel(const AlignmentEvaluation& evaluation,
                                        std::uint32_t score) {
    return kPenaltyBand.contains(score) ? qualityPenaltyLevel(evaluation, score) : 0;
}

std::uint32_t applyQualityStages(const AlignmentEvaluation& evaluation,
                                 bool refined,
                                 std::uint32_t score) {
    if (kBonusBand.contains(score)) {
        const std::uint32_t bonus = qualityBonus(evaluation, refined, score);
        score = std::min(score + kPointsPerLevel * bonus, kMaxScore);
    }
    if (kPenaltyBand.contains(score)) {
        const std::uint32_t penalty = kPointsPerLevel * qualityPenaltyLevel(evaluation, score);
        score = score > penalty ? score - penalty : 0;
    }
    return score;
}

bool mayBeBetter(const FingerMatchResult& best,
                 std::uint64_t matchedBound,
                 std::uint64_t refinedMatchedBound,
                 std::uint64_t countA,
                 std::uint64_t countB) {
    const std::uint32_t score = scoreFromCount(matchedBound, countA, countB);
    if (score < kRefinementBand.lowest) {
        // Below all bands the score grows with the count and is final.
        return score > best.score || (score == best.score && matchedBound >= best.matchedCount);
    }
    // A refinement may raise the count; after it only the bonus adds to the score.
    return scoreFromCount(refinedMatchedBound, countA, countB) + kPointsPerLevel >= best.score;
}

std::uint64_t leastUsefulMatched(const FingerMatchResult& best,
                                 std::uint64_t matchedBound,
                                 std::uint64_t countA,
                                 std::uint64_t countB) {
    std::uint64_t least = kMinMatchedPairs;
    std::uint64_t end = std::max(matchedBound + 1, least);
    while (least < end) {
        const std::uint64_t middle = (least + end) / 2;
        if (mayBeBetter(best, middle, matchedBound, countA, countB)) {
            end = middle;
        } else {
            least = middle + 1;
        }
    }
    return least;
}

float reportedRotationDegrees(std::int16_t rotationSteps) {
    constexpr float kDegreesPerStep = 1.40625F;  // 360 / 256
    constexpr float kHalfTurnDegrees = 180.0F;
    constexpr float kFullTurnDegrees = 360.0F;
    float degrees = static_cast<float>(rotationSteps) * kDegreesPerStep;
    while (degrees > kHalfTurnDegrees) {
        degrees -= kFullTurnDegrees;
    }
    while (degrees <= -kHalfTurnDegrees) {
        degrees += kFullTurnDegrees;
    }
    return degrees;
}

}  // namespace orl::matcher
