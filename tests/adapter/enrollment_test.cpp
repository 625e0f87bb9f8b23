#include "adapter/enrollment.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/adapter/adapter_test.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string kCreate = ">> EngineAdapterCreateEnrollment";
const std::string kUpdate = ">> EngineAdapterUpdateEnrollment";
const std::string kDiscard = ">> EngineAdapterDiscardEnrollment";

class Enrollment : public UnitTest {
  protected:
    void SetUp() override {
        UnitTest::SetUp();
        TheFakeMatcher().initialized = true;
    }

    HRESULT Create() { return TheUnit().engine.CreateEnrollment(&TheUnit().pipeline); }
    HRESULT Update() {
        rejectDetail_ = 77;
        return TheUnit().engine.UpdateEnrollment(&TheUnit().pipeline, &rejectDetail_);
    }
    HRESULT Status() {
        rejectDetail_ = 77;
        return TheUnit().engine.GetEnrollmentStatus(&TheUnit().pipeline, &rejectDetail_);
    }
    HRESULT Commit(std::uint32_t identity, WINBIO_BIOMETRIC_SUBTYPE subFactor) {
        identity_ = IdentityNumber(identity);
        return TheUnit().engine.CommitEnrollment(
            &TheUnit().pipeline, &identity_, subFactor, nullptr, 0);
    }
    HRESULT Discard() { return TheUnit().engine.DiscardEnrollment(&TheUnit().pipeline); }

    bool InProgress() { return TheUnit().Context().EnrollmentInProgress != FALSE; }
    bool HasTemplate() { return TheUnit().Context().EnrollmentTemplate != nullptr; }
    std::vector<std::uint8_t> Template() {
        return Bytes(TheUnit().Context().EnrollmentTemplate,
                     TheUnit().Context().EnrollmentTemplateSize);
    }

    WINBIO_IDENTITY identity_ = {};
    WINBIO_REJECT_DETAIL rejectDetail_ = 77;
};

TEST_F(Enrollment, StoresTheCapturedBirByteForByteWithThePayloadPassedThrough) {
    const std::vector<std::uint8_t> sample = BirOf(4, 0x61);
    std::vector<std::uint8_t> payload = {9, 8, 7};
    WINBIO_IDENTITY identity = IdentityNumber(5);
    EXPECT_EQ(TheUnit().Enroll(sample), S_OK);
    TakeLog();
    EXPECT_EQ(TheUnit().engine.CommitEnrollment(
                  &TheUnit().pipeline, &identity, 3, payload.data(), payload.size()),
              S_OK);

    ASSERT_THAT(TheUnit().storage.records, SizeIs(1));
    EXPECT_EQ(TheUnit().storage.records[0].templateBlob, sample);
    EXPECT_EQ(TheUnit().storage.records[0].payload, payload);
    const WINBIO_STORAGE_RECORD& added = TheUnit().storage.LastAdded();
    EXPECT_EQ(added.Identity, &identity);
    EXPECT_EQ(added.SubFactor, 3);
    EXPECT_EQ(added.IndexVector, nullptr);
    EXPECT_EQ(added.IndexElementCount, 0U);
    EXPECT_EQ(added.TemplateBlob, TheUnit().Context().EnrollmentTemplate);
    EXPECT_EQ(added.TemplateBlobSize, sample.size());
    EXPECT_EQ(added.PayloadBlob, payload.data());
    EXPECT_EQ(added.PayloadBlobSize, payload.size());
    EXPECT_THAT(TheUnit().storage.TakeCalls(), ElementsAre("AddRecord"));
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterCommitEnrollment SubFactor=3",
                            ResultLine("StorageInterface->AddRecord", "00000000")));
}

TEST_F(Enrollment, LogsEachStep) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_THAT(TakeLog(),
                ElementsAre(kCreate,
                            "EngineAdapterAcceptSampleData Purpose=0x01 SampleSize=86",
                            "EngineAdapterAcceptSampleData: stored sample SampleSize=86",
                            kUpdate,
                            "EngineAdapterUpdateEnrollment: template stored size=86"));
    EXPECT_EQ(Discard(), S_OK);
    EXPECT_THAT(TakeLog(), ElementsAre(kDiscard));
}

