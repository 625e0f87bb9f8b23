#pragma once

// The tables of a store file, and the checks that a file is one.
//
//   settings    one row: the engine's vendor format (16 bytes) and the length of index vectors
//   identities  type and value of a WINBIO_IDENTITY, and the user's name for it
//   records     one row for each enrolled finger; unique by identity and sub-factor
//
// identities and records carry a checksum of their row, since a changed byte inside a template or a
// name breaks none of SQLite's own rules.

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/sqlite_handle.h"

namespace orl::unit {

// Thrown for a file that SQLite can read and that is not a store of this program's.
class ForeignDatabase : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Makes the tables in a database that has none, in one transaction. Returns false, without a
// change, when the database has tables.
bool createSchema(SqliteDatabase& database, const StoreFormat& format);

// True for a database without any table, such as an empty file.
bool hasNoSchema(SqliteDatabase& database);

// Checks that the database has this program's tables and that SQLite finds no damage in it. Throws
// ForeignDatabase, or SqliteError with SQLITE_CORRUPT.
void checkSchema(SqliteDatabase& database);

// Reads the settings row. Throws SqliteError with SQLITE_CORRUPT when it makes no sense.
StoreFormat readFormat(SqliteDatabase& database);

}  // namespace orl::unit
