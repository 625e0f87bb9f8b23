#include "matcher/api/finger_matcher.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/match_facade.h"
#include "tests/matcher/api/c_caller.h"
#include "tests/support/record_builder.h"

namespace {

using orl::test::BuildRecord;
using orl::test::RandomMinutiae;
using orl::test::RecordContent;
using orl::test::RecordMinutia;
using Bytes = std::vector<std::uint8_t>;

static_assert(sizeof(MatchResult::Matched) == 4);
static_assert(sizeof(MatchResult::Score) == 2);

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr char kUntouched = '#';

// A caller's error buffer in a row of untouched bytes.
struct ErrorBuffer {
    std::array<char, 128> bytes;

    ErrorBuffer() { bytes.fill(kUntouched); }
    char* text() { return bytes.data(); }
    std::int32_t size() const { return static_cast<std::int32_t>(bytes.size()); }
    // Whether every byte from `from` on is as it was.
    bool IsUntouchedFrom(std::size_t from) const {
        return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                           bytes.end(),
                           [](char byte) { return byte == kUntouched; });
    }
};

// The matcher is uninitialised before and after every test.
class FingerMatcher : public testing::Test {
  protected:
    FingerMatcher() { ORLFingerMatcher_Shutdown(); }
    ~FingerMatcher() override { ORLFingerMatcher_Shutdown(); }

    std::int32_t Match(const Bytes& probe, const Bytes& candidate, std::int32_t threshold = 0) {
        return ORLFingerMatcher_Match(probe.data(),
                                      static_cast<std::int32_t>(probe.size()),
                                      candidate.data(),
                                      static_cast<std::int32_t>(candidate.size()),
                                      threshold,
                                      &result_,
                                      error_.text(),
                                      error_.size());
    }
    std::string_view ErrorText() { return error_.text(); }

    MatchResult result_ = {.Matched = 77, .Score = 88};
    ErrorBuffer error_;
};

Bytes SoundRecord() {
    return BuildRecord(RandomMinutiae(61, 40));
}

// The 14 leftmost minutiae are those of SoundRecord, the rest of the image is another finger's.
Bytes PartlyAlikeRecord() {
    constexpr std::ptrdiff_t kAlike = 14;
    std::vector<RecordMinutia> minutiae = RandomMinutiae(61, 40);
    std::ranges::sort(minutiae, {}, &RecordMinutia::x);
    minutiae.resize(kAlike);
    for (const RecordMinutia& other : RandomMinutiae(62, 40)) {
        if (other.x > minutiae[kAlike - 1].x) {
            minutiae.push_back(other);
        }
    }
    return BuildRecord(minutiae);
}

TEST_F(FingerMatcher, IsUninitialisedBeforeInitializeAndAfterEveryShutdown) {
    for (int cycle = 0; cycle < 3; ++cycle) {
        EXPECT_FALSE(ORLFingerMatcher_IsInitialized()) << cycle;
        EXPECT_EQ(ORLFingerMatcher_Initialize(error_.text(), error_.size()), 0) << cycle;
        EXPECT_TRUE(ORLFingerMatcher_IsInitialized()) << cycle;
        ORLFingerMatcher_Shutdown();
        EXPECT_FALSE(ORLFingerMatcher_IsInitialized()) << cycle;
    }
}

TEST_F(FingerMatcher, BearsShutdownWithoutInitialize) {
    ORLFingerMatcher_Shutdown();
    ORLFingerMatcher_Shutdown();
    EXPECT_FALSE(ORLFingerMatcher_IsInitialized());
}

TEST_F(FingerMatcher, BearsInitializeTwiceAndNeedsOneShutdown) {
    EXPECT_EQ(ORLFingerMatcher_Initialize(nullptr, 0), 0);
    EXPECT_EQ(ORLFingerMatcher_Initialize(nullptr, 0), 0);
    EXPECT_TRUE(ORLFingerMatcher_IsInitialized());
    ORLFingerMatcher_Shutdown();
    EXPECT_FALSE(ORLFingerMatcher_IsInitialized());
}

TEST_F(FingerMatcher, WritesAnEmptyMessageOnInitialize) {
    EXPECT_EQ(ORLFingerMatcher_Initialize(error_.text(), 1), 0);
    EXPECT_EQ(error_.bytes[0], '\0');
    EXPECT_TRUE(error_.IsUntouchedFrom(1));
}

TEST_F(FingerMatcher, WritesNothingOnInitializeWithoutRoom) {
    for (const std::int32_t size : {0, -1, kLeast}) {
        EXPECT_EQ(ORLFingerMatcher_Initialize(error_.text(), size), 0) << size;
        EXPECT_TRUE(error_.IsUntouchedFrom(0)) << size;
    }
    EXPECT_EQ(ORLFingerMatcher_Initialize(nullptr, 100), 0);
}

