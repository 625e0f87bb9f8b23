#include "adapter/matcher_bridge.h"

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/adapter/adapter_test.h"
#include "tests/support/guarded_buffer.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Record = std::vector<std::uint8_t>;

// Matches records that are followed by memory that cannot be read.
bool Match(const Record& enrolled, const Record& captured) {
    const GuardedBuffer enrolledBytes(enrolled);
    const GuardedBuffer capturedBytes(captured);
    return adapter::MatchISOTemplates(
        enrolledBytes.data(), enrolledBytes.size(), capturedBytes.data(), capturedBytes.size());
}

class MatcherBridge : public AdapterTest {
  protected:
    // What every test but those of the initialisation begins with.
    static void ReadyMatcher() { TheFakeMatcher().initialized = true; }

    static void Answer(MatchAnswer answer) {
        TheFakeMatcher().answers.push_back(std::move(answer));
    }
};

TEST_F(MatcherBridge, InitialisesTheMatcherBeforeTheFirstMatchOnly) {
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_EQ(TheFakeMatcher().initializations, 1);
    EXPECT_THAT(TheFakeMatcher().matches, SizeIs(2));
    EXPECT_EQ(TheFakeMatcher().initializeErrorTextSize, 512);
    EXPECT_TRUE(TheFakeMatcher().initializeErrorTextWasZero);
}

TEST_F(MatcherBridge, InitialisesAgainAfterAShutdown) {
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    adapter::ShutDownMatcher();
    EXPECT_EQ(TheFakeMatcher().shutdowns, 1);
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_EQ(TheFakeMatcher().initializations, 2);
}

TEST_F(MatcherBridge, GivesNoMatchUntilAnInitialisationSucceeds) {
    TheFakeMatcher().initializeStatus = 9;
    TheFakeMatcher().initializeText = "no state to be had";
    Answer({.matched = 1, .score = 900});
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
    // (3 + 5) * 6 and (4 + 5) * 6 bytes.
    const std::string sizes = "MatchISOTemplates enrolledSize=48 capturedSize=54";
    const std::string failure =
        "MatchISOTemplates: ORLFingerMatcher_Initialize failed: no state to be had";
    EXPECT_THAT(TakeLog(), ElementsAre(sizes, failure, sizes, failure));

    TheFakeMatcher().initializeStatus = 0;
    EXPECT_TRUE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_EQ(TheFakeMatcher().initializations, 3);
}

TEST_F(MatcherBridge, PassesTheStoredRecordAsProbeAtTheDefaultThreshold) {
    ReadyMatcher();
    const Record enrolled = ViewOf(3, 0x21);
    const Record captured = ViewOf(7, 0x42);
    Match(enrolled, captured);
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
    const MatchCall& call = TheFakeMatcher().matches[0];
    EXPECT_EQ(call.probe, enrolled);
    EXPECT_EQ(call.candidate, captured);
    EXPECT_EQ(call.threshold, 0);
    EXPECT_EQ(call.errorTextSize, 512);
    EXPECT_TRUE(call.errorTextWasZero);
}

TEST_F(MatcherBridge, ReportsAMatchWithItsScore) {
    ReadyMatcher();
    Answer({.matched = 1, .score = 1000});
    EXPECT_TRUE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_THAT(TakeLog(),
                ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=54",
                            "MatchISOTemplates: MATCH score=1000"));
}

TEST_F(MatcherBridge, ReportsANonMatchWithItsScore) {
    ReadyMatcher();
    Answer({.matched = 0, .score = 299});
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_THAT(TakeLog(),
                ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=54",
                            "MatchISOTemplates: NO MATCH score=299"));
}

TEST_F(MatcherBridge, LeavesTheDecisionToTheMatcherWhateverTheScore) {
    ReadyMatcher();
    Answer({.matched = 0, .score = 1000});
    Answer({.matched = 1, .score = 0});
    Answer({.matched = -1, .score = 5});
    Answer({.matched = 0x10000, .score = 65535});
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_TRUE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_TRUE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_TRUE(Match(ViewOf(3), ViewOf(4)));
    const std::vector<std::string> log = TakeLog();
    ASSERT_EQ(log.size(), 8U);
    EXPECT_EQ(log[7], "MatchISOTemplates: MATCH score=65535");
}

