#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using Sides = std::array<int, 3>;

TriangleFeature WithSides(TriangleFeature triangle, Sides sides) {
    for (std::size_t i = 0; i < sides.size(); ++i) {
        triangle.sides[i] = static_cast<std::uint8_t>(sides[i]);
    }
    return triangle;
}

// Three vertices well apart; side bytes as given, so that each test of a pair can be met alone.
TriangleFeature Triangle(Sides sides) {
    TriangleFeature triangle{.vertices = {{100, 100, 10, 1}, {200, 100, 60, 1}, {100, 20, 120, 1}}};
    return WithSides(triangle, sides);
}

// Similarities that scoreTrianglePair appends: one or none.
std::vector<std::int32_t> Similarities(const TriangleFeature& first,
                                       const TriangleFeature& second) {
    std::vector<TrianglePair> pairs;
    scoreTrianglePair(second, pairs, first);
    std::vector<std::int32_t> similarities;
    for (const TrianglePair& pair : pairs) {
        EXPECT_EQ(pair.first, &first);
        EXPECT_EQ(pair.second, &second);
        similarities.push_back(pair.similarity);
    }
    return similarities;
}

using None = std::vector<std::int32_t>;
using One = std::vector<std::int32_t>;

// One triangle for every key byte, in a finger's order.
std::vector<TriangleFeature> OneOfEachKey() {
    std::vector<TriangleFeature> triangles;
    for (int key = -128; key <= 127; ++key) {
        triangles.push_back(Triangle({key, 0, 0}));
    }
    return triangles;
}

TEST(TrianglesInKeyRange, StartsAtTheFirstKeyNotBelowTheSignedLowerBound) {
    const auto triangles = OneOfEachKey();
    const auto range = trianglesInKeyRange(triangles, 5);
    ASSERT_EQ(range.size(), 37U);  // -13 .. 23
    EXPECT_EQ(static_cast<std::int8_t>(range.front().sides[0]), -13);
    EXPECT_EQ(static_cast<std::int8_t>(range.back().sides[0]), 23);
}

TEST(TrianglesInKeyRange, IsEmptyForAKeyOf120BecauseTheUpperBoundWraps) {
    EXPECT_TRUE(trianglesInKeyRange(OneOfEachKey(), 120).empty());
}

// Deliberate: keys within 18 of an end of the signed range find nothing, not even themselves.
TEST(TrianglesInKeyRange, WrapsItsLimitsInEightBits) {
    const auto triangles = OneOfEachKey();
    for (int key = -128; key <= 127; ++key) {
        const bool wraps = key < -110 || key > 109;
        const auto range = trianglesInKeyRange(triangles, static_cast<std::int8_t>(key));
        ASSERT_EQ(range.size(), wraps ? 0U : 37U) << "key " << key;
        if (!wraps) {
            EXPECT_EQ(static_cast<std::int8_t>(range.front().sides[0]), key - 18);
        }
    }
}

TEST(TrianglesInKeyRange, HoldsAllTrianglesOfEqualKeyAndNothingOfAGap) {
    const std::vector<TriangleFeature> triangles = {Triangle({20, 1, 0}),
                                                    Triangle({31, 1, 0}),
                                                    Triangle({32, 1, 0}),
                                                    Triangle({32, 2, 0}),
                                                    Triangle({68, 1, 0}),
                                                    Triangle({68, 2, 0}),
                                                    Triangle({69, 1, 0})};
    const auto range = trianglesInKeyRange(triangles, 50);
    EXPECT_EQ(range.data(), &triangles[2]);
    EXPECT_EQ(range.size(), 4U);
    EXPECT_TRUE(trianglesInKeyRange(triangles, 90).empty());
    EXPECT_TRUE(trianglesInKeyRange(triangles, -30).empty());
    EXPECT_TRUE(trianglesInKeyRange({}, 50).empty());
}

TEST(AreCandidates, AcceptsADifferenceOf17InEachSideByteButNot18) {
    const TriangleFeature base = Triangle({90, 60, 40});
    for (std::size_t i = 0; i < 3; ++i) {
        for (int sign : {-1, 1}) {
            Sides near = {90, 60, 40};
            near[i] += 17 * sign;
            EXPECT_TRUE(areCandidates(base, Triangle(near))) << i;
            near[i] += sign;
            EXPECT_FALSE(areCandidates(base, Triangle(near))) << i;
        }
    }
}

