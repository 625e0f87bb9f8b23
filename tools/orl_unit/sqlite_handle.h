#pragma once

// Owners for a SQLite connection and its statements. Failures are thrown as SqliteError and turned
// into a StoreStatus at the border of SqliteStore; nothing else sees them.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace orl::unit {

class SqliteError : public std::runtime_error {
  public:
    SqliteError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    // SQLite's extended result code.
    [[nodiscard]] int code() const { return code_; }

  private:
    int code_;
};

// One connection; closed by the destructor.
class SqliteDatabase {
  public:
    // Opens the file with SQLite's SQLITE_OPEN_ flags. Throws SqliteError.
    SqliteDatabase(const std::string& path, int flags);

    [[nodiscard]] sqlite3* handle() const { return handle_.get(); }
    // Runs statements that return nothing of interest. Throws SqliteError.
    void run(const char* sql);
    // The first column of the first row of a statement, as integer or text. Throws SqliteError.
    std::int64_t integer(const char* sql);
    std::string text(const char* sql);
    // Throws SqliteError for a result code other than SQLITE_OK.
    void check(int code) const;

  private:
    struct Closer {
        void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    };
    std::unique_ptr<sqlite3, Closer> handle_;
};

// A prepared statement. Binding and stepping throw SqliteError. Text and blobs given to bind must
// live until reset.
class SqliteStatement {
  public:
    SqliteStatement(const SqliteDatabase& database, const char* sql);

    SqliteStatement& bind(int position, std::int64_t value);
    SqliteStatement& bind(int position, std::string_view value);
    SqliteStatement& bind(int position, std::span<const std::uint8_t> value);
    SqliteStatement& bindNull(int position);

    // True while there is a row.
    bool step();
    // Ends the run, so that the statement holds no lock, and drops what is bound.
    void reset() noexcept;

    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] std::string_view text(int column) const;
    // The bytes are SQLite's until the next step or reset.
    [[nodiscard]] std::span<const std::uint8_t> blob(int column) const;

  private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    void check(int code) const;

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// Resets a statement at the end of a scope.
class StatementRun {
  public:
    explicit StatementRun(SqliteStatement& statement) : statement_(statement) {}
    StatementRun(const StatementRun&) = delete;
    StatementRun& operator=(const StatementRun&) = delete;
    ~StatementRun() { statement_.reset(); }

  private:
    SqliteStatement& statement_;
};

// A write transaction that is undone unless committed.
class SqliteTransaction {
  public:
    explicit SqliteTransaction(SqliteDatabase& database);
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;
    ~SqliteTransaction();
    void commit();

  private:
    SqliteDatabase& database_;
    bool open_ = true;
};

}  // namespace orl::unit
