#pragma once

// Numbers for the grid positions of a finger's minutiae, so that sets of positions are short
// arrays.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/scratch.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

// The most triangles whose positions can be numbered; a finger has 251.
inline constexpr std::size_t kMaxNumberedTriangles = 10000;

// A quarter turn moves different positions to different ones, so the numbers serve all
// orientations of the triangles.
struct PositionNumbers {
    // By triangle and vertex: equal for vertices at the same spot, whatever their direction and
    // type.
    std::span<const std::array<std::uint16_t, kCorners>> ofTriangles;
    std::size_t count = 0;  // all numbers lie below
};

// Numbers the positions in the order in which the list first mentions them. The result lives in
// `scratch`. REQUIRES: at most kMaxNumberedTriangles. Throws: std::bad_alloc.
PositionNumbers positionNumbers(std::span<const TriangleFeature> triangles, Scratch& scratch);

}  // namespace orl::matcher
