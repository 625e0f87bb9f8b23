// Triangle pairs in, distinct minutia correspondences out.

#include <algorithm>
#include <array>

#include "matcher/matching/pair_search.h"

namespace orl::matcher {
namespace {

constexpr std::size_t kMinTrianglePairs = 3;
constexpr std::size_t kMinMinutiaPairs = 3;

// The positions of a finger that stand in a pair already, by number.
class TakenPositions {
  public:
    TakenPositions(const PositionNumbers& positions, Scratch& scratch)
        : isTaken_(scratch.take<bool>(positions.count)) {
        std::fill(isTaken_.begin(), isTaken_.end(), false);
    }

    // Takes the position; true when it was free.
    bool take(std::size_t number) {
        const bool wasFree = !isTaken_[number];
        isTaken_[number] = true;
        return wasFree;
    }

    // Notes that the positions of a triangle have been taken. Those that share a bit stay unnoted.
    void note(PositionBits positions) { unnoted_ &= ~positions | kShared; }

    // The positions that are not noted; when there are none, none is free.
    PositionBits unnoted(PositionBits positions) const { return positions & unnoted_; }

  private:
    static constexpr PositionBits kShared = positionBit(kSharedPositionBit);

    std::span<bool> isTaken_;
    PositionBits unnoted_ = ~PositionBits{};
};

// Joins ranked triangle pairs corner by corner into minutia pairs. `kept` has room for one more
// than there can be: an entry is written before it is known to be kept. Returns how many are.
//
// Deliberate: corners pair up as they stand, whichever cyclic order made the triangles alike. A
// position of the first finger counts as taken from its first mention on, and one taken position
// alone does not bar a pair, so a minutia may stand in several.
std::size_t joinCorners(const MatchContext& context,
                        std::size_t orientation,
                        std::span<const TrianglePair> ranked,
                        std::span<MinutiaPair> kept) {
    const OrientedFinger second = context.second;
    const std::span<const TriangleFeature> firstTriangles = context.firstTriangles;
    const PositionNumbers firstNumbers = context.firstPositions;
    const PositionNumbers secondNumbers = context.secondPositions;
    TakenPositions firstTaken(firstNumbers, context.memory.scratch);
    TakenPositions secondTaken(secondNumbers, context.memory.scratch);
    std::size_t count = 0;
    for (const TrianglePair pair : ranked) {
        const PositionBits firstBits = firstNumbers.bitsOfTriangles[pair.first];
        const PositionBits secondBits = secondNumbers.bitsOfTriangles[pair.second];
        const PositionBits left = firstTaken.unnoted(firstBits) | secondTaken.unnoted(secondBits);
        if ((left[0] | left[1]) == 0) {
            continue;
        }
        firstTaken.note(firstBits);
        secondTaken.note(secondBits);
        const auto& firstPositions = firstNumbers.ofTriangles[pair.first];
        const auto& secondPositions = secondNumbers.ofTriangles[pair.second];
        const auto& order = kCornerOrders[second.oriented[pair.second].order[orientation]];
        for (std::size_t corner = 0; corner < kCorners; ++corner) {
            const std::size_t secondCorner = order[corner];
            kept[count].first = firstTriangles[pair.first].vertices[corner];
            kept[count].second = second.triangles[pair.second].vertices[secondCorner];
            const bool firstWasFree = firstTaken.take(firstPositions[corner]);
            const bool secondWasFree = secondTaken.take(secondPositions[secondCorner]);
            count += static_cast<std::size_t>(firstWasFree | secondWasFree);
        }
    }
    return count;
}

}  // namespace

bool consolidatePairs(MatchContext& context, std::size_t orientation) {
    context.minutiaPairs = {};
    const std::span<const TrianglePair> trianglePairs = context.trianglePairs[orientation];
    if (trianglePairs.size() < kMinTrianglePairs) {
        return false;
    }
    // Every pair kept takes a position that was free.
    const std::size_t positions = context.firstPositions.count + context.secondPositions.count;
    const auto room = context.memory.scratch.take<MinutiaPair>(positions + 1);
    const std::span<MinutiaPair> kept =
        room.first(joinCorners(context, orientation, trianglePairs, room));
    for (MinutiaPair& pair : kept) {
        pair.second = turnedVertex(pair.second, orientation);
    }
    context.minutiaPairs = kept;
    return kept.size() >= kMinMinutiaPairs;
}

}  // namespace orl::matcher
