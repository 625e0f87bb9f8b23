#include "matcher/api/match_decision.h"

#include <algorithm>
#include <array>

namespace orl::matcher {
namespace {

// From this level on the score decides alone.
constexpr std::int32_t kCertainLevel = 5;
// Deliberate: so it does at this one level below, while the level between them (4) must pass its
// row of the table.
constexpr std::int32_t kLowCertainLevel = 3;

// What the figures must satisfy at one level.
struct DecisionRule {
    std::int32_t level;
    float maxDistanceMedian;  // grid units
    float maxAngleMedian;     // degrees
    float minCoverage;
    float minMatchedRatio;
    std::uint16_t minMatchedCount;
    bool requiresRefined;
};

constexpr std::array<DecisionRule, 16> kDecisionRules = {{
    {4, 15.0F, 15.0F, 0.35F, 0.55F, 16, true},
    {2, 15.0F, 15.4688F, 0.40F, 0.55F, 14, true},
    {1, 15.0F, 15.0F, 0.45F, 0.50F, 14, true},
    {0, 13.0F, 13.0F, 0.44461F, 0.50F, 14, true},
    {-1, 11.3498F, 17.5781F, 0.35F, 0.50F, 14, true},
    {-2, 13.0F, 11.0F, 0.45F, 0.50F, 18, true},
    {-3, 15.0F, 11.25F, 0.35F, 0.50F, 15, true},
    {-4, 11.7019F, 8.0F, 0.40F, 0.50F, 14, true},
    {-5, 15.0F, 7.0F, 0.35F, 0.50F, 14, true},
    {-6, 7.65416F, 12.0F, 0.40F, 0.45F, 14, true},
    {-7, 12.0F, 14.0F, 0.457249F, 0.45F, 18, true},
    {-8, 15.0F, 8.0F, 0.508312F, 0.45F, 18, true},
    {-9, 10.0F, 11.0F, 0.40F, 0.45F, 12, true},
    {-10, 10.0F, 15.0F, 0.40F, 0.50F, 17, true},
    {-11, 12.0F, 11.0F, 0.40F, 0.45F, 12, true},
    {-12, 15.0F, 12.0F, 0.35F, 0.50F, 18, true},
}};

// Comparisons are turned so that a NaN median fails and a NaN coverage or ratio passes.
bool satisfies(const MatchDecisionInput& input, const DecisionRule& rule) {
    return (input.refined || !rule.requiresRefined) &&
           input.distanceMedian <= rule.maxDistanceMedian &&
           input.angleMedian <= rule.maxAngleMedian && !(input.coverage < rule.minCoverage) &&
           !(input.matchedRatio < rule.minMatchedRatio) &&
           input.matchedCount >= rule.minMatchedCount;
}

}  // namespace

std::int32_t matchLevel(std::uint16_t score, std::int32_t threshold) {
    constexpr std::int64_t kHalfTen = 5;
    constexpr std::int64_t kTen = 10;
    const std::int64_t scoreTens = (score + kHalfTen) / kTen;
    const std::int64_t thresholdTens = (threshold + kHalfTen) / kTen;
    return static_cast<std::int32_t>(scoreTens - thresholdTens);
}

bool decideMatch(const MatchDecisionInput& input) {
    if (!input.fingerAgreement) {
        return false;
    }
    const std::int32_t level = matchLevel(input.score, input.threshold);
    if (level >= kCertainLevel || level == kLowCertainLevel) {
        return true;
    }
    const auto* const rule = std::ranges::find(kDecisionRules, level, &DecisionRule::level);
    return rule != kDecisionRules.end() && satisfies(input, *rule);
}

}  // namespace orl::matcher