TEST_F(FingerMatcher, TakesOneByteForABrokenRecordAndNoneForNoRecord) {
    const Bytes sound = SoundRecord();
    const auto soundSize = static_cast<std::int32_t>(sound.size());
    ORLFingerMatcher_Initialize(nullptr, 0);
    for (const auto& [size, status] : {std::pair{1, 2}, std::pair{0, 1}, std::pair{-1, 1}}) {
        MatchResult result;
        EXPECT_EQ(ORLFingerMatcher_Match(
                      sound.data(), size, sound.data(), soundSize, 0, &result, nullptr, 0),
                  status)
            << size;
    }
    ORLFingerMatcher_Shutdown();
}

TEST_F(FingerMatcher, CutsTheErrorTextToTheBuffer) {
    const std::string message = "Call Initialize first.";  // 22 letters
    const Bytes record = SoundRecord();
    for (const std::int32_t size : {-1, 0, 1, 2, 22, 23, 24, 100}) {
        SCOPED_TRACE("size " + std::to_string(size));
        ErrorBuffer buffer;
        MatchResult result;
        EXPECT_EQ(ORLFingerMatcher_Match(record.data(),
                                         static_cast<std::int32_t>(record.size()),
                                         record.data(),
                                         static_cast<std::int32_t>(record.size()),
                                         0,
                                         &result,
                                         buffer.text(),
                                         size),
                  10);
        if (size < 1) {
            EXPECT_TRUE(buffer.IsUntouchedFrom(0));
            continue;
        }
        const std::string expected = message.substr(0, static_cast<std::size_t>(size) - 1);
        EXPECT_EQ(std::string(buffer.text()), expected);
        EXPECT_TRUE(buffer.IsUntouchedFrom(expected.size() + 1));
    }
}

TEST_F(FingerMatcher, NeedsNoErrorBuffer) {
    const Bytes record = SoundRecord();
    const auto size = static_cast<std::int32_t>(record.size());
    MatchResult result;
    EXPECT_EQ(
        ORLFingerMatcher_Match(record.data(), size, record.data(), size, 0, &result, nullptr, 100),
        10);
    EXPECT_EQ(
        ORLFingerMatcher_Match(record.data(), size, record.data(), size, 0, nullptr, nullptr, 100),
        1);
    ORLFingerMatcher_Initialize(nullptr, 0);
    EXPECT_EQ(
        ORLFingerMatcher_Match(record.data(), size, record.data(), size, 0, &result, nullptr, 100),
        0);
    EXPECT_EQ(result.Matched, 1);
}

TEST_F(FingerMatcher, RefusesANullResultEvenBeforeInitialisation) {
    const Bytes record = SoundRecord();
    const auto size = static_cast<std::int32_t>(record.size());
    for (const bool initialised : {false, true}) {
        if (initialised) {
            ORLFingerMatcher_Initialize(nullptr, 0);
        }
        EXPECT_EQ(
            ORLFingerMatcher_Match(
                record.data(), size, record.data(), size, 0, nullptr, error_.text(), error_.size()),
            1);
        EXPECT_EQ(ErrorText(), "Result pointer is null.");
    }
}

TEST_F(FingerMatcher, RefusesToMatchBeforeInitialisation) {
    EXPECT_EQ(Match(SoundRecord(), SoundRecord()), 10);
    EXPECT_EQ(ErrorText(), "Call Initialize first.");
    EXPECT_EQ(result_.Matched, 0);
    EXPECT_EQ(result_.Score, 0);
}

TEST_F(FingerMatcher, RefusesToMatchAfterShutdown) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    EXPECT_EQ(Match(SoundRecord(), SoundRecord()), 0);
    ORLFingerMatcher_Shutdown();
    EXPECT_EQ(Match(SoundRecord(), SoundRecord()), 10);
    EXPECT_EQ(result_.Matched, 0);
    EXPECT_EQ(result_.Score, 0);
}

TEST_F(FingerMatcher, MatchesARecordWithItself) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    EXPECT_EQ(Match(SoundRecord(), SoundRecord()), 0);
    EXPECT_EQ(ErrorText(), "");
    EXPECT_EQ(result_.Matched, 1);
    EXPECT_EQ(result_.Score, 1000);
}

TEST_F(FingerMatcher, GivesTheScoreOfANonMatchToo) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    EXPECT_EQ(Match(SoundRecord(), SoundRecord(), 100), 0);  // 1000: level 0, not refined
    EXPECT_EQ(ErrorText(), "");
    EXPECT_EQ(result_.Matched, 0);
    EXPECT_EQ(result_.Score, 1000);
}

