#pragma once

// The HRESULT that a storage routine returns for a status of the record store.

#include "platform/wbf.h"
#include "tools/orl_unit/record_store.h"

namespace orl::unit {

HRESULT storageResult(StoreFault fault);

}  // namespace orl::unit
