#pragma once

// A record store in a SQLite file. Every change is one transaction under a rollback journal with
// full sync, so that at any kill or power loss a change is there whole or not at all, and there
// once addRecord has returned. Several processes may use one file: each waits a while for the
// others. The file is created readable by its owner only; removed records are overwritten.

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

#include "tools/orl_unit/record_store.h"
#include "tools/orl_unit/sqlite_handle.h"

namespace orl::unit {

struct SqliteStoreOptions {
    bool readOnly = false;
    // How long to wait for a lock of another process.
    std::chrono::milliseconds lockWait{5000};
};

class SqliteStore final : public RecordStore {
  public:
    // Makes an empty store: a new file, or one that is empty, such as an interrupted create leaves.
    // AlreadyExists when the file holds a store.
    static StoreStatus create(const std::filesystem::path& path,
                              const StoreFormat& format,
                              const SqliteStoreOptions& options);

    // Opens a store file and checks it for damage. CannotFind when there is no file or an empty
    // one.
    static StoreStatus open(const std::filesystem::path& path,
                            const SqliteStoreOptions& options,
                            std::unique_ptr<RecordStore>& store);

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
    explicit SqliteStore(SqliteDatabase database);

    std::int64_t ensureIdentity(const RecordView& record);

    SqliteDatabase database_;
    StoreFormat format_;
    // Prepared once: reading a record is the inner step of every walk.
    SqliteStatement readStatement_;
};

}  // namespace orl::unit
