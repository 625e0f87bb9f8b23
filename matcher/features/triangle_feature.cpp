#include "matcher/features/triangle_feature.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/features/lookup_tables.h"

namespace orl::matcher {

namespace {

// Deliberate: the third vertex weighs twice as much as each of the others; this is no centroid.
constexpr int WeightedCentre(int a, int b, int c) {
    return (((a + b) >> 1) + c) >> 1;
}

std::int16_t BearingFromCentre(const TriangleVertex& vertex, int centreX, int centreY) {
    return Bearing(static_cast<std::int16_t>(vertex.y - centreY),
                   static_cast<std::int16_t>(vertex.x - centreX));
}

constexpr int SignedByte(std::uint8_t byte) {
    return static_cast<int>(static_cast<std::int8_t>(byte));
}

}  // namespace

VertexOrder BearingOrder(const TriangleVertex& a,
                         const TriangleVertex& b,
                         const TriangleVertex& c) {
    const int centreX = WeightedCentre(a.x, b.x, c.x);
    const int centreY = WeightedCentre(a.y, b.y, c.y);
    return OrderOfBearings(BearingFromCentre(a, centreX, centreY),
                           BearingFromCentre(b, centreX, centreY),
                           BearingFromCentre(c, centreX, centreY));
}

void OrderTriangleVertices(TriangleVertex (&vertices)[3]) {
    const VertexOrder order = BearingOrder(vertices[0], vertices[1], vertices[2]);
    const std::array<TriangleVertex, 3> unordered = {vertices[0], vertices[1], vertices[2]};
    for (std::size_t i = 0; i < order.size(); ++i) {
        vertices[i] = unordered[order[i]];
    }
}

TriangleFeature OrderedTriangle(const TriangleVertex& a,
                                const TriangleVertex& b,
                                const TriangleVertex& c) {
    TriangleFeature feature{.vertices = {a, b, c}};
    OrderTriangleVertices(feature.vertices);
    return feature;
}

// Deliberate: the lengths are joined sign-extended, so that one of 128 or more overwrites every
// byte above its own.
std::uint32_t SideLengthWord(std::uint8_t d0, std::uint8_t d1, std::uint8_t d2) {
    int longest = SignedByte(d0);
    int middle = SignedByte(d1);
    int shortest = SignedByte(d2);
    const auto descending = [](int& first, int& second) {
        const int greater = std::max(first, second);
        second = std::min(first, second);
        first = greater;
    };
    descending(longest, middle);
    descending(middle, shortest);
    descending(longest, middle);
    return ((static_cast<std::uint32_t>(shortest) << 8U | static_cast<std::uint32_t>(middle))
            << 8U) |
           static_cast<std::uint32_t>(longest);
}

TriangleFeature MakeTriangleFeature(const TriangleVertex& a,
                                    const TriangleVertex& b,
                                    const TriangleVertex& c) {
    TriangleFeature feature = OrderedTriangle(a, b, c);
    StoreLittleEndian(SideLengthWord(Distance(a, b), Distance(b, c), Distance(c, a)),
                      feature.sides);
    return feature;
}

}  // namespace orl::matcher
