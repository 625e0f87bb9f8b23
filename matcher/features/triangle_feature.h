#pragma once

// The constructor of triangle features, in two forms with the same results: MakeTriangleFeature and
// its steps say what a feature is, one triangle at a time; TriangleMaker makes those of a whole
// triangulation. Pure functions apart from the lookup tables' build on first use; safe from any
// thread.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"
#include "matcher/features/lookup_tables.h"
#include "matcher/features/side_word_sse2.h"

namespace orl::matcher {

// Positions 0..2 of three vertices in a new order: which comes first, second and third.
using VertexOrder = std::array<std::uint8_t, 3>;

// The order of three vertices by their bearing from the triangle's weighted centre, ascending;
// equal bearings keep their positions (three compare-exchange steps: 0-2, 0-1, 1-2). The third
// vertex weighs twice as much as each of the others in that centre.
VertexOrder BearingOrder(const TriangleVertex& a, const TriangleVertex& b, const TriangleVertex& c);

// Puts three vertices into that order, in place.
void OrderTriangleVertices(TriangleVertex (&vertices)[3]);

// The same, returning the ordered vertices of the given triangle; `sides` is zero in the result.
TriangleFeature OrderedTriangle(const TriangleVertex& a,
                                const TriangleVertex& b,
                                const TriangleVertex& c);

// The side length word, from three lengths in any order: sorted descending as signed bytes, each
// sign-extended to 32 bits, joined as L2 << 16 | L1 << 8 | L0. A length of 128 or more therefore
// sorts last and fills every byte above its own with 0xFF.
std::uint32_t SideLengthWord(std::uint8_t d0, std::uint8_t d1, std::uint8_t d2);

// The whole feature: ordered vertices and the side length word.
TriangleFeature MakeTriangleFeature(const TriangleVertex& a,
                                    const TriangleVertex& b,
                                    const TriangleVertex& c);

// The same for many triangles over the same vertices: reaches the lookup table once and takes what
// a vertex adds to several triangles from its corner. Never throws; a maker may serve any threads.
class TriangleMaker {
  public:
    // The place of a vertex as the maker wants it.
    struct Corner {
        std::uint32_t xAndY;  // x in the lower half, y in the upper one
        std::uint32_t place;  // see BearingTable
    };

    static Corner CornerOf(const TriangleVertex& vertex) {
        return {.xAndY = std::uint32_t{vertex.x} | std::uint32_t{vertex.y} << kHalfBits,
                .place = BearingTable::Place(std::uint32_t{vertex.y}, std::uint32_t{vertex.x})};
    }

    // The side length word of a triangle, whatever the order of its corners.
    static std::uint32_t SideWord(const Corner& a, const Corner& b, const Corner& c);

    // The order of the corners' bearings, as BearingOrder tells it.
    const VertexOrder& OrderOf(const Corner& a, const Corner& b, const Corner& c) const;

  private:
    static constexpr unsigned kHalfBits = 16;

    const BearingTable& bearings_ = BearingTable::Table();
};

// The order that three compare-exchange steps give: positions 0 and 2, 0 and 1, 1 and 2.
inline const VertexOrder& OrderOfBearings(int first, int second, int third) {
    // Which vertices come first, second and third, by the exchanges made: bit 0 for positions 0 and
    // 2, bit 1 for 0 and 1, bit 2 for 1 and 2.
    static constexpr std::array<VertexOrder, 8> kOrders = {
        {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {1, 2, 0}, {0, 2, 1}, {2, 0, 1}, {1, 2, 0}, {1, 0, 2}}};
    // After the first step the third holds the greater of two, which the second passes only by
    // itself. The sign of a difference tells an exchange.
    constexpr unsigned kSignBit = 31;
    const auto isNegative = [](int difference) {
        return static_cast<std::size_t>(static_cast<std::uint32_t>(difference) >> kSignBit);
    };
    const int smaller = first < third ? first : third;
    const int greater = first < third ? third : first;
    return kOrders[isNegative(third - first) + 2 * isNegative(second - smaller) +
                   4 * isNegative(greater - second)];
}

inline std::uint32_t TriangleMaker::SideWord(const Corner& a, const Corner& b, const Corner& c) {
#if defined(__SSE2__)
    return SideWordOfLanes(a.xAndY, b.xAndY, c.xAndY);
#else
    const auto vertexOf = [](const Corner& corner) {
        return TriangleVertex{.x = static_cast<std::uint8_t>(corner.xAndY),
                              .y = static_cast<std::uint8_t>(corner.xAndY >> kHalfBits)};
    };
    return SideLengthWord(Distance(vertexOf(a), vertexOf(b)),
                          Distance(vertexOf(b), vertexOf(c)),
                          Distance(vertexOf(c), vertexOf(a)));
#endif
}

// Both coordinates of the weighted centre at once: their sums have 9 bits, so that after a halving
// the lowest bit of the upper one is all that has to be cleared of the lower one.
inline const VertexOrder& TriangleMaker::OrderOf(const Corner& a,
                                                 const Corner& b,
                                                 const Corner& c) const {
    constexpr std::uint32_t kBytes = 0x00FF00FF;
    const std::uint32_t half = (a.xAndY + b.xAndY) >> 1U & kBytes;
    const std::uint32_t centre = (half + c.xAndY) >> 1U & kBytes;
    const BearingTable::Ranks ranks =
        bearings_.RanksFrom(BearingTable::Place(centre >> kHalfBits, centre & 0xFFU));
    return OrderOfBearings(ranks[a.place], ranks[b.place], ranks[c.place]);
}

// A side length word as the bytes of a feature.
inline void StoreLittleEndian(std::uint32_t word, std::uint8_t (&bytes)[4]) {
    bytes[0] = static_cast<std::uint8_t>(word);
    bytes[1] = static_cast<std::uint8_t>(word >> 8U);
    bytes[2] = static_cast<std::uint8_t>(word >> 16U);
    bytes[3] = static_cast<std::uint8_t>(word >> 24U);
}

// The key by which a finger's triangle list ascends: bytes 12, 13, 14 as signed bytes,
// lexicographically. It is made of a side length word as one number, whose three lowest bytes are
// those, the first being the most significant, each rising as a signed byte does.
constexpr std::uint32_t TriangleKey(std::uint32_t sideWord) {
    constexpr std::uint32_t kSigns = 0x808080;
    return __builtin_bswap32(sideWord) >> 8U ^ kSigns;
}

}  // namespace orl::matcher
