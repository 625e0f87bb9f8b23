#pragma once

// What the matcher says of one pair of records, as a value and as a line of text.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "matcher/matching/match_results.h"

namespace orl::test {

struct Answer {
    std::string pair;                          // names the pair: "SET PROBE CANDIDATE"
    bool triangulated = true;                  // false when the matcher threw "not triangulation"
    matcher::TemplateMatchResult result = {};  // all zero when not triangulated
    std::string message = {};

    friend bool operator==(const Answer&, const Answer&) = default;
};

// Matches the two records at the default threshold.
// Throws: whatever the matcher throws but "not triangulation".
Answer AnswerTo(std::string pair,
                std::span<const std::uint8_t> probe,
                std::span<const std::uint8_t> candidate);

// The fractional figures, in this order: rotation, distance median, angle median, coverage, matched
// ratio.
inline constexpr std::size_t kFractions = 5;
inline constexpr const char* kFractionNames[kFractions] = {
    "rotationDegrees", "distanceMedian", "angleMedian", "coverage", "matchedRatio"};
std::vector<float> FractionsOf(const Answer& answer);

// Everything else: the pair, all whole-number figures, and the message, as text.
std::string WholeTextOf(const Answer& answer);

// The answer as one line without its newline. Fractions keep every bit.
std::string LineOf(const Answer& answer);

// The answer in such a line. Throws: std::runtime_error showing the line when it is none.
Answer AnswerOfLine(const std::string& line);

}  // namespace orl::test
