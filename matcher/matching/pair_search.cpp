#include "matcher/matching/pair_search.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "matcher/matching/candidate_index.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {
namespace {

constexpr int kKeyReachGridUnits = 18;  // half the width of the key range
constexpr std::int32_t kNoPassingOrderCost = std::int32_t{1} << 30;
constexpr std::int32_t kCostPerSimilarityPoint = std::int32_t{1} << 20;

std::int8_t searchKey(const TriangleFeature& triangle) {
    return static_cast<std::int8_t>(triangle.sides[0]);
}

std::uint32_t sidesWord(const TriangleFeature& triangle) {
    std::uint32_t word = 0;
    std::memcpy(&word, triangle.sides, sizeof(word));
    return word;
}

// The triangles of a sorted list whose key lies within reach of a key that only grows from call to
// call.
class KeyRange {
  public:
    explicit KeyRange(std::span<const TriangleFeature> sorted) : sorted_(sorted) {}

    // Moves on to `key`.
    //
    // Deliberate: the limits wrap in 8 bits. A key within reach of either end of the signed range
    // gets an upper limit below its lower one, and so an empty range.
    void moveTo(std::int8_t key) {
        const auto lowest = static_cast<std::int8_t>(key - kKeyReachGridUnits);
        const auto highest = static_cast<std::int8_t>(key + kKeyReachGridUnits);
        if (lowest > highest) {
            isEmpty_ = true;
            return;
        }
        isEmpty_ = false;
        while (begin_ < sorted_.size() && searchKey(sorted_[begin_]) < lowest) {
            ++begin_;
        }
        end_ = std::max(end_, begin_);
        while (end_ < sorted_.size() && searchKey(sorted_[end_]) <= highest) {
            ++end_;
        }
    }

    // The range's triangles within a stretch, as bits.
    TriangleBits bits(std::size_t stretch) const {
        if (isEmpty_) {
            return {};
        }
        const std::size_t offset = stretch * kTrianglesPerStretch;
        return without(below(end_, offset), below(begin_, offset));
    }

  private:
    static std::uint64_t lowBits(std::size_t count) {
        constexpr std::size_t kWordBits = 64;
        return count >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
    }
    // Bits of the triangles before `index`, for a stretch that begins at `offset`.
    static TriangleBits below(std::size_t index, std::size_t offset) {
        const std::size_t count = index > offset ? index - offset : 0;
        return {lowBits(count), lowBits(count > 64 ? count - 64 : 0)};
    }
    static TriangleBits without(TriangleBits set, TriangleBits removed) {
        return {set.low & ~removed.low, set.high & ~removed.high};
    }

