#include "matcher/features/triangle_feature.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/matcher/features/plain_triangle.h"

namespace orl::matcher {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kSeed = 31337;

TriangleVertex At(int x, int y, int angle = 1, int type = 0) {
    return {.x = static_cast<std::uint8_t>(x),
            .y = static_cast<std::uint8_t>(y),
            .angle = static_cast<std::uint8_t>(angle),
            .type = static_cast<std::uint8_t>(type)};
}

TriangleVertex RandomVertex(std::mt19937& random) {
    const auto bits = static_cast<std::uint32_t>(random());
    return {.x = static_cast<std::uint8_t>(bits),
            .y = static_cast<std::uint8_t>(bits >> 8U),
            .angle = static_cast<std::uint8_t>(bits >> 16U),
            .type = static_cast<std::uint8_t>((bits >> 24U) % 4)};
}

std::string Describe(const std::array<TriangleVertex, 3>& vertices) {
    std::string text = "vertices";
    for (const TriangleVertex& vertex : vertices) {
        text += " (" + std::to_string(vertex.x) + "," + std::to_string(vertex.y) + ")";
    }
    return text;
}

void ExpectPlain(const std::array<TriangleVertex, 3>& vertices) {
    const TriangleFeature expected = test::PlainTriangle(vertices);
    const TriangleFeature made = MakeTriangleFeature(vertices[0], vertices[1], vertices[2]);
    ASSERT_EQ(made, expected) << Describe(vertices);

    const TriangleFeature ordered = OrderedTriangle(vertices[0], vertices[1], vertices[2]);
    TriangleVertex inPlace[3] = {vertices[0], vertices[1], vertices[2]};
    OrderTriangleVertices(inPlace);
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(ordered.vertices[i], expected.vertices[i]) << Describe(vertices);
        ASSERT_EQ(inPlace[i], expected.vertices[i]) << Describe(vertices);
    }
    ASSERT_THAT(ordered.sides, ElementsAre(0, 0, 0, 0));
}

TEST(MakeTriangleFeature, KeepsVerticesThatStandInTheOrderOfTheirBearings) {
    // Centre: x (20 + 20) / 2 = 20, y (10 + 30) / 2 = 20. Bearings of (-10,-10), (10,-10), (0,10):
    // -95.6, -31.9 and 63.75, that is -96, -32 and 64.
    // Sides: 20, sqrt(100 + 400) = 22.4 and the same again.
    const TriangleFeature feature =
        MakeTriangleFeature(At(10, 10, 5, 1), At(30, 10, 6, 2), At(20, 30, 7, 3));
    EXPECT_THAT(feature.vertices,
                ElementsAre(At(10, 10, 5, 1), At(30, 10, 6, 2), At(20, 30, 7, 3)));
    EXPECT_THAT(feature.sides, ElementsAre(22, 22, 20, 0));
}

TEST(MakeTriangleFeature, OrdersVerticesByTheirBearingFromTheCentre) {
    // The same corners the other way around: the double weight is now with (10, 10). Centre: x
    // ((20 + 30) / 2 + 10) / 2 = 17, y ((30 + 10) / 2 + 10) / 2 = 15. Bearings of (3, 15), (13, -5)
    // and (-7, -5): 56, -15 and -102.
    const TriangleFeature feature = MakeTriangleFeature(At(20, 30), At(30, 10), At(10, 10));
    EXPECT_THAT(feature.vertices, ElementsAre(At(10, 10), At(30, 10), At(20, 30)));
    EXPECT_THAT(feature.sides, ElementsAre(22, 22, 20, 0));
}

// Deliberate: the centre is no centroid.
TEST(OrderTriangleVertices, WeighsTheThirdVertexTwice) {
    // Centre: x ((0 + 20) / 2 + 10) / 2 = 10, y ((10 + 30) / 2 + 0) / 2 = 10. Bearings of (-10, 0),
    // (10, 20) and (0, -10): 128, 45 and -64. From the centroid (10, 13) the first vertex, at
    // (-10, -3), would have -116 and come first.
    TriangleVertex vertices[3] = {At(0, 10), At(20, 30), At(10, 0)};
    OrderTriangleVertices(vertices);
    EXPECT_THAT(vertices, ElementsAre(At(10, 0), At(20, 30), At(0, 10)));
}

TEST(OrderTriangleVertices, KeepsCoincidentVerticesInPlace) {
    // Three copies: all bearings are 0, no exchange.
    TriangleVertex vertices[3] = {At(9, 9, 1), At(9, 9, 2), At(9, 9, 3)};
    OrderTriangleVertices(vertices);
    EXPECT_THAT(vertices, ElementsAre(At(9, 9, 1), At(9, 9, 2), At(9, 9, 3)));
}

