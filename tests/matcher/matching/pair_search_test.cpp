#include "matcher/matching/pair_search.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "tests/matcher/matching/made_triangles.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using test::PairsOf;
using test::Triangle;

// One triangle for every key byte, in a finger's order; number i has key i - 128.
std::vector<TriangleFeature> OneOfEachKey() {
    std::vector<TriangleFeature> triangles;
    for (int key = -128; key <= 127; ++key) {
        triangles.push_back(Triangle({key, 0, 0}));
    }
    return triangles;
}

// Indices of the triangles of OneOfEachKey that pair with one of that key.
std::vector<int> KeysFound(int key) {
    std::vector<int> keys;
    for (const TrianglePair& pair : PairsOf({Triangle({key, 0, 0})}, OneOfEachKey())) {
        keys.push_back(int{pair.second} - 128);
    }
    return keys;
}

TEST(KeyRange, ReachesAsFarAsTheSideTestDoes) {
    // The range is -13..23 and 30..66; the side test passes 17, and never across 0, where the bytes
    // are far apart.
    EXPECT_EQ(KeysFound(5).front(), 0);
    EXPECT_EQ(KeysFound(5).back(), 22);
    EXPECT_EQ(KeysFound(48).front(), 31);
    EXPECT_EQ(KeysFound(48).back(), 65);
}

TEST(KeyRange, IsEmptyForAKeyOf120BecauseTheUpperBoundWraps) {
    EXPECT_TRUE(KeysFound(120).empty());
}

// Deliberate: keys within 18 of an end of the signed range find nothing, not even themselves.
TEST(KeyRange, WrapsItsLimitsInEightBits) {
    for (int key = -128; key <= 127; ++key) {
        const bool wraps = key < -110 || key > 109;
        std::vector<int> expected;
        for (int other = key - 17; other <= key + 17 && !wraps; ++other) {
            if ((key < 0) == (other < 0)) {
                expected.push_back(other);
            }
        }
        ASSERT_EQ(KeysFound(key), expected) << "key " << key;
    }
}

TEST(KeyRange, IsFoundForEachKeyOfTheFirstFinger) {
    // All keys at once give the same as one by one.
    const auto triangles = OneOfEachKey();
    test::TrianglePairs expected;
    for (int key = -128; key <= 127; ++key) {
        for (const int other : KeysFound(key)) {
            expected.push_back(
                {static_cast<std::uint16_t>(key + 128), static_cast<std::uint16_t>(other + 128)});
        }
    }
    EXPECT_EQ(PairsOf(triangles, triangles), expected);
}

TEST(KeyRange, HoldsAllTrianglesOfEqualKeyAndNothingOfAGap) {
    const std::vector<TriangleFeature> triangles = {Triangle({20, 1, 0}),
                                                    Triangle({32, 1, 0}),
                                                    Triangle({33, 1, 0}),
                                                    Triangle({33, 2, 0}),
                                                    Triangle({67, 1, 0}),
                                                    Triangle({67, 2, 0}),
                                                    Triangle({68, 1, 0})};
    const test::TrianglePairs expected = {{0, 2}, {0, 3}, {0, 4}, {0, 5}};
    EXPECT_EQ(PairsOf({Triangle({50, 1, 0})}, triangles), expected);
    EXPECT_TRUE(PairsOf({Triangle({90, 1, 0})}, triangles).empty());
    EXPECT_TRUE(PairsOf({Triangle({-30, 1, 0})}, triangles).empty());
    EXPECT_TRUE(PairsOf({Triangle({50, 1, 0})}, {}).empty());
}

TEST(KeyRange, SpansTheStretchesOfALongList) {
    // 300 triangles in stretches of 128: all of them, those around the seams, and the last ones.
    for (const auto& [begin, end] : {std::pair{0U, 300U}, {60U, 70U}, {120U, 135U}, {250U, 300U}}) {
        std::vector<TriangleFeature> second;
        test::TrianglePairs expected;
        for (unsigned i = 0; i < 300; ++i) {
            second.push_back(Triangle({i < begin ? 10 : i < end ? 50 : 90, 5, 5}));
            if (i >= begin && i < end) {
                expected.push_back({0, static_cast<std::uint16_t>(i)});
            }
        }
        EXPECT_EQ(PairsOf({Triangle({50, 5, 5})}, second), expected) << begin << " to " << end;
    }
}

