#pragma once

// The constructor of triangle features, used for the triangles of a triangulation and for those
// that matching forms itself from rotated vertices. Pure functions apart from the lookup tables'
// build on first use; safe from any thread.

#include <array>
#include <cstdint>

#include "matcher/features/finger_model.h"
#include "matcher/features/lookup_tables.h"

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

// The same for many triangles over the same vertices: reaches the lookup tables once and takes what
// a vertex adds to several triangles from its corner. Never throws; a maker may serve any threads.
class TriangleMaker {
  public:
    // A vertex as the maker wants it.
    struct Corner {
        TriangleVertex vertex;
        int x;
        int y;
        int place;  // see BearingTable
    };

    static Corner CornerOf(const TriangleVertex& vertex);

    // The side length word of a triangle, whatever the order of its corners.
    std::uint32_t SideWord(const Corner& a, const Corner& b, const Corner& c) const;

    // The whole feature, given its side length word.
    TriangleFeature Make(const Corner& a,
                         const Corner& b,
                         const Corner& c,
                         std::uint32_t sideWord) const;

  private:
    const BearingTable& bearings_ = BearingTable::Table();
    const DistanceTable& distances_ = DistanceTable::Table();
};

// The key of a finger's triangle list as one number, from a side length word: its three lowest
// bytes, the first being the most significant, each rising as a signed byte does.
constexpr std::uint32_t TriangleKey(std::uint32_t sideWord) {
    constexpr std::uint32_t kSigns = 0x808080;
    const std::uint32_t reversed =
        (sideWord & 0xFFU) << 16U | (sideWord & 0xFF00U) | (sideWord >> 16U & 0xFFU);
    return reversed ^ kSigns;
}

// The order of a finger's triangle list: bytes 12, 13, 14 as signed bytes, lexicographically.
bool TriangleKeyLess(const TriangleFeature& left, const TriangleFeature& right);

}  // namespace orl::matcher
