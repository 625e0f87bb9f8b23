#include "matcher/triangulation/delaunay_mesh.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "matcher/triangulation/bucket_sort.h"

namespace orl::matcher {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

// Two points closer than this in both coordinates are one point.
constexpr double kDuplicateTolerance = std::numeric_limits<double>::epsilon();

constexpr std::uint64_t kMaxFlipsPerHalfEdge = 64;

// Makes two existing half-edges twins; b may be NoIndex.
void PairTwins(HalfEdge* twins, HalfEdge a, HalfEdge b) {
    twins[a] = b;
    if (b != NoIndex) {
        twins[b] = a;
    }
}

bool Coincide(const Point& p, const Point& q) {
    return std::abs(p.x - q.x) <= kDuplicateTolerance && std::abs(p.y - q.y) <= kDuplicateTolerance;
}

}  // namespace

DelaunayMesh::DelaunayMesh(std::span<const double> points) : DelaunayMesh(points, Unbuilt{}) {
    const Seed seed = ChooseSeed();
    centre_ = Circumcentre(PointAt(seed.i0), PointAt(seed.i1), PointAt(seed.i2));
    StartHull(seed);
    if (PointCount() <= kInlinePoints) {
        SweepFewPoints(seed);
    } else {
        SweepManyPoints(seed);
    }
}

HalfEdge DelaunayMesh::AddTriangle(
    PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c) {
    const HalfEdge t = vertices_.size();
    PointIndex* const corners = vertices_.Extend(kHalfEdgesPerTriangle);
    corners[0] = i0;
    corners[1] = i1;
    corners[2] = i2;
    Link(t, a);
    Link(t + 1, b);
    Link(t + 2, c);
    return t;
}

// AddTriangle for the sweep, where the arrays are in step and the neighbours are earlier
// half-edges, so that the twins are written straight away; else Link finds out what is wrong.
inline HalfEdge DelaunayMesh::JoinTriangle(
    PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c) {
    const HalfEdge t = vertices_.size();
    const auto isEarlier = [t](HalfEdge edge) { return edge == NoIndex || edge < t; };
    if (twins_.size() != t || !isEarlier(a) || !isEarlier(b) || !isEarlier(c)) {
        return AddTriangle(i0, i1, i2, a, b, c);
    }
    PointIndex* const corners = vertices_.Extend(kHalfEdgesPerTriangle);
    corners[0] = i0;
    corners[1] = i1;
    corners[2] = i2;
    twins_.Extend(kHalfEdgesPerTriangle);
    HalfEdge* const twins = twins_.begin();
    PairTwins(twins, t, a);
    PairTwins(twins, t + 1, b);
    PairTwins(twins, t + 2, c);
    return t;
}

void DelaunayMesh::Link(HalfEdge a, HalfEdge b) {
    SetTwin(a, b);
    if (b != NoIndex) {
        SetTwin(b, a);
    }
}

// The twins grow in step with the half-edges: a link that would leave a gap is reported.
void DelaunayMesh::SetTwin(HalfEdge edge, HalfEdge twin) {
    if (edge > twins_.size()) {
        throw std::runtime_error("Cannot link edge");
    }
    if (edge == twins_.size()) {
        twins_.push_back(twin);
    } else {
        twins_[edge] = twin;
    }
}

// Bucket of a point by a measure that rises with its angle around the centre, from 0 on the
// negative x axis through 1/4 (-y), 1/2 (+x) and 3/4 (+y) to 1. A bucket is only where a search
// starts, so the centre itself may go anywhere: it goes into bucket 0.
std::uint64_t DelaunayMesh::HullKey(const Point& p) const {
    const double dx = p.x - centre_.x;
    const double dy = p.y - centre_.y;
    const double slope = dx / (std::abs(dx) + std::abs(dy));
    if (std::isnan(slope)) {
        return 0;
    }
    const double pseudoAngle = (dy > 0.0 ? 3.0 - slope : 1.0 + slope) * 0.25;
    const double position = pseudoAngle * static_cast<double>(static_cast<std::int64_t>(hashSize_));
    const auto bucket = static_cast<std::uint64_t>(static_cast<std::int64_t>(position));
    return bucket < hashSize_ ? bucket : bucket % hashSize_;
}

// Deliberate: the maxima start at the smallest positive double, not at the most negative one. Where
// every coordinate is negative the box reaches up to zero, which moves the seed.
Point DelaunayMesh::BoxCentre() const {
    Point low{.x = kLargest, .y = kLargest};
    Point high{.x = std::numeric_limits<double>::min(), .y = std::numeric_limits<double>::min()};
    for (PointIndex i = 0; i < PointCount(); ++i) {
        const Point p = PointAt(i);
        low = {.x = std::min(low.x, p.x), .y = std::min(low.y, p.y)};
        high = {.x = std::max(high.x, p.x), .y = std::max(high.y, p.y)};
    }
    return {.x = (low.x + high.x) * 0.5, .y = (low.y + high.y) * 0.5};
}

