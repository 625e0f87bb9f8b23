#include "matcher/triangulation/sweep_order.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

using Points = std::vector<double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();

// The indices of `ranked` in the sweep's order, by SortFewPoints.
std::vector<PointIndex> SortedFew(const Points& points,
                                  const std::vector<RankedPoint>& ranked,
                                  double largestDistance) {
    std::vector<RankedPoint> sorted(ranked.size());
    SortFewPoints(points, ranked, largestDistance, sorted.data());
    std::vector<PointIndex> indices;
    for (const RankedPoint& point : sorted) {
        indices.push_back(point.index);
    }
    return indices;
}

// The same by the rule alone: by distance, then x, then y, then in their places. An insertion that
// passes whatever comes later.
std::vector<PointIndex> SortedPlainly(const Points& points,
                                      const std::vector<RankedPoint>& ranked) {
    const auto isBefore = [&](const RankedPoint& p, const RankedPoint& q) {
        if (p.distance < q.distance || p.distance > q.distance) {
            return p.distance < q.distance;
        }
        if (points[2 * p.index] != points[2 * q.index]) {
            return points[2 * p.index] < points[2 * q.index];
        }
        return points[2 * p.index + 1] < points[2 * q.index + 1];
    };
    std::vector<RankedPoint> sorted;
    for (const RankedPoint& point : ranked) {
        auto place = sorted.end();
        while (place != sorted.begin() && isBefore(point, *(place - 1))) {
            --place;
        }
        sorted.insert(place, point);
    }
    std::vector<PointIndex> indices;
    for (const RankedPoint& point : sorted) {
        indices.push_back(point.index);
    }
    return indices;
}

std::vector<RankedPoint> WithDistances(const std::vector<double>& distances) {
    std::vector<RankedPoint> ranked;
    for (const double distance : distances) {
        ranked.push_back({.distance = distance, .index = ranked.size()});
    }
    return ranked;
}

TEST(SweepOrder, TakesTheNearerPointThenTheOneOfSmallerXThenOfSmallerY) {
    const Points points = {5, 5, 4, 9, 4, 8, 4, 8};
    const SweepOrder isBefore(points);
    EXPECT_TRUE(isBefore({.distance = 1, .index = 0}, {.distance = 2, .index = 1}));
    EXPECT_FALSE(isBefore({.distance = 2, .index = 1}, {.distance = 1, .index = 0}));
    EXPECT_TRUE(isBefore({.distance = 1, .index = 1}, {.distance = 1, .index = 0}));
    EXPECT_FALSE(isBefore({.distance = 1, .index = 0}, {.distance = 1, .index = 1}));
    EXPECT_TRUE(isBefore({.distance = 1, .index = 2}, {.distance = 1, .index = 1}));
    EXPECT_FALSE(isBefore({.distance = 1, .index = 1}, {.distance = 1, .index = 2}));
    EXPECT_FALSE(isBefore({.distance = 1, .index = 2}, {.distance = 1, .index = 3}));
}

// The difference of two of them is not a number, so that not even x tells them apart.
TEST(SweepOrder, TakesDistancesThatAreNotFiniteAsEqual) {
    const Points points = {5, 5, 4, 9};
    const SweepOrder isBefore(points);
    const RankedPoint right{.distance = kInfinity, .index = 0};
    const RankedPoint left{.distance = kInfinity, .index = 1};
    EXPECT_FALSE(isBefore(right, left));
    EXPECT_FALSE(isBefore(left, right));
    EXPECT_TRUE(isBefore({.distance = 1, .index = 0}, left));
    EXPECT_FALSE(isBefore(left, {.distance = 1, .index = 0}));
}

TEST(SortFewPoints, OrdersAnyNumberOfPointsByTheRule) {
    std::mt19937 random(61);
    for (std::size_t count = 1; count < 256; ++count) {
        for (const unsigned different : {2U, 9U, 100000U}) {
            Points points;
            std::vector<double> distances;
            while (distances.size() < count) {
                points.push_back(static_cast<double>(random() % 3));
                points.push_back(static_cast<double>(random() % 3));
                distances.push_back(static_cast<double>(random() % different) * 0.37);
            }
            const auto ranked = WithDistances(distances);
            const double largest = *std::max_element(distances.begin(), distances.end());
            ASSERT_THAT(SortedFew(points, ranked, largest),
                        ElementsAreArray(SortedPlainly(points, ranked)))
                << count << " points of " << different << " distances";
        }
    }
}

