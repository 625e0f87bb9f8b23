#include "matcher/matching/alignment.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/pair_search.h"
#include "matcher/matching/scratch.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

constexpr AlignmentReference kReference = {.firstArea = 65536.0F,
                                           .secondArea = 65536.0F,
                                           .firstMinutiaCount = 10,
                                           .secondMinutiaCount = 20};

// A vote with all that it reads.
class Vote {
  public:
    explicit Vote(std::vector<MinutiaPair> pairs, std::int32_t leastCount = 0)
        : pairs_(std::move(pairs)), scratch_(new Scratch), vote_(pairs_, *scratch_, leastCount) {}

    const AlignmentVote* operator->() const { return &vote_; }
    const std::vector<MinutiaPair>& pairs() const { return pairs_; }

    // Measured against the box of all pairs, for fingers of 10 and 20 minutiae.
    AlignmentReference reference() const { return alignmentReference(pairs_, 10, 20); }

    AlignmentEvaluation evaluated(std::size_t anchor, int rotation) const {
        return vote_.evaluateAlignment(static_cast<std::uint32_t>(anchor),
                                       static_cast<std::int16_t>(rotation),
                                       reference(),
                                       EvaluationDepth::kWithStatistics);
    }

    // The best hypothesis with its statistics.
    AlignmentEvaluation best() const {
        const AlignmentHypothesis hypothesis = vote_.findBestAlignment();
        return evaluated(hypothesis.anchor, hypothesis.rotation);
    }

    AlignmentEvaluation refined() const {
        AlignmentEvaluation evaluation = best();
        vote_.refineAlignment(evaluation, reference());
        return evaluation;
    }

  private:
    std::vector<MinutiaPair> pairs_;
    std::unique_ptr<Scratch> scratch_;
    AlignmentVote vote_;
};

AlignmentEvaluation Evaluated(const std::vector<MinutiaPair>& pairs,
                              int rotation = 0,
                              const AlignmentReference& reference = kReference) {
    return Vote(pairs)->evaluateAlignment(
        0, static_cast<std::int16_t>(rotation), reference, EvaluationDepth::kWithStatistics);
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
        Vote(pairs)->evaluateAlignment(1, -3, kReference, EvaluationDepth::kCountOnly);
    EXPECT_EQ(evaluation, (AlignmentEvaluation{.count = 3, .anchor = 1, .rotation = -3}));
}

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

TEST(RefineAlignment, KeepsTheEarlierEvaluationOnFullTies) {
    const Vote vote(FourAtOneSpot(-10));
    ASSERT_EQ(vote.best().count, 4);
    ASSERT_EQ(vote.best().rotation, -10);
    // A turn by 0 gives rotation 246 with the same figures.
    const AlignmentEvaluation refined = vote.refined();
    EXPECT_EQ(refined.rotation, -10);
    EXPECT_EQ(refined.anchor, 0U);
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

// The consolidated pairs of a random finger and another impression of it.
std::vector<MinutiaPair> ConsolidatedPairs(std::mt19937& random, int jitterPixels) {
    const MinutiaList finger = test::RandomMinutiaList(random, 30);
    const MinutiaList other =
        test::Impression(random,
                         finger,
                         {.rotationDegrees = static_cast<double>(random() % 60) - 30.0,
                          .jitterPixels = jitterPixels,
                          .jitterDegrees = jitterPixels,
                          .lostPercent = 30,
                          .added = 6});
    auto fingers = test::SearchedFingers(test::BuiltFinger(finger), test::BuiltFinger(other));
    consolidatePairs(fingers.context(), 0);
    return test::Copied(fingers.context().minutiaPairs);
}

// Pairs whose positions and directions crowd about the limits of agreement.
std::vector<MinutiaPair> CrowdedPairs(std::mt19937& random, std::size_t count, unsigned extent) {
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    const int turn = below(256);
    std::vector<MinutiaPair> pairs;
    for (std::size_t i = 0; i < count; ++i) {
        const TriangleVertex first = {
            byte(below(extent)), byte(below(extent)), byte(below(256)), 0};
        const TriangleVertex second = {byte(std::min(first.x + below(25), 255)),
                                       byte(std::min(first.y + below(25), 255)),
                                       byte(first.angle + turn + below(48)),
                                       0};
        pairs.push_back({first, second});
    }
    return pairs;
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

// The evaluation looks only at pairs of about the anchor's turn, whatever the rotation: the
// relative direction test does not depend on it and bars all others.
void ExpectPlainEvaluations(const Vote& vote, std::mt19937& random, int rotationStep) {
    const auto plainPairs = test::AsPlain(vote.pairs());
    for (int rotation = -255; rotation <= 255; rotation += rotationStep) {
        const std::size_t anchor = random() % vote.pairs().size();
        SCOPED_TRACE(testing::Message() << "rotation " << rotation << ", anchor " << anchor);
        ExpectEqual(vote.evaluated(anchor, rotation),
                    naive::Evaluate(plainPairs, anchor, rotation, 10, 20));
    }
}

TEST(Alignment, AgreesWithThePlainEvaluationForEveryRotation) {
    std::mt19937 random(4711);
    const Vote vote(ConsolidatedPairs(random, 4));
    ASSERT_GT(vote.pairs().size(), 10U);
    ExpectPlainEvaluations(vote, random, 1);
}

TEST(Alignment, AgreesWithThePlainEvaluationOnPairsOfAnyDirections) {
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 4 == 0 ? 256 : seed % 4 == 1 ? 60 : seed % 4 == 2 ? 12 : 1;
        const Vote vote(CrowdedPairs(random, 1 + random() % 90, extent));
        ExpectPlainEvaluations(vote, random, 7);
    }
}

TEST(Alignment, BoundsItsCountsFromAbove) {
    int tight = 0;
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const Vote vote(CrowdedPairs(random, 1 + random() % 60, seed % 2 == 0 ? 200 : 20));
        const AlignmentHypothesis best = vote->findBestAlignment();
        EXPECT_GE(vote->countBound(), best.count);
        EXPECT_GE(vote->anyRotationCountBound(), vote->countBound());
        tight += vote->countBound() == best.count ? 1 : 0;
        for (int rotation = -255; rotation <= 255; rotation += 17) {
            const std::size_t anchor = random() % vote.pairs().size();
            EXPECT_GE(vote->anyRotationCountBound(), vote.evaluated(anchor, rotation).count);
        }
    }
    EXPECT_GT(tight, 2);
}

