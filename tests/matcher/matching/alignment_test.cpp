#include "matcher/matching/alignment.h"

#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/pair_search.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

constexpr AlignmentReference kReference = {.firstArea = 65536.0F,
                                           .secondArea = 65536.0F,
                                           .firstMinutiaCount = 10,
                                           .secondMinutiaCount = 20};

AlignmentEvaluation Evaluated(const std::vector<MinutiaPair>& pairs,
                              int rotation = 0,
                              const AlignmentReference& reference = kReference) {
    return evaluateAlignment(
        pairs, 0, static_cast<std::int16_t>(rotation), reference, EvaluationDepth::kWithStatistics);
}

// A pair whose second vertex lies (dx, dy) off the first one, both with direction 50.
MinutiaPair Displaced(int x, int y, int dx, int dy) {
    return {{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 50, 0},
            {static_cast<std::uint8_t>(x + dx), static_cast<std::uint8_t>(y + dy), 50, 0}};
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
        evaluateAlignment(pairs, 1, -3, kReference, EvaluationDepth::kCountOnly);
    EXPECT_EQ(evaluation, (AlignmentEvaluation{.count = 3, .anchor = 1, .rotation = -3}));
}

MatchContext ContextOf(const std::vector<MinutiaPair>& pairs) {
    MatchContext context;
    context.minutiaPairs = pairs;
    context.reference.firstMinutiaCount = 10;
    context.reference.secondMinutiaCount = 20;
    return context;
}

// Four pairs at one spot whose directions differ by `turn` steps: every rotation near it agrees.
std::vector<MinutiaPair> FourAtOneSpot(int turn) {
    const MinutiaPair pair = {{90, 90, 100, 0}, {90, 90, static_cast<std::uint8_t>(100 + turn), 0}};
    return {pair, pair, pair, pair};
}

// Deliberate: the first rotation of a pair is not reduced, the second one is.
TEST(FindBestAlignment, KeepsANegativeRotationAndReducesItsOpposite) {
    MatchContext context = ContextOf({{{90, 90, 30, 0}, {90, 90, 20, 0}}});
    findBestAlignment(context);
    ASSERT_EQ(context.hypotheses.size(), 2U);
    EXPECT_EQ(context.hypotheses[0].rotation, -10);
    EXPECT_EQ(context.hypotheses[1].rotation, 118);  // -10 + 128
}

TEST(FindBestAlignment, ReducesTheOppositeRotationInto0To255) {
    struct Case {
        std::uint8_t first, second;
        std::int16_t straight, opposite;
    };
    for (const Case& c : {Case{0, 255, 255, 127},    // 383 - 256
                          Case{255, 0, -255, 129},   // -127 + 256
                          Case{200, 50, -150, 234},  // -22 + 256
                          Case{50, 178, 128, 0},
                          Case{7, 7, 0, 128}}) {
        MatchContext context = ContextOf({{{90, 90, c.first, 0}, {90, 90, c.second, 0}}});
        findBestAlignment(context);
        EXPECT_EQ(context.hypotheses.at(0).rotation, c.straight);
        EXPECT_EQ(context.hypotheses.at(1).rotation, c.opposite);
    }
}

TEST(FindBestAlignment, MakesTwoHypothesesForEachPairAndRanksThemByCount) {
    // The middle pair lies apart from the others, which agree with each other.
    MatchContext context =
        ContextOf({Displaced(40, 40, 0, 0), Displaced(90, 90, 60, 60), Displaced(41, 40, 0, 0)});
    const AlignmentEvaluation best = findBestAlignment(context);
    ASSERT_EQ(context.hypotheses.size(), 6U);
    // Each of the two agrees with the other at rotations 0 and 128 alike: they are a step apart.
    const std::vector<std::uint32_t> anchors = {0, 0, 2, 2, 1, 1};
    const std::vector<std::int32_t> counts = {2, 2, 2, 2, 1, 1};
    for (std::size_t i = 0; i < anchors.size(); ++i) {
        EXPECT_EQ(context.hypotheses[i].anchor, anchors[i]) << i;
        EXPECT_EQ(context.hypotheses[i].count, counts[i]) << i;
        EXPECT_EQ(context.hypotheses[i].rotation, i % 2 == 0 ? 0 : 128) << i;
    }
    EXPECT_EQ(best.anchor, 0U);
    EXPECT_EQ(best.rotation, 0);
}

