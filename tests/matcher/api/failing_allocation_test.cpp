// Memory that runs out at any allocation of a match: the exception passes and nothing stays behind.

#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/match_facade.h"
#include "matcher/api/template_loading.h"
#include "tests/support/failing_new.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"

namespace {

using orl::test::BuildRecord;
using orl::test::FailingNew;
using orl::test::LiveBlocks;
using orl::test::RandomMinutiae;
using Bytes = std::vector<std::uint8_t>;

Bytes SmallRecord() {
    return BuildRecord(RandomMinutiae(81, 12));
}

// Calls `match`, which returns what it found, with its first, second, ... allocation failing until
// it gets through without a failure. A failed allocation comes out as std::bad_alloc, or, where the
// standard library can do without it, changes nothing; no block stays. Returns the failures that
// came out.
template <typename Match>
std::int64_t FailEveryAllocation(const Match& match) {
    const auto expected = match();  // what is built once per process is built by now
    std::int64_t thrown = 0;
    for (std::int64_t failAt = 1;; ++failAt) {
        SCOPED_TRACE("failing allocation " + std::to_string(failAt));
        const std::int64_t before = LiveBlocks();
        bool isFailed = false;
        {
            const FailingNew failing(failAt);
            try {
                EXPECT_EQ(match(), expected);
            } catch (const std::bad_alloc&) {
                ++thrown;
            }
            isFailed = failing.Failed();
        }
        EXPECT_EQ(LiveBlocks(), before);
        if (!isFailed) {
            return thrown;
        }
    }
}

TEST(FailingAllocation, PassesThroughTheEntryAndLeavesAZeroResult) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes record = SmallRecord();
    const auto size = static_cast<std::int32_t>(record.size());
    const std::int64_t thrown = FailEveryAllocation([&record, size] {
        MatchResult result = {.Matched = 77, .Score = 88};
        try {
            ORLFingerMatcher_Match(
                record.data(), size, record.data(), size, 0, &result, nullptr, 0);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(result.Matched, 0);
            EXPECT_EQ(result.Score, 0);
            throw;
        }
        EXPECT_GT(result.Score, 0);
        return result.Score;
    });
    // Two records with a list of fingers and one of triangles each, and the memory of the match.
    EXPECT_EQ(thrown, 5);
    ORLFingerMatcher_Shutdown();
}

TEST(FailingAllocation, HasTwoPlacesWhileOneRecordIsLoaded) {
    for (const std::size_t minutiae : {3U, 48U, 128U}) {
        const Bytes record = BuildRecord(RandomMinutiae(83, minutiae));
        orl::matcher::LoadedTemplate loaded;
        std::string message;
        const FailingNew counting(0);
        const std::int32_t status = orl::matcher::loadTemplateFromBuffer(
            record.data(), record.size(), "Probe", 2, 3, loaded, message);
        EXPECT_EQ(status, 0);
        EXPECT_LE(counting.Allocations(), 2) << "the list of fingers, and the finger's triangles";
    }
}

TEST(FailingAllocation, HasOnePlaceMoreForEachFurtherView) {
    const Bytes record = BuildRecord({.views = {{.minutiae = RandomMinutiae(84, 20)},
                                                {.minutiae = RandomMinutiae(85, 30)},
                                                {.minutiae = RandomMinutiae(86, 40)}}});
    orl::matcher::LoadedTemplate loaded;
    std::string message;
    const FailingNew counting(0);
    EXPECT_EQ(orl::matcher::loadTemplateFromBuffer(
                  record.data(), record.size(), "Probe", 2, 3, loaded, message),
              0);
    EXPECT_LE(counting.Allocations(), 4) << "one list of fingers, and each finger's triangles";
}

TEST(FailingAllocation, PassesThroughLoadingFromFiles) {
    const orl::test::ScratchFolder folder;
    const std::string path =
        folder.Write("name_an-identity-text-too-long-for-a-short-string_x", SmallRecord());
    const std::int64_t thrown = FailEveryAllocation([&path] {
        orl::matcher::TemplateMatchResult result;
        std::string message;
        orl::matcher::matchFiles(path, path, result, message, 300);
        return result;
    });
    EXPECT_GE(thrown, 5);
}

TEST(FailingAllocation, PassesThroughTheReportOfABrokenRecord) {
    const Bytes broken = {1, 2, 3};
    const Bytes sound = SmallRecord();
    const std::int64_t thrown = FailEveryAllocation([&broken, &sound] {
        orl::matcher::TemplateMatchResult result;
        std::string message;
        orl::matcher::matchBuffers(
            broken.data(), broken.size(), sound.data(), sound.size(), result, message, 300);
        return message;
    });
    EXPECT_GT(thrown, 0) << "the message has to be kept somewhere";
}

}  // namespace