TEST(AreCandidates, IgnoresTheFourthByte) {
    TriangleFeature other = Triangle({90, 60, 40});
    other.sides[3] = 0xFF;
    EXPECT_TRUE(areCandidates(Triangle({90, 60, 40}), other));
}

// Deliberate: the difference of candidates is taken modulo 256, that of the pair test is not.
TEST(AreCandidates, TakesDifferencesModulo256WhereThePairTestDoesNot) {
    const TriangleFeature low = Triangle({50, 5, 5});
    const TriangleFeature high = Triangle({50, 5, 250});  // 250 - 5 = 245, or -11 modulo 256
    EXPECT_TRUE(areCandidates(low, high));
    EXPECT_TRUE(areCandidates(high, low));
    EXPECT_EQ(Similarities(low, high), None{});
}

TEST(AreCandidates, AgreesWithTheModularDifferenceForAllByteValues) {
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const int forward = (b - a + 256) % 256;
            const bool near = forward <= 17 || forward >= 256 - 17;
            ASSERT_EQ(areCandidates(Triangle({9, a, 9}), Triangle({9, b, 9})), near)
                << a << " and " << b;
        }
    }
}

TEST(ScoreTrianglePair, GivesIdenticalTrianglesTheGreatestSimilarity) {
    EXPECT_EQ(Similarities(Triangle({100, 70, 40}), Triangle({100, 70, 40})), One{1024});
}

TEST(ScoreTrianglePair, RejectsASideDifferenceOf18) {
    const TriangleFeature first = Triangle({100, 60, 20});
    EXPECT_EQ(Similarities(first, Triangle({117, 60, 20})), One{1024});
    EXPECT_EQ(Similarities(first, Triangle({118, 60, 20})), None{});
    EXPECT_EQ(Similarities(first, Triangle({100, 43, 20})), One{1024});
    EXPECT_EQ(Similarities(first, Triangle({100, 42, 20})), None{});
    EXPECT_EQ(Similarities(first, Triangle({100, 60, 37})), One{1024});
    EXPECT_EQ(Similarities(first, Triangle({100, 60, 38})), None{});
}

// A product with a factor of 0 costs nothing, however large the other differences are.
TEST(ScoreTrianglePair, CostsNothingWhenOneOfTheThreeDifferencesIsZero) {
    const TriangleFeature first = Triangle({100, 60, 20});
    TriangleFeature second = Triangle({100, 60, 20});
    second.vertices[1].angle = 60 + 34;
    EXPECT_EQ(Similarities(first, second), One{1024});
}

TEST(ScoreTrianglePair, RejectsARelativeDirectionDifferenceOf35) {
    const TriangleFeature first = Triangle({100, 60, 20});
    for (std::size_t corner = 0; corner < 3; ++corner) {
        TriangleFeature second = first;
        second.vertices[corner].angle =
            static_cast<std::uint8_t>(first.vertices[corner].angle + 34);
        EXPECT_EQ(Similarities(first, second), One{1024}) << corner;
        ++second.vertices[corner].angle;
        EXPECT_EQ(Similarities(first, second), None{}) << corner;
    }
}

TEST(ScoreTrianglePair, ReducesTheSimilarityByTheCost) {
    const TriangleFeature first = Triangle({100, 60, 20});
    TriangleFeature second = Triangle({109, 60, 20});
    second.vertices[1].angle = 60 + 10;
    // Edges and relative directions differ by 10: 10240 / 35 = 292; sides by 9: 9216 / 18 = 512;
    // 292 * 292 * 512 = 43655168, / 1048576 = 41.
    EXPECT_EQ(Similarities(first, second), One{1024 - 41});

    second = Triangle({117, 60, 20});
    second.vertices[1].angle = 60 + 34;
    // 34816 / 35 = 994, 17408 / 18 = 967; 994 * 994 * 967 = 955430812, / 1048576 = 911.
    EXPECT_EQ(Similarities(first, second), One{1024 - 911});
}

// Both triangles have the same directions; only the second vertex lies elsewhere. The edge from it
// to the first vertex has bearing 128 in the first triangle.
TriangleFeature WithSecondVertexLowered(int gridUnits) {
    TriangleFeature triangle = Triangle({100, 60, 20});
    triangle.vertices[1].y = static_cast<std::uint8_t>(100 + gridUnits);
    return triangle;
}

