// Triangle pairs in, distinct minutia correspondences out.

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "matcher/matching/pair_search.h"
#include "tests/matcher/matching/made_triangles.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/support/naive_matching.h"

namespace orl::matcher {
namespace {

using test::CornersShifted;
using test::Radial;
using test::Triangle;
using test::WithSides;

MinutiaPair Corner(const TriangleFeature& first, const TriangleFeature& second, std::size_t j) {
    return {first.vertices[j], second.vertices[j]};
}

using PairOf = naive::TrianglePair;  // by its similarity and the two indices

struct Consolidated {
    bool areEnough = false;
    std::vector<MinutiaPair> pairs;
};

// Consolidates pairs of two lists in orientation 0, which takes the lists as they stand.
Consolidated ConsolidatedPairs(const std::vector<TriangleFeature>& first,
                               const std::vector<TriangleFeature>& second,
                               const std::vector<PairOf>& trianglePairs) {
    test::FingersInMatch fingers({3, first}, {3, second});
    const std::vector<MinutiaPair> earlier = {{{1, 1, 1, 1}, {2, 2, 2, 2}}};
    fingers.context().minutiaPairs = earlier;
    fingers.setPairs(0, trianglePairs);
    const bool areEnough = consolidatePairs(fingers.context(), 0);
    return {areEnough, test::Copied(fingers.context().minutiaPairs)};
}

TEST(ConsolidatePairs, StopsAtFewerThanThreeTrianglePairs) {
    const TriangleFeature a = Triangle({60, 50, 40});
    const Consolidated two = ConsolidatedPairs({a}, {a}, {PairOf{1024, 0, 0}, PairOf{1024, 0, 0}});
    EXPECT_FALSE(two.areEnough);
    EXPECT_TRUE(two.pairs.empty());
    const Consolidated none = ConsolidatedPairs({a}, {a}, {});
    EXPECT_FALSE(none.areEnough);
    EXPECT_TRUE(none.pairs.empty());
}

TEST(ConsolidatePairs, StopsAtFewerThanThreeDistinctMinutiaPairs) {
    TriangleFeature a = Triangle({60, 50, 40});
    a.vertices[2] = a.vertices[1];
    const Consolidated result =
        ConsolidatedPairs({a}, {a}, {PairOf{1024, 0, 0}, PairOf{1024, 0, 0}, PairOf{1024, 0, 0}});
    EXPECT_FALSE(result.areEnough);
    EXPECT_EQ(result.pairs.size(), 2U);
}

TEST(ConsolidatePairs, KeepsACorrespondenceOfSeveralTrianglePairsOnce) {
    const TriangleFeature a = Triangle({60, 50, 40});
    const TriangleFeature b = Radial({60, 50, 40});
    const Consolidated result =
        ConsolidatedPairs({a}, {b}, {PairOf{1024, 0, 0}, PairOf{1000, 0, 0}, PairOf{900, 0, 0}});
    EXPECT_TRUE(result.areEnough);
    EXPECT_EQ(result.pairs, (std::vector{Corner(a, b, 0), Corner(a, b, 1), Corner(a, b, 2)}));
}

// Deliberate: which cyclic order made two triangles alike is not kept.
TEST(ConsolidatePairs, PairsVertexZeroWithVertexZeroWhateverOrderPassed) {
    const TriangleFeature a = Triangle({100, 70, 40});
    const TriangleFeature b = CornersShifted(a, 1);  // passes under the order (1, 2, 0) only
    // Equal sides, so that the search lets them meet.
    const TriangleFeature first = WithSides(a, {70, 70, 70});
    const TriangleFeature second = WithSides(b, {70, 70, 70});
    auto fingers = test::SearchedFingers({3, {first, first, first}}, {3, {second}});
    ASSERT_EQ(fingers.pairs(0).size(), 3U);
    EXPECT_TRUE(consolidatePairs(fingers.context(), 0));
    EXPECT_EQ(test::Copied(fingers.context().minutiaPairs),
              (std::vector{Corner(a, b, 0), Corner(a, b, 1), Corner(a, b, 2)}));
}

// Three vertices that differ from those of any other `index`.
TriangleFeature Numbered(std::uint8_t index) {
    const auto x = static_cast<std::uint8_t>(10 * index);
    return {.vertices = {{x, 0, 1, 0}, {x, 1, 2, 0}, {x, 2, 3, 0}}};
}

// Deliberate: one taken position alone does not bar a pair.
TEST(ConsolidatePairs, DropsACorrespondenceOnlyWhenBothItsPositionsAreTaken) {
    const std::vector<TriangleFeature> a = {Numbered(1), Numbered(2), Numbered(3)};
    const std::vector<TriangleFeature> b = {Numbered(11), Numbered(12)};
    const Consolidated result =
        ConsolidatedPairs(a,
                          b,
                          {PairOf{1000, 0, 0},   // all new
                           PairOf{900, 1, 0},    // first positions new, second taken: kept
                           PairOf{800, 0, 1},    // first positions taken, second new: kept
                           PairOf{700, 1, 1},    // never met before, but both taken: dropped
                           PairOf{600, 2, 1}});  // first positions new: kept
    EXPECT_TRUE(result.areEnough);
    std::vector<MinutiaPair> expected;
    for (const auto& [first, second] :
         {std::pair{0U, 0U}, std::pair{1U, 0U}, std::pair{0U, 1U}, std::pair{2U, 1U}}) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            expected.push_back(Corner(a[first], b[second], corner));
        }
    }
    EXPECT_EQ(result.pairs, expected);
}

