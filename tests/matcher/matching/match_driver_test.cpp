#include "matcher/matching/match_driver.h"

#include <algorithm>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "matcher/matching/match_context.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using Fingers = std::vector<FingerFeatures>;

// A finger against itself comes to this at least. Not always to 1000: triangles with a key byte of
// 110 to 145 find nothing, so that minutiae at the rim may stay without a partner.
constexpr std::uint16_t kHighScore = 900;

FingerFeatures RandomFinger(std::uint32_t seed, std::size_t minutiae = 40) {
    std::mt19937 random(seed);
    return test::BuiltFinger(test::RandomMinutiaList(random, minutiae));
}

FingerFeatures Turned(const FingerFeatures& finger, std::uint32_t quarterTurns) {
    return {finger.minutiaCount, naive::Turned(finger.triangles, static_cast<int>(quarterTurns))};
}

// The whole result of `first` against `second` in an orientation.
FingerMatchResult Matched(const FingerFeatures& first,
                          const FingerFeatures& second,
                          std::size_t orientation) {
    auto fingers = test::SearchedFingers(first, second);
    const auto result = matchFinger(fingers.context(), orientation, nullptr);
    EXPECT_TRUE(result.has_value());
    return result.value_or(FingerMatchResult{});
}

TEST(MatchTemplates, GivesScoreZeroForATemplateWithoutFingers) {
    const Fingers some = {RandomFinger(1)};
    for (const TemplateMatchResult& result :
         {matchTemplates({}, some), matchTemplates(some, {}), matchTemplates({}, {})}) {
        EXPECT_EQ(result, TemplateMatchResult{});
        EXPECT_EQ(result.score, 0);
        EXPECT_EQ(result.firstFingerIndex, 0U);
        EXPECT_EQ(result.secondFingerIndex, 0U);
        EXPECT_EQ(result.threshold, 300);
        EXPECT_TRUE(result.fingerAgreement);
    }
}

TEST(MatchTemplates, FindsIdenticalFingersInOrientationZeroWithoutRotation) {
    for (std::uint32_t seed = 0; seed < 10; ++seed) {
        const Fingers finger = {RandomFinger(seed)};
        const TemplateMatchResult result = matchTemplates(finger, finger);
        EXPECT_GE(result.score, kHighScore) << seed;
        EXPECT_EQ(result.rotationDegrees, 0.0F) << seed;
        EXPECT_EQ(result.orientation, 0U) << seed;
        EXPECT_GT(result.matchedRatio, 0.95F) << seed;
        EXPECT_GT(result.coverage, 0.95F) << seed;
        EXPECT_EQ(result.status, 0U) << seed;
        EXPECT_EQ(result.decision, 0) << seed;
        EXPECT_EQ(result.threshold, 300) << seed;
        EXPECT_TRUE(result.fingerAgreement) << seed;
    }
}

TEST(MatchTemplates, FindsAFingerThatWasTurnedByQuarterTurns) {
    for (std::uint32_t turns = 1; turns < 4; ++turns) {
        const FingerFeatures finger = RandomFinger(20 + turns);
        const TemplateMatchResult result =
            matchTemplates(Fingers{finger}, Fingers{Turned(finger, turns)});
        EXPECT_GE(result.score, kHighScore) << turns;
        EXPECT_EQ(result.orientation, 4 - turns) << turns;
        EXPECT_EQ(result.rotationDegrees, 0.0F) << turns;
    }
}

// Four minutiae, one of them inside the triangle of the others: three triangles, their sides short
// enough to find themselves (130 pixels are 86 grid units).
FingerFeatures FourMinutiae() {
    return test::BuiltFinger(
        {{1, 100, 100, 30}, {1, 230, 110, 140}, {1, 160, 220, 250}, {1, 165, 145, 320}});
}

