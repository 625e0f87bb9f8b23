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

// All orders of three vertices: the cyclic ones that start at vertex 0, 1 and 2, then those that
// run the other way.
inline constexpr std::array<std::array<std::uint8_t, kCorners>, 6> kCornerOrders = {
    {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {1, 0, 2}, {2, 1, 0}}};

struct OrientedTriangle {
    // The vertices of the turned triangle in its own order: an index into kCornerOrders, below
    // kCorners where the cyclic order is kept.
    std::array<std::uint8_t, kOrientations> order;
    // Whether a turn reverses the vertices' cyclic order (flat triangles) or leaves an edge as it
    // is (one without length has bearing 0 in every orientation).
    bool isIrregular;
};

struct OrientedFinger {
    std::span<const TriangleFeature> triangles;  // the list that all orientations were made from
    // By triangle. Where a turn reverses the vertices, that turn's code is of the turned triangle
    // itself.
    std::span<const QuarterTurnCodes> codes;
    std::span<const OrientedTriangle> oriented;  // by triangle
};

// The finger's four orientations, held in `scratch`. Orientation 0 is the list as it stands.
// REQUIRES: the triangles were made by MakeTriangleFeature.
// Throws: std::bad_alloc.
OrientedFinger orientedFinger(std::span<const TriangleFeature> triangles, Scratch& scratch);

}  // namespace orl::matcher