TEST(ScoreTrianglePair, RejectsAnEdgeDifferenceOf35) {
    const TriangleFeature first = Triangle({100, 60, 20});
    // atan2(-111, -100) is -93.51 steps, -94, as a byte 162: 34 away from 128.
    EXPECT_EQ(Similarities(first, WithSecondVertexLowered(111)), One{1024});
    // atan2(-112, -100) is -93.33 steps, -93, as a byte 163: 35 away.
    EXPECT_EQ(Similarities(first, WithSecondVertexLowered(112)), None{});
}

// Deliberate: a negative bearing is kept by its low 8 bits although a turn has 255 steps. Reduced
// by a turn, -93 would be 162 and pass; the same edge the other way, at 34.17 steps, is 34 away.
TEST(ScoreTrianglePair, ReadsANegativeBearingByItsLowEightBits) {
    const TriangleFeature first = Triangle({100, 60, 20});
    EXPECT_EQ(Similarities(first, WithSecondVertexLowered(112)), None{});
    EXPECT_EQ(naive::TriangleSimilarity(first, WithSecondVertexLowered(112)), 0);
}

// Deliberate: equal directions have a turn of 255 between them, which lies next to 254 and to 1.
TEST(ScoreTrianglePair, CountsATurnOf255AsNextToOne) {
    TriangleFeature first = Triangle({100, 60, 20});
    for (TriangleVertex& vertex : first.vertices) {
        vertex.angle = 40;
    }
    for (int step : {-1, 1}) {
        TriangleFeature second = WithSides(first, {117, 60, 20});
        second.vertices[1].angle = static_cast<std::uint8_t>(40 + step);
        // Turns of 255 become 1 and 254, one step off: factors 1024 / 35 = 29, 29 and 967;
        // 29 * 29 * 967 = 813247 costs less than one point.
        EXPECT_EQ(Similarities(first, second), One{1024}) << step;
        second.vertices[1].angle = static_cast<std::uint8_t>(40 + 35 * step);
        EXPECT_EQ(Similarities(first, second), None{}) << step;
    }
}

TEST(ScoreTrianglePair, TakesDirections0And255AsEqual) {
    TriangleFeature first = Triangle({100, 60, 20});
    TriangleFeature second = first;
    for (TriangleVertex& vertex : first.vertices) {
        vertex.angle = 0;
    }
    for (TriangleVertex& vertex : second.vertices) {
        vertex.angle = 255;
    }
    // Every edge's turn is the same modulo 255: fold(x, 0) = x and fold(x, 255) = x - 255 + 255.
    EXPECT_EQ(Similarities(first, second), One{1024});
}

// A triangle whose corners, directions included, come into themselves by a third of a turn, so that
// only the side bytes tell the cyclic orders apart.
TriangleFeature Radial(Sides sides) {
    const TriangleFeature triangle{
        .vertices = {{170, 100, 255, 0}, {65, 161, 85, 0}, {65, 39, 170, 0}}};
    return WithSides(triangle, sides);
}

TriangleFeature CornersShifted(const TriangleFeature& triangle, std::size_t shift) {
    TriangleFeature shifted = triangle;
    for (std::size_t j = 0; j < 3; ++j) {
        shifted.vertices[j] = triangle.vertices[(j + shift) % 3];
        shifted.sides[j] = triangle.sides[(j + shift) % 3];
    }
    return shifted;
}

TEST(ScoreTrianglePair, FindsEachOfTheThreeCyclicOrders) {
    const TriangleFeature first = Triangle({100, 70, 40});
    for (std::size_t shift = 0; shift < 3; ++shift) {
        EXPECT_EQ(Similarities(first, CornersShifted(first, shift)), One{1024}) << shift;
    }
}

TEST(ScoreTrianglePair, KnowsNoMirroredOrder) {
    const TriangleFeature first = Triangle({100, 70, 40});
    TriangleFeature mirrored = first;
    std::swap(mirrored.vertices[0], mirrored.vertices[1]);
    std::swap(mirrored.sides[0], mirrored.sides[1]);
    EXPECT_EQ(Similarities(first, mirrored), None{});
}

TEST(ScoreTrianglePair, KeepsTheCheapestCyclicOrder) {
    // Sides differ by 17 under the first order and not at all under the second; a direction is off
    // by 30 under both. That costs 877 * 877 * 967 / 1048576 = 709 and nothing.
    const TriangleFeature first = Radial({100, 83, 83});
    TriangleFeature off = CornersShifted(first, 1);
    off.vertices[1].angle = static_cast<std::uint8_t>(off.vertices[1].angle - 30);
    EXPECT_EQ(Similarities(first, off), One{1024});
    off.sides[1] = 66;  // 17 off the 83 it should be: now the second order costs 709 too
    EXPECT_EQ(Similarities(first, off), One{1024 - 709});
}