TEST(MatchTemplates, ReducesTheScoreOfFourMinutiaeAndRefinesIt) {
    const Fingers finger = {FourMinutiae()};
    ASSERT_EQ(finger[0].triangles.size(), 3U);
    const TemplateMatchResult result = matchTemplates(finger, finger);
    EXPECT_EQ(result.matchedCount, 4);
    // 16000 / 16 = 1000, 1000 * 4 / 18 = 222: within 180..400, so refined; perfect figures add 10.
    EXPECT_EQ(result.score, 232);
    EXPECT_EQ(result.refined, 1U);
    EXPECT_EQ(result.distanceMedian, 0.0F);
    EXPECT_EQ(result.angleMedian, 0.0F);
    EXPECT_EQ(result.rotationDegrees, 0.0F);
}

TEST(MatchTemplates, TriesAllPairsOfFingersAndReportsTheWinners) {
    const FingerFeatures wanted = RandomFinger(30);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 2; ++j) {
            Fingers first = {RandomFinger(31), RandomFinger(32), RandomFinger(33)};
            Fingers second = {RandomFinger(34), RandomFinger(35)};
            first[i] = wanted;
            second[j] = wanted;
            const TemplateMatchResult result = matchTemplates(first, second);
            EXPECT_GE(result.score, kHighScore);
            EXPECT_EQ(result.firstFingerIndex, i);
            EXPECT_EQ(result.secondFingerIndex, j);
        }
    }
}

TEST(MatchTemplates, LetsTheEarlierFingerPairWinAFullTie) {
    const FingerFeatures finger = RandomFinger(40);
    const TemplateMatchResult both =
        matchTemplates(Fingers{finger, finger}, Fingers{finger, finger});
    EXPECT_EQ(both.firstFingerIndex, 0U);
    EXPECT_EQ(both.secondFingerIndex, 0U);
    // Of (1, 1), (1, 2), (2, 1) and (2, 2), which tie, the first one in the order of the loops.
    const FingerFeatures other = RandomFinger(41);
    const TemplateMatchResult later =
        matchTemplates(Fingers{other, finger, finger}, Fingers{RandomFinger(42), finger, finger});
    EXPECT_EQ(later.firstFingerIndex, 1U);
    EXPECT_EQ(later.secondFingerIndex, 1U);
}

TEST(MatchTemplates, LetsMoreAgreeingPairsWinAtEqualScore) {
    // Both score 1000 against themselves, but the larger one has more pairs.
    const FingerFeatures small = RandomFinger(43, 40);
    const FingerFeatures large = RandomFinger(44, 60);
    const TemplateMatchResult alone = matchTemplates(Fingers{small}, Fingers{small});
    ASSERT_EQ(alone.score, 1000);
    const TemplateMatchResult result = matchTemplates(Fingers{small, large}, Fingers{small, large});
    EXPECT_EQ(result.score, 1000);
    EXPECT_EQ(result.firstFingerIndex, 1U);
    EXPECT_EQ(result.secondFingerIndex, 1U);
    EXPECT_GT(result.matchedCount, alone.matchedCount);
}

TEST(MatchTemplates, ReportsFingerPairZeroWhenNothingMatches) {
    const FingerFeatures none = {5, {}};
    const TemplateMatchResult result = matchTemplates(Fingers{none, none}, Fingers{none, none});
    EXPECT_EQ(result, TemplateMatchResult{});
}

TEST(MatchTemplates, LeavesTheTemplatesAlone) {
    const Fingers first = {RandomFinger(50)};
    const Fingers second = {RandomFinger(51)};
    const auto firstTriangles = first[0].triangles;
    const auto secondTriangles = second[0].triangles;
    matchTemplates(first, second);
    EXPECT_EQ(first[0].triangles, firstTriangles);
    EXPECT_EQ(second[0].triangles, secondTriangles);
}

