#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adapter/verify_identify.h"
#include "tests/adapter/captured_test.h"
#include "tests/adapter/stored_record_lines.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class IdentifyFeatureSet : public CapturedTest {
  protected:
    HRESULT Identify() { return TheUnit().Identify(outputs_); }

    // The outputs of every identification that finds nobody.
    void ExpectNobody() {
        EXPECT_TRUE(IsZero(outputs_.identity));
        EXPECT_EQ(outputs_.subFactor, 0);
        EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    }

    static std::string NotIdentified(int records) {
        return "EngineAdapterIdentifyFeatureSet: not identified after " + std::to_string(records) +
               " records " + kDash + " WINBIO_E_UNKNOWN_ID";
    }

    const std::string entry_ = ">> EngineAdapterIdentifyFeatureSet";
};

TEST_F(IdentifyFeatureSet, TellsWhoseTheFirstMatchingRecordIs) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    Store(5, 6, 0x43);
    Answer({.matched = 0, .score = 12});
    Answer({.matched = 1, .score = 700});
    Answer({.matched = 1, .score = 900});
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(8)));
    EXPECT_EQ(outputs_.subFactor, 9);
    EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    EXPECT_THAT(TakeLog(),
                ElementsAre(entry_,
                            kCapturedOk,
                            kCapturedFound,
                            kQueryOk,
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: NO MATCH score=12",
                            "EngineAdapterIdentifyFeatureSet: record[0] match=FALSE",
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: MATCH score=700",
                            "EngineAdapterIdentifyFeatureSet: record[1] match=TRUE",
                            "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[1]"));
}

TEST_F(IdentifyFeatureSet, WalksTheRecordsOfAllFingersInStoragesOrder) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    EXPECT_THAT(TheUnit().storage.TakeCalls(),
                ElementsAre("QueryByContent 255 null 0",
                            "FirstRecord",
                            "GetCurrentRecord",
                            "NextRecord",
                            "GetCurrentRecord",
                            "NextRecord"));
    EXPECT_TRUE(TheUnit().storage.RecordsCameZeroed());
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(2));
    EXPECT_EQ(TheFakeMatcher().matches[0].probe, ViewOf(4, 0x41));
    EXPECT_EQ(TheFakeMatcher().matches[1].probe, ViewOf(4, 0x42));
    EXPECT_EQ(TheFakeMatcher().matches[1].candidate, ViewOf(3, 0x31));
}

TEST_F(IdentifyFeatureSet, TakesASuccessCodeOtherThanSOkForSuccess) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    Answer({.matched = 0});
    Answer({.matched = 1});
    for (const char* routine :
         {"QueryByContent", "FirstRecord", "NextRecord", "GetCurrentRecord"}) {
        TheUnit().storage.SucceedWith(routine, S_FALSE);
    }
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(8)));
    const std::vector<std::string> log = TakeLog();
    ASSERT_THAT(log, SizeIs(15));
    EXPECT_EQ(log[3], ResultLine("StorageInterface->QueryByContent", "00000001"));
    EXPECT_EQ(log[4], ResultLine("StorageInterface->GetCurrentRecord", "00000001"));
}

TEST_F(IdentifyFeatureSet, StopsReadingAtTheMatch) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    Answer({.matched = 1});
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_THAT(TheUnit().storage.TakeCalls(),
                ElementsAre("QueryByContent 255 null 0", "FirstRecord", "GetCurrentRecord"));
    EXPECT_EQ(TakeLog().back(), "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[0]");
}

TEST_F(IdentifyFeatureSet, FindsNobodyInAnEmptyDatabase) {
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    ExpectNobody();
    EXPECT_THAT(TakeLog(),
                ElementsAre(entry_,
                            kCapturedOk,
                            kCapturedFound,
                            ResultLine("StorageInterface->QueryByContent", "8009801F")));
}

TEST_F(IdentifyFeatureSet, CountsTheRecordsWalkedWhenNoneMatches) {
    Store(1, 2, 0x41);
    Store(1, 3, 0x42);
    Store(1, 4, 0x43);
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    ExpectNobody();
    EXPECT_EQ(TakeLog().back(), NotIdentified(3));
}

TEST_F(IdentifyFeatureSet, SkipsAMalformedRecordZeroAndIdentifiesAtRecordOne) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    TheUnit().storage.records[0].templateBlob = OverrunningBir();
    Answer({.matched = 1, .score = 500});
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(8)));
    EXPECT_THAT(TakeLog(),
                ElementsAre(entry_,
                            kCapturedOk,
                            kCapturedFound,
                            kQueryOk,
                            kRecordOk,
                            std::string("ExtractISOFromBIR: offset+size=81 > birSize=80 ") + kDash +
                                " E_INVALIDARG",
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: MATCH score=500",
                            "EngineAdapterIdentifyFeatureSet: record[1] match=TRUE",
                            "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[1]"));
}

TEST_F(IdentifyFeatureSet, SkipsRecordsWithoutAnIsoRecordWithoutAResultLine) {
    for (int i = 0; i < 3; ++i) {
        Store(1, 2, 0x41);
    }
    TheUnit().storage.records[0].templateBlob = std::nullopt;
    TheUnit().storage.records[1].templateBlob = std::vector<std::uint8_t>(31, 1);
    TheUnit().storage.records[2].templateBlob = EmptyBlockBir();
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    EXPECT_THAT(TakeLog(),
                ElementsAre(entry_,
                            kCapturedOk,
                            kCapturedFound,
                            kQueryOk,
                            kRecordOk,
                            kRecordOk,
                            kRecordOk,
                            NotIdentified(3)));
}

