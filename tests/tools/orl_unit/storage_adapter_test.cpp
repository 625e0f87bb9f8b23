// The rules of the framework's storage routines, the same for every kind of store.

#include "tools/orl_unit/storage_adapter.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "tests/tools/orl_unit/storage_unit.h"
#include "tests/tools/orl_unit/store_kinds.h"

namespace orl::unit {
namespace {

template <typename Kind>
class StorageAdapter : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(unit_.create(kind_.path()), S_OK);
        ASSERT_EQ(unit_.open(kind_.path()), S_OK);
    }

    // Replaces the store by one for index vectors of that length.
    void reopenWithIndexLength(std::size_t indexElementCount) {
        ASSERT_EQ(unit_.close(), S_OK);
        ASSERT_EQ(unit_.erase(kind_.path()), S_OK);
        ASSERT_EQ(unit_.create(kind_.path(), indexElementCount), S_OK);
        ASSERT_EQ(unit_.open(kind_.path()), S_OK);
    }

    void addThree() {
        ASSERT_EQ(unit_.add(guidIdentity(1), kThumb, {11}), S_OK);
        ASSERT_EQ(unit_.add(guidIdentity(1), kIndex, {12}), S_OK);
        ASSERT_EQ(unit_.add(guidIdentity(2), kThumb, {21}), S_OK);
    }

    Kind kind_;
    StorageUnit unit_;
};
TYPED_TEST_SUITE(StorageAdapter, StoreKinds);

TYPED_TEST(StorageAdapter, FindsARecordByItsIdentityAndSubFactor) {
    this->addThree();
    EXPECT_EQ(this->unit_.queryBySubject(guidIdentity(1), kIndex), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{12});
    EXPECT_EQ(this->unit_.next(), WINBIO_E_DATABASE_NO_MORE_RECORDS);
}

TYPED_TEST(StorageAdapter, ASubjectQueryLeavesTheCursorOnTheFirstRecord) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(1), WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{11});
}

TYPED_TEST(StorageAdapter, AContentQueryLeavesTheCursorOnTheFirstRecord) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{11});
}

TYPED_TEST(StorageAdapter, AWildcardIdentityMatchesEveryIdentity) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryBySubject(wildcardIdentity(), kThumb), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {21}}));
}

TYPED_TEST(StorageAdapter, SubFactorAnyMatchesEverySubFactor) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(1), WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {12}}));
}

TYPED_TEST(StorageAdapter, WildcardWithAnySelectsAllInTheOrderOfAdding) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryBySubject(wildcardIdentity(), WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {12}, {21}}));
}

TYPED_TEST(StorageAdapter, AQueryWithoutARecordGivesNoResultsAndAnEmptySet) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.queryBySubject(guidIdentity(9), WINBIO_SUBTYPE_ANY),
              WINBIO_E_DATABASE_NO_RESULTS);
    SIZE_T count = 7;
    EXPECT_EQ(this->unit_.count(count), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(count, 0U);
}

TYPED_TEST(StorageAdapter, ANewQueryReplacesTheFormerResultSet) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(2), kThumb), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{21}}));
}

TYPED_TEST(StorageAdapter, RefusesASubjectQueryWithoutIdentity) {
    EXPECT_EQ(this->unit_.routines().QueryBySubject(&this->unit_.pipeline(), nullptr, kThumb),
              E_POINTER);
}

TYPED_TEST(StorageAdapter, RefusesSubjectsThatAreNoneInQueriesAndDeletions) {
    WINBIO_IDENTITY nullIdentity = {};
    WINBIO_IDENTITY secureId = {};
    secureId.Type = WINBIO_ID_TYPE_SECURE_ID;
    WINBIO_IDENTITY falseWildcard = wildcardIdentity();
    falseWildcard.Value.Wildcard = WINBIO_IDENTITY_WILDCARD + 1;
    const std::vector<std::pair<WINBIO_IDENTITY, std::uint8_t>> subjects = {
        {guidIdentity(1), WINBIO_SUBTYPE_NO_INFORMATION},
        {nullIdentity, kThumb},
        {secureId, kThumb},
        {falseWildcard, kThumb},
        {sidIdentity(1, 0), kThumb},
        {sidIdentity(1, 69), kThumb},
    };
    this->addThree();
    for (const auto& [identity, subFactor] : subjects) {
        SCOPED_TRACE(testing::Message()
                     << "type " << identity.Type << ", sub-factor " << static_cast<int>(subFactor));
        EXPECT_EQ(this->unit_.queryBySubject(identity, subFactor), E_INVALIDARG);
        EXPECT_EQ(this->unit_.remove(identity, subFactor), E_INVALIDARG);
    }
}