// 63 / infinity is 0: no scale.
TEST(SortFewPoints, OrdersPointsWhoseLargestDistanceOverflows) {
    const Points points = {7, 0, 6, 0, 5, 0, 4, 0, 3, 0};
    const auto ranked = WithDistances({kInfinity, 1e300, 3, kInfinity, 2});
    // The two that overflow equal each other and stay in their order.
    EXPECT_THAT(SortedFew(points, ranked, kInfinity), ElementsAre(4, 2, 1, 0, 3));
}

// A finite scale, and distances far above what it is for.
TEST(SortFewPoints, PutsDistancesThatAreNotFiniteBehindTheFiniteOnes) {
    const Points points = {7, 0, 6, 0, 5, 0, 4, 0};
    const auto ranked = WithDistances({kInfinity, 10, kInfinity, 2});
    EXPECT_THAT(SortedFew(points, ranked, 10), ElementsAre(3, 1, 0, 2));
}

// 63 / 0 and 63 / 1e-310 are infinite: no scale.
TEST(SortFewPoints, OrdersPointsThatAreAllNextToTheCentre) {
    const Points points = {7, 0, 6, 0, 5, 3, 5, 2};
    EXPECT_THAT(SortedFew(points, WithDistances({0, 0, 0, 0}), 0), ElementsAre(3, 2, 1, 0));
    EXPECT_THAT(SortedFew(points, WithDistances({1e-310, kLeast, 0, 0}), 1e-310),
                ElementsAre(3, 2, 1, 0));
    // 63 / 4e-307 = 1.575e308 is finite still.
    EXPECT_THAT(SortedFew(points, WithDistances({4e-307, 2e-307, kLeast, 0}), 4e-307),
                ElementsAre(3, 2, 1, 0));
}

// What no distance of which is a number has the largest distance 0.
TEST(SortFewPoints, LeavesPointsWithoutDistancesInTheirOrder) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const Points points = {7, 0, 6, 0, 5, 0};
    EXPECT_THAT(SortedFew(points, WithDistances({none, none, none}), 0), ElementsAre(0, 1, 2));
}

TEST(RankPoints, PutsTheCentreAndAWholeTurnIntoBucketZero) {
    // About (0, 0): the centre itself; straight along -x, which is measure 0; a little off it on
    // either side of y: just above 0, and rounded to 1, a whole turn.
    const Points points = {0, 0, -1, 0, -1, -1e-20, -1, 1e-20};
    std::array<RankedPoint, 4> ranked{};
    std::array<std::uint16_t, 4> keys{};
    EXPECT_EQ(RankPoints(points, Point{}, 8, ranked.data(), keys.data()), 1.0);
    EXPECT_THAT(keys, ElementsAre(0, 0, 0, 0));
}

TEST(RankPoints, GivesTheHalfAxesTheQuartersOfTheBuckets) {
    const Points points = {-3, 0, 0, -3, 3, 0, 0, 3, -3, -3, 3, -3, 3, 3, -3, 3};
    std::array<RankedPoint, 8> ranked{};
    std::array<std::uint16_t, 8> keys{};
    EXPECT_EQ(RankPoints(points, Point{}, 8, ranked.data(), keys.data()), 18.0);
    EXPECT_THAT(keys, ElementsAre(0, 2, 4, 6, 1, 3, 5, 7));
}

TEST(RankPoints, LeavesWhatIsNotANumberOutOfTheLargestDistance) {
    const Points points = {1, 2, 3, 4, 5, 6};
    std::array<RankedPoint, 3> ranked{};
    std::array<std::uint16_t, 3> keys{};
    const Point nowhere{.x = std::numeric_limits<double>::quiet_NaN(), .y = 0};
    EXPECT_EQ(RankPoints(points, nowhere, 8, ranked.data(), keys.data()), 0.0);
    EXPECT_THAT(keys, ElementsAre(0, 0, 0));
}

}  // namespace
}  // namespace orl::matcher
