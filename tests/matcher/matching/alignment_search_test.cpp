// Which alignment is found, and what a refinement makes of it.

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/alignment.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/matcher/matching/voted_pairs.h"
#include "tests/support/naive_matching.h"

namespace orl::matcher {
namespace {

using test::Displaced;
using test::Vote;

// Four pairs at one spot whose directions differ by `turn` steps: every rotation near it agrees.
std::vector<MinutiaPair> FourAtOneSpot(int turn) {
    const MinutiaPair pair = {{90, 90, 100, 0}, {90, 90, static_cast<std::uint8_t>(100 + turn), 0}};
    return {pair, pair, pair, pair};
}

// Two pairs of the given directions whose positions agree under one rotation only.
std::vector<MinutiaPair> TwoLyingAt(std::uint8_t first, std::uint8_t second, int rotation) {
    constexpr double kRadiansPerStep = 2 * 3.14159265358979323846 / 255;
    const auto x =
        static_cast<std::uint8_t>(std::lround(100 + 60 * std::cos(rotation * kRadiansPerStep)));
    const auto y =
        static_cast<std::uint8_t>(std::lround(100 + 60 * std::sin(rotation * kRadiansPerStep)));
    return {{{100, 100, first, 0}, {100, 100, second, 0}},
            {{160, 100, first, 0}, {x, y, second, 0}}};
}

struct RotationCase {
    std::uint8_t first, second;
    int straight, opposite;
};

constexpr RotationCase kRotationCases[] = {{30, 20, -10, 118},
                                           {0, 255, 255, 127},    // 383 - 256
                                           {255, 0, -255, 129},   // -127 + 256
                                           {200, 50, -150, 234},  // -22 + 256
                                           {50, 178, 128, 0},
                                           {7, 7, 0, 128}};

// Deliberate: the first rotation of a pair is not reduced, the second one is.
TEST(FindBestAlignment, KeepsANegativeRotationAndReducesItsOpposite) {
    const AlignmentHypothesis straight = Vote(TwoLyingAt(30, 20, -10))->findBestAlignment();
    EXPECT_EQ(straight.rotation, -10);
    EXPECT_EQ(straight.count, 2);
    const AlignmentHypothesis opposite = Vote(TwoLyingAt(30, 20, 118))->findBestAlignment();
    EXPECT_EQ(opposite.rotation, 118);  // -10 + 128
    EXPECT_EQ(opposite.count, 2);
}

TEST(FindBestAlignment, ReducesTheOppositeRotationInto0To255) {
    for (const RotationCase& c : kRotationCases) {
        for (const int wanted : {c.straight, c.opposite}) {
            const AlignmentHypothesis best =
                Vote(TwoLyingAt(c.first, c.second, wanted))->findBestAlignment();
            EXPECT_EQ(best.rotation, wanted);
            EXPECT_EQ(best.count, 2) << wanted;
            EXPECT_EQ(best.anchor, 0U) << wanted;
        }
    }
}

TEST(FindBestAlignment, TakesTheStraightRotationOfASinglePair) {
    for (const RotationCase& c : kRotationCases) {
        const AlignmentHypothesis best =
            Vote(std::vector<MinutiaPair>{{{90, 90, c.first, 0}, {90, 90, c.second, 0}}})
                ->findBestAlignment();
        EXPECT_EQ(best.rotation, c.straight);
        EXPECT_EQ(best.count, 1);
        EXPECT_EQ(best.anchor, 0U);
    }
}

TEST(FindBestAlignment, TakesTheFirstOfThePairsThatAgreeBest) {
    // The first pair lies apart from the others, which agree with each other, a step apart.
    const AlignmentHypothesis best =
        Vote({Displaced(90, 90, 60, 60), Displaced(40, 40, 0, 0), Displaced(41, 40, 0, 0)})
            ->findBestAlignment();
    EXPECT_EQ(best.anchor, 1U);
    EXPECT_EQ(best.rotation, 0);
    EXPECT_EQ(best.count, 2);
}

TEST(FindBestAlignment, TakesTheFirstOfManyHypothesesOfEqualCount) {
    // Spots 60 apart in the second finger and all at one place in the first: none agree.
    std::vector<MinutiaPair> pairs;
    for (int i = 0; i < 16; ++i) {
        pairs.push_back({{90, 90, 50, 0},
                         {static_cast<std::uint8_t>(60 * (i % 4)),
                          static_cast<std::uint8_t>(60 * (i / 4)),
                          50,
                          0}});
    }
    const AlignmentHypothesis best = Vote(pairs)->findBestAlignment();
    EXPECT_EQ(best.count, 1);
    EXPECT_EQ(best.anchor, 0U);
    EXPECT_EQ(best.rotation, 0);
}

// Each of five pairs lies 17 units off the anchor along both axes: within the bound's square, but
// 24 units away. They turn by 40 and more, so that only the anchor's hypotheses reckon with them.
TEST(FindBestAlignment, IsNotLedAstrayByABoundAboveTheCount) {
    std::vector<MinutiaPair> pairs = {Displaced(140, 140, 0, 0)};
    for (int i = 0; i < 5; ++i) {
        const int sign = i % 2 == 0 ? 1 : -1;
        pairs.push_back(Displaced(20 + 50 * i, 20, 17 * sign, 17));
        pairs.back().second.angle = static_cast<std::uint8_t>(50 + 30 * sign);
    }
    pairs.push_back(Displaced(30, 220, 100, 0));
    pairs.push_back(Displaced(30, 230, 100, 0));
    const Vote vote(pairs);
    const AlignmentHypothesis best = vote->findBestAlignment();
    const auto plain = naive::BestAlignment(test::AsPlain(pairs), 10, 20, false);
    EXPECT_GT(vote->countBound(), best.count);
    EXPECT_EQ(best.count, plain.count);
    EXPECT_EQ(best.anchor, plain.anchor);
    EXPECT_EQ(best.rotation, plain.rotation);
}

TEST(FindBestAlignment, ReachesNoMoreThanThreeWithThreePairs) {
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.pop_back();
    const Vote vote(pairs);
    EXPECT_EQ(vote->findBestAlignment().count, 3);
    EXPECT_LT(vote->findBestAlignment().count, kMinAgreeingPairs);
    EXPECT_EQ(vote->countBound(), 3);
    EXPECT_EQ(vote->anyRotationCountBound(), 3);
}

TEST(FindBestAlignment, FindsNothingWherePairsAreTooFewForTheLeastCount) {
    const AlignmentHypothesis best = Vote(FourAtOneSpot(7), 5)->findBestAlignment();
    EXPECT_EQ(best.count, 0);
    EXPECT_EQ(best.anchor, 0U);
    EXPECT_EQ(best.rotation, 0);
}

TEST(RefineAlignment, KeepsTheEarlierEvaluationOnFullTies) {
    const Vote vote(FourAtOneSpot(-10));
    ASSERT_EQ(vote.best().count, 4);
    ASSERT_EQ(vote.best().rotation, -10);
    // A turn by 0 gives rotation 246 with the same figures.
    const AlignmentEvaluation refined = vote.refined();
    EXPECT_EQ(refined.rotation, -10);
    EXPECT_EQ(refined.anchor, 0U);
}

// The second pair asks for a rotation that lies halfway between two of the steps, so that both
// serve it alike. The third one agrees under neither, but comes within 18.2 units under the later
// of the two, where the bound of the count is too high: at -14 steps (-0.345 radians) the anchor
// puts it at (156.5, 79.7), which is 17.5 and 4.7 off (174, 75). So the later one is tried first.
TEST(RefineAlignment, KeepsTheEarlierOfTwoFullTiesThoughTheLaterOnePromisedMore) {
    struct Case {
        int turn;
        TriangleVertex third;
        int earlier;
    };
    for (const Case& c : {Case{-15, {174, 75, 100, 0}, -16},
                          Case{-12, {141, 91, 100, 0}, -13},
                          Case{-8, {177, 87, 100, 0}, -9}}) {
        const TriangleVertex spot = {100, 100, 100, 0};
        const TriangleVertex turned = {100, 100, static_cast<std::uint8_t>(100 + c.turn), 0};
        const AlignmentEvaluation refined =
            Vote({{spot, spot}, {spot, turned}, {{160, 100, 100, 0}, c.third}}).refined();
        EXPECT_EQ(refined.count, 2);
        EXPECT_EQ(refined.angleMedian, 1.40625F);
        EXPECT_EQ(refined.rotation, 256 + c.earlier);
        EXPECT_EQ(refined.anchor, 0U);
    }
}

TEST(RefineAlignment, ReplacesTheWholeEvaluationByAStrictlyBetterOne) {
    // Directions ask for no rotation, but the far pair lies 17.2 steps round (0.423 radians): from
    // (100, 0) to (91, 41).
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {181, 131, 100, 0}});
    const Vote vote(pairs);
    ASSERT_EQ(vote.best().count, 4);
    const AlignmentEvaluation refined = vote.refined();
    EXPECT_EQ(refined.count, 5);
    EXPECT_EQ(refined.anchor, 0U);
    // The far pair comes within 18 units of its place from step 10 on: 9 steps are 0.201 radians
    // short, 20 units; 10 steps are 0.177 short, 17.7 units. Steps beyond only worsen the angles.
    EXPECT_EQ(refined.rotation, 10);
    EXPECT_EQ(refined.distanceMedian, 0.0F);   // of 0, 0, 0 and 17.7
    EXPECT_EQ(refined.angleMedian, 14.0625F);  // 10 steps
    EXPECT_EQ(refined.matchedRatio, 0.5F);
    EXPECT_EQ(refined.coverage, 1.0F);
}

