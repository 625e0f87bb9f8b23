#pragma once

// Decides from the figures of the best finger pair whether two templates are of the same finger:
// clear scores decide alone, scores near the threshold must also satisfy a row of quality limits.

#include <cstdint>

namespace orl::matcher {

struct MatchDecisionInput {
    std::uint16_t score = 0;       // 0..1000
    std::int32_t threshold = 300;  // effective threshold, in score points
    bool fingerAgreement = true;   // finger positions or identity texts do not contradict
    std::uint16_t matchedCount = 0;
    float distanceMedian = 0.0F;  // grid units
    float angleMedian = 0.0F;     // degrees
    float coverage = 0.0F;        // 0..1
    float matchedRatio = 0.0F;    // 0..1
    bool refined = false;         // the fine rotation search ran
};

// How far the score lies above the threshold, in tens, each taken to its nearest ten first:
// (score + 5) / 10 - (threshold + 5) / 10. The divisions truncate toward zero, so a threshold of
// -14 counts as 0 tens and one of -15 as -1.
std::int32_t matchLevel(std::uint16_t score, std::int32_t threshold);

// Whether the figures are a match. Never throws; safe from any thread.
bool decideMatch(const MatchDecisionInput& input);

}  // namespace orl::matcher
