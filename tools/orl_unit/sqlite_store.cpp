#include "tools/orl_unit/sqlite_store.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/orl_unit/identity_value.h"
#include "tools/orl_unit/row_checksum.h"
#include "tools/orl_unit/sqlite_schema.h"
#include "tools/orl_unit/sqlite_status.h"

namespace orl::unit {
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// Nothing in a damaged or foreign file may run code, reach into memory or be trusted; everything
// written is on the disk before a call returns.
constexpr const char* kConnectionSettings =
    "PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0;"
    "PRAGMA foreign_keys = ON; PRAGMA secure_delete = ON; PRAGMA temp_store = MEMORY;"
    "PRAGMA synchronous = EXTRA;";

constexpr const char* kSelectRecord =
    "SELECT i.type, i.value, r.sub_factor, r.index_vector, r.template, r.payload, r.checksum "
    "FROM records r JOIN identities i ON i.id = r.identity WHERE r.id = ?1";
constexpr const char* kSelectByIdentity =
    "SELECT r.id FROM records r JOIN identities i ON i.id = r.identity "
    "WHERE i.type = ?1 AND i.value = ?2 AND (?3 IS NULL OR r.sub_factor = ?3) "
    "AND (?4 IS NULL OR r.index_vector = ?4) ORDER BY r.id";
constexpr const char* kSelectAny =
    "SELECT r.id FROM records r WHERE (?3 IS NULL OR r.sub_factor = ?3) "
    "AND (?4 IS NULL OR r.index_vector = ?4) ORDER BY r.id";

std::span<const std::uint8_t> indexBytes(std::span<const ULONG> index) {
    return {reinterpret_cast<const std::uint8_t*>(index.data()), index.size_bytes()};
}

std::int64_t recordChecksum(const IdentityValue& identity, const RecordView& record) {
    return RowChecksum()
        .addInteger(identity.type)
        .add(identity.bytes)
        .addInteger(record.subFactor)
        .add(indexBytes(record.indexVector))
        .add(record.templateBlob)
        .add(record.payload)
        .value();
}

std::int64_t identityChecksum(const IdentityValue& identity, std::string_view name) {
    return RowChecksum().addInteger(identity.type).add(identity.bytes).add(name).value();
}

// Runs one operation and turns what it throws into a status.
template <typename Operation>
StoreStatus statusOfRunning(StoreAccess access, Operation&& operation) {
    try {
        return operation();
    } catch (const SqliteError& error) {
        return statusOf(error, access);
    } catch (const ForeignDatabase& error) {
        return {StoreFault::kCannotOpen, error.what()};
    }
}

void bindFilter(SqliteStatement& statement, const RecordFilter& filter) {
    if (filter.subFactor) {
        statement.bind(3, std::int64_t{*filter.subFactor});
    }
    if (filter.indexVector) {
        statement.bind(4, indexBytes(*filter.indexVector));
    }
}

void selectRecords(const SqliteDatabase& database,
                   const RecordFilter& filter,
                   std::vector<RecordId>& ids) {
    ids.clear();
    const auto identity = filter.identity ? identityValue(*filter.identity) : std::nullopt;
    if (filter.identity && !identity) {
        return;
    }
    SqliteStatement statement(database, identity ? kSelectByIdentity : kSelectAny);
    if (identity) {
        statement.bind(1, std::int64_t{identity->type}).bind(2, std::span(identity->bytes));
    }
    bindFilter(statement, filter);
    while (statement.step()) {
        ids.push_back(statement.integer(0));
    }
}

// Makes an empty file that only its owner may read; false when there is one already.
bool createOwnFile(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kOwnerOnly);
    if (file < 0) {
        return false;
    }
    ::close(file);
    return true;
}

// The absolute path, so that no name is special to SQLite.
std::string databasePath(const std::filesystem::path& path) {
    return std::filesystem::absolute(path).string();
}

SqliteDatabase connect(const std::filesystem::path& path, const SqliteStoreOptions& options) {
    SqliteDatabase database(databasePath(path),
                            options.readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    sqlite3_busy_timeout(database.handle(), static_cast<int>(options.lockWait.count()));
    sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    database.run(kConnectionSettings);
    return database;
}

bool isUniqueViolation(const SqliteError& error) {
    return error.code() == SQLITE_CONSTRAINT_UNIQUE;
}

}  // namespace

