#pragma once

// The edge flips of a mesh, which keep it Delaunay while points are joined. Member functions of
// BasicDelaunayMesh; included by delaunay_mesh.cpp alone, whose sweep they are compiled into.

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::matcher {

// See Legalize.
inline constexpr std::uint64_t kMaxFlipsPerHalfEdge = 64;

// PrevHalfEdge of the half-edges of a mesh's first triangles, by table.
inline constexpr std::size_t kTabledHalfEdges = MaxHalfEdges(DelaunayMesh::kInlinePoints);
inline constexpr std::array<std::uint16_t, kTabledHalfEdges> kPrevHalfEdges = [] {
    std::array<std::uint16_t, kTabledHalfEdges> table{};
    for (std::size_t edge = 0; edge < table.size(); ++edge) {
        table[edge] = static_cast<std::uint16_t>(PrevHalfEdge(edge));
    }
    return table;
}();

// PrevHalfEdge in a mesh of such entries.
template <typename Index>
HalfEdge PrevIn(HalfEdge edge) {
    if constexpr (sizeof(Index) == sizeof(std::uint16_t)) {
        assert(edge < kPrevHalfEdges.size());
        return kPrevHalfEdges[edge];
    } else {
        return PrevHalfEdge(edge);
    }
}

// Legalize of the last half-edge of a triangle just joined, which has a twin. Most such edges stay
// as they are and are done with here.
template <typename Indices>
template <typename Circle>
inline HalfEdge BasicDelaunayMesh<Indices>::LegalizeJoined(HalfEdge t) {
    const HalfEdge a = t + 2;
    const HalfEdge ar = t + 1;
    const HalfEdge bl = PrevIn<Index>(twins_[a]);
    Circle circle(LanesOf(vertices_[ar]), LanesOf(vertices_[a]), LanesOf(vertices_[t]));
    return circle.Holds(LanesOf(vertices_[bl])) ? Legalize<Circle>(a) : ar;
}

// Flips the edge of half-edge a, and then the edges that this exposes, until the triangles around
// the point opposite a (the point being joined) are Delaunay. Returns the half-edge before the last
// one examined.
//
// Every flip of a sound mesh turns one more triangle towards that point, so there are fewer flips
// than triangles. Where twins disagree (see MoveHullEntry) nothing bounds them: after far more
// flips than that, the remaining edges stay as they are.
template <typename Indices>
template <typename Circle>
HalfEdge BasicDelaunayMesh<Indices>::Legalize(HalfEdge a) {
    std::uint64_t flipsLeft = kMaxFlipsPerHalfEdge * vertices_.size();
    flipStack_.clear();
    while (true) {
        const HalfEdge ar = PrevIn<Index>(a);
        FlipWhileIllegal<Circle>(a, ar, flipsLeft);
        if (flipStack_.empty()) {
            return ar;
        }
        a = flipStack_.PopBack();
    }
}

// Flips the edge of half-edge a until the point opposite its twin lies outside the circle of a's
// triangle, and leaves the edges that this exposes on the stack.
template <typename Indices>
template <typename Circle>
inline void BasicDelaunayMesh<Indices>::FlipWhileIllegal(HalfEdge a,
                                                         HalfEdge ar,
                                                         std::uint64_t& flipsLeft) {
    HalfEdge b = twins_[a];
    if (b == kNone) {
        return;
    }
    Circle circle(
        LanesOf(vertices_[ar]), LanesOf(vertices_[a]), LanesOf(vertices_[PrevIn<Index>(ar)]));
    while (b != kNone && flipsLeft > 0) {
        const HalfEdge bl = PrevIn<Index>(b);
        if (!circle.Holds(LanesOf(vertices_[bl]))) {
            return;
        }
        Flip(a, ar, b, bl);
        --flipsLeft;
        flipStack_.push_back(static_cast<Index>(PrevIn<Index>(bl)));
        circle.MoveOn();  // a borders another triangle now
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
template <typename Indices>
inline void BasicDelaunayMesh<Indices>::Flip(HalfEdge a, HalfEdge ar, HalfEdge b, HalfEdge bl) {
    vertices_[a] = vertices_[bl];
    vertices_[b] = vertices_[ar];
    const HalfEdge outer = twins_[bl];
    if (outer == kNone) {
        MoveHullEntry(bl, a);
    }
    PairTwins(a, outer);
    PairTwins(b, twins_[ar]);
    twins_[ar] = static_cast<Index>(bl);
    twins_[bl] = static_cast<Index>(ar);
}

// Gives the hull edge of half-edge `from` to half-edge `to`, which took its place in a flip.
//
// Deliberate: while a point is being joined the ring is broken at the points that have just left
// the hull. The walk ends at such a point, and the entry, if it lies beyond, stays as it was; twins
// and hull entries may then disagree in the finished mesh, its triangles do not change.
template <typename Indices>
void BasicDelaunayMesh<Indices>::MoveHullEntry(HalfEdge from, HalfEdge to) {
    PointIndex e = hullStart_;
    while (hullTriangle_[e] != from) {
        const PointIndex next = hullNext_[e];
        if (next == e || next == hullStart_) {
            return;
        }
        e = next;
    }
    hullTriangle_[e] = static_cast<Index>(to);
}

}  // namespace orl::matcher
