#include "matcher/api/match_facade.h"

#include "matcher/api/match_decision.h"
#include "matcher/api/match_status.h"
#include "matcher/api/match_steps.h"
#include "matcher/features/memory_wipe.h"
#include "matcher/matching/match_driver.h"

namespace orl::matcher {
namespace {

// Thresholds up to 100 are given in tens of score points.
std::int32_t effectiveThreshold(std::int32_t threshold) {
    constexpr std::int32_t kGreatestThresholdInTens = 100;
    constexpr std::int64_t kPointsPerTen = 10;
    return threshold <= kGreatestThresholdInTens
               ? static_cast<std::int32_t>(threshold * kPointsPerTen)
               : threshold;
}

// Whether nothing known of the winning fingers contradicts their being the same: their position
// codes where both are known, else the identity texts where both templates have one.
bool fingersAgree(const LoadedTemplate& probe,
                  const LoadedTemplate& candidate,
                  const TemplateMatchResult& result) {
    if (result.firstFingerIndex < probe.fingerPositions.size() &&
        result.secondFingerIndex < candidate.fingerPositions.size()) {
        return probe.fingerPositions[result.firstFingerIndex] ==
               candidate.fingerPositions[result.secondFingerIndex];
    }
    if (!probe.identityText.empty() && !candidate.identityText.empty()) {
        return probe.identityText == candidate.identityText;
    }
    return true;
}

MatchDecisionInput decisionInput(const TemplateMatchResult& result) {
    return {.score = result.score,
            .threshold = result.threshold,
            .fingerAgreement = result.fingerAgreement,
            .matchedCount = result.matchedCount,
            .distanceMedian = result.distanceMedian,
            .angleMedian = result.angleMedian,
            .coverage = result.coverage,
            .matchedRatio = result.matchedRatio,
            .refined = result.refined != 0};
}

}  // namespace

void startMatch(std::int32_t threshold, TemplateMatchResult& result, std::string& message) {
    result = {};
    result.threshold = effectiveThreshold(threshold);
    message.clear();
}

void matchLoaded(const LoadedTemplate& probe,
                 const LoadedTemplate& candidate,
                 TemplateMatchResult& result) {
    const std::int32_t threshold = result.threshold;
    result = matchTemplates(probe.fingers, candidate.fingers);
    result.threshold = threshold;
    result.fingerAgreement = fingersAgree(probe, candidate, result);
    result.decision = decideMatch(decisionInput(result)) ? 1 : 0;
}

void wipeFingers(std::span<FingerFeatures> fingers) noexcept {
    for (FingerFeatures& finger : fingers) {
        WipeMemory(finger.triangles.data(), finger.triangles.size() * sizeof(TriangleFeature));
    }
}

std::int32_t finishMatch(std::int32_t status, TemplateMatchResult& result) {
    result.status = static_cast<std::uint32_t>(status);
    return status;
}

std::int32_t matchBuffers(const std::uint8_t* probe,
                          std::size_t probeSize,
                          const std::uint8_t* candidate,
                          std::size_t candidateSize,
                          TemplateMatchResult& result,
                          std::string& message,
                          std::int32_t threshold) {
    startMatch(threshold, result, message);
    if (probe == nullptr || probeSize == 0 || candidate == nullptr || candidateSize == 0) {
        message = matchStatusText(ORLFingerMatcher_StatusInvalidArguments);
        return finishMatch(ORLFingerMatcher_StatusInvalidArguments, result);
    }
    const auto loadSide = [&message](const MatchSide& side,
                                     const std::uint8_t* buffer,
                                     std::size_t size,
                                     LoadedTemplate& loaded) {
        return loadTemplateFromBuffer(
            buffer, size, side.label, side.loadFailStatus, side.noFingerStatus, loaded, message);
    };
    return loadAndMatch(
        [&](LoadedTemplate& loaded) { return loadSide(kProbeSide, probe, probeSize, loaded); },
        [&](LoadedTemplate& loaded) {
            return loadSide(kCandidateSide, candidate, candidateSize, loaded);
        },
        result);
}

}  // namespace orl::matcher
