#pragma once

// The triangle feature worked out plainly, without the lookup tables and without the shipped sorts:
// what MakeTriangleFeature is compared with.

#include <array>

#include "matcher/features/finger_model.h"

namespace orl::test {

// Direction of (dx, dy) at 255 steps a turn, worked out in extended precision.
int PlainBearing(int dy, int dx);

// Length of (dx, dy), rounded, in whole numbers only; its low byte is what features keep.
int PlainDistance(int dx, int dy);

matcher::TriangleFeature PlainTriangle(const std::array<matcher::TriangleVertex, 3>& vertices);

}  // namespace orl::test
