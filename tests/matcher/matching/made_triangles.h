#pragma once

// Triangles made for tests of the pair search, with side bytes as given.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "matcher/features/finger_model.h"
#include "tests/matcher/matching/searched_fingers.h"
#include "tests/support/naive_matching.h"

namespace orl::test {

using Sides = std::array<int, 3>;

inline matcher::TriangleFeature WithSides(matcher::TriangleFeature triangle, Sides sides) {
    for (std::size_t i = 0; i < sides.size(); ++i) {
        triangle.sides[i] = static_cast<std::uint8_t>(sides[i]);
    }
    return triangle;
}

// Three vertices well apart; side bytes as given, so that each test of a pair can be met alone.
inline matcher::TriangleFeature Triangle(Sides sides) {
    matcher::TriangleFeature triangle{
        .vertices = {{100, 100, 10, 1}, {200, 100, 60, 1}, {100, 20, 120, 1}}};
    return WithSides(triangle, sides);
}

// The pairs of two lists in orientation 0. It takes the lists as they stand, so that their
// triangles need not be such as the constructor makes.
inline TrianglePairs PairsOf(const std::vector<matcher::TriangleFeature>& first,
                             const std::vector<matcher::TriangleFeature>& second) {
    return SearchedFingers({3, first}, {3, second}).pairs(0);
}

// A triangle whose corners, directions included, come into themselves by a third of a turn, so that
// only the side bytes tell the cyclic orders apart.
inline matcher::TriangleFeature Radial(Sides sides) {
    const matcher::TriangleFeature triangle{
        .vertices = {{170, 100, 255, 0}, {65, 161, 85, 0}, {65, 39, 170, 0}}};
    return WithSides(triangle, sides);
}

inline matcher::TriangleFeature CornersShifted(const matcher::TriangleFeature& triangle,
                                               std::size_t shift) {
    matcher::TriangleFeature shifted = triangle;
    for (std::size_t j = 0; j < 3; ++j) {
        shifted.vertices[j] = triangle.vertices[(j + shift) % 3];
        shifted.sides[j] = triangle.sides[(j + shift) % 3];
    }
    return shifted;
}

}  // namespace orl::test