    std::span<const TriangleFeature> sorted_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool isEmpty_ = true;
};

std::int32_t largestSideDifference(const TriangleCode& second, const TriangleCode& first) {
    std::int32_t largest = 0;
    for (std::size_t j = kSideGroup; j < kSideGroup + kCorners; ++j) {
        largest = std::max(largest, std::abs(second.bytes[j] - first.bytes[j]));
    }
    return largest;
}

// The cost of a pair that agrees in turns and edges under the first triangle's cyclic order
// `order`, with its sides as under `sideOrder`; the mark when the sides differ too much.
//
// A turn may change a triangle's first vertex, while its sides are sorted and stay.
std::int32_t costOfTurned(const TriangleCode& second,
                          const CyclicCodes& first,
                          std::size_t order,
                          std::size_t sideOrder) {
    CodeDifference difference = kernels::largestDifferences(second, first[order]);
    if (sideOrder != order) {
        difference.side = largestSideDifference(second, first[sideOrder]);
    }
    return difference.side <= kMaxSideDifferenceGridUnits ? costOf(difference)
                                                          : kNoPassingOrderCost;
}

// The smallest costs of a pair of triangles, one an orientation.
using OrientationCosts = std::array<std::int32_t, kOrientations>;

// Tries the cyclic orders in `orders` (bit q: the first triangle's order that starts at vertex q)
// in all orientations. In an orientation whose triangle starts at list vertex s, order q is its
// order q + s.
OrientationCosts smallestCosts(const QuarterTurnCodes& second,
                               const OrientedTriangle& oriented,
                               const CyclicCodes& first,
                               unsigned orders) {
    OrientationCosts smallest;
    smallest.fill(kNoPassingOrderCost);
    for (; orders != 0; orders &= orders - 1) {
        const auto order = static_cast<std::size_t>(std::countr_zero(orders));
        unsigned agreeing = kernels::agreeingQuarterTurns(second, first[order]);
        for (; agreeing != 0; agreeing &= agreeing - 1) {
            const auto m = static_cast<std::size_t>(std::countr_zero(agreeing));
            const std::size_t sideOrder = (order + oriented.start[m]) % kCorners;
            smallest[m] = std::min(smallest[m], costOfTurned(second[m], first, order, sideOrder));
        }
    }
    return smallest;
}

void addPairs(MatchContext& context, std::size_t first, std::size_t second, unsigned orders) {
    const OrientationCosts costs = smallestCosts(context.second.codes[second],
                                                 context.second.oriented[second],
                                                 context.firstCodes[first],
                                                 orders);
    for (std::size_t m = 0; m < kOrientations; ++m) {
        if (costs[m] < kNoPassingOrderCost) {
            context.trianglePairs[m].push_back(
                {static_cast<std::uint16_t>(costs[m] / kCostPerSimilarityPoint),
                 static_cast<std::uint16_t>(first),
                 static_cast<std::uint16_t>(second)});
        }
    }
}

// Tests what the index found for triangle `first` in half a stretch; orders[q] are the triangles
// that may agree with its cyclic order q.
void testFound(MatchContext& context,
               std::size_t first,
               std::size_t offset,
               const std::array<std::uint64_t, kCorners>& orders) {
    const std::uint32_t firstSides = sidesWord(context.firstTriangles[first]);
    for (std::uint64_t found = orders[0] | orders[1] | orders[2]; found != 0; found &= found - 1) {
        const auto bit = static_cast<std::size_t>(std::countr_zero(found));
        const std::size_t second = offset + bit;
        if (sidesAreNear(sidesWord(context.second.triangles[second]), firstSides)) {
            addPairs(context,
                     first,
                     second,
                     static_cast<unsigned>((orders[0] >> bit & 1U) | (orders[1] >> bit & 1U) << 1U |
                                           (orders[2] >> bit & 1U) << 2U));
        }
    }
}

}  // namespace

void searchTrianglePairs(MatchContext& context) {
    const CandidateIndex index(context.second, context.memory.scratch);
    KeyRange range(context.second.triangles);
    for (std::size_t first = 0; first < context.firstTriangles.size(); ++first) {
        range.moveTo(searchKey(context.firstTriangles[first]));
        const CyclicCodes& codes = context.firstCodes[first];
        for (std::size_t stretch = 0; stretch < index.stretchCount(); ++stretch) {
            const TriangleBits inRange = range.bits(stretch);
            if ((inRange.low | inRange.high) == 0) {
                continue;
            }
            const std::array<TriangleBits, kCorners> found = {
                index.find(codes[0], stretch) & inRange,
                index.find(codes[1], stretch) & inRange,
                index.find(codes[2], stretch) & inRange};
            const std::size_t offset = stretch * kTrianglesPerStretch;
            testFound(context, first, offset, {found[0].low, found[1].low, found[2].low});
            testFound(context, first, offset + 64, {found[0].high, found[1].high, found[2].high});
        }
    }
}

std::int32_t scoreTrianglePair(const TriangleCode& second, const CyclicCodes& firstCodes) {
    std::int32_t smallest = kNoPassingOrderCost;
    for (std::size_t order = 0; order < kCorners; ++order) {
        const CodeDifference difference = kernels::largestDifferences(second, firstCodes[order]);
        if (difference.turn <= kMaxTurnDifferenceSteps &&
            difference.edge <= kMaxEdgeDifferenceSteps &&
            difference.side <= kMaxSideDifferenceGridUnits) {
            smallest = std::min(smallest, costOf(difference));
        }
    }
    return smallest < kNoPassingOrderCost ? kMaxSimilarity - smallest / kCostPerSimilarityPoint : 0;
}

}  // namespace orl::matcher
