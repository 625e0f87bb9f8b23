#pragma once

// What orl-finger says about one matched pair.

#include <cstdint>
#include <string>

#include "matcher/matching/match_results.h"

namespace orl::tools {

// The status of a pair whose match raised an exception.
inline constexpr std::int32_t kExceptionStatus = -1;

// One pair and how its match ended. On an exception `result` is all zero (no agreement, threshold
// 0), and `message` is the exception's text.
struct MatchReport {
    std::string probe;
    std::string candidate;
    std::int32_t status = 0;
    std::string message;
    matcher::TemplateMatchResult result;
};

// One JSON object in one line, without a newline.
std::string jsonFromReport(const MatchReport& report);

// A few lines for a reader, ending with a newline.
std::string textFromReport(const MatchReport& report);

// Whose fault a status other than 0 is: the probe's or the candidate's name, or both.
std::string subjectOfFailure(const MatchReport& report);

}  // namespace orl::tools