TEST_F(FingerMatcher, GivesStatus1ForMissingRecords) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes record = SoundRecord();
    const auto size = static_cast<std::int32_t>(record.size());
    const struct {
        const std::uint8_t* probe;
        std::int32_t probeSize;
        const std::uint8_t* candidate;
        std::int32_t candidateSize;
    } cases[] = {
        {record.data(), 0, record.data(), size},
        {record.data(), -1, record.data(), size},
        {record.data(), kLeast, record.data(), size},
        {record.data(), size, record.data(), 0},
        {record.data(), size, record.data(), -1},
        {nullptr, size, record.data(), size},
        {record.data(), size, nullptr, size},
    };
    for (const auto& c : cases) {
        result_ = {.Matched = 77, .Score = 88};
        EXPECT_EQ(ORLFingerMatcher_Match(c.probe,
                                         c.probeSize,
                                         c.candidate,
                                         c.candidateSize,
                                         0,
                                         &result_,
                                         error_.text(),
                                         error_.size()),
                  1);
        EXPECT_EQ(ErrorText(), "Invalid match arguments");
        EXPECT_EQ(result_.Matched, 0);
        EXPECT_EQ(result_.Score, 0);
    }
}

TEST_F(FingerMatcher, PassesOnTheLoadersStatusAndMessage) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes broken = {1, 2, 3};
    const Bytes empty = BuildRecord(RecordContent{});
    EXPECT_EQ(Match(broken, SoundRecord()), 2);
    EXPECT_EQ(ErrorText(), "Probe template could not be loaded from buffer");
    EXPECT_EQ(Match(SoundRecord(), broken), 3);
    EXPECT_EQ(ErrorText(), "Candidate template could not be loaded from buffer");
    EXPECT_EQ(Match(empty, SoundRecord()), 4);
    EXPECT_EQ(ErrorText(), "Probe template contains no fingerprints from buffer");
    EXPECT_EQ(Match(SoundRecord(), empty), 5);
    EXPECT_EQ(ErrorText(), "Candidate template contains no fingerprints from buffer");
}

TEST_F(FingerMatcher, LetsTheTriangulationsErrorPassAndLeavesAZeroResult) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes two = BuildRecord({{.x = 10, .y = 10}, {.x = 50, .y = 90}});
    EXPECT_THROW(Match(two, SoundRecord()), std::runtime_error);
    EXPECT_EQ(result_.Matched, 0);
    EXPECT_EQ(result_.Score, 0);
    EXPECT_EQ(ErrorText(), "");
    EXPECT_EQ(Match(SoundRecord(), SoundRecord()), 0) << "the matcher goes on afterwards";
}

TEST_F(FingerMatcher, TakesAThresholdOfZeroOrBelowAs300) {
    // A score from 45 to 174: a match at thresholds 0 and -50, none at 300.
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes probe = SoundRecord();
    const Bytes candidate = PartlyAlikeRecord();
    for (const std::int32_t threshold : {0, -1, -5, kLeast, 30, 300}) {
        ASSERT_EQ(Match(probe, candidate, threshold), 0) << threshold;
        ASSERT_GE(result_.Score, 45) << "the records are to be alike in part";
        ASSERT_LT(result_.Score, 175) << "the records are to be alike in part only";
        EXPECT_EQ(result_.Matched, 0) << threshold;
    }
    orl::matcher::TemplateMatchResult direct;
    std::string message;
    for (const std::int32_t threshold : {0, -5}) {
        orl::matcher::matchBuffers(probe.data(),
                                   probe.size(),
                                   candidate.data(),
                                   candidate.size(),
                                   direct,
                                   message,
                                   threshold);
        EXPECT_EQ(direct.decision, 1U) << "without the entry's default, " << threshold;
    }
    // The least threshold of its own is 10 points: a score from 55 on is level 5 and a match.
    ASSERT_EQ(Match(probe, candidate, 1), 0);
    ASSERT_GE(result_.Score, 55);
    EXPECT_EQ(result_.Matched, 1);
}

TEST_F(FingerMatcher, CountsThresholdsUpTo100InTens) {
    ORLFingerMatcher_Initialize(nullptr, 0);
    const Bytes record = SoundRecord();
    for (std::int32_t threshold = -3; threshold < 1200; threshold += threshold < 130 ? 1 : 43) {
        const int effective = threshold <= 0 ? 300 : threshold <= 100 ? 10 * threshold : threshold;
        const int level = 100 - (effective + 5) / 10;
        ASSERT_EQ(Match(record, record, threshold), 0);
        ASSERT_EQ(result_.Score, 1000);
        EXPECT_EQ(result_.Matched, level >= 5 || level == 3 ? 1 : 0) << threshold;
    }
}

TEST_F(FingerMatcher, CanBeCalledFromC) {
    const Bytes record = SoundRecord();
    EXPECT_EQ(CallEveryFunctionFromC(record.data(), static_cast<std::int32_t>(record.size())), 0);
}

}  // namespace
