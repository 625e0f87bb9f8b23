#include "matcher/matching/orientation.h"

#include <algorithm>
#include <cassert>

#include "matcher/features/triangle_feature.h"

namespace orl::matcher {
namespace {

constexpr int kLastGridUnit = 255;
constexpr std::uint32_t kQuarterTurnSteps = 64;  // 256-step turn

std::uint8_t mirrored(std::uint8_t coordinate) {
    return static_cast<std::uint8_t>(kLastGridUnit - coordinate);
}

}  // namespace

TriangleVertex turnedVertex(const TriangleVertex& vertex, std::uint32_t orientation) {
    assert(orientation < 4);
    TriangleVertex turned = vertex;
    turned.angle = static_cast<std::uint8_t>(vertex.angle + orientation * kQuarterTurnSteps);
    switch (orientation) {
        case 1:
            turned.x = mirrored(vertex.y);
            turned.y = vertex.x;
            break;
        case 2:
            turned.x = mirrored(vertex.x);
            turned.y = mirrored(vertex.y);
            break;
        case 3:
            turned.x = vertex.y;
            turned.y = mirrored(vertex.x);
            break;
        default:
            break;
    }
    return turned;
}

std::vector<TriangleFeature> orientationCopy(std::span<const TriangleFeature> triangles,
                                             std::uint32_t orientation) {
    std::vector<TriangleFeature> copy;
    copy.reserve(triangles.size());
    for (const TriangleFeature& triangle : triangles) {
        copy.push_back(MakeTriangleFeature(turnedVertex(triangle.vertices[0], orientation),
                                           turnedVertex(triangle.vertices[1], orientation),
                                           turnedVertex(triangle.vertices[2], orientation)));
    }
    std::stable_sort(copy.begin(), copy.end(), TriangleKeyLess);
    return copy;
}

}  // namespace orl::matcher
