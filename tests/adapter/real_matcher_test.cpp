// The adapter with the matcher itself.

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "adapter/matcher_bridge.h"
#include "matcher/api/finger_matcher.h"
#include "tests/adapter/attached_unit.h"
#include "tests/adapter/log_lines.h"
#include "tests/support/bir_builder.h"
#include "tests/support/counting_heap.h"
#include "tests/support/real_records.h"
#include "tests/support/record_builder.h"

namespace orl::test {
namespace {

using testing::ElementsAre;

using Record = std::vector<std::uint8_t>;

constexpr std::size_t kMinutiaeCountByte = 27;
constexpr std::uint32_t kFinger = 11;
constexpr std::uint32_t kOtherFinger = 12;

Record FingerRecord(std::uint32_t seed) {
    return BuildRecord(RandomMinutiae(seed, 45));
}

// The same finger as FingerRecord(seed), a little further right and down.
Record MovedFingerRecord(std::uint32_t seed) {
    std::vector<RecordMinutia> minutiae = RandomMinutiae(seed, 45);
    for (RecordMinutia& minutia : minutiae) {
        minutia.x = static_cast<std::uint16_t>(minutia.x + 3);
        minutia.y = static_cast<std::uint16_t>(minutia.y + 2);
    }
    return BuildRecord(minutiae);
}

Record FirstView(const Record& record) {
    const std::size_t bytes = (std::size_t{record[kMinutiaeCountByte]} + 5) * 6;
    return {record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes)};
}

bool Bridge(const Record& enrolled, const Record& captured) {
    return adapter::MatchISOTemplates(
        enrolled.data(), enrolled.size(), captured.data(), captured.size());
}

// What the matcher itself says of two records, at its default threshold.
struct Verdict {
    std::int32_t status;
    MatchResult result;
};

Verdict Ask(const Record& probe, const Record& candidate) {
    char text[512];
    ORLFingerMatcher_Initialize(text, sizeof(text));
    Verdict verdict = {};
    verdict.status = ORLFingerMatcher_Match(probe.data(),
                                            static_cast<std::int32_t>(probe.size()),
                                            candidate.data(),
                                            static_cast<std::int32_t>(candidate.size()),
                                            0,
                                            &verdict.result,
                                            text,
                                            sizeof(text));
    return verdict;
}

// The log line with which the bridge reports such a verdict.
std::string LineOf(const Verdict& verdict) {
    if (verdict.status != 0) {
        return "MatchISOTemplates: NO MATCH, Status: " + std::to_string(verdict.status);
    }
    return std::string("MatchISOTemplates: ") + (verdict.result.Matched != 0 ? "" : "NO ") +
           "MATCH score=" + std::to_string(verdict.result.Score);
}

class RealMatcher : public testing::Test {
  protected:
    void SetUp() override {
        ORLFingerMatcher_Shutdown();
        CountingHeap::Reset();
        TakeLog();
    }

    void TearDown() override {
        EXPECT_EQ(CountingHeap::LiveBlocks(), 0U);
        EXPECT_EQ(CountingHeap::UnwipedBlocks(), 0U);
    }

