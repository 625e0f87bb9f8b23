#include "matcher/matching/position_numbers.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

std::pair<std::uint64_t, std::uint64_t> Words(PositionBits bits) {
    return {std::uint64_t{bits[0]}, std::uint64_t{bits[1]}};
}

using Numbers = std::vector<std::array<std::uint16_t, kCorners>>;

struct Numbered {
    Numbers ofTriangles;
    std::size_t count;
};

// A triangle's set is that of its three numbers.
void ExpectBitsOfNumbers(const PositionNumbers& numbers) {
    for (std::size_t t = 0; t < numbers.ofTriangles.size(); ++t) {
        PositionBits expected{};
        for (const std::uint16_t number : numbers.ofTriangles[t]) {
            expected[0] |= positionBit(number)[0];
            expected[1] |= positionBit(number)[1];
        }
        ASSERT_EQ(Words(numbers.bitsOfTriangles[t]), Words(expected)) << t;
    }
}

Numbered NumbersOf(const std::vector<TriangleFeature>& triangles) {
    const auto scratch = std::make_unique<Scratch>();
    const PositionNumbers numbers = positionNumbers(triangles, *scratch);
    EXPECT_EQ(numbers.bitsOfTriangles.size(), triangles.size());
    ExpectBitsOfNumbers(numbers);
    return {{numbers.ofTriangles.begin(), numbers.ofTriangles.end()}, numbers.count};
}

TEST(PositionNumbers, CountPositionsInTheOrderOfTheirFirstMention) {
    const Numbered numbered =
        NumbersOf({{.vertices = {{5, 6, 0, 0}, {6, 5, 0, 0}, {0, 0, 0, 0}}},
                   {.vertices = {{255, 255, 0, 0}, {0, 0, 0, 0}, {255, 254, 0, 0}}}});
    EXPECT_EQ(numbered.ofTriangles, (Numbers{{0, 1, 2}, {3, 2, 4}}));
    EXPECT_EQ(numbered.count, 5U);
}

TEST(PositionNumbers, GoByTheSpotWhateverDirectionAndType) {
    const Numbered numbered =
        NumbersOf({{.vertices = {{7, 7, 10, 1}, {7, 7, 200, 2}, {7, 7, 10, 3}}}});
    EXPECT_EQ(numbered.ofTriangles, (Numbers{{0, 0, 0}}));
    EXPECT_EQ(numbered.count, 1U);
}

TEST(PositionNumbers, OfNoTrianglesAreNone) {
    const Numbered numbered = NumbersOf({});
    EXPECT_TRUE(numbered.ofTriangles.empty());
    EXPECT_EQ(numbered.count, 0U);
}

TEST(PositionBits, ShareTheLastBitFromNumber127On) {
    EXPECT_EQ(Words(positionBit(0)), (std::pair<std::uint64_t, std::uint64_t>{1, 0}));
    EXPECT_EQ(Words(positionBit(63)),
              (std::pair<std::uint64_t, std::uint64_t>{0x8000000000000000, 0}));
    EXPECT_EQ(Words(positionBit(64)), (std::pair<std::uint64_t, std::uint64_t>{0, 1}));
    EXPECT_EQ(Words(positionBit(126)),
              (std::pair<std::uint64_t, std::uint64_t>{0, 0x4000000000000000}));
    EXPECT_EQ(Words(positionBit(127)),
              (std::pair<std::uint64_t, std::uint64_t>{0, 0x8000000000000000}));
    EXPECT_EQ(Words(positionBit(128)), Words(positionBit(127)));
    EXPECT_EQ(Words(positionBit(30000)), Words(positionBit(127)));
}

void ExpectPlainNumbers(const std::vector<TriangleFeature>& triangles) {
    std::map<std::pair<std::uint8_t, std::uint8_t>, std::uint16_t> plain;
    Numbers expected;
    for (const TriangleFeature& triangle : triangles) {
        const auto numberOf = [&](std::size_t corner) {
            const TriangleVertex& vertex = triangle.vertices[corner];
            const auto next = static_cast<std::uint16_t>(plain.size());
            return plain.try_emplace({vertex.x, vertex.y}, next).first->second;
        };
        std::array<std::uint16_t, kCorners> numbers{};
        for (std::size_t corner = 0; corner < kCorners; ++corner) {
            numbers[corner] = numberOf(corner);
        }
        expected.push_back(numbers);
    }
    const Numbered numbered = NumbersOf(triangles);
    ASSERT_EQ(numbered.ofTriangles, expected);
    ASSERT_EQ(numbered.count, plain.size());
}

TEST(PositionNumbers, AgreeWithAnOrderedMapOnRandomTriangles) {
    for (const unsigned extent : {256U, 40U, 5U, 1U}) {
        SCOPED_TRACE(testing::Message() << "extent " << extent);
        std::mt19937 random(extent);
        for (const std::size_t count : {1U, 2U, 42U, 43U, 251U, 3000U}) {
            ExpectPlainNumbers(test::RandomTriangles(random, count, extent));
        }
    }
}

TEST(PositionNumbers, TellTheMostTrianglesApart) {
    std::mt19937 random(9);
    ExpectPlainNumbers(test::RandomTriangles(random, kMaxNumberedTriangles, 256));
}

}  // namespace
}  // namespace orl::matcher