// Deliberate: three exchanges, not a stable sort.
TEST(OrderTriangleVertices, TurnsATieAroundThatTheFirstExchangeMoves) {
    // Centre of (20, 10), (0, 10), (0, 10): x ((20 + 0) / 2 + 0) / 2 = 5, y 10. Bearings 0, 128,
    // 128: nothing moves. Centre of (0, 10), (0, 10), (20, 10): x ((0 + 0) / 2 + 20) / 2 = 10:
    // 128, 128, 0: the exchange 0-2 leaves (20, 10), second copy, first copy.
    TriangleVertex front[3] = {At(20, 10, 1), At(0, 10, 2), At(0, 10, 3)};
    OrderTriangleVertices(front);
    EXPECT_THAT(front, ElementsAre(At(20, 10, 1), At(0, 10, 2), At(0, 10, 3)));
    TriangleVertex back[3] = {At(0, 10, 1), At(0, 10, 2), At(20, 10, 3)};
    OrderTriangleVertices(back);
    EXPECT_THAT(back, ElementsAre(At(20, 10, 3), At(0, 10, 2), At(0, 10, 1)));
}

TEST(SideLengthWord, HoldsThreeLengthsBelow128AsTheyAre) {
    EXPECT_EQ(SideLengthWord(20, 127, 90), 0x00145A7FU);  // 127, 90, 20, 0
}

TEST(SideLengthWord, SortsALengthOf128OrMoreLastAndFillsTheFourthByte) {
    // 200 is -56 as a signed byte: 90, 40, 200, 0xFF
    EXPECT_EQ(SideLengthWord(200, 90, 40), 0xFFC8285AU);
}

TEST(SideLengthWord, FillsTwoBytesForTwoLengthsOf128OrMore) {
    // 100, 200 (-56), 150 (-106): 150 is overwritten
    EXPECT_EQ(SideLengthWord(100, 150, 200), 0xFFFFC864U);
}

TEST(SideLengthWord, FillsThreeBytesForThreeLengthsOf128OrMore) {
    EXPECT_EQ(SideLengthWord(130, 130, 130), 0xFFFFFF82U);
    EXPECT_EQ(SideLengthWord(128, 255, 200), 0xFFFFFFFFU);  // 255 is -1, the greatest
}

TEST(SideLengthWord, HasOneOfTheFourPatternsForAllLengths) {
    const auto asSigned = [](int length) { return length < 128 ? length : length - 256; };
    for (int d0 = 0; d0 < 256; ++d0) {
        for (int d1 = d0; d1 < 256; ++d1) {
            for (int d2 = d1; d2 < 256; ++d2) {
                std::array<int, 3> l = {d0, d1, d2};
                std::sort(
                    l.begin(), l.end(), [&](int a, int b) { return asSigned(a) > asSigned(b); });
                const bool fill[] = {l[0] >= 128, l[1] >= 128, l[2] >= 128};
                const std::array<int, 4> bytes = {l[0],
                                                  fill[0] ? 0xFF : l[1],
                                                  fill[0] || fill[1] ? 0xFF : l[2],
                                                  fill[0] || fill[1] || fill[2] ? 0xFF : 0};
                std::uint32_t expected = 0;
                for (std::size_t i = 4; i-- > 0;) {
                    expected = expected * 256 + static_cast<std::uint32_t>(bytes[i]);
                }
                const auto a = static_cast<std::uint8_t>(d0);
                const auto b = static_cast<std::uint8_t>(d1);
                const auto c = static_cast<std::uint8_t>(d2);
                ASSERT_EQ(SideLengthWord(a, b, c), expected) << d0 << " " << d1 << " " << d2;
                ASSERT_EQ(SideLengthWord(c, b, a), expected) << d0 << " " << d1 << " " << d2;
                ASSERT_EQ(SideLengthWord(b, c, a), expected) << d0 << " " << d1 << " " << d2;
            }
        }
    }
}

TEST(MakeTriangleFeature, StoresTheSideWordLittleEndianInEachOfItsFourPatterns) {
    struct Case {
        std::array<TriangleVertex, 3> vertices = {};
        std::array<int, 4> sides = {};
        const char* why = "";
    };
    const Case kCases[] = {
        {{At(0, 0), At(30, 40), At(0, 40)}, {50, 40, 30, 0}, "30, 40, 50"},
        {{At(0, 0), At(0, 140), At(20, 70)}, {73, 73, 140, 0xFF}, "140, sqrt(400 + 4900) twice"},
        {{At(40, 0), At(140, 0), At(2, 145)},
         {100, 200, 0xFF, 0xFF},
         "100, sqrt(138^2 + 145^2) = 200.2, sqrt(38^2 + 145^2) = 149.9"},
        {{At(0, 0), At(130, 0), At(65, 113)},
         {130, 0xFF, 0xFF, 0xFF},
         "130, sqrt(65^2 + 113^2) = 130.4 twice"},
    };
    for (const Case& c : kCases) {
        const TriangleFeature made =
            MakeTriangleFeature(c.vertices[0], c.vertices[1], c.vertices[2]);
        EXPECT_THAT(made.sides, testing::ElementsAreArray(c.sides)) << c.why;
    }
}

