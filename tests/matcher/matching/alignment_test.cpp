#include "matcher/matching/alignment.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/matcher/matching/voted_pairs.h"

namespace orl::matcher {
namespace {

using test::Displaced;
using test::Vote;

constexpr AlignmentReference kReference = {.firstArea = 65536.0F,
                                           .secondArea = 65536.0F,
                                           .firstMinutiaCount = 10,
                                           .secondMinutiaCount = 20};

AlignmentEvaluation Evaluated(const std::vector<MinutiaPair>& pairs,
                              int rotation = 0,
                              const AlignmentReference& reference = kReference) {
    return Vote(pairs)->evaluateAlignment(
        0, static_cast<std::int16_t>(rotation), reference, EvaluationDepth::kWithStatistics);
}

// An anchor and another pair at the same spot, so that positions agree under any rotation.
std::vector<MinutiaPair> WithDirections(int anchorFirst, int anchorSecond, int first, int second) {
    const auto vertex = [](int direction) {
        return TriangleVertex{90, 90, static_cast<std::uint8_t>(direction), 0};
    };
    return {{vertex(anchorFirst), vertex(anchorSecond)}, {vertex(first), vertex(second)}};
}

TEST(EvaluateAlignment, CountsASingleAnchorAsOne) {
    const AlignmentEvaluation evaluation = Evaluated({Displaced(40, 40, 0, 0)});
    EXPECT_EQ(evaluation.count, 1);
    EXPECT_EQ(evaluation.distanceMedian, 0.0F);
    EXPECT_EQ(evaluation.angleMedian, 0.0F);
    EXPECT_EQ(evaluation.matchedRatio, 0.1F);         // 1 of 10
    EXPECT_EQ(evaluation.coverage, 1.0F / 65536.0F);  // one grid unit of all
}

TEST(EvaluateAlignment, AcceptsAResidualOf18GridUnitsButNoMore) {
    struct Case {
        int dx, dy, count;
        const char* why;
    };
    for (const Case& c : {Case{18, 0, 2, "18^2 = 324"},
                          Case{0, -18, 2, "18^2 = 324"},
                          Case{18, 1, 1, "324 + 1 = 325"},
                          Case{-1, 18, 1, "1 + 324 = 325"},
                          Case{12, 13, 2, "144 + 169 = 313"},
                          Case{13, 13, 1, "169 + 169 = 338"},
                          Case{19, 0, 1, "19^2 = 361"}}) {
        EXPECT_EQ(Evaluated({Displaced(40, 40, 0, 0), Displaced(90, 90, c.dx, c.dy)}).count,
                  c.count)
            << c.why;
    }
}

TEST(EvaluateAlignment, MovesTheFirstFingerOntoTheAnchorsSecondVertex) {
    // Everything is displaced by (30, -20); the residual is that of the second pair alone.
    const AlignmentEvaluation evaluation =
        Evaluated({Displaced(40, 40, 30, -20), Displaced(90, 90, 33, -16)});
    EXPECT_EQ(evaluation.count, 2);
    EXPECT_EQ(evaluation.distanceMedian, 5.0F);  // sqrt(3^2 + 4^2)
}

TEST(EvaluateAlignment, RotatesAboutTheAnchorTowardPositiveY) {
    // 64 steps of 255 are 90.35 degrees: (60, 0) goes to (-0.4, 60.0).
    const MinutiaPair anchor = {{40, 40, 0, 0}, {120, 120, 64, 0}};
    const MinutiaPair turned = {{100, 40, 0, 0}, {120, 180, 64, 0}};
    const MinutiaPair against = {{100, 40, 0, 0}, {120, 60, 64, 0}};
    EXPECT_EQ(Evaluated({anchor, turned}, 64).count, 2);
    EXPECT_EQ(Evaluated({anchor, against}, 64).count, 1);
    EXPECT_LT(Evaluated({anchor, turned}, 64).distanceMedian, 0.5F);
}

TEST(EvaluateAlignment, RejectsADirectionDifferenceOf44) {
    const auto pairs = WithDirections(50, 50, 70, 70);
    EXPECT_EQ(Evaluated(pairs, 43).count, 2);
    EXPECT_EQ(Evaluated(pairs, 43).angleMedian, 43 * 1.40625F);
    EXPECT_EQ(Evaluated(pairs, 44).count, 1);
    EXPECT_EQ(Evaluated(pairs, -43).count, 2);
    EXPECT_EQ(Evaluated(pairs, -44).count, 1);
}

TEST(EvaluateAlignment, TakesDirectionsHalfATurnApartAsEqualInTheDirectionTest) {
    // Expected 70 + 128 = 198, found 70: 128 apart, min(255 - 128, 128) = 127, min(1, 127) = 1.
    const AlignmentEvaluation evaluation = Evaluated(WithDirections(50, 50, 70, 70), 128);
    EXPECT_EQ(evaluation.count, 2);
    EXPECT_EQ(evaluation.angleMedian, 1.40625F);
}

TEST(EvaluateAlignment, TellsDirectionsHalfATurnApartInTheRelativeTest) {
    // Expected 70, found 198: 1 apart as lines; but the turns from the anchor are 20 and 148.
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 70, 198)).count, 1);
}

TEST(EvaluateAlignment, RejectsARelativeDirectionDifferenceOf36) {
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 100, 135)).count, 2);
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 100, 136)).count, 1);
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 100, 65)).count, 2);
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 100, 64)).count, 1);
}

TEST(EvaluateAlignment, CountsARelativeTurnOf255AsNextToOne) {
    // Turns from the anchor: 255 for the equal direction, 1 and 254 for the neighbours.
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 50, 51)).count, 2);
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 50, 49)).count, 2);
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 50, 85)).count, 2);  // 255 and 35: 35 apart
    EXPECT_EQ(Evaluated(WithDirections(50, 50, 50, 86)).count, 1);  // 255 and 36
}

