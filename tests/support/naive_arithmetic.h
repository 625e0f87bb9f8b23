#pragma once

// The angle and length arithmetic of the second matcher (naive_matching.h), trigonometry computed
// anew for each use.

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "matcher/features/finger_model.h"

namespace orl::naive {

using matcher::TriangleVertex;

// x - y when x is greater, else x - y + 255.
inline int Fold(int x, int y) {
    return x > y ? x - y : x - y + 255;
}

// Smaller arc between two values of the 255-step turn.
inline int Apart(int x, int y) {
    return std::min(255 - std::abs(x - y), std::abs(x - y));
}

// The same between undirected lines.
inline int LinesApart(int x, int y) {
    return std::min(128 - Apart(x, y), Apart(x, y));
}

inline int Mod256(int value) {
    return ((value % 256) + 256) % 256;
}

inline int Wrapped8(int value) {
    return Mod256(value) >= 128 ? Mod256(value) - 256 : Mod256(value);
}

inline int BearingSteps(int dy, int dx) {
    constexpr float kStepsPerRadian = 40.58451F;  // 255 / (2 pi)
    const float angle = std::atan2(static_cast<float>(dy), static_cast<float>(dx));
    return static_cast<int>(std::lroundf(angle * kStepsPerRadian));
}

inline int LengthByte(const TriangleVertex& p, const TriangleVertex& q) {
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return Mod256(static_cast<int>(std::lround(std::sqrt(dx * dx + dy * dy))));
}

inline int BearingByte(const TriangleVertex& from, const TriangleVertex& to) {
    return Mod256(BearingSteps(to.y - from.y, to.x - from.x));
}

}  // namespace orl::naive
