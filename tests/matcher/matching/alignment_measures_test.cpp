#include "matcher/matching/alignment_measures.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "tests/matcher/matching/voted_pairs.h"

namespace orl::matcher {
namespace {

using test::Displaced;
using test::Vote;

TEST(AlignmentReference, MeasuresTheBoxOfAllPairs) {
    const Vote vote({Displaced(40, 40, 0, 0),
                     Displaced(49, 40, 0, 0),
                     Displaced(40, 59, 0, 0),
                     Displaced(49, 59, 0, 0),
                     Displaced(79, 40, 80, 100)});
    // First box 40..79 by 40..59: 40 * 20; second box 40..159 by 40..140: 120 * 101.
    EXPECT_EQ(vote.reference().firstArea, 800.0F);
    EXPECT_EQ(vote.reference().secondArea, 12120.0F);
    EXPECT_EQ(vote.reference().firstMinutiaCount, 10U);
    EXPECT_EQ(vote.reference().secondMinutiaCount, 20U);
    const AlignmentEvaluation best = vote.best();
    EXPECT_EQ(best.count, 4);
    EXPECT_EQ(best.anchor, 0U);
    EXPECT_EQ(best.matchedRatio, 0.4F);  // 4 of 10
    // The agreeing pairs cover 10 * 20 in both.
    EXPECT_EQ(best.coverage, (200.0F / 800.0F + 200.0F / 12120.0F) * 0.5F);
}

TEST(AlignmentReference, MeasuresASinglePairAsOneGridUnitAndTheWholeGridAs65536) {
    const AlignmentReference one = alignmentReference(std::vector{Displaced(255, 0, 0, 9)}, 1, 2);
    EXPECT_EQ(one.firstArea, 1.0F);
    EXPECT_EQ(one.secondArea, 1.0F);
    const AlignmentReference whole = alignmentReference(
        std::vector{Displaced(0, 255, 255, -255), Displaced(255, 0, -255, 255)}, 1, 2);
    EXPECT_EQ(whole.firstArea, 65536.0F);
    EXPECT_EQ(whole.secondArea, 65536.0F);
}

// Every rotation that a hypothesis has, and every pair of directions.
TEST(DirectionTest, RejectsWhatIs44StepsApartOrMore) {
    for (int rotation = -255; rotation <= 255; ++rotation) {
        const auto turn = static_cast<std::int16_t>(rotation);
        for (int first = 0; first < 256; ++first) {
            for (int second = 0; second < 256; ++second) {
                MinutiaPair pair;
                pair.first.angle = static_cast<std::uint8_t>(first);
                pair.second.angle = static_cast<std::uint8_t>(second);
                ASSERT_EQ(isDirectionRejected(turn, pair), directionResidual(turn, pair) >= 44)
                    << rotation << ", " << first << ", " << second;
            }
        }
    }
}

float MedianOf(std::vector<float> squared) {
    return medianResidual(squared);
}

TEST(MedianResidual, IsTheRootOfTheMiddleSquareOrTheMeanOfTheMiddleTwo) {
    EXPECT_EQ(MedianOf({}), 0.0F);
    EXPECT_EQ(MedianOf({9.0F}), 3.0F);
    EXPECT_EQ(MedianOf({64.0F, 4.0F, 25.0F}), 5.0F);
    EXPECT_EQ(MedianOf({64.0F, 4.0F}), 5.0F);                 // (8 + 2) / 2
    EXPECT_EQ(MedianOf({64.0F, 4.0F, 100.0F, 36.0F}), 7.0F);  // (8 + 6) / 2
}

float MedianOfSteps(const std::vector<int>& steps) {
    DirectionResiduals residuals;
    for (const int residual : steps) {
        residuals.add(residual);
    }
    return residuals.median();
}

// A step is 360 / 256 = 1.40625 degrees.
TEST(DirectionResiduals, HaveTheMiddleOneOrTheMeanOfTheMiddleTwoAsTheirMedian) {
    EXPECT_EQ(MedianOfSteps({}), 0.0F);
    EXPECT_EQ(MedianOfSteps({43}), 60.46875F);
    EXPECT_EQ(MedianOfSteps({32, 0, 16}), 22.5F);
    EXPECT_EQ(MedianOfSteps({32, 0, 0, 16}), 11.25F);  // (0 + 22.5) / 2
    EXPECT_EQ(MedianOfSteps({7, 7, 7, 7}), 9.84375F);
}

// Each row is better than the next by its first figure that differs, worse by all later ones.
TEST(IsBetterEvaluation, ComparesCountRatioCoverageAndMediansInThisOrder) {
    const auto row = [](int count, float ratio, float coverage, float distance, float angle) {
        return AlignmentEvaluation{.count = count,
                                   .distanceMedian = distance,
                                   .angleMedian = angle,
                                   .coverage = coverage,
                                   .matchedRatio = ratio};
    };
    const std::vector<AlignmentEvaluation> falling = {row(6, 0.1F, 0.1F, 9.0F, 9.0F),
                                                      row(5, 0.6F, 0.1F, 8.0F, 8.0F),
                                                      row(5, 0.5F, 0.8F, 7.0F, 7.0F),
                                                      row(5, 0.5F, 0.7F, 5.0F, 6.0F),
                                                      row(5, 0.5F, 0.7F, 6.0F, 3.0F),
                                                      row(5, 0.5F, 0.7F, 6.0F, 4.0F)};
    for (std::size_t i = 0; i < falling.size(); ++i) {
        for (std::size_t j = 0; j < falling.size(); ++j) {
            EXPECT_EQ(isBetterEvaluation(falling[i], falling[j]), i < j) << i << " and " << j;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
