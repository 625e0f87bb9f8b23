#include "tests/tools/orl_unit/storage_unit.h"

#include <filesystem>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::unit {
namespace {

constexpr GUID kFormat = {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}};

std::basic_string<WCHAR> wide(const std::string& path) {
    return tools::pathFromUtf8(path).string<WCHAR>();
}

}  // namespace

WINBIO_IDENTITY guidIdentity(std::uint32_t number) {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_GUID;
    identity.Value.TemplateGuid = {number, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
    return identity;
}

WINBIO_IDENTITY sidIdentity(std::uint8_t number, std::uint32_t byteCount) {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_SID;
    identity.Value.AccountSid.Size = byteCount;
    identity.Value.AccountSid.Data[0] = number;
    return identity;
}

WINBIO_IDENTITY wildcardIdentity() {
    WINBIO_IDENTITY identity = {};
    identity.Type = WINBIO_ID_TYPE_WILDCARD;
    identity.Value.Wildcard = WINBIO_IDENTITY_WILDCARD;
    return identity;
}

StorageUnit::StorageUnit() {
    pipeline_.StorageInterface = storageInterface();
    routines().Attach(&pipeline_);
}

StorageUnit::~StorageUnit() {
    routines().Detach(&pipeline_);
}

HRESULT StorageUnit::create(const std::string& path, std::size_t indexElementCount) {
    GUID id = {};
    GUID format = kFormat;
    return routines().CreateDatabase(&pipeline_,
                                     &id,
                                     WINBIO_TYPE_FINGERPRINT,
                                     &format,
                                     wide(path).c_str(),
                                     nullptr,
                                     indexElementCount,
                                     0);
}

HRESULT StorageUnit::open(const std::string& path) {
    GUID id = {};
    return routines().OpenDatabase(&pipeline_, &id, wide(path).c_str(), nullptr);
}

HRESULT StorageUnit::close() {
    return routines().CloseDatabase(&pipeline_);
}

HRESULT StorageUnit::erase(const std::string& path) {
    GUID id = {};
    return routines().EraseDatabase(&pipeline_, &id, wide(path).c_str(), nullptr);
}

HRESULT StorageUnit::add(WINBIO_IDENTITY identity,
                         std::uint8_t subFactor,
                         Bytes templateBlob,
                         Bytes payload,
                         std::vector<ULONG> index) {
    WINBIO_STORAGE_RECORD record = {};
    record.Identity = &identity;
    record.SubFactor = subFactor;
    record.IndexVector = index.empty() ? nullptr : index.data();
    record.IndexElementCount = index.size();
    record.TemplateBlob = templateBlob.empty() ? nullptr : templateBlob.data();
    record.TemplateBlobSize = templateBlob.size();
    record.PayloadBlob = payload.empty() ? nullptr : payload.data();
    record.PayloadBlobSize = payload.size();
    return routines().AddRecord(&pipeline_, &record);
}

HRESULT StorageUnit::queryBySubject(WINBIO_IDENTITY identity, std::uint8_t subFactor) {
    return routines().QueryBySubject(&pipeline_, &identity, subFactor);
}

HRESULT StorageUnit::queryByContent(std::uint8_t subFactor, std::vector<ULONG> index) {
    return routines().QueryByContent(
        &pipeline_, subFactor, index.empty() ? nullptr : index.data(), index.size());
}

HRESULT StorageUnit::remove(WINBIO_IDENTITY identity, std::uint8_t subFactor) {
    return routines().DeleteRecord(&pipeline_, &identity, subFactor);
}

HRESULT StorageUnit::first() {
    return routines().FirstRecord(&pipeline_);
}

HRESULT StorageUnit::next() {
    return routines().NextRecord(&pipeline_);
}

HRESULT StorageUnit::current(WINBIO_STORAGE_RECORD& record) {
    return routines().GetCurrentRecord(&pipeline_, &record);
}

HRESULT StorageUnit::count(SIZE_T& recordCount) {
    return routines().GetRecordCount(&pipeline_, &recordCount);
}

HRESULT StorageUnit::clear() {
    return routines().ClearContext(&pipeline_);
}

Bytes StorageUnit::currentTemplate() {
    WINBIO_STORAGE_RECORD record = {};
    if (FAILED(current(record))) {
        return {};
    }
    return {record.TemplateBlob, record.TemplateBlob + record.TemplateBlobSize};
}

std::vector<Bytes> StorageUnit::allTemplates() {
    std::vector<Bytes> templates;
    for (HRESULT moved = first(); SUCCEEDED(moved); moved = next()) {
        templates.push_back(currentTemplate());
    }
    return templates;
}

StorageContext& StorageUnit::context() {
    return storageContext(pipeline_);
}

}  // namespace orl::unit
