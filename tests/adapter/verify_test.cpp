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

class VerifyFeatureSet : public CapturedTest {
  protected:
    HRESULT Verify(std::uint32_t identity, WINBIO_BIOMETRIC_SUBTYPE subFactor) {
        identity_ = IdentityNumber(identity);
        return TheUnit().Verify(identity_, subFactor, outputs_);
    }

    WINBIO_IDENTITY identity_ = {};
};

TEST_F(VerifyFeatureSet, ReportsAMatch) {
    Store(1, 2, 0x41);
    Answer({.matched = 1, .score = 640});
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, TRUE);
    EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterVerifyFeatureSet SubFactor=2",
                            kCapturedOk,
                            kCapturedFound,
                            ResultLine("StorageInterface->QueryBySubject", "00000000"),
                            kRecordOk,
                            kStoredOk,
                            ResultLine("ExtractISOFromBIR(enrolled)", "00000000"),
                            kSizes,
                            "MatchISOTemplates: MATCH score=640",
                            "EngineAdapterVerifyFeatureSet: Match=TRUE"));
}

TEST_F(VerifyFeatureSet, ReportsMatchFalseWithSOkAgainstANonMatchingRecord) {
    Store(1, 2, 0x41);
    Answer({.matched = 0, .score = 10});
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, FALSE);
    const std::vector<std::string> log = TakeLog();
    ASSERT_THAT(log, SizeIs(10));
    EXPECT_EQ(log[8], "MatchISOTemplates: NO MATCH score=10");
    EXPECT_EQ(log[9], "EngineAdapterVerifyFeatureSet: Match=FALSE");
}

TEST_F(VerifyFeatureSet, ComparesTheStoredRecordWithTheCapturedOne) {
    Store(1, 2, 0x41);
    EXPECT_EQ(Verify(1, 2), S_OK);
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
    EXPECT_EQ(TheFakeMatcher().matches[0].probe, ViewOf(4, 0x41));
    EXPECT_EQ(TheFakeMatcher().matches[0].candidate, ViewOf(3, 0x31));
}

TEST_F(VerifyFeatureSet, AsksStorageForTheClaimedIdentityAndSubFactor) {
    Store(1, 2, 0x41);
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_THAT(TheUnit().storage.TakeCalls(), ElementsAre("QueryBySubject 2", "GetCurrentRecord"));
    EXPECT_EQ(TheUnit().storage.LastSubject(), &identity_);
    EXPECT_TRUE(TheUnit().storage.RecordsCameZeroed());
}

TEST_F(VerifyFeatureSet, LooksAtTheFirstRecordOnly) {
    Store(1, 2, 0x41);
    Store(1, 2, 0x42);
    Answer({.matched = 0});
    Answer({.matched = 1});
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, FALSE);
    EXPECT_THAT(TheFakeMatcher().matches, SizeIs(1));
}

TEST_F(VerifyFeatureSet, ReturnsStoragesErrorForAnIdentityWithoutRecords) {
    Store(1, 2, 0x41);
    EXPECT_EQ(Verify(7, 2), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(outputs_.match, FALSE);
    EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterVerifyFeatureSet SubFactor=2",
                            kCapturedOk,
                            kCapturedFound,
                            ResultLine("StorageInterface->QueryBySubject", "8009801F")));
}

TEST_F(VerifyFeatureSet, ReturnsAnyFailureOfTheQueryUnchanged) {
    Store(1, 2, 0x41);
    TheUnit().storage.Fail("QueryBySubject", 1, WINBIO_E_DATABASE_LOCKED);
    EXPECT_EQ(Verify(1, 2), WINBIO_E_DATABASE_LOCKED);
    EXPECT_THAT(TheUnit().storage.TakeCalls(), ElementsAre("QueryBySubject 2"));
}