TEST(MakeTriangleFeature, AgreesWithThePlainOneOnRandomTriangles) {
    std::mt19937 random(kSeed);
    for (int round = 0; round < 100000; ++round) {
        const TriangleVertex a = RandomVertex(random);
        const TriangleVertex b = RandomVertex(random);
        ExpectPlain({a, b, RandomVertex(random)});
    }
}

TEST(MakeTriangleFeature, AgreesWithThePlainOneOnSmallTrianglesWithTies) {
    std::mt19937 random(kSeed + 1);
    for (int round = 0; round < 100000; ++round) {
        std::array<TriangleVertex, 3> vertices;
        for (TriangleVertex& vertex : vertices) {
            vertex = RandomVertex(random);
            vertex.x %= 6;
            vertex.y %= 6;
        }
        ExpectPlain(vertices);
    }
}

TEST(MakeTriangleFeature, AgreesWithThePlainOneOnAllTrianglesOfExtremeCoordinates) {
    constexpr int kCoordinates[] = {0, 1, 127, 128, 255};
    std::vector<TriangleVertex> corners;
    for (const int x : kCoordinates) {
        for (const int y : kCoordinates) {
            corners.push_back(At(x, y, static_cast<int>(corners.size()) + 1));
        }
    }
    for (const TriangleVertex& a : corners) {
        for (const TriangleVertex& b : corners) {
            for (const TriangleVertex& c : corners) {
                ExpectPlain({a, b, c});
            }
        }
    }
}

void ExpectMakerPlain(const std::array<TriangleVertex, 3>& vertices) {
    const TriangleFeature expected = test::PlainTriangle(vertices);
    const TriangleMaker maker;
    const TriangleMaker::Corner corners[] = {TriangleMaker::CornerOf(vertices[0]),
                                             TriangleMaker::CornerOf(vertices[1]),
                                             TriangleMaker::CornerOf(vertices[2])};
    TriangleFeature made;
    const VertexOrder& order = maker.OrderOf(corners[0], corners[1], corners[2]);
    for (std::size_t i = 0; i < 3; ++i) {
        made.vertices[i] = vertices[order[i]];
    }
    StoreLittleEndian(TriangleMaker::SideWord(corners[0], corners[1], corners[2]), made.sides);
    ASSERT_EQ(made, expected) << Describe(vertices);
}

TEST(TriangleMaker, AgreesWithThePlainTriangleOnRandomTriangles) {
    std::mt19937 random(kSeed + 2);
    for (int round = 0; round < 100000; ++round) {
        std::array<TriangleVertex, 3> vertices;
        const bool isSmall = random() % 2 == 0;
        for (TriangleVertex& vertex : vertices) {
            vertex = RandomVertex(random);
            vertex.x = isSmall ? vertex.x % 6 : vertex.x;
            vertex.y = isSmall ? vertex.y % 6 : vertex.y;
        }
        ExpectMakerPlain(vertices);
    }
}

TEST(TriangleMaker, GivesEverySideTheLengthThatWholeNumbersGive) {
    // The triangle (0, 0), (x, y), (0, 0) has the sides d, d and 0.
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x) {
            const auto origin = TriangleMaker::CornerOf(At(0, 0));
            const auto corner = TriangleMaker::CornerOf(At(x, y));
            const auto length = static_cast<std::uint8_t>(test::PlainDistance(x, y));
            ASSERT_EQ(TriangleMaker::SideWord(origin, corner, origin),
                      SideLengthWord(length, length, 0))
                << x << ", " << y;
        }
    }
}

TEST(TriangleMaker, AgreesWithThePlainTriangleOnAllTrianglesOfExtremeCoordinates) {
    constexpr int kCoordinates[] = {0, 1, 128, 255};
    std::vector<TriangleVertex> corners;
    for (const int x : kCoordinates) {
        for (const int y : kCoordinates) {
            corners.push_back(At(x, y, static_cast<int>(corners.size()) + 1));
        }
    }
    for (const TriangleVertex& a : corners) {
        for (const TriangleVertex& b : corners) {
            for (const TriangleVertex& c : corners) {
                ExpectMakerPlain({a, b, c});
            }
        }
    }
}

// The key of a list entry with these side bytes.
std::uint32_t KeyOf(std::uint32_t b12,
                    std::uint32_t b13,
                    std::uint32_t b14,
                    std::uint32_t b15 = 0) {
    return TriangleKey(b12 | b13 << 8U | b14 << 16U | b15 << 24U);
}

TEST(TriangleKey, ComparesSignedBytesLexicographically) {
    // 200 is -56, 130 is -126.
    EXPECT_LT(KeyOf(90, 40, 200), KeyOf(90, 40, 10));
    EXPECT_LT(KeyOf(130, 255, 255), KeyOf(0, 0, 0));
    EXPECT_LT(KeyOf(89, 80, 70), KeyOf(90, 40, 10));
    EXPECT_LT(KeyOf(90, 255, 255), KeyOf(90, 40, 10));
}

TEST(TriangleKey, IgnoresTheFourthByte) {
    EXPECT_EQ(KeyOf(90, 40, 10), KeyOf(90, 40, 10, 255));
}

}  // namespace
}  // namespace orl::matcher
