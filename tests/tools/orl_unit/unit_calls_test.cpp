// The order of the host's calls into an engine adapter, and what it makes of the engine's answers.

#include <cstring>
#include <optional>

#include <gtest/gtest.h>

#include "tests/support/dynamic_library.h"
#include "tests/support/record_builder.h"
#include "tests/tools/orl_unit/fake_engine.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/bir.h"

namespace orl::unit {
namespace {

FingerRecord someRecord() {
    FingerRecord record;
    const Bytes bytes = test::BuildRecord(test::RandomMinutiae(1, 20));
    record.bytes.assign(bytes.begin(), bytes.end());
    record.quality = 40;
    return record;
}

class UnitCalls : public testing::Test {
  protected:
    // The module stays loaded for the fixture, so its state outlives each unit.
    UnitCalls() : library_(ORL_FAKE_ENGINE_MODULE) {
        engine_ = library_.Symbol<FakeEngineFn>("FakeEngine")();
        std::memset(static_cast<void*>(engine_), 0, sizeof(*engine_));
    }

    BiometricUnit& attach() {
        unit_.emplace(tools::pathFromUtf8(ORL_FAKE_ENGINE_MODULE));
        unit_->openStore(":memory:", StoreUse::kCreateIfMissing, {});
        engine_->calls[0] = 0;
        return *unit_;
    }

    std::string calls() {
        std::string text = engine_->calls;
        engine_->calls[0] = 0;
        return text;
    }

    template <typename Operation>
    std::string refusal(Operation&& operation) {
        try {
            operation();
        } catch (const CommandError& error) {
            return error.what();
        }
        return "";
    }

