// The second matcher's quarter turns: every triangle rebuilt from its turned vertices.

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <tuple>
#include <utility>

#include "tests/support/naive_arithmetic.h"
#include "tests/support/naive_matching.h"

namespace orl::naive {
namespace {

TriangleFeature Rebuilt(std::array<TriangleVertex, 3> v) {
    const int cx = (((v[0].x + v[1].x) >> 1) + v[2].x) >> 1;
    const int cy = (((v[0].y + v[1].y) >> 1) + v[2].y) >> 1;
    const auto bearing = [&](const TriangleVertex& p) { return BearingSteps(p.y - cy, p.x - cx); };
    for (const auto& [i, j] : {std::pair{0U, 2U}, std::pair{0U, 1U}, std::pair{1U, 2U}}) {
        if (bearing(v[i]) > bearing(v[j])) {
            std::swap(v[i], v[j]);
        }
    }
    std::array<int, 3> lengths = {Wrapped8(LengthByte(v[0], v[1])),
                                  Wrapped8(LengthByte(v[1], v[2])),
                                  Wrapped8(LengthByte(v[2], v[0]))};
    std::sort(lengths.begin(), lengths.end(), std::greater<>());
    TriangleFeature feature{{v[0], v[1], v[2]}, {}};
    bool filled = false;
    for (unsigned i = 0; i < 3; ++i) {
        feature.sides[i] = filled ? std::uint8_t{255} : static_cast<std::uint8_t>(lengths[i]);
        filled = filled || lengths[i] < 0;
    }
    feature.sides[3] = filled ? std::uint8_t{255} : std::uint8_t{0};
    return feature;
}

TriangleVertex QuarterTurned(TriangleVertex v) {
    const auto x = static_cast<std::uint8_t>(255 - v.y);
    return {x, v.x, static_cast<std::uint8_t>(Mod256(v.angle + 64)), v.type};
}

}  // namespace

std::vector<TriangleFeature> Turned(std::span<const TriangleFeature> triangles, int quarterTurns) {
    std::multimap<std::tuple<int, int, int>, TriangleFeature> sorted;
    for (const TriangleFeature& triangle : triangles) {
        std::array<TriangleVertex, 3> v = {
            triangle.vertices[0], triangle.vertices[1], triangle.vertices[2]};
        for (int turn = 0; turn < quarterTurns; ++turn) {
            std::transform(v.begin(), v.end(), v.begin(), QuarterTurned);
        }
        const TriangleFeature f = Rebuilt(v);
        const auto key =
            std::tuple(Wrapped8(f.sides[0]), Wrapped8(f.sides[1]), Wrapped8(f.sides[2]));
        sorted.emplace(key, f);
    }
    std::vector<TriangleFeature> result;
    for (const auto& [key, feature] : sorted) {
        result.push_back(feature);
    }
    return result;
}

}  // namespace orl::naive