TYPED_TEST(StorageAdapter, AnInvalidQueryLeavesTheResultSetAlone) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(2), kThumb), S_OK);
    EXPECT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_NO_INFORMATION), E_INVALIDARG);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{21});
}

TYPED_TEST(StorageAdapter, AContentQuerySelectsBySubFactor) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(kThumb), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {21}}));
    EXPECT_EQ(this->unit_.queryByContent(5), WINBIO_E_DATABASE_NO_RESULTS);
}

TYPED_TEST(StorageAdapter, AContentQueryWithAVectorOfAnotherLengthIsABadIndexVector) {
    this->addThree();
    EXPECT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY, {1}),
              WINBIO_E_DATABASE_BAD_INDEX_VECTOR);
}

TYPED_TEST(StorageAdapter, AContentQuerySelectsByIndexVectorWhereTheDatabaseHasOne) {
    this->reopenWithIndexLength(2);
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, {11}, {}, {5, 6}), S_OK);
    ASSERT_EQ(this->unit_.add(guidIdentity(2), kThumb, {21}, {}, {5, 7}), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY, {5, 7}), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{21}}));
    WINBIO_STORAGE_RECORD record = {};
    ASSERT_EQ(this->unit_.current(record), S_OK);
    ASSERT_EQ(record.IndexElementCount, 2U);
    EXPECT_EQ(record.IndexVector[0], 5U);
    EXPECT_EQ(record.IndexVector[1], 7U);
    EXPECT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), WINBIO_E_DATABASE_BAD_INDEX_VECTOR);
    EXPECT_EQ(this->unit_.routines().QueryByContent(
                  &this->unit_.pipeline(), WINBIO_SUBTYPE_ANY, nullptr, 2),
              E_POINTER);
}

TYPED_TEST(StorageAdapter, NextRecordOnTheLastKeepsTheCursorThere) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(kThumb), S_OK);
    ASSERT_EQ(this->unit_.next(), S_OK);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(this->unit_.next(), WINBIO_E_DATABASE_NO_MORE_RECORDS);
        EXPECT_EQ(this->unit_.currentTemplate(), Bytes{21});
    }
}

TYPED_TEST(StorageAdapter, FirstRecordGoesBackToTheFirst) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.next(), S_OK);
    ASSERT_EQ(this->unit_.first(), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{11});
}

TYPED_TEST(StorageAdapter, EveryCursorCallOnAnEmptySetGivesNoResults) {
    this->addThree();
    WINBIO_STORAGE_RECORD record = {};
    SIZE_T count = 0;
    EXPECT_EQ(this->unit_.first(), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(this->unit_.next(), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(this->unit_.current(record), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(this->unit_.count(count), WINBIO_E_DATABASE_NO_RESULTS);
}

TYPED_TEST(StorageAdapter, GetCurrentRecordFillsEveryFieldAndMovesNothing) {
    WINBIO_IDENTITY identity = guidIdentity(77);
    ASSERT_EQ(this->unit_.add(identity, kIndex, {1, 2, 3}, {9, 8}), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    WINBIO_STORAGE_RECORD first = {};
    WINBIO_STORAGE_RECORD again = {};
    ASSERT_EQ(this->unit_.current(first), S_OK);
    ASSERT_EQ(this->unit_.current(again), S_OK);
    EXPECT_EQ(std::memcmp(first.Identity, &identity, sizeof(identity)), 0);
    EXPECT_EQ(first.SubFactor, kIndex);
    EXPECT_EQ(first.IndexVector, nullptr);
    EXPECT_EQ(first.IndexElementCount, 0U);
    EXPECT_EQ(Bytes(first.TemplateBlob, first.TemplateBlob + first.TemplateBlobSize),
              (Bytes{1, 2, 3}));
    EXPECT_EQ(Bytes(first.PayloadBlob, first.PayloadBlob + first.PayloadBlobSize), (Bytes{9, 8}));
    EXPECT_EQ(first.TemplateBlob, again.TemplateBlob);
}

TYPED_TEST(StorageAdapter, ARecordWithoutPayloadHasANullPayload) {
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kIndex, {1}), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    WINBIO_STORAGE_RECORD record = {};
    ASSERT_EQ(this->unit_.current(record), S_OK);
    EXPECT_EQ(record.PayloadBlob, nullptr);
    EXPECT_EQ(record.PayloadBlobSize, 0U);
}

TYPED_TEST(StorageAdapter, ThePointersStayValidWhileTheCursorStays) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    WINBIO_STORAGE_RECORD record = {};
    ASSERT_EQ(this->unit_.current(record), S_OK);
    ASSERT_EQ(this->unit_.add(guidIdentity(3), kThumb, Bytes(5000, 31)), S_OK);
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kThumb), S_OK);
    SIZE_T count = 0;
    ASSERT_EQ(this->unit_.count(count), S_OK);
    EXPECT_EQ(Bytes(record.TemplateBlob, record.TemplateBlob + record.TemplateBlobSize), Bytes{11});
    EXPECT_EQ(record.Identity->Value.TemplateGuid.Data1, 1U);
}

