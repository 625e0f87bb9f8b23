#include "tools/orl_finger/portable_math.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kTolerance = 1e-10;

TEST(PortableMath, AgreesWithTheLibrarysSineAndCosine) {
    for (int step = -20000; step <= 20000; ++step) {
        const double turns = step / 7919.0;  // from -2.5 to 2.5 turns, on no round angle
        ASSERT_NEAR(sineOfTurns(turns), std::sin(turns * kTurn), kTolerance) << turns;
        ASSERT_NEAR(cosineOfTurns(turns), std::cos(turns * kTurn), kTolerance) << turns;
    }
}

TEST(PortableMath, AgreesWithTheLibrarysArctangentInEveryOctant) {
    for (int y = -60; y <= 60; ++y) {
        for (int x = -60; x <= 60; ++x) {
            const double expected = std::atan2(y, x) / kTurn;
            ASSERT_NEAR(turnsOfVector(y, x), expected, kTolerance) << y << " " << x;
        }
    }
}

TEST(PortableMath, IsExactAtQuarterTurns) {
    EXPECT_EQ(sineOfTurns(0.0), 0.0);
    EXPECT_EQ(sineOfTurns(0.5), 0.0);
    EXPECT_EQ(turnsOfVector(0.0, 3.0), 0.0);
    EXPECT_EQ(turnsOfVector(3.0, 0.0), 0.25);
    EXPECT_EQ(turnsOfVector(0.0, -3.0), 0.5);
    EXPECT_EQ(turnsOfVector(-3.0, 0.0), -0.25);
    EXPECT_EQ(turnsOfVector(0.0, 0.0), 0.0);
}

TEST(PortableMath, TurnsVectorsCounterClockwiseAndKeepsTheirLength) {
    const Vector up = rotated({2.0, 0.0}, 0.25);
    EXPECT_NEAR(up.x, 0.0, kTolerance);
    EXPECT_NEAR(up.y, 2.0, kTolerance);
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i) {
        const double angle = static_cast<double>(random()) / 1e6;
        EXPECT_NEAR(lengthOf(rotated({3.0, 4.0}, angle)), 5.0, 1e-9) << angle;
    }
}

TEST(PortableMath, WrapsTurnsIntoZeroToOne) {
    EXPECT_EQ(wrappedTurns(1.25), 0.25);
    EXPECT_EQ(wrappedTurns(-0.25), 0.75);
    EXPECT_EQ(wrappedTurns(-3.0), 0.0);
    const double barelyNegative = wrappedTurns(-1e-20);  // 1 - 1e-20 rounds to 1
    EXPECT_GE(barelyNegative, 0.0);
    EXPECT_LT(barelyNegative, 1.0);
}

TEST(PortableMath, RoundsHalvesUp) {
    EXPECT_EQ(roundedToInt(1.5), 2);
    EXPECT_EQ(roundedToInt(-1.5), -1);
    EXPECT_EQ(roundedToInt(2.4999), 2);
    EXPECT_EQ(roundedToInt(-2.6), -3);
}

}  // namespace
}  // namespace orl::tools
