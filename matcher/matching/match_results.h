#pragma once

// Results of matching: of one finger against one finger, and of one template against another.

#include <cstdint>

namespace orl::matcher {

// One finger against one finger in one orientation. All zero before a match and after an early
// exit.
struct FingerMatchResult {
    std::uint16_t score = 0;         // 0..1000
    std::uint16_t pairCount = 0;     // consolidated minutia pairs, saturated at 65535
    std::uint16_t matchedCount = 0;  // pairs that agree with the best alignment, saturated
    float rotationDegrees = 0.0F;    // of the best alignment, in (-180, 180]
    std::uint32_t orientation = 0;   // quarter turns given to the second finger, 0..3
    float distanceMedian = 0.0F;     // of the agreeing pairs' position residuals, grid units
    float angleMedian = 0.0F;        // of the agreeing pairs' direction residuals, degrees
    float coverage = 0.0F;           // mean of the two overlap area ratios, 0..1
    float matchedRatio = 0.0F;       // matchedCount over the smaller minutia count, 0..1
    std::uint32_t refined = 0;       // 1 when the fine rotation search ran

    friend bool operator==(const FingerMatchResult&, const FingerMatchResult&) = default;
};

// Whether `challenger` replaces `best`: greater score, then greater matchedCount, then greater
// matchedRatio, then greater coverage, then smaller distanceMedian. Full ties keep `best`.
bool IsBetterMatch(const FingerMatchResult& challenger, const FingerMatchResult& best);

// The best finger pair of two templates. The driver leaves status and decision 0, threshold 300 and
// fingerAgreement true; the facade completes them.
struct TemplateMatchResult {
    std::uint32_t status = 0;             // match status, 0 from the driver
    std::uint16_t decision = 0;           // low byte: 1 for a match
    std::uint16_t score = 0;              // 0..1000
    std::int32_t threshold = 300;         // effective threshold
    bool fingerAgreement = true;          // finger positions, or identity texts, do not contradict
    std::uint64_t firstFingerIndex = 0;   // winning finger of the first template (the probe)
    std::uint64_t secondFingerIndex = 0;  // winning finger of the second template (the candidate)
    std::uint16_t pairCount = 0;
    std::uint16_t matchedCount = 0;
    float rotationDegrees = 0.0F;
    std::uint32_t orientation = 0;
    float distanceMedian = 0.0F;
    float angleMedian = 0.0F;
    float coverage = 0.0F;
    float matchedRatio = 0.0F;
    std::uint32_t refined = 0;

    friend bool operator==(const TemplateMatchResult&, const TemplateMatchResult&) = default;
};

}  // namespace orl::matcher
