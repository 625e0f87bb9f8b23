// Any bytes as a store file: opening and reading it end with a fault that the store names, a record
// or a name that is read without a fault is one that was written, and a record added to a store
// that opens is read back or refused.
//
// Bit 0 of the first byte: the rest is the file as it is; else it is a list of changes to a sound
// store of three records, four bytes each: where (2 bytes), how, and with which value. Bit 1: the
// store is opened for reading only.

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "fuzz/input_reader.h"
#include "fuzz/require.h"
#include "tests/support/scratch_folder.h"
#include "tools/orl_unit/identity_value.h"
#include "tools/orl_unit/sqlite_store.h"

namespace {

using namespace orl::unit;
using orl::fuzz::InputReader;
using orl::fuzz::Require;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kRawFileBit = 1;
constexpr std::uint8_t kReadOnlyBit = 2;

// A record of the sound store, and the one that is added to a damaged one.
struct KnownRecord {
    ULONG identityNumber;
    const char* name;
    std::uint8_t subFactor;
    std::size_t templateBytes;  // the second one needs pages of its own
    std::size_t payloadBytes;
};
constexpr std::array<KnownRecord, 4> kKnown = {{
    {1, "ann", 1, 300, 0},
    {2, "bob", 2, 9000, 12},
    {3, "cy", 10, 33, 700},
    {4, "dora", 7, 200, 0},
}};
constexpr std::size_t kStoredRecords = 3;

WINBIO_IDENTITY IdentityOf(const KnownRecord& known) {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_GUID;
    identity.Value.TemplateGuid.Data1 = known.identityNumber;
    return identity;
}

Bytes Pattern(std::size_t size, ULONG number) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 7 + number);
    }
    return bytes;
}

StoreStatus Add(RecordStore& store, const KnownRecord& known) {
    const WINBIO_IDENTITY identity = IdentityOf(known);
    const std::vector<ULONG> index(store.format().indexElementCount, known.identityNumber);
    const Bytes templateBlob = Pattern(known.templateBytes, known.identityNumber);
    const Bytes payload = Pattern(known.payloadBytes, known.identityNumber);
    store.reserveName(identity, known.name);
    return store.addRecord({&identity, known.subFactor, index, templateBlob, payload});
}

Bytes FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

Bytes MakeSoundStore(const std::string& path) {
    constexpr std::size_t kIndexElements = 2;
    std::unique_ptr<RecordStore> store;
    Require(SqliteStore::create(path, {{}, kIndexElements}, {}).ok(), "a store is made");
    Require(SqliteStore::open(path, {}, store).ok(), "it opens");
    for (std::size_t i = 0; i < kStoredRecords; ++i) {
        Require(Add(*store, kKnown[i]).ok(), "it takes a record");
    }
    store.reset();
    return FileBytes(path);
}

void Change(Bytes& file, InputReader& input) {
    constexpr std::size_t kMostRunBytes = 64;
    const std::size_t where = (std::size_t{input.Byte()} * 256 + input.Byte()) % file.size();
    const std::size_t how = input.Below(6);
    const std::uint8_t value = input.Byte();
    const std::size_t runBytes = std::min(kMostRunBytes, file.size() - where);
    const auto at = file.begin() + static_cast<std::ptrdiff_t>(where);
    switch (how) {
        case 0:
            *at = value;
            break;
        case 1:
            *at = static_cast<std::uint8_t>(*at ^ (1U << (value % 8)));
            break;
        case 2:
            *at = static_cast<std::uint8_t>(*at + value);
            break;
        case 3:
            std::fill_n(at, runBytes, value);
            break;
        case 4: {  // as a write that went astray leaves it
            const std::size_t from = std::size_t{value} * file.size() / 256;
            const Bytes astray(file.begin() + static_cast<std::ptrdiff_t>(from), file.end());
            std::copy_n(astray.begin(), std::min(runBytes, astray.size()), at);
            break;
        }
        default:
            file.resize(where + 1);
            break;
    }
}

void RequireKnown(const StoredRecord& record) {
    for (const KnownRecord& known : kKnown) {
        if (sameIdentity(record.identity, IdentityOf(known))) {
            const Bytes blob = Pattern(known.templateBytes, known.identityNumber);
            const Bytes payload = Pattern(known.payloadBytes, known.identityNumber);
            Require(record.subFactor == known.subFactor, "a finger that was written");
            Require(std::ranges::equal(record.templateBlob, blob), "a template that was written");
            Require(std::ranges::equal(record.payload, payload), "a payload that was written");
            return;
        }
    }
    Require(false, "an identity that was written");
}

void ReadAll(RecordStore& store) {
    std::vector<RecordId> ids;
    if (!store.findRecords({}, ids).ok()) {
        return;
    }
    for (const RecordId id : ids) {
        StoredRecord record;
        bool found = false;
        if (store.readRecord(id, record, found).ok() && found) {
            RequireKnown(record);
        }
    }
}

void ReadNames(RecordStore& store) {
    for (const KnownRecord& known : kKnown) {
        std::optional<WINBIO_IDENTITY> identity;
        if (store.findIdentity(known.name, identity).ok() && identity) {
            Require(sameIdentity(*identity, IdentityOf(known)), "whose name it is");
        }
        std::optional<std::string> name;
        if (store.findName(IdentityOf(known), name).ok() && name) {
            Require(*name == known.name, "the name that was written");
        }
        std::vector<RecordId> ids;
        store.findRecords({IdentityOf(known), known.subFactor, std::nullopt}, ids);
    }
}

void AddAndReadBack(RecordStore& store, bool readOnly) {
    const KnownRecord& fresh = kKnown[kStoredRecords];
    if (!Add(store, fresh).ok()) {
        return;
    }
    Require(!readOnly, "a store for reading is not written");
    std::vector<RecordId> ids;
    if (store.findRecords({IdentityOf(fresh), fresh.subFactor, std::nullopt}, ids).ok()) {
        Require(ids.size() == 1, "an added record is found");
        StoredRecord record;
        bool found = false;
        if (store.readRecord(ids[0], record, found).ok()) {
            Require(found, "an added record is there");
            RequireKnown(record);
        }
    }
    std::size_t removed = 0;
    store.removeRecords({}, removed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const orl::test::ScratchFolder folder;
    static const std::string path = folder.PathOf("store.db");
    static const Bytes sound = MakeSoundStore(path);

    InputReader input({data, size});
    const std::uint8_t mode = input.Byte();
    Bytes file = (mode & kRawFileBit) != 0 ? input.Bytes(size) : sound;
    while (!input.AtEnd()) {
        Change(file, input);
    }
    WriteFile(path, file);

    const SqliteStoreOptions options{(mode & kReadOnlyBit) != 0, std::chrono::milliseconds(0)};
    std::unique_ptr<RecordStore> store;
    const StoreStatus status = SqliteStore::open(path, options, store);
    Require(status.ok() == (store != nullptr), "a store or a fault");
    Require(status.ok() || !status.reason.empty(), "a fault has a reason");
    if (store != nullptr) {
        ReadAll(*store);
        ReadNames(*store);
        AddAndReadBack(*store, options.readOnly);
        store.reset();
    }
    for (const char* companion : {"-journal", "-wal", "-shm"}) {
        std::filesystem::remove(path + companion);
    }
    return 0;
}
