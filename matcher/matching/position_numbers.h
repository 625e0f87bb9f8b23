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

// A set of positions by number. All from number 127 on share the last bit.
using PositionBits [[gnu::vector_size(16)]] = std::uint64_t;
inline constexpr std::size_t kSharedPositionBit = 127;

constexpr PositionBits positionBit(std::size_t number) {
    constexpr std::size_t kWordBits = 64;
    const std::size_t bit = number < kSharedPositionBit ? number : kSharedPositionBit;
    const std::uint64_t word = std::uint64_t{1} << bit % kWordBits;
    return bit < kWordBits ? PositionBits{word, 0} : PositionBits{0, word};
}

// A quarter turn moves different positions to different ones, so the numbers serve all
// orientations of the triangles.
struct PositionNumbers {
    // By triangle and vertex: equal for vertices at the same spot, whatever their direction and
    // type.
    std::span<const std::array<std::uint16_t, kCorners>> ofTriangles;
    std::span<const PositionBits> bitsOfTriangles;  // the same as sets, by triangle
    std::size_t count = 0;                          // all numbers lie below
};

// Numbers the positions in the order in which the list first mentions them. The result lives in
// `scratch`. REQUIRES: at most kMaxNumberedTriangles. Throws: std::bad_alloc.
PositionNumbers positionNumbers(std::span<const TriangleFeature> triangles, Scratch& scratch);

}  // namespace orl::matcher