TEST(FindBestAlignment, KeepsTheOrderOfManyHypothesesOfEqualCount) {
    // Spots 60 apart in the second finger and all at one place in the first: none agree.
    std::vector<MinutiaPair> pairs;
    for (int i = 0; i < 16; ++i) {
        pairs.push_back({{90, 90, 50, 0},
                         {static_cast<std::uint8_t>(60 * (i % 4)),
                          static_cast<std::uint8_t>(60 * (i / 4)),
                          50,
                          0}});
    }
    MatchContext context = ContextOf(pairs);
    const AlignmentEvaluation best = findBestAlignment(context);
    ASSERT_EQ(context.hypotheses.size(), 32U);
    for (std::uint32_t i = 0; i < 32; ++i) {
        EXPECT_EQ(context.hypotheses[i].count, 1) << i;
        EXPECT_EQ(context.hypotheses[i].anchor, i / 2) << i;
        EXPECT_EQ(context.hypotheses[i].rotation, i % 2 == 0 ? 0 : 128) << i;
    }
    EXPECT_EQ(best.anchor, 0U);
}

TEST(FindBestAlignment, ReachesNoMoreThanThreeWithThreePairs) {
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.pop_back();
    MatchContext context = ContextOf(pairs);
    const AlignmentEvaluation best = findBestAlignment(context);
    EXPECT_EQ(best.count, 3);
    EXPECT_LT(best.count, kMinAgreeingPairs);
    EXPECT_EQ(best.coverage, 0.0F);  // no statistics for what is no evidence
}

TEST(FindBestAlignment, MeasuresTheBestHypothesisAgainstTheBoxOfAllPairs) {
    std::vector<MinutiaPair> pairs = {Displaced(40, 40, 0, 0),
                                      Displaced(49, 40, 0, 0),
                                      Displaced(40, 59, 0, 0),
                                      Displaced(49, 59, 0, 0),
                                      Displaced(79, 40, 80, 100)};
    MatchContext context = ContextOf(pairs);
    const AlignmentEvaluation best = findBestAlignment(context);
    // First box 40..79 by 40..59: 40 * 20; second box 40..159 by 40..140: 120 * 101.
    EXPECT_EQ(context.reference.firstArea, 800.0F);
    EXPECT_EQ(context.reference.secondArea, 12120.0F);
    EXPECT_EQ(best.count, 4);
    EXPECT_EQ(best.anchor, 0U);
    EXPECT_EQ(best.matchedRatio, 0.4F);  // 4 of 10
    // The agreeing pairs cover 10 * 20 in both.
    EXPECT_EQ(best.coverage, (200.0F / 800.0F + 200.0F / 12120.0F) * 0.5F);
}

TEST(RefineAlignment, KeepsTheEarlierEvaluationOnFullTies) {
    MatchContext context = ContextOf(FourAtOneSpot(-10));
    AlignmentEvaluation best = findBestAlignment(context);
    ASSERT_EQ(best.count, 4);
    ASSERT_EQ(best.rotation, -10);
    // A turn by 0 gives rotation 246 with the same figures.
    refineAlignment(context, best);
    EXPECT_EQ(best.rotation, -10);
    EXPECT_EQ(best.anchor, 0U);
}