// A least count up to the best one changes nothing; one above it leaves nothing of that count.
TEST(Alignment, FindsAndRefinesTheSameWhateverLeastCountIsReached) {
    for (std::uint32_t seed = 0; seed < 24; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto pairs = CrowdedPairs(random, 5 + random() % 60, seed % 2 == 0 ? 200 : 20);
        const Vote all(pairs);
        const AlignmentEvaluation best = all.best();
        for (std::int32_t least = 1; least <= best.count; ++least) {
            const Vote vote(pairs, least);
            ASSERT_EQ(vote.best(), best) << least;
        }
        const Vote vote(pairs, best.count);
        EXPECT_EQ(vote.refined(), all.refined());
        EXPECT_EQ(vote->anyRotationCountBound(), all->anyRotationCountBound());
        const Vote none(pairs, best.count + 1);
        EXPECT_LE(none->findBestAlignment().count, best.count);
        const Vote beyond(pairs, all->anyRotationCountBound() + 1);
        EXPECT_EQ(beyond->findBestAlignment().count, 0);
        EXPECT_EQ(beyond->countBound(), 0);
    }
}

TEST(Alignment, AgreesWithThePlainSearchAndRefinement) {
    int refinedForTheBetter = 0;
    for (std::uint32_t seed = 0; seed < 24; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const std::vector<MinutiaPair> pairs =
            seed < 16 ? ConsolidatedPairs(random, 2 + static_cast<int>(seed % 8))
                      : CrowdedPairs(random, 40, seed % 2 == 0 ? 200 : 30);
        ASSERT_FALSE(pairs.empty());
        const Vote vote(pairs);
        const auto plain = [&](bool refine) {
            return naive::BestAlignment(test::AsPlain(pairs), 10, 20, refine);
        };
        ExpectEqual(vote.best(), plain(false));
        ExpectEqual(vote.refined(), plain(true));
        refinedForTheBetter += vote.best() == vote.refined() ? 0 : 1;
    }
    EXPECT_GT(refinedForTheBetter, 5);
}

// Lists as hostile records may yield: all pairs at few spots, thousands of them, or of few turns.
TEST(Alignment, AgreesWithThePlainSearchAndRefinementOnHostileLists) {
    struct Case {
        std::size_t count;
        unsigned extent;
        unsigned turns;
    };
    for (const Case& c : {Case{1500, 256, 256},
                          Case{700, 3, 256},
                          Case{600, 40, 2},
                          Case{400, 1, 1},
                          Case{300, 2, 40},
                          Case{65, 1, 60},
                          Case{64, 1, 1},
                          Case{17, 30, 256}}) {
        SCOPED_TRACE(testing::Message() << c.count << ", " << c.extent << ", " << c.turns);
        std::mt19937 random(static_cast<std::uint32_t>(c.count));
        const auto below = [&](unsigned limit) {
            return static_cast<std::uint8_t>(random() % limit);
        };
        std::vector<MinutiaPair> pairs;
        for (std::size_t i = 0; i < c.count; ++i) {
            const std::uint8_t direction = below(256);
            const auto other = static_cast<std::uint8_t>(direction + below(c.turns));
            pairs.push_back({{below(c.extent), below(c.extent), direction, below(4)},
                             {below(c.extent), below(c.extent), other, below(4)}});
        }
        const Vote vote(pairs);
        const auto plainPairs = test::AsPlain(pairs);
        // The refinement's start is the best alignment that the plain search finds without one.
        ExpectEqual(vote.best(), naive::BestAlignment(plainPairs, 10, 20, false));
        if (c.count <= 700) {
            ExpectEqual(vote.refined(), naive::BestAlignment(plainPairs, 10, 20, true));
        }
    }
}

}  // namespace
}  // namespace orl::matcher