// Triangles of a mesh share corners: a position may be taken although its triangle is new.
TEST(ConsolidatePairs, GoesByPositionsNotByTriangles) {
    const std::vector<TriangleFeature> a = {
        Numbered(1), {.vertices = {{10, 0, 1, 0}, {10, 1, 2, 0}, {7, 7, 7, 0}}}, Numbered(2)};
    const Consolidated result =
        ConsolidatedPairs(a, a, {PairOf{1000, 0, 0}, PairOf{900, 1, 1}, PairOf{800, 2, 2}});
    EXPECT_TRUE(result.areEnough);
    EXPECT_EQ(result.pairs,
              (std::vector{Corner(a[0], a[0], 0),
                           Corner(a[0], a[0], 1),
                           Corner(a[0], a[0], 2),
                           Corner(a[1], a[1], 2),  // its other two corners are those of the first
                           Corner(a[2], a[2], 0),
                           Corner(a[2], a[2], 1),
                           Corner(a[2], a[2], 2)}));
}

TEST(ConsolidatePairs, TellsPositionsApartByBothCoordinatesAndNothingElse) {
    const TriangleFeature a{.vertices = {{1, 0, 10, 0}, {0, 1, 20, 0}, {255, 255, 30, 0}}};
    // The same positions with other directions and types, which do not matter.
    const TriangleFeature sameSpots{.vertices = {{1, 0, 99, 1}, {0, 1, 98, 2}, {255, 255, 97, 3}}};
    const Consolidated result =
        ConsolidatedPairs({a, sameSpots},
                          {a, sameSpots},
                          {PairOf{1024, 0, 0}, PairOf{1000, 1, 0}, PairOf{900, 0, 1}});
    EXPECT_TRUE(result.areEnough);
    EXPECT_EQ(result.pairs, (std::vector{Corner(a, a, 0), Corner(a, a, 1), Corner(a, a, 2)}));
}

TEST(ConsolidatePairs, RanksBySimilarityAndKeepsTheOrderOfEqualOnes) {
    std::vector<TriangleFeature> a;
    for (std::uint8_t i = 0; i < 5; ++i) {
        a.push_back(Numbered(i));
    }
    const Consolidated result = ConsolidatedPairs(a,
                                                  a,
                                                  {PairOf{500, 0, 0},
                                                   PairOf{900, 1, 1},
                                                   PairOf{500, 2, 2},
                                                   PairOf{1024, 3, 3},
                                                   PairOf{900, 4, 4}});
    EXPECT_TRUE(result.areEnough);
    ASSERT_EQ(result.pairs.size(), 15U);
    const std::array<std::size_t, 5> ranked = {3, 1, 4, 0, 2};
    for (std::size_t i = 0; i < ranked.size(); ++i) {
        EXPECT_EQ(result.pairs[3 * i], Corner(a[ranked[i]], a[ranked[i]], 0)) << i;
    }
}

