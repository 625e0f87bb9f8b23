#include "matcher/matching/match_driver.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <limits>
#include <vector>

#include "matcher/matching/alignment.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/orientation.h"
#include "matcher/matching/pair_search.h"
#include "matcher/matching/score.h"

namespace orl::matcher {
namespace {

constexpr std::uint32_t kOrientations = 4;

std::uint16_t saturated(std::uint64_t count) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(std::min(count, kMost));
}

std::uint16_t matchedCountOf(const AlignmentEvaluation& evaluation) {
    return saturated(static_cast<std::uint64_t>(evaluation.count));
}

// Score by the agreeing pairs alone, before the quality stages.
std::uint32_t countScore(const MatchContext& context, const AlignmentEvaluation& evaluation) {
    return scoreFromCount(matchedCountOf(evaluation),
                          context.reference.firstMinutiaCount,
                          context.reference.secondMinutiaCount);
}

// The best of the four orientations of one finger pair.
const FingerMatchResult& matchFingerPair(MatchContext& context,
                                         const FingerFeatures& first,
                                         const FingerFeatures& second) {
    context.firstTriangles = first.triangles;
    context.firstMinutiaCount = first.minutiaCount;
    context.secondFinger = &second;
    matchFinger(context, context.best, second.triangles, second.minutiaCount, 0);
    for (std::uint32_t orientation = 1; orientation < kOrientations; ++orientation) {
        matchFingerAllOrientations(context, orientation);
    }
    return context.best;
}

TemplateMatchResult templateResult(const FingerMatchResult& best,
                                   std::size_t firstFingerIndex,
                                   std::size_t secondFingerIndex) {
    TemplateMatchResult result;
    result.score = best.score;
    result.firstFingerIndex = firstFingerIndex;
    result.secondFingerIndex = secondFingerIndex;
    result.pairCount = best.pairCount;
    result.matchedCount = best.matchedCount;
    result.rotationDegrees = best.rotationDegrees;
    result.orientation = best.orientation;
    result.distanceMedian = best.distanceMedian;
    result.angleMedian = best.angleMedian;
    result.coverage = best.coverage;
    result.matchedRatio = best.matchedRatio;
    result.refined = best.refined;
    return result;
}

}  // namespace

TemplateMatchResult matchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second) {
    TemplateMatchResult result;
    MatchContext context;
    FingerMatchResult best;
    for (std::size_t i = 0; i < first.size(); ++i) {
        for (std::size_t j = 0; j < second.size(); ++j) {
            const FingerMatchResult& challenger = matchFingerPair(context, first[i], second[j]);
            // The first pair needs no special case: nothing it can yield is worse than zero, and a
            // zero result stands for pair 0, 0.
            if (IsBetterMatch(challenger, best)) {
                best = challenger;
                result = templateResult(best, i, j);
            }
        }
    }
    return result;
}

void matchFinger(MatchContext& context,
                 FingerMatchResult& result,
                 std::span<const TriangleFeature> secondTriangles,
                 std::uint64_t secondMinutiaCount,
                 std::uint32_t orientation) {
    result = FingerMatchResult{};
    context.trianglePairs.clear();
    searchTrianglePairs(context, secondTriangles);
    if (!consolidatePairs(context)) {
        return;
    }
    context.reference = AlignmentReference{.firstMinutiaCount = context.firstMinutiaCount,
                                           .secondMinutiaCount = secondMinutiaCount};
    AlignmentEvaluation best = findBestAlignment(context);
    if (best.count < kMinAgreeingPairs) {
        return;
    }
    std::uint32_t score = countScore(context, best);
    const bool refined = isInRefinementBand(score);
    if (refined) {
        refineAlignment(context, best);
        score = countScore(context, best);
    }
    result = {.score = static_cast<std::uint16_t>(applyQualityStages(best, refined, score)),
              .pairCount = saturated(context.minutiaPairs.size()),
              .matchedCount = matchedCountOf(best),
              .rotationDegrees = reportedRotationDegrees(best.rotation),
              .orientation = orientation,
              .distanceMedian = best.distanceMedian,
              .angleMedian = best.angleMedian,
              .coverage = best.coverage,
              .matchedRatio = best.matchedRatio,
              .refined = refined ? 1U : 0U};
}

std::uint16_t matchFingerAllOrientations(MatchContext& context, std::uint32_t orientation) {
    assert(orientation > 0 && orientation < kOrientations);
    const FingerFeatures& second = *context.secondFinger;
    const std::vector<TriangleFeature> turned = orientationCopy(second.triangles, orientation);
    FingerMatchResult challenger;
    matchFinger(context, challenger, turned, second.minutiaCount, orientation);
    if (IsBetterMatch(challenger, context.best)) {
        context.best = challenger;
    }
    return challenger.score;
}

}  // namespace orl::matcher
