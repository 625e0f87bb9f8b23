#include "matcher/triangulation/predicates.h"

#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

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

bool InCircleByLanes(const Point& a, const Point& b, const Point& c, const Point& p) {
    const auto lanes = [](const Point& point) {
        const double xy[] = {point.x, point.y};
        return LoadPoint(xy);
    };
    return InCircle(lanes(a), lanes(b), lanes(c), lanes(p));
}

TEST(InCircleByLanes, AnswersAsThePlainFormulaForEveryFourPointsOfASmallLattice) {
    std::vector<Point> lattice;
    for (int i = 0; i < 4 * 4; ++i) {
        lattice.push_back({static_cast<double>(i % 4), static_cast<double>(i / 4)});
    }
    for (const Point& a : lattice) {
        for (const Point& b : lattice) {
            for (const Point& c : lattice) {
                for (const Point& p : lattice) {
                    ASSERT_EQ(InCircleByLanes(a, b, c, p), InCircle(a, b, c, p));
                }
            }
        }
    }
}

// Near-ties of numbers that fill their mantissas show every other order of evaluation.
TEST(InCircleByLanes, AnswersAsThePlainFormulaForPointsOnOneCircleButForRounding) {
    std::mt19937_64 random(37);
    std::uint64_t inside = 0;
    constexpr int kRounds = 200000;
    for (int round = 0; round < kRounds; ++round) {
        const auto onCircle = [&random] {
            const double angle = static_cast<double>(random() % 1000000) * 6.2831853e-6;
            return Point{1234.5 + 7654.3 * std::cos(angle), 987.6 + 7654.3 * std::sin(angle)};
        };
        const Point a = onCircle();
        const Point b = onCircle();
        const Point c = onCircle();
        const Point p = onCircle();
        ASSERT_EQ(InCircleByLanes(a, b, c, p), InCircle(a, b, c, p)) << "round " << round;
        inside += InCircle(a, b, c, p) ? 1U : 0U;
    }
    EXPECT_GT(inside, kRounds / 10U);
    EXPECT_LT(inside, kRounds - kRounds / 10U);
}

TEST(InCircleByLanes, AnswersAsThePlainFormulaWhereNumbersOverflow) {
    std::mt19937_64 random(39);
    for (int round = 0; round < 100000; ++round) {
        const auto extreme = [&random] {
            return Point{std::ldexp(static_cast<double>(random() % 2001) - 1000.0,
                                    static_cast<int>(random() % 800) - 400),
                         std::ldexp(static_cast<double>(random() % 2001) - 1000.0,
                                    static_cast<int>(random() % 800) - 400)};
        };
        const Point a = extreme();
        const Point b = extreme();
        const Point c = extreme();
        const Point p = extreme();
        ASSERT_EQ(InCircleByLanes(a, b, c, p), InCircle(a, b, c, p)) << "round " << round;
    }
}

PointLanes LanesOf(const Point& p) {
    return PointLanes{p.x, p.y};
}

TEST(OrientOfLanes, IsOrientForAnyCoordinates) {
    std::mt19937 random(17);
    const double special[] = {0.0, -0.0, 1.0, 5e-324, -5e-324, 1e-308, 1e308, -1e308, 3.5};
    for (int round = 0; round < 200000; ++round) {
        const auto coordinate = [&random, &special] {
            const auto choice = random() % 3;
            return choice == 0   ? special[random() % std::size(special)]
                   : choice == 1 ? static_cast<double>(random() % 20) - 10.0
                                 : static_cast<double>(random()) * 1e-3;
        };
        const Point p{coordinate(), coordinate()};
        const Point q{coordinate(), coordinate()};
        const Point r{coordinate(), coordinate()};
        ASSERT_EQ(Orient(LanesOf(p), LanesOf(q), LanesOf(r)), Orient(p, q, r)) << "round " << round;
    }
}

// Spreads up to the limit, small grids with many points on one circle, and the limit's corners.
TEST(ExactCircle, AnswersAsInCircleForWholeNumbersWithinItsSpan) {
    std::mt19937 random(19);
    for (int round = 0; round < 300000; ++round) {
        const unsigned spans[] = {3, 12, 400, 4097};
        const unsigned span = spans[random() % std::size(spans)];
        const double offset = static_cast<double>(random() % 2000000) - 1e6;
        const auto coordinate = [&random, span, offset] {
            const unsigned value =
                random() % 4 == 0 ? (random() % 2) * (span - 1) : random() % span;
            return offset + static_cast<double>(value);
        };
        const Point a{coordinate(), coordinate()};
        const Point b{coordinate(), coordinate()};
        const Point c{coordinate(), coordinate()};
        ExactCircle circle(LanesOf(a), LanesOf(b), LanesOf(c));
        Point second = b;
        for (int step = 0; step < 3; ++step) {
            const Point p{coordinate(), coordinate()};
            ASSERT_EQ(circle.Holds(LanesOf(p)), InCircle(a, second, c, p)) << "round " << round;
            circle.MoveOn();
            second = p;
        }
    }
}

}  // namespace
}  // namespace orl::matcher
