#include "tools/orl_unit/memory_store.h"

#include <utility>

namespace orl::unit {
namespace {

bool selects(const RecordFilter& filter, const StoredRecord& record) {
    return (!filter.identity || sameIdentity(*filter.identity, record.identity)) &&
           (!filter.subFactor || *filter.subFactor == record.subFactor) &&
           (!filter.indexVector || *filter.indexVector == record.indexVector);
}

}  // namespace

StoreStatus MemoryStore::findRecords(const RecordFilter& filter, std::vector<RecordId>& ids) {
    ids.clear();
    for (const auto& [id, record] : records_) {
        if (selects(filter, record)) {
            ids.push_back(id);
        }
    }
    return {};
}

StoreStatus MemoryStore::readRecord(RecordId id, StoredRecord& record, bool& found) {
    const auto entry = records_.find(id);
    found = entry != records_.end();
    if (found) {
        record = entry->second;
    }
    return {};
}

StoreStatus MemoryStore::addRecord(const RecordView& record) {
    const IdentityValue identity = identityValue(*record.identity).value();
    const Subject subject{identity, record.subFactor};
    if (subjects_.count(subject) != 0) {
        return {StoreFault::kDuplicate, "has this finger of this identity already"};
    }
    auto name = names_.count(identity) == 0 ? reservedNameOf(*record.identity) : std::nullopt;
    if (name && identities_.count(*name) != 0) {
        return {StoreFault::kNameTaken, "has this name for another identity"};
    }
    StoredRecord stored{*record.identity,
                        record.subFactor,
                        {record.indexVector.begin(), record.indexVector.end()},
                        {record.templateBlob.begin(), record.templateBlob.end()},
                        {record.payload.begin(), record.payload.end()}};
    try {
        subjects_.emplace(subject, lastId_ + 1);
        if (name) {
            names_.emplace(identity, *name);
            identities_.emplace(*name, identity);
        }
        records_.emplace(lastId_ + 1, std::move(stored));
    } catch (...) {
        subjects_.erase(subject);
        if (name) {
            names_.erase(identity);
            identities_.erase(*name);
        }
        throw;
    }
    ++lastId_;
    return {};
}

void MemoryStore::forgetNameOf(const IdentityValue& identity) {
    const auto name = names_.find(identity);
    if (name != names_.end()) {
        identities_.erase(name->second);
        names_.erase(name);
    }
}

StoreStatus MemoryStore::removeRecords(const RecordFilter& filter, std::size_t& removedCount) {
    std::vector<RecordId> ids;
    findRecords(filter, ids);
    for (const RecordId id : ids) {
        const auto entry = records_.find(id);
        const IdentityValue identity = identityValue(entry->second.identity).value();
        subjects_.erase({identity, entry->second.subFactor});
        records_.erase(entry);
        const auto next = subjects_.lower_bound({identity, 0});
        if (next == subjects_.end() || next->first.first != identity) {
            forgetNameOf(identity);
        }
    }
    removedCount = ids.size();
    return {};
}

StoreStatus MemoryStore::findIdentity(std::string_view name,
                                      std::optional<WINBIO_IDENTITY>& identity) {
    identity.reset();
    const auto entry = identities_.find(name);
    if (entry != identities_.end()) {
        identity = identityFromValue(entry->second.type, entry->second.bytes);
    }
    return {};
}

StoreStatus MemoryStore::findName(const WINBIO_IDENTITY& identity,
                                  std::optional<std::string>& name) {
    name.reset();
    const auto value = identityValue(identity);
    const auto entry = value ? names_.find(*value) : names_.end();
    if (entry != names_.end()) {
        name = entry->second;
    }
    return {};
}

}  // namespace orl::unit
