#include "matcher/api/match_status.h"

#include "matcher/api/finger_matcher.h"

namespace orl::matcher {

const char* matchStatusText(std::int32_t status) {
    switch (status) {
        case ORLFingerMatcher_StatusOk:
            return "Match completed successfully";
        case ORLFingerMatcher_StatusInvalidArguments:
            return "Invalid match arguments";
        case ORLFingerMatcher_StatusProbeNotLoaded:
            return "Probe template could not be loaded";
        case ORLFingerMatcher_StatusCandidateNotLoaded:
            return "Candidate template could not be loaded";
        case ORLFingerMatcher_StatusProbeEmpty:
            return "Probe template contains no fingerprints";
        case ORLFingerMatcher_StatusCandidateEmpty:
            return "Candidate template contains no fingerprints";
        case ORLFingerMatcher_StatusNotInitialized:
            return "Initialize must be called before matching";
        default:
            return "Unknown match status";
    }
}

}  // namespace orl::matcher
