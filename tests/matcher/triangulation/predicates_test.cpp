#include "matcher/triangulation/predicates.h"

#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

TEST(Orient, IsTrueForTheTurnOfAPointOutsideAnEdge) {
    // (0 - 0)(1 - 1) - (1 - 0)(1 - 0) = -1
    EXPECT_TRUE(Orient({0, 0}, {1, 0}, {1, 1}));
    // (1 - 0)(1 - 1) - (1 - 0)(0 - 1) = 1
    EXPECT_FALSE(Orient({0, 0}, {1, 1}, {1, 0}));
}

TEST(Orient, IsFalseForThreePointsOnOneLine) {
    EXPECT_FALSE(Orient({5, 0}, {2, 0}, {0, 0}));
    EXPECT_FALSE(Orient({5, 0}, {0, 0}, {2, 0}));
    EXPECT_FALSE(Orient({1, 1}, {2, 2}, {7, 7}));
    EXPECT_FALSE(Orient({3, 3}, {3, 3}, {3, 3}));
}

TEST(Orient, KeepsItsSignUnderRotationOfItsPointsAndChangesItUnderASwap) {
    std::mt19937 random(7);
    const auto coordinate = [&random] { return static_cast<double>(random() % 16384); };
    for (int round = 0; round < 20000; ++round) {
        const Point p{coordinate(), coordinate()};
        const Point q{coordinate(), coordinate()};
        const Point r{coordinate(), coordinate()};
        EXPECT_EQ(Orient(p, q, r), Orient(q, r, p));
        if (Orient(p, q, r)) {
            EXPECT_FALSE(Orient(q, p, r));
        }
    }
}

TEST(InCircle, IsTrueOnlyStrictlyInsideTheCircleOfATriangleInTheMeshsWinding) {
    // The circle through these has its centre at (1, 1) and the squared radius 2. The triangle's
    // winding is (0 - 0)(0 - 0) - (2 - 0)(2 - 0) = -4.
    const Point a{0, 0};
    const Point b{0, 2};
    const Point c{2, 0};
    // D = (-1,-1), E = (-1,1), F = (1,-1), ap = bp = cp = 2:
    // -1(1*2 - 2*-1) - -1(-1*2 - 2*1) + 2(-1*-1 - 1*1) = -4 - 4 + 0 = -8
    EXPECT_TRUE(InCircle(a, b, c, {1, 1}));
    // The fourth corner of the square: D = (-2,-2), E = (-2,0), F = (0,-2), ap = 8, bp = cp = 4:
    // -2(0*4 - 4*-2) - -2(-2*4 - 4*0) + 8(-2*-2 - 0*0) = -16 - 16 + 32 = 0
    EXPECT_FALSE(InCircle(a, b, c, {2, 2}));
    EXPECT_FALSE(InCircle(a, b, c, {3, 3}));
    EXPECT_FALSE(InCircle(a, b, c, a));
    EXPECT_FALSE(InCircle(a, b, c, b));
    EXPECT_FALSE(InCircle(a, b, c, c));
}

TEST(InCircle, IsFalseInsideTheCircleOfATriangleOfTheOtherWinding) {
    EXPECT_FALSE(InCircle({0, 0}, {2, 0}, {0, 2}, {1, 1}));
    EXPECT_TRUE(InCircle({0, 0}, {2, 0}, {0, 2}, {3, 3}));
}

TEST(InCircle, AgreesWithWholeNumbersBelow4096) {
    std::mt19937 random(11);
    const auto coordinate = [&random] { return static_cast<std::int64_t>(random() % 4096); };
    for (int round = 0; round < 50000; ++round) {
        const std::int64_t x[] = {coordinate(), coordinate(), coordinate(), coordinate()};
        const std::int64_t y[] = {coordinate(), coordinate(), coordinate(), coordinate()};
        // The determinant of the rows (x_i - x_3, y_i - y_3, square of both), by its last column.
        std::int64_t determinant = 0;
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3;
            const int k = (i + 2) % 3;
            const std::int64_t square =
                (x[i] - x[3]) * (x[i] - x[3]) + (y[i] - y[3]) * (y[i] - y[3]);
            determinant += square * ((x[j] - x[3]) * (y[k] - y[3]) - (y[j] - y[3]) * (x[k] - x[3]));
        }
        const auto point = [&](int i) {
            return Point{static_cast<double>(x[i]), static_cast<double>(y[i])};
        };
        ASSERT_EQ(InCircle(point(0), point(1), point(2), point(3)), determinant < 0)
            << "round " << round;
    }
}

TEST(Circumradius, IsTheSquaredDistanceFromACornerToTheCentre) {
    // d = 2*2 - 0*0 = 4, X = 2*4 - 0*4 = 8, Y = 2*4 - 0*4 = 8:
    // (64 + 64) * ((1 / 4) * 0.25) / 4 = 128 * 0.0625 / 4 = 2
    EXPECT_EQ(Circumradius({0, 0}, {2, 0}, {0, 2}), 2.0);
    EXPECT_EQ(Circumradius({0, 0}, {0, 2}, {2, 0}), 2.0);
}

TEST(Circumradius, IsTheLargestDoubleForADegenerateTriangle) {
    EXPECT_EQ(Circumradius({1, 1}, {1, 1}, {4, 5}), kLargest);
    EXPECT_EQ(Circumradius({1, 1}, {4, 5}, {1, 1}), kLargest);
    EXPECT_EQ(Circumradius({4, 5}, {1, 1}, {1, 1}), kLargest);
    EXPECT_EQ(Circumradius({0, 0}, {1, 2}, {3, 6}), kLargest);
}

TEST(Circumcentre, LiesInTheMiddleOfTheLongSideOfARightTriangle) {
    const Point centre = Circumcentre({10, 20}, {12, 20}, {10, 22});
    EXPECT_EQ(centre.x, 11.0);
    EXPECT_EQ(centre.y, 21.0);
}

// Deliberate: order among points that are nearly equally far from the centre hangs on this bit.
TEST(Circumcentre, MultipliesByTheReciprocalOfTheDoubledArea) {
    // d = 7 * 7 = 49, X = 7 * 49 = 343. Half of 343 is 171.5, and 171.5 / 49 would be 3.5, but
    // 1 / 49 rounds down, and 171.5 times it ends one step below.
    const Point centre = Circumcentre({0, 0}, {7, 0}, {0, 7});
    EXPECT_EQ(centre.x, 3.4999999999999996);
    EXPECT_EQ(centre.y, 3.4999999999999996);
}

TEST(SquaredDistance, IsTheSumOfTheSquares) {
    EXPECT_EQ(SquaredDistance({1, 2}, {4, 6}), 25.0);
    EXPECT_EQ(SquaredDistance({4, 6}, {4, 6}), 0.0);
}

}  // namespace
}  // namespace orl::matcher
