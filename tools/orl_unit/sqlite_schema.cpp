#include "tools/orl_unit/sqlite_schema.h"

#include <array>
#include <cstring>

namespace orl::unit {
namespace {

// "ORLu" in the file's application id, at byte 68 of the file.
constexpr std::int64_t kApplicationId = 0x4F524C75;
constexpr std::int64_t kSchemaVersion = 1;
// A longer index vector makes no sense; the framework's are a few elements.
constexpr std::int64_t kMaxIndexElements = 4096;

// In the order of their names, as checkSchema reads them back.
constexpr std::array<const char*, 3> kTables = {
    "CREATE TABLE identities (id INTEGER PRIMARY KEY, type INTEGER NOT NULL, value BLOB NOT NULL, "
    "name TEXT UNIQUE, checksum INTEGER NOT NULL, UNIQUE (type, value)) STRICT",
    "CREATE TABLE records (id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "identity INTEGER NOT NULL REFERENCES identities (id), sub_factor INTEGER NOT NULL, "
    "index_vector BLOB NOT NULL, template BLOB NOT NULL, payload BLOB NOT NULL, "
    "checksum INTEGER NOT NULL, UNIQUE (identity, sub_factor)) STRICT",
    "CREATE TABLE settings (id INTEGER PRIMARY KEY CHECK (id = 1), vendor_format BLOB NOT NULL, "
    "index_elements INTEGER NOT NULL) STRICT",
};

bool hasOurTables(SqliteDatabase& database) {
    SqliteStatement statement(database,
                              "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL AND "
                              "name <> 'sqlite_sequence' ORDER BY name");
    for (const char* table : kTables) {
        if (!statement.step() || statement.text(0) != table) {
            return false;
        }
    }
    return !statement.step();
}

}  // namespace

bool hasNoSchema(SqliteDatabase& database) {
    return database.integer("SELECT count(*) FROM sqlite_schema") == 0 &&
           database.integer("PRAGMA application_id") == 0;
}

bool createSchema(SqliteDatabase& database, const StoreFormat& format) {
    SqliteTransaction transaction(database);
    if (!hasNoSchema(database)) {
        return false;
    }
    for (const char* table : kTables) {
        database.run(table);
    }
    std::array<std::uint8_t, sizeof(GUID)> formatBytes{};
    std::memcpy(formatBytes.data(), &format.vendorFormat, sizeof(GUID));
    SqliteStatement insert(database, "INSERT INTO settings VALUES (1, ?1, ?2)");
    insert.bind(1, std::span<const std::uint8_t>(formatBytes))
        .bind(2, static_cast<std::int64_t>(format.indexElementCount))
        .step();
    database.run(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
    database.run(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
    transaction.commit();
    return true;
}

void checkSchema(SqliteDatabase& database) {
    if (database.integer("PRAGMA application_id") != kApplicationId) {
        throw ForeignDatabase("is a database of another program");
    }
    const std::int64_t version = database.integer("PRAGMA user_version");
    if (version != kSchemaVersion) {
        throw ForeignDatabase("has layout version " + std::to_string(version) +
                              ", this program reads version " + std::to_string(kSchemaVersion));
    }
    if (!hasOurTables(database)) {
        throw SqliteError(SQLITE_CORRUPT, "its tables are not as they were made");
    }
    const std::string damage = database.text("PRAGMA integrity_check(1)");
    if (damage != "ok") {
        throw SqliteError(SQLITE_CORRUPT, damage);
    }
    if (SqliteStatement(database, "PRAGMA foreign_key_check").step()) {
        throw SqliteError(SQLITE_CORRUPT, "a record without identity");
    }
}

StoreFormat readFormat(SqliteDatabase& database) {
    SqliteStatement statement(database, "SELECT vendor_format, index_elements FROM settings");
    if (!statement.step()) {
        throw SqliteError(SQLITE_CORRUPT, "its settings are missing");
    }
    const auto formatBytes = statement.blob(0);
    const std::int64_t indexElements = statement.integer(1);
    if (formatBytes.size() != sizeof(GUID) || indexElements < 0 ||
        indexElements > kMaxIndexElements) {
        throw SqliteError(SQLITE_CORRUPT, "its settings make no sense");
    }
    StoreFormat format;
    std::memcpy(&format.vendorFormat, formatBytes.data(), sizeof(GUID));
    format.indexElementCount = static_cast<std::size_t>(indexElements);
    return format;
}

}  // namespace orl::unit