TEST(RefineAlignment, ReplacesTheWholeEvaluationByAStrictlyBetterOne) {
    // Directions ask for no rotation, but the far pair lies 17.2 steps round (0.423 radians): from
    // (100, 0) to (91, 41).
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {181, 131, 100, 0}});
    MatchContext context = ContextOf(pairs);
    AlignmentEvaluation best = findBestAlignment(context);
    ASSERT_EQ(best.count, 4);
    refineAlignment(context, best);
    EXPECT_EQ(best.count, 5);
    EXPECT_EQ(best.anchor, 0U);
    // The far pair comes within 18 units of its place from step 10 on: 9 steps are 0.201 radians
    // short, 20 units; 10 steps are 0.177 short, 17.7 units. Steps beyond only worsen the angles.
    EXPECT_EQ(best.rotation, 10);
    EXPECT_EQ(best.distanceMedian, 0.0F);   // of 0, 0, 0 and 17.7
    EXPECT_EQ(best.angleMedian, 14.0625F);  // 10 steps
    EXPECT_EQ(best.matchedRatio, 0.5F);
    EXPECT_EQ(best.coverage, 1.0F);
}

TEST(RefineAlignment, PrefersTheGreaterCoverageAtEqualCountAndRatio) {
    // A pair 40 units off comes within reach from step -17 on, as the one 100 units off does from
    // step 10 on (see above): (40, 0) at -17 steps lies at (36.6, -16.3), 12.6 from (30, -27).
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {181, 131, 100, 0}});
    pairs.push_back({{130, 90, 100, 0}, {120, 63, 100, 0}});
    MatchContext context = ContextOf(pairs);
    AlignmentEvaluation best = findBestAlignment(context);
    refineAlignment(context, best);
    EXPECT_EQ(best.count, 5);
    EXPECT_EQ(best.rotation, 10);
}

TEST(RefineAlignment, ReachesNoFurtherThan17Steps) {
    // 30 steps round (0.74 radians): from (100, 0) to (74, 67); 13 steps short is 32 units off.
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {164, 157, 100, 0}});
    MatchContext context = ContextOf(pairs);
    AlignmentEvaluation best = findBestAlignment(context);
    refineAlignment(context, best);
    EXPECT_EQ(best.count, 4);
    EXPECT_EQ(best.rotation, 0);
}

TEST(RefineAlignment, TriesTheTenBestHypothesesOnly) {
    // Pair 4 is alone; as an anchor it agrees with nothing, so count 4 marks another anchor.
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {20, 20, 100, 0}});
    for (std::size_t goodRank : {9U, 10U}) {
        MatchContext context = ContextOf(pairs);
        context.hypotheses.assign(11, {1, 4, 0});
        context.hypotheses[goodRank] = {4, 0, 0};
        AlignmentEvaluation best{.count = 1, .anchor = 4};
        refineAlignment(context, best);
        EXPECT_EQ(best.count, goodRank == 9 ? 4 : 1) << "good hypothesis at rank " << goodRank;
    }
}

TEST(RefineAlignment, RoundsItsStepsHalfAwayFromZeroAndReducesThem) {
    // One pair, so each of the 25 steps ties but for the direction; a second pair at the spot whose
    // direction asks for exactly one rotation lets the angle median pick it.
    // Degrees * 256 / 360 rounded: 2 gives 1.42 -> 1, 4: 2.84 -> 3, 6: 4.27 -> 4, 10: 7.11 -> 7,
    // 24: 17.07 -> 17, -2: -1.42 -> -1, -24 -> -17.
    for (int steps : {1, 3, 4, 7, 17, -1, -17}) {
        const TriangleVertex spot = {90, 90, 100, 0};
        const TriangleVertex turned = {90, 90, static_cast<std::uint8_t>(100 + steps), 0};
        MatchContext context = ContextOf({{spot, spot}, {spot, turned}});
        context.hypotheses = {{2, 0, 0}};
        AlignmentEvaluation best{};
        refineAlignment(context, best);
        EXPECT_EQ(best.count, 2);
        EXPECT_EQ(best.angleMedian, 0.0F) << steps;
        EXPECT_EQ(best.rotation, (steps + 256) % 256);
    }
    for (int steps : {2, 5, 18, -18}) {  // between the steps or beyond them
        const TriangleVertex spot = {90, 90, 100, 0};
        const TriangleVertex turned = {90, 90, static_cast<std::uint8_t>(100 + steps), 0};
        MatchContext context = ContextOf({{spot, spot}, {spot, turned}});
        context.hypotheses = {{2, 0, 0}};
        AlignmentEvaluation best{};
        refineAlignment(context, best);
        EXPECT_EQ(best.angleMedian, 1.40625F) << steps;
    }
}

