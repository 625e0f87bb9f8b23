// The vote against the plain one, on made and on hostile pairs.

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/alignment.h"
#include "matcher/matching/pair_search.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/matcher/matching/voted_pairs.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using test::Vote;

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
