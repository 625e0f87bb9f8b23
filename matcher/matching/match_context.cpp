#include "matcher/matching/match_context.h"

namespace orl::matcher {
namespace {

std::span<const CyclicCodes> cyclicCodes(std::span<const TriangleFeature> triangles,
                                         Scratch& scratch) {
    const std::span<CyclicCodes> codes = scratch.take<CyclicCodes>(triangles.size());
    for (std::size_t t = 0; t < triangles.size(); ++t) {
        codes[t] = cyclicCodesOf(triangles[t]);
    }
    return codes;
}

TrianglePairList emptyPairList(Scratch& scratch) {
    constexpr std::size_t kInitialCapacity = 512;  // pairs; rarely more in one orientation
    TrianglePairList list(scratch.resource());
    list.reserve(kInitialCapacity);
    return list;
}

}  // namespace

MatchContext::MatchContext(const FingerFeatures& first,
                           const FingerFeatures& secondFinger,
                           MatchMemory& matchMemory)
    : memory(matchMemory),
      firstMinutiaCount(first.minutiaCount),
      secondMinutiaCount(secondFinger.minutiaCount),
      firstTriangles(first.triangles),
      firstCodes(cyclicCodes(first.triangles, matchMemory.scratch)),
      second(orientedFinger(secondFinger.triangles, matchMemory.scratch)),
      trianglePairs{emptyPairList(matchMemory.scratch),
                    emptyPairList(matchMemory.scratch),
                    emptyPairList(matchMemory.scratch),
                    emptyPairList(matchMemory.scratch)} {}

}  // namespace orl::matcher
