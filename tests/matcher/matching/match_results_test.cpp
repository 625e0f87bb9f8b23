#include "matcher/matching/match_results.h"

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

FingerMatchResult Middling() {
    return {.score = 300,
            .pairCount = 40,
            .matchedCount = 20,
            .rotationDegrees = 5.625F,
            .orientation = 1,
            .distanceMedian = 5.0F,
            .angleMedian = 4.0F,
            .coverage = 0.6F,
            .matchedRatio = 0.5F,
            .refined = 1};
}

void ExpectBetter(const FingerMatchResult& better, const FingerMatchResult& worse) {
    EXPECT_TRUE(IsBetterMatch(better, worse));
    EXPECT_FALSE(IsBetterMatch(worse, better));
}

TEST(IsBetterMatch, PrefersTheGreaterScoreWhateverElse) {
    FingerMatchResult better;
    better.score = 301;
    ExpectBetter(better, Middling());
}

TEST(IsBetterMatch, PrefersTheGreaterMatchedCountAtEqualScore) {
    FingerMatchResult better;
    better.score = 300;
    better.matchedCount = 21;
    better.distanceMedian = 99.0F;
    ExpectBetter(better, Middling());
}

TEST(IsBetterMatch, PrefersTheGreaterMatchedRatioNext) {
    FingerMatchResult better = Middling();
    better.matchedRatio = 0.51F;
    better.coverage = 0.0F;
    better.distanceMedian = 99.0F;
    ExpectBetter(better, Middling());
}

TEST(IsBetterMatch, PrefersTheGreaterCoverageNext) {
    FingerMatchResult better = Middling();
    better.coverage = 0.61F;
    better.distanceMedian = 99.0F;
    ExpectBetter(better, Middling());
}

TEST(IsBetterMatch, PrefersTheSmallerDistanceMedianLast) {
    FingerMatchResult better = Middling();
    better.distanceMedian = 4.9F;
    ExpectBetter(better, Middling());
}

TEST(IsBetterMatch, KeepsTheBestWhenAllRankedFiguresAreEqual) {
    FingerMatchResult other = Middling();
    other.pairCount = 99;
    other.rotationDegrees = 0.0F;
    other.orientation = 0;
    other.angleMedian = 0.0F;
    other.refined = 0;
    EXPECT_FALSE(IsBetterMatch(other, Middling()));
    EXPECT_FALSE(IsBetterMatch(Middling(), other));
}

TEST(FingerMatchResult, IsZeroBeforeAMatch) {
    const FingerMatchResult result;
    EXPECT_EQ(result.score, 0);
    EXPECT_EQ(result.pairCount, 0);
    EXPECT_EQ(result.matchedCount, 0);
    EXPECT_EQ(result.rotationDegrees, 0.0F);
    EXPECT_EQ(result.orientation, 0U);
    EXPECT_EQ(result.distanceMedian, 0.0F);
    EXPECT_EQ(result.angleMedian, 0.0F);
    EXPECT_EQ(result.coverage, 0.0F);
    EXPECT_EQ(result.matchedRatio, 0.0F);
    EXPECT_EQ(result.refined, 0U);
}

}  // namespace
}  // namespace orl::matcher
