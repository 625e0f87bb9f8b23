#include "matcher/features/triangle_feature.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

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

void StoreLittleEndian(std::uint32_t word, std::uint8_t (&bytes)[4]) {
    bytes[0] = static_cast<std::uint8_t>(word);
    bytes[1] = static_cast<std::uint8_t>(word >> 8U);
    bytes[2] = static_cast<std::uint8_t>(word >> 16U);
    bytes[3] = static_cast<std::uint8_t>(word >> 24U);
}

// The order that three compare-exchange steps give: positions 0 and 2, 0 and 1, 1 and 2.
VertexOrder OrderOfBearings(int first, int second, int third) {
    // Which vertices come first, second and third, by the exchanges made: bit 0 for positions 0 and
    // 2, bit 1 for 0 and 1, bit 2 for 1 and 2.
    static constexpr std::array<VertexOrder, 8> kOrders = {
        {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {1, 2, 0}, {0, 2, 1}, {2, 0, 1}, {1, 2, 0}, {1, 0, 2}}};
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
    const TriangleMaker maker;
    const TriangleMaker::Corner corners[] = {
        TriangleMaker::CornerOf(a), TriangleMaker::CornerOf(b), TriangleMaker::CornerOf(c)};
    const std::uint32_t sideWord = maker.SideWord(corners[0], corners[1], corners[2]);
    return maker.Make(corners[0], corners[1], corners[2], sideWord);
}

TriangleMaker::Corner TriangleMaker::CornerOf(const TriangleVertex& vertex) {
    return {.vertex = vertex,
            .x = vertex.x,
            .y = vertex.y,
            .place = BearingTable::Place(vertex.y, vertex.x)};
}

std::uint32_t TriangleMaker::SideWord(const Corner& a, const Corner& b, const Corner& c) const {
    return SideLengthWord(distances_(a.y - b.y, a.x - b.x),
                          distances_(b.y - c.y, b.x - c.x),
                          distances_(c.y - a.y, c.x - a.x));
}

TriangleFeature TriangleMaker::Make(const Corner& a,
                                    const Corner& b,
                                    const Corner& c,
                                    std::uint32_t sideWord) const {
    const int centre =
        BearingTable::Place(WeightedCentre(a.y, b.y, c.y), WeightedCentre(a.x, b.x, c.x));
    const VertexOrder order = OrderOfBearings(bearings_.FromTo(centre, a.place),
                                              bearings_.FromTo(centre, b.place),
                                              bearings_.FromTo(centre, c.place));
    const Corner* const corners[] = {&a, &b, &c};
    TriangleFeature feature{.vertices = {corners[order[0]]->vertex,
                                         corners[order[1]]->vertex,
                                         corners[order[2]]->vertex}};
    StoreLittleEndian(sideWord, feature.sides);
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