TYPED_TEST(StorageAdapter, AddingLeavesTheResultSetAlone) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.add(guidIdentity(3), kThumb, {31}), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {12}, {21}}));
}

TYPED_TEST(StorageAdapter, TheWalkPassesOverARecordDeletedMeanwhile) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kIndex), S_OK);
    EXPECT_EQ(this->unit_.next(), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{21});
}

TYPED_TEST(StorageAdapter, TheWalkEndsWhenTheRestIsDeletedMeanwhile) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.remove(wildcardIdentity(), WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.next(), WINBIO_E_DATABASE_NO_MORE_RECORDS);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{11});
    EXPECT_EQ(this->unit_.first(), WINBIO_E_DATABASE_NO_RESULTS);
}

TYPED_TEST(StorageAdapter, GetRecordCountGivesTheSizeOfTheResultSet) {
    this->addThree();
    SIZE_T count = 0;
    ASSERT_EQ(this->unit_.queryByContent(kThumb), S_OK);
    EXPECT_EQ(this->unit_.count(count), S_OK);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(this->unit_.routines().GetRecordCount(&this->unit_.pipeline(), nullptr), E_POINTER);
}

TYPED_TEST(StorageAdapter, AddRecordCopiesWhatItIsGiven) {
    WINBIO_IDENTITY identity = guidIdentity(5);
    Bytes templateBlob(100, 42);
    Bytes payload(10, 43);
    WINBIO_STORAGE_RECORD record = {};
    record.Identity = &identity;
    record.SubFactor = kThumb;
    record.TemplateBlob = templateBlob.data();
    record.TemplateBlobSize = templateBlob.size();
    record.PayloadBlob = payload.data();
    record.PayloadBlobSize = payload.size();
    ASSERT_EQ(this->unit_.routines().AddRecord(&this->unit_.pipeline(), &record), S_OK);
    identity = guidIdentity(6);
    templateBlob.assign(100, 0);
    payload.assign(10, 0);
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(5), kThumb), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes(100, 42));
    ASSERT_EQ(this->unit_.current(record), S_OK);
    EXPECT_EQ(Bytes(record.PayloadBlob, record.PayloadBlob + record.PayloadBlobSize),
              Bytes(10, 43));
}

TYPED_TEST(StorageAdapter, RefusesASecondRecordOfTheSameIdentityAndSubFactor) {
    this->addThree();
    EXPECT_EQ(this->unit_.add(guidIdentity(1), kThumb, {99}), WINBIO_E_DUPLICATE_ENROLLMENT);
    ASSERT_EQ(this->unit_.queryBySubject(guidIdentity(1), kThumb), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), Bytes{11});
}

TYPED_TEST(StorageAdapter, KeepsRecordsUnderSidsOfEveryLength) {
    for (const std::uint32_t byteCount : {1U, 2U, 28U, 68U}) {
        ASSERT_EQ(this->unit_.add(
                      sidIdentity(7, byteCount), kThumb, {static_cast<std::uint8_t>(byteCount)}),
                  S_OK)
            << byteCount;
    }
    ASSERT_EQ(this->unit_.queryBySubject(sidIdentity(7, 28), kThumb), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{28}}));
    WINBIO_STORAGE_RECORD record = {};
    const WINBIO_IDENTITY expected = sidIdentity(7, 28);
    ASSERT_EQ(this->unit_.current(record), S_OK);
    EXPECT_EQ(std::memcmp(record.Identity, &expected, sizeof(expected)), 0);
}

