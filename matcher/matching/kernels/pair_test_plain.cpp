#include <cstdlib>

#include "matcher/features/angles.h"
#include "matcher/matching/kernels/pair_test.h"

namespace orl::matcher::plain {
namespace {

// The largest differences between the turns, edges and sides of two codes.
struct CodeDifference {
    std::uint32_t turn = 0;
    std::uint32_t edge = 0;
    std::uint32_t side = 0;
};

std::uint32_t circularDifference(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint32_t>(CircularDifference(a, b));
}

CodeDifference largestDifferences(const TriangleCode& second, const TriangleCode& first) {
    CodeDifference largest;
    for (std::size_t j = 0; j < kCorners; ++j) {
        const auto circular = [&](std::size_t group) {
            return circularDifference(second.bytes[group + j], first.bytes[group + j]);
        };
        const auto side = static_cast<std::uint32_t>(
            std::abs(second.bytes[kSideGroup + j] - first.bytes[kSideGroup + j]));
        largest.turn = std::max(largest.turn, circular(kTurnGroup));
        largest.edge =
            std::max({largest.edge, circular(kNextEdgeGroup), circular(kPreviousEdgeGroup)});
        largest.side = std::max(largest.side, side);
    }
    return largest;
}

bool isNear(std::uint32_t secondSides, std::uint32_t firstSides) {
    constexpr unsigned kByteBits = 8;
    for (std::size_t j = 0; j < kCorners; ++j) {
        const auto difference = static_cast<std::int8_t>((secondSides >> kByteBits * j) -
                                                         (firstSides >> kByteBits * j));
        if (std::abs(int{difference}) > kMaxSideDifferenceGridUnits) {
            return false;
        }
    }
    return true;
}

}  // namespace

OrientationRanks ranksOf(const QuarterTurnCodes& second, const TriangleCode& first) {
    OrientationRanks ranks;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        const CodeDifference difference = largestDifferences(second[m], first);
        const bool isAlike = difference.turn <= kMaxTurnDifferenceSteps &&
                             difference.edge <= kMaxEdgeDifferenceSteps &&
                             difference.side <= kMaxSideDifferenceGridUnits;
        ranks[m] = isAlike ? rankOfFactors(costFactor(difference.edge, kMaxEdgeDifferenceSteps),
                                           costFactor(difference.turn, kMaxTurnDifferenceSteps),
                                           costFactor(difference.side, kMaxSideDifferenceGridUnits))
                           : kNotAlike;
    }
    return ranks;
}

TriangleBits nearSides(std::span<const std::uint32_t, kTrianglesPerStretch> sides,
                       std::size_t firstBlock,
                       std::size_t endBlock,
                       std::uint32_t firstSides) {
    constexpr std::size_t kWordBits = 64;
    TriangleBits bits{};
    for (std::size_t i = firstBlock * kSideBlock; i < endBlock * kSideBlock; ++i) {
        bits[i / kWordBits] |= std::uint64_t{isNear(sides[i], firstSides)} << i % kWordBits;
    }
    return bits;
}

}  // namespace orl::matcher::plain
