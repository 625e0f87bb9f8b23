#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "adapter/enrollment.h"
#include "tests/adapter/comparing_test.h"
#include "tests/adapter/stored_record_lines.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// The pending template holds a record of 3 minutiae.
const std::string kEntry = ">> EngineAdapterCheckForDuplicate";
const std::string kPendingOk = "ExtractISOFromBIR: OK isoSize=48";
const std::string kPendingFound = ResultLine("ExtractISOFromBIR(pending)", "00000000");

std::string NoDuplicate(int records) {
    return "EngineAdapterCheckForDuplicate: no duplicate found after " + std::to_string(records) +
           " records";
}

class CheckForDuplicate : public ComparingTest {
  protected:
    void SetUp() override {
        ComparingTest::SetUp();
        Pend(BirOf(3, 0x31));
    }

    void Pend(const std::vector<std::uint8_t>& bir) {
        EXPECT_EQ(TheUnit().Enroll(bir), S_OK);
        TakeLog();
    }

    HRESULT Check() { return TheUnit().CheckForDuplicate(outputs_); }

    void ExpectNoDuplicate() {
        EXPECT_TRUE(IsZero(outputs_.identity));
        EXPECT_EQ(outputs_.subFactor, 0);
        EXPECT_EQ(outputs_.duplicate, FALSE);
    }

    DuplicateOutputs outputs_;
};

TEST_F(CheckForDuplicate, TellsWhoseTheFirstMatchingRecordIs) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    Store(5, 6, 0x43);
    Answer({.matched = 0, .score = 12});
    Answer({.matched = 1, .score = 700});
    EXPECT_EQ(Check(), S_OK);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(8)));
    EXPECT_EQ(outputs_.subFactor, 9);
    EXPECT_EQ(outputs_.duplicate, TRUE);
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry,
                            kPendingOk,
                            kPendingFound,
                            kQueryOk,
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: NO MATCH score=12",
                            "EngineAdapterCheckForDuplicate: record[0] match=FALSE",
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: MATCH score=700",
                            "EngineAdapterCheckForDuplicate: record[1] match=TRUE",
                            "EngineAdapterCheckForDuplicate: DUPLICATE found at record[1]"));
}

TEST_F(CheckForDuplicate, ComparesStoredRecordsWithThePendingTemplateNotTheSample) {
    Store(1, 2, 0x41);
    EXPECT_EQ(TheUnit().Accept(BirOf(9, 0x99)), S_OK);
    EXPECT_EQ(Check(), S_OK);
    ASSERT_THAT(TheFakeMatcher().matches, SizeIs(1));
    EXPECT_EQ(TheFakeMatcher().matches[0].probe, ViewOf(4, 0x41));
    EXPECT_EQ(TheFakeMatcher().matches[0].candidate, ViewOf(3, 0x31));
}

TEST_F(CheckForDuplicate, WalksTheRecordsOfAllFingers) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    EXPECT_EQ(Check(), S_OK);
    ExpectNoDuplicate();
    EXPECT_THAT(TheUnit().storage.TakeCalls(),
                ElementsAre("QueryByContent 255 null 0",
                            "FirstRecord",
                            "GetCurrentRecord",
                            "NextRecord",
                            "GetCurrentRecord",
                            "NextRecord"));
    EXPECT_TRUE(TheUnit().storage.RecordsCameZeroed());
    EXPECT_EQ(TakeLog().back(), NoDuplicate(2));
}

TEST_F(CheckForDuplicate, FindsNoneInAnEmptyDatabase) {
    EXPECT_EQ(Check(), S_OK);
    ExpectNoDuplicate();
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry,
                            kPendingOk,
                            kPendingFound,
                            ResultLine("StorageInterface->QueryByContent", "8009801F")));
}

TEST_F(CheckForDuplicate, RejectsAPendingTemplateWhoseStandardDataOverrunsTheBir) {
    std::vector<std::uint8_t> bir = BirOf(3);
    SetStandardDataBlock(bir, 49, 32);
    Pend(bir);
    EXPECT_EQ(Check(), E_INVALIDARG);
    ExpectNoDuplicate();
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry,
                            "ExtractISOFromBIR: offset+size=81 > birSize=80 \xE2\x80\x94 "
                            "E_INVALIDARG",
                            ResultLine("ExtractISOFromBIR(pending)", "80070057")));
    EXPECT_THAT(TheUnit().storage.TakeCalls(), IsEmpty());
}

TEST_F(CheckForDuplicate, RejectsAPendingTemplateShorterThanAHeader) {
    Pend(std::vector<std::uint8_t>(31, 1));
    EXPECT_EQ(Check(), E_INVALIDARG);
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry, ResultLine("ExtractISOFromBIR(pending)", "80070057")));
}

TEST_F(CheckForDuplicate, RejectsAPendingTemplateWithEmptyStandardData) {
    std::vector<std::uint8_t> bir = BirOf(3);
    SetStandardDataBlock(bir, 0, 32);
    Pend(bir);
    EXPECT_EQ(Check(), WINBIO_E_NO_CAPTURE_DATA);
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry, ResultLine("ExtractISOFromBIR(pending)", "80098026")));
}

TEST_F(CheckForDuplicate, NeedsAPendingTemplate) {
    EXPECT_EQ(TheUnit().engine.CreateEnrollment(&TheUnit().pipeline), S_OK);
    TakeLog();
    EXPECT_EQ(Check(), WINBIO_E_INVALID_DEVICE_STATE);
    ExpectNoDuplicate();
    EXPECT_THAT(TakeLog(), ElementsAre(kEntry));
}

