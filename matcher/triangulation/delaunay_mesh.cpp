#include "matcher/triangulation/delaunay_mesh.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace orl::matcher {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

// Two points closer than this in both coordinates are one point.
constexpr double kDuplicateTolerance = std::numeric_limits<double>::epsilon();

constexpr std::uint64_t kMaxFlipsPerHalfEdge = 64;

bool Coincide(const Point& p, const Point& q) {
    return std::abs(p.x - q.x) <= kDuplicateTolerance && std::abs(p.y - q.y) <= kDuplicateTolerance;
}

}  // namespace

DelaunayMesh::DelaunayMesh(std::span<const double> points) : DelaunayMesh(points, Unbuilt{}) {
    const Seed seed = ChooseSeed();
    centre_ = Circumcentre(PointAt(seed.i0), PointAt(seed.i1), PointAt(seed.i2));
    const std::vector<PointIndex> order = SortByCentreDistance();
    StartHull(seed);
    Sweep(order, seed);
}

HalfEdge DelaunayMesh::AddTriangle(
    PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c) {
    const HalfEdge t = vertices_.size();
    vertices_.push_back(i0);
    vertices_.push_back(i1);
    vertices_.push_back(i2);
    Link(t, a);
    Link(t + 1, b);
    Link(t + 2, c);
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
    const double bucket = std::floor(pseudoAngle * static_cast<double>(hashSize_));
    return static_cast<std::uint64_t>(bucket) % hashSize_;
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

// All point indices by distance from the centre, then x, then y; coincident points in index order.
std::vector<PointIndex> DelaunayMesh::SortByCentreDistance() const {
    std::vector<PointIndex> order(PointCount());
    std::iota(order.begin(), order.end(), PointIndex{0});
    std::stable_sort(order.begin(), order.end(), [this](PointIndex i, PointIndex j) {
        const Point p = PointAt(i);
        const Point q = PointAt(j);
        const double difference = SquaredDistance(p, centre_) - SquaredDistance(q, centre_);
        if (difference != 0.0) {
            return difference < 0.0;
        }
        return p.x != q.x ? p.x < q.x : p.y < q.y;
    });
    return order;
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

    hullStart_ = i0;
    hullNext_[i0] = hullPrev_[i2] = i1;
    hullNext_[i1] = hullPrev_[i0] = i2;
    hullNext_[i2] = hullPrev_[i1] = i0;
    hullTriangle_[i0] = 0;
    hullTriangle_[i1] = 1;
    hullTriangle_[i2] = 2;
    for (const PointIndex i : {i0, i1, i2}) {
        hullHash_[HullKey(PointAt(i))] = i;
    }

    // n points have at most 2n - 5 triangles.
    const std::uint64_t maxHalfEdges = kHalfEdgesPerTriangle * (2 * n - 5);
    vertices_.reserve(maxHalfEdges);
    twins_.reserve(maxHalfEdges);
    AddTriangle(i0, i1, i2, NoIndex, NoIndex, NoIndex);
}

void DelaunayMesh::Sweep(const std::vector<PointIndex>& order, const Seed& seed) {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    Point previous{.x = kNone, .y = kNone};  // coincides with nothing
    for (const PointIndex i : order) {
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
void DelaunayMesh::JoinPoint(PointIndex i) {
    const Point p = PointAt(i);
    const PointIndex start = hullPrev_[FindLiveHullPoint(p)];
    const PointIndex visible = FindVisibleEdge(p, start);
    if (visible == NoIndex) {
        return;
    }
    const PointIndex first = hullNext_[visible];
    const HalfEdge t = AddTriangle(visible, i, first, NoIndex, NoIndex, hullTriangle_[visible]);
    hullTriangle_[i] = Legalize(t + 2);
    hullTriangle_[visible] = t;

    const PointIndex next = WalkForward(i, first);
    // Edges before the one found were passed by the search unless it started there.
    const PointIndex e = visible == start ? WalkBackward(i, visible) : visible;
    SpliceIntoHull(i, e, next);
}

// A hull point near the point's direction, to start the search for visible edges from.
PointIndex DelaunayMesh::FindLiveHullPoint(const Point& p) const {
    const std::uint64_t key = HullKey(p);
    for (std::uint64_t j = 0; j < hashSize_; ++j) {
        const PointIndex s = hullHash_[(key + j) % hashSize_];
        if (s != NoIndex && hullNext_[s] != s) {
            return s;
        }
    }
    assert(false && "the point joined last is on the hull, and its bucket holds a hull point");
    return hullStart_;
}

// Start point of the first hull edge from `start` on that p sees, or NoIndex.
PointIndex DelaunayMesh::FindVisibleEdge(const Point& p, PointIndex start) const {
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
PointIndex DelaunayMesh::WalkForward(PointIndex i, PointIndex next) {
    const Point p = PointAt(i);
    PointIndex q = hullNext_[next];
    while (Orient(p, PointAt(next), PointAt(q))) {
        const HalfEdge t = AddTriangle(next, i, q, hullTriangle_[i], NoIndex, hullTriangle_[next]);
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
PointIndex DelaunayMesh::WalkBackward(PointIndex i, PointIndex e) {
    const Point p = PointAt(i);
    PointIndex q = hullPrev_[e];
    while (hullNext_[q] != q && Orient(p, PointAt(q), PointAt(e))) {
        const HalfEdge t = AddTriangle(q, i, e, NoIndex, hullTriangle_[e], hullTriangle_[q]);
        Legalize(t + 2);
        hullTriangle_[q] = t;
        hullNext_[e] = e;
        e = q;
        q = hullPrev_[e];
    }
    return e;
}

void DelaunayMesh::SpliceIntoHull(PointIndex i, PointIndex e, PointIndex next) {
    hullPrev_[i] = e;
    hullStart_ = e;
    hullPrev_[next] = i;
    hullNext_[e] = i;
    hullNext_[i] = next;
    hullHash_[HullKey(PointAt(i))] = i;
    hullHash_[HullKey(PointAt(e))] = e;
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
        const HalfEdge b = twins_[a];
        if (b != NoIndex && flipsLeft > 0 && IsIllegal(a, b)) {
            Flip(a, b);
            --flipsLeft;
            flipStack_.push_back(NextHalfEdge(b));
            continue;  // a borders another triangle now
        }
        if (flipStack_.empty()) {
            return PrevHalfEdge(a);
        }
        a = flipStack_.back();
        flipStack_.pop_back();
    }
}

// True when the point opposite b lies inside the circle of a's triangle.
bool DelaunayMesh::IsIllegal(HalfEdge a, HalfEdge b) const {
    const Point p0 = PointAt(vertices_[PrevHalfEdge(a)]);
    const Point pr = PointAt(vertices_[a]);
    const Point pl = PointAt(vertices_[NextHalfEdge(a)]);
    const Point p1 = PointAt(vertices_[PrevHalfEdge(b)]);
    return InCircle(p0, pr, pl, p1);
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
void DelaunayMesh::Flip(HalfEdge a, HalfEdge b) {
    const HalfEdge ar = PrevHalfEdge(a);
    const HalfEdge bl = PrevHalfEdge(b);
    vertices_[a] = vertices_[bl];
    vertices_[b] = vertices_[ar];
    const HalfEdge outer = twins_[bl];
    if (outer == NoIndex) {
        MoveHullEntry(bl, a);
    }
    Link(a, outer);
    Link(b, twins_[ar]);
    Link(ar, bl);
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