TYPED_TEST(StorageAdapter, RefusesRecordsThatMayNotBeStored) {
    const Bytes some = {1};
    EXPECT_EQ(this->unit_.add(wildcardIdentity(), kThumb, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(WINBIO_IDENTITY{}, kThumb, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(sidIdentity(1, 0), kThumb, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(sidIdentity(1, 69), kThumb, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(guidIdentity(1), WINBIO_SUBTYPE_NO_INFORMATION, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(guidIdentity(1), WINBIO_SUBTYPE_ANY, some), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(guidIdentity(1), kThumb, {}), E_INVALIDARG);
    EXPECT_EQ(this->unit_.add(guidIdentity(1), kThumb, some, {}, {1}),
              WINBIO_E_DATABASE_BAD_INDEX_VECTOR);
    EXPECT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), WINBIO_E_DATABASE_NO_RESULTS);
}

TYPED_TEST(StorageAdapter, RefusesRecordsWithNullPointers) {
    WINBIO_IDENTITY identity = guidIdentity(1);
    UCHAR byte = 1;
    WINBIO_STORAGE_RECORD sound = {};
    sound.Identity = &identity;
    sound.SubFactor = kThumb;
    sound.TemplateBlob = &byte;
    sound.TemplateBlobSize = 1;
    WINBIO_PIPELINE* const pipeline = &this->unit_.pipeline();
    WINBIO_STORAGE_INTERFACE& routines = this->unit_.routines();
    EXPECT_EQ(routines.AddRecord(pipeline, nullptr), E_POINTER);
    WINBIO_STORAGE_RECORD record = sound;
    record.Identity = nullptr;
    EXPECT_EQ(routines.AddRecord(pipeline, &record), E_POINTER);
    record = sound;
    record.TemplateBlob = nullptr;
    EXPECT_EQ(routines.AddRecord(pipeline, &record), E_INVALIDARG);
    record = sound;
    record.PayloadBlobSize = 1;
    EXPECT_EQ(routines.AddRecord(pipeline, &record), E_INVALIDARG);
    record = sound;
    record.IndexElementCount = 1;
    EXPECT_EQ(routines.AddRecord(pipeline, &record), E_INVALIDARG);
    EXPECT_EQ(routines.AddRecord(pipeline, &sound), S_OK);
}

TYPED_TEST(StorageAdapter, DeletesExactlyTheSubjectsRecords) {
    this->addThree();
    EXPECT_EQ(this->unit_.remove(guidIdentity(1), kThumb), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{12}, {21}}));
}

TYPED_TEST(StorageAdapter, DeletesAllFingersOfAnIdentityWithAny) {
    this->addThree();
    EXPECT_EQ(this->unit_.remove(guidIdentity(1), WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{21}}));
}

TYPED_TEST(StorageAdapter, WildcardWithAnyEmptiesTheDatabase) {
    this->addThree();
    EXPECT_EQ(this->unit_.remove(wildcardIdentity(), WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), WINBIO_E_DATABASE_NO_RESULTS);
}

TYPED_TEST(StorageAdapter, DeletingWhatIsNotThereGivesNoSuchRecord) {
    this->addThree();
    EXPECT_EQ(this->unit_.remove(guidIdentity(2), kIndex), WINBIO_E_DATABASE_NO_SUCH_RECORD);
    EXPECT_EQ(this->unit_.remove(guidIdentity(3), WINBIO_SUBTYPE_ANY),
              WINBIO_E_DATABASE_NO_SUCH_RECORD);
    EXPECT_EQ(this->unit_.routines().DeleteRecord(&this->unit_.pipeline(), nullptr, kThumb),
              E_POINTER);
}

TYPED_TEST(StorageAdapter, ADeletedSubjectCanBeAddedAgain) {
    this->addThree();
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kThumb), S_OK);
    EXPECT_EQ(this->unit_.add(guidIdentity(1), kThumb, {13}), S_OK);
}

TYPED_TEST(StorageAdapter, ClearContextDropsTheResultSet) {
    this->addThree();
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.clear(), S_OK);
    EXPECT_EQ(this->unit_.first(), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_EQ(this->unit_.clear(), S_OK);
}

