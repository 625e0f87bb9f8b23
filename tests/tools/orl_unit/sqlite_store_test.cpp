// The store in a file: damage, locks, full disks, read-only files, and changes cut short.

#include "tools/orl_unit/sqlite_store.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <random>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/faulty_vfs.h"
#include "tests/tools/orl_unit/storage_unit.h"
#include "tools/orl_unit/identity_value.h"

namespace orl::unit {
namespace {

constexpr std::uint8_t kThumb = 1;
constexpr SqliteStoreOptions kNoWait{false, std::chrono::milliseconds(0)};

class SqliteStoreTest : public testing::Test {
  protected:
    SqliteStoreTest() : path_(folder_.PathOf("store.db")) {}

    std::unique_ptr<RecordStore> created() {
        EXPECT_TRUE(SqliteStore::create(path_, {}, kNoWait).ok());
        return opened();
    }

    std::unique_ptr<RecordStore> opened(const SqliteStoreOptions& options = kNoWait) {
        std::unique_ptr<RecordStore> store;
        const StoreStatus status = SqliteStore::open(path_, options, store);
        EXPECT_TRUE(status.ok()) << status.reason;
        return store;
    }

    StoreStatus openStatus(const SqliteStoreOptions& options = kNoWait) {
        std::unique_ptr<RecordStore> store;
        StoreStatus status = SqliteStore::open(path_, options, store);
        EXPECT_EQ(status.ok(), store != nullptr);
        return status;
    }

    void fillStore(std::uint32_t recordCount) {
        const auto store = created();
        for (std::uint32_t i = 0; i < recordCount; ++i) {
            ASSERT_TRUE(add(*store, i, Bytes(300, static_cast<std::uint8_t>(i))).ok());
        }
    }

    static StoreStatus add(RecordStore& store, std::uint32_t number, const Bytes& templateBlob) {
        const WINBIO_IDENTITY identity = guidIdentity(number);
        store.reserveName(identity, "name" + std::to_string(number));
        return store.addRecord({&identity, kThumb, {}, templateBlob, {}});
    }

    static std::size_t countOf(RecordStore& store) {
        std::vector<RecordId> ids;
        EXPECT_TRUE(store.findRecords({}, ids).ok());
        return ids.size();
    }

