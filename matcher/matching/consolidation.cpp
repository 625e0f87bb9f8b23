// Triangle pairs in, distinct minutia correspondences out.

#include <algorithm>
#include <array>

#include "matcher/matching/pair_search.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kMinTrianglePairs = 3;
constexpr std::size_t kMinMinutiaPairs = 3;

// One pass of a stable sort by five bits of the rank.
void sortByDigit(std::span<const TrianglePair> from, std::span<TrianglePair> to, unsigned shift) {
    constexpr std::size_t kDigits = 32;
    const auto digitOf = [shift](const TrianglePair& pair) {
        return (static_cast<std::size_t>(pair.rank) >> shift) % kDigits;
    };
    std::array<std::uint32_t, kDigits> next{};
    for (const TrianglePair& pair : from) {
        ++next[digitOf(pair)];
    }
    std::uint32_t sum = 0;
    for (std::uint32_t& begin : next) {
        const std::uint32_t count = begin;
        begin = sum;
        sum += count;
    }
    for (const TrianglePair& pair : from) {
        to[next[digitOf(pair)]++] = pair;
    }
}

// Best pairs first; equal ones keep their order.
void sortByRank(std::span<TrianglePair> pairs, Scratch& scratch) {
    constexpr unsigned kDigitBits = 5;
    const std::span<TrianglePair> halfSorted = scratch.take<TrianglePair>(pairs.size());
    sortByDigit(pairs, halfSorted, 0);
    sortByDigit(halfSorted, pairs, kDigitBits);
}

// Joins ranked triangle pairs corner by corner into minutia pairs.
//
// Deliberate: corners pair up as they stand, whichever cyclic order made the triangles alike. A
// position of the first finger counts as taken from its first mention on, and one taken position
// alone does not bar a pair, so a minutia may stand in several.
class Consolidation {
  public:
    Consolidation(MatchContext& context, std::size_t orientation, std::size_t capacity)
        : context_(context),
          orientation_(orientation),
          kept_(context.memory.scratch.take<MinutiaPair>(capacity + 1)),
          firstIsSeen_(flags(context.firstTriangles.size())),
          secondIsSeen_(flags(context.second.triangles.size())) {}

    // Once both triangles have been seen all their positions are taken, and nothing of the pair can
    // be kept.
    void add(const TrianglePair& pair) {
        if (firstIsSeen_[pair.first] && secondIsSeen_[pair.second]) {
            return;
        }
        firstIsSeen_[pair.first] = true;
        secondIsSeen_[pair.second] = true;
        const auto& firstVertices = context_.firstTriangles[pair.first].vertices;
        const auto secondVertices =
            orderedVertices(context_.second.oriented[pair.second], orientation_);
        for (std::size_t corner = 0; corner < kCorners; ++corner) {
            const bool firstIsNew = context_.memory.firstPositions.insert(firstVertices[corner]);
            const bool secondIsNew = context_.memory.secondPositions.insert(secondVertices[corner]);
            kept_[count_] = {firstVertices[corner], secondVertices[corner]};
            count_ += static_cast<std::size_t>(firstIsNew | secondIsNew);
        }
    }

    // What was kept; the position sets are empty again. Every position taken stands in a kept pair.
    std::span<const MinutiaPair> finish() {
        const std::span<const MinutiaPair> kept = kept_.first(count_);
        for (const MinutiaPair& pair : kept) {
            context_.memory.firstPositions.erase(pair.first);
            context_.memory.secondPositions.erase(pair.second);
        }
        return kept;
    }

  private:
    std::span<bool> flags(std::size_t count) {
        const std::span<bool> flags = context_.memory.scratch.take<bool>(count);
        std::fill(flags.begin(), flags.end(), false);
        return flags;
    }

    MatchContext& context_;
    std::size_t orientation_;
    std::span<MinutiaPair> kept_;
    std::span<bool> firstIsSeen_;
    std::span<bool> secondIsSeen_;
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
    // Every pair kept takes a position that was free.
    const std::size_t positions =
        kCorners * (context.firstTriangles.size() + context.second.triangles.size());
    Consolidation consolidation(
        context, orientation, std::min(positions, kCorners * trianglePairs.size()));
    for (const TrianglePair& pair : trianglePairs) {
        consolidation.add(pair);
    }
    context.minutiaPairs = consolidation.finish();
    return context.minutiaPairs.size() >= kMinMinutiaPairs;
}

}  // namespace orl::matcher
