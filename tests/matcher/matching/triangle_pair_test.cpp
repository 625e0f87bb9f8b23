// The test of two triangles: their sides, and what they cost under each cyclic order.

#include <array>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/matching/kernels/pair_test.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"
#include "matcher/matching/pair_search.h"
#include "tests/matcher/matching/made_triangles.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using test::CornersShifted;
using test::PairsOf;
using test::Radial;
using test::Sides;
using test::Triangle;
using test::WithSides;

// The similarity of a pair, when it passes: one or none.
std::vector<std::int32_t> Similarities(const TriangleFeature& first,
                                       const TriangleFeature& second) {
    const std::int32_t similarity =
        scoreTrianglePair(codeOf(second), cyclicCodesOf(first, QuarterTurnBearings::Table()));
    return similarity == 0 ? std::vector<std::int32_t>{} : std::vector{similarity};
}

using None = std::vector<std::int32_t>;

using One = std::vector<std::int32_t>;

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

}  // namespace
}  // namespace orl::matcher
