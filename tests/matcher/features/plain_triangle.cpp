#include "tests/matcher/features/plain_triangle.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>

namespace orl::test {

namespace {

using matcher::TriangleFeature;
using matcher::TriangleVertex;

// Where the three vertices end up, by the ranks of their bearings. Worked out by hand from the
// exchanges 0-2, 0-1, 1-2, each made only when the first bearing is the greater one. A tie between
// the second and the third, or the first two, is turned around where the first exchange moves one.
struct Permutation {
    std::array<int, 3> ranks;
    std::array<std::size_t, 3> order;  // original positions, as they stand afterwards
};
constexpr Permutation kPermutations[] = {
    {{1, 2, 3}, {0, 1, 2}},
    {{1, 3, 2}, {0, 2, 1}},
    {{2, 1, 3}, {1, 0, 2}},
    {{2, 3, 1}, {2, 0, 1}},
    {{3, 1, 2}, {1, 2, 0}},
    {{3, 2, 1}, {2, 1, 0}},
    {{1, 1, 1}, {0, 1, 2}},
    {{1, 1, 2}, {0, 1, 2}},
    {{1, 2, 1}, {0, 2, 1}},
    {{2, 1, 1}, {2, 1, 0}},
    {{1, 2, 2}, {0, 1, 2}},
    {{2, 1, 2}, {1, 0, 2}},
    {{2, 2, 1}, {2, 1, 0}},
};

std::array<int, 3> RanksOf(const std::array<int, 3>& bearings) {
    std::array<int, 3> distinct = bearings;
    std::sort(distinct.begin(), distinct.end());
    const auto end = std::unique(distinct.begin(), distinct.end());
    std::array<int, 3> ranks{};
    for (std::size_t i = 0; i < 3; ++i) {
        ranks[i] =
            static_cast<int>(std::find(distinct.begin(), end, bearings[i]) - distinct.begin()) + 1;
    }
    return ranks;
}

std::array<std::size_t, 3> OrderOf(const std::array<int, 3>& ranks) {
    for (const Permutation& permutation : kPermutations) {
        if (permutation.ranks == ranks) {
            return permutation.order;
        }
    }
    throw std::logic_error("no such ranks");
}

// The side bytes, by the four cases of how many lengths are 128 or more.
void WriteSides(std::array<int, 3> lengths, TriangleFeature& feature) {
    const auto asSigned = [](int length) { return length >= 128 ? length - 256 : length; };
    std::sort(
        lengths.begin(), lengths.end(), [&](int a, int b) { return asSigned(a) > asSigned(b); });
    const auto longOnes =
        std::count_if(lengths.begin(), lengths.end(), [](int length) { return length >= 128; });
    for (std::size_t i = 0; i < 3; ++i) {
        feature.sides[i] = static_cast<std::uint8_t>(lengths[i]);
    }
    feature.sides[3] = longOnes >= 1 ? 0xFF : 0x00;
    if (longOnes >= 2) {
        feature.sides[2] = 0xFF;
    }
    if (longOnes >= 3) {
        feature.sides[1] = 0xFF;
    }
}

}  // namespace

int PlainBearing(int dy, int dx) {
    constexpr long double kStepsPerRadian = 255.0L / (2.0L * 3.14159265358979323846264338328L);
    if (dy == 0 && dx < 0) {
        return 128;  // half a turn, 127.5, rounds away from zero
    }
    const long double steps =
        std::atan2(static_cast<long double>(dy), static_cast<long double>(dx)) * kStepsPerRadian;
    return static_cast<int>(std::lround(steps));
}

int PlainDistance(int dx, int dy) {
    // The largest length with (2 * length - 1)^2 <= 4 * square, so that half rounds up.
    const int square = dx * dx + dy * dy;
    int length = 0;
    while ((2 * length + 1) * (2 * length + 1) <= 4 * square) {
        ++length;
    }
    return length;
}

TriangleFeature PlainTriangle(const std::array<TriangleVertex, 3>& vertices) {
    const auto& [a, b, c] = vertices;
    const int centreX = ((a.x + b.x) / 2 + c.x) / 2;
    const int centreY = ((a.y + b.y) / 2 + c.y) / 2;
    std::array<int, 3> bearings{};
    for (std::size_t i = 0; i < 3; ++i) {
        bearings[i] = PlainBearing(vertices[i].y - centreY, vertices[i].x - centreX);
    }
    const auto order = OrderOf(RanksOf(bearings));
    TriangleFeature feature;
    std::array<int, 3> lengths{};
    for (std::size_t i = 0; i < 3; ++i) {
        feature.vertices[i] = vertices[order[i]];
        const TriangleVertex& from = vertices[order[i]];
        const TriangleVertex& to = vertices[order[(i + 1) % 3]];
        lengths[i] = PlainDistance(from.x - to.x, from.y - to.y) % 256;
    }
    WriteSides(lengths, feature);
    return feature;
}

}  // namespace orl::test