TEST(ScoreTrianglePair, AgreesWithThePlainTestOnNearbyTriangles) {
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto triangles = test::RandomTriangles(random, 300, seed % 2 == 0 ? 60 : 200);
        int passed = 0;
        for (const TriangleFeature& first : triangles) {
            TriangleFeature second = CornersShifted(first, random() % 3);
            const std::uint8_t turn = static_cast<std::uint8_t>(random());
            for (TriangleVertex& vertex : second.vertices) {
                vertex.x = static_cast<std::uint8_t>(vertex.x + random() % 8);
                vertex.y = static_cast<std::uint8_t>(vertex.y + random() % 8);
                vertex.angle = static_cast<std::uint8_t>(vertex.angle + random() % 30 +
                                                         (seed % 4 == 0 ? turn : 0));
            }
            second = WithSides(second,
                               {second.sides[0] + static_cast<int>(random() % 20),
                                second.sides[1],
                                second.sides[2] + static_cast<int>(random() % 20)});
            const int expected = naive::TriangleSimilarity(first, second);
            ASSERT_EQ(Similarities(first, second), expected == 0 ? None{} : One{expected});
            passed += expected != 0 ? 1 : 0;
        }
        EXPECT_TRUE(seed % 4 == 0 || passed > 50) << passed << " pairs passed";
    }
}

// The pairs as indices, the way the oracle gives them.
std::vector<naive::TrianglePair> Indexed(const MatchContext& context,
                                         const std::vector<TriangleFeature>& second) {
    std::vector<naive::TrianglePair> pairs;
    for (const TrianglePair& pair : context.trianglePairs) {
        pairs.push_back({pair.similarity,
                         static_cast<std::size_t>(pair.first - context.firstTriangles.data()),
                         static_cast<std::size_t>(pair.second - second.data())});
    }
    return pairs;
}

TEST(SearchTrianglePairs, FindsThePairsInTheOrderOfBothLists) {
    const std::vector<TriangleFeature> first = {Triangle({60, 50, 40}), Triangle({70, 50, 40})};
    const std::vector<TriangleFeature> second = {
        Triangle({52, 50, 40}), Triangle({55, 50, 40}), Triangle({70, 50, 40})};
    MatchContext context;
    context.firstTriangles = first;
    searchTrianglePairs(context, second);
    // 70 - 52 = 18 is too much; nothing else differs than a side, so no pair costs anything.
    const std::vector<naive::TrianglePair> expected = {
        {1024, 0, 0}, {1024, 0, 1}, {1024, 0, 2}, {1024, 1, 1}, {1024, 1, 2}};
    EXPECT_EQ(Indexed(context, second), expected);
}

TEST(SearchTrianglePairs, FindsNothingInEmptyLists) {
    const std::vector<TriangleFeature> some = {Triangle({60, 50, 40})};
    MatchContext context;
    searchTrianglePairs(context, some);
    EXPECT_TRUE(context.trianglePairs.empty());
    context.firstTriangles = some;
    searchTrianglePairs(context, {});
    EXPECT_TRUE(context.trianglePairs.empty());
}

TEST(SearchTrianglePairs, FindsNoPairForATriangleWithAKeyNearTheEndsOfTheRange) {
    for (int key : {110, 120, 127, 128, 145}) {
        const std::vector<TriangleFeature> only = {Triangle({key, 50, 40})};
        MatchContext context;
        context.firstTriangles = only;
        searchTrianglePairs(context, only);
        EXPECT_TRUE(context.trianglePairs.empty()) << key;
    }
    for (int key : {109, 146}) {  // 146 is -110
        const std::vector<TriangleFeature> only = {Triangle({key, 50, 40})};
        MatchContext context;
        context.firstTriangles = only;
        searchTrianglePairs(context, only);
        EXPECT_EQ(context.trianglePairs.size(), 1U) << key;
    }
}

MinutiaPair Corner(const TriangleFeature& first, const TriangleFeature& second, std::size_t j) {
    return {first.vertices[j], second.vertices[j]};
}

