#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "matcher/matching/kernels/pair_test.h"
#include "tests/matcher/matching/searched_fingers.h"
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

// The similarity of a pair, when it passes: one or none.
std::vector<std::int32_t> Similarities(const TriangleFeature& first,
                                       const TriangleFeature& second) {
    const std::int32_t similarity = scoreTrianglePair(codeOf(second), cyclicCodesOf(first));
    return similarity == 0 ? std::vector<std::int32_t>{} : std::vector{similarity};
}

using None = std::vector<std::int32_t>;
using One = std::vector<std::int32_t>;

// The pairs of two lists in orientation 0. It takes the lists as they stand, so that their
// triangles need not be such as the constructor makes.
std::vector<naive::TrianglePair> PairsOf(const std::vector<TriangleFeature>& first,
                                         const std::vector<TriangleFeature>& second) {
    return test::SearchedFingers({3, first}, {3, second}).pairs(0);
}

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
    for (const naive::TrianglePair& pair : PairsOf({Triangle({key, 0, 0})}, OneOfEachKey())) {
        keys.push_back(static_cast<int>(pair.b) - 128);
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

TEST(KeyRange, MovesOnWithTheKeysOfTheFirstFinger) {
    // All keys at once, so that the range is moved and not made anew: the same as one by one.
    const auto triangles = OneOfEachKey();
    std::vector<naive::TrianglePair> expected;
    for (int key = -128; key <= 127; ++key) {
        for (const int other : KeysFound(key)) {
            expected.push_back(
                {1024, static_cast<std::size_t>(key + 128), static_cast<std::size_t>(other + 128)});
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
    const std::vector<naive::TrianglePair> expected = {
        {1024, 0, 2}, {1024, 0, 3}, {1024, 0, 4}, {1024, 0, 5}};
    EXPECT_EQ(PairsOf({Triangle({50, 1, 0})}, triangles), expected);
    EXPECT_TRUE(PairsOf({Triangle({90, 1, 0})}, triangles).empty());
    EXPECT_TRUE(PairsOf({Triangle({-30, 1, 0})}, triangles).empty());
    EXPECT_TRUE(PairsOf({Triangle({50, 1, 0})}, {}).empty());
}

TEST(KeyRange, SpansTheStretchesOfALongList) {
    // 300 triangles in stretches of 128: all of them, those around the seams, and the last ones.
    for (const auto& [begin, end] : {std::pair{0U, 300U}, {60U, 70U}, {120U, 135U}, {250U, 300U}}) {
        std::vector<TriangleFeature> second;
        std::vector<naive::TrianglePair> expected;
        for (unsigned i = 0; i < 300; ++i) {
            second.push_back(Triangle({i < begin ? 10 : i < end ? 50 : 90, 5, 5}));
            if (i >= begin && i < end) {
                expected.push_back({1024, 0, i});
            }
        }
        EXPECT_EQ(PairsOf({Triangle({50, 5, 5})}, second), expected) << begin << " to " << end;
    }
}

std::uint32_t SidesWord(Sides sides, int fourth = 0) {
    const auto byte = [](int value) { return static_cast<std::uint32_t>(value & 0xFF); };
    return byte(sides[0]) | byte(sides[1]) << 8U | byte(sides[2]) << 16U | byte(fourth) << 24U;
}

// Whether a triangle of these sides is found near, alone among others.
bool SidesAreNear(std::uint32_t second, std::uint32_t first) {
    constexpr std::size_t kPlace = 37;
    constexpr std::uint32_t kFarther = 0x00808080;  // half a turn of each byte
    alignas(16) std::array<std::uint32_t, kTrianglesPerStretch> sides;
    sides.fill(first ^ kFarther);
    sides[kPlace] = second;
    constexpr std::size_t kBlocks = kTrianglesPerStretch / kSideBlock;
    const TriangleBits bits = pair_kernels::nearSides(sides, 0, kBlocks, first);
    const TriangleBits plainBits = plain::nearSides(sides, 0, kBlocks, first);
    EXPECT_EQ(bits[0], plainBits[0]);
    EXPECT_EQ(bits[1], 0U);
    EXPECT_EQ(plainBits[1], 0U);
    EXPECT_EQ(bits[0] & ~(std::uint64_t{1} << kPlace), 0U);
    return bits[0] != 0;
}

TEST(SidesAreNear, AcceptsADifferenceOf17InEachSideByteButNot18) {
    const std::uint32_t base = SidesWord({90, 60, 40});
    for (std::size_t i = 0; i < 3; ++i) {
        for (int sign : {-1, 1}) {
            Sides near = {90, 60, 40};
            near[i] += 17 * sign;
            EXPECT_TRUE(SidesAreNear(SidesWord(near), base)) << i;
            near[i] += sign;
            EXPECT_FALSE(SidesAreNear(SidesWord(near), base)) << i;
        }
    }
}

TEST(SidesAreNear, IgnoresTheFourthByte) {
    for (int fourth : {0, 1, 0x7F, 0x80, 0xFF}) {
        EXPECT_TRUE(SidesAreNear(SidesWord({90, 60, 40}, fourth), SidesWord({90, 60, 40})));
        EXPECT_TRUE(SidesAreNear(SidesWord({90, 60, 40}), SidesWord({90, 60, 40}, fourth)));
        EXPECT_FALSE(SidesAreNear(SidesWord({90, 60, 58}, fourth), SidesWord({90, 60, 40})));
    }
}

// Deliberate: the difference of candidates is taken modulo 256, that of the pair test is not.
TEST(SidesAreNear, TakesDifferencesModulo256WhereThePairTestDoesNot) {
    // 250 - 5 = 245, or -11 modulo 256.
    EXPECT_TRUE(SidesAreNear(SidesWord({50, 5, 250}), SidesWord({50, 5, 5})));
    EXPECT_TRUE(SidesAreNear(SidesWord({50, 5, 5}), SidesWord({50, 5, 250})));
    EXPECT_EQ(Similarities(Triangle({50, 5, 5}), Triangle({50, 5, 250})), None{});
    EXPECT_TRUE(PairsOf({Triangle({50, 5, 5})}, {Triangle({50, 5, 250})}).empty());
}

// The neighbours are at their own limits, where a carry or a borrow would show.
TEST(SidesAreNear, AgreesWithTheModularDifferenceForAllByteValuesInAllPlaces) {
    const auto isNear = [](int a, int b) {
        const int forward = (b - a + 256) % 256;
        return forward <= 17 || forward >= 256 - 17;
    };
    for (std::size_t place = 0; place < 3; ++place) {
        for (const auto& [left, right] : {std::pair{9, 9}, {0, 255}, {255, 0}, {0, 239}, {17, 0}}) {
            for (int a = 0; a < 256; ++a) {
                for (int b = 0; b < 256; ++b) {
                    Sides second = {left, left, left};
                    Sides first = {right, right, right};
                    second[place] = a;
                    first[place] = b;
                    ASSERT_EQ(SidesAreNear(SidesWord(second, a), SidesWord(first, b)), isNear(a, b))
                        << a << " and " << b << " in place " << place << " beside " << left;
                }
            }
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

TEST(SearchTrianglePairs, FindsThePairsInTheOrderOfBothLists) {
    const std::vector<TriangleFeature> first = {Triangle({60, 50, 40}), Triangle({70, 50, 40})};
    const std::vector<TriangleFeature> second = {
        Triangle({52, 50, 40}), Triangle({55, 50, 40}), Triangle({70, 50, 40})};
    // 70 - 52 = 18 is too much; nothing else differs than a side, so no pair costs anything.
    const std::vector<naive::TrianglePair> expected = {
        {1024, 0, 0}, {1024, 0, 1}, {1024, 0, 2}, {1024, 1, 1}, {1024, 1, 2}};
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
        EXPECT_EQ(fingers.pairs(back), (std::vector<naive::TrianglePair>{{1024, 0, 0}})) << turns;
    }
}

MinutiaPair Corner(const TriangleFeature& first, const TriangleFeature& second, std::size_t j) {
    return {first.vertices[j], second.vertices[j]};
}

// A triangle pair by its similarity and the two indices.
TrianglePair PairOf(int similarity, std::size_t first, std::size_t second) {
    return {static_cast<std::uint16_t>(kMaxSimilarity - similarity),
            static_cast<std::uint16_t>(first),
            static_cast<std::uint16_t>(second)};
}

struct Consolidated {
    bool areEnough = false;
    std::vector<MinutiaPair> pairs;
};

// Consolidates pairs of two lists in orientation 0, which takes the lists as they stand.
Consolidated ConsolidatedPairs(const std::vector<TriangleFeature>& first,
                               const std::vector<TriangleFeature>& second,
                               const std::vector<TrianglePair>& trianglePairs) {
    test::FingersInMatch fingers({3, first}, {3, second});
    const std::vector<MinutiaPair> earlier = {{{1, 1, 1, 1}, {2, 2, 2, 2}}};
    fingers.context().minutiaPairs = earlier;
    fingers.setPairs(0, trianglePairs);
    const bool areEnough = consolidatePairs(fingers.context(), 0);
    return {areEnough, test::Copied(fingers.context().minutiaPairs)};
}

TEST(ConsolidatePairs, StopsAtFewerThanThreeTrianglePairs) {
    const TriangleFeature a = Triangle({60, 50, 40});
    const Consolidated two = ConsolidatedPairs({a}, {a}, {PairOf(1024, 0, 0), PairOf(1024, 0, 0)});
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
        ConsolidatedPairs({a}, {a}, {PairOf(1024, 0, 0), PairOf(1024, 0, 0), PairOf(1024, 0, 0)});
    EXPECT_FALSE(result.areEnough);
    EXPECT_EQ(result.pairs.size(), 2U);
}

TEST(ConsolidatePairs, KeepsACorrespondenceOfSeveralTrianglePairsOnce) {
    const TriangleFeature a = Triangle({60, 50, 40});
    const TriangleFeature b = Radial({60, 50, 40});
    const Consolidated result =
        ConsolidatedPairs({a}, {b}, {PairOf(1024, 0, 0), PairOf(1000, 0, 0), PairOf(900, 0, 0)});
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
                          {PairOf(1000, 0, 0),   // all new
                           PairOf(900, 1, 0),    // first positions new, second taken: kept
                           PairOf(800, 0, 1),    // first positions taken, second new: kept
                           PairOf(700, 1, 1),    // never met before, but both taken: dropped
                           PairOf(600, 2, 1)});  // first positions new: kept
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
        ConsolidatedPairs(a, a, {PairOf(1000, 0, 0), PairOf(900, 1, 1), PairOf(800, 2, 2)});
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
                          {PairOf(1024, 0, 0), PairOf(1000, 1, 0), PairOf(900, 0, 1)});
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
                                                  {PairOf(500, 0, 0),
                                                   PairOf(900, 1, 1),
                                                   PairOf(500, 2, 2),
                                                   PairOf(1024, 3, 3),
                                                   PairOf(900, 4, 4)});
    EXPECT_TRUE(result.areEnough);
    ASSERT_EQ(result.pairs.size(), 15U);
    const std::array<std::size_t, 5> ranked = {3, 1, 4, 0, 2};
    for (std::size_t i = 0; i < ranked.size(); ++i) {
        EXPECT_EQ(result.pairs[3 * i], Corner(a[ranked[i]], a[ranked[i]], 0)) << i;
    }
}

TEST(ConsolidatePairs, KeepsTheOrderOfManyPairsOfEqualSimilarity) {
    std::vector<TriangleFeature> a;
    std::vector<TrianglePair> pairs;
    for (std::uint8_t i = 0; i < 25; ++i) {
        a.push_back(Numbered(i));
        pairs.push_back(PairOf(i % 2 == 0 ? 700 : 800, i, i));
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
    std::vector<TrianglePair> pairs;
    for (unsigned i = 0; i < 1024; ++i) {
        for (std::uint8_t corner = 0; corner < 3; ++corner) {
            a[i].vertices[corner] = {static_cast<std::uint8_t>(i % 256),
                                     static_cast<std::uint8_t>(4 * corner + i / 256),
                                     0,
                                     0};
        }
        pairs.push_back(PairOf(static_cast<int>(1 + i * 389 % 1024), i, i));
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
        fingers.setPairs(orientation, std::vector(3, PairOf(1024, 0, 0)));
        EXPECT_TRUE(consolidatePairs(fingers.context(), orientation));
        EXPECT_EQ(fingers.context().minutiaPairs.size(), 3U) << orientation;
    }
}

TEST(ConsolidatePairs, PairsWithTheTurnedTrianglesVerticesInTheirOwnOrder) {
    const TriangleFeature a = MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 1}, {20, 30, 3, 2});
    for (int turns = 0; turns < 4; ++turns) {
        test::FingersInMatch fingers({3, {a}}, {3, {a}});
        const auto orientation = static_cast<std::size_t>(turns);
        fingers.setPairs(orientation, std::vector(3, PairOf(1024, 0, 0)));
        EXPECT_TRUE(consolidatePairs(fingers.context(), orientation));
        const TriangleFeature turned = naive::Turned(std::vector{a}, turns).at(0);
        EXPECT_EQ(test::Copied(fingers.context().minutiaPairs),
                  (std::vector{Corner(a, turned, 0), Corner(a, turned, 1), Corner(a, turned, 2)}));
    }
}

void ExpectAgreementWithTheOracle(const std::vector<TriangleFeature>& first,
                                  const std::vector<TriangleFeature>& second) {
    auto fingers = test::SearchedFingers({3, first}, {3, second});
    for (int turns = 0; turns < 4; ++turns) {
        const auto orientation = static_cast<std::size_t>(turns);
        const auto turned = turns == 0 ? second : naive::Turned(second, turns);
        const auto pairs = naive::SearchTrianglePairs(first, turned);
        ASSERT_EQ(fingers.pairs(orientation), pairs) << turns;
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
        std::stable_sort(second.begin(), second.end(), TriangleKeyLess);
        ExpectAgreementWithTheOracle(first, second);
        ExpectAgreementWithTheOracle(second, second);
    }
}

}  // namespace
}  // namespace orl::matcher