TEST_F(Enrollment, StoresOnlyTheSecondOfTwoSamples) {
    const std::vector<std::uint8_t> second = BirOf(5, 0x62);
    EXPECT_EQ(TheUnit().Enroll(BirOf(4, 0x61)), S_OK);
    EXPECT_EQ(TheUnit().Accept(second), S_OK);
    EXPECT_EQ(Update(), S_OK);
    EXPECT_EQ(Template(), second);
    EXPECT_EQ(Commit(5, 3), S_OK);
    ASSERT_THAT(TheUnit().storage.records, SizeIs(1));
    EXPECT_EQ(TheUnit().storage.records[0].templateBlob, second);
}

TEST_F(Enrollment, TakesTheSampleAsItIs) {
    const std::vector<std::uint8_t> malformed = {0xFF};
    EXPECT_EQ(TheUnit().Enroll(malformed), S_OK);
    EXPECT_EQ(Template(), malformed);
    EXPECT_EQ(rejectDetail_, 77U);
    EXPECT_EQ(Update(), S_OK);
    EXPECT_EQ(rejectDetail_, 0U);
}

TEST_F(Enrollment, CannotBeCommittedBeforeAnUpdateAndStaysInProgress) {
    EXPECT_EQ(Create(), S_OK);
    EXPECT_EQ(TheUnit().Accept(BirOf(4)), S_OK);
    TakeLog();
    EXPECT_EQ(Commit(5, 3), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_TRUE(InProgress());
    EXPECT_THAT(TheUnit().storage.TakeCalls(), IsEmpty());
    EXPECT_THAT(TakeLog(), ElementsAre("EngineAdapterCommitEnrollment SubFactor=3"));
}

TEST_F(Enrollment, IsNotUpdatedOrCommittedWhenIdle) {
    EXPECT_EQ(TheUnit().Accept(BirOf(4)), S_OK);
    TakeLog();
    EXPECT_EQ(Update(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(rejectDetail_, 0U);
    EXPECT_EQ(Commit(5, 3), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_FALSE(InProgress());
    EXPECT_FALSE(HasTemplate());
    EXPECT_THAT(TakeLog(), ElementsAre(kUpdate, "EngineAdapterCommitEnrollment SubFactor=3"));
}

TEST_F(Enrollment, IsNotUpdatedWhenIdleEvenWithoutASample) {
    EXPECT_EQ(Update(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(rejectDetail_, 0U);
}

TEST_F(Enrollment, IsNotCommittedWhenIdleEvenWithoutAStorageInterface) {
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Commit(5, 3), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(Create(), S_OK);
    EXPECT_EQ(Commit(5, 3), WINBIO_E_INVALID_DEVICE_STATE);
}

TEST_F(Enrollment, IsIdleAfterACommitWithTheTemplateKept) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(Commit(5, 3), S_OK);
    EXPECT_FALSE(InProgress());
    EXPECT_EQ(Template(), BirOf(4));
    EXPECT_EQ(Commit(6, 3), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(Update(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(Template(), BirOf(4));
}

TEST_F(Enrollment, DiscardAfterACommitFreesTheKeptTemplate) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(Commit(5, 3), S_OK);
    CountingHeap::TakeEvents();
    EXPECT_EQ(Discard(), S_OK);
    EXPECT_FALSE(HasTemplate());
    EXPECT_EQ(TheUnit().Context().EnrollmentTemplateSize, 0U);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("free 86"));
}

TEST_F(Enrollment, StaysInProgressWithItsTemplateWhenStorageRefusesIt) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(Commit(5, 3), S_OK);
    EXPECT_EQ(TheUnit().Enroll(BirOf(6)), S_OK);
    TakeLog();
    EXPECT_EQ(Commit(5, 3), WINBIO_E_DUPLICATE_ENROLLMENT);
    EXPECT_TRUE(InProgress());
    EXPECT_EQ(Template(), BirOf(6));
    EXPECT_THAT(TakeLog(),
                ElementsAre("EngineAdapterCommitEnrollment SubFactor=3",
                            ResultLine("StorageInterface->AddRecord", "8009801C")));
    // The service may retry.
    EXPECT_EQ(Commit(5, 4), S_OK);
    EXPECT_FALSE(InProgress());
    EXPECT_THAT(TheUnit().storage.records, SizeIs(2));
}

TEST_F(Enrollment, ReturnsAnyFailureOfStorageAndStaysInProgress) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    int call = 0;
    for (const HRESULT hr : {WINBIO_E_DATABASE_FULL, WINBIO_E_DATABASE_WRITE_ERROR, E_FAIL}) {
        TheUnit().storage.Fail("AddRecord", ++call, hr);
        EXPECT_EQ(Commit(5, 3), hr);
        EXPECT_TRUE(InProgress());
        EXPECT_EQ(Template(), BirOf(4));
    }
    EXPECT_EQ(Commit(5, 3), S_OK);
    EXPECT_FALSE(InProgress());
}

TEST_F(Enrollment, IsCommittedWithSOkWhateverSuccessCodeStorageReturns) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    TakeLog();
    TheUnit().storage.SucceedWith("AddRecord", S_FALSE);
    EXPECT_EQ(Commit(5, 3), S_OK);
    EXPECT_FALSE(InProgress());
    EXPECT_EQ(TakeLog().back(), ResultLine("StorageInterface->AddRecord", "00000001"));
}

TEST_F(Enrollment, CannotBeCommittedWithoutAStorageInterface) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Commit(5, 3), E_FAIL);
    EXPECT_TRUE(InProgress());
    EXPECT_TRUE(HasTemplate());
}

TEST_F(Enrollment, RestartsWithoutATemplate) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    CountingHeap::TakeEvents();
    EXPECT_EQ(Create(), S_OK);
    EXPECT_TRUE(InProgress());
    EXPECT_FALSE(HasTemplate());
    EXPECT_EQ(TheUnit().Context().EnrollmentTemplateSize, 0U);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("free 86"));
}

