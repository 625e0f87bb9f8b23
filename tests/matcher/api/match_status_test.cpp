#include "matcher/api/match_status.h"

#include <limits>

#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"

namespace orl::matcher {
namespace {

constexpr struct {
    std::int32_t status;
    const char* text;
} kTexts[] = {
    {0, "Match completed successfully"},
    {1, "Invalid match arguments"},
    {2, "Probe template could not be loaded"},
    {3, "Candidate template could not be loaded"},
    {4, "Probe template contains no fingerprints"},
    {5, "Candidate template contains no fingerprints"},
    {10, "Initialize must be called before matching"},
};

TEST(MatchStatus, HasATextForEveryStatus) {
    for (const auto& row : kTexts) {
        EXPECT_STREQ(matchStatusText(row.status), row.text) << row.status;
        EXPECT_STREQ(ORLFingerMatcher_StatusText(row.status), row.text) << row.status;
    }
}

TEST(MatchStatus, CallsEveryOtherNumberUnknown) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();
    for (const std::int32_t status : {-1, 6, 7, 8, 9, 11, 256, 65536, kLeast, kGreatest}) {
        EXPECT_STREQ(matchStatusText(status), "Unknown match status") << status;
        EXPECT_STREQ(ORLFingerMatcher_StatusText(status), "Unknown match status") << status;
    }
}

}  // namespace
}  // namespace orl::matcher
