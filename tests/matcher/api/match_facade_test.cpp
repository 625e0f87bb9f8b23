#include "matcher/api/match_facade.h"

#include <limits>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"

namespace orl::matcher {
namespace {

using orl::test::BuildRecord;
using orl::test::RandomMinutiae;
using orl::test::RecordContent;
using orl::test::RecordMinutia;
using orl::test::RecordView;
using orl::test::ScratchFolder;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kThreshold = 300;

struct Match {
    TemplateMatchResult result;
    std::string message = "left over";
    std::int32_t status = -1;
};

Match MatchBytes(const Bytes& probe, const Bytes& candidate, std::int32_t threshold = kThreshold) {
    Match match;
    match.status = matchBuffers(probe.data(),
                                probe.size(),
                                candidate.data(),
                                candidate.size(),
                                match.result,
                                match.message,
                                threshold);
    return match;
}

Match MatchPaths(const std::string& probe,
                 const std::string& candidate,
                 std::int32_t threshold = kThreshold) {
    Match match;
    match.status = matchFiles(probe, candidate, match.result, match.message, threshold);
    return match;
}

RecordView FingerView(std::uint32_t seed, std::uint8_t position) {
    return {.fingerPosition = position, .minutiae = RandomMinutiae(seed, 40)};
}

Bytes SoundRecord() {
    return BuildRecord(RandomMinutiae(41, 40));
}

// A record whose first `positions` views have known positions.
Bytes RecordWithPositions(std::uint8_t positions, std::vector<RecordView> views) {
    return BuildRecord({.verticalResolution = static_cast<std::uint16_t>(positions * 256),
                        .views = std::move(views)});
}

TEST(MatchBuffers, MatchesARecordWithItself) {
    const Match match = MatchBytes(SoundRecord(), SoundRecord());
    EXPECT_EQ(match.status, 0);
    EXPECT_EQ(match.message, "");
    EXPECT_EQ(match.result.status, 0U);
    EXPECT_EQ(match.result.score, 1000U);  // 40 of 40 and 40: 40 * 40 * 1000 / (40 * 40)
    EXPECT_EQ(match.result.matchedCount, 40U);
    EXPECT_EQ(match.result.orientation, 0U);
    EXPECT_EQ(match.result.rotationDegrees, 0.0F);
    EXPECT_EQ(match.result.decision, 1U);
    EXPECT_TRUE(match.result.fingerAgreement);
    EXPECT_EQ(match.result.threshold, 300);
}

TEST(MatchBuffers, DoesNotMatchTwoUnlikeRecords) {
    const Match match = MatchBytes(SoundRecord(), BuildRecord(RandomMinutiae(42, 40)));
    EXPECT_EQ(match.status, 0);
    EXPECT_EQ(match.message, "");
    EXPECT_LT(match.result.score, 175U);
    EXPECT_EQ(match.result.decision, 0U);
}

TEST(MatchBuffers, CountsThresholdsUpTo100InTens) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();
    constexpr struct {
        std::int32_t given;
        std::int32_t effective;
    } kCases[] = {
        {30, 300},
        {25, 250},
        {1, 10},
        {100, 1000},
        {101, 101},
        {150, 150},
        {300, 300},
        {kGreatest, kGreatest},
        {0, 0},
        {-5, -50},
        {-214748364, -2147483640},
        {-214748365, 2147483646},  // -2147483650, kept in 32 bits: + 2^32
        {kLeast, 0},               // -10 * 2^31 is a multiple of 2^32
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(MatchBytes(SoundRecord(), SoundRecord(), c.given).result.threshold, c.effective)
            << c.given;
        EXPECT_EQ(MatchBytes({}, {}, c.given).result.threshold, c.effective)
            << c.given << " with invalid arguments";
    }
}

TEST(MatchBuffers, DecidesAgainstTheEffectiveThreshold) {
    // A score of 1000 whose fine rotation search did not run: only the level decides.
    constexpr struct {
        std::int32_t threshold;
        std::uint16_t decision;
        const char* why;
    } kCases[] = {
        {95, 1, "950, level 5"},
        {96, 0, "960, level 4 needs the fine search"},
        {97, 1, "970, level 3"},
        {98, 0, "980, level 2 needs the fine search"},
        {100, 0, "1000, level 0 needs the fine search"},
        {954, 1, "954, level 100 - 95"},
        {955, 0, "955, level 100 - 96"},
        {1125, 0, "level 100 - 113, below every row"},
        {0, 1, "0, level 100"},
        {-5, 1, "-50, level 104"},
        {std::numeric_limits<std::int32_t>::max(), 0, "far below every row"},
    };
    const Bytes record = SoundRecord();
    for (const auto& c : kCases) {
        const Match match = MatchBytes(record, record, c.threshold);
        ASSERT_EQ(match.result.score, 1000U);
        ASSERT_EQ(match.result.refined, 0U);
        EXPECT_EQ(match.result.decision, c.decision) << c.threshold << ": " << c.why;
    }
}

void ExpectStartValues(const Match& match) {
    TemplateMatchResult start;
    start.status = static_cast<std::uint32_t>(match.status);
    EXPECT_EQ(match.result, start);
}

TEST(MatchBuffers, GivesStatus1WhenABufferOrASizeIsMissing) {
    const Bytes record = SoundRecord();
    const struct {
        const std::uint8_t* probe;
        std::size_t probeSize;
        const std::uint8_t* candidate;
        std::size_t candidateSize;
    } cases[] = {
        {nullptr, record.size(), record.data(), record.size()},
        {record.data(), 0, record.data(), record.size()},
        {record.data(), record.size(), nullptr, record.size()},
        {record.data(), record.size(), record.data(), 0},
        {nullptr, 0, nullptr, 0},
    };
    for (const auto& c : cases) {
        Match match;
        match.result.score = 77;
        match.status = matchBuffers(c.probe,
                                    c.probeSize,
                                    c.candidate,
                                    c.candidateSize,
                                    match.result,
                                    match.message,
                                    kThreshold);
        EXPECT_EQ(match.status, 1);
        EXPECT_EQ(match.message, "Invalid match arguments");
        ExpectStartValues(match);
    }
}

TEST(MatchBuffers, TellsWhichSideCouldNotBeLoaded) {
    const Bytes sound = SoundRecord();
    const Bytes broken = {1, 2, 3};
    const Bytes empty = BuildRecord(RecordContent{});
    const struct {
        const Bytes& probe;
        const Bytes& candidate;
        std::int32_t status;
        const char* message;
    } cases[] = {
        {broken, sound, 2, "Probe template could not be loaded from buffer"},
        {sound, broken, 3, "Candidate template could not be loaded from buffer"},
        {empty, sound, 4, "Probe template contains no fingerprints from buffer"},
        {sound, empty, 5, "Candidate template contains no fingerprints from buffer"},
        {broken, empty, 2, "Probe template could not be loaded from buffer"},
        {empty, broken, 4, "Probe template contains no fingerprints from buffer"},
    };
    for (const auto& c : cases) {
        const Match match = MatchBytes(c.probe, c.candidate);
        EXPECT_EQ(match.status, c.status);
        EXPECT_EQ(match.message, c.message);
        ExpectStartValues(match);
    }
}

TEST(MatchBuffers, LetsTheTriangulationsErrorPassFromEitherSide) {
    const Bytes two = BuildRecord({{.x = 10, .y = 10}, {.x = 50, .y = 90}});
    EXPECT_THROW(MatchBytes(two, SoundRecord()), std::runtime_error);
    EXPECT_THROW(MatchBytes(SoundRecord(), two), std::runtime_error);
}

TEST(MatchBuffers, NeverMatchesFingersOfDifferentKnownPositions) {
    const Bytes second = RecordWithPositions(1, {FingerView(41, 2)});
    const Bytes third = RecordWithPositions(1, {FingerView(41, 3)});
    const Match same = MatchBytes(second, second);
    EXPECT_TRUE(same.result.fingerAgreement);
    EXPECT_EQ(same.result.decision, 1U);
    const Match different = MatchBytes(second, third);
    EXPECT_EQ(different.status, 0);
    EXPECT_EQ(different.result.score, 1000U);
    EXPECT_FALSE(different.result.fingerAgreement);
    EXPECT_EQ(different.result.decision, 0U);
}

TEST(MatchBuffers, IgnoresPositionsWhenOneSideDoesNotKnowThem) {
    const Bytes known = RecordWithPositions(1, {FingerView(41, 2)});
    const Bytes unknown = RecordWithPositions(0, {FingerView(41, 3)});
    EXPECT_TRUE(MatchBytes(known, unknown).result.fingerAgreement);
    EXPECT_TRUE(MatchBytes(unknown, known).result.fingerAgreement);
    EXPECT_EQ(MatchBytes(unknown, known).result.decision, 1U);
}

TEST(MatchBuffers, ComparesThePositionsOfTheWinningFingers) {
    // Finger 41 is the probe's second and the candidate's third.
    const auto candidate = [](std::uint8_t position) {
        return RecordWithPositions(
            3, {FingerView(52, 1), FingerView(53, 2), FingerView(41, position)});
    };
    const Bytes probe = RecordWithPositions(2, {FingerView(51, 9), FingerView(41, 7)});
    const Match agreeing = MatchBytes(probe, candidate(7));
    EXPECT_EQ(agreeing.result.firstFingerIndex, 1U);
    EXPECT_EQ(agreeing.result.secondFingerIndex, 2U);
    EXPECT_TRUE(agreeing.result.fingerAgreement);
    const Match contradicting = MatchBytes(probe, candidate(9));
    EXPECT_FALSE(contradicting.result.fingerAgreement);
    EXPECT_EQ(contradicting.result.decision, 0U);
}

TEST(MatchBuffers, IgnoresPositionsThatEndBeforeTheWinningFinger) {
    // Only the first view's position is known, the second view wins.
    const Bytes probe = RecordWithPositions(1, {FingerView(51, 9), FingerView(41, 7)});
    const Bytes candidate = RecordWithPositions(1, {FingerView(41, 3)});
    const Match match = MatchBytes(probe, candidate);
    EXPECT_EQ(match.result.firstFingerIndex, 1U);
    EXPECT_TRUE(match.result.fingerAgreement);
    EXPECT_EQ(match.result.decision, 1U);
    const Match turned = MatchBytes(candidate, probe);
    EXPECT_EQ(turned.result.secondFingerIndex, 1U);
    EXPECT_TRUE(turned.result.fingerAgreement);
}

TEST(MatchFiles, MatchesAsTheBuffersDo) {
    const ScratchFolder folder;
    const Bytes probe = SoundRecord();
    std::vector<RecordMinutia> half = RandomMinutiae(41, 40);
    half.resize(25);
    const Bytes candidate = BuildRecord(half);
    const Match files =
        MatchPaths(folder.Write("probe.fmr", probe), folder.Write("candidate.fmr", candidate), 25);
    const Match buffers = MatchBytes(probe, candidate, 25);
    EXPECT_EQ(files.status, 0);
    EXPECT_EQ(files.message, "");
    EXPECT_EQ(files.result, buffers.result);
    EXPECT_EQ(files.result.threshold, 250);
    EXPECT_GT(files.result.score, 0U);
}

TEST(MatchFiles, TellsWhichSideCouldNotBeLoaded) {
    const ScratchFolder folder;
    const std::string sound = folder.Write("sound.fmr", SoundRecord());
    const std::string empty = folder.Write("empty.fmr", BuildRecord(RecordContent{}));
    const std::string missing = folder.PathOf("missing.fmr");
    const struct {
        std::string probe;
        std::string candidate;
        std::int32_t status;
        const char* message;
    } cases[] = {
        {missing, sound, 2, "Probe template could not be loaded from file"},
        {sound, missing, 3, "Candidate template could not be loaded from file"},
        {empty, sound, 4, "Probe template contains no fingerprints from file"},
        {sound, empty, 5, "Candidate template contains no fingerprints from file"},
        {"", sound, 1, "Template path is empty."},
        {sound, "", 1, "Template path is empty."},
        {missing, "", 2, "Probe template could not be loaded from file"},
    };
    for (const auto& c : cases) {
        const Match match = MatchPaths(c.probe, c.candidate);
        EXPECT_EQ(match.status, c.status);
        EXPECT_EQ(match.message, c.message);
        ExpectStartValues(match);
    }
}

TEST(MatchFiles, NeverMatchesFilesOfDifferentIdentityTexts) {
    const ScratchFolder folder;
    const Bytes record = SoundRecord();
    const std::string left = folder.Write("print_0042_left.fmr", record);
    const std::string right = folder.Write("scan_0042_right.fmr", record);
    const std::string other = folder.Write("print_0043_left.fmr", record);
    const std::string longer = folder.Write("print_00420_left.fmr", record);
    const std::string nameless = folder.Write("print.fmr", record);
    EXPECT_TRUE(MatchPaths(left, right).result.fingerAgreement);
    EXPECT_EQ(MatchPaths(left, right).result.decision, 1U);
    for (const std::string& candidate : {other, longer}) {
        const Match match = MatchPaths(left, candidate);
        EXPECT_EQ(match.result.score, 1000U) << candidate;
        EXPECT_FALSE(match.result.fingerAgreement) << candidate;
        EXPECT_EQ(match.result.decision, 0U) << candidate;
    }
    EXPECT_TRUE(MatchPaths(left, nameless).result.fingerAgreement);
    EXPECT_TRUE(MatchPaths(nameless, left).result.fingerAgreement);
}

TEST(MatchFiles, PutsKnownPositionsBeforeIdentityTexts) {
    const ScratchFolder folder;
    const Bytes second = RecordWithPositions(1, {FingerView(41, 2)});
    const Bytes third = RecordWithPositions(1, {FingerView(41, 3)});
    const std::string here = folder.Write("print_0042_a.fmr", second);
    const std::string samePosition = folder.Write("print_0043_b.fmr", second);
    const std::string sameText = folder.Write("print_0042_c.fmr", third);
    EXPECT_TRUE(MatchPaths(here, samePosition).result.fingerAgreement);
    EXPECT_FALSE(MatchPaths(here, sameText).result.fingerAgreement);
}

}  // namespace
}  // namespace orl::matcher