TEST_F(VerifyFeatureSet, PassesANullIdentityOnToStorage) {
    const auto& engine = TheUnit().engine;
    BOOLEAN match = TRUE;
    EXPECT_EQ(
        engine.VerifyFeatureSet(
            &TheUnit().pipeline, nullptr, 2, &match, nullptr, nullptr, nullptr, nullptr, nullptr),
        E_POINTER);
    EXPECT_EQ(match, FALSE);
    EXPECT_THAT(TheUnit().storage.TakeCalls(), ElementsAre("QueryBySubject 2"));
}

TEST_F(VerifyFeatureSet, ReturnsAFailureToReadTheRecordUnchanged) {
    Store(1, 2, 0x41);
    TheUnit().storage.Fail("GetCurrentRecord", 1, WINBIO_E_DATABASE_READ_ERROR);
    EXPECT_EQ(Verify(1, 2), WINBIO_E_DATABASE_READ_ERROR);
    const std::vector<std::string> log = TakeLog();
    ASSERT_THAT(log, SizeIs(5));
    EXPECT_EQ(log[4], ResultLine("StorageInterface->GetCurrentRecord", "8009801D"));
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
}

TEST_F(VerifyFeatureSet, TakesASuccessCodeOtherThanSOkForSuccess) {
    Store(1, 2, 0x41);
    Answer({.matched = 1});
    TheUnit().storage.SucceedWith("QueryBySubject", S_FALSE);
    TheUnit().storage.SucceedWith("GetCurrentRecord", S_FALSE);
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, TRUE);
    const std::vector<std::string> log = TakeLog();
    ASSERT_THAT(log, SizeIs(10));
    EXPECT_EQ(log[3], ResultLine("StorageInterface->QueryBySubject", "00000001"));
    EXPECT_EQ(log[4], ResultLine("StorageInterface->GetCurrentRecord", "00000001"));
}

struct BadTemplate {
    std::optional<std::vector<std::uint8_t>> blob;
    HRESULT hr;
    const char* hrText;
    const char* why;
};

TEST_F(VerifyFeatureSet, ReturnsTheExtractionsFailureForAMalformedStoredRecord) {
    const BadTemplate cases[] = {
        {std::nullopt, E_INVALIDARG, "80070057", "no template"},
        {std::vector<std::uint8_t>(31, 1), E_INVALIDARG, "80070057", "shorter than a header"},
        {EmptyBlockBir(), WINBIO_E_NO_CAPTURE_DATA, "80098026", "empty standard data"},
        {OverrunningBir(), E_INVALIDARG, "80070057", "standard data beyond the end"},
    };
    for (const BadTemplate& bad : cases) {
        TheUnit().storage.records = {
            {.identity = IdentityNumber(1), .subFactor = 2, .templateBlob = bad.blob}};
        EXPECT_EQ(Verify(1, 2), bad.hr) << bad.why;
        EXPECT_EQ(TakeLog().back(), ResultLine("ExtractISOFromBIR(enrolled)", bad.hrText))
            << bad.why;
    }
    EXPECT_THAT(TheFakeMatcher().matches, IsEmpty());
}

TEST_F(VerifyFeatureSet, ReportsNoCaptureDataWithoutASampleAndLogsNoResult) {
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    TakeLog();
    EXPECT_EQ(Verify(1, 255), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_EQ(outputs_.match, FALSE);
    EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    EXPECT_THAT(TakeLog(), ElementsAre("EngineAdapterVerifyFeatureSet SubFactor=255"));
    // The sample is looked for first.
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Verify(1, 255), WINBIO_E_NO_CAPTURE_DATA);
}

TEST_F(VerifyFeatureSet, RejectsACapturedSampleWithoutAnIsoRecord) {
    for (const BadCapture& bad : BadCaptures()) {
        Capture(bad.bir);
        TheUnit().pipeline.StorageInterface = nullptr;
        EXPECT_EQ(Verify(1, 2), bad.hr) << bad.why;
        std::vector<std::string> expected = {"EngineAdapterVerifyFeatureSet SubFactor=2"};
        expected.insert(expected.end(), bad.log.begin(), bad.log.end());
        EXPECT_EQ(TakeLog(), expected) << bad.why;
    }
}

