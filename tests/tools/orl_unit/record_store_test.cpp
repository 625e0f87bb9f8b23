// What the stores offer beside the storage routines: names, and records that come and go.

#include "tools/orl_unit/record_store.h"

#include <gtest/gtest.h>

#include "tests/tools/orl_unit/storage_unit.h"
#include "tests/tools/orl_unit/store_kinds.h"
#include "tools/orl_unit/identity_value.h"

namespace orl::unit {
namespace {

template <typename Kind>
class NamesInStore : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(unit_.create(kind_.path()), S_OK);
        ASSERT_EQ(unit_.open(kind_.path()), S_OK);
    }

    RecordStore& store() { return *unit_.context().store; }

    std::optional<WINBIO_IDENTITY> identityNamed(std::string_view name) {
        std::optional<WINBIO_IDENTITY> identity;
        EXPECT_TRUE(store().findIdentity(name, identity).ok());
        return identity;
    }

    std::optional<std::string> nameOf(const WINBIO_IDENTITY& identity) {
        std::optional<std::string> name;
        EXPECT_TRUE(store().findName(identity, name).ok());
        return name;
    }

    Kind kind_;
    StorageUnit unit_;
};
TYPED_TEST_SUITE(NamesInStore, StoreKinds);

TYPED_TEST(NamesInStore, AReservedNameIsStoredWithTheFirstRecord) {
    this->store().reserveName(guidIdentity(1), "alice");
    EXPECT_FALSE(this->identityNamed("alice").has_value());
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, {1}), S_OK);
    ASSERT_TRUE(this->identityNamed("alice").has_value());
    EXPECT_TRUE(sameIdentity(*this->identityNamed("alice"), guidIdentity(1)));
    EXPECT_EQ(this->nameOf(guidIdentity(1)), "alice");
}

TYPED_TEST(NamesInStore, AReservationIsForItsIdentityOnly) {
    this->store().reserveName(guidIdentity(1), "alice");
    ASSERT_EQ(this->unit_.add(guidIdentity(2), kThumb, {1}), S_OK);
    EXPECT_EQ(this->nameOf(guidIdentity(2)), std::nullopt);
    EXPECT_FALSE(this->identityNamed("alice").has_value());
}

TYPED_TEST(NamesInStore, ANameOfAnotherIdentityIsTakenAndNothingIsStored) {
    this->store().reserveName(guidIdentity(1), "alice");
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, {1}), S_OK);
    this->store().reserveName(guidIdentity(2), "alice");
    EXPECT_EQ(this->unit_.add(guidIdentity(2), kThumb, {2}), WINBIO_E_DATABASE_WRITE_ERROR);
    EXPECT_EQ(this->unit_.context().lastFault.fault, StoreFault::kNameTaken);
    EXPECT_EQ(this->unit_.queryBySubject(guidIdentity(2), kThumb), WINBIO_E_DATABASE_NO_RESULTS);
    EXPECT_TRUE(sameIdentity(*this->identityNamed("alice"), guidIdentity(1)));
}

TYPED_TEST(NamesInStore, TheNameGoesWithTheLastRecord) {
    this->store().reserveName(guidIdentity(1), "alice");
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, {1}), S_OK);
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kIndex, {2}), S_OK);
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kThumb), S_OK);
    EXPECT_TRUE(this->identityNamed("alice").has_value());
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kIndex), S_OK);
    EXPECT_FALSE(this->identityNamed("alice").has_value());
    EXPECT_EQ(this->nameOf(guidIdentity(1)), std::nullopt);
}

TYPED_TEST(NamesInStore, NamesAreToldApartByEveryLetter) {
    std::uint32_t number = 0;
    const std::vector<std::string> names = {"alice", "Alice", "alice ", "al'ice", "\xC3\xA4lice"};
    for (const std::string& name : names) {
        this->store().reserveName(guidIdentity(++number), name);
        ASSERT_EQ(this->unit_.add(guidIdentity(number), kThumb, {1}), S_OK) << name;
    }
    number = 0;
    for (const std::string& name : names) {
        EXPECT_EQ(this->nameOf(guidIdentity(++number)), name);
        ASSERT_TRUE(this->identityNamed(name).has_value()) << name;
        EXPECT_TRUE(sameIdentity(*this->identityNamed(name), guidIdentity(number))) << name;
    }
}

TYPED_TEST(NamesInStore, AnIdentityWithoutANameHasNone) {
    ASSERT_EQ(this->unit_.add(sidIdentity(3, 12), kThumb, {1}), S_OK);
    EXPECT_EQ(this->nameOf(sidIdentity(3, 12)), std::nullopt);
    EXPECT_EQ(this->nameOf(wildcardIdentity()), std::nullopt);
    EXPECT_FALSE(this->identityNamed("").has_value());
}

TYPED_TEST(NamesInStore, ARemovedRecordIsNotFoundByItsId) {
    ASSERT_EQ(this->unit_.add(guidIdentity(1), kThumb, {1}), S_OK);
    std::vector<RecordId> ids;
    ASSERT_TRUE(this->store().findRecords({}, ids).ok());
    ASSERT_EQ(ids.size(), 1U);
    ASSERT_EQ(this->unit_.remove(guidIdentity(1), kThumb), S_OK);
    // A later record must not take the place of one that a result set still names.
    ASSERT_EQ(this->unit_.add(guidIdentity(2), kThumb, {2}), S_OK);
    StoredRecord record;
    bool found = true;
    ASSERT_TRUE(this->store().readRecord(ids[0], record, found).ok());
    EXPECT_FALSE(found);
}

}  // namespace
}  // namespace orl::unit