struct Consolidated {
    MatchContext context;
    std::vector<naive::MinutiaPair> pairs;
};

// The consolidated pairs of a random finger and another impression of it, for both matchers.
Consolidated ConsolidatedPairs(std::mt19937& random, int jitterPixels) {
    const MinutiaList finger = test::RandomMinutiaList(random, 30);
    const MinutiaList other =
        test::Impression(random,
                         finger,
                         {.rotationDegrees = static_cast<double>(random() % 60) - 30.0,
                          .jitterPixels = jitterPixels,
                          .jitterDegrees = jitterPixels,
                          .lostPercent = 30,
                          .added = 6});
    const FingerFeatures first = test::BuiltFinger(finger);
    const FingerFeatures second = test::BuiltFinger(other);
    Consolidated result;
    result.context.firstTriangles = first.triangles;
    searchTrianglePairs(result.context, second.triangles);
    consolidatePairs(result.context);
    result.context.reference.firstMinutiaCount = first.minutiaCount;
    result.context.reference.secondMinutiaCount = second.minutiaCount;
    for (const MinutiaPair& pair : result.context.minutiaPairs) {
        result.pairs.emplace_back(pair.first, pair.second);
    }
    result.context.firstTriangles = {};  // they end with this function
    result.context.trianglePairs.clear();
    return result;
}

void ExpectEqual(const AlignmentEvaluation& actual, const naive::Evaluation& expected) {
    EXPECT_EQ(actual.count, expected.count);
    EXPECT_EQ(actual.anchor, expected.anchor);
    EXPECT_EQ(actual.rotation, expected.rotation);
    EXPECT_EQ(actual.distanceMedian, expected.distanceMedian);
    EXPECT_EQ(actual.angleMedian, expected.angleMedian);
    EXPECT_EQ(actual.coverage, expected.coverage);
    EXPECT_EQ(actual.matchedRatio, expected.matchedRatio);
}

TEST(Alignment, AgreesWithThePlainEvaluationForEveryRotation) {
    std::mt19937 random(4711);
    Consolidated data = ConsolidatedPairs(random, 4);
    ASSERT_GT(data.pairs.size(), 10U);
    findBestAlignment(data.context);
    const AlignmentReference& reference = data.context.reference;
    for (int rotation = -255; rotation <= 255; ++rotation) {
        const std::size_t anchor = random() % data.pairs.size();
        SCOPED_TRACE(testing::Message() << "rotation " << rotation << ", anchor " << anchor);
        ExpectEqual(evaluateAlignment(data.context.minutiaPairs,
                                      static_cast<std::uint32_t>(anchor),
                                      static_cast<std::int16_t>(rotation),
                                      reference,
                                      EvaluationDepth::kWithStatistics),
                    naive::Evaluate(data.pairs,
                                    anchor,
                                    rotation,
                                    reference.firstMinutiaCount,
                                    reference.secondMinutiaCount));
    }
}

TEST(Alignment, AgreesWithThePlainSearchAndRefinement) {
    int refinedForTheBetter = 0;
    for (std::uint32_t seed = 0; seed < 24; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        Consolidated data = ConsolidatedPairs(random, 2 + static_cast<int>(seed % 8));
        AlignmentEvaluation best = findBestAlignment(data.context);
        const AlignmentReference& reference = data.context.reference;
        const auto plain = [&](bool refine) {
            return naive::BestAlignment(
                data.pairs, reference.firstMinutiaCount, reference.secondMinutiaCount, refine);
        };
        if (best.count < kMinAgreeingPairs) {
            EXPECT_EQ(best.count, plain(false).count);
            continue;
        }
        ExpectEqual(best, plain(false));
        const AlignmentEvaluation unrefined = best;
        refineAlignment(data.context, best);
        ExpectEqual(best, plain(true));
        refinedForTheBetter += best == unrefined ? 0 : 1;
    }
    EXPECT_GT(refinedForTheBetter, 5);
}

}  // namespace
}  // namespace orl::matcher