TEST(ConsolidatePairs, KeepsTheOrderOfManyPairsOfEqualSimilarity) {
    std::vector<TriangleFeature> a;
    std::vector<PairOf> pairs;
    for (std::uint8_t i = 0; i < 25; ++i) {
        a.push_back(Numbered(i));
        pairs.push_back(PairOf{i % 2 == 0 ? 700 : 800, i, i});
    }
    const Consolidated result = ConsolidatedPairs(a, a, pairs);
    EXPECT_TRUE(result.areEnough);
    ASSERT_EQ(result.pairs.size(), 75U);
    for (std::size_t rank = 0; rank < a.size(); ++rank) {
        // The 12 odd ones first, then the 13 even ones.
        const std::size_t expected = rank < 12 ? 2 * rank + 1 : 2 * (rank - 12);
        EXPECT_EQ(result.pairs[3 * rank], Corner(a[expected], a[expected], 0)) << rank;
    }
}

// All similarities that a pair can have and beyond, in an order far from ranked.
TEST(ConsolidatePairs, RanksEverySimilarityFromOneTo1024) {
    std::vector<TriangleFeature> a(1024);
    std::vector<PairOf> pairs;
    for (unsigned i = 0; i < 1024; ++i) {
        for (std::uint8_t corner = 0; corner < 3; ++corner) {
            a[i].vertices[corner] = {static_cast<std::uint8_t>(i % 256),
                                     static_cast<std::uint8_t>(4 * corner + i / 256),
                                     0,
                                     0};
        }
        pairs.push_back(PairOf{static_cast<int>(1 + i * 389 % 1024), i, i});
    }
    const Consolidated result = ConsolidatedPairs(a, a, pairs);
    ASSERT_EQ(result.pairs.size(), 3072U);
    // Similarity 1024 - r belongs to the i with i * 389 % 1024 = 1023 - r.
    for (unsigned i = 0; i < 1024; ++i) {
        const unsigned rank = 1023 - i * 389 % 1024;
        ASSERT_EQ(result.pairs[3 * rank], Corner(a[i], a[i], 0)) << i;
    }
}

TEST(ConsolidatePairs, ForgetsThePositionsOfAnEarlierMatch) {
    const TriangleFeature a = MakeTriangleFeature({10, 10, 1, 0}, {60, 10, 2, 1}, {30, 50, 3, 2});
    test::FingersInMatch fingers({3, {a}}, {3, {a}});
    for (std::size_t orientation = 0; orientation < kOrientations; ++orientation) {
        fingers.setPairs(orientation, std::vector(3, PairOf{1024, 0, 0}));
        EXPECT_TRUE(consolidatePairs(fingers.context(), orientation));
        EXPECT_EQ(fingers.context().minutiaPairs.size(), 3U) << orientation;
    }
}

TEST(ConsolidatePairs, PairsWithTheTurnedTrianglesVerticesInTheirOwnOrder) {
    const TriangleFeature a = MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 1}, {20, 30, 3, 2});
    for (int turns = 0; turns < 4; ++turns) {
        test::FingersInMatch fingers({3, {a}}, {3, {a}});
        const auto orientation = static_cast<std::size_t>(turns);
        fingers.setPairs(orientation, std::vector(3, PairOf{1024, 0, 0}));
        EXPECT_TRUE(consolidatePairs(fingers.context(), orientation));
        const TriangleFeature turned = naive::Turned(std::vector{a}, turns).at(0);
        EXPECT_EQ(test::Copied(fingers.context().minutiaPairs),
                  (std::vector{Corner(a, turned, 0), Corner(a, turned, 1), Corner(a, turned, 2)}));
    }
}

}  // namespace
}  // namespace orl::matcher
