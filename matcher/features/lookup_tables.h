#pragma once

// Bearings, distances, cosines and sines by table. Each table is built once per process, by the
// first lookup that needs it (other threads wait for it); afterwards lookups only read and take no
// lock. All angles are steps of the 255-step turn. The lookups check no index: callers keep to the
// stated ranges.

#include <cstdint>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

// Direction of the vector (dx, dy) in steps: 0 along +x, growing toward +y, -127..128, and 0 for
// the null vector. REQUIRES: dy and dx in -255..255.
std::int16_t Bearing(std::int16_t dy, std::int16_t dx);

// Distance between two grid points in grid units, rounded half away from zero and kept modulo 256:
// (0,0)-(255,255) is 360.6 long and reads as 105. The wrap is part of the stored side lengths; do
// not clamp.
std::uint8_t Distance(const TriangleVertex& p, const TriangleVertex& q);

// Cosine and sine of an angle in steps, as the platform's cosf and sinf give them.
// REQUIRES: steps in -255..255.
float Cos(std::int16_t steps);
float Sin(std::int16_t steps);

}  // namespace orl::matcher