SqliteStore::SqliteStore(SqliteDatabase database)
    : database_(std::move(database)),
      format_(readFormat(database_)),
      readStatement_(database_, kSelectRecord) {}

StoreStatus SqliteStore::create(const std::filesystem::path& path,
                                const StoreFormat& format,
                                const SqliteStoreOptions& options) {
    if (options.readOnly) {
        return {StoreFault::kReadOnly, "does not exist and may not be made"};
    }
    if (!createOwnFile(path) && errno != EEXIST) {
        return {StoreFault::kCannotOpen,
                "cannot be made: " + std::generic_category().message(errno)};
    }
    return statusOfRunning(StoreAccess::kOpening, [&]() -> StoreStatus {
        SqliteDatabase database = connect(path, options);
        if (!hasNoSchema(database) || !createSchema(database, format)) {
            return {StoreFault::kAlreadyExists, "exists already"};
        }
        return {};
    });
}

StoreStatus SqliteStore::open(const std::filesystem::path& path,
                              const SqliteStoreOptions& options,
                              std::unique_ptr<RecordStore>& store) {
    std::error_code failure;
    const auto kind = std::filesystem::status(path, failure).type();
    if (kind == std::filesystem::file_type::not_found) {
        return {StoreFault::kCannotFind, "does not exist"};
    }
    if (kind == std::filesystem::file_type::directory) {
        return {StoreFault::kCannotOpen, "is a directory"};
    }
    return statusOfRunning(StoreAccess::kOpening, [&]() -> StoreStatus {
        SqliteDatabase database = connect(path, options);
        if (hasNoSchema(database)) {
            return {StoreFault::kCannotFind, "is an empty file"};
        }
        checkSchema(database);
        store.reset(new SqliteStore(std::move(database)));
        return {};
    });
}

StoreStatus SqliteStore::findRecords(const RecordFilter& filter, std::vector<RecordId>& ids) {
    return statusOfRunning(StoreAccess::kReading, [&]() -> StoreStatus {
        selectRecords(database_, filter, ids);
        return {};
    });
}

StoreStatus SqliteStore::readRecord(RecordId id, StoredRecord& record, bool& found) {
    return statusOfRunning(StoreAccess::kReading, [&]() -> StoreStatus {
        SqliteStatement& row = readStatement_;
        const StatementRun run(row);
        found = row.bind(1, id).step();
        if (!found) {
            return {};
        }
        const auto identity = identityFromValue(static_cast<ULONG>(row.integer(0)), row.blob(1));
        const auto index = row.blob(3);
        const auto templateBlob = row.blob(4);
        const auto payload = row.blob(5);
        if (!identity || index.size() != format_.indexElementCount * sizeof(ULONG)) {
            throw SqliteError(SQLITE_CORRUPT, "a record makes no sense");
        }
        record.identity = *identity;
        record.subFactor = static_cast<std::uint8_t>(row.integer(2));
        record.indexVector.resize(format_.indexElementCount);
        std::copy(
            index.begin(), index.end(), reinterpret_cast<std::uint8_t*>(record.indexVector.data()));
        record.templateBlob.assign(templateBlob.begin(), templateBlob.end());
        record.payload.assign(payload.begin(), payload.end());
        const RecordView view{&record.identity,
                              record.subFactor,
                              record.indexVector,
                              record.templateBlob,
                              record.payload};
        if (row.integer(2) != record.subFactor ||
            recordChecksum(identityValue(*identity).value(), view) != row.integer(6)) {
            throw SqliteError(SQLITE_CORRUPT, "a record differs from its checksum");
        }
        return {};
    });
}

