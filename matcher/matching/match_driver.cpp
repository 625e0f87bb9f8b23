#include "matcher/matching/match_driver.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

#include "matcher/matching/alignment.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/pair_search.h"
#include "matcher/matching/score.h"

namespace orl::matcher {
namespace {

std::uint16_t saturated(std::uint64_t count) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(std::min(count, kMost));
}

std::uint16_t matchedCountOf(const AlignmentEvaluation& evaluation) {
    return saturated(static_cast<std::uint64_t>(evaluation.count));
}

// Score by the agreeing pairs alone, before the quality stages.
std::uint32_t countScore(const MatchContext& context, const AlignmentEvaluation& evaluation) {
    return scoreFromCount(
        matchedCountOf(evaluation), context.firstMinutiaCount, context.secondMinutiaCount);
}

bool canBeBetter(const MatchContext& context,
                 const FingerMatchResult* best,
                 std::int32_t countBound,
                 std::int32_t refinedCountBound) {
    return best == nullptr || mayBeBetter(*best,
                                          saturated(static_cast<std::uint64_t>(countBound)),
                                          saturated(static_cast<std::uint64_t>(refinedCountBound)),
                                          context.firstMinutiaCount,
                                          context.secondMinutiaCount);
}

// Hypotheses with fewer agreeing pairs are no evidence, or not better than `best`.
std::int32_t leastUsefulCount(const MatchContext& context, const FingerMatchResult* best) {
    return best == nullptr ? kMinAgreeingPairs
                           : static_cast<std::int32_t>(
                                 leastUsefulMatched(*best,
                                                    saturated(context.minutiaPairs.size()),
                                                    context.firstMinutiaCount,
                                                    context.secondMinutiaCount));
}

// The best hypothesis of the vote measured in full, refined when its score is doubtful.
FingerMatchResult alignedResult(const MatchContext& context,
                                const AlignmentVote& vote,
                                const AlignmentHypothesis& hypothesis,
                                std::size_t orientation) {
    const AlignmentReference reference = alignmentReference(
        context.minutiaPairs, context.firstMinutiaCount, context.secondMinutiaCount);
    AlignmentEvaluation best = vote.evaluateAlignment(
        hypothesis.anchor, hypothesis.rotation, reference, EvaluationDepth::kWithStatistics);
    std::uint32_t score = countScore(context, best);
    const bool refined = isInRefinementBand(score);
    if (refined) {
        vote.refineAlignment(best, reference);
        score = countScore(context, best);
    }
    return {.score = static_cast<std::uint16_t>(applyQualityStages(best, refined, score)),
            .pairCount = saturated(context.minutiaPairs.size()),
            .matchedCount = matchedCountOf(best),
            .rotationDegrees = reportedRotationDegrees(best.rotation),
            .orientation = static_cast<std::uint32_t>(orientation),
            .distanceMedian = best.distanceMedian,
            .angleMedian = best.angleMedian,
            .coverage = best.coverage,
            .matchedRatio = best.matchedRatio,
            .refined = refined ? 1U : 0U};
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

bool matchFingerPair(const FingerFeatures& first,
                     const FingerFeatures& second,
                     MatchMemory& memory,
                     FingerMatchResult& best) {
    memory.scratch.release();
    MatchContext context(first, second, memory);
    searchTrianglePairs(context);
    return matchFingerAllOrientations(context, best);
}

}  // namespace

TemplateMatchResult matchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second) {
    TemplateMatchResult result;
    if (first.empty() || second.empty()) {
        return result;
    }
    const std::unique_ptr<MatchMemory> memory(new MatchMemory);
    // The first pair needs no special case: nothing that it can yield is worse than zero, and a
    // zero result stands for pair 0, 0.
    FingerMatchResult best;
    for (std::size_t i = 0; i < first.size(); ++i) {
        for (std::size_t j = 0; j < second.size(); ++j) {
            if (matchFingerPair(first[i], second[j], *memory, best)) {
                result = templateResult(best, i, j);
            }
        }
    }
    return result;
}

bool matchFingerAllOrientations(MatchContext& context, FingerMatchResult& best) {
    bool isReplaced = false;
    for (std::size_t orientation = 0; orientation < kOrientations; ++orientation) {
        const Scratch::Mark mark(context.memory.scratch);
        const auto challenger = matchFinger(context, orientation, &best);
        if (challenger && IsBetterMatch(*challenger, best)) {
            best = *challenger;
            isReplaced = true;
        }
    }
    return isReplaced;
}

std::optional<FingerMatchResult> matchFinger(MatchContext& context,
                                             std::size_t orientation,
                                             const FingerMatchResult* best) {
    if (!consolidatePairs(context, orientation)) {
        return FingerMatchResult{};
    }
    const AlignmentVote vote(
        context.minutiaPairs, context.memory.scratch, leastUsefulCount(context, best));
    const std::int32_t refinedBound = vote.anyRotationCountBound();
    if (!canBeBetter(context, best, vote.countBound(), refinedBound)) {
        return std::nullopt;
    }
    const AlignmentHypothesis hypothesis = vote.findBestAlignment();
    if (hypothesis.count < kMinAgreeingPairs) {
        return FingerMatchResult{};
    }
    if (!canBeBetter(context, best, hypothesis.count, refinedBound)) {
        return std::nullopt;
    }
    return alignedResult(context, vote, hypothesis, orientation);
}

}  // namespace orl::matcher
