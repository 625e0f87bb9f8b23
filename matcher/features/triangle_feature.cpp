#include "matcher/features/triangle_feature.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

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

constexpr std::int8_t SignedByte(std::uint8_t byte) {
    return static_cast<std::int8_t>(byte);
}

void SortDescendingAsSigned(std::array<std::uint8_t, 3>& lengths) {
    const auto compareExchange = [&lengths](std::size_t i, std::size_t j) {
        if (SignedByte(lengths[i]) < SignedByte(lengths[j])) {
            std::swap(lengths[i], lengths[j]);
        }
    };
    compareExchange(0, 1);
    compareExchange(1, 2);
    compareExchange(0, 1);
}

constexpr std::uint32_t SignExtended(std::uint8_t length) {
    return static_cast<std::uint32_t>(SignedByte(length));
}

// Deliberate: the lengths are joined sign-extended, so one of 128 or more fills every byte above
// its own with 0xFF.
void WriteSides(const std::array<std::uint8_t, 3>& lengths, TriangleFeature& feature) {
    const std::uint32_t word = ((SignExtended(lengths[2]) << 8U) | SignExtended(lengths[1])) << 8U |
                               SignExtended(lengths[0]);
    feature.sides[0] = static_cast<std::uint8_t>(word);
    feature.sides[1] = static_cast<std::uint8_t>(word >> 8U);
    feature.sides[2] = static_cast<std::uint8_t>(word >> 16U);
    feature.sides[3] = static_cast<std::uint8_t>(word >> 24U);
}

}  // namespace

void OrderTriangleVertices(TriangleVertex (&vertices)[3]) {
    const int centreX = WeightedCentre(vertices[0].x, vertices[1].x, vertices[2].x);
    const int centreY = WeightedCentre(vertices[0].y, vertices[1].y, vertices[2].y);
    std::array<std::int16_t, 3> bearings{};
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        bearings[i] = BearingFromCentre(vertices[i], centreX, centreY);
    }
    const auto compareExchange = [&](std::size_t i, std::size_t j) {
        if (bearings[i] > bearings[j]) {
            std::swap(bearings[i], bearings[j]);
            std::swap(vertices[i], vertices[j]);
        }
    };
    compareExchange(0, 2);
    compareExchange(0, 1);
    compareExchange(1, 2);
}

TriangleFeature OrderedTriangle(const TriangleVertex& a,
                                const TriangleVertex& b,
                                const TriangleVertex& c) {
    TriangleFeature feature{.vertices = {a, b, c}};
    OrderTriangleVertices(feature.vertices);
    return feature;
}

TriangleFeature MakeTriangleFeature(const TriangleVertex& a,
                                    const TriangleVertex& b,
                                    const TriangleVertex& c) {
    TriangleFeature feature = OrderedTriangle(a, b, c);
    const auto& [first, second, third] = feature.vertices;
    std::array<std::uint8_t, 3> lengths = {
        Distance(first, second), Distance(second, third), Distance(third, first)};
    SortDescendingAsSigned(lengths);
    WriteSides(lengths, feature);
    return feature;
}

bool TriangleKeyLess(const TriangleFeature& left, const TriangleFeature& right) {
    const auto key = [](const TriangleFeature& feature) {
        return std::tuple(SignedByte(feature.sides[0]),
                          SignedByte(feature.sides[1]),
                          SignedByte(feature.sides[2]));
    };
    return key(left) < key(right);
}

}  // namespace orl::matcher