TEST(MatchTemplates, GivesTheSameFiguresOnSeveralThreadsAtOnce) {
    const Fingers first = {RandomFinger(60)};
    std::mt19937 random(61);
    const Fingers second = {test::BuiltFinger(test::RandomMinutiaList(random, 45)), first[0]};
    const TemplateMatchResult expected = matchTemplates(first, second);
    std::vector<TemplateMatchResult> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (TemplateMatchResult& result : results) {
        threads.emplace_back([&] { result = matchTemplates(first, second); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const TemplateMatchResult& result : results) {
        EXPECT_EQ(result, expected);
    }
}

TEST(MatchFinger, LeavesAllFieldsZeroWithFewerThanThreeTrianglePairs) {
    FingerFeatures finger = FourMinutiae();
    finger.triangles.pop_back();
    ASSERT_EQ(naive::SearchTrianglePairs(finger.triangles, finger.triangles).size(), 2U);
    EXPECT_EQ(Matched(finger, finger, 0), FingerMatchResult{});
    EXPECT_EQ(Matched({4, {}}, finger, 0), FingerMatchResult{});
    EXPECT_EQ(Matched(finger, {4, {}}, 0), FingerMatchResult{});
}

TEST(MatchFinger, LeavesAllFieldsZeroWithFewerThanThreeMinutiaPairs) {
    // Two corners at one spot leave two correspondences however often the triangle comes.
    const TriangleFeature thin =
        MakeTriangleFeature({10, 10, 5, 0}, {10, 10, 5, 0}, {60, 10, 5, 0});
    const FingerFeatures finger = {3, {thin, thin, thin}};
    ASSERT_GE(naive::SearchTrianglePairs(finger.triangles, finger.triangles).size(), 3U);
    EXPECT_EQ(Matched(finger, finger, 0), FingerMatchResult{});
}

TEST(MatchFinger, LeavesAllFieldsZeroWithFewerThanFourAgreeingPairs) {
    // One triangle thrice: three correspondences, which all agree.
    const TriangleFeature wide =
        MakeTriangleFeature({10, 10, 5, 0}, {100, 30, 90, 0}, {40, 90, 170, 0});
    const FingerFeatures finger = {3, {wide, wide, wide}};
    const auto pairs = naive::SearchTrianglePairs(finger.triangles, finger.triangles);
    ASSERT_EQ(naive::Consolidate(pairs, finger.triangles, finger.triangles).size(), 3U);
    EXPECT_EQ(Matched(finger, finger, 0), FingerMatchResult{});
}

TEST(MatchFinger, ReportsTheOrientationThatItWasTold) {
    const FingerFeatures finger = FourMinutiae();
    const FingerMatchResult result = Matched(finger, Turned(finger, 2), 2);
    EXPECT_EQ(result.score, 232);
    EXPECT_EQ(result.orientation, 2U);
}

TEST(MatchFinger, CountsNoScoreForAFingerWithoutMinutiaeButReportsTheAlignment) {
    FingerFeatures finger = FourMinutiae();
    finger.minutiaCount = 0;
    const FingerMatchResult result = Matched(finger, finger, 0);
    EXPECT_EQ(result.score, 0);
    EXPECT_EQ(result.matchedCount, 4);
    EXPECT_EQ(result.matchedRatio, 1.0F);  // 4 over 1, cut to 1
    EXPECT_EQ(result.refined, 0U);
}

TEST(MatchFinger, GivesTheSameFiguresHoweverOftenAndInWhateverOrderItIsAsked) {
    std::mt19937 random(72);
    const MinutiaList list = test::RandomMinutiaList(random, 30);
    const FingerFeatures first = test::BuiltFinger(list);
    const FingerFeatures second = test::BuiltFinger(
        test::Impression(random, list, {.rotationDegrees = 95.0, .jitterPixels = 5}));
    auto fingers = test::SearchedFingers(first, second);
    for (const int turns : {3, 0, 2, 1, 0, 3}) {
        EXPECT_EQ(matchFinger(fingers.context(), static_cast<std::size_t>(turns), nullptr),
                  naive::MatchFinger(first, second, turns))
            << turns;
    }
}

// A result with other figures than the given one's, each a little more or less, now and then equal.
FingerMatchResult Near(std::mt19937& random, FingerMatchResult result) {
    const auto moved = [&](std::uint16_t value) {
        const int change = static_cast<int>(random() % 5) - 2;
        return static_cast<std::uint16_t>(std::max(0, value + (random() % 3 == 0 ? change : 0)));
    };
    result.score = moved(result.score);
    result.score = random() % 4 == 0 ? static_cast<std::uint16_t>(random() % 1001) : result.score;
    result.matchedCount = moved(result.matchedCount);
    result.matchedRatio *= random() % 3 == 0 ? 0.9F : 1.0F;
    result.coverage *= random() % 3 == 0 ? 1.1F : 1.0F;
    result.distanceMedian += random() % 2 == 0 ? 0.1F : 0.0F;
    return result;
}

TEST(MatchFinger, ReturnsNothingOnlyWhenTheResultIsNotBetter) {
    int returned = 0;
    int spared = 0;
    for (std::uint32_t seed = 800; seed < 840; ++seed) {
        std::mt19937 random(seed);
        const MinutiaList list = test::RandomMinutiaList(random, 6 + random() % 25);
        const FingerFeatures first = test::BuiltFinger(list);
        const FingerFeatures second = test::BuiltFinger(
            test::Impression(random,
                             list,
                             {.rotationDegrees = static_cast<double>(random() % 40),
                              .jitterPixels = static_cast<int>(random() % 12),
                              .jitterDegrees = static_cast<int>(random() % 16),
                              .lostPercent = static_cast<int>(random() % 40),
                              .added = 3 + random() % 6}));
        auto fingers = test::SearchedFingers(first, second);
        for (int turns = 0; turns < 4; ++turns) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << turns << " turns");
            const FingerMatchResult expected = naive::MatchFinger(first, second, turns);
            for (int i = 0; i < 12; ++i) {
                const FingerMatchResult best = Near(random, expected);
                const auto result =
                    matchFinger(fingers.context(), static_cast<std::size_t>(turns), &best);
                if (result) {
                    ASSERT_EQ(*result, expected);
                    ++returned;
                } else {
                    ASSERT_FALSE(IsBetterMatch(expected, best));
                    ++spared;
                }
            }
        }
    }
    EXPECT_GT(returned, 100);
    EXPECT_GT(spared, 100);
}