TEST(EvaluateAlignment, ReducesTheExpectedDirectionModulo256) {
    // 5 - 10 is -5, which reads as 251; modulo 255 it would be 250 and one step off.
    const AlignmentEvaluation evaluation = Evaluated(WithDirections(20, 10, 5, 251), -10);
    EXPECT_EQ(evaluation.count, 2);
    EXPECT_EQ(evaluation.angleMedian, 0.0F);
    // 250 + 10 is 260, which reads as 4.
    EXPECT_EQ(Evaluated(WithDirections(20, 30, 250, 4), 10).angleMedian, 0.0F);
}

TEST(EvaluateAlignment, TakesTheMiddleResidualOfAnOddNumberAsTheMedian) {
    const AlignmentEvaluation evaluation = Evaluated({Displaced(40, 40, 0, 0),
                                                      Displaced(50, 50, 10, 0),
                                                      Displaced(60, 60, 1, 0),
                                                      Displaced(70, 70, 3, 0)});
    EXPECT_EQ(evaluation.count, 4);
    EXPECT_EQ(evaluation.distanceMedian, 3.0F);  // of 1, 3, 10; the anchor has no residual
}

TEST(EvaluateAlignment, TakesTheMeanOfTheMiddleResidualsOfAnEvenNumber) {
    std::vector<MinutiaPair> pairs = {Displaced(40, 40, 0, 0),
                                      Displaced(50, 50, 10, 0),
                                      Displaced(60, 60, 1, 0),
                                      Displaced(70, 70, 3, 0),
                                      Displaced(80, 80, 0, 6)};
    pairs[1].second.angle = 54;  // 4, 0, 2 and 9 steps off
    pairs[3].second.angle = 48;
    pairs[4].second.angle = 59;
    const AlignmentEvaluation evaluation = Evaluated(pairs);
    EXPECT_EQ(evaluation.count, 5);
    EXPECT_EQ(evaluation.distanceMedian, 4.5F);          // of 1, 3, 6, 10
    EXPECT_EQ(evaluation.angleMedian, 3.0F * 1.40625F);  // of 0, 2, 4, 9 steps
}

TEST(EvaluateAlignment, MeasuresTheAgreeingPairsOnly) {
    const AlignmentEvaluation evaluation =
        Evaluated({Displaced(40, 40, 0, 0), Displaced(200, 200, 40, 0), Displaced(59, 69, 2, 0)});
    EXPECT_EQ(evaluation.count, 2);
    EXPECT_EQ(evaluation.distanceMedian, 2.0F);
    // Boxes 40..59 by 40..69 and 40..61 by 40..69: 20 * 30 = 600 and 22 * 30 = 660.
    EXPECT_EQ(evaluation.coverage, (600.0F / 65536.0F + 660.0F / 65536.0F) * 0.5F);
}

TEST(EvaluateAlignment, ClampsEachOverlapRatioToOne) {
    AlignmentReference reference = kReference;
    reference.firstArea = 100.0F;
    reference.secondArea = 2640.0F;
    // Boxes of 600 and 660 grid units squared, as above: ratios 6, cut to 1, and 0.25.
    EXPECT_EQ(Evaluated({Displaced(40, 40, 0, 0), Displaced(59, 69, 2, 0)}, 0, reference).coverage,
              0.625F);
}

TEST(EvaluateAlignment, CountsAnOverlapAsZeroWithoutAReferenceArea) {
    AlignmentReference reference = kReference;
    reference.firstArea = 0.0F;
    reference.secondArea = 660.0F;
    EXPECT_EQ(Evaluated({Displaced(40, 40, 0, 0), Displaced(59, 69, 2, 0)}, 0, reference).coverage,
              0.5F);
}

TEST(EvaluateAlignment, CoversNothingAndMatchesAllAgainstAReferenceWithoutFigures) {
    const AlignmentEvaluation evaluation = Evaluated({Displaced(40, 40, 0, 0)}, 0, {});
    EXPECT_EQ(evaluation.coverage, 0.0F);
    EXPECT_EQ(evaluation.matchedRatio, 1.0F);  // 1 of 0, which counts as 1
}

TEST(EvaluateAlignment, DividesByTheSmallerMinutiaCountAndByOneAtLeast) {
    const std::vector<MinutiaPair> pairs = {Displaced(40, 40, 0, 0), Displaced(50, 50, 0, 0)};
    struct Case {
        std::uint64_t first, second;
        float ratio;
    };
    for (const Case& c : {Case{10, 20, 0.2F},
                          Case{20, 8, 0.25F},
                          Case{2, 2, 1.0F},
                          Case{1, 9, 1.0F},
                          Case{0, 9, 1.0F},
                          Case{9, 0, 1.0F}}) {
        AlignmentReference reference = kReference;
        reference.firstMinutiaCount = c.first;
        reference.secondMinutiaCount = c.second;
        EXPECT_EQ(Evaluated(pairs, 0, reference).matchedRatio, c.ratio)
            << c.first << " and " << c.second;
    }
}

TEST(EvaluateAlignment, LeavesTheStatisticsAtZeroWhenOnlyCounting) {
    const std::vector<MinutiaPair> pairs = {
        Displaced(90, 90, 3, 4), Displaced(40, 40, 0, 0), Displaced(50, 50, 0, 0)};
    const AlignmentEvaluation evaluation =
        Vote(pairs)->evaluateAlignment(1, -3, kReference, EvaluationDepth::kCountOnly);
    EXPECT_EQ(evaluation, (AlignmentEvaluation{.count = 3, .anchor = 1, .rotation = -3}));
}

}  // namespace
}  // namespace orl::matcher
