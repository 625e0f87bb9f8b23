#pragma once

// The host's storage adapter: the framework's storage routines over a RecordStore. It behaves as
// the framework's own does: one result set and one cursor for each pipeline; a query leaves the
// cursor on the first record found; what GetCurrentRecord hands out is the adapter's and stays
// valid until the next query, move of the cursor or ClearContext.
//
// FilePath names a SQLite file, or is ":memory:". A file cannot be used in a build without SQLite.
// No routine throws.

#include <string_view>

#include "platform/wbf.h"
#include "tools/orl_unit/storage_context.h"

namespace orl::unit {

// The FilePath, and --store argument, of the store in memory.
inline constexpr std::string_view kMemoryStorePath = ":memory:";

// The storage adapter's table: version 1, the slots up to ControlUnitPrivileged. Never written to.
WINBIO_STORAGE_INTERFACE* storageInterface();

// The context that Attach put into the pipeline. REQUIRES: attached.
StorageContext& storageContext(const WINBIO_PIPELINE& pipeline);

}  // namespace orl::unit
