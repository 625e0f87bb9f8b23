#include "matcher/matching/match_context.h"

#include "matcher/features/lookup_tables.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {
namespace {

std::span<const CyclicCodes> cyclicCodes(std::span<const TriangleFeature> triangles,
                                         Scratch& scratch) {
    const QuarterTurnBearings& bearings = QuarterTurnBearings::Table();
    const std::span<CyclicCodes> codes = scratch.take<CyclicCodes>(triangles.size());
    for (std::size_t t = 0; t < triangles.size(); ++t) {
        codes[t] = cyclicCodesOf(triangles[t], bearings);
    }
    return codes;
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
      firstPositions(positionNumbers(first.triangles, matchMemory.scratch)),
      secondPositions(positionNumbers(secondFinger.triangles, matchMemory.scratch)) {}

}  // namespace orl::matcher
