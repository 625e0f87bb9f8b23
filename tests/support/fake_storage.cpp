#include "tests/support/fake_storage.h"

#include <algorithm>
#include <cstring>

namespace orl::test {

WINBIO_IDENTITY IdentityNumber(std::uint32_t number) {
    WINBIO_IDENTITY identity;
    std::memset(&identity, 0, sizeof(identity));
    identity.Type = WINBIO_ID_TYPE_GUID;
    identity.Value.TemplateGuid.Data1 = number;
    // Beyond the GUID the platform leaves the bytes open; they must be copied all the same.
    identity.Value.AccountSid.Data[WINBIO_SECURITY_MAX_SID_BYTES - 1] =
        static_cast<UCHAR>(number + 1);
    return identity;
}

bool SameIdentity(const WINBIO_IDENTITY& a, const WINBIO_IDENTITY& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

FakeStorage::FakeStorage(WINBIO_PIPELINE& pipeline) : interface_(MakeInterface()) {
    pipeline.StorageInterface = &interface_;
    pipeline.StorageContext = this;
}

void FakeStorage::Fail(const std::string& routine, int nth, HRESULT hr) {
    failures_[{routine, nth}] = hr;
}

FakeStorage& FakeStorage::Of(PWINBIO_PIPELINE pipeline) {
    return *static_cast<FakeStorage*>(pipeline->StorageContext);
}

WINBIO_STORAGE_INTERFACE FakeStorage::MakeInterface() {
    WINBIO_STORAGE_INTERFACE table = {};
    table.Version = {.MajorVersion = 1, .MinorVersion = 0};
    table.Type = WINBIO_ADAPTER_TYPE_STORAGE;
    table.Size = sizeof(table);
    table.AddRecord = AddRecord;
    table.QueryBySubject = QueryBySubject;
    table.QueryByContent = QueryByContent;
    table.FirstRecord = FirstRecord;
    table.NextRecord = NextRecord;
    table.GetCurrentRecord = GetCurrentRecord;
    return table;
}

std::optional<HRESULT> FakeStorage::Note(const std::string& routine, const std::string& arguments) {
    calls_.push_back(arguments.empty() ? routine : routine + " " + arguments);
    const auto failure = failures_.find({routine, ++callCounts_[routine]});
    return failure == failures_.end() ? std::nullopt : std::optional(failure->second);
}

HRESULT FakeStorage::Success(const std::string& routine) const {
    const auto success = successes_.find(routine);
    return success == successes_.end() ? S_OK : success->second;
}

HRESULT FakeStorage::StartResultSet(const std::string& routine, std::vector<std::size_t> found) {
    if (found.empty()) {
        return WINBIO_E_DATABASE_NO_RESULTS;
    }
    resultSet_ = std::move(found);
    cursor_ = 0;
    return Success(routine);
}

HRESULT WINAPI FakeStorage::AddRecord(PWINBIO_PIPELINE pipeline, PWINBIO_STORAGE_RECORD record) {
    FakeStorage& storage = Of(pipeline);
    storage.lastAdded_ = *record;
    if (const auto failure = storage.Note("AddRecord", "")) {
        return *failure;
    }
    FakeRecord added{.identity = *record->Identity,
                     .subFactor = record->SubFactor,
                     .templateBlob = std::vector<std::uint8_t>(
                         record->TemplateBlob, record->TemplateBlob + record->TemplateBlobSize)};
    if (record->PayloadBlob != nullptr) {
        added.payload.assign(record->PayloadBlob, record->PayloadBlob + record->PayloadBlobSize);
    }
    const auto isSame = [&added](const FakeRecord& other) {
        return other.identity.has_value() && SameIdentity(*other.identity, *added.identity) &&
               other.subFactor == added.subFactor;
    };
    if (std::any_of(storage.records.begin(), storage.records.end(), isSame)) {
        return WINBIO_E_DUPLICATE_ENROLLMENT;
    }
    storage.records.push_back(std::move(added));
    return storage.Success("AddRecord");
}

HRESULT WINAPI FakeStorage::QueryBySubject(PWINBIO_PIPELINE pipeline,
                                           PWINBIO_IDENTITY identity,
                                           WINBIO_BIOMETRIC_SUBTYPE subFactor) {
    FakeStorage& storage = Of(pipeline);
    storage.lastSubject_ = identity;
    if (const auto failure = storage.Note("QueryBySubject", std::to_string(subFactor))) {
        return *failure;
    }
    if (identity == nullptr) {
        return E_POINTER;
    }
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < storage.records.size(); ++i) {
        const FakeRecord& record = storage.records[i];
        const bool factorMatches = subFactor == WINBIO_SUBTYPE_ANY || record.subFactor == subFactor;
        if (factorMatches && record.identity.has_value() &&
            SameIdentity(*record.identity, *identity)) {
            found.push_back(i);
        }
    }
    return storage.StartResultSet("QueryBySubject", std::move(found));
}

HRESULT WINAPI FakeStorage::QueryByContent(PWINBIO_PIPELINE pipeline,
                                           WINBIO_BIOMETRIC_SUBTYPE subFactor,
                                           PULONG indexVector,
                                           SIZE_T indexElementCount) {
    FakeStorage& storage = Of(pipeline);
    const std::string arguments = std::to_string(subFactor) +
                                  (indexVector == nullptr ? " null " : " vector ") +
                                  std::to_string(indexElementCount);
    if (const auto failure = storage.Note("QueryByContent", arguments)) {
        return *failure;
    }
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < storage.records.size(); ++i) {
        if (subFactor == WINBIO_SUBTYPE_ANY || storage.records[i].subFactor == subFactor) {
            found.push_back(i);
        }
    }
    return storage.StartResultSet("QueryByContent", std::move(found));
}

