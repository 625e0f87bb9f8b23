#pragma once

// Where enrolled records are kept, below the storage adapter: a set of records, unique by identity
// and sub-factor, and a name for every identity. Two implementations: SqliteStore (a file) and
// MemoryStore.
//
// Operations report a StoreStatus and throw nothing but std::bad_alloc. After a failure the store
// is as it was before the call. One thread at a time; several processes may use one file.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/wbf.h"
#include "tools/orl_unit/secret_bytes.h"

namespace orl::unit {

enum class StoreFault {
    kNone,
    kCannotFind,     // no such database
    kCannotOpen,     // not to be opened, or another program's database
    kAlreadyExists,  // a database to be created is there
    kLocked,         // another process holds it for longer than the wait
    kCorrupt,        // damaged content
    kFull,           // no space left
    kReadOnly,       // a change to a store that may only be read
    kReadFailed,
    kWriteFailed,
    kDuplicate,  // a record of this identity and sub-factor is there
    kNameTaken,  // another identity has the name
    kOutOfMemory,
};

// fault, and the reason as the end of a sentence ("the store ...").
struct StoreStatus {
    StoreFault fault = StoreFault::kNone;
    std::string reason;

    [[nodiscard]] bool ok() const { return fault == StoreFault::kNone; }
};

// What a database is made for: the engine's vendor format and the length of its index vectors.
struct StoreFormat {
    GUID vendorFormat = {};
    std::size_t indexElementCount = 0;
};

// Identifies a record for the life of the store; a later record has a larger id.
using RecordId = std::int64_t;

// A record as the caller of addRecord has it; everything is copied.
struct RecordView {
    const WINBIO_IDENTITY* identity = nullptr;
    std::uint8_t subFactor = 0;
    std::span<const ULONG> indexVector;
    std::span<const std::uint8_t> templateBlob;
    std::span<const std::uint8_t> payload;
};

struct StoredRecord {
    WINBIO_IDENTITY identity = {};
    std::uint8_t subFactor = 0;
    std::vector<ULONG> indexVector;
    SecretBytes templateBlob;
    SecretBytes payload;
};

// Selects records; a field that is not set selects all.
struct RecordFilter {
    std::optional<WINBIO_IDENTITY> identity;
    std::optional<std::uint8_t> subFactor;
    std::optional<std::vector<ULONG>> indexVector;
};

class RecordStore {
  public:
    RecordStore() = default;
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;
    virtual ~RecordStore() = default;

    // What the store was made for.
    [[nodiscard]] virtual StoreFormat format() const = 0;

    // Fills ids with the records that the filter selects, in the order in which they were added.
    virtual StoreStatus findRecords(const RecordFilter& filter, std::vector<RecordId>& ids) = 0;

    // Fills record and sets found; found is false when the record has been removed meanwhile.
    virtual StoreStatus readRecord(RecordId id, StoredRecord& record, bool& found) = 0;

    // Adds a record, durably before it returns, together with the identity's reserved name if it
    // has one. Duplicate, NameTaken, and the faults of writing. REQUIRES: an identity of type GUID
    // or SID, and an index vector of the store's length.
    virtual StoreStatus addRecord(const RecordView& record) = 0;

    // Removes the selected records, and the names of identities left without one.
    virtual StoreStatus removeRecords(const RecordFilter& filter, std::size_t& removedCount) = 0;

    // The identity of a name, and the name of an identity; nothing when the store has neither.
    virtual StoreStatus findIdentity(std::string_view name,
                                     std::optional<WINBIO_IDENTITY>& identity) = 0;
    virtual StoreStatus findName(const WINBIO_IDENTITY& identity,
                                 std::optional<std::string>& name) = 0;

    // Keeps a name for an identity that has no record yet; its first addRecord stores the name.
    // One reservation at a time; a new one replaces it.
    void reserveName(const WINBIO_IDENTITY& identity, std::string name) {
        reservedIdentity_ = identity;
        reservedName_ = std::move(name);
    }

  protected:
    // The name reserved for this identity, or nothing.
    [[nodiscard]] std::optional<std::string> reservedNameOf(const WINBIO_IDENTITY& identity) const;

  private:
    std::optional<WINBIO_IDENTITY> reservedIdentity_;
    std::string reservedName_;
};

}  // namespace orl::unit