PointIndex DelaunayMesh::NearestTo(const Point& centre) const {
    PointIndex nearest = NoIndex;
    double best = kLargest;
    for (PointIndex i = 0; i < PointCount(); ++i) {
        const double distance = SquaredDistance(PointAt(i), centre);
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return nearest;
}

PointIndex DelaunayMesh::NearestDistinctFrom(PointIndex i0) const {
    PointIndex nearest = NoIndex;
    double best = kLargest;
    for (PointIndex i = 0; i < PointCount(); ++i) {
        const double distance = SquaredDistance(PointAt(i), PointAt(i0));
        if (i != i0 && distance > 0.0 && distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return nearest;
}

PointIndex DelaunayMesh::SmallestCircleWith(PointIndex i0, PointIndex i1) const {
    PointIndex smallest = NoIndex;
    double best = kLargest;
    for (PointIndex i = 0; i < PointCount(); ++i) {
        if (i == i0 || i == i1) {
            continue;
        }
        const double radius = Circumradius(PointAt(i0), PointAt(i1), PointAt(i));
        if (radius < best) {
            best = radius;
            smallest = i;
        }
    }
    return smallest;
}

// Three points near the middle that form a small circle, in the mesh's winding.
DelaunayMesh::Seed DelaunayMesh::ChooseSeed() const {
    const PointIndex i0 = NearestTo(BoxCentre());
    const PointIndex i1 = i0 == NoIndex ? NoIndex : NearestDistinctFrom(i0);
    const PointIndex i2 = i1 == NoIndex ? NoIndex : SmallestCircleWith(i0, i1);
    if (i2 == NoIndex) {
        throw std::runtime_error("not triangulation");
    }
    if (Orient(PointAt(i0), PointAt(i1), PointAt(i2))) {
        return {.i0 = i0, .i1 = i2, .i2 = i1};
    }
    return {.i0 = i0, .i1 = i1, .i2 = i2};
}

// The order of the sweep: by distance from the centre, then x, then y. Distances that are not
// finite equal each other.
bool DelaunayMesh::ComesBefore(const RankedPoint& left, const RankedPoint& right) const {
    const double difference = left.distance - right.distance;
    if (difference != 0.0) {
        return difference < 0.0;
    }
    const Point p = PointAt(left.index);
    const Point q = PointAt(right.index);
    return p.x != q.x ? p.x < q.x : p.y < q.y;
}

// All points with their distances, in index order. Returns the largest distance.
double DelaunayMesh::RankPoints(std::span<RankedPoint> ranked) const {
    double largest = 0.0;
    for (PointIndex i = 0; i < ranked.size(); ++i) {
        const double distance = SquaredDistance(PointAt(i), centre_);
        ranked[i] = {.distance = distance, .index = i};
        largest = std::max(largest, distance);
    }
    return largest;
}

// Points spread evenly over a disc have evenly spread squared distances. Where these cannot be
// scaled to buckets (overflow, or all next to nothing) one bucket takes them all.
void DelaunayMesh::SortFewPoints(std::span<const RankedPoint> ranked,
                                 double largestDistance,
                                 RankedPoint* sorted) const {
    constexpr std::size_t kBuckets = 64;
    const double scale = static_cast<double>(kBuckets) / largestDistance;
    const bool isScalable = scale > 0.0 && scale <= kLargest;
    const auto bucketOf = [scale, isScalable](const RankedPoint& point) -> std::size_t {
        if (!isScalable) {
            return 0;
        }
        const auto bucket = static_cast<std::size_t>(static_cast<int>(point.distance * scale));
        return std::min(bucket, kBuckets - 1);
    };
    BucketSort<kBuckets>(
        ranked, sorted, bucketOf, [this](const RankedPoint& left, const RankedPoint& right) {
            return ComesBefore(left, right);
        });
}

// The seed triangle as first hull and first triangle of the mesh.
void DelaunayMesh::StartHull(const Seed& seed) {
    const std::uint64_t n = PointCount();
    const auto [i0, i1, i2] = seed;
    hashSize_ = static_cast<std::uint64_t>(std::ceil(std::sqrt(static_cast<double>(n))));
    hullHash_.assign(hashSize_, NoIndex);
    hullPrev_.assign(n, 0);
    hullNext_.assign(n, 0);
    hullTriangle_.assign(n, 0);
    hullKeys_.Extend(n);

    hullStart_ = i0;
    hullNext_[i0] = hullPrev_[i2] = i1;
    hullNext_[i1] = hullPrev_[i0] = i2;
    hullNext_[i2] = hullPrev_[i1] = i0;
    hullTriangle_[i0] = 0;
    hullTriangle_[i1] = 1;
    hullTriangle_[i2] = 2;
    for (const PointIndex i : {i0, i1, i2}) {
        hullKeys_[i] = HullKey(PointAt(i));
        hullHash_[hullKeys_[i]] = i;
    }

    vertices_.reserve(MaxHalfEdges(n));
    twins_.reserve(MaxHalfEdges(n));
    AddTriangle(i0, i1, i2, NoIndex, NoIndex, NoIndex);
}

// Both sweep all points in the order of ComesBefore, coincident points in index order.
void DelaunayMesh::SweepFewPoints(const Seed& seed) {
    std::array<RankedPoint, kInlinePoints>
        ranked;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::array<RankedPoint, kInlinePoints>
        sorted;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const std::span<RankedPoint> points = std::span(ranked).first(PointCount());
    const double largestDistance = RankPoints(points);
    SortFewPoints(points, largestDistance, sorted.data());
    Sweep(std::span(sorted).first(PointCount()), seed);
}

void DelaunayMesh::SweepManyPoints(const Seed& seed) {
    std::vector<RankedPoint> ranked(PointCount());
    RankPoints(ranked);
    std::stable_sort(
        ranked.begin(), ranked.end(), [this](const RankedPoint& left, const RankedPoint& right) {
            return ComesBefore(left, right);
        });
    Sweep(ranked, seed);
}

void DelaunayMesh::Sweep(std::span<const RankedPoint> order, const Seed& seed) {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    Point previous{.x = kNone, .y = kNone};  // coincides with nothing
    for (const RankedPoint& ranked : order) {
        const PointIndex i = ranked.index;
        const Point p = PointAt(i);
        if (Coincide(p, previous)) {
            continue;
        }
        previous = p;
        if (!Coincide(p, PointAt(seed.i0)) && !Coincide(p, PointAt(seed.i1)) &&
            !Coincide(p, PointAt(seed.i2))) {
            JoinPoint(i);
        }
    }
}

// Joins a point to every hull edge that it sees. A point that sees none (it lies on the hull or, by
// rounding, inside) is left out.
inline void DelaunayMesh::JoinPoint(PointIndex i) {
    const Point p = PointAt(i);
    hullKeys_[i] = HullKey(p);
    const PointIndex start = hullPrev_[FindLiveHullPoint(hullKeys_[i])];
    const PointIndex visible = FindVisibleEdge(p, start);
    if (visible == NoIndex) {
        return;
    }
    const PointIndex first = hullNext_[visible];
    const HalfEdge t = JoinTriangle(visible, i, first, NoIndex, NoIndex, hullTriangle_[visible]);
    hullTriangle_[i] = Legalize(t + 2);
    hullTriangle_[visible] = t;

    const PointIndex next = WalkForward(i, first);
    // Edges before the one found were passed by the search unless it started there.
    const PointIndex e = visible == start ? WalkBackward(i, visible) : visible;
    SpliceIntoHull(i, e, next);
}

// A hull point near the direction of a bucket, to start the search for visible edges from.
inline PointIndex DelaunayMesh::FindLiveHullPoint(std::uint64_t key) const {
    std::uint64_t bucket = key;
    do {
        const PointIndex s = hullHash_[bucket];
        if (s != NoIndex && hullNext_[s] != s) {
            return s;
        }
        bucket = bucket + 1 == hashSize_ ? 0 : bucket + 1;
    } while (bucket != key);
    assert(false && "the point joined last is on the hull, and its bucket holds a hull point");
    return hullStart_;
}

// Start point of the first hull edge from `start` on that p sees, or NoIndex.
inline PointIndex DelaunayMesh::FindVisibleEdge(const Point& p, PointIndex start) const {
    PointIndex e = start;
    do {
        const PointIndex q = hullNext_[e];
        if (Orient(p, PointAt(e), PointAt(q))) {
            return e;
        }
        e = q;
    } while (e != start);
    return NoIndex;
}

// Joins point i to the visible hull edges from `next` on; returns the first point that stays on the
// hull.
inline PointIndex DelaunayMesh::WalkForward(PointIndex i, PointIndex next) {
    const Point p = PointAt(i);
    PointIndex q = hullNext_[next];
    while (Orient(p, PointAt(next), PointAt(q))) {
        const HalfEdge t = JoinTriangle(next, i, q, hullTriangle_[i], NoIndex, hullTriangle_[next]);
        hullTriangle_[i] = Legalize(t + 2);
        hullNext_[next] = next;
        next = q;
        q = hullNext_[next];
    }
    return next;
}

// Joins point i to the visible hull edges that end at `e`; returns the last point that stays on the
// hull. Never goes past a point that has left it, as it could where rounding shows point i the
// whole ring.
inline PointIndex DelaunayMesh::WalkBackward(PointIndex i, PointIndex e) {
    const Point p = PointAt(i);
    PointIndex q = hullPrev_[e];
    while (hullNext_[q] != q && Orient(p, PointAt(q), PointAt(e))) {
        const HalfEdge t = JoinTriangle(q, i, e, NoIndex, hullTriangle_[e], hullTriangle_[q]);
        Legalize(t + 2);
        hullTriangle_[q] = t;
        hullNext_[e] = e;
        e = q;
        q = hullPrev_[e];
    }
    return e;
}

inline void DelaunayMesh::SpliceIntoHull(PointIndex i, PointIndex e, PointIndex next) {
    hullPrev_[i] = e;
    hullStart_ = e;
    hullPrev_[next] = i;
    hullNext_[e] = i;
    hullNext_[i] = next;
    hullHash_[hullKeys_[i]] = i;
    hullHash_[hullKeys_[e]] = e;
}

// Flips the edge of half-edge a, and then the edges that this exposes, until the triangles around
// the point opposite a (the point being joined) are Delaunay. Returns the half-edge before the last
// one examined.
//
// Every flip of a sound mesh turns one more triangle towards that point, so there are fewer flips
// than triangles. Where twins disagree (see MoveHullEntry) nothing bounds them: after far more
// flips than that, the remaining edges stay as they are.
HalfEdge DelaunayMesh::Legalize(HalfEdge a) {
    std::uint64_t flipsLeft = kMaxFlipsPerHalfEdge * vertices_.size();
    flipStack_.clear();
    while (true) {
        const HalfEdge ar = PrevHalfEdge(a);
        FlipWhileIllegal(a, ar, flipsLeft);
        if (flipStack_.empty()) {
            return ar;
        }
        a = flipStack_.PopBack();
    }
}

// Flips the edge of half-edge a until the point opposite its twin lies outside the circle of a's
// triangle, and leaves the edges that this exposes on the stack.
inline void DelaunayMesh::FlipWhileIllegal(HalfEdge a, HalfEdge ar, std::uint64_t& flipsLeft) {
    HalfEdge b = twins_[a];
    if (b == NoIndex) {
        return;
    }
    const PointLanes p0 = LanesOf(vertices_[ar]);
    const PointLanes pl = LanesOf(vertices_[PrevHalfEdge(ar)]);
    PointLanes pr = LanesOf(vertices_[a]);
    while (b != NoIndex && flipsLeft > 0) {
        const HalfEdge bl = PrevHalfEdge(b);
        const PointLanes p1 = LanesOf(vertices_[bl]);
        if (!InCircle(p0, pr, pl, p1)) {
            return;
        }
        Flip(a, ar, b, bl);
        --flipsLeft;
        flipStack_.push_back(PrevHalfEdge(bl));
        pr = p1;  // a borders another triangle now
        b = twins_[a];
    }
}

//            pl                       pl
//           /||\                     /  \        .
//       al / || \ bl             al /    \ a
//         /  ||  \                 /      \      .
//     p0 /  a||b  \ p1         p0 /___ar___\ p1
//        \   ||   /      =>       \   bl   /
//         \  ||  /                 \      /
//       ar \ || / br              b \    / br
//           \||/                     \  /
//            pr                       pr
inline void DelaunayMesh::Flip(HalfEdge a, HalfEdge ar, HalfEdge b, HalfEdge bl) {
    vertices_[a] = vertices_[bl];
    vertices_[b] = vertices_[ar];
    const HalfEdge outer = twins_[bl];
    if (outer == NoIndex) {
        MoveHullEntry(bl, a);
    }
    HalfEdge* const twins = twins_.begin();
    PairTwins(twins, a, outer);
    PairTwins(twins, b, twins[ar]);
    PairTwins(twins, ar, bl);
}

// Gives the hull edge of half-edge `from` to half-edge `to`, which took its place in a flip.
//
// Deliberate: while a point is being joined the ring is broken at the points that have just left
// the hull. The walk ends at such a point, and the entry, if it lies beyond, stays as it was; twins
// and hull entries may then disagree in the finished mesh, its triangles do not change.
void DelaunayMesh::MoveHullEntry(HalfEdge from, HalfEdge to) {
    PointIndex e = hullStart_;
    while (hullTriangle_[e] != from) {
        const PointIndex next = hullNext_[e];
        if (next == e || next == hullStart_) {
            return;
        }
        e = next;
    }
    hullTriangle_[e] = to;
}

}  // namespace orl::matcher
