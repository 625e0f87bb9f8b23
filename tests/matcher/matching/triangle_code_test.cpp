#include "matcher/matching/triangle_code.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

TEST(TriangleCode, HoldsTurnsEdgesAndSidesInGroupsOfThree) {
    const TriangleFeature triangle{
        .vertices = {{100, 100, 10, 1}, {200, 100, 60, 1}, {100, 20, 120, 1}},
        .sides = {128, 100, 80, 0xFF}};
    // Turns to the next vertex: 60 - 10, 120 - 60, and from 120 to 10 backward, 10 - 120 + 255.
    // Bearings from the next vertex: (-100, 0) 128, (100, 80) 27.4 -> 27, (0, -80) -64 as 192; less
    // the directions 10, 60 and 120: 118, 27 - 60 + 255 = 222, 72.
    // Bearings from the previous vertex, the other way along the same edges: (0, 80) 64, (100, 0)
    // 0,
    // (-100, -80) -100.1 as 156: 54, 0 - 60 + 255 = 195, 36.
    const TriangleCode expected{{50, 60, 145, 0, 118, 222, 72, 0, 54, 195, 36, 0, 128, 100, 80, 0}};
    EXPECT_EQ(codeOf(triangle).bytes, expected.bytes);
}

TEST(TriangleCode, TurnsEachGroupForTheOtherCyclicOrders) {
    const TriangleFeature triangle{
        .vertices = {{100, 100, 10, 1}, {200, 100, 60, 1}, {100, 20, 120, 1}},
        .sides = {128, 100, 80, 0}};
    const CyclicCodes codes = cyclicCodesOf(triangle, QuarterTurnBearings::Table());
    EXPECT_EQ(codes[0], codeOf(triangle));
    const TriangleCode one{{60, 145, 50, 0, 222, 72, 118, 0, 195, 36, 54, 0, 100, 80, 128, 0}};
    const TriangleCode two{{145, 50, 60, 0, 72, 118, 222, 0, 36, 54, 195, 0, 80, 128, 100, 0}};
    EXPECT_EQ(codes[1].bytes, one.bytes);
    EXPECT_EQ(codes[2].bytes, two.bytes);
}

TEST(TriangleCode, OfATriangleGivenFromAnotherVertexOnIsItsCyclicCode) {
    std::mt19937 random(3);
    for (const TriangleFeature& triangle : test::RandomTriangles(random, 500, 256)) {
        for (std::size_t start = 0; start < kCorners; ++start) {
            TriangleFeature shifted{};
            for (std::size_t j = 0; j < kCorners; ++j) {
                shifted.vertices[j] = triangle.vertices[(start + j) % kCorners];
                shifted.sides[j] = triangle.sides[(start + j) % kCorners];
            }
            ASSERT_EQ(codeOf(shifted),
                      cyclicCodesOf(triangle, QuarterTurnBearings::Table())[start]);
        }
    }
}

// The tests of directions below depend on differences alone. With Da and Db for the first and
// second finger's difference between two directions, each -255..255, the turn between them is D
// when positive, else D + 255; and an expected direction is the second finger's one plus Da - Db,
// taken modulo 256. Both directions are bytes, so the two lie Da - Db + 256 k apart for a k that
// leaves at most 255. All Da, Db and k are thus all that four directions can be.

constexpr int kLargestDifference = 255;

int TurnOf(int difference) {
    return difference > 0 ? difference : difference + 255;
}

int Apart(int difference) {
    return std::min(255 - std::abs(difference), std::abs(difference));
}

int LinesApart(int difference) {
    return std::min(128 - Apart(difference), Apart(difference));
}

// The largest angle between lines that is possible at turns at most `reach` apart, when the
// expected directions are `offset` steps further on.
int LargestLineAngle(int reach, int offset) {
    int largest = 0;
    for (int da = -kLargestDifference; da <= kLargestDifference; ++da) {
        for (int db = -kLargestDifference; db <= kLargestDifference; ++db) {
            if (Apart(TurnOf(da) - TurnOf(db)) > reach) {
                continue;
            }
            for (int apart = (da - db + offset) % 256 - 512; apart <= kLargestDifference;
                 apart += 256) {
                if (apart >= -kLargestDifference) {
                    largest = std::max(largest, LinesApart(apart));
                }
            }
        }
    }
    return largest;
}

// So the pair test needs no look at the directions themselves, which it rejects from 43 on.
TEST(DirectionTests, OfATrianglePairPassWheneverTheTurnsAreWithin34) {
    EXPECT_LT(LargestLineAngle(34, 0), 43);
    EXPECT_GE(LargestLineAngle(34, 0), 34);
}

// Nor does a hypothesis, whose rotation is the anchor's turn or its opposite and which rejects from
// 44 on.
TEST(DirectionTests, OfAHypothesisPassWheneverTheTurnsAreWithin35) {
    EXPECT_LT(LargestLineAngle(35, 0), 44);
    EXPECT_LT(LargestLineAngle(35, 128), 44);
}

// The turn of a minutia pair, second direction less first modulo 256, differs from that of its
// anchor by Db - Da.
TEST(DirectionTests, PassInTheVoteOnlyWhenThePairsTurnAboutAsTheirAnchorDoes) {
    int largest = 0;
    for (int da = -kLargestDifference; da <= kLargestDifference; ++da) {
        for (int db = -kLargestDifference; db <= kLargestDifference; ++db) {
            if (Apart(TurnOf(da) - TurnOf(db)) <= 35) {
                const int apart = ((db - da) % 256 + 256) % 256;
                largest = std::max(largest, std::min(apart, 256 - apart));
            }
        }
    }
    EXPECT_LE(largest, 37);
}

}  // namespace
}  // namespace orl::matcher
