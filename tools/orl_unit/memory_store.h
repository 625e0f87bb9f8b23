#pragma once

// A record store in memory, for builds without SQLite and for trials; its records end with it.

#include <map>
#include <utility>

#include "tools/orl_unit/identity_value.h"
#include "tools/orl_unit/record_store.h"

namespace orl::unit {

class MemoryStore final : public RecordStore {
  public:
    explicit MemoryStore(const StoreFormat& format) : format_(format) {}

    [[nodiscard]] StoreFormat format() const override { return format_; }
    StoreStatus findRecords(const RecordFilter& filter, std::vector<RecordId>& ids) override;
    StoreStatus readRecord(RecordId id, StoredRecord& record, bool& found) override;
    StoreStatus addRecord(const RecordView& record) override;
    StoreStatus removeRecords(const RecordFilter& filter, std::size_t& removedCount) override;
    StoreStatus findIdentity(std::string_view name,
                             std::optional<WINBIO_IDENTITY>& identity) override;
    StoreStatus findName(const WINBIO_IDENTITY& identity,
                         std::optional<std::string>& name) override;

  private:
    using Subject = std::pair<IdentityValue, std::uint8_t>;

    void forgetNameOf(const IdentityValue& identity);

    StoreFormat format_;
    RecordId lastId_ = 0;
    std::map<RecordId, StoredRecord> records_;
    std::map<Subject, RecordId> subjects_;
    std::map<IdentityValue, std::string> names_;
    std::map<std::string, IdentityValue, std::less<>> identities_;
};

}  // namespace orl::unit
