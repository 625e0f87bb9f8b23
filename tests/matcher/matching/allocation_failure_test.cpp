#include <cstdint>
#include <new>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/matching/match_driver.h"
#include "tests/support/failing_new.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

// The result, or nothing when an allocation failed; `failed` tells whether one was made to fail.
std::optional<TemplateMatchResult> MatchedWithFailure(const std::vector<FingerFeatures>& first,
                                                      const std::vector<FingerFeatures>& second,
                                                      std::int64_t failAt,
                                                      bool& failed) {
    const test::FailingNew failing(failAt);
    std::optional<TemplateMatchResult> result;
    try {
        result = matchTemplates(first, second);
    } catch (const std::bad_alloc&) {
        result.reset();
    }
    failed = failing.Failed();
    return result;
}

TEST(MatchTemplates, PassesAnAllocationFailureOnAndLeaksNothing) {
    std::mt19937 random(1);
    const MinutiaList finger = test::RandomMinutiaList(random, 14);
    const std::vector<FingerFeatures> first = {test::BuiltFinger(finger)};
    const std::vector<FingerFeatures> second = {test::BuiltFinger(test::Impression(
        random, finger, {.rotationDegrees = 95.0, .jitterPixels = 4, .added = 2}))};
    const TemplateMatchResult expected = matchTemplates(first, second);
    const std::int64_t before = test::LiveBlocks();
    int thrown = 0;
    bool failed = true;
    for (std::int64_t failAt = 1; failed; ++failAt) {
        const auto result = MatchedWithFailure(first, second, failAt, failed);
        ASSERT_EQ(test::LiveBlocks(), before) << "allocation " << failAt;
        // A failed request for scratch memory of a sort may be made up for; nothing else may.
        if (result) {
            EXPECT_EQ(*result, expected) << "allocation " << failAt;
        } else {
            ++thrown;
        }
    }
    EXPECT_GT(thrown, 20);
    EXPECT_EQ(matchTemplates(first, second), expected);
}

}  // namespace
}  // namespace orl::matcher
