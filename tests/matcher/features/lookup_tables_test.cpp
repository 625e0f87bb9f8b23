#include "matcher/features/lookup_tables.h"

#include <cmath>
#include <cstdint>

#include <gtest/gtest.h>

#include "tests/matcher/features/plain_triangle.h"

namespace orl::matcher {
namespace {

constexpr int kMost = 255;

std::int16_t Steps(int value) {
    return static_cast<std::int16_t>(value);
}

TriangleVertex At(int x, int y) {
    return {.x = static_cast<std::uint8_t>(x), .y = static_cast<std::uint8_t>(y)};
}

TEST(Bearing, StartsAtThePositiveXAxisAndGrowsTowardPositiveY) {
    EXPECT_EQ(Bearing(0, 0), 0);
    EXPECT_EQ(Bearing(0, 1), 0);
    EXPECT_EQ(Bearing(1, 0), 64);    // 63.75
    EXPECT_EQ(Bearing(0, -1), 128);  // 127.5, away from zero
    EXPECT_EQ(Bearing(-1, 0), -64);
    EXPECT_EQ(Bearing(1, 1), 32);     // 31.875
    EXPECT_EQ(Bearing(-1, -1), -96);  // -95.625
}

TEST(Bearing, FallsToMinus127JustBelowTheNegativeXAxis) {
    EXPECT_EQ(Bearing(-1, -255), -127);  // -127.34
    EXPECT_EQ(Bearing(1, -255), 127);
    EXPECT_EQ(Bearing(0, -255), 128);
}

TEST(Bearing, IsTheRoundedAngleForAll511By511Differences) {
    for (int dy = -kMost; dy <= kMost; ++dy) {
        for (int dx = -kMost; dx <= kMost; ++dx) {
            ASSERT_EQ(Bearing(Steps(dy), Steps(dx)), test::PlainBearing(dy, dx))
                << "dy " << dy << ", dx " << dx;
        }
    }
}

TEST(Bearing, CoversADifferenceOf255InEitherArgument) {
    EXPECT_EQ(Bearing(0, 255), 0);
    EXPECT_EQ(Bearing(255, 0), 64);
    EXPECT_EQ(Bearing(255, 255), 32);
    EXPECT_EQ(Bearing(-255, 255), -32);
    EXPECT_EQ(Bearing(255, -255), 96);
}

// A vector turned once goes from (dx, dy) to (-dy, dx).
TEST(QuarterTurnBearings, AreTheLowBytesOfThePlainBearingsForAll511By511Differences) {
    const QuarterTurnBearings& bearings = QuarterTurnBearings::Table();
    for (int dy = -kMost; dy <= kMost; ++dy) {
        for (int dx = -kMost; dx <= kMost; ++dx) {
            const int turned[] = {test::PlainBearing(dy, dx),
                                  test::PlainBearing(dx, -dy),
                                  test::PlainBearing(-dy, -dx),
                                  test::PlainBearing(-dx, dy)};
            std::uint32_t expected = 0;
            for (int m = 3; m >= 0; --m) {
                expected = expected * 256 + static_cast<std::uint8_t>(turned[m]);
            }
            ASSERT_EQ(bearings(dy, dx), expected) << "dy " << dy << ", dx " << dx;
        }
    }
}

TEST(QuarterTurnBearings, GiveTheFourHalfAxesForOneVector) {
    // (1, 0): 0, then 64, 128 and -64, which is 192 as a byte.
    EXPECT_EQ(QuarterTurnBearings::Table()(0, 1), 0xC0804000U);
    EXPECT_EQ(QuarterTurnBearings::Table()(0, 0), 0U);
}

TEST(BearingTable, GivesTheBearingFromOneGridPointToAnother) {
    const BearingTable& table = BearingTable::Table();
    constexpr int kCoordinates[] = {0, 1, 100, 254, 255};
    for (const int fromY : kCoordinates) {
        for (const int fromX : kCoordinates) {
            for (const int toY : kCoordinates) {
                for (const int toX : kCoordinates) {
                    const int from = BearingTable::Place(fromY, fromX);
                    const int to = BearingTable::Place(toY, toX);
                    const int expected = test::PlainBearing(toY - fromY, toX - fromX);
                    ASSERT_EQ(table.FromTo(from, to), expected);
                    // Ranks start at 0 for the least bearing, -127.
                    const BearingTable::Ranks ranks =
                        table.RanksFrom(static_cast<std::uint32_t>(from));
                    ASSERT_EQ(ranks[to], expected + 127);
                }
            }
        }
    }
}

TEST(Distance, IsTheRoundedLength) {
    EXPECT_EQ(Distance(At(7, 9), At(7, 9)), 0);
    EXPECT_EQ(Distance(At(0, 0), At(3, 4)), 5);
    EXPECT_EQ(Distance(At(3, 4), At(0, 0)), 5);
    EXPECT_EQ(Distance(At(0, 0), At(1, 1)), 1);  // 1.41
    EXPECT_EQ(Distance(At(0, 0), At(255, 0)), 255);
}

// Deliberate: the stored byte wraps, it is not clamped.
TEST(Distance, WrapsAbove255) {
    EXPECT_EQ(Distance(At(0, 0), At(255, 255)), 105);  // 360.6 is 361, less 256
    // 16^2 + 255^2 = 65281, the first square from 255.5^2 = 65280.25 on that can occur
    EXPECT_EQ(Distance(At(0, 0), At(255, 16)), 0);
    // 15^2 + 255^2 = 65250 is 255.44
    EXPECT_EQ(Distance(At(0, 0), At(255, 15)), 255);
}

TEST(Distance, IsTheLowByteOfTheRoundedLengthForAllDifferences) {
    for (int dx = 0; dx <= kMost; ++dx) {
        for (int dy = 0; dy <= kMost; ++dy) {
            const int expected = test::PlainDistance(dx, dy) & 0xFF;
            ASSERT_EQ(Distance(At(0, 0), At(dx, dy)), expected) << dx << ", " << dy;
            ASSERT_EQ(Distance(At(dx, 0), At(0, dy)), expected) << dx << ", " << dy;
        }
    }
}

TEST(Distance, IgnoresAngleAndType) {
    EXPECT_EQ(Distance({.x = 1, .y = 1, .angle = 9, .type = 1}, {.x = 1, .y = 1}), 0);
}

TEST(CosAndSin, AreThePlatformsOwnForAll511Angles) {
    for (int steps = -kMost; steps <= kMost; ++steps) {
        const float radians = static_cast<float>(steps) * 0.024639942F;
        EXPECT_EQ(Cos(Steps(steps)), std::cos(radians)) << steps << " steps";
        EXPECT_EQ(Sin(Steps(steps)), std::sin(radians)) << steps << " steps";
    }
}

TEST(CosAndSin, TakeAWholeTurnAs255Steps) {
    constexpr double kTurn = 6.283185307179586;
    constexpr double kFloatRounding = 1e-6;
    for (int steps = -kMost; steps <= kMost; ++steps) {
        EXPECT_NEAR(Cos(Steps(steps)), std::cos(steps * kTurn / 255), kFloatRounding);
        EXPECT_NEAR(Sin(Steps(steps)), std::sin(steps * kTurn / 255), kFloatRounding);
    }
    EXPECT_EQ(Cos(0), 1.0F);
    EXPECT_EQ(Sin(0), 0.0F);
    EXPECT_NEAR(Cos(255), 1.0F, kFloatRounding);
}

}  // namespace
}  // namespace orl::matcher
