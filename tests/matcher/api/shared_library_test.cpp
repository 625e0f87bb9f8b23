// The matcher's shared library as a file: what it exports and needs, and that it works when loaded.

#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "tests/module/module_image.h"
#include "tests/support/dynamic_library.h"
#include "tests/support/record_builder.h"

namespace {

using orl::test::DynamicLibrary;
using orl::test::ReadModuleImage;

std::string LibraryPath() {
    const char* const path = std::getenv("ORL_FINGER_MATCHER_LIBRARY");
    return path == nullptr ? "" : path;
}

TEST(SharedLibrary, ExportsTheMatchersFunctionsAndNothingElse) {
    EXPECT_THAT(ReadModuleImage(LibraryPath()).exports,
                testing::UnorderedElementsAre("ORLFingerMatcher_Initialize",
                                              "ORLFingerMatcher_IsInitialized",
                                              "ORLFingerMatcher_Match",
                                              "ORLFingerMatcher_Shutdown",
                                              "ORLFingerMatcher_StatusText"));
}

TEST(SharedLibrary, HasNoExecutableStackAndNoSectionBothWritableAndExecutable) {
    const auto image = ReadModuleImage(LibraryPath());
    EXPECT_FALSE(image.hasExecutableStack);
    EXPECT_FALSE(image.sections.empty());
    for (const auto& section : image.sections) {
        EXPECT_FALSE(section.writable && section.executable) << section.name;
    }
}

TEST(SharedLibrary, MatchesARecordWithItselfAndHasAStateOfItsOwn) {
    const DynamicLibrary library(LibraryPath());
    auto* const initialize =
        library.Symbol<decltype(ORLFingerMatcher_Initialize)>("ORLFingerMatcher_Initialize");
    auto* const isInitialized =
        library.Symbol<decltype(ORLFingerMatcher_IsInitialized)>("ORLFingerMatcher_IsInitialized");
    auto* const match = library.Symbol<decltype(ORLFingerMatcher_Match)>("ORLFingerMatcher_Match");
    auto* const shutdown =
        library.Symbol<decltype(ORLFingerMatcher_Shutdown)>("ORLFingerMatcher_Shutdown");
    auto* const statusText =
        library.Symbol<decltype(ORLFingerMatcher_StatusText)>("ORLFingerMatcher_StatusText");
    ASSERT_TRUE(initialize && isInitialized && match && shutdown && statusText);

    EXPECT_FALSE(isInitialized());
    EXPECT_EQ(initialize(nullptr, 0), 0);
    EXPECT_TRUE(isInitialized());
    const auto record = orl::test::BuildRecord(orl::test::RandomMinutiae(91, 40));
    const auto size = static_cast<std::int32_t>(record.size());
    MatchResult result;
    EXPECT_EQ(match(record.data(), size, record.data(), size, 0, &result, nullptr, 0), 0);
    EXPECT_EQ(result.Matched, 1);
    EXPECT_EQ(result.Score, 1000);
    EXPECT_STREQ(statusText(0), "Match completed successfully");
    shutdown();
    EXPECT_FALSE(isInitialized());
}

}  // namespace