TEST(MatchFingerAllOrientations, TellsWhetherItFoundABetterResult) {
    const FingerFeatures finger = RandomFinger(70);
    auto fingers = test::SearchedFingers(finger, Turned(finger, 1));
    FingerMatchResult best;
    EXPECT_TRUE(matchFingerAllOrientations(fingers.context(), best));
    EXPECT_GE(best.score, kHighScore);
    EXPECT_EQ(best.orientation, 3U);
    const FingerMatchResult first = best;
    EXPECT_FALSE(matchFingerAllOrientations(fingers.context(), best));  // a full tie
    EXPECT_EQ(best, first);
    --best.matchedCount;
    EXPECT_TRUE(matchFingerAllOrientations(fingers.context(), best));
    EXPECT_EQ(best, first);
}

TEST(MatchFingerAllOrientations, KeepsABetterResult) {
    const FingerFeatures finger = RandomFinger(70);
    auto fingers = test::SearchedFingers(finger, Turned(finger, 1));
    FingerMatchResult best{.score = 1000, .matchedCount = 1000, .orientation = 2};
    const FingerMatchResult before = best;
    EXPECT_FALSE(matchFingerAllOrientations(fingers.context(), best));
    EXPECT_EQ(best, before);
}

TEST(MatchFingerAllOrientations, LetsTheEarlierOrientationWinAFullTie) {
    const FingerFeatures finger = RandomFinger(71);
    auto fingers = test::SearchedFingers(finger, Turned(finger, 2));
    FingerMatchResult best;
    matchFingerAllOrientations(fingers.context(), best);
    ASSERT_EQ(best.orientation, 2U);
    best.orientation = 0;  // as if an earlier one had the same figures
    EXPECT_FALSE(matchFingerAllOrientations(fingers.context(), best));
    EXPECT_EQ(best.orientation, 0U);
}

}  // namespace
}  // namespace orl::matcher