TEST(RefineAlignment, PrefersTheGreaterCoverageAtEqualCountAndRatio) {
    // A pair 40 units off comes within reach from step -17 on, as the one 100 units off does from
    // step 10 on (see above): (40, 0) at -17 steps lies at (36.6, -16.3), 12.6 from (30, -27).
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {181, 131, 100, 0}});
    pairs.push_back({{130, 90, 100, 0}, {120, 63, 100, 0}});
    const AlignmentEvaluation refined = Vote(pairs).refined();
    EXPECT_EQ(refined.count, 5);
    EXPECT_EQ(refined.rotation, 10);
}

TEST(RefineAlignment, ReachesNoFurtherThan17Steps) {
    // 30 steps round (0.74 radians): from (100, 0) to (74, 67); 13 steps short is 32 units off.
    std::vector<MinutiaPair> pairs = FourAtOneSpot(0);
    pairs.push_back({{190, 90, 100, 0}, {164, 157, 100, 0}});
    const AlignmentEvaluation refined = Vote(pairs).refined();
    EXPECT_EQ(refined.count, 4);
    EXPECT_EQ(refined.rotation, 0);
}

// Pairs that agree under a rotation of 15 steps (0.37 radians) while their directions ask for none;
// 60 grid units and more apart, so that without it each is 22 off for every other.
std::vector<MinutiaPair> SevenRoundBy15Steps() {
    std::vector<MinutiaPair> pairs;
    const double angle = 15 * 2 * 3.14159265358979323846 / 255;
    for (const auto& [x, y] :
         {std::pair{-60, -60}, {0, -60}, {60, -60}, {-60, 0}, {60, 0}, {-60, 60}, {0, 60}}) {
        const double turnedX = 128 + x * std::cos(angle) - y * std::sin(angle);
        const double turnedY = 128 + x * std::sin(angle) + y * std::cos(angle);
        pairs.push_back(
            {{static_cast<std::uint8_t>(128 + x), static_cast<std::uint8_t>(128 + y), 30, 0},
             {static_cast<std::uint8_t>(std::lround(turnedX)),
              static_cast<std::uint8_t>(std::lround(turnedY)),
              30,
              0}});
    }
    return pairs;
}

