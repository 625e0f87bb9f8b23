#pragma once

// The result set of a storage query and the cursor into it. The set holds record ids only; the
// record under the cursor is read from the store when the cursor comes to it, so a walk over any
// number of records takes one record's memory, and no lock is held between its steps. A record that
// another process has removed meanwhile is passed over.

#include <cstddef>
#include <vector>

#include "tools/orl_unit/record_store.h"

namespace orl::unit {

class ResultSet {
  public:
    // Replaces the set by the records that the filter selects, and moves to the first. After a
    // failure the set is empty.
    StoreStatus select(RecordStore& store, const RecordFilter& filter);

    // Moves to the first record; the set becomes empty when no record is left.
    StoreStatus moveFirst(RecordStore& store);

    // Moves to the next record and sets moved; at the end, and after a failure, the cursor stays.
    StoreStatus moveNext(RecordStore& store, bool& moved);

    void clear();

    [[nodiscard]] bool empty() const { return ids_.empty(); }
    [[nodiscard]] std::size_t size() const { return ids_.size(); }
    // Index of the record under the cursor. REQUIRES: not empty.
    [[nodiscard]] std::size_t position() const { return position_; }
    // The record under the cursor, unchanged until the next move. REQUIRES: not empty.
    [[nodiscard]] StoredRecord& current() { return current_; }

  private:
    // Reads the first record at or behind an index that still exists.
    StoreStatus moveTo(RecordStore& store, std::size_t index, bool& moved);

    std::vector<RecordId> ids_;
    std::size_t position_ = 0;
    StoredRecord current_;
    StoredRecord incoming_;
};

}  // namespace orl::unit