TEST_F(Enrollment, CreateFreesAStaleTemplate) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(Commit(5, 3), S_OK);
    EXPECT_EQ(Create(), S_OK);
    EXPECT_TRUE(InProgress());
    EXPECT_FALSE(HasTemplate());
}

TEST_F(Enrollment, AsksForABetterCaptureWithoutASample) {
    EXPECT_EQ(Create(), S_OK);
    TakeLog();
    EXPECT_EQ(Update(), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(rejectDetail_, 7U);
    EXPECT_TRUE(InProgress());
    EXPECT_FALSE(HasTemplate());
    EXPECT_THAT(TakeLog(), ElementsAre(kUpdate));
}

TEST_F(Enrollment, KeepsItsTemplateWhenALaterUpdateFindsNoSample) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(TheUnit().engine.ClearContext(&TheUnit().pipeline), S_OK);
    EXPECT_EQ(Update(), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(Template(), BirOf(4));
}

TEST_F(Enrollment, HasNoTemplateAfterMemoryRanOutAndStaysInProgress) {
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    TakeLog();
    CountingHeap::FailAfter(0);
    EXPECT_EQ(Update(), E_OUTOFMEMORY);
    EXPECT_EQ(rejectDetail_, 0U);
    EXPECT_TRUE(InProgress());
    EXPECT_FALSE(HasTemplate());
    EXPECT_THAT(TakeLog(), ElementsAre(kUpdate));
    // Whoever reads the template tests the pointer.
    DuplicateOutputs outputs;
    EXPECT_EQ(Status(), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(Commit(5, 3), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(TheUnit().CheckForDuplicate(outputs), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(Update(), S_OK);
    EXPECT_EQ(Template(), BirOf(4));
}

TEST_F(Enrollment, DiscardEndsItFromEveryState) {
    EXPECT_EQ(Discard(), S_OK);
    EXPECT_EQ(Create(), S_OK);
    EXPECT_EQ(Discard(), S_OK);
    EXPECT_FALSE(InProgress());
    EXPECT_EQ(TheUnit().Enroll(BirOf(4)), S_OK);
    EXPECT_EQ(Discard(), S_OK);
    EXPECT_FALSE(InProgress());
    EXPECT_FALSE(HasTemplate());
    EXPECT_NE(TheUnit().Context().SampleBuffer, nullptr) << "the sample is not the enrollment's";
}

TEST_F(Enrollment, TellsItsStatusInEachState) {
    const auto logOf = [](int inProgress, int hasTemplate, const std::string& hr) {
        return ElementsAre(
            ">> EngineAdapterGetEnrollmentStatus",
            "EngineAdapterGetEnrollmentStatus: InProgress=" + std::to_string(inProgress) +
                " HasTemplate=" + std::to_string(hasTemplate),
            ResultLine("EngineAdapterGetEnrollmentStatus", hr));
    };
    EXPECT_EQ(Status(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(rejectDetail_, 0U);
    EXPECT_THAT(TakeLog(), logOf(0, 0, "8009800F"));

    Create();
    TakeLog();
    EXPECT_EQ(Status(), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(rejectDetail_, 0U);
    EXPECT_THAT(TakeLog(), logOf(1, 0, "80098008"));

    TheUnit().Enroll(BirOf(4));
    TakeLog();
    EXPECT_EQ(Status(), S_OK);
    EXPECT_EQ(rejectDetail_, 0U);
    EXPECT_THAT(TakeLog(), logOf(1, 1, "00000000"));

    Commit(5, 3);
    TakeLog();
    EXPECT_EQ(Status(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_THAT(TakeLog(), logOf(0, 1, "8009800F"));
}

TEST_F(Enrollment, GivesEPointerWithoutAContextWithItsOutputsCleared) {
    WINBIO_PIPELINE detached = {};
    const auto& engine = TheUnit().engine;
    for (PWINBIO_PIPELINE pipeline : {static_cast<PWINBIO_PIPELINE>(nullptr), &detached}) {
        EXPECT_EQ(engine.CreateEnrollment(pipeline), E_POINTER);
        rejectDetail_ = 77;
        EXPECT_EQ(engine.UpdateEnrollment(pipeline, &rejectDetail_), E_POINTER);
        EXPECT_EQ(rejectDetail_, 0U);
        rejectDetail_ = 77;
        EXPECT_EQ(engine.GetEnrollmentStatus(pipeline, &rejectDetail_), E_POINTER);
        EXPECT_EQ(rejectDetail_, 0U);
        DuplicateOutputs outputs;
        EXPECT_EQ(engine.CheckForDuplicate(
                      pipeline, &outputs.identity, &outputs.subFactor, &outputs.duplicate),
                  E_POINTER);
        EXPECT_TRUE(IsZero(outputs.identity));
        EXPECT_EQ(outputs.subFactor, 0);
        EXPECT_EQ(outputs.duplicate, FALSE);
        EXPECT_EQ(engine.CommitEnrollment(pipeline, &identity_, 3, nullptr, 0), E_POINTER);
        EXPECT_THAT(TakeLog(),
                    ElementsAre(kCreate,
                                kUpdate,
                                ">> EngineAdapterGetEnrollmentStatus",
                                ">> EngineAdapterCheckForDuplicate",
                                "EngineAdapterCommitEnrollment SubFactor=3"));
    }
}

TEST_F(Enrollment, DiscardSucceedsWithoutAContextAndWithoutAPipeline) {
    WINBIO_PIPELINE detached = {};
    EXPECT_EQ(TheUnit().engine.DiscardEnrollment(&detached), S_OK);
    EXPECT_EQ(TheUnit().engine.DiscardEnrollment(nullptr), S_OK);
    EXPECT_THAT(TakeLog(), ElementsAre(kDiscard, kDiscard));
}

TEST_F(Enrollment, GoesOnWithoutARejectDetail) {
    const auto& engine = TheUnit().engine;
    EXPECT_EQ(Create(), S_OK);
    EXPECT_EQ(engine.UpdateEnrollment(&TheUnit().pipeline, nullptr), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(engine.GetEnrollmentStatus(&TheUnit().pipeline, nullptr), WINBIO_E_BAD_CAPTURE);
    EXPECT_EQ(TheUnit().Accept(BirOf(4)), S_OK);
    EXPECT_EQ(engine.UpdateEnrollment(&TheUnit().pipeline, nullptr), S_OK);
    EXPECT_EQ(engine.GetEnrollmentStatus(&TheUnit().pipeline, nullptr), S_OK);
}

}  // namespace
}  // namespace orl::test
