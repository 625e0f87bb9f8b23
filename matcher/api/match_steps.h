#pragma once

// What matching from memory and matching from files have in common. For these two alone: a program
// that matches from memory links no code for files.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

// How the loading of one side of a comparison is reported.
struct MatchSide {
    std::string_view label;
    std::int32_t loadFailStatus;
    std::int32_t noFingerStatus;
};
inline constexpr MatchSide kProbeSide{
    "Probe", ORLFingerMatcher_StatusProbeNotLoaded, ORLFingerMatcher_StatusProbeEmpty};
inline constexpr MatchSide kCandidateSide{
    "Candidate", ORLFingerMatcher_StatusCandidateNotLoaded, ORLFingerMatcher_StatusCandidateEmpty};

// An empty result with the effective threshold, and no message.
void startMatch(std::int32_t threshold, TemplateMatchResult& result, std::string& message);

// Matches two loaded templates and decides by the result's threshold. Throws: std::bad_alloc.
void matchLoaded(const LoadedTemplate& probe,
                 const LoadedTemplate& candidate,
                 TemplateMatchResult& result);

// Overwrites the triangles of the fingers.
void wipeFingers(std::span<FingerFeatures> fingers) noexcept;

// Puts the status into the result and returns it.
std::int32_t finishMatch(std::int32_t status, TemplateMatchResult& result);

// The two templates of a match. What was built of them is wiped before it is freed.
struct MatchTemplates {
    LoadedTemplate probe;
    LoadedTemplate candidate;

    MatchTemplates() = default;
    MatchTemplates(const MatchTemplates&) = delete;
    MatchTemplates& operator=(const MatchTemplates&) = delete;
    ~MatchTemplates() {
        wipeFingers(probe.fingers);
        wipeFingers(candidate.fingers);
    }
};

// Loads both sides, the probe first, then matches and decides. A loader fills the template that it
// is given and returns a match status.
template <typename LoadProbe, typename LoadCandidate>
std::int32_t loadAndMatch(LoadProbe loadProbe,
                          LoadCandidate loadCandidate,
                          TemplateMatchResult& result) {
    MatchTemplates loaded;
    std::int32_t status = loadProbe(loaded.probe);
    if (status == ORLFingerMatcher_StatusOk) {
        status = loadCandidate(loaded.candidate);
    }
    if (status == ORLFingerMatcher_StatusOk) {
        matchLoaded(loaded.probe, loaded.candidate, result);
    }
    return finishMatch(status, result);
}

}  // namespace orl::matcher
