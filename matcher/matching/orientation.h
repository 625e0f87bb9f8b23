#pragma once

// Quarter-turn copies of a finger's triangles, in the 256 by 256 grid.

#include <cstdint>
#include <span>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

// A vertex after `orientation` quarter turns of the grid, 0..3; its type is kept. Directions turn
// by 64 steps each, modulo 256.
//
//   orientation   x         y         direction
//   0             x         y         d
//   1             255 - y   x         d + 64
//   2             255 - x   255 - y   d + 128
//   3             y         255 - x   d + 192
TriangleVertex turnedVertex(const TriangleVertex& vertex, std::uint32_t orientation);

// Every triangle rebuilt from its turned vertices, the copy in the order of a finger's triangle
// list; triangles of equal key keep the order of `triangles`.
// REQUIRES: orientation in 0..3. Throws: std::bad_alloc.
std::vector<TriangleFeature> orientationCopy(std::span<const TriangleFeature> triangles,
                                             std::uint32_t orientation);

}  // namespace orl::matcher
