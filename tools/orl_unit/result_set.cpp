#include "tools/orl_unit/result_set.h"

#include <utility>

namespace orl::unit {

StoreStatus ResultSet::select(RecordStore& store, const RecordFilter& filter) {
    clear();
    StoreStatus status = store.findRecords(filter, ids_);
    if (status.ok()) {
        status = moveFirst(store);
    }
    if (!status.ok()) {
        clear();
    }
    return status;
}

StoreStatus ResultSet::moveFirst(RecordStore& store) {
    bool moved = false;
    StoreStatus status = moveTo(store, 0, moved);
    if (status.ok() && !moved) {
        clear();
    }
    return status;
}

StoreStatus ResultSet::moveNext(RecordStore& store, bool& moved) {
    return moveTo(store, position_ + 1, moved);
}

StoreStatus ResultSet::moveTo(RecordStore& store, std::size_t index, bool& moved) {
    moved = false;
    for (; index < ids_.size() && !moved; ++index) {
        StoreStatus status = store.readRecord(ids_[index], incoming_, moved);
        if (!status.ok()) {
            return status;
        }
        if (moved) {
            std::swap(current_, incoming_);
            position_ = index;
        }
    }
    return {};
}

void ResultSet::clear() {
    ids_.clear();
    position_ = 0;
    current_ = {};
    incoming_ = {};
}

}  // namespace orl::unit
