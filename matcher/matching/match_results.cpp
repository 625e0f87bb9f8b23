#include "matcher/matching/match_results.h"

namespace orl::matcher {

bool IsBetterMatch(const FingerMatchResult& challenger, const FingerMatchResult& best) {
    if (challenger.score != best.score) {
        return challenger.score > best.score;
    }
    if (challenger.matchedCount != best.matchedCount) {
        return challenger.matchedCount > best.matchedCount;
    }
    if (challenger.matchedRatio != best.matchedRatio) {
        return challenger.matchedRatio > best.matchedRatio;
    }
    if (challenger.coverage != best.coverage) {
        return challenger.coverage > best.coverage;
    }
    return challenger.distanceMedian < best.distanceMedian;
}

}  // namespace orl::matcher
