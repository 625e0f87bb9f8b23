// The searches over all points at once against the plain formulas, point by point.

#include "matcher/triangulation/seed_search.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/triangulation/sweep_order.h"
#include "tests/matcher/triangulation/mesh_test_peer.h"

namespace orl::matcher {
namespace {

using Points = std::vector<double>;

constexpr double kLargest = std::numeric_limits<double>::max();

Point At(const Points& points, PointIndex i) {
    return {points[2 * i], points[2 * i + 1]};
}

// The first point of the smallest measure below the largest double.
template <typename Measure>
PointIndex SmallestOf(const Points& points, Measure measure) {
    PointIndex smallest = NoIndex;
    double best = kLargest;
    for (PointIndex i = 0; i < points.size() / 2; ++i) {
        const double measured = measure(i);
        if (measured < best) {
            best = measured;
            smallest = i;
        }
    }
    return smallest;
}

double SquaredDistance(const Point& p, const Point& q) {
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return dx * dx + dy * dy;
}

std::optional<Seed> PlainSeed(const Points& points) {
    double box[] = {
        kLargest, kLargest, std::numeric_limits<double>::min(), std::numeric_limits<double>::min()};
    for (std::size_t i = 0; i < points.size() / 2 * 2; ++i) {
        box[i % 2] = points[i] < box[i % 2] ? points[i] : box[i % 2];
        box[2 + i % 2] = points[i] > box[2 + i % 2] ? points[i] : box[2 + i % 2];
    }
    const Point centre{(box[0] + box[2]) * 0.5, (box[1] + box[3]) * 0.5};
    const PointIndex i0 =
        SmallestOf(points, [&](PointIndex i) { return SquaredDistance(At(points, i), centre); });
    if (i0 == NoIndex) {
        return std::nullopt;
    }
    PointIndex i1 = SmallestOf(points, [&](PointIndex i) {
        const double distance = SquaredDistance(At(points, i), At(points, i0));
        return i != i0 && distance > 0.0 ? distance : kLargest;
    });
    if (i1 == NoIndex) {
        return std::nullopt;
    }
    PointIndex i2 = SmallestOf(points, [&](PointIndex i) {
        return i == i0 || i == i1 ? kLargest
                                  : Circumradius(At(points, i0), At(points, i1), At(points, i));
    });
    if (i2 == NoIndex) {
        return std::nullopt;
    }
    if (Orient(At(points, i0), At(points, i1), At(points, i2))) {
        std::swap(i1, i2);
    }
    return Seed{i0, i1, i2};
}

Points SomePoints(std::mt19937& random) {
    const double extremes[] = {1e308, -1e308, 1e160, 5e-324, -0.0, 0.0, 1e-200};
    const unsigned spans[] = {2, 5, 30, 400, 5000};
    const unsigned span = spans[random() % std::size(spans)];
    const unsigned kind = random() % 4;  // whole, negative, with fractions, with extremes
    Points points;
    const std::size_t count = 2 * (random() % 8 == 0 ? random() % 400 : random() % 50);
    while (points.size() < count + random() % 2) {
        double value = static_cast<double>(random() % span);
        value = kind == 1 ? -value - 1.0 : kind == 2 ? value * 0.37 : value;
        points.push_back(kind == 3 && random() % 6 == 0 ? extremes[random() % std::size(extremes)]
                                                        : value);
    }
    return points;
}

TEST(ChooseSeed, ChoosesAsThePlainFormulasPointByPoint) {
    std::mt19937 random(29);
    int chosen = 0;
    for (int round = 0; round < 20000; ++round) {
        const Points points = SomePoints(random);
        const std::optional<Seed> expected = PlainSeed(points);
        try {
            const Seed seed = ChooseSeed(points, BoxOf(points));
            ASSERT_TRUE(expected.has_value()) << "round " << round;
            ASSERT_EQ(seed.i0, expected->i0) << "round " << round;
            ASSERT_EQ(seed.i1, expected->i1) << "round " << round;
            ASSERT_EQ(seed.i2, expected->i2) << "round " << round;
            ++chosen;
        } catch (const std::runtime_error& error) {
            ASSERT_FALSE(expected.has_value()) << "round " << round;
            ASSERT_STREQ(error.what(), "not triangulation");
        }
    }
    EXPECT_GT(chosen, 10000);
}

TEST(BoxOf, IsExactForWholeNumbersThatLieWithin4096OfEachOther) {
    const auto isExact = [](const Points& points) { return BoxOf(points).isExact; };
    EXPECT_TRUE(isExact({0, 0, 4096, 4096}));
    EXPECT_TRUE(isExact({-96, 7, 4000, 4103, 5, 4103}));
    EXPECT_FALSE(isExact({0, 0, 4097, 5}));
    EXPECT_FALSE(isExact({0, 0, 5, 4097}));
    EXPECT_FALSE(isExact({0, 0, 5, 2.5}));
    EXPECT_FALSE(isExact({0.001, 0, 5, 2}));
    EXPECT_FALSE(isExact({1048577, 0, 1048578, 2}));
    EXPECT_TRUE(isExact({1048575, 0, 1048576, 2}));
    EXPECT_FALSE(isExact({1e300, 0, 1e300, 2}));
    EXPECT_FALSE(isExact({-2251799813685248.5, 0, 0, 2}));  // keeps its half through the rounding
}

TEST(BoxOf, ReachesUpToTheSmallestPositiveDoubleWhereEveryCoordinateIsNegative) {
    const PointBox box = BoxOf(Points{-5, -7, -3, -9});
    EXPECT_EQ(box.low.x, -5);
    EXPECT_EQ(box.low.y, -9);
    EXPECT_EQ(box.high.x, std::numeric_limits<double>::min());
    EXPECT_EQ(box.high.y, std::numeric_limits<double>::min());
}

TEST(RankPoints, GivesEveryPointItsDistanceAndItsHullKey) {
    std::mt19937 random(31);
    for (int round = 0; round < 5000; ++round) {
        const Points points = SomePoints(random);
        const std::size_t count = points.size() / 2;
        if (count == 0) {
            continue;
        }
        const std::uint64_t buckets = 1 + random() % 12;
        Point centre{static_cast<double>(random() % 60) * 0.5,
                     static_cast<double>(random() % 60) * 0.5};
        if (random() % 4 == 0) {
            centre = At(points, random() % count);
        }
        std::vector<RankedPoint> ranked(count);
        std::vector<std::uint16_t> keys(count);
        const double largest = RankPoints(points, centre, buckets, ranked.data(), keys.data());
        double expectedLargest = 0.0;
        for (PointIndex i = 0; i < count; ++i) {
            const double distance = SquaredDistance(At(points, i), centre);
            expectedLargest = distance > expectedLargest ? distance : expectedLargest;
            ASSERT_EQ(ranked[i].index, i);
            ASSERT_EQ(ranked[i].distance, distance) << "round " << round << ", point " << i;
            ASSERT_EQ(keys[i], DelaunayMeshTestPeer::HullKey(centre, buckets, At(points, i)))
                << "round " << round << ", point " << i;
        }
        ASSERT_EQ(largest, expectedLargest);
    }
}

}  // namespace
}  // namespace orl::matcher
