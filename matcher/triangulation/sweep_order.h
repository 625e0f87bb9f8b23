#pragma once

// The order in which a triangulation's sweep takes the points, and the angular buckets in which it
// looks for the hull.

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "matcher/triangulation/bucket_sort.h"
#include "matcher/triangulation/double_lanes.h"
#include "matcher/triangulation/half_edge.h"
#include "matcher/triangulation/predicates.h"

namespace orl::matcher {

// A point in the order of the sweep.
struct RankedPoint {
    double distance;  // squared, from the centre
    PointIndex index;
};

// HullKey (see DelaunayMesh) of two points at (dx, dy) from the centre, with the bits of its
// formula: 3 - slope is 3 + -slope, and a position of all the buckets is a whole turn.
inline DoubleLanes HullPositions(DoubleLanes dx, DoubleLanes dy, double buckets) {
    constexpr std::int64_t kSign = std::numeric_limits<std::int64_t>::min();
    const DoubleLanes slope = dx / (AbsLanes(dx) + AbsLanes(dy));
    const LaneBits isUpper = dy > BothLanes(0.0);
    const DoubleLanes signedSlope =
        LanesFromBits(BitsOf(slope) ^ (isUpper & LaneBits{kSign, kSign}));
    const DoubleLanes base = BothLanes(1.0) + LanesFromBits(isUpper & BitsOf(BothLanes(2.0)));
    const DoubleLanes positions = (base + signedSlope) * BothLanes(0.25) * BothLanes(buckets);
    // Clear for what is not a number as well: the centre goes into bucket 0.
    const LaneBits isInside = positions < BothLanes(buckets);
    return LanesFromBits(isInside & BitsOf(positions));
}

// All points of x0, y0, x1, y1, ... with their distances, in index order, and their hull keys among
// `buckets`. Returns the largest distance that is a number, at least 0.
// REQUIRES: a point; `ranked` and `keys` have room for all.
template <typename Key>
double RankPoints(std::span<const double> points,
                  const Point& centre,
                  std::uint64_t buckets,
                  RankedPoint* ranked,
                  Key* keys) {
    const std::uint64_t count = points.size() / 2;
    assert(count > 0);
    const auto bucketCount = static_cast<double>(static_cast<std::int64_t>(buckets));
    const DoubleLanes x = BothLanes(centre.x);
    const DoubleLanes y = BothLanes(centre.y);
    DoubleLanes largest = BothLanes(0.0);
    ForPairs(points.data(), 0, count, [&](PointIndex i, PointIndex j, const PointPair& pair) {
        const DoubleLanes dx = pair.x - x;
        const DoubleLanes dy = pair.y - y;
        const DoubleLanes distances = dx * dx + dy * dy;
        const DoubleLanes positions = HullPositions(dx, dy, bucketCount);
        largest = MaxLanes(distances, largest);
        ranked[i] = {.distance = distances[0], .index = i};
        ranked[j] = {.distance = distances[1], .index = j};
        keys[i] = static_cast<Key>(static_cast<std::int32_t>(positions[0]));
        keys[j] = static_cast<Key>(static_cast<std::int32_t>(positions[1]));
    });
    return std::max(largest[0], largest[1]);
}

// By distance from the centre, then x, then y. Distances that are not finite equal each other.
class SweepOrder {
  public:
    explicit SweepOrder(std::span<const double> points) : points_(points) {}

    bool operator()(const RankedPoint& left, const RankedPoint& right) const {
        const double difference = left.distance - right.distance;
        if (difference != 0.0) {
            return difference < 0.0;
        }
        const double* const p = &points_[2 * left.index];
        const double* const q = &points_[2 * right.index];
        return p[0] != q[0] ? p[0] < q[0] : p[1] < q[1];
    }

  private:
    std::span<const double> points_;
};

// Sorts up to 255 points into SweepOrder, coincident points in index order. Points spread evenly
// over a disc have evenly spread squared distances. Where these cannot be scaled to buckets
// (overflow, or all next to nothing) one bucket takes them all.
inline void SortFewPoints(std::span<const double> points,
                          std::span<const RankedPoint> ranked,
                          double largestDistance,
                          RankedPoint* sorted) {
    constexpr std::size_t kBuckets = 64;
    constexpr double kLastBucket = kBuckets - 1;  // the largest distance's, rounded as it may be
    const double scale = kLastBucket / largestDistance;
    const bool isScalable = scale > 0.0 && scale <= std::numeric_limits<double>::max();
    const double usedScale = isScalable ? scale : 0.0;
    const double greatest = isScalable ? largestDistance : 0.0;
    const auto bucketOf = [usedScale, greatest](const RankedPoint& point) {
        // What is not finite has no place on the scale.
        const double distance = point.distance < greatest ? point.distance : greatest;
        return static_cast<std::size_t>(static_cast<int>(distance * usedScale));
    };
    BucketSort<kBuckets>(ranked, sorted, bucketOf, SweepOrder(points));
}

}  // namespace orl::matcher
