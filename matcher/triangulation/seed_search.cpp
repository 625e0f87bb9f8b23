#include "matcher/triangulation/seed_search.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "matcher/triangulation/double_lanes.h"

namespace orl::matcher {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

// The first point of the smallest measure below the largest double, or NoIndex when none is below.
// `measure` takes two points and gives theirs; what is not a number never is the smallest.
template <typename Measure>
inline PointIndex FirstSmallest(std::span<const double> points, Measure measure) {
    constexpr std::uint64_t kBlock = 128;  // points
    const std::uint64_t count = points.size() / 2;
    PointIndex smallest = NoIndex;
    double best = kLargest;
    for (PointIndex start = 0; start < count; start += kBlock) {
        // Uninitialised: filled as far as it is read
        std::array<DoubleLanes, kBlock / 2> measures;
        const std::uint64_t end = std::min(start + kBlock, count);
        DoubleLanes least = BothLanes(kLargest);
        DoubleLanes* next = measures.data();
        ForPairs(points.data(), start, end, [&](PointIndex, PointIndex, const PointPair& pair) {
            const DoubleLanes measured = measure(pair);
            *next++ = measured;
            least = MinLanes(measured, least);
        });
        const double blockBest = std::min(least[0], least[1]);
        if (blockBest < best) {
            best = blockBest;
            std::uint64_t k = 0;
            while (measures[k / 2][k % 2] != best) {
                ++k;
            }
            smallest = start + k;
        }
    }
    return smallest;
}

DoubleLanes SquaredDistances(const PointPair& pair, DoubleLanes x, DoubleLanes y) {
    const DoubleLanes dx = pair.x - x;
    const DoubleLanes dy = pair.y - y;
    return dx * dx + dy * dy;
}

PointIndex NearestTo(std::span<const double> points, const Point& centre) {
    const DoubleLanes x = BothLanes(centre.x);
    const DoubleLanes y = BothLanes(centre.y);
    return FirstSmallest(points,
                         [x, y](const PointPair& pair) { return SquaredDistances(pair, x, y); });
}

// A point's distance from itself and its copies is zero, and thus out of the search.
PointIndex NearestDistinctFrom(std::span<const double> points, const Point& p) {
    const DoubleLanes x = BothLanes(p.x);
    const DoubleLanes y = BothLanes(p.y);
    return FirstSmallest(points, [x, y](const PointPair& pair) {
        const DoubleLanes distances = SquaredDistances(pair, x, y);
        return VoidLanes(distances == BothLanes(0.0), distances);
    });
}

// Circumradius of a, b and each of two points, term by term. A copy of a gives cl = 0 and b itself
// d = 0, which leaves both out of the search.
class CircleWith {
  public:
    CircleWith(const Point& a, const Point& b)
        : ax_(BothLanes(a.x)),
          ay_(BothLanes(a.y)),
          dx_(BothLanes(b.x) - ax_),
          dy_(BothLanes(b.y) - ay_),
          bl_(dx_ * dx_ + dy_ * dy_) {}

    DoubleLanes operator()(const PointPair& c) const {
        const DoubleLanes zero = BothLanes(0.0);
        const DoubleLanes ex = c.x - ax_;
        const DoubleLanes ey = c.y - ay_;
        const DoubleLanes cl = ex * ex + ey * ey;
        const DoubleLanes d = dx_ * ey - dy_ * ex;
        const DoubleLanes X = ey * bl_ - dy_ * cl;
        const DoubleLanes Y = dx_ * cl - ex * bl_;
        const DoubleLanes radius = (X * X + Y * Y) * ((BothLanes(1.0) / d) * BothLanes(0.25)) / d;
        return VoidLanes((bl_ == zero) | (cl == zero) | (d == zero), radius);
    }

  private:
    DoubleLanes ax_;
    DoubleLanes ay_;
    DoubleLanes dx_;
    DoubleLanes dy_;
    DoubleLanes bl_;
};

}  // namespace

PointBox BoxOf(std::span<const double> points) {
    // Adding and taking off a number of this size leaves no fraction of a number up to kGreatest.
    constexpr double kRounder = 6755399441055744.0;  // 1.5 * 2^52
    constexpr double kGreatest = 1048576.0;
    PointLanes low = BothLanes(kLargest);
    PointLanes high = BothLanes(std::numeric_limits<double>::min());
    LaneBits hasFraction = {0, 0};
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        const PointLanes p = LoadPoint(&points[i]);
        low = MinLanes(p, low);
        high = MaxLanes(p, high);
        hasFraction |= (p + BothLanes(kRounder)) - BothLanes(kRounder) != p;
    }
    const auto isNarrow = [](double from, double to) {
        return from >= -kGreatest && to <= kGreatest && to - from <= kExactSpan;
    };
    return {.low = {.x = low[0], .y = low[1]},
            .high = {.x = high[0], .y = high[1]},
            .isExact = (hasFraction[0] | hasFraction[1]) == 0 && isNarrow(low[0], high[0]) &&
                       isNarrow(low[1], high[1])};
}

Seed ChooseSeed(std::span<const double> points, const PointBox& box) {
    const auto at = [points](PointIndex i) {
        return Point{.x = points[2 * i], .y = points[2 * i + 1]};
    };
    const Point centre{.x = (box.low.x + box.high.x) * 0.5, .y = (box.low.y + box.high.y) * 0.5};
    const PointIndex i0 = NearestTo(points, centre);
    const PointIndex i1 = i0 == NoIndex ? NoIndex : NearestDistinctFrom(points, at(i0));
    const PointIndex i2 =
        i1 == NoIndex ? NoIndex : FirstSmallest(points, CircleWith(at(i0), at(i1)));
    if (i2 == NoIndex) {
        throw std::runtime_error("not triangulation");
    }
    if (Orient(at(i0), at(i1), at(i2))) {
        return {.i0 = i0, .i1 = i2, .i2 = i1};
    }
    return {.i0 = i0, .i1 = i1, .i2 = i2};
}

}  // namespace orl::matcher