TEST(RefineAlignment, TriesTheTenBestHypothesesOnly) {
    // Pairs at one spot agree with each other under every hypothesis of theirs, two a pair, and
    // come first. Their turn is 100 steps off that of the seven, so no alignment has pairs of both.
    for (const std::size_t atOneSpot : {4U, 5U}) {
        std::vector<MinutiaPair> pairs(atOneSpot, {{90, 90, 100, 0}, {90, 90, 200, 0}});
        const auto seven = SevenRoundBy15Steps();
        pairs.insert(pairs.end(), seven.begin(), seven.end());
        const Vote vote(pairs);
        ASSERT_EQ(vote.best().count, static_cast<int>(atOneSpot));
        // Four pairs leave ranks 9 and 10 to the first of the seven; five leave none.
        const AlignmentEvaluation refined = vote.refined();
        EXPECT_EQ(refined.count, atOneSpot == 4 ? 7 : 5);
        EXPECT_EQ(refined.anchor, atOneSpot == 4 ? 4U : 0U);
    }
}

TEST(RefineAlignment, RoundsItsStepsHalfAwayFromZeroAndReducesThem) {
    // Two pairs at one spot, the second one's direction asking for exactly one rotation, which the
    // angle median then picks.
    // Degrees * 256 / 360 rounded: 2 gives 1.42 -> 1, 4: 2.84 -> 3, 6: 4.27 -> 4, 10: 7.11 -> 7,
    // 24: 17.07 -> 17, -2: -1.42 -> -1, -24 -> -17.
    const auto refinedFor = [](int steps) {
        const TriangleVertex spot = {90, 90, 100, 0};
        const TriangleVertex turned = {90, 90, static_cast<std::uint8_t>(100 + steps), 0};
        return Vote({{spot, spot}, {spot, turned}}).refined();
    };
    for (int steps : {1, 3, 4, 7, 17, -1, -17}) {
        const AlignmentEvaluation refined = refinedFor(steps);
        EXPECT_EQ(refined.count, 2);
        EXPECT_EQ(refined.angleMedian, 0.0F) << steps;
        EXPECT_EQ(refined.anchor, 0U) << steps;
        EXPECT_EQ(refined.rotation, (steps + 256) % 256);
    }
    for (int steps : {2, 5, 18, -18}) {  // between the steps or beyond them
        EXPECT_EQ(refinedFor(steps).angleMedian, 1.40625F) << steps;
    }
}

}  // namespace
}  // namespace orl::matcher
