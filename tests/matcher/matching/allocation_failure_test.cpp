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

using Fingers = std::vector<FingerFeatures>;

std::int64_t AllocationsOf(const Fingers& first, const Fingers& second) {
    const test::FailingNew counting(0);
    matchTemplates(first, second);
    return counting.Allocations();
}

// Every allocation of a match fails in turn; returns how many there were.
std::int64_t ExpectEveryFailureToBePassedOn(const Fingers& first, const Fingers& second) {
    const TemplateMatchResult expected = matchTemplates(first, second);
    const std::int64_t allocations = AllocationsOf(first, second);
    const std::int64_t before = test::LiveBlocks();
    bool failed = true;
    for (std::int64_t failAt = 1; failed; ++failAt) {
        const auto result = MatchedWithFailure(first, second, failAt, failed);
        EXPECT_EQ(test::LiveBlocks(), before) << "allocation " << failAt;
        EXPECT_EQ(failed, failAt <= allocations);
        EXPECT_EQ(result.has_value(), !failed) << "allocation " << failAt;
        EXPECT_TRUE(failed || result == expected);
    }
    EXPECT_EQ(matchTemplates(first, second), expected);
    return allocations;
}

TEST(MatchTemplates, PassesAnAllocationFailureOnAndLeaksNothing) {
    std::mt19937 random(1);
    const MinutiaList finger = test::RandomMinutiaList(random, 14);
    const Fingers first = {test::BuiltFinger(finger)};
    const Fingers second = {test::BuiltFinger(test::Impression(
        random, finger, {.rotationDegrees = 95.0, .jitterPixels = 4, .added = 2}))};
    // All lists fit into the memory that a call takes at first.
    EXPECT_EQ(ExpectEveryFailureToBePassedOn(first, second), 1);
}

TEST(MatchTemplates, PassesAnAllocationFailureOnWhenItsMemorySpillsToTheHeap) {
    std::mt19937 random(2);
    Fingers first;
    Fingers second;
    for (int i = 0; i < 2; ++i) {
        const MinutiaList finger = test::RandomMinutiaList(random, kMaxMinutiae);
        first.push_back(test::BuiltFinger(finger));
        second.push_back(
            test::BuiltFinger(test::Impression(random, finger, {.rotationDegrees = 95.0})));
    }
    EXPECT_GT(ExpectEveryFailureToBePassedOn(first, second), 1);
}

// All pairs of triangles are alike: the pair lists grow far beyond what they hold at first.
TEST(MatchTemplates, PassesAnAllocationFailureOnWhenItsPairListsGrow) {
    MinutiaList lattice;
    for (std::uint16_t i = 0; i < 64; ++i) {
        lattice.push_back({1,
                           static_cast<std::uint16_t>(40 + i % 8 * 30),
                           static_cast<std::uint16_t>(40 + i / 8 * 30),
                           20});
    }
    const Fingers fingers = {test::BuiltFinger(lattice)};
    EXPECT_GT(ExpectEveryFailureToBePassedOn(fingers, fingers), 2);
}

}  // namespace
}  // namespace orl::matcher
