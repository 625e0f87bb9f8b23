#pragma once

// The second finger of a match in its four orientations: its triangles after 0, 1, 2 and 3 quarter
// turns in the 256 by 256 grid.
//
// A turned triangle is made anew by the triangle constructor, so its vertices stand in the order of
// that constructor, not in that of the triangle it was turned from. Nearly always this is the same
// cyclic order with another first vertex. Its side lengths are the same, as a quarter turn swaps
// and mirrors coordinates without changing a difference's size. So a turned list that is sorted
// again, ties kept, stands in the order of the list it was made from, and index u means the same
// triangle in all four.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/scratch.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

struct OrientedTriangle {
    // In list order of the vertices, so that all four compare under the same cyclic order; in the
    // turned triangle's own order where a turn reverses it.
    std::array<std::array<TriangleVertex, kCorners>, kOrientations> vertices;
    // Which of those is the turned triangle's first vertex.
    std::array<std::uint8_t, kOrientations> start;
    // Whether a turn reverses the vertices' cyclic order (flat triangles) or leaves an edge as it
    // is (one without length has bearing 0 in every orientation).
    bool isIrregular;
};

struct OrientedFinger {
    std::span<const TriangleFeature> triangles;  // the list that all orientations were made from
    std::span<const QuarterTurnCodes> codes;     // by triangle, of the vertices in `oriented`
    std::span<const OrientedTriangle> oriented;  // by triangle
};

// The turned triangle's vertices in its own order.
std::array<TriangleVertex, kCorners> orderedVertices(const OrientedTriangle& triangle,
                                                     std::size_t orientation);

// The finger's four orientations, held in `scratch`. Orientation 0 is the list as it stands.
// REQUIRES: the triangles were made by MakeTriangleFeature.
// Throws: std::bad_alloc.
OrientedFinger orientedFinger(std::span<const TriangleFeature> triangles, Scratch& scratch);

}  // namespace orl::matcher