TYPED_TEST(StorageAdapter, EveryRecordRoutineWantsAnOpenDatabase) {
    ASSERT_EQ(this->unit_.close(), S_OK);
    WINBIO_STORAGE_RECORD record = {};
    SIZE_T count = 0;
    EXPECT_EQ(this->unit_.add(guidIdentity(1), kThumb, {1}), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.remove(guidIdentity(1), kThumb), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.queryBySubject(guidIdentity(1), kThumb), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.queryByContent(kThumb), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.first(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.next(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.current(record), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.count(count), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.close(), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.clear(), S_OK);
}

TYPED_TEST(StorageAdapter, AClosedDatabaseKeepsItsRecords) {
    this->addThree();
    ASSERT_EQ(this->unit_.close(), S_OK);
    ASSERT_EQ(this->unit_.open(this->kind_.path()), S_OK);
    EXPECT_EQ(this->unit_.first(), WINBIO_E_DATABASE_NO_RESULTS) << "no result set survives";
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.allTemplates(), (std::vector<Bytes>{{11}, {12}, {21}}));
}

TYPED_TEST(StorageAdapter, OpensOneDatabaseAtATime) {
    EXPECT_EQ(this->unit_.open(this->kind_.path()), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(this->unit_.erase(this->kind_.path()), WINBIO_E_INVALID_DEVICE_STATE);
}

TYPED_TEST(StorageAdapter, CreatesADatabaseOnlyOnce) {
    EXPECT_EQ(this->unit_.create(this->kind_.path()), WINBIO_E_DATABASE_ALREADY_EXISTS);
}

TYPED_TEST(StorageAdapter, AnErasedDatabaseIsGone) {
    this->addThree();
    ASSERT_EQ(this->unit_.close(), S_OK);
    EXPECT_EQ(this->unit_.erase(this->kind_.path()), S_OK);
    EXPECT_EQ(this->unit_.open(this->kind_.path()), WINBIO_E_DATABASE_CANT_FIND);
    EXPECT_EQ(this->unit_.erase(this->kind_.path()), WINBIO_E_DATABASE_CANT_FIND);
}

TYPED_TEST(StorageAdapter, KeepsLargeTemplatesByteForByte) {
    std::mt19937 random(20240901);
    Bytes templateBlob(3'000'000);
    for (std::uint8_t& byte : templateBlob) {
        byte = static_cast<std::uint8_t>(random());
    }
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, templateBlob), S_OK);
    ASSERT_EQ(this->unit_.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    EXPECT_EQ(this->unit_.currentTemplate(), templateBlob);
}

// Random additions, deletions and queries against a plain list.
TYPED_TEST(StorageAdapter, BehavesAsAPlainListOfRecords) {
    constexpr unsigned kSeed = 20240902;
    constexpr int kSteps = 400;
    SCOPED_TRACE(testing::Message() << "seed " << kSeed);
    std::mt19937 random(kSeed);
    struct Entry {
        std::uint32_t identity;
        std::uint8_t subFactor;
        Bytes templateBlob;
    };
    std::vector<Entry> model;
    for (int step = 0; step < kSteps; ++step) {
        const auto identity = static_cast<std::uint32_t>(random() % 6);
        const auto subFactor = static_cast<std::uint8_t>(1 + random() % 4);
        const auto isSubject = [&](const Entry& entry) {
            return entry.identity == identity && entry.subFactor == subFactor;
        };
        const auto known = std::find_if(model.begin(), model.end(), isSubject);
        if (random() % 3 == 0) {
            EXPECT_EQ(this->unit_.remove(guidIdentity(identity), subFactor),
                      known == model.end() ? WINBIO_E_DATABASE_NO_SUCH_RECORD : S_OK);
            model.erase(std::remove_if(model.begin(), model.end(), isSubject), model.end());
        } else {
            const Bytes blob = {static_cast<std::uint8_t>(step),
                                static_cast<std::uint8_t>(random())};
            EXPECT_EQ(this->unit_.add(guidIdentity(identity), subFactor, blob),
                      known == model.end() ? S_OK : WINBIO_E_DUPLICATE_ENROLLMENT);
            if (known == model.end()) {
                model.push_back({identity, subFactor, blob});
            }
        }
        std::vector<Bytes> expected;
        for (const Entry& entry : model) {
            if (entry.subFactor == subFactor) {
                expected.push_back(entry.templateBlob);
            }
        }
        ASSERT_EQ(this->unit_.queryByContent(subFactor),
                  expected.empty() ? WINBIO_E_DATABASE_NO_RESULTS : S_OK);
        ASSERT_EQ(this->unit_.allTemplates(), expected) << "step " << step;
    }
}

TEST(StorageAdapterTable, HasTheSlotsOfTheFirstVersionOnly) {
    const WINBIO_STORAGE_INTERFACE& table = *storageInterface();
    EXPECT_EQ(table.Version.MajorVersion, 1);
    EXPECT_EQ(table.Version.MinorVersion, 0);
    EXPECT_EQ(table.Type, WINBIO_ADAPTER_TYPE_STORAGE);
    EXPECT_EQ(table.Size, 184U);  // 32 bytes of header and 19 slots of 8 bytes
    EXPECT_NE(table.ControlUnitPrivileged, nullptr);
    EXPECT_EQ(table.NotifyPowerChange, nullptr);
    EXPECT_EQ(table.UpdateRecordCommit, nullptr);
}

TEST(StorageAdapterTable, RoutinesWithoutPipelineGiveEPointer) {
    WINBIO_STORAGE_INTERFACE& table = *storageInterface();
    WINBIO_STORAGE_RECORD record = {};
    SIZE_T count = 0;
    WINBIO_IDENTITY identity = guidIdentity(1);
    EXPECT_EQ(table.Attach(nullptr), E_POINTER);
    EXPECT_EQ(table.Detach(nullptr), E_POINTER);
    EXPECT_EQ(table.ClearContext(nullptr), E_POINTER);
    EXPECT_EQ(table.CloseDatabase(nullptr), E_POINTER);
    EXPECT_EQ(table.FirstRecord(nullptr), E_POINTER);
    EXPECT_EQ(table.NextRecord(nullptr), E_POINTER);
    EXPECT_EQ(table.GetCurrentRecord(nullptr, &record), E_POINTER);
    EXPECT_EQ(table.GetRecordCount(nullptr, &count), E_POINTER);
    EXPECT_EQ(table.AddRecord(nullptr, &record), E_POINTER);
    EXPECT_EQ(table.DeleteRecord(nullptr, &identity, 1), E_POINTER);
    EXPECT_EQ(table.QueryBySubject(nullptr, &identity, 1), E_POINTER);
    EXPECT_EQ(table.QueryByContent(nullptr, 1, nullptr, 0), E_POINTER);
}

TEST(StorageAdapterTable, RoutinesWithoutAttachGiveInvalidDeviceState) {
    WINBIO_PIPELINE pipeline = {};
    WINBIO_STORAGE_INTERFACE& table = *storageInterface();
    EXPECT_EQ(table.FirstRecord(&pipeline), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(table.QueryByContent(&pipeline, 1, nullptr, 0), WINBIO_E_INVALID_DEVICE_STATE);
    EXPECT_EQ(table.ClearContext(&pipeline), S_OK);
    EXPECT_EQ(table.Detach(&pipeline), S_OK);
}

TEST(StorageAdapterTable, RefusesDatabasesOfOtherFactorsAndWithoutPath) {
    StorageUnit unit;
    GUID guid = {};
    constexpr WINBIO_BIOMETRIC_TYPE kFace = 2;
    const WCHAR path[] = {':', 'm', 'e', 'm', 'o', 'r', 'y', ':', 0};
    EXPECT_EQ(
        unit.routines().CreateDatabase(&unit.pipeline(), &guid, kFace, &guid, path, nullptr, 0, 0),
        WINBIO_E_UNSUPPORTED_FACTOR);
    EXPECT_EQ(unit.routines().CreateDatabase(
                  &unit.pipeline(), &guid, WINBIO_TYPE_FINGERPRINT, nullptr, path, nullptr, 0, 0),
              E_POINTER);
    EXPECT_EQ(unit.routines().OpenDatabase(&unit.pipeline(), &guid, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(unit.routines().EraseDatabase(&unit.pipeline(), &guid, nullptr, nullptr), E_POINTER);
}

TEST(StorageAdapterTable, TellsTheHostOfEveryRecordTheCursorComesTo) {
    StorageUnit unit;
    ASSERT_EQ(unit.create(":memory:"), S_OK);
    ASSERT_EQ(unit.open(":memory:"), S_OK);
    ASSERT_EQ(unit.add(guidIdentity(1), kThumb, {1}), S_OK);
    ASSERT_EQ(unit.add(guidIdentity(2), kThumb, {2}), S_OK);
    std::vector<std::pair<std::size_t, std::size_t>> seen;
    unit.context().onRecord = [&seen](std::size_t number, std::size_t size) {
        seen.emplace_back(number, size);
    };
    ASSERT_EQ(unit.queryByContent(WINBIO_SUBTYPE_ANY), S_OK);
    ASSERT_EQ(unit.next(), S_OK);
    ASSERT_EQ(unit.next(), WINBIO_E_DATABASE_NO_MORE_RECORDS);
    EXPECT_EQ(seen, (std::vector<std::pair<std::size_t, std::size_t>>{{1, 2}, {2, 2}}));
}

}  // namespace
}  // namespace orl::unit
