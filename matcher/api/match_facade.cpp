#include "matcher/api/match_facade.h"

#include <string_view>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/match_decision.h"
#include "matcher/api/match_status.h"
#include "matcher/api/template_loading.h"
#include "matcher/matching/match_driver.h"

namespace orl::matcher {
namespace {

// How the loading of one side of a comparison is reported.
struct Side {
    std::string_view label;
    std::int32_t loadFailStatus;
    std::int32_t noFingerStatus;
};
constexpr Side kProbe{
    "Probe", ORLFingerMatcher_StatusProbeNotLoaded, ORLFingerMatcher_StatusProbeEmpty};
constexpr Side kCandidate{
    "Candidate", ORLFingerMatcher_StatusCandidateNotLoaded, ORLFingerMatcher_StatusCandidateEmpty};

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

// Loads both sides, the probe first, then matches and decides. A loader fills the template that it
// is given and returns a match status.
template <typename LoadProbe, typename LoadCandidate>
std::int32_t loadAndMatch(LoadProbe loadProbe,
                          LoadCandidate loadCandidate,
                          TemplateMatchResult& result) {
    LoadedTemplate probe;
    LoadedTemplate candidate;
    std::int32_t status = loadProbe(probe);
    if (status == ORLFingerMatcher_StatusOk) {
        status = loadCandidate(candidate);
    }
    if (status != ORLFingerMatcher_StatusOk) {
        return status;
    }
    const std::int32_t threshold = result.threshold;
    result = matchTemplates(probe.fingers, candidate.fingers);
    result.threshold = threshold;
    result.fingerAgreement = fingersAgree(probe, candidate, result);
    result.decision = decideMatch(decisionInput(result)) ? 1 : 0;
    return ORLFingerMatcher_StatusOk;
}

void startResult(std::int32_t threshold, TemplateMatchResult& result, std::string& message) {
    result = {};
    result.threshold = effectiveThreshold(threshold);
    message.clear();
}

std::int32_t finishWithStatus(std::int32_t status, TemplateMatchResult& result) {
    result.status = static_cast<std::uint32_t>(status);
    return status;
}

}  // namespace

std::int32_t matchBuffers(const std::uint8_t* probe,
                          std::size_t probeSize,
                          const std::uint8_t* candidate,
                          std::size_t candidateSize,
                          TemplateMatchResult& result,
                          std::string& message,
                          std::int32_t threshold) {
    startResult(threshold, result, message);
    if (probe == nullptr || probeSize == 0 || candidate == nullptr || candidateSize == 0) {
        message = matchStatusText(ORLFingerMatcher_StatusInvalidArguments);
        return finishWithStatus(ORLFingerMatcher_StatusInvalidArguments, result);
    }
    const auto loadSide = [&message](const Side& side,
                                     const std::uint8_t* buffer,
                                     std::size_t size,
                                     LoadedTemplate& loaded) {
        return loadTemplateFromBuffer(
            buffer, size, side.label, side.loadFailStatus, side.noFingerStatus, loaded, message);
    };
    const std::int32_t status = loadAndMatch(
        [&](LoadedTemplate& loaded) { return loadSide(kProbe, probe, probeSize, loaded); },
        [&](LoadedTemplate& loaded) {
            return loadSide(kCandidate, candidate, candidateSize, loaded);
        },
        result);
    return finishWithStatus(status, result);
}

std::int32_t matchFiles(const std::string& probePath,
                        const std::string& candidatePath,
                        TemplateMatchResult& result,
                        std::string& message,
                        std::int32_t threshold) {
    startResult(threshold, result, message);
    const auto loadSide = [&message](
                              const Side& side, const std::string& path, LoadedTemplate& loaded) {
        return loadTemplateFromFile(
            path, side.loadFailStatus, side.noFingerStatus, loaded, message);
    };
    const std::int32_t status = loadAndMatch(
        [&](LoadedTemplate& loaded) { return loadSide(kProbe, probePath, loaded); },
        [&](LoadedTemplate& loaded) { return loadSide(kCandidate, candidatePath, loaded); },
        result);
    return finishWithStatus(status, result);
}

}  // namespace orl::matcher