    test::DynamicLibrary library_;
    FakeEngineState* engine_ = nullptr;
    std::optional<BiometricUnit> unit_;
    const FingerRecord record_ = someRecord();
    const Subject alice_ = {"alice", WINBIO_ANSI_381_POS_RH_INDEX_FINGER};
};

TEST_F(UnitCalls, AttachComesFirstThenTheFormatsAndDetachLast) {
    {
        const BiometricUnit unit(tools::pathFromUtf8(ORL_FAKE_ENGINE_MODULE));
        EXPECT_EQ(calls(), "Attach QueryPreferredFormat QueryIndexVectorSize ");
    }
    EXPECT_EQ(calls(), "Detach ");
}

TEST_F(UnitCalls, AnEngineThatCannotAttachIsNotDetached) {
    engine_->attachResult = E_OUTOFMEMORY;
    EXPECT_EQ(
        refusal([] { const BiometricUnit unit(tools::pathFromUtf8(ORL_FAKE_ENGINE_MODULE)); }),
        "the engine adapter cannot be attached: E_OUTOFMEMORY (0x8007000E)");
    EXPECT_EQ(calls(), "Attach ");
}

TEST_F(UnitCalls, AnEnrollmentClearsCreatesCapturesChecksCommitsDiscardsAndClears) {
    BiometricUnit& unit = attach();
    EXPECT_TRUE(unit.enroll(record_, alice_, DuplicateRule::kRefuse).stored);
    EXPECT_EQ(calls(),
              "ClearContext CreateEnrollment AcceptSampleData UpdateEnrollment CheckForDuplicate "
              "CommitEnrollment DiscardEnrollment ClearContext ");
    EXPECT_EQ(engine_->samplePurpose, WINBIO_PURPOSE_ENROLL);
}

TEST_F(UnitCalls, TheSampleIsTheWrappedRecord) {
    attach().enroll(record_, alice_, DuplicateRule::kRefuse);
    const SecretBytes expected = wrapRecord(
        record_.bytes,
        {WINBIO_ANSI_381_POS_RH_INDEX_FINGER, WINBIO_PURPOSE_ENROLL, 40, {0x001B, 0x0401}});
    ASSERT_EQ(engine_->sampleSize, expected.size());
    EXPECT_EQ(std::memcmp(engine_->sample, expected.data(), expected.size()), 0);
}

TEST_F(UnitCalls, ADuplicateIsDiscardedAndNamed) {
    BiometricUnit& unit = attach();
    unit.enroll(record_, alice_, DuplicateRule::kRefuse);
    unit.listRecords(
        [this](const ListedRecord& record) { engine_->foundIdentity = *record.identity; });
    engine_->duplicate = TRUE;
    calls();
    const EnrollOutcome outcome =
        unit.enroll(record_, {"bob", WINBIO_ANSI_381_POS_RH_INDEX_FINGER}, DuplicateRule::kRefuse);
    EXPECT_FALSE(outcome.stored);
    ASSERT_TRUE(outcome.duplicateOf.has_value());
    EXPECT_EQ(outcome.duplicateOf->name, "alice");
    EXPECT_EQ(outcome.duplicateOf->subFactor, WINBIO_ANSI_381_POS_RH_INDEX_FINGER);
    EXPECT_EQ(calls(),
              "ClearContext CreateEnrollment AcceptSampleData UpdateEnrollment CheckForDuplicate "
              "DiscardEnrollment ClearContext ");
}

TEST_F(UnitCalls, ADuplicateIsStoredWhenAllowed) {
    BiometricUnit& unit = attach();
    engine_->duplicate = TRUE;
    EXPECT_TRUE(unit.enroll(record_, alice_, DuplicateRule::kAllow).stored);
}

TEST_F(UnitCalls, AFingerEnrolledAlreadyIsRefusedBeforeTheEngineIsAsked) {
    BiometricUnit& unit = attach();
    unit.enroll(record_, alice_, DuplicateRule::kRefuse);
    calls();
    EXPECT_EQ(refusal([&] { unit.enroll(record_, alice_, DuplicateRule::kAllow); }),
              "'alice' has right-index enrolled already");
    EXPECT_EQ(calls(), "");
}

TEST_F(UnitCalls, EveryFailedEnrollmentIsDiscardedAndCleared) {
    struct Case {
        HRESULT FakeEngineState::*step;
        HRESULT result;
        const char* reason;
    };
    const Case cases[] = {
        {&FakeEngineState::acceptResult,
         WINBIO_E_BAD_CAPTURE,
         "the engine rejects the sample (detail 7)"},
        {&FakeEngineState::acceptResult,
         E_OUTOFMEMORY,
         "AcceptSampleData failed: E_OUTOFMEMORY (0x8007000E)"},
        {&FakeEngineState::updateResult,
         WINBIO_E_BAD_CAPTURE,
         "UpdateEnrollment failed: WINBIO_E_BAD_CAPTURE (0x80098008)"},
        {&FakeEngineState::updateResult,
         WINBIO_I_MORE_DATA,
         "the engine asks for more samples than the one given"},
        {&FakeEngineState::commitResult, E_FAIL, "CommitEnrollment failed: E_FAIL (0x80004005)"},
        {&FakeEngineState::commitResult,
         WINBIO_E_DUPLICATE_ENROLLMENT,
         "'alice' has right-index enrolled already"},
    };
    BiometricUnit& unit = attach();
    for (const Case& each : cases) {
        engine_->*each.step = each.result;
        calls();
        EXPECT_EQ(refusal([&] { unit.enroll(record_, alice_, DuplicateRule::kRefuse); }),
                  each.reason);
        const std::string order = calls();
        const std::string end = "DiscardEnrollment ClearContext ";
        ASSERT_GE(order.size(), end.size());
        EXPECT_EQ(order.substr(order.size() - end.size()), end) << each.reason;
        engine_->*each.step = S_OK;
    }
    EXPECT_TRUE(unit.enroll(record_, alice_, DuplicateRule::kRefuse).stored);
}

TEST_F(UnitCalls, AVerificationClearsCapturesVerifiesAndClears) {
    BiometricUnit& unit = attach();
    unit.enroll(record_, alice_, DuplicateRule::kRefuse);
    calls();
    EXPECT_FALSE(unit.verify(record_, alice_).match);
    EXPECT_EQ(calls(), "ClearContext AcceptSampleData VerifyFeatureSet ClearContext ");
    EXPECT_EQ(engine_->samplePurpose, WINBIO_PURPOSE_VERIFY);
    engine_->match = TRUE;
    EXPECT_TRUE(unit.verify(record_, alice_).match);
}

TEST_F(UnitCalls, AnUnknownNameIsNotVerified) {
    BiometricUnit& unit = attach();
    EXPECT_EQ(refusal([&] { unit.verify(record_, alice_); }),
              "unknown identity 'alice': nothing is enrolled for it");
    EXPECT_EQ(calls(), "ClearContext ClearContext ");
}

TEST_F(UnitCalls, AVerificationsFailureIsTold) {
    BiometricUnit& unit = attach();
    unit.enroll(record_, alice_, DuplicateRule::kRefuse);
    engine_->verifyResult = WINBIO_E_DATABASE_NO_RESULTS;
    EXPECT_EQ(refusal([&] {
                  unit.verify(record_, {"alice", 7});
              }),
              "'alice' has not enrolled left-index");
    engine_->verifyResult = E_INVALIDARG;
    EXPECT_EQ(refusal([&] { unit.verify(record_, alice_); }),
              "VerifyFeatureSet failed: E_INVALIDARG (0x80070057)");
}

TEST_F(UnitCalls, AnIdentificationClearsCapturesIdentifiesAndClears) {
    BiometricUnit& unit = attach();
    engine_->identifyResult = WINBIO_E_UNKNOWN_ID;
    EXPECT_FALSE(unit.identify(record_).subject.has_value());
    EXPECT_EQ(calls(), "ClearContext AcceptSampleData IdentifyFeatureSet ClearContext ");
    EXPECT_EQ(engine_->samplePurpose, WINBIO_PURPOSE_IDENTIFY);
    engine_->identifyResult = E_FAIL;
    EXPECT_EQ(refusal([&] { unit.identify(record_); }),
              "IdentifyFeatureSet failed: E_FAIL (0x80004005)");
}

TEST_F(UnitCalls, AnIdentityWithoutANameIsShownByItsGuid) {
    BiometricUnit& unit = attach();
    engine_->foundIdentity = guidIdentity(1);
    const IdentifyOutcome outcome = unit.identify(record_);
    ASSERT_TRUE(outcome.subject.has_value());
    EXPECT_EQ(outcome.subject->name, "{00000001-0001-0002-0304-05060708090a}");
}

TEST_F(UnitCalls, ARawCaptureExportsTheSample) {
    BiometricUnit& unit = attach();
    const SecretBytes exported = unit.captureRaw(record_);
    EXPECT_EQ(calls(), "ClearContext AcceptSampleData ExportEngineData ClearContext ");
    EXPECT_EQ(exported, wrapRecord(record_.bytes, {0, 0, 40, {0x001B, 0x0401}}));
}

TEST_F(UnitCalls, ListingAndDeletingLeaveTheEngineAlone) {
    BiometricUnit& unit = attach();
    unit.enroll(record_, alice_, DuplicateRule::kRefuse);
    unit.enroll(record_, {"alice", 7}, DuplicateRule::kRefuse);
    unit.enroll(record_, {"bob", 7}, DuplicateRule::kRefuse);
    calls();
    std::vector<std::string> names;
    unit.listRecords(
        [&names](const ListedRecord& record) { names.push_back(record.subject.name); });
    EXPECT_EQ(names, (std::vector<std::string>{"alice", "alice", "bob"}));
    EXPECT_EQ(unit.deleteRecords("alice", WINBIO_ANSI_381_POS_RH_INDEX_FINGER), 1U);
    EXPECT_EQ(refusal([&] { unit.deleteRecords("alice", WINBIO_ANSI_381_POS_RH_INDEX_FINGER); }),
              "'alice' has no such record to delete");
    EXPECT_EQ(unit.deleteRecords(std::nullopt, WINBIO_SUBTYPE_ANY), 2U);
    EXPECT_EQ(refusal([&] { unit.deleteRecords(std::nullopt, WINBIO_SUBTYPE_ANY); }),
              "there is no such record to delete");
    EXPECT_EQ(calls().find("Enroll"), std::string::npos);
}

TEST_F(UnitCalls, TheStoresIndexLengthIsTheEngines) {
    engine_->indexElementCount = 3;
    BiometricUnit& unit = attach();
    // The fake engine commits records without index vector, which do not fit the store.
    EXPECT_EQ(refusal([&] { unit.enroll(record_, alice_, DuplicateRule::kRefuse); }),
              "CommitEnrollment failed: WINBIO_E_DATABASE_BAD_INDEX_VECTOR (0x80098022)");
}

}  // namespace
}  // namespace orl::unit