TEST(ConsolidatePairs, StopsAtFewerThanThreeTrianglePairs) {
    const TriangleFeature a = Triangle({60, 50, 40});
    MatchContext context;
    context.minutiaPairs = {Corner(a, a, 0)};  // of an earlier match
    context.trianglePairs = {{1024, &a, &a}, {1024, &a, &a}};
    EXPECT_FALSE(consolidatePairs(context));
    EXPECT_TRUE(context.minutiaPairs.empty());
}

TEST(ConsolidatePairs, StopsAtFewerThanThreeDistinctMinutiaPairs) {
    TriangleFeature a = Triangle({60, 50, 40});
    a.vertices[2] = a.vertices[1];
    MatchContext context;
    context.trianglePairs = {{1024, &a, &a}, {1024, &a, &a}, {1024, &a, &a}};
    EXPECT_FALSE(consolidatePairs(context));
    EXPECT_EQ(context.minutiaPairs.size(), 2U);
}

TEST(ConsolidatePairs, KeepsACorrespondenceOfSeveralTrianglePairsOnce) {
    const TriangleFeature a = Triangle({60, 50, 40});
    const TriangleFeature b = Radial({60, 50, 40});
    MatchContext context;
    context.trianglePairs = {{1024, &a, &b}, {1000, &a, &b}, {900, &a, &b}};
    EXPECT_TRUE(consolidatePairs(context));
    EXPECT_EQ(context.minutiaPairs,
              (std::vector{Corner(a, b, 0), Corner(a, b, 1), Corner(a, b, 2)}));
}

// Deliberate: which cyclic order made two triangles alike is not kept.
TEST(ConsolidatePairs, PairsVertexZeroWithVertexZeroWhateverOrderPassed) {
    const TriangleFeature a = Triangle({100, 70, 40});
    const TriangleFeature b = CornersShifted(a, 1);  // passes under the order (1, 2, 0) only
    MatchContext context;
    for (int i = 0; i < 3; ++i) {
        scoreTrianglePair(b, context.trianglePairs, a);
    }
    ASSERT_EQ(context.trianglePairs.size(), 3U);
    EXPECT_TRUE(consolidatePairs(context));
    EXPECT_EQ(context.minutiaPairs,
              (std::vector{Corner(a, b, 0), Corner(a, b, 1), Corner(a, b, 2)}));
}

// Three vertices that differ from those of any other `index`.
TriangleFeature Numbered(std::uint8_t index) {
    const auto x = static_cast<std::uint8_t>(10 * index);
    return {.vertices = {{x, 0, 1, 0}, {x, 1, 2, 0}, {x, 2, 3, 0}}};
}

// Deliberate: one taken position alone does not bar a pair.
TEST(ConsolidatePairs, DropsACorrespondenceOnlyWhenBothItsPositionsAreTaken) {
    const TriangleFeature a1 = Numbered(1);
    const TriangleFeature a2 = Numbered(2);
    const TriangleFeature a3 = Numbered(3);
    const TriangleFeature b1 = Numbered(11);
    const TriangleFeature b2 = Numbered(12);
    MatchContext context;
    context.trianglePairs = {
        {1000, &a1, &b1},  // all new
        {900, &a2, &b1},   // first positions new, second taken: kept
        {800, &a1, &b2},   // first positions taken, second new: kept
        {700, &a2, &b2},   // never met before, but both positions are taken: dropped
        {600, &a3, &b2},   // first positions new: kept
    };
    EXPECT_TRUE(consolidatePairs(context));
    const std::vector<MinutiaPair> expected = {Corner(a1, b1, 0),
                                               Corner(a1, b1, 1),
                                               Corner(a1, b1, 2),
                                               Corner(a2, b1, 0),
                                               Corner(a2, b1, 1),
                                               Corner(a2, b1, 2),
                                               Corner(a1, b2, 0),
                                               Corner(a1, b2, 1),
                                               Corner(a1, b2, 2),
                                               Corner(a3, b2, 0),
                                               Corner(a3, b2, 1),
                                               Corner(a3, b2, 2)};
    EXPECT_EQ(context.minutiaPairs, expected);
}