    static void ExpectSameAsMatcher(const Record& enrolled, const Record& captured) {
        const Verdict verdict = Ask(FirstView(enrolled), FirstView(captured));
        EXPECT_EQ(Bridge(enrolled, captured), verdict.status == 0 && verdict.result.Matched != 0);
        EXPECT_EQ(TakeLog().back(), LineOf(verdict));
    }
};

TEST_F(RealMatcher, MatchesTwoIdenticalSingleViewRecordsAndLogsTheirScore) {
    const Record record = FingerRecord(kFinger);
    EXPECT_TRUE(Bridge(record, record));
    const Verdict verdict = Ask(record, record);
    EXPECT_EQ(verdict.result.Matched, 1);
    // (45 + 5) * 6 = 300 bytes.
    EXPECT_THAT(
        TakeLog(),
        ElementsAre("MatchISOTemplates enrolledSize=300 capturedSize=300",
                    "MatchISOTemplates: MATCH score=" + std::to_string(verdict.result.Score)));
}

TEST_F(RealMatcher, CannotLoadAViewWithoutMinutiae) {
    const Record empty = BuildRecord(std::vector<RecordMinutia>{});
    ASSERT_EQ(empty.size(), 30U);
    EXPECT_FALSE(Bridge(empty, FingerRecord(kFinger)));
    EXPECT_EQ(TakeLog().back(), "MatchISOTemplates: NO MATCH, Status: 2");
    EXPECT_FALSE(Bridge(FingerRecord(kFinger), empty));
    EXPECT_EQ(TakeLog().back(), "MatchISOTemplates: NO MATCH, Status: 3");
}

TEST_F(RealMatcher, CutsATwoViewRecordToItsFirstViewBeforeMatching) {
    const RecordView first{.minutiae = RandomMinutiae(kFinger, 45)};
    const RecordView second{.minutiae = RandomMinutiae(kOtherFinger, 45)};
    const Record two = BuildRecord(RecordContent{.views = {first, second}});
    const Record one = FingerRecord(kFinger);
    ASSERT_GT(two.size(), one.size());
    ExpectSameAsMatcher(two, one);
    ExpectSameAsMatcher(one, two);
    ExpectSameAsMatcher(two, two);
}

TEST_F(RealMatcher, CutsExtendedDataAway) {
    const Record extended = BuildRecord(RecordContent{
        .views = {{.minutiae = RandomMinutiae(kFinger, 45), .extendedData = {1, 2, 3, 4}}}});
    ExpectSameAsMatcher(extended, FingerRecord(kFinger));
    ExpectSameAsMatcher(FingerRecord(kFinger), extended);
}

TEST_F(RealMatcher, ReportsNoMatchForAFingerWithoutATriangle) {
    std::vector<RecordMinutia> line;
    for (std::uint16_t i = 0; i < 12; ++i) {
        line.push_back({.x = static_cast<std::uint16_t>(20 + 20 * i), .y = 100});
    }
    EXPECT_FALSE(Bridge(BuildRecord(line), FingerRecord(kFinger)));
    EXPECT_EQ(TakeLog().back(), "MatchISOTemplates: exception: not triangulation");
    EXPECT_FALSE(Bridge(FingerRecord(kFinger), BuildRecord(line)));
    EXPECT_EQ(TakeLog().back(), "MatchISOTemplates: exception: not triangulation");
}

TEST_F(RealMatcher, IsInitialisedByTheFirstMatchAndShutDownByDetach) {
    AttachedUnit unit;
    EXPECT_FALSE(ORLFingerMatcher_IsInitialized());
    unit.storage.records = {{.identity = IdentityNumber(1),
                             .subFactor = 1,
                             .templateBlob = BuildBir(FingerRecord(kFinger))}};
    FeatureSetOutputs outputs;
    EXPECT_EQ(unit.Accept(BuildBir(FingerRecord(kFinger))), S_OK);
    EXPECT_EQ(unit.Identify(outputs), S_OK);
    EXPECT_TRUE(ORLFingerMatcher_IsInitialized());
    EXPECT_EQ(unit.Detach(), S_OK);
    EXPECT_FALSE(ORLFingerMatcher_IsInitialized());
}

TEST_F(RealMatcher, EnrollsVerifiesAndIdentifies) {
    AttachedUnit unit;
    WINBIO_IDENTITY identity = IdentityNumber(3);
    DuplicateOutputs duplicate;
    FeatureSetOutputs outputs;
    EXPECT_EQ(unit.Enroll(BuildBir(FingerRecord(kFinger))), S_OK);
    EXPECT_EQ(unit.CheckForDuplicate(duplicate), S_OK);
    EXPECT_EQ(duplicate.duplicate, FALSE);
    EXPECT_EQ(unit.engine.CommitEnrollment(&unit.pipeline, &identity, 7, nullptr, 0), S_OK);

    EXPECT_EQ(unit.Accept(BuildBir(MovedFingerRecord(kFinger))), S_OK);
    EXPECT_EQ(unit.Verify(identity, 7, outputs), S_OK);
    EXPECT_EQ(outputs.match, TRUE);
    EXPECT_EQ(unit.Identify(outputs), S_OK);
    EXPECT_TRUE(SameIdentity(outputs.identity, identity));
    EXPECT_EQ(outputs.subFactor, 7);

    EXPECT_EQ(unit.Accept(BuildBir(FingerRecord(kOtherFinger))), S_OK);
    EXPECT_EQ(unit.Verify(identity, 7, outputs), S_OK);
    EXPECT_EQ(outputs.match, FALSE);
    EXPECT_EQ(unit.Identify(outputs), WINBIO_E_UNKNOWN_ID);

    EXPECT_EQ(unit.Enroll(BuildBir(MovedFingerRecord(kFinger))), S_OK);
    EXPECT_EQ(unit.CheckForDuplicate(duplicate), S_OK);
    EXPECT_EQ(duplicate.duplicate, TRUE);
    EXPECT_TRUE(SameIdentity(duplicate.identity, identity));
    EXPECT_EQ(duplicate.subFactor, 7);
}

TEST_F(RealMatcher, ServesSeveralUnitsOnThreadsOfTheirOwn) {
    constexpr int kUnits = 4;
    constexpr int kRounds = 5;
    std::vector<std::thread> threads;
    std::vector<int> matches(kUnits, 0);
    std::vector<int> nonMatches(kUnits, 0);
    // A unit that only keeps others from shutting the matcher down is not needed: none detaches
    // before all have matched.
    std::vector<std::unique_ptr<AttachedUnit>> units;
    for (int i = 0; i < kUnits; ++i) {
        units.push_back(std::make_unique<AttachedUnit>());
        units.back()->storage.records = {{.identity = IdentityNumber(1),
                                          .subFactor = 1,
                                          .templateBlob = BuildBir(FingerRecord(kFinger))}};
    }
    for (std::size_t i = 0; i < kUnits; ++i) {
        threads.emplace_back([&unit = *units[i], &yes = matches[i], &no = nonMatches[i]] {
            WINBIO_IDENTITY identity = IdentityNumber(1);
            for (int round = 0; round < kRounds; ++round) {
                FeatureSetOutputs outputs;
                unit.Accept(BuildBir(MovedFingerRecord(kFinger)));
                yes += unit.Verify(identity, 1, outputs) == S_OK && outputs.match == TRUE ? 1 : 0;
                unit.Accept(BuildBir(FingerRecord(kOtherFinger)));
                no += unit.Verify(identity, 1, outputs) == S_OK && outputs.match == FALSE ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(matches, std::vector<int>(kUnits, kRounds));
    EXPECT_EQ(nonMatches, std::vector<int>(kUnits, kRounds));
}

TEST_F(RealMatcher, SurvivesAShutdownByAnotherUnitInTheMidstOfMatches) {
    AttachedUnit unit;
    WINBIO_IDENTITY identity = IdentityNumber(1);
    unit.storage.records = {
        {.identity = identity, .subFactor = 1, .templateBlob = BuildBir(FingerRecord(kFinger))}};
    EXPECT_EQ(unit.Accept(BuildBir(FingerRecord(kFinger))), S_OK);
    std::thread other([] {
        for (int i = 0; i < 200; ++i) {
            const AttachedUnit comesAndGoes;
        }
    });
    for (int i = 0; i < 20; ++i) {
        FeatureSetOutputs outputs;
        EXPECT_EQ(unit.Verify(identity, 1, outputs), S_OK);
    }
    other.join();
    FeatureSetOutputs outputs;
    EXPECT_EQ(unit.Verify(identity, 1, outputs), S_OK);
    EXPECT_EQ(outputs.match, TRUE);
}

TEST_F(RealMatcher, AgreesWithTheMatcherOnRealRecords) {
    const auto files = RealRecordFiles();
    if (files.empty()) {
        GTEST_SKIP() << "ORL_RECORDS names no folder of records";
    }
    constexpr std::size_t kPairs = 60;
    const std::size_t step = std::max<std::size_t>(1, files.size() / kPairs);
    for (std::size_t i = 0; i + 1 < files.size(); i += step) {
        SCOPED_TRACE(files[i].filename().string() + " with " + files[i + 1].filename().string());
        ExpectSameAsMatcher(ReadWholeFile(files[i]), ReadWholeFile(files[i + 1]));
        ExpectSameAsMatcher(ReadWholeFile(files[i]), ReadWholeFile(files[i]));
    }
}

}  // namespace
}  // namespace orl::test