TEST_F(VerifyFeatureSet, FailsWithoutAStorageInterface) {
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Verify(1, 2), E_FAIL);
    EXPECT_THAT(
        TakeLog(),
        ElementsAre("EngineAdapterVerifyFeatureSet SubFactor=2", kCapturedOk, kCapturedFound));
}

TEST_F(VerifyFeatureSet, ReportsNoMatchWithSOkWhenTheMatcherFails) {
    Store(1, 2, 0x41);
    Answer({.status = 3, .matched = 1});
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, FALSE);
    TheFakeMatcher().initialized = false;
    TheFakeMatcher().initializeStatus = 1;
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, FALSE);
}

TEST_F(VerifyFeatureSet, ReportsNoMatchWithSOkWhenTheMatcherThrows) {
    Store(1, 2, 0x41);
    Answer({.raise = [] { throw std::runtime_error("not triangulation"); }});
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(outputs_.match, FALSE);
    const std::vector<std::string> log = TakeLog();
    ASSERT_THAT(log, SizeIs(10));
    EXPECT_EQ(log[8], "MatchISOTemplates: exception: not triangulation");
    EXPECT_EQ(log[9], "EngineAdapterVerifyFeatureSet: Match=FALSE");
}

TEST_F(VerifyFeatureSet, GivesEPointerWithoutAContextAndWritesNeutralOutputsFirst) {
    WINBIO_PIPELINE detached = {};
    for (PWINBIO_PIPELINE pipeline : {static_cast<PWINBIO_PIPELINE>(nullptr), &detached}) {
        FeatureSetOutputs outputs;
        EXPECT_EQ(TheUnit().engine.VerifyFeatureSet(pipeline,
                                                    &identity_,
                                                    5,
                                                    &outputs.match,
                                                    &outputs.payloadBlob,
                                                    &outputs.payloadBlobSize,
                                                    &outputs.hashValue,
                                                    &outputs.hashSize,
                                                    &outputs.rejectDetail),
                  E_POINTER);
        EXPECT_EQ(outputs.match, FALSE);
        EXPECT_TRUE(outputs.UnusedOnesAreNeutral());
        EXPECT_THAT(TakeLog(), ElementsAre("EngineAdapterVerifyFeatureSet SubFactor=5"));
    }
}

TEST_F(VerifyFeatureSet, GoesOnWithoutOutputs) {
    Store(1, 2, 0x41);
    WINBIO_IDENTITY identity = IdentityNumber(1);
    Answer({.matched = 1});
    EXPECT_EQ(TheUnit().engine.VerifyFeatureSet(&TheUnit().pipeline,
                                                &identity,
                                                2,
                                                nullptr,
                                                nullptr,
                                                nullptr,
                                                nullptr,
                                                nullptr,
                                                nullptr),
              S_OK);
    EXPECT_EQ(TakeLog().back(), "EngineAdapterVerifyFeatureSet: Match=TRUE");
}

TEST_F(VerifyFeatureSet, LeavesTheContextAndThePayloadAlone) {
    Store(1, 2, 0x41);
    TheUnit().storage.records[0].payload = {1, 2, 3};
    CountingHeap::TakeEvents();
    const adapter::EngineContext before = TheUnit().Context();
    EXPECT_EQ(Verify(1, 2), S_OK);
    EXPECT_EQ(std::memcmp(&TheUnit().Context(), &before, sizeof(before)), 0);
    EXPECT_TRUE(outputs_.UnusedOnesAreNeutral());
    EXPECT_THAT(CountingHeap::TakeEvents(), IsEmpty()) << "the process heap is not needed";
}

}  // namespace
}  // namespace orl::test
