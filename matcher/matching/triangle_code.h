#pragma once

// Triangles in the form in which the pair test compares them: 16 bytes, so that one cyclic order of
// two triangles is compared by a handful of byte operations.
//
//   bytes  0..2   turn from vertex j's direction to the next vertex's           255-step circle
//   bytes  4..6   from vertex j's direction to the edge from the next vertex    255-step circle
//   bytes  8..10  from vertex j's direction to the edge from the previous one   255-step circle
//   bytes 12..14  side lengths                                                  plain bytes
//   bytes  3, 7, 11, 15  zero
//
// Deliberate: an edge's bearing counts by its low 8 bits, so -64 steps read as 192 on the circle of
// 255.
//
// "Next" is cyclic: 0, 1, 2, 0. Comparing the second triangle with the first under a cyclic order
// that starts at the first triangle's vertex p means comparing its code with the first's code
// turned by p: three bytes of each group moved up.

#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

inline constexpr std::size_t kCorners = 3;
inline constexpr std::size_t kOrientations = 4;  // quarter turns of the second finger

struct alignas(16) TriangleCode {
    std::array<std::uint8_t, 16> bytes;

    friend bool operator==(const TriangleCode&, const TriangleCode&) = default;
};

inline constexpr std::size_t kTurnGroup = 0;
inline constexpr std::size_t kNextEdgeGroup = 4;
inline constexpr std::size_t kPreviousEdgeGroup = 8;
inline constexpr std::size_t kSideGroup = 12;

// The code of a triangle with its vertices in their present order.
TriangleCode codeOf(const TriangleFeature& triangle);

// The codes of one triangle under the three cyclic orders that start at vertex 0, 1 and 2.
using CyclicCodes = std::array<TriangleCode, kCorners>;

// Which vertex of a triangle is the first one of its copy after 0, 1, 2 and 3 quarter turns.
using QuarterTurnStarts = std::array<std::uint8_t, kOrientations>;

// The codes of one triangle after 0, 1, 2 and 3 quarter turns in the grid, for comparison in the
// vertex order of the triangle itself. A turn may change the first vertex, while the sides are
// sorted and stay; so a turned triangle whose first vertex is s has its sides moved up by s here.
using QuarterTurnCodes = std::array<TriangleCode, kOrientations>;

// The vertex after `quarterTurns` (0..3) quarter turns: (x, y) goes to (255 - y, x), and its
// direction grows by 64 of 256 steps, a turn.
inline TriangleVertex turnedVertex(const TriangleVertex& vertex, std::size_t quarterTurns) {
    assert(quarterTurns < kOrientations);
    // A vertex as a little-endian word. Odd numbers of turns swap the coordinates, then some are
    // mirrored.
    constexpr std::array<std::uint32_t, kOrientations> kMirrored = {
        0, 0x000000FF, 0x0000FFFF, 0x0000FF00};
    constexpr std::uint32_t kQuarterTurn = 0x00400000;
    constexpr std::uint32_t kAngle = 0x00FF0000;
    constexpr std::uint32_t kCoordinates = 0x0000FFFF;
    constexpr unsigned kByteBits = 8;
    static_assert(std::endian::native == std::endian::little);
    const auto word = std::bit_cast<std::uint32_t>(vertex);
    const std::uint32_t coordinates = word & kCoordinates;
    const std::uint32_t swapped = coordinates << kByteBits | coordinates >> kByteBits;
    const std::uint32_t angle = word + static_cast<std::uint32_t>(quarterTurns) * kQuarterTurn;
    return std::bit_cast<TriangleVertex>(
        (((quarterTurns % 2 != 0 ? swapped : coordinates) ^ kMirrored[quarterTurns]) &
         kCoordinates) |
        (angle & kAngle) | (word & ~(kAngle | kCoordinates)));
}

}  // namespace orl::matcher
