#include "matcher/triangulation/delaunay_mesh.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "matcher/triangulation/double_lanes.h"
#include "matcher/triangulation/mesh_flips.h"

namespace orl::matcher {

namespace {

// Two points closer than this in both coordinates are one point.
constexpr double kDuplicateTolerance = std::numeric_limits<double>::epsilon();

// Tells whether points coincide. Whole numbers do when they are equal.
template <typename Circle>
class Spot {
  public:
    // A spot that coincides with nothing.
    Spot() : p_(BothLanes(std::numeric_limits<double>::quiet_NaN())) {}
    explicit Spot(PointLanes p) : p_(p) {}

    bool Coincides(const Spot& other) const {
        return std::abs(p_[0] - other.p_[0]) <= kDuplicateTolerance &&
               std::abs(p_[1] - other.p_[1]) <= kDuplicateTolerance;
    }

  private:
    PointLanes p_;
};

template <>
class Spot<ExactCircle> {
  public:
    Spot() = default;
    explicit Spot(PointLanes p)
        : bits_(__builtin_bit_cast(std::uint64_t, __builtin_convertvector(p, Whole))) {}

    bool Coincides(const Spot& other) const { return bits_ == other.bits_; }

  private:
    using Whole [[gnu::vector_size(2 * sizeof(std::int32_t))]] = std::int32_t;