    // Runs SQL on the file behind the store's back.
    void runSql(const std::string& sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(path_.c_str(), &database), SQLITE_OK);
        char* reason = nullptr;
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &reason), SQLITE_OK)
            << (reason == nullptr ? "" : reason);
        sqlite3_free(reason);
        sqlite3_close(database);
    }

    void writeFile(const Bytes& bytes) const {
        std::ofstream file(path_, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

    Bytes fileBytes() const { return test::BytesOf(test::FileText(path_)); }

    test::ScratchFolder folder_;
    std::string path_;
};

TEST_F(SqliteStoreTest, ANewFileIsForItsOwnerOnly) {
    created();
    struct stat status = {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(SqliteStoreTest, KeepsItsFormat) {
    const GUID format = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    ASSERT_TRUE(SqliteStore::create(path_, {format, 3}, kNoWait).ok());
    const StoreFormat kept = opened()->format();
    EXPECT_EQ(std::memcmp(&kept.vendorFormat, &format, sizeof(GUID)), 0);
    EXPECT_EQ(kept.indexElementCount, 3U);
}

TEST_F(SqliteStoreTest, AMissingFileCannotBeFound) {
    EXPECT_EQ(openStatus().fault, StoreFault::kCannotFind);
    EXPECT_FALSE(std::filesystem::exists(path_)) << "opening must not make a file";
}

TEST_F(SqliteStoreTest, AnEmptyFileIsNoStoreYetAndBecomesOne) {
    writeFile({});
    EXPECT_EQ(openStatus().fault, StoreFault::kCannotFind);
    EXPECT_TRUE(SqliteStore::create(path_, {}, kNoWait).ok());
    EXPECT_EQ(countOf(*opened()), 0U);
}

TEST_F(SqliteStoreTest, ADirectoryCannotBeOpened) {
    path_ = std::filesystem::path(path_).parent_path().string();
    EXPECT_EQ(openStatus().fault, StoreFault::kCannotOpen);
    EXPECT_EQ(SqliteStore::create(path_, {}, kNoWait).fault, StoreFault::kCannotOpen);
}

TEST_F(SqliteStoreTest, AFileInAMissingFolderCannotBeMade) {
    path_ = folder_.PathOf("missing") + "/store.db";
    const StoreStatus status = SqliteStore::create(path_, {}, kNoWait);
    EXPECT_EQ(status.fault, StoreFault::kCannotOpen);
    EXPECT_EQ(status.reason, "cannot be made: No such file or directory");
}

TEST_F(SqliteStoreTest, AnotherProgramsDatabaseIsRefused) {
    runSql("CREATE TABLE t (x); INSERT INTO t VALUES (1)");
    const StoreStatus status = openStatus();
    EXPECT_EQ(status.fault, StoreFault::kCannotOpen);
    EXPECT_EQ(status.reason, "is a database of another program");
    EXPECT_EQ(SqliteStore::create(path_, {}, kNoWait).fault, StoreFault::kAlreadyExists);
}

TEST_F(SqliteStoreTest, ALaterLayoutIsRefused) {
    created();
    runSql("PRAGMA user_version = 2");
    const StoreStatus status = openStatus();
    EXPECT_EQ(status.fault, StoreFault::kCannotOpen);
    EXPECT_EQ(status.reason, "has layout version 2, this program reads version 1");
}

TEST_F(SqliteStoreTest, ChangedTablesAreDamage) {
    fillStore(1);
    const Bytes sound = fileBytes();
    for (const char* change : {"ALTER TABLE records ADD COLUMN extra TEXT",
                               "CREATE TABLE extra (x)",
                               "CREATE TRIGGER extra AFTER INSERT ON records BEGIN SELECT 1; END",
                               "CREATE VIEW extra AS SELECT 1",
                               "DROP TABLE settings",
                               "DELETE FROM settings",
                               "UPDATE settings SET index_elements = -1",
                               "UPDATE settings SET vendor_format = x'00'",
                               "DELETE FROM identities"}) {
        writeFile(sound);
        runSql(change);
        EXPECT_EQ(openStatus().fault, StoreFault::kCorrupt) << change;
    }
}

TEST_F(SqliteStoreTest, AChangedValueInARecordIsDamage) {
    fillStore(3);
    const Bytes sound = fileBytes();
    for (const char* change : {"UPDATE records SET template = x'00' WHERE id = 2",
                               "UPDATE records SET payload = x'00' WHERE id = 2",
                               "UPDATE records SET sub_factor = 2 WHERE id = 2",
                               "UPDATE records SET sub_factor = 257 WHERE id = 2",
                               "UPDATE records SET index_vector = x'00000000' WHERE id = 2",
                               "UPDATE records SET checksum = 1 WHERE id = 2",
                               "UPDATE records SET sub_factor = 9, identity = 1 WHERE id = 2",
                               "UPDATE identities SET value = x'00' WHERE id = 2",
                               "UPDATE identities SET type = 9 WHERE id = 2"}) {
        writeFile(sound);
        runSql(change);
        const auto store = opened();
        StoredRecord record;
        bool found = false;
        EXPECT_TRUE(store->readRecord(1, record, found).ok()) << change;
        EXPECT_EQ(store->readRecord(2, record, found).fault, StoreFault::kCorrupt) << change;
    }
}

TEST_F(SqliteStoreTest, AChangedNameIsDamage) {
    fillStore(1);
    runSql("UPDATE identities SET name = 'mallory'");
    const auto store = opened();
    std::optional<WINBIO_IDENTITY> identity;
    std::optional<std::string> name;
    EXPECT_EQ(store->findIdentity("mallory", identity).fault, StoreFault::kCorrupt);
    EXPECT_EQ(store->findName(guidIdentity(0), name).fault, StoreFault::kCorrupt);
}

TEST_F(SqliteStoreTest, RandomFilesAreCorrupt) {
    constexpr unsigned kSeed = 20240903;
    SCOPED_TRACE(testing::Message() << "seed " << kSeed);
    std::mt19937 random(kSeed);
    // SQLite takes a file of one byte for an empty one.
    for (const std::size_t size : {2U, 15U, 16U, 99U, 100U, 512U, 4096U, 40000U}) {
        Bytes bytes(size);
        std::generate(
            bytes.begin(), bytes.end(), [&random] { return static_cast<std::uint8_t>(random()); });
        writeFile(bytes);
        EXPECT_EQ(openStatus().fault, StoreFault::kCorrupt) << size << " bytes";
        EXPECT_EQ(SqliteStore::create(path_, {}, kNoWait).fault, StoreFault::kCorrupt) << size;
    }
}

// Whatever happens to the bytes of a sound store, no wrong record comes out of it: it is refused as
// a whole, or a record read from it is one that was put in.
TEST_F(SqliteStoreTest, DamagedBytesNeverGiveAWrongRecord) {
    constexpr unsigned kSeed = 20240904;
    constexpr int kRounds = 600;
    constexpr std::uint32_t kRecords = 12;
    SCOPED_TRACE(testing::Message() << "seed " << kSeed);
    std::mt19937 random(kSeed);
    fillStore(kRecords);
    const Bytes sound = fileBytes();
    int refusedCount = 0;
    for (int round = 0; round < kRounds; ++round) {
        Bytes bytes = sound;
        const unsigned changes = 1 + random() % 8;
        for (unsigned i = 0; i < changes; ++i) {
            // Half of the changes hit the file's header and the tables' roots.
            const std::size_t range = random() % 2 == 0 ? 600 : bytes.size();
            bytes[random() % range] = static_cast<std::uint8_t>(random());
        }
        if (random() % 8 == 0) {
            bytes.resize(random() % bytes.size());
        }
        writeFile(bytes);
        std::filesystem::remove(path_ + "-journal");
        std::filesystem::remove(path_ + "-wal");
        std::filesystem::remove(path_ + "-shm");
        std::unique_ptr<RecordStore> store;
        if (!SqliteStore::open(path_, kNoWait, store).ok()) {
            ++refusedCount;
            continue;
        }
        std::vector<RecordId> ids;
        store->findRecords({}, ids);
        for (const RecordId id : ids) {
            StoredRecord record;
            bool found = false;
            if (!store->readRecord(id, record, found).ok() || !found) {
                continue;
            }
            const std::uint32_t number = record.identity.Value.TemplateGuid.Data1;
            ASSERT_LT(number, kRecords) << "round " << round;
            ASSERT_TRUE(sameIdentity(record.identity, guidIdentity(number))) << "round " << round;
            ASSERT_EQ(Bytes(record.templateBlob.begin(), record.templateBlob.end()),
                      Bytes(300, static_cast<std::uint8_t>(number)))
                << "round " << round;
        }
    }
    EXPECT_GT(refusedCount, kRounds / 10);
}

TEST_F(SqliteStoreTest, AStoreInUseByAWriterIsLocked) {
    fillStore(1);
    const auto store = opened();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    StoredRecord record;
    bool found = false;
    std::vector<RecordId> ids;
    std::size_t removedCount = 0;
    EXPECT_EQ(add(*store, 5, {1}).fault, StoreFault::kLocked);
    EXPECT_EQ(store->removeRecords({}, removedCount).fault, StoreFault::kLocked);
    EXPECT_EQ(store->findRecords({}, ids).fault, StoreFault::kLocked);
    EXPECT_EQ(store->readRecord(1, record, found).fault, StoreFault::kLocked);
    EXPECT_EQ(openStatus().fault, StoreFault::kLocked);
    EXPECT_EQ(openStatus().reason, "is locked by another process");
    sqlite3_close(other);
    EXPECT_TRUE(add(*store, 5, {1}).ok());
}

TEST_F(SqliteStoreTest, TwoConnectionsSeeEachOthersRecords) {
    const auto first = created();
    const auto second = opened();
    ASSERT_TRUE(add(*first, 1, {1}).ok());
    ASSERT_TRUE(add(*second, 2, {2}).ok());
    EXPECT_EQ(countOf(*first), 2U);
    EXPECT_EQ(countOf(*second), 2U);
    EXPECT_EQ(add(*second, 1, {1}).fault, StoreFault::kDuplicate);
}

TEST_F(SqliteStoreTest, ANameTakenByAnotherConnectionIsReported) {
    const auto first = created();
    const auto second = opened();
    const WINBIO_IDENTITY mine = guidIdentity(1);
    const WINBIO_IDENTITY theirs = guidIdentity(2);
    const Bytes blob = {1};
    first->reserveName(mine, "alice");
    second->reserveName(theirs, "alice");
    ASSERT_TRUE(second->addRecord({&theirs, kThumb, {}, blob, {}}).ok());
    EXPECT_EQ(first->addRecord({&mine, kThumb, {}, blob, {}}).fault, StoreFault::kNameTaken);
}

TEST_F(SqliteStoreTest, AReadOnlyStoreReadsAndRefusesChanges) {
    fillStore(2);
    const auto store = opened({true, std::chrono::milliseconds(0)});
    std::size_t removedCount = 0;
    EXPECT_EQ(countOf(*store), 2U);
    EXPECT_EQ(add(*store, 9, {1}).fault, StoreFault::kReadOnly);
    EXPECT_EQ(store->removeRecords({}, removedCount).fault, StoreFault::kReadOnly);
    EXPECT_EQ(countOf(*store), 2U);
}

TEST_F(SqliteStoreTest, AReadOnlyStoreIsNotMade) {
    const SqliteStoreOptions readOnly{true, std::chrono::milliseconds(0)};
    EXPECT_EQ(SqliteStore::create(path_, {}, readOnly).fault, StoreFault::kReadOnly);
    EXPECT_FALSE(std::filesystem::exists(path_));
}

// The bytes of a removed template are gone from the file, not just unlinked.
TEST_F(SqliteStoreTest, RemovedRecordsAreOverwritten) {
    const auto store = created();
    const std::string secret = "the-bytes-of-a-template-that-nobody-else-has";
    ASSERT_TRUE(add(*store, 1, Bytes(secret.begin(), secret.end())).ok());
    ASSERT_TRUE(add(*store, 2, {2}).ok());
    EXPECT_NE(test::FileText(path_).find(secret), std::string::npos);
    std::size_t removedCount = 0;
    RecordFilter filter;
    filter.identity = guidIdentity(1);
    ASSERT_TRUE(store->removeRecords(filter, removedCount).ok());
    EXPECT_EQ(removedCount, 1U);
    EXPECT_EQ(test::FileText(path_).find(secret), std::string::npos);
}

// Lets the n-th writing operation of an enrollment and all later ones fail, for every n, and looks
// at the file with a sound system afterwards: the record is there whole or not at all, and it is
// there when addRecord said so.
class FailingDisk : public SqliteStoreTest, public testing::WithParamInterface<int> {};

TEST_P(FailingDisk, LeavesARecordWholeOrNotAtAll) {
    constexpr std::size_t kMoreOperationsThanAnEnrollmentHas = 200;
    const int resultCode = GetParam();
    fillStore(20);
    const Bytes sound = fileBytes();
    const Bytes added(20000, 77);  // several pages
    bool anyFailed = true;
    for (std::size_t n = 0; anyFailed; ++n) {
        ASSERT_LT(n, kMoreOperationsThanAnEnrollmentHas);
        std::filesystem::remove(path_ + "-journal");
        writeFile(sound);
        bool reported = false;
        {
            const FaultyVfs vfs(n, resultCode);
            const auto store = opened();
            const StoreStatus status = add(*store, 500, added);
            reported = status.ok();
            anyFailed = vfs.failed();
            if (!reported) {
                EXPECT_TRUE(status.fault == StoreFault::kFull ||
                            status.fault == StoreFault::kWriteFailed)
                    << status.reason;
            }
        }
        const auto store = opened();
        std::vector<RecordId> ids;
        RecordFilter filter;
        filter.identity = guidIdentity(500);
        ASSERT_TRUE(store->findRecords(filter, ids).ok()) << "operation " << n;
        EXPECT_TRUE(!reported || ids.size() == 1) << "operation " << n << ": reported, but lost";
        EXPECT_EQ(countOf(*store), 20 + ids.size()) << "operation " << n;
        if (!ids.empty()) {
            StoredRecord record;
            bool found = false;
            ASSERT_TRUE(store->readRecord(ids[0], record, found).ok()) << "operation " << n;
            EXPECT_EQ(Bytes(record.templateBlob.begin(), record.templateBlob.end()), added);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryOperation,
                         FailingDisk,
                         testing::Values(SQLITE_FULL, SQLITE_IOERR_WRITE, SQLITE_IOERR_FSYNC));

TEST_F(SqliteStoreTest, AFullDiskIsTold) {
    fillStore(1);
    const FaultyVfs vfs(0, SQLITE_FULL);
    const auto store = opened();
    const StoreStatus status = add(*store, 7, Bytes(50000, 1));
    EXPECT_EQ(status.fault, StoreFault::kFull);
    EXPECT_EQ(status.reason, "cannot grow: no space left");
    EXPECT_EQ(countOf(*store), 1U);
}

TEST_F(SqliteStoreTest, ACreationThatFailsAnywhereCanBeRepeated) {
    bool anyFailed = true;
    for (std::size_t n = 0; anyFailed; ++n) {
        ASSERT_LT(n, 100U);
        std::filesystem::remove(path_);
        std::filesystem::remove(path_ + "-journal");
        {
            const FaultyVfs vfs(n, SQLITE_FULL);
            SqliteStore::create(path_, {}, kNoWait);
            anyFailed = vfs.failed();
        }
        const StoreFault again = SqliteStore::create(path_, {}, kNoWait).fault;
        EXPECT_TRUE(again == StoreFault::kNone || again == StoreFault::kAlreadyExists) << n;
        EXPECT_EQ(countOf(*opened()), 0U) << n;
    }
}

}  // namespace
}  // namespace orl::unit