TEST_F(IdentifyFeatureSet, ReturnsAZeroedIdentityForAMatchWithANullIdentity) {
    Store(1, 9, 0x41);
    TheUnit().storage.records[0].identity.reset();
    Answer({.matched = 1});
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_TRUE(IsZero(outputs_.identity));
    EXPECT_EQ(outputs_.subFactor, 9);
}

TEST_F(IdentifyFeatureSet, FindsNobodyWhenStorageFailsAnywhere) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    struct Failure {
        const char* routine;
        int nth;
        int walked;  // records, or -1 when nothing is told
    };
    const Failure failures[] = {{"QueryByContent", 1, -1},
                                {"FirstRecord", 1, 0},
                                {"GetCurrentRecord", 1, 0},
                                {"NextRecord", 1, 1},
                                {"GetCurrentRecord", 2, 1}};
    for (const Failure& failure : failures) {
        FakeStorage storage(TheUnit().pipeline);
        storage.records = TheUnit().storage.records;
        storage.Fail(failure.routine, failure.nth, WINBIO_E_DATABASE_READ_ERROR);
        EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID) << failure.routine;
        ExpectNobody();
        const std::vector<std::string> log = TakeLog();
        if (failure.walked < 0) {
            EXPECT_EQ(log.back(), ResultLine("StorageInterface->QueryByContent", "8009801D"));
        } else {
            EXPECT_EQ(log.back(), NotIdentified(failure.walked)) << failure.routine;
        }
    }
}

TEST_F(IdentifyFeatureSet, LogsAFailedReadBeforeItGivesUp) {
    Store(1, 2, 0x41);
    TheUnit().storage.Fail("GetCurrentRecord", 1, WINBIO_E_DATABASE_READ_ERROR);
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    EXPECT_THAT(TakeLog(),
                ElementsAre(entry_,
                            kCapturedOk,
                            kCapturedFound,
                            kQueryOk,
                            ResultLine("StorageInterface->GetCurrentRecord", "8009801D"),
                            NotIdentified(0)));
}

TEST_F(IdentifyFeatureSet, GoesOnToTheNextRecordWhenTheMatcherFails) {
    Store(1, 2, 0x41);
    Store(5, 6, 0x42);
    Store(8, 9, 0x43);
    Answer({.status = 2, .matched = 1});
    Answer({.raise = [] { throw std::runtime_error("not triangulation"); }});
    Answer({.matched = 1});
    EXPECT_EQ(Identify(), S_OK);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(8)));
}

TEST_F(IdentifyFeatureSet, ReportsNoCaptureDataWithoutASampleAndLogsNoResult) {
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    TakeLog();
    EXPECT_EQ(Identify(), WINBIO_E_NO_CAPTURE_DATA);
    ExpectNobody();
    EXPECT_THAT(TakeLog(), ElementsAre(entry_));
    // The sample is looked for first.
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Identify(), WINBIO_E_NO_CAPTURE_DATA);
}

TEST_F(IdentifyFeatureSet, RejectsACapturedSampleWithoutAnIsoRecord) {
    for (const BadCapture& bad : BadCaptures()) {
        Capture(bad.bir);
        EXPECT_EQ(Identify(), bad.hr) << bad.why;
        ExpectNobody();
        std::vector<std::string> expected = {entry_};
        expected.insert(expected.end(), bad.log.begin(), bad.log.end());
        EXPECT_EQ(TakeLog(), expected) << bad.why;
    }
    EXPECT_THAT(TheUnit().storage.TakeCalls(), IsEmpty());
}

TEST_F(IdentifyFeatureSet, FailsWithoutAStorageInterface) {
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Identify(), E_FAIL);
    ExpectNobody();
    EXPECT_THAT(TakeLog(), ElementsAre(entry_, kCapturedOk, kCapturedFound));
}

TEST_F(IdentifyFeatureSet, GivesEPointerWithoutAContextAndWritesNeutralOutputsFirst) {
    WINBIO_PIPELINE detached = {};
    for (PWINBIO_PIPELINE pipeline : {static_cast<PWINBIO_PIPELINE>(nullptr), &detached}) {
        outputs_ = {};
        EXPECT_EQ(TheUnit().engine.IdentifyFeatureSet(pipeline,
                                                      &outputs_.identity,
                                                      &outputs_.subFactor,
                                                      &outputs_.payloadBlob,
                                                      &outputs_.payloadBlobSize,
                                                      &outputs_.hashValue,
                                                      &outputs_.hashSize,
                                                      &outputs_.rejectDetail),
                  E_POINTER);
        ExpectNobody();
        EXPECT_THAT(TakeLog(), ElementsAre(entry_));
    }
}

TEST_F(IdentifyFeatureSet, GoesOnWithoutOutputs) {
    Store(1, 2, 0x41);
    Answer({.matched = 1});
    EXPECT_EQ(
        TheUnit().engine.IdentifyFeatureSet(
            &TheUnit().pipeline, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
        S_OK);
    EXPECT_EQ(TakeLog().back(), "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[0]");
}

TEST_F(IdentifyFeatureSet, LeavesTheContextAlone) {
    Store(1, 2, 0x41);
    const adapter::EngineContext before = TheUnit().Context();
    EXPECT_EQ(Identify(), WINBIO_E_UNKNOWN_ID);
    EXPECT_EQ(std::memcmp(&TheUnit().Context(), &before, sizeof(before)), 0);
}

}  // namespace
}  // namespace orl::test