    std::uint64_t bits_ = NoIndex - (NoIndex >> 1U);  // beyond the range of exact coordinates
};

}  // namespace

template <typename Indices>
BasicDelaunayMesh<Indices>::BasicDelaunayMesh(std::span<const double> points)
    : BasicDelaunayMesh(points, Unbuilt{}) {
    assert((std::is_same_v<Indices, WideIndices>) || PointCount() <= kInlinePoints);
    const PointBox box = BoxOf(points);
    const Seed seed = ChooseSeed(points, box);
    centre_ = Circumcentre(PointAt(seed.i0), PointAt(seed.i1), PointAt(seed.i2));
    StartHull(seed);
    if (box.isExact) {
        SweepPoints<ExactCircle>(seed);
    } else {
        SweepPoints<PlainCircle>(seed);
    }
}

template <typename Indices>
HalfEdge BasicDelaunayMesh<Indices>::AddTriangle(
    PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c) {
    const HalfEdge t = vertices_.size();
    Index* const corners = vertices_.Extend(kHalfEdgesPerTriangle);
    corners[0] = static_cast<Index>(i0);
    corners[1] = static_cast<Index>(i1);
    corners[2] = static_cast<Index>(i2);
    Link(t, a);
    Link(t + 1, b);
    Link(t + 2, c);
    return t;
}

// AddTriangle for the sweep, where the arrays are in step and the neighbours are earlier
// half-edges, so that every link has its place.
template <typename Indices>
inline HalfEdge BasicDelaunayMesh<Indices>::JoinTriangle(
    PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c) {
    const HalfEdge t = vertices_.size();
    assert(twins_.size() == t);
    assert((a == kNone || a < t) && (b == kNone || b < t) && c < t);
    Index* const corners = vertices_.Extend(kHalfEdgesPerTriangle);
    corners[0] = static_cast<Index>(i0);
    corners[1] = static_cast<Index>(i1);
    corners[2] = static_cast<Index>(i2);
    twins_.ExtendInStep(kHalfEdgesPerTriangle);
    PairTwins(t, a);
    PairTwins(t + 1, b);
    twins_[t + 2] = static_cast<Index>(c);
    twins_[c] = static_cast<Index>(t + 2);
    return t;
}

// Makes two existing half-edges twins; b may be kNone.
template <typename Indices>
inline void BasicDelaunayMesh<Indices>::PairTwins(HalfEdge a, HalfEdge b) {
    twins_[a] = static_cast<Index>(b);
    if (b != kNone) {
        twins_[b] = static_cast<Index>(a);
    }
}

template <typename Indices>
void BasicDelaunayMesh<Indices>::Link(HalfEdge a, HalfEdge b) {
    SetTwin(a, b);
    if (b != kNone) {
        SetTwin(b, a);
    }
}

// The twins grow in step with the half-edges: a link that would leave a gap is reported.
template <typename Indices>
void BasicDelaunayMesh<Indices>::SetTwin(HalfEdge edge, HalfEdge twin) {
    if (edge > twins_.size()) {
        throw std::runtime_error("Cannot link edge");
    }
    if (edge == twins_.size()) {
        twins_.push_back(static_cast<Index>(twin));
    } else {
        twins_[edge] = static_cast<Index>(twin);
    }
}

// Bucket of a point by a measure that rises with its angle around the centre, from 0 on the
// negative x axis through 1/4 (-y), 1/2 (+x) and 3/4 (+y) to 1. A bucket is only where a search
// starts, so the centre itself may go anywhere: it goes into bucket 0.
template <typename Indices>
std::uint64_t BasicDelaunayMesh<Indices>::HullKey(const Point& p) const {
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

// The seed triangle as first hull and first triangle of the mesh.
template <typename Indices>
void BasicDelaunayMesh<Indices>::StartHull(const Seed& seed) {
    const std::uint64_t n = PointCount();
    const auto [i0, i1, i2] = seed;
    hashSize_ = static_cast<std::uint64_t>(std::ceil(std::sqrt(static_cast<double>(n))));
    hullHash_.assign(hashSize_, kNone);
    hullPrev_.assign(n, 0);
    hullNext_.assign(n, 0);
    hullTriangle_.assign(n, 0);
    hullKeys_.Extend(n);

    hullStart_ = i0;
    hullNext_[i0] = hullPrev_[i2] = static_cast<Index>(i1);
    hullNext_[i1] = hullPrev_[i0] = static_cast<Index>(i2);
    hullNext_[i2] = hullPrev_[i1] = static_cast<Index>(i0);
    hullTriangle_[i0] = 0;
    hullTriangle_[i1] = 1;
    hullTriangle_[i2] = 2;
    for (const PointIndex i : {i0, i1, i2}) {
        hullHash_[HullKey(PointAt(i))] = static_cast<Index>(i);
    }

    vertices_.reserve(MaxHalfEdges(n));
    twins_.reserve(MaxHalfEdges(n));
    AddTriangle(i0, i1, i2, kNone, kNone, kNone);
}

// Sweeps all points in SweepOrder, coincident points in index order.
template <typename Indices>
template <typename Circle>
void BasicDelaunayMesh<Indices>::SweepPoints(const Seed& seed) {
    if (PointCount() <= kInlinePoints) {
        // Uninitialised: filled as far as they are read
        std::array<RankedPoint, kInlinePoints> ranked;
        std::array<RankedPoint, kInlinePoints> sorted;
        const double largestDistance =
            RankPoints(points_, centre_, hashSize_, ranked.data(), hullKeys_.begin());
        SortFewPoints(
            points_, std::span(ranked).first(PointCount()), largestDistance, sorted.data());
        Sweep<Circle>(std::span(sorted).first(PointCount()), seed);
        return;
    }
    std::vector<RankedPoint> ranked(PointCount());
    RankPoints(points_, centre_, hashSize_, ranked.data(), hullKeys_.begin());
    std::stable_sort(ranked.begin(), ranked.end(), SweepOrder(points_));
    Sweep<Circle>(ranked, seed);
}

template <typename Indices>
template <typename Circle>
void BasicDelaunayMesh<Indices>::Sweep(std::span<const RankedPoint> order, const Seed& seed) {
    using PointSpot = Spot<Circle>;
    const PointSpot seeds[] = {
        PointSpot(LanesOf(seed.i0)), PointSpot(LanesOf(seed.i1)), PointSpot(LanesOf(seed.i2))};
    PointSpot previous;
    for (const RankedPoint& ranked : order) {
        const PointIndex i = ranked.index;
        const PointSpot spot(LanesOf(i));
        if (spot.Coincides(previous)) {
            continue;
        }
        previous = spot;
        if (!spot.Coincides(seeds[0]) && !spot.Coincides(seeds[1]) && !spot.Coincides(seeds[2])) {
            JoinPoint<Circle>(i);
        }
    }
}

// Joins a point to every hull edge that it sees. A point that sees none (it lies on the hull or, by
// rounding, inside) is left out.
template <typename Indices>
template <typename Circle>
inline void BasicDelaunayMesh<Indices>::JoinPoint(PointIndex i) {
    const PointIndex start = hullPrev_[FindLiveHullPoint(hullKeys_[i])];
    const PointIndex visible = FindVisibleEdge(LanesOf(i), start);
    if (visible == NoIndex) {
        return;
    }
    const PointIndex first = hullNext_[visible];
    const HalfEdge t = JoinTriangle(visible, i, first, kNone, kNone, hullTriangle_[visible]);
    hullTriangle_[i] = static_cast<Index>(LegalizeJoined<Circle>(t));
    hullTriangle_[visible] = static_cast<Index>(t);

    const PointIndex next = WalkForward<Circle>(i, first);
    // Edges before the one found were passed by the search unless it started there.
    const PointIndex e = visible == start ? WalkBackward<Circle>(i, visible) : visible;
    SpliceIntoHull(i, e, next);
}

// A hull point near the direction of a bucket, to start the search for visible edges from.
template <typename Indices>
inline PointIndex BasicDelaunayMesh<Indices>::FindLiveHullPoint(std::uint64_t key) const {
    std::uint64_t bucket = key;
    do {
        const PointIndex s = hullHash_[bucket];
        if (s != kNone && hullNext_[s] != s) {
            return s;
        }
        bucket = bucket + 1 == hashSize_ ? 0 : bucket + 1;
    } while (bucket != key);
    assert(false && "the point joined last is on the hull, and its bucket holds a hull point");
    return hullStart_;
}

// Start point of the first hull edge from `start` on that p sees, or NoIndex.
template <typename Indices>
inline PointIndex BasicDelaunayMesh<Indices>::FindVisibleEdge(PointLanes p,
                                                              PointIndex start) const {
    PointIndex e = start;
    PointLanes from = LanesOf(e);
    do {
        const PointIndex q = hullNext_[e];
        const PointLanes to = LanesOf(q);
        if (Orient(p, from, to)) {
            return e;
        }
        e = q;
        from = to;
    } while (e != start);
    return NoIndex;
}

// Joins point i to the visible hull edges from `next` on; returns the first point that stays on the
// hull.
template <typename Indices>
template <typename Circle>
inline PointIndex BasicDelaunayMesh<Indices>::WalkForward(PointIndex i, PointIndex next) {
    const PointLanes p = LanesOf(i);
    PointIndex q = hullNext_[next];
    while (Orient(p, LanesOf(next), LanesOf(q))) {
        const HalfEdge t = JoinTriangle(next, i, q, hullTriangle_[i], kNone, hullTriangle_[next]);
        hullTriangle_[i] = static_cast<Index>(LegalizeJoined<Circle>(t));
        hullNext_[next] = static_cast<Index>(next);
        next = q;
        q = hullNext_[next];
    }
    return next;
}

// Joins point i to the visible hull edges that end at `e`; returns the last point that stays on the
// hull. Never goes past a point that has left it, as it could where rounding shows point i the
// whole ring.
template <typename Indices>
template <typename Circle>
inline PointIndex BasicDelaunayMesh<Indices>::WalkBackward(PointIndex i, PointIndex e) {
    const PointLanes p = LanesOf(i);
    PointIndex q = hullPrev_[e];
    while (hullNext_[q] != q && Orient(p, LanesOf(q), LanesOf(e))) {
        const HalfEdge t = JoinTriangle(q, i, e, kNone, hullTriangle_[e], hullTriangle_[q]);
        LegalizeJoined<Circle>(t);
        hullTriangle_[q] = static_cast<Index>(t);
        hullNext_[e] = static_cast<Index>(e);
        e = q;
        q = hullPrev_[e];
    }
    return e;
}

template <typename Indices>
inline void BasicDelaunayMesh<Indices>::SpliceIntoHull(PointIndex i,
                                                       PointIndex e,
                                                       PointIndex next) {
    hullPrev_[i] = static_cast<Index>(e);
    hullStart_ = e;
    hullPrev_[next] = static_cast<Index>(i);
    hullNext_[e] = static_cast<Index>(i);
    hullNext_[i] = static_cast<Index>(next);
    hullHash_[hullKeys_[i]] = static_cast<Index>(i);
    hullHash_[hullKeys_[e]] = static_cast<Index>(e);
}

template class BasicDelaunayMesh<WideIndices>;
template class BasicDelaunayMesh<NarrowIndices>;

// For tests, which call it by itself.
template HalfEdge BasicDelaunayMesh<WideIndices>::Legalize<PlainCircle>(HalfEdge);
template HalfEdge BasicDelaunayMesh<WideIndices>::Legalize<ExactCircle>(HalfEdge);

}  // namespace orl::matcher