TEST(ConsolidatePairs, TellsPositionsApartByBothCoordinatesAndNothingElse) {
    const TriangleFeature a{.vertices = {{1, 0, 10, 0}, {0, 1, 20, 0}, {255, 255, 30, 0}}};
    // The same positions with other directions and types, which do not matter.
    const TriangleFeature sameSpots{.vertices = {{1, 0, 99, 1}, {0, 1, 98, 2}, {255, 255, 97, 3}}};
    MatchContext context;
    context.trianglePairs = {{1024, &a, &a}, {1000, &sameSpots, &a}, {900, &a, &sameSpots}};
    EXPECT_TRUE(consolidatePairs(context));
    EXPECT_EQ(context.minutiaPairs,
              (std::vector{Corner(a, a, 0), Corner(a, a, 1), Corner(a, a, 2)}));
}

TEST(ConsolidatePairs, RanksBySimilarityAndKeepsTheOrderOfEqualOnes) {
    std::vector<TriangleFeature> a;
    for (std::uint8_t i = 0; i < 5; ++i) {
        a.push_back(Numbered(i));
    }
    MatchContext context;
    context.trianglePairs = {{500, &a[0], &a[0]},
                             {900, &a[1], &a[1]},
                             {500, &a[2], &a[2]},
                             {1024, &a[3], &a[3]},
                             {900, &a[4], &a[4]}};
    EXPECT_TRUE(consolidatePairs(context));
    ASSERT_EQ(context.minutiaPairs.size(), 15U);
    const std::array<std::size_t, 5> ranked = {3, 1, 4, 0, 2};
    for (std::size_t i = 0; i < ranked.size(); ++i) {
        EXPECT_EQ(context.minutiaPairs[3 * i], Corner(a[ranked[i]], a[ranked[i]], 0)) << i;
    }
}

TEST(ConsolidatePairs, KeepsTheOrderOfManyPairsOfEqualSimilarity) {
    std::vector<TriangleFeature> a;
    for (std::uint8_t i = 0; i < 25; ++i) {
        a.push_back(Numbered(i));
    }
    MatchContext context;
    for (std::size_t i = 0; i < a.size(); ++i) {
        context.trianglePairs.push_back({i % 2 == 0 ? 700 : 800, &a[i], &a[i]});
    }
    EXPECT_TRUE(consolidatePairs(context));
    ASSERT_EQ(context.minutiaPairs.size(), 75U);
    for (std::size_t rank = 0; rank < a.size(); ++rank) {
        // The 12 odd ones first, then the 13 even ones.
        const std::size_t expected = rank < 12 ? 2 * rank + 1 : 2 * (rank - 12);
        EXPECT_EQ(context.minutiaPairs[3 * rank], Corner(a[expected], a[expected], 0)) << rank;
    }
}

TEST(ConsolidatePairs, ForgetsThePositionsOfAnEarlierMatch) {
    const TriangleFeature a = Triangle({60, 50, 40});
    MatchContext context;
    for (int match = 0; match < 2; ++match) {
        context.trianglePairs = {{1024, &a, &a}, {1024, &a, &a}, {1024, &a, &a}};
        EXPECT_TRUE(consolidatePairs(context));
        EXPECT_EQ(context.minutiaPairs.size(), 3U);
    }
}

void ExpectAgreementWithTheOracle(const std::vector<TriangleFeature>& first,
                                  const std::vector<TriangleFeature>& second) {
    MatchContext context;
    context.firstTriangles = first;
    searchTrianglePairs(context, second);
    const auto pairs = naive::SearchTrianglePairs(first, second);
    ASSERT_EQ(Indexed(context, second), pairs);
    const bool enough = consolidatePairs(context);
    const auto consolidated = naive::Consolidate(pairs, first, second);
    ASSERT_EQ(context.minutiaPairs.size(), consolidated.size());
    EXPECT_EQ(enough, consolidated.size() >= 3);
    for (std::size_t i = 0; i < consolidated.size(); ++i) {
        ASSERT_EQ(context.minutiaPairs[i].first, consolidated[i].first) << i;
        ASSERT_EQ(context.minutiaPairs[i].second, consolidated[i].second) << i;
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
TEST(PairSearch, AgreesWithThePlainOneOnTrianglesOfAnyBytes) {
    for (std::uint32_t seed = 100; seed < 130; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 30 : 4;
        const auto first = test::RandomTriangles(random, 80, extent);
        auto second = test::RandomTriangles(random, 80, extent);
        second.insert(second.end(), first.begin(), first.end());
        std::stable_sort(second.begin(), second.end(), TriangleKeyLess);
        ExpectAgreementWithTheOracle(first, second);
        ExpectAgreementWithTheOracle(second, second);
    }
}

}  // namespace
}  // namespace orl::matcher
