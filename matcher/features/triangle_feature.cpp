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

constexpr std::uint32_t SignExtended(std::uint8_t length) {
    return static_cast<std::uint32_t>(SignedByte(length));
}

void StoreLittleEndian(std::uint32_t word, std::uint8_t (&bytes)[4]) {
    bytes[0] = static_cast<std::uint8_t>(word);
    bytes[1] = static_cast<std::uint8_t>(word >> 8U);
    bytes[2] = static_cast<std::uint8_t>(word >> 16U);
    bytes[3] = static_cast<std::uint8_t>(word >> 24U);
}

}  // namespace

VertexOrder BearingOrder(const TriangleVertex& a,
                         const TriangleVertex& b,
                         const TriangleVertex& c) {
    // Which vertices come first, second and third, by the exchanges made: bit 0 for positions 0 and
    // 2, bit 1 for 0 and 1, bit 2 for 1 and 2.
    static constexpr std::array<VertexOrder, 8> kOrders = {{{0, 1, 2},
                                                            {2, 1, 0},
                                                            {1, 0, 2},
                                                            {1, 2, 0},
                                                            {0, 2, 1},
                                                            {2, 0, 1},
                                                            {1, 2, 0},
                                                            {1, 0, 2}}};
    const int centreX = WeightedCentre(a.x, b.x, c.x);
    const int centreY = WeightedCentre(a.y, b.y, c.y);
    int first = BearingFromCentre(a, centreX, centreY);
    int second = BearingFromCentre(b, centreX, centreY);
    int third = BearingFromCentre(c, centreX, centreY);
    std::size_t exchanges = 0;
    const auto compareExchange = [&exchanges](int& low, int& high, std::size_t step) {
        const bool exchange = low > high;
        exchanges |= std::size_t{exchange} << step;
        const int smaller = exchange ? high : low;
        high = exchange ? low : high;
        low = smaller;
    };
    compareExchange(first, third, 0);
    compareExchange(first, second, 1);
    compareExchange(second, third, 2);
    return kOrders[exchanges];
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
    const auto descending = [](std::uint8_t& first, std::uint8_t& second) {
        if (SignedByte(first) < SignedByte(second)) {
            std::swap(first, second);
        }
    };
    descending(d0, d1);
    descending(d1, d2);
    descending(d0, d1);
    return (((SignExtended(d2) << 8U) | SignExtended(d1)) << 8U) | SignExtended(d0);
}

TriangleFeature MakeTriangleFeature(const TriangleVertex& a,
                                    const TriangleVertex& b,
                                    const TriangleVertex& c) {
    TriangleFeature feature = OrderedTriangle(a, b, c);
    const auto& [first, second, third] = feature.vertices;
    const std::uint32_t word =
        SideLengthWord(Distance(first, second), Distance(second, third), Distance(third, first));
    StoreLittleEndian(word, feature.sides);
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