HRESULT WINAPI FakeStorage::FirstRecord(PWINBIO_PIPELINE pipeline) {
    FakeStorage& storage = Of(pipeline);
    if (const auto failure = storage.Note("FirstRecord", "")) {
        return *failure;
    }
    storage.cursor_ = 0;
    return storage.resultSet_.empty() ? WINBIO_E_DATABASE_NO_RESULTS
                                      : storage.Success("FirstRecord");
}

HRESULT WINAPI FakeStorage::NextRecord(PWINBIO_PIPELINE pipeline) {
    FakeStorage& storage = Of(pipeline);
    if (const auto failure = storage.Note("NextRecord", "")) {
        return *failure;
    }
    if (storage.resultSet_.empty()) {
        return WINBIO_E_DATABASE_NO_RESULTS;
    }
    if (storage.cursor_ + 1 == storage.resultSet_.size()) {
        return WINBIO_E_DATABASE_NO_MORE_RECORDS;
    }
    ++storage.cursor_;
    return storage.Success("NextRecord");
}

HRESULT WINAPI FakeStorage::GetCurrentRecord(PWINBIO_PIPELINE pipeline,
                                             PWINBIO_STORAGE_RECORD record) {
    FakeStorage& storage = Of(pipeline);
    const WINBIO_STORAGE_RECORD& given = *record;
    storage.recordsCameZeroed_ = storage.recordsCameZeroed_ && given.Identity == nullptr &&
                                 given.SubFactor == 0 && given.IndexVector == nullptr &&
                                 given.IndexElementCount == 0 && given.TemplateBlob == nullptr &&
                                 given.TemplateBlobSize == 0 && given.PayloadBlob == nullptr &&
                                 given.PayloadBlobSize == 0;
    if (const auto failure = storage.Note("GetCurrentRecord", "")) {
        return *failure;
    }
    if (storage.resultSet_.empty()) {
        return WINBIO_E_DATABASE_NO_RESULTS;
    }
    FakeRecord& current = storage.records[storage.resultSet_[storage.cursor_]];
    record->Identity = current.identity.has_value() ? &*current.identity : nullptr;
    record->SubFactor = current.subFactor;
    if (current.templateBlob.has_value()) {
        record->TemplateBlob = current.templateBlob->data();
        record->TemplateBlobSize = current.templateBlob->size();
    }
    record->PayloadBlob = current.payload.empty() ? nullptr : current.payload.data();
    record->PayloadBlobSize = current.payload.size();
    return storage.Success("GetCurrentRecord");
}

}  // namespace orl::test
