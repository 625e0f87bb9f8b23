#pragma once

// The comparison of triangle codes, in two forms with the same results: `plain` says what is
// computed, `sse2` compares 16 bytes at a time. `pair_kernels` is the form that this build uses;
// tests compare the two.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

// A byte of a comparison may differ by this much at most.
inline constexpr std::uint8_t kMaxTurnDifferenceSteps = 34;
inline constexpr std::uint8_t kMaxEdgeDifferenceSteps = 34;
inline constexpr std::uint8_t kMaxSideDifferenceGridUnits = 17;

// A quarter turn moves no circular byte of a regular triangle's code by more than this: turns wrap
// at 256 steps while the circle has 255, and bearings are rounded.
inline constexpr std::uint8_t kMaxStepsOfQuarterTurn = 3;

// How alike two triangles are: 1024 less their similarity. Or that they are not alike.
using PairRank = std::uint16_t;
inline constexpr PairRank kNotAlike = 1024;

using OrientationRanks = std::array<PairRank, kOrientations>;

// A difference as a factor of the cost, 0..1023: 1024 just beyond its limit.
constexpr std::uint32_t costFactor(std::uint32_t difference, std::uint32_t limit) {
    constexpr std::uint32_t kScale = 1024;
    return difference * kScale / (limit + 1);
}

// Of the three factors' product, what the similarity keeps.
constexpr PairRank rankOfFactors(std::uint32_t edge, std::uint32_t turn, std::uint32_t side) {
    constexpr unsigned kCostBitsPerPoint = 20;
    return static_cast<PairRank>(edge * turn * side >> kCostBitsPerPoint);
}

// A stretch of 128 triangles of a list, one bit each: triangles 0..63 and 64..127.
using TriangleBits [[gnu::vector_size(16)]] = std::uint64_t;
inline constexpr std::size_t kTrianglesPerStretch = 128;

// Side lengths are compared in blocks of this many triangles.
inline constexpr std::size_t kSideBlock = 16;

namespace plain {

// The rank of a pair of triangles under one cyclic order, in each orientation of the second one:
// kNotAlike where the turns, edges or sides of the two codes differ too much.
OrientationRanks ranksOf(const QuarterTurnCodes& second, const TriangleCode& first);

// Which of a stretch's triangles have sides that differ by at most 17 each from those given. Blocks
// outside `firstBlock`..`endBlock` are left out. Sides are little-endian words whose fourth byte
// does not count; `sides` holds whole blocks and is aligned to 16 bytes.
//
// Deliberate: the differences are taken modulo 256, unlike those of the pair test.
TriangleBits nearSides(std::span<const std::uint32_t, kTrianglesPerStretch> sides,
                       std::size_t firstBlock,
                       std::size_t endBlock,
                       std::uint32_t firstSides);

}  // namespace plain

}  // namespace orl::matcher

#if defined(__SSE2__)
#include "matcher/matching/kernels/pair_test_sse2.h"  // IWYU pragma: export
#endif

namespace orl::matcher {

#if defined(__SSE2__)
namespace pair_kernels = sse2;
#else
namespace pair_kernels = plain;
#endif

}  // namespace orl::matcher
