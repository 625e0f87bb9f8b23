#include "matcher/features/angles.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

constexpr int kTurn = 255;

std::int16_t Steps(int value) {
    return static_cast<std::int16_t>(value);
}

// Steps that it takes to walk from a to b, one at a time, in the shorter direction.
int WalkedSteps(int a, int b) {
    int steps = 0;
    while ((a + steps - b) % kTurn != 0 && (a - steps - b) % kTurn != 0) {
        ++steps;
    }
    return steps;
}

// Steps forward from a to b, a whole turn when they are the same direction or b is one turn lower.
int WalkedForward(int a, int b) {
    int steps = 1;
    while ((a + steps - b) % kTurn != 0) {
        ++steps;
    }
    return steps;
}

TEST(DegreesToSteps, RoundsHalfAwayFromZeroForAllDegrees) {
    for (int degrees = 0; degrees <= 360; ++degrees) {
        // degrees * 255 / 360, rounded: (2 * degrees * 255 + 360) / (2 * 360) in whole numbers.
        const int expected = (2 * degrees * 255 + 360) / 720;
        EXPECT_EQ(DegreesToSteps(static_cast<std::uint16_t>(degrees)), expected)
            << degrees << " degrees";
    }
}

TEST(DegreesToSteps, TakesTheWholeTurnTo255AndHalfOfItTo128) {
    EXPECT_EQ(DegreesToSteps(360), 255);
    EXPECT_EQ(DegreesToSteps(180), 128);  // 127.5
    EXPECT_EQ(DegreesToSteps(1), 1);      // 0.71
}

TEST(CircularDifference, GoesTheShorterWayAround) {
    EXPECT_EQ(CircularDifference(10, 250), 15);  // 255 - 240
    EXPECT_EQ(CircularDifference(250, 10), 15);
    EXPECT_EQ(CircularDifference(7, 7), 0);
    EXPECT_EQ(CircularDifference(0, 127), 127);
    EXPECT_EQ(CircularDifference(0, 128), 127);
    EXPECT_EQ(CircularDifference(0, 255), 0);
}

TEST(CircularDifference, IsTheWalkedDistanceForAllPairsOfBytes) {
    for (int a = 0; a <= 255; ++a) {
        for (int b = 0; b <= 255; ++b) {
            ASSERT_EQ(CircularDifference(Steps(a), Steps(b)), WalkedSteps(a, b)) << a << ", " << b;
        }
    }
}

TEST(CircularDifference, IsTheWalkedDistanceForAllPairsOfBearings) {
    for (int a = -127; a <= 128; ++a) {
        for (int b = -127; b <= 128; ++b) {
            ASSERT_EQ(CircularDifference(Steps(a), Steps(b)), WalkedSteps(a, b)) << a << ", " << b;
        }
    }
}

// Deliberate: only one turn is taken off, so a difference of more than one turn comes out negative.
TEST(CircularDifference, IsNegativeForAnglesMoreThanOneTurnApart) {
    EXPECT_EQ(CircularDifference(-100, 200), -45);  // 255 - 300
}

TEST(AxialDifference, FoldsAtAQuarterOfATurn) {
    EXPECT_EQ(AxialDifference(10, 250), 15);
    EXPECT_EQ(AxialDifference(0, 120), 8);  // 128 - 120
    EXPECT_EQ(AxialDifference(0, 64), 64);
    EXPECT_EQ(AxialDifference(0, 65), 63);
    EXPECT_EQ(AxialDifference(0, 127), 1);
}

TEST(AxialDifference, IsTheWalkedDistanceOrItsRestTo128ForAllPairsOfBytes) {
    for (int a = 0; a <= 255; ++a) {
        for (int b = 0; b <= 255; ++b) {
            const int walked = WalkedSteps(a, b);
            const int expected = walked <= 64 ? walked : 128 - walked;
            ASSERT_EQ(AxialDifference(Steps(a), Steps(b)), expected) << a << ", " << b;
        }
    }
}

TEST(ForwardDifference, CountsStepsForward) {
    EXPECT_EQ(ForwardDifference(250, 10), 15);
    EXPECT_EQ(ForwardDifference(10, 250), 240);
}

// Deliberate: equal angles are a whole turn apart.
TEST(ForwardDifference, Is255ForEqualAngles) {
    for (int a = -255; a <= 255; ++a) {
        EXPECT_EQ(ForwardDifference(Steps(a), Steps(a)), 255);
    }
}

TEST(ForwardDifference, IsTheWalkedDistanceForAllPairsOfBytesOfOneTurn) {
    for (int a = 0; a <= 255; ++a) {
        for (int b = 0; b <= 255; ++b) {
            // 255 after 0 is walked in no step but counts as 255, and the way back as none.
            const int expected = a == 255 && b == 0 ? 0 : WalkedForward(a, b);
            ASSERT_EQ(ForwardDifference(Steps(a), Steps(b)), expected) << a << ", " << b;
        }
    }
}

TEST(AbsoluteDifference, IsTheDifferenceWithoutItsSignForAllPairs) {
    for (int a = -255; a <= 255; ++a) {
        for (int b = -255; b <= 255; ++b) {
            const int difference = a - b;
            const int expected = difference < 0 ? -difference : difference;
            ASSERT_EQ(AbsoluteDifference(Steps(a), Steps(b)), expected) << a << ", " << b;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