TEST(SearchTrianglePairs, FindsPairsOfEqualRankInTheOrderOfBothLists) {
    const std::vector<TriangleFeature> first = {Triangle({60, 50, 40}), Triangle({70, 50, 40})};
    const std::vector<TriangleFeature> second = {
        Triangle({52, 50, 40}), Triangle({55, 50, 40}), Triangle({70, 50, 40})};
    // 70 - 52 = 18 is too much; nothing else differs than a side, so no pair costs anything and
    // all rank the same.
    const test::TrianglePairs expected = {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}};
    EXPECT_EQ(PairsOf(first, second), expected);
}

TEST(SearchTrianglePairs, FindsNothingInEmptyLists) {
    const std::vector<TriangleFeature> some = {Triangle({60, 50, 40})};
    for (const auto& [first, second] :
         {std::pair{std::vector<TriangleFeature>{}, some}, {some, {}}, {{}, {}}}) {
        const auto fingers = test::SearchedFingers({3, first}, {3, second});
        for (std::size_t orientation = 0; orientation < kOrientations; ++orientation) {
            EXPECT_TRUE(fingers.pairs(orientation).empty());
        }
    }
}

TEST(SearchTrianglePairs, FindsNoPairForATriangleWithAKeyNearTheEndsOfTheRange) {
    for (int key : {110, 120, 127, 128, 145}) {
        const std::vector<TriangleFeature> only = {Triangle({key, 50, 40})};
        EXPECT_TRUE(PairsOf(only, only).empty()) << key;
    }
    for (int key : {109, 146}) {  // 146 is -110
        const std::vector<TriangleFeature> only = {Triangle({key, 50, 40})};
        EXPECT_EQ(PairsOf(only, only).size(), 1U) << key;
    }
}

TEST(SearchTrianglePairs, FillsEachOrientationWithThePairsOfTheTurnedTriangle) {
    const TriangleFeature triangle =
        MakeTriangleFeature({100, 100, 10, 1}, {180, 100, 60, 1}, {100, 50, 120, 1});
    for (int turns = 0; turns < 4; ++turns) {
        const std::vector<TriangleFeature> turned = naive::Turned(std::vector{triangle}, turns);
        const auto fingers = test::SearchedFingers({3, {triangle}}, {3, turned});
        // Turned on to a whole turn it is the same triangle again.
        const auto back = static_cast<std::size_t>((4 - turns) % 4);
        EXPECT_EQ(fingers.pairs(back), (test::TrianglePairs{{0, 0}})) << turns;
    }
}

void ExpectAgreementWithTheOracle(const std::vector<TriangleFeature>& first,
                                  const std::vector<TriangleFeature>& second) {
    auto fingers = test::SearchedFingers({3, first}, {3, second});
    for (int turns = 0; turns < 4; ++turns) {
        const auto orientation = static_cast<std::size_t>(turns);
        const auto turned = turns == 0 ? second : naive::Turned(second, turns);
        const auto pairs = naive::SearchTrianglePairs(first, turned);
        ASSERT_EQ(fingers.pairs(orientation), test::RankedPairs(pairs)) << turns;
        const bool enough = consolidatePairs(fingers.context(), orientation);
        const auto consolidated = naive::Consolidate(pairs, first, turned);
        EXPECT_EQ(enough, consolidated.size() >= 3);
        ASSERT_EQ(test::AsPlain(fingers.context().minutiaPairs), consolidated) << turns;
    }
}

TEST(PairSearch, AgreesWithThePlainOneOnImpressionsOfRandomFingers) {
    for (std::uint32_t seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 10 + seed * 3);
        const MinutiaList other = test::Impression(random,
                                                   finger,
                                                   {.rotationDegrees = 10.0 * (seed % 5),
                                                    .jitterPixels = 4,
                                                    .jitterDegrees = 8,
                                                    .lostPercent = 20,
                                                    .added = seed % 9});
        ExpectAgreementWithTheOracle(test::BuiltFinger(finger).triangles,
                                     test::BuiltFinger(other).triangles);
    }
}

// Small extents give coincident corners, empty sides and equal keys; large ones wrapped sides.
TEST(PairSearch, AgreesWithThePlainOneOnTrianglesOfAnyVertices) {
    for (std::uint32_t seed = 100; seed < 112; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 30 : 4;
        const auto first = test::RandomTriangles(random, 80, extent);
        auto second = test::RandomTriangles(random, 80, extent);
        second.insert(second.end(), first.begin(), first.end());
        test::SortTriangles(second);
        ExpectAgreementWithTheOracle(first, second);
        ExpectAgreementWithTheOracle(second, second);
    }
}

}  // namespace
}  // namespace orl::matcher
