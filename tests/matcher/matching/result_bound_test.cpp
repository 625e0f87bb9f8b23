// mayBeBetter lets the driver pass over alignments: it must never say no to a result that is
// better.

#include <algorithm>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "matcher/matching/score.h"

namespace orl::matcher {
namespace {

// The result that the driver would make of these figures.
FingerMatchResult ResultOf(const AlignmentEvaluation& evaluation,
                           std::uint64_t matched,
                           std::uint64_t refinedMatched,
                           std::uint64_t countA,
                           std::uint64_t countB) {
    std::uint32_t score = scoreFromCount(matched, countA, countB);
    const bool isRefined = isInRefinementBand(score);
    if (isRefined) {
        matched = refinedMatched;
        score = scoreFromCount(matched, countA, countB);
    }
    return {.score = static_cast<std::uint16_t>(applyQualityStages(evaluation, isRefined, score)),
            .matchedCount = static_cast<std::uint16_t>(matched),
            .coverage = evaluation.coverage,
            .matchedRatio = evaluation.matchedRatio,
            .refined = isRefined ? 1U : 0U};
}

TEST(MayBeBetter, NeverDeniesAResultThatIsBetterOrTies) {
    std::mt19937 random(5);
    const auto below = [&](std::uint64_t limit) { return std::uint64_t{random()} % limit; };
    int denied = 0;
    int allowed = 0;
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t countA = below(60);
        const std::uint64_t countB = below(60);
        const std::uint64_t bound = below(50);
        const std::uint64_t refinedBound = bound + below(12);
        const std::uint64_t matched = bound - below(std::min<std::uint64_t>(bound + 1, 6));
        const std::uint64_t refined = std::min(matched + below(12), refinedBound);
        const AlignmentEvaluation evaluation{
            .distanceMedian = static_cast<float>(below(14)),
            .angleMedian = static_cast<float>(below(20)),
            .coverage = static_cast<float>(below(101)) / 100.0F,
            .matchedRatio = static_cast<float>(below(101)) / 100.0F};
        const FingerMatchResult result = ResultOf(evaluation, matched, refined, countA, countB);
        const FingerMatchResult best{.score = static_cast<std::uint16_t>(i % 3 == 0   ? result.score
                                                                         : i % 3 == 1 ? below(1001)
                                                                                      : below(120)),
                                     .matchedCount = static_cast<std::uint16_t>(
                                         i % 2 == 0 ? result.matchedCount : below(60)),
                                     .coverage = result.coverage,
                                     .matchedRatio = result.matchedRatio};
        if (mayBeBetter(best, bound, refinedBound, countA, countB)) {
            ++allowed;
        } else {
            ++denied;
            // Not better, and not equal: a tie is left to the full comparison.
            ASSERT_TRUE(IsBetterMatch(best, result))
                << "counts " << countA << ", " << countB << ", bounds " << bound << ", "
                << refinedBound << ", matched " << matched << ", refined " << refined;
        }
    }
    EXPECT_GT(allowed, 10000);
    EXPECT_GT(denied, 10000);
}

TEST(MayBeBetter, GoesByScoreAndCountBelowTheBands) {
    // 9 of 25 and 25: 81000 / 625 = 129.
    const auto with = [](std::uint16_t score, std::uint16_t matched) {
        return FingerMatchResult{.score = score, .matchedCount = matched};
    };
    EXPECT_TRUE(mayBeBetter(with(128, 60), 9, 25, 25, 25));
    EXPECT_TRUE(mayBeBetter(with(129, 9), 9, 25, 25, 25));
    EXPECT_FALSE(mayBeBetter(with(129, 10), 9, 25, 25, 25));
    EXPECT_FALSE(mayBeBetter(with(130, 0), 9, 25, 25, 25));
}

TEST(MayBeBetter, ReckonsWithARefinementAndTheBonusFrom180On) {
    // 11 of 25 and 25: 121000 / 625 = 193; 15 after a refinement: 360, and 10 for the bonus.
    EXPECT_TRUE(mayBeBetter({.score = 370}, 11, 15, 25, 25));
    EXPECT_FALSE(mayBeBetter({.score = 371}, 11, 15, 25, 25));
    EXPECT_FALSE(mayBeBetter({.score = 204}, 11, 11, 25, 25));
    EXPECT_TRUE(mayBeBetter({.score = 203}, 11, 11, 25, 25));
}

TEST(MayBeBetter, NeverDeniesAnythingToAZeroResult) {
    for (std::uint64_t bound : {0U, 3U, 4U, 100U, 65535U}) {
        EXPECT_TRUE(mayBeBetter({}, bound, bound, 30, 30)) << bound;
        EXPECT_TRUE(mayBeBetter({}, bound, bound, 0, 30)) << bound;
    }
}

TEST(LeastUsefulMatched, IsTheFirstCountFromFourOnThatMayBeBetter) {
    std::mt19937 random(6);
    const auto below = [&](std::uint64_t limit) { return std::uint64_t{random()} % limit; };
    int amongMany = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t countA = below(60);
        const std::uint64_t countB = below(60);
        const std::uint64_t bound = below(70);
        const FingerMatchResult best{
            .score = static_cast<std::uint16_t>(below(i % 2 == 0 ? 1001 : 250)),
            .matchedCount = static_cast<std::uint16_t>(below(60))};
        const std::uint64_t least = leastUsefulMatched(best, bound, countA, countB);
        ASSERT_GE(least, 4U);
        ASSERT_LE(least, std::max<std::uint64_t>(bound + 1, 4));
        for (std::uint64_t matched = 4; matched <= bound; ++matched) {
            ASSERT_EQ(mayBeBetter(best, matched, bound, countA, countB), matched >= least)
                << "counts " << countA << ", " << countB << ", bound " << bound << ", matched "
                << matched << ", best " << best.score << " by " << best.matchedCount;
        }
        amongMany += least > 4 && least <= bound ? 1 : 0;
    }
    EXPECT_GT(amongMany, 2000);
}

}  // namespace
}  // namespace orl::matcher