TEST_F(MatcherBridge, TakesEveryOtherStatusForNoMatch) {
    ReadyMatcher();
    for (const std::int32_t status : {1, 2, 3, 4, 5, 10, -1, 2147483647}) {
        Answer({.status = status, .matched = 1, .score = 900});
        EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
        EXPECT_THAT(TakeLog(),
                    ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=54",
                                "MatchISOTemplates: NO MATCH, Status: " + std::to_string(status)));
    }
}

TEST_F(MatcherBridge, TakesAnExceptionForNoMatchAndLogsItsText) {
    ReadyMatcher();
    Answer({.raise = [] { throw std::runtime_error("not triangulation"); }});
    Answer({.raise = [] { throw std::bad_alloc(); }});
    Answer({.raise = [] { throw std::length_error("unordered_map/set too long"); }});
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    }
    const std::string sizes = "MatchISOTemplates enrolledSize=48 capturedSize=54";
    EXPECT_THAT(TakeLog(),
                ElementsAre(sizes,
                            "MatchISOTemplates: exception: not triangulation",
                            sizes,
                            std::string("MatchISOTemplates: exception: ") + std::bad_alloc().what(),
                            sizes,
                            "MatchISOTemplates: exception: unordered_map/set too long"));
}

TEST_F(MatcherBridge, StopsExceptionsOutsideTheStandardFamilyToo) {
    ReadyMatcher();
    Answer({.raise = [] { throw 42; }});
    Answer({.raise = [] { throw "a text"; }});
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    const std::vector<std::string> log = TakeLog();
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[1], "MatchISOTemplates: exception: unknown");
    EXPECT_EQ(log[3], "MatchISOTemplates: exception: unknown");
}

TEST_F(MatcherBridge, StopsExceptionsOfTheInitialisation) {
    TheFakeMatcher().initializeRaise = [] { throw std::runtime_error("no mutex"); };
    EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
    EXPECT_THAT(TakeLog(),
                ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=54",
                            "MatchISOTemplates: exception: no mutex"));
}

TEST_F(MatcherBridge, CopiesThirtyBytesOfAViewWithoutMinutiae) {
    ReadyMatcher();
    Record longer = ViewOf(0);
    longer.resize(80, 0x33);
    Match(longer, ViewOf(1));
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
    EXPECT_EQ(TheFakeMatcher().matches[0].probe, ViewOf(0));
    EXPECT_THAT(TheFakeMatcher().matches[0].probe, SizeIs(30));
    EXPECT_THAT(TheFakeMatcher().matches[0].candidate, SizeIs(36));
}

TEST_F(MatcherBridge, CopiesTheGreatestViewWhole) {
    ReadyMatcher();
    Match(ViewOf(255), ViewOf(254));
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
    EXPECT_THAT(TheFakeMatcher().matches[0].probe, SizeIs(1560));
    EXPECT_THAT(TheFakeMatcher().matches[0].candidate, SizeIs(1554));
}

TEST_F(MatcherBridge, CutsARecordToItsFirstViewWhateverFollows) {
    ReadyMatcher();
    for (std::uint8_t minutiae = 0; minutiae < 40; ++minutiae) {
        TheFakeMatcher().matches.clear();
        Record enrolled = ViewOf(minutiae, 0x21);
        Record captured = ViewOf(20, 0x42);
        const Record first = enrolled;
        enrolled.insert(enrolled.end(), minutiae, 0x99);
        captured.insert(captured.end(), 1, 0x98);
        Match(enrolled, captured);
        ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
        EXPECT_EQ(TheFakeMatcher().matches[0].probe, first);
        EXPECT_EQ(TheFakeMatcher().matches[0].candidate, ViewOf(20, 0x42));
    }
}

struct ShortRecord {
    std::size_t bytes;
    std::uint8_t minutiae;  // byte 27, where the record reaches that far
    const char* why;
};

constexpr ShortRecord kShortRecords[] = {
    {0, 0, "no byte at all"},
    {1, 0, "one byte"},
    {27, 0, "ends before the minutiae count"},
    {28, 0, "ends before the extended-data length"},
    {29, 0, "ends one byte early"},
    {35, 1, "ends one byte early with one minutia"},
    {36, 2, "ends before the second minutia"},
    {1559, 255, "ends one byte early with the most minutiae"},
};

