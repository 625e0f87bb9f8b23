#include "tools/orl_unit/sqlite_handle.h"

namespace orl::unit {
namespace {

void throwOnFailure(sqlite3* connection, int code) {
    if (code != SQLITE_OK) {
        throw SqliteError(code, sqlite3_errmsg(connection));
    }
}

}  // namespace

SqliteDatabase::SqliteDatabase(const std::string& path, int flags) {
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, flags | SQLITE_OPEN_EXRESCODE, nullptr);
    handle_.reset(opened);
    if (opened == nullptr) {
        throw SqliteError(SQLITE_NOMEM, sqlite3_errstr(SQLITE_NOMEM));
    }
    check(code);
}

void SqliteDatabase::check(int code) const {
    throwOnFailure(handle(), code);
}

void SqliteDatabase::run(const char* sql) {
    check(sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr));
}

std::int64_t SqliteDatabase::integer(const char* sql) {
    SqliteStatement statement(*this, sql);
    return statement.step() ? statement.integer(0) : 0;
}

std::string SqliteDatabase::text(const char* sql) {
    SqliteStatement statement(*this, sql);
    return statement.step() ? std::string(statement.text(0)) : std::string();
}

SqliteStatement::SqliteStatement(const SqliteDatabase& database, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    database.check(sqlite3_prepare_v3(
        database.handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr));
    statement_.reset(prepared);
}

void SqliteStatement::check(int code) const {
    throwOnFailure(sqlite3_db_handle(statement_.get()), code);
}

SqliteStatement& SqliteStatement::bind(int position, std::int64_t value) {
    check(sqlite3_bind_int64(statement_.get(), position, value));
    return *this;
}

SqliteStatement& SqliteStatement::bind(int position, std::string_view value) {
    check(sqlite3_bind_text64(
        statement_.get(), position, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

SqliteStatement& SqliteStatement::bind(int position, std::span<const std::uint8_t> value) {
    // A null pointer would bind NULL where an empty blob is meant.
    const void* bytes = value.empty() ? "" : static_cast<const void*>(value.data());
    check(sqlite3_bind_blob64(statement_.get(), position, bytes, value.size(), SQLITE_STATIC));
    return *this;
}

SqliteStatement& SqliteStatement::bindNull(int position) {
    check(sqlite3_bind_null(statement_.get(), position));
    return *this;
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) {
        return true;
    }
    check(code == SQLITE_DONE ? SQLITE_OK : code);
    return false;
}

void SqliteStatement::reset() noexcept {
    sqlite3_reset(statement_.get());
    sqlite3_clear_bindings(statement_.get());
}

std::int64_t SqliteStatement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

std::string_view SqliteStatement::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return text == nullptr ? std::string_view()
                           : std::string_view(text, static_cast<std::size_t>(size));
}

std::span<const std::uint8_t> SqliteStatement::blob(int column) const {
    const void* bytes = sqlite3_column_blob(statement_.get(), column);
    const int size = sqlite3_column_bytes(statement_.get(), column);
    return {static_cast<const std::uint8_t*>(bytes),
            bytes == nullptr ? 0 : static_cast<std::size_t>(size)};
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& database) : database_(database) {
    database_.run("BEGIN IMMEDIATE");
}

SqliteTransaction::~SqliteTransaction() {
    if (open_) {
        // A failure here leaves nothing to do: SQLite has then rolled back by itself.
        sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void SqliteTransaction::commit() {
    database_.run("COMMIT");
    open_ = false;
}

}  // namespace orl::unit
