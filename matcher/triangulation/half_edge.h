#pragma once

// Index arithmetic of a half-edge mesh. Triangle t owns the half-edges 3t, 3t + 1 and 3t + 2, which
// run around it in this order. A half-edge runs from its own start point to the start point of the
// next one; the start point of the previous one lies opposite.
//
// All functions are pure and never throw.

#include <cstdint>
#include <limits>

namespace orl::matcher {

using PointIndex = std::uint64_t;
using HalfEdge = std::uint64_t;

// No such point or half-edge: all 64 bits set.
inline constexpr std::uint64_t NoIndex = std::numeric_limits<std::uint64_t>::max();

inline constexpr std::uint64_t kHalfEdgesPerTriangle = 3;

// The most half-edges of a mesh: n points have at most 2n - 5 triangles. REQUIRES: points >= 3.
constexpr std::uint64_t MaxHalfEdges(std::uint64_t points) {
    return kHalfEdgesPerTriangle * (2 * points - 5);
}

// Index of the triangle that owns a half-edge.
constexpr std::uint64_t TriangleOf(HalfEdge edge) {
    return edge / kHalfEdgesPerTriangle;
}

// The half-edge after and before a half-edge in its triangle.
constexpr HalfEdge NextHalfEdge(HalfEdge edge) {
    return edge % kHalfEdgesPerTriangle == 2 ? edge - 2 : edge + 1;
}
constexpr HalfEdge PrevHalfEdge(HalfEdge edge) {
    return edge % kHalfEdgesPerTriangle == 0 ? edge + 2 : edge - 1;
}

}  // namespace orl::matcher
