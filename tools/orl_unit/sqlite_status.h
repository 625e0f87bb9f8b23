#pragma once

// How a failure of SQLite looks as a StoreStatus.

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/sqlite_handle.h"

namespace orl::unit {

enum class StoreAccess { kOpening, kReading, kWriting };

// The fault and, as the end of a sentence, the reason of a failure met during an access.
StoreStatus statusOf(const SqliteError& error, StoreAccess access);

}  // namespace orl::unit