// The row id of the record's identity, which is added with its reserved name when it is new.
// Throws SqliteError with SQLITE_CONSTRAINT_UNIQUE when another identity has the name.
std::int64_t SqliteStore::ensureIdentity(const RecordView& record) {
    const IdentityValue identity = identityValue(*record.identity).value();
    SqliteStatement find(database_, "SELECT id FROM identities WHERE type = ?1 AND value = ?2");
    find.bind(1, std::int64_t{identity.type}).bind(2, std::span(identity.bytes));
    if (find.step()) {
        return find.integer(0);
    }
    const auto name = reservedNameOf(*record.identity);
    SqliteStatement insert(
        database_, "INSERT INTO identities (type, value, name, checksum) VALUES (?1, ?2, ?3, ?4)");
    insert.bind(1, std::int64_t{identity.type})
        .bind(2, std::span(identity.bytes))
        .bind(4, identityChecksum(identity, name.value_or("")));
    if (name) {
        insert.bind(3, std::string_view(*name));
    }
    insert.step();
    return sqlite3_last_insert_rowid(database_.handle());
}

StoreStatus SqliteStore::addRecord(const RecordView& record) {
    return statusOfRunning(StoreAccess::kWriting, [&]() -> StoreStatus {
        SqliteTransaction transaction(database_);
        StoreStatus onViolation{StoreFault::kNameTaken, "has this name for another identity"};
        try {
            const std::int64_t identityRow = ensureIdentity(record);
            onViolation = {StoreFault::kDuplicate, "has this finger of this identity already"};
            SqliteStatement insert(database_,
                                   "INSERT INTO records (identity, sub_factor, index_vector, "
                                   "template, payload, checksum) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
            insert.bind(1, identityRow)
                .bind(2, std::int64_t{record.subFactor})
                .bind(3, indexBytes(record.indexVector))
                .bind(4, record.templateBlob)
                .bind(5, record.payload)
                .bind(6, recordChecksum(identityValue(*record.identity).value(), record))
                .step();
        } catch (const SqliteError& error) {
            if (isUniqueViolation(error)) {
                return onViolation;
            }
            throw;
        }
        transaction.commit();
        return {};
    });
}

StoreStatus SqliteStore::removeRecords(const RecordFilter& filter, std::size_t& removedCount) {
    return statusOfRunning(StoreAccess::kWriting, [&]() -> StoreStatus {
        SqliteTransaction transaction(database_);
        std::vector<RecordId> ids;
        selectRecords(database_, filter, ids);
        SqliteStatement remove(database_, "DELETE FROM records WHERE id = ?1");
        for (const RecordId id : ids) {
            const StatementRun run(remove);
            remove.bind(1, id).step();
        }
        database_.run(
            "DELETE FROM identities WHERE NOT EXISTS "
            "(SELECT 1 FROM records WHERE records.identity = identities.id)");
        transaction.commit();
        removedCount = ids.size();
        return {};
    });
}

StoreStatus SqliteStore::findIdentity(std::string_view name,
                                      std::optional<WINBIO_IDENTITY>& identity) {
    return statusOfRunning(StoreAccess::kReading, [&]() -> StoreStatus {
        identity.reset();
        SqliteStatement find(database_,
                             "SELECT type, value, checksum FROM identities WHERE name = ?1");
        if (!find.bind(1, name).step()) {
            return {};
        }
        identity = identityFromValue(static_cast<ULONG>(find.integer(0)), find.blob(1));
        if (!identity || identityChecksum(*identityValue(*identity), name) != find.integer(2)) {
            throw SqliteError(SQLITE_CORRUPT, "an identity differs from its checksum");
        }
        return {};
    });
}

StoreStatus SqliteStore::findName(const WINBIO_IDENTITY& identity,
                                  std::optional<std::string>& name) {
    return statusOfRunning(StoreAccess::kReading, [&]() -> StoreStatus {
        name.reset();
        const auto value = identityValue(identity);
        SqliteStatement find(database_,
                             "SELECT name, checksum FROM identities WHERE type = ?1 AND value = ?2 "
                             "AND name IS NOT NULL");
        if (!value ||
            !find.bind(1, std::int64_t{value->type}).bind(2, std::span(value->bytes)).step()) {
            return {};
        }
        name = std::string(find.text(0));
        if (identityChecksum(*value, *name) != find.integer(1)) {
            throw SqliteError(SQLITE_CORRUPT, "an identity differs from its checksum");
        }
        return {};
    });
}

}  // namespace orl::unit
