#pragma once

// Two doubles worked on at once, each by the operation that a single one would go through, so that
// every lane has the bits of the plain form. All functions are pure and never throw.

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orl::matcher {

using DoubleLanes [[gnu::vector_size(2 * sizeof(double))]] = double;
using LaneBits [[gnu::vector_size(2 * sizeof(std::int64_t))]] = std::int64_t;

inline DoubleLanes BothLanes(double value) {
    return DoubleLanes{value, value};
}

// Per lane a < b ? a : b and a > b ? a : b: the second where one is not a number.
inline DoubleLanes MinLanes(DoubleLanes a, DoubleLanes b) {
#if defined(__SSE2__)
    return _mm_min_pd(a, b);
#else
    return DoubleLanes{a[0] < b[0] ? a[0] : b[0], a[1] < b[1] ? a[1] : b[1]};
#endif
}
inline DoubleLanes MaxLanes(DoubleLanes a, DoubleLanes b) {
#if defined(__SSE2__)
    return _mm_max_pd(a, b);
#else
    return DoubleLanes{a[0] > b[0] ? a[0] : b[0], a[1] > b[1] ? a[1] : b[1]};
#endif
}

inline LaneBits BitsOf(DoubleLanes lanes) {
    return __builtin_bit_cast(LaneBits, lanes);
}
inline DoubleLanes LanesFromBits(LaneBits bits) {
    return __builtin_bit_cast(DoubleLanes, bits);
}

// Per lane: not a number where the mask is set, else the lane as it is.
inline DoubleLanes VoidLanes(LaneBits mask, DoubleLanes lanes) {
    return LanesFromBits(mask | BitsOf(lanes));
}

inline DoubleLanes AbsLanes(DoubleLanes lanes) {
    constexpr std::int64_t kAllButSign = 0x7FFFFFFFFFFFFFFF;
    return LanesFromBits(BitsOf(lanes) & LaneBits{kAllButSign, kAllButSign});
}

// Two points, the x of both in one pair of lanes and the y of both in the other.
struct PointPair {
    DoubleLanes x;
    DoubleLanes y;
};

// Points i and j of x0, y0, x1, y1, ...
inline PointPair PairOfPoints(const double* points, std::uint64_t i, std::uint64_t j) {
    return {.x = DoubleLanes{points[2 * i], points[2 * j]},
            .y = DoubleLanes{points[2 * i + 1], points[2 * j + 1]}};
}

// Calls visit(i, j, pair) for the points from `start` to `end`, two at a time; both are the last
// point where it has no partner.
template <typename Visit>
inline void ForPairs(const double* points, std::uint64_t start, std::uint64_t end, Visit visit) {
    std::uint64_t i = start;
    for (; i + 1 < end; i += 2) {
        visit(i, i + 1, PairOfPoints(points, i, i + 1));
    }
    if (i < end) {
        visit(i, i, PairOfPoints(points, i, i));
    }
}

}  // namespace orl::matcher