TEST_F(CheckForDuplicate, TakesATemplateOfSizeZeroForNone) {
    const SIZE_T size = TheUnit().Context().EnrollmentTemplateSize;
    TheUnit().Context().EnrollmentTemplateSize = 0;
    EXPECT_EQ(Check(), WINBIO_E_INVALID_DEVICE_STATE);
    TheUnit().Context().EnrollmentTemplateSize = size;
}

TEST_F(CheckForDuplicate, WorksAfterACommitAgainstTheKeptTemplate) {
    WINBIO_IDENTITY identity = IdentityNumber(5);
    EXPECT_EQ(TheUnit().engine.CommitEnrollment(&TheUnit().pipeline, &identity, 3, nullptr, 0),
              S_OK);
    Answer({.matched = 1});
    EXPECT_EQ(Check(), S_OK);
    EXPECT_EQ(outputs_.duplicate, TRUE);
    EXPECT_TRUE(SameIdentity(outputs_.identity, identity));
    EXPECT_EQ(outputs_.subFactor, 3);
}

TEST_F(CheckForDuplicate, FailsWithoutAStorageInterfaceOnlyForASoundTemplate) {
    TheUnit().pipeline.StorageInterface = nullptr;
    EXPECT_EQ(Check(), E_FAIL);
    ExpectNoDuplicate();
    EXPECT_THAT(TakeLog(), ElementsAre(kEntry, kPendingOk, kPendingFound));
    Pend(std::vector<std::uint8_t>(31, 1));
    EXPECT_EQ(Check(), E_INVALIDARG);
}

TEST_F(CheckForDuplicate, TakesEveryStorageFailureForNoDuplicate) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    struct Failure {
        const char* routine;
        int nth;
        std::string lastLine;
    };
    const Failure failures[] = {
        {"QueryByContent", 1, ResultLine("StorageInterface->QueryByContent", "8009801D")},
        {"FirstRecord", 1, NoDuplicate(0)},
        {"GetCurrentRecord", 1, NoDuplicate(0)},
        {"NextRecord", 1, NoDuplicate(1)},
        {"GetCurrentRecord", 2, NoDuplicate(1)}};
    for (const Failure& failure : failures) {
        FakeStorage storage(TheUnit().pipeline);
        storage.records = TheUnit().storage.records;
        storage.Fail(failure.routine, failure.nth, WINBIO_E_DATABASE_READ_ERROR);
        EXPECT_EQ(Check(), S_OK) << failure.routine;
        ExpectNoDuplicate();
        EXPECT_EQ(TakeLog().back(), failure.lastLine) << failure.routine;
    }
}

TEST_F(CheckForDuplicate, SkipsRecordsWithoutAnIsoRecord) {
    for (std::uint32_t i = 0; i < 4; ++i) {
        Store(i, 2, 0x41);
    }
    TheUnit().storage.records[0].templateBlob = std::nullopt;
    TheUnit().storage.records[1].templateBlob = std::vector<std::uint8_t>(31, 1);
    SetStandardDataBlock(*TheUnit().storage.records[2].templateBlob, 55, 32);
    Answer({.matched = 1, .score = 400});
    EXPECT_EQ(Check(), S_OK);
    EXPECT_EQ(outputs_.duplicate, TRUE);
    EXPECT_TRUE(SameIdentity(outputs_.identity, IdentityNumber(3)));
    EXPECT_THAT(TakeLog(),
                ElementsAre(kEntry,
                            kPendingOk,
                            kPendingFound,
                            kQueryOk,
                            kRecordOk,
                            kRecordOk,
                            kRecordOk,
                            "ExtractISOFromBIR: offset+size=87 > birSize=86 \xE2\x80\x94 "
                            "E_INVALIDARG",
                            kRecordOk,
                            kStoredOk,
                            kSizes,
                            "MatchISOTemplates: MATCH score=400",
                            "EngineAdapterCheckForDuplicate: record[3] match=TRUE",
                            "EngineAdapterCheckForDuplicate: DUPLICATE found at record[3]"));
}

TEST_F(CheckForDuplicate, ReturnsAZeroedIdentityForAMatchWithANullIdentity) {
    Store(1, 9, 0x41);
    TheUnit().storage.records[0].identity.reset();
    Answer({.matched = 1});
    EXPECT_EQ(Check(), S_OK);
    EXPECT_TRUE(IsZero(outputs_.identity));
    EXPECT_EQ(outputs_.subFactor, 9);
    EXPECT_EQ(outputs_.duplicate, TRUE);
}

TEST_F(CheckForDuplicate, GoesOnToTheNextRecordWhenTheMatcherFails) {
    Store(1, 2, 0x41);
    Store(8, 9, 0x42);
    Answer({.raise = [] { throw std::runtime_error("not triangulation"); }});
    Answer({.status = 5});
    EXPECT_EQ(Check(), S_OK);
    ExpectNoDuplicate();
    EXPECT_EQ(TakeLog().back(), NoDuplicate(2));
}

TEST_F(CheckForDuplicate, GoesOnWithoutOutputs) {
    Store(1, 2, 0x41);
    Answer({.matched = 1});
    EXPECT_EQ(TheUnit().engine.CheckForDuplicate(&TheUnit().pipeline, nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(TakeLog().back(), "EngineAdapterCheckForDuplicate: DUPLICATE found at record[0]");
}

TEST_F(CheckForDuplicate, ChangesNothingInTheContext) {
    Store(1, 2, 0x41);
    const adapter::EngineContext before = TheUnit().Context();
    EXPECT_EQ(Check(), S_OK);
    EXPECT_EQ(std::memcmp(&TheUnit().Context(), &before, sizeof(before)), 0);
}

}  // namespace
}  // namespace orl::test
