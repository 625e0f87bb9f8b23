// A store that fails while the built engine works on it. The engine makes "unknown" or "no
// duplicate" of such a failure; the host must not.

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tests/tools/orl_unit/unit_program.h"
#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/sqlite_store.h"

namespace orl::unit {
namespace {

class UnitFaults : public testing::Test {
  protected:
    UnitFaults()
        : path_(folder_.PathOf("store.db")), unit_(tools::pathFromUtf8(ORL_ENGINE_MODULE)) {
        unit_.openStore(path_, StoreUse::kCreateIfMissing, {false, std::chrono::milliseconds(0)});
        for (const char* finger : {"101", "102", "103"}) {
            unit_.enroll(sample(finger),
                         {finger, WINBIO_ANSI_381_POS_RH_INDEX_FINGER},
                         DuplicateRule::kRefuse);
        }
    }

    static FingerRecord sample(const std::string& finger) {
        return readRecordFile(tools::pathFromUtf8(test::SampleRecord(finger + "_1")));
    }

    void runSql(const char* sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(path_.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    std::size_t listedCount() {
        std::size_t count = 0;
        unit_.listRecords([&count](const ListedRecord& /*record*/) { ++count; });
        return count;
    }

    // Has another process enrol a finger of "dora", whose identity is then guidIdentity(99), while
    // the unit looks at the third of three records; sets done when it has.
    void anotherProcessEnrollsDora(WINBIO_BIOMETRIC_SUBTYPE finger, bool& done) {
        unit_.onRecord([this, finger, &done](std::size_t /*number*/, std::size_t total) {
            if (total == 3 && !done) {
                done = true;
                const WINBIO_IDENTITY theirs = guidIdentity(99);
                std::unique_ptr<RecordStore> other;
                ASSERT_TRUE(SqliteStore::open(path_, {}, other).ok());
                const Bytes blob(100, 1);
                other->reserveName(theirs, "dora");
                ASSERT_TRUE(other->addRecord({&theirs, finger, {}, blob, {}}).ok());
            }
        });
    }

    test::ScratchFolder folder_;
    std::string path_;
    BiometricUnit unit_;
};

TEST_F(UnitFaults, ARecordDamagedDuringAnIdentificationFailsIt) {
    unit_.onRecord([this](std::size_t number, std::size_t /*total*/) {
        if (number == 2) {
            runSql("UPDATE records SET template = x'00' WHERE id = 3");
        }
    });
    try {
        unit_.identify(sample("103"));
        FAIL() << "a damaged record is no unknown finger";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.what(),
                  "store '" + path_ + "' is corrupt: a record differs from its checksum");
    }
}

TEST_F(UnitFaults, ADamagedRecordFailsTheDuplicateCheckAndNothingIsStored) {
    runSql("UPDATE records SET template = x'00' WHERE id = 2");
    EXPECT_THROW(
        unit_.enroll(
            sample("104"), {"104", WINBIO_ANSI_381_POS_RH_INDEX_FINGER}, DuplicateRule::kRefuse),
        StoreError);
    runSql("DELETE FROM records WHERE id = 2");
    EXPECT_EQ(listedCount(), 2U);
}

TEST_F(UnitFaults, AStoreLockedDuringAnIdentificationFailsIt) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &other), SQLITE_OK);
    unit_.onRecord([other](std::size_t number, std::size_t /*total*/) {
        if (number == 2) {
            EXPECT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
        }
    });
    EXPECT_THROW(unit_.identify(sample("104")), StoreError);
    sqlite3_close(other);
    unit_.onRecord(nullptr);
    EXPECT_FALSE(unit_.identify(sample("104")).subject.has_value());
}

TEST_F(UnitFaults, AnIdentificationHoldsNoLockThatKeepsOthersFromWriting) {
    bool changed = false;
    unit_.onRecord([this, &changed](std::size_t number, std::size_t /*total*/) {
        if (number == 1 && !changed) {
            changed = true;
            runSql("DELETE FROM records WHERE id = 2");
        }
    });
    const IdentifyOutcome outcome = unit_.identify(sample("103"));
    ASSERT_TRUE(outcome.subject.has_value());
    EXPECT_EQ(outcome.subject->name, "103");
}

TEST_F(UnitFaults, AFingerJoinsTheIdentityThatAnotherProcessGaveTheName) {
    bool done = false;
    anotherProcessEnrollsDora(7, done);
    ASSERT_TRUE(unit_
                    .enroll(sample("104"),
                            {"dora", WINBIO_ANSI_381_POS_RH_INDEX_FINGER},
                            DuplicateRule::kRefuse)
                    .stored);
    ASSERT_TRUE(done);
    std::size_t dorasRecords = 0;
    unit_.listRecords([&](const ListedRecord& record) {
        if (record.subject.name == "dora") {
            EXPECT_EQ(record.identity->Value.TemplateGuid.Data1, 99U);
            ++dorasRecords;
        }
    });
    EXPECT_EQ(dorasRecords, 2U);
}

TEST_F(UnitFaults, AFingerThatAnotherProcessEnrollsMeanwhileIsRefused) {
    bool done = false;
    anotherProcessEnrollsDora(WINBIO_ANSI_381_POS_RH_INDEX_FINGER, done);
    try {
        unit_.enroll(
            sample("104"), {"dora", WINBIO_ANSI_381_POS_RH_INDEX_FINGER}, DuplicateRule::kRefuse);
        FAIL() << "stored twice";
    } catch (const CommandError& error) {
        EXPECT_STREQ(error.what(), "'dora' has right-index enrolled already");
    }
}

TEST_F(UnitFaults, AStoreOfAnotherEngineIsRefused) {
    const std::string other = folder_.PathOf("other.db");
    ASSERT_TRUE(SqliteStore::create(other, {guidIdentity(5).Value.TemplateGuid, 0}, {}).ok());
    BiometricUnit unit(tools::pathFromUtf8(ORL_ENGINE_MODULE));
    try {
        unit.openStore(other, StoreUse::kMustExist, {});
        FAIL() << "opened";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.what(), "store '" + other + "' was made for another engine adapter");
    }
}

}  // namespace
}  // namespace orl::unit
