// Triangle pairs in, distinct minutia correspondences out.

#include <algorithm>
#include <array>

#include "matcher/matching/pair_search.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kMinTrianglePairs = 3;
constexpr std::size_t kMinMinutiaPairs = 3;

// A rank's upper and lower five bits.
constexpr std::size_t kDigits = 32;
using DigitPlaces = std::array<std::uint32_t, kDigits>;

std::size_t lowDigit(const TrianglePair& pair) {
    return pair.rank % kDigits;
}
std::size_t highDigit(const TrianglePair& pair) {
    return pair.rank / kDigits % kDigits;
}

// From how many pairs have a digit to where the first of them goes.
void placesOfCounts(DigitPlaces& counts) {
    std::uint32_t sum = 0;
    for (std::uint32_t& entry : counts) {
        const std::uint32_t count = entry;
        entry = sum;
        sum += count;
    }
}

// Best pairs first; equal ones keep their order. A radix sort by two digits.
void sortByRank(std::span<TrianglePair> pairs, Scratch& scratch) {
    const std::span<TrianglePair> halfSorted = scratch.take<TrianglePair>(pairs.size());
    DigitPlaces low{};
    DigitPlaces high{};
    for (const TrianglePair& pair : pairs) {
        ++low[lowDigit(pair)];
        ++high[highDigit(pair)];
    }
    placesOfCounts(low);
    placesOfCounts(high);
    for (const TrianglePair& pair : pairs) {
        halfSorted[low[lowDigit(pair)]++] = pair;
    }
    for (const TrianglePair& pair : halfSorted) {
        pairs[high[highDigit(pair)]++] = pair;
    }
}

// Joins ranked triangle pairs corner by corner into minutia pairs.
//
// Deliberate: corners pair up as they stand, whichever cyclic order made the triangles alike. A
// position of the first finger counts as taken from its first mention on, and one taken position
// alone does not bar a pair, so a minutia may stand in several.
class Consolidation {
  public:
    Consolidation(MatchContext& context, std::size_t orientation)
        : context_(context),
          orientation_(orientation),
          // Every pair kept takes a position that was free; one more entry is written to and not
          // kept.
          kept_(context.memory.scratch.take<MinutiaPair>(context.firstPositions.count +
                                                         context.secondPositions.count + 1)),
          firstIsTaken_(noneTaken(context.firstPositions)),
          secondIsTaken_(noneTaken(context.secondPositions)) {}

    void add(const TrianglePair& pair) {
        const auto& firstVertices = context_.firstTriangles[pair.first].vertices;
        const auto& secondVertices = context_.second.triangles[pair.second].vertices;
        const auto& firstNumbers = context_.firstPositions.ofTriangles[pair.first];
        const auto& secondNumbers = context_.secondPositions.ofTriangles[pair.second];
        const auto& order =
            kCornerOrders[context_.second.oriented[pair.second].order[orientation_]];
        for (std::size_t corner = 0; corner < kCorners; ++corner) {
            const std::size_t secondCorner = order[corner];
            bool& firstIsTaken = firstIsTaken_[firstNumbers[corner]];
            bool& secondIsTaken = secondIsTaken_[secondNumbers[secondCorner]];
            kept_[count_].first = firstVertices[corner];
            kept_[count_].second = secondVertices[secondCorner];
            count_ += static_cast<std::size_t>(!firstIsTaken | !secondIsTaken);
            firstIsTaken = true;
            secondIsTaken = true;
        }
    }

    // What was kept, with the second finger's vertices turned.
    std::span<const MinutiaPair> finish() {
        const std::span<MinutiaPair> kept = kept_.first(count_);
        for (MinutiaPair& pair : kept) {
            pair.second = turnedVertex(pair.second, orientation_);
        }
        return kept;
    }

  private:
    std::span<bool> noneTaken(const PositionNumbers& positions) {
        const std::span<bool> isTaken = context_.memory.scratch.take<bool>(positions.count);
        std::fill(isTaken.begin(), isTaken.end(), false);
        return isTaken;
    }

    MatchContext& context_;
    std::size_t orientation_;
    std::span<MinutiaPair> kept_;
    std::span<bool> firstIsTaken_;  // by position number
    std::span<bool> secondIsTaken_;
    std::size_t count_ = 0;
};

}  // namespace

bool consolidatePairs(MatchContext& context, std::size_t orientation) {
    context.minutiaPairs = {};
    TrianglePairList& trianglePairs = context.trianglePairs[orientation];
    if (trianglePairs.size() < kMinTrianglePairs) {
        return false;
    }
    sortByRank(trianglePairs, context.memory.scratch);
    Consolidation consolidation(context, orientation);
    for (const TrianglePair& pair : trianglePairs) {
        consolidation.add(pair);
    }
    context.minutiaPairs = consolidation.finish();
    return context.minutiaPairs.size() >= kMinMinutiaPairs;
}

}  // namespace orl::matcher