Record MakeShort(const ShortRecord& shape) {
    Record record(shape.bytes, 0x11);
    if (record.size() > 27) {
        record[27] = shape.minutiae;
    }
    return record;
}

TEST_F(MatcherBridge, GivesStatusTwoForAnEnrolledRecordThatDoesNotHoldItsFirstView) {
    ReadyMatcher();
    for (const ShortRecord& shape : kShortRecords) {
        EXPECT_FALSE(Match(MakeShort(shape), ViewOf(3))) << shape.why;
        EXPECT_THAT(TakeLog(),
                    ElementsAre("MatchISOTemplates enrolledSize=" + std::to_string(shape.bytes) +
                                    " capturedSize=48",
                                "MatchISOTemplates: NO MATCH, Status: 2"))
            << shape.why;
    }
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
    EXPECT_EQ(WatchedNew::LiveNothrowBlocks(), 0U);
}

TEST_F(MatcherBridge, GivesStatusThreeForACapturedRecordThatDoesNotHoldItsFirstView) {
    ReadyMatcher();
    for (const ShortRecord& shape : kShortRecords) {
        EXPECT_FALSE(Match(ViewOf(3), MakeShort(shape))) << shape.why;
        EXPECT_THAT(TakeLog(),
                    ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=" +
                                    std::to_string(shape.bytes),
                                "MatchISOTemplates: NO MATCH, Status: 3"))
            << shape.why;
    }
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
    EXPECT_EQ(WatchedNew::LiveNothrowBlocks(), 0U);
}

TEST_F(MatcherBridge, ReportsTheEnrolledRecordWhenBothAreTooShort) {
    ReadyMatcher();
    EXPECT_FALSE(Match(Record(27, 1), Record(27, 1)));
    EXPECT_THAT(TakeLog(),
                ElementsAre("MatchISOTemplates enrolledSize=27 capturedSize=27",
                            "MatchISOTemplates: NO MATCH, Status: 2"));
}

TEST_F(MatcherBridge, InitialisesTheMatcherBeforeItLooksAtTheRecords) {
    EXPECT_FALSE(Match(Record(27, 1), ViewOf(3)));
    EXPECT_EQ(TheFakeMatcher().initializations, 1);
}

TEST_F(MatcherBridge, AcceptsARecordThatHoldsItsFirstViewExactly) {
    ReadyMatcher();
    for (const int minutiae : {0, 1, 2, 254, 255}) {
        const Record exact = ViewOf(static_cast<std::uint8_t>(minutiae));
        Answer({.matched = 1});
        EXPECT_TRUE(Match(exact, exact)) << minutiae << " minutiae";
    }
}

TEST_F(MatcherBridge, WipesAndFreesItsCopiesOnEveryPath) {
    ReadyMatcher();
    Answer({.matched = 1, .score = 900});
    Answer({.matched = 0, .score = 10});
    Answer({.status = 2});
    Answer({.raise = [] { throw std::runtime_error("not triangulation"); }});
    Answer({.raise = [] { throw 42; }});
    for (int i = 0; i < 5; ++i) {
        Match(ViewOf(3, 0xFF), ViewOf(4, 0xFF));
        EXPECT_EQ(WatchedNew::LiveBlocks(), 0U) << "answer " << i;
        EXPECT_EQ(WatchedNew::UnwipedBlocks(), 0U) << "answer " << i;
        EXPECT_EQ(WatchedNew::LiveNothrowBlocks(), 0U) << "answer " << i;
    }
    EXPECT_THAT(TheFakeMatcher().matches, SizeIs(5));
    EXPECT_EQ(CountingHeap::LiveBlocks(), 0U) << "the copies are not the process heap's";
}

TEST_F(MatcherBridge, GivesNoMatchWhenACopyCannotBeAllocated) {
    ReadyMatcher();
    for (const std::size_t successes : {0U, 1U}) {
        WatchedNew::FailNothrowAfter(successes);
        EXPECT_FALSE(Match(ViewOf(3), ViewOf(4)));
        EXPECT_EQ(WatchedNew::LiveNothrowBlocks(), 0U);
        EXPECT_THAT(TakeLog(), ElementsAre("MatchISOTemplates enrolledSize=48 capturedSize=54"));
    }
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
}

}  // namespace
}  // namespace orl::test
