#include "tools/orl_unit/biometric_unit.h"

#include <cstring>
#include <utility>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/bir.h"
#include "tools/orl_unit/finger_names.h"
#include "tools/orl_unit/heap_block.h"
#include "tools/orl_unit/hresult_text.h"
#include "tools/orl_unit/storage_adapter.h"
#include "tools/orl_unit/unit_sessions.h"
#include "tools/orl_unit/utf8_text.h"

namespace orl::unit {
namespace {

// {3A5E8C14-6D2B-4F97-A0B3-7C9151E4D86A}
constexpr GUID kDatabaseId = {
    0x3A5E8C14, 0x6D2B, 0x4F97, {0xA0, 0xB3, 0x7C, 0x91, 0x51, 0xE4, 0xD8, 0x6A}};
constexpr SIZE_T kInitialDatabaseRecords = 32;

}  // namespace

BiometricUnit::BiometricUnit(const std::filesystem::path& modulePath) : module_(modulePath) {
    pipeline_.EngineInterface = &module_.engine();
    pipeline_.StorageInterface = storageInterface();
    if (FAILED(pipeline_.StorageInterface->Attach(&pipeline_))) {
        throw CommandError("the storage adapter cannot be attached: out of memory");
    }
    const HRESULT attached = engine().Attach(&pipeline_);
    if (FAILED(attached)) {
        pipeline_.StorageInterface->Detach(&pipeline_);
        throw CommandError("the engine adapter cannot be attached: " + hresultText(attached));
    }
    try {
        queryFormats();
    } catch (...) {
        detach();
        throw;
    }
}

BiometricUnit::~BiometricUnit() {
    pipeline_.StorageInterface->CloseDatabase(&pipeline_);
    detach();
}

void BiometricUnit::detach() {
    engine().Detach(&pipeline_);
    pipeline_.StorageInterface->Detach(&pipeline_);
}

void BiometricUnit::queryFormats() {
    check(engine().QueryPreferredFormat(&pipeline_, &sampleFormat_, &storeFormat_.vendorFormat),
          "QueryPreferredFormat");
    check(engine().QueryIndexVectorSize(&pipeline_, &storeFormat_.indexElementCount),
          "QueryIndexVectorSize");
}

StorageContext& BiometricUnit::storage() const {
    return storageContext(pipeline_);
}

void BiometricUnit::openStore(const std::string& path,
                              StoreUse use,
                              const StoreAccessOptions& options) {
    storeName_ = path;
    if (path.empty() || !isWellFormedUtf8(path)) {
        throw CommandError("store " + inQuotes(path) +
                           (path.empty() ? " has no name" : " has a name that is not UTF-8"));
    }
    forgetFault();
    storage().readOnly = options.readOnly;
    storage().lockWait = options.lockWait;
    const std::filesystem::path file = tools::pathFromUtf8(path);
    if (use == StoreUse::kCreateIfMissing && !options.readOnly) {
        createStore(file);
    }
    GUID databaseId = kDatabaseId;
    check(pipeline_.StorageInterface->OpenDatabase(
              &pipeline_, &databaseId, file.string<WCHAR>().c_str(), nullptr),
          "OpenDatabase");
    checkStoreFormat();
}

void BiometricUnit::createStore(const std::filesystem::path& path) {
    GUID databaseId = kDatabaseId;
    const HRESULT created =
        pipeline_.StorageInterface->CreateDatabase(&pipeline_,
                                                   &databaseId,
                                                   WINBIO_TYPE_FINGERPRINT,
                                                   &storeFormat_.vendorFormat,
                                                   path.string<WCHAR>().c_str(),
                                                   nullptr,
                                                   storeFormat_.indexElementCount,
                                                   kInitialDatabaseRecords);
    if (created != WINBIO_E_DATABASE_ALREADY_EXISTS) {
        check(created, "CreateDatabase");
    }
    forgetFault();
}

void BiometricUnit::checkStoreFormat() const {
    const StoreFormat format = store().format();
    if (std::memcmp(&format.vendorFormat, &storeFormat_.vendorFormat, sizeof(GUID)) != 0 ||
        format.indexElementCount != storeFormat_.indexElementCount) {
        throw StoreError("store " + inQuotes(storeName_) + " was made for another engine adapter");
    }
}

SecretBytes BiometricUnit::sampleOf(const FingerRecord& record,
                                    WINBIO_BIOMETRIC_SUBTYPE subFactor,
                                    WINBIO_BIR_PURPOSE purpose) const {
    return wrapRecord(record.bytes, {subFactor, purpose, record.quality, sampleFormat_});
}

void BiometricUnit::pushSample(const FingerRecord& record,
                               WINBIO_BIOMETRIC_SUBTYPE subFactor,
                               WINBIO_BIR_PURPOSE purpose) {
    SecretBytes sample = sampleOf(record, subFactor, purpose);
    WINBIO_REJECT_DETAIL rejectDetail = 0;
    const HRESULT accepted = engine().AcceptSampleData(&pipeline_,
                                                       reinterpret_cast<PWINBIO_BIR>(sample.data()),
                                                       sample.size(),
                                                       purpose,
                                                       &rejectDetail);
    if (accepted == WINBIO_E_BAD_CAPTURE) {
        throw CommandError("the engine rejects the sample (detail " + std::to_string(rejectDetail) +
                           ")");
    }
    check(accepted, "AcceptSampleData");
}

SecretBytes BiometricUnit::captureRaw(const FingerRecord& record) {
    const CaptureSession session(*this);
    pushSample(record, WINBIO_SUBTYPE_NO_INFORMATION, WINBIO_NO_PURPOSE_AVAILABLE);
    PUCHAR exported = nullptr;
    SIZE_T exportedBytes = 0;
    check(engine().ExportEngineData(&pipeline_, 0, &exported, &exportedBytes), "ExportEngineData");
    const HeapBlock block(exported, exportedBytes);
    return {block.bytes().begin(), block.bytes().end()};
}

void BiometricUnit::clearContexts() {
    engine().ClearContext(&pipeline_);
    pipeline_.StorageInterface->ClearContext(&pipeline_);
}

void BiometricUnit::failOnStoreFault() const {
    failOnStoreStatus(storage().lastFault);
}

void BiometricUnit::failOnStoreStatus(const StoreStatus& status) const {
    if (!status.ok()) {
        throw StoreError("store " + inQuotes(storeName_) + " " +
                         (status.reason.empty() ? "failed" : oneLine(status.reason)));
    }
}

void BiometricUnit::check(HRESULT result, std::string_view call) const {
    if (FAILED(result)) {
        failCall(result, call);
    }
}

void BiometricUnit::failCall(HRESULT result, std::string_view call) const {
    failOnStoreFault();
    throw CommandError(std::string(call) + " failed: " + hresultText(result));
}

}  // namespace orl::unit
