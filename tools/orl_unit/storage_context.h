#pragma once

// What the storage adapter keeps for one pipeline, in its StorageContext field: the open store, the
// result set, and what the host wants to know beside the results of the calls.

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/result_set.h"

namespace orl::unit {

struct StorageContext {
    // Set by the host before a database is opened.
    bool readOnly = false;
    std::chrono::milliseconds lockWait{5000};
    // Called when the cursor comes to a record, with its number in the set (from 1) and the set's
    // size.
    std::function<void(std::size_t, std::size_t)> onRecord;

    // The last failure of the store. The engine turns some into "not found"; the host looks here.
    StoreStatus lastFault;

    std::shared_ptr<RecordStore> store;        // the open database, or null
    std::shared_ptr<RecordStore> memoryStore;  // the database ":memory:", once created
    ResultSet results;
};

}  // namespace orl::unit
