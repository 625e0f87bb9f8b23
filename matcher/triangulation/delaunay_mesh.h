#pragma once

// A Delaunay triangulation of points in the plane, built by a radial sweep with an advancing convex
// hull and edge flips, held as a half-edge mesh. Plain double arithmetic, no exact fallback.
//
// Every triangle (a, b, c) has the same winding: (xb - xa)(yc - ya) - (yb - ya)(xc - xa) < 0, which
// is counter-clockwise on an image whose y axis points down. Points that coincide with an earlier
// one appear in no triangle.
//
// A mesh is complete when its constructor returns and does not change afterwards. It has no shared
// state: any number of threads may triangulate at once. A mesh of up to kInlinePoints points keeps
// everything inside itself and takes no heap memory.
//
// The mesh comes in two forms that differ in nothing but the width of their entries: DelaunayMesh
// (64 bits, some 18 KiB) takes any number of points; SmallDelaunayMesh (16 bits, some 5 KiB, and
// faster for it) at most kInlinePoints.

#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/triangulation/fixed_index_array.h"
#include "matcher/triangulation/half_edge.h"
#include "matcher/triangulation/index_array.h"
#include "matcher/triangulation/predicates.h"
#include "matcher/triangulation/seed_search.h"
#include "matcher/triangulation/sweep_order.h"

namespace orl::matcher {

// Arrays of a mesh, each with room for kInlineCapacity entries inside itself.
struct WideIndices {
    using Index = std::uint64_t;
    template <std::size_t kInlineCapacity>
    using Array = IndexArray<kInlineCapacity>;
};
struct NarrowIndices {
    using Index = std::uint16_t;
    template <std::size_t kInlineCapacity>
    using Array = FixedIndexArray<kInlineCapacity>;
};

template <typename Indices>
class BasicDelaunayMesh {
  public:
    static constexpr std::size_t kInlinePoints = 128;

    using Index = typename Indices::Index;
    using PointArray = typename Indices::template Array<kInlinePoints>;
    using HalfEdgeArray = typename Indices::template Array<MaxHalfEdges(kInlinePoints)>;

    // NoIndex as an entry of this mesh.
    static constexpr Index kNone = static_cast<Index>(NoIndex);

    // Triangulates points (x0, y0, x1, y1, ...), which are not copied: the caller keeps them alive
    // and unchanged for the life of the mesh. A last single value is not a point.
    // REQUIRES: every coordinate is finite; for a SmallDelaunayMesh, at most kInlinePoints points,
    // whose coordinates are whole numbers of at most 2^25.
    // Throws: std::runtime_error "not triangulation" when no triangle can be formed (fewer than
    // three points, all on one line, all at one spot); std::runtime_error "Cannot link edge" on a
    // broken internal invariant; std::bad_alloc.
    explicit BasicDelaunayMesh(std::span<const double> points);
    BasicDelaunayMesh(const BasicDelaunayMesh&) = delete;
    BasicDelaunayMesh& operator=(const BasicDelaunayMesh&) = delete;

    // The triangles in the order of construction: for each half-edge, the point where it starts.
    const HalfEdgeArray& vertices() const { return vertices_; }

    // For each half-edge, the half-edge that runs the other way along the same edge, or kNone
    // where the edge lies on the convex hull.
    const HalfEdgeArray& twins() const { return twins_; }

    // For each hull point, the next one around the hull. A point that has left the hull is its own
    // successor; the entry of a point that never reached it stays 0.
    const PointArray& hullNext() const { return hullNext_; }

    // A point on the hull.
    PointIndex hullStart() const { return hullStart_; }

  private:
    friend class DelaunayMeshTestPeer;

    // An empty mesh over the points, for the constructor and for tests of the primitives.
    struct Unbuilt {};
    // Uninitialised: arrays fill as the mesh grows
    BasicDelaunayMesh(std::span<const double> points, Unbuilt /*tag*/) : points_(points) {}

    Point PointAt(PointIndex i) const { return {.x = points_[2 * i], .y = points_[2 * i + 1]}; }
    PointLanes LanesOf(PointIndex i) const { return LoadPoint(points_.data() + 2 * i); }
    std::uint64_t PointCount() const { return points_.size() / 2; }

    // Mesh primitives.
    HalfEdge AddTriangle(
        PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c);
    HalfEdge JoinTriangle(
        PointIndex i0, PointIndex i1, PointIndex i2, HalfEdge a, HalfEdge b, HalfEdge c);
    void Link(HalfEdge a, HalfEdge b);
    void SetTwin(HalfEdge edge, HalfEdge twin);
    std::uint64_t HullKey(const Point& p) const;

    void StartHull(const Seed& seed);

    // The sweep. Circle, ExactCircle or PlainCircle, answers whether a point lies in a circle.
    template <typename Circle>
    void SweepPoints(const Seed& seed);
    template <typename Circle>
    void Sweep(std::span<const RankedPoint> order, const Seed& seed);
    template <typename Circle>
    void JoinPoint(PointIndex i);
    PointIndex FindLiveHullPoint(std::uint64_t key) const;
    PointIndex FindVisibleEdge(PointLanes p, PointIndex start) const;
    template <typename Circle>
    PointIndex WalkForward(PointIndex i, PointIndex next);
    template <typename Circle>
    PointIndex WalkBackward(PointIndex i, PointIndex e);
    void SpliceIntoHull(PointIndex i, PointIndex e, PointIndex next);

    // Edge flips.
    template <typename Circle>
    HalfEdge LegalizeJoined(HalfEdge t);
    template <typename Circle>
    HalfEdge Legalize(HalfEdge a);
    template <typename Circle>
    void FlipWhileIllegal(HalfEdge a, HalfEdge ar, std::uint64_t& flipsLeft);
    void Flip(HalfEdge a, HalfEdge ar, HalfEdge b, HalfEdge bl);
    void PairTwins(HalfEdge a, HalfEdge b);
    void MoveHullEntry(HalfEdge from, HalfEdge to);

    static constexpr std::size_t kInlineBuckets = 12;  // the square root of kInlinePoints, up

    std::span<const double> points_;
    HalfEdgeArray vertices_;
    HalfEdgeArray twins_;
    PointArray hullPrev_;
    PointArray hullNext_;
    PointArray hullTriangle_;  // for a hull point, the half-edge to the next hull point
    PointArray hullKeys_;      // HullKey of every point
    PointIndex hullStart_ = 0;
    typename Indices::template Array<kInlineBuckets> hullHash_;  // hull points by angle
    Point centre_;  // circumcentre of the seed triangle
    std::uint64_t hashSize_ = 0;
    IndexArray<kInlinePoints, Index> flipStack_;
};

using DelaunayMesh = BasicDelaunayMesh<WideIndices>;
using SmallDelaunayMesh = BasicDelaunayMesh<NarrowIndices>;

extern template class BasicDelaunayMesh<WideIndices>;
extern template class BasicDelaunayMesh<NarrowIndices>;

}  // namespace orl::matcher
