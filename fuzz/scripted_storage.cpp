#include "fuzz/scripted_storage.h"

#include <algorithm>
#include <utility>

#include "fuzz/require.h"

namespace orl::fuzz {
namespace {

// Addresses differ between a storage and its copy, so calls tell only what does not.
std::string Presence(const void* pointer) {
    return pointer == nullptr ? " null " : " given ";
}

ScriptedStorage& Of(PWINBIO_PIPELINE pipeline) {
    return *static_cast<ScriptedStorage*>(pipeline->StorageContext);
}

HRESULT WINAPI FillCurrentRecord(PWINBIO_PIPELINE pipeline, PWINBIO_STORAGE_RECORD record) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(record);
    Require(std::all_of(bytes, bytes + sizeof(*record), [](std::uint8_t b) { return b == 0; }),
            "a record to be filled comes zeroed");
    ScriptedRecord* current = nullptr;
    const HRESULT hr = Of(pipeline).GetCurrentRecord(current);
    if (current != nullptr) {
        record->Identity = current->identity ? &*current->identity : nullptr;
        record->SubFactor = current->subFactor;
        record->TemplateBlob = current->blob ? current->blob->data() : nullptr;
        record->TemplateBlobSize = current->statedBytes;
    }
    return hr;
}

WINBIO_STORAGE_INTERFACE MakeTable() {
    WINBIO_STORAGE_INTERFACE table = {};
    table.Type = WINBIO_ADAPTER_TYPE_STORAGE;
    table.Size = sizeof(table);
    table.QueryBySubject = [](PWINBIO_PIPELINE p, PWINBIO_IDENTITY id, WINBIO_BIOMETRIC_SUBTYPE s) {
        return Of(p).QueryBySubject(id, s);
    };
    table.QueryByContent = [](PWINBIO_PIPELINE p, WINBIO_BIOMETRIC_SUBTYPE s, PULONG v, SIZE_T n) {
        return Of(p).QueryByContent(s, v, n);
    };
    table.FirstRecord = [](PWINBIO_PIPELINE p) { return Of(p).FirstRecord(); };
    table.NextRecord = [](PWINBIO_PIPELINE p) { return Of(p).NextRecord(); };
    table.GetCurrentRecord = FillCurrentRecord;
    table.AddRecord = [](PWINBIO_PIPELINE p, PWINBIO_STORAGE_RECORD r) {
        return Of(p).AddRecord(*r);
    };
    return table;
}

}  // namespace

WINBIO_STORAGE_INTERFACE* ScriptedStorage::Table() {
    static WINBIO_STORAGE_INTERFACE table = MakeTable();
    return &table;
}

HRESULT ScriptedStorage::Answer(std::string call, HRESULT ordinary) {
    calls.push_back(std::move(call));
    if (answers.empty()) {
        return ordinary;
    }
    const HRESULT scripted = answers.front();
    answers.pop_front();
    return scripted;
}

HRESULT ScriptedStorage::QueryBySubject(const WINBIO_IDENTITY* identity,
                                        WINBIO_BIOMETRIC_SUBTYPE subFactor) {
    const HRESULT hr =
        Answer("QueryBySubject" + Presence(identity) + std::to_string(subFactor),
               records.empty() ? HRESULT{WINBIO_E_DATABASE_NO_RESULTS} : HRESULT{S_OK});
    if (SUCCEEDED(hr)) {
        cursor_ = 0;
    }
    return hr;
}

HRESULT ScriptedStorage::QueryByContent(WINBIO_BIOMETRIC_SUBTYPE subFactor,
                                        const ULONG* indexVector,
                                        SIZE_T indexElements) {
    const HRESULT hr =
        Answer("QueryByContent " + std::to_string(subFactor) + Presence(indexVector) +
                   std::to_string(indexElements),
               records.empty() ? HRESULT{WINBIO_E_DATABASE_NO_RESULTS} : HRESULT{S_OK});
    if (SUCCEEDED(hr)) {
        cursor_ = 0;
    }
    return hr;
}

HRESULT ScriptedStorage::FirstRecord() {
    const HRESULT hr = Answer(
        "FirstRecord", records.empty() ? HRESULT{WINBIO_E_DATABASE_NO_RESULTS} : HRESULT{S_OK});
    if (SUCCEEDED(hr)) {
        cursor_ = 0;
    }
    return hr;
}

HRESULT ScriptedStorage::NextRecord() {
    const bool atEnd = cursor_ + 1 >= records.size();
    const HRESULT hr =
        Answer("NextRecord", atEnd ? HRESULT{WINBIO_E_DATABASE_NO_MORE_RECORDS} : HRESULT{S_OK});
    if (SUCCEEDED(hr) && !atEnd) {
        ++cursor_;
    }
    return hr;
}

HRESULT ScriptedStorage::GetCurrentRecord(ScriptedRecord*& current) {
    const bool nothing = cursor_ >= records.size();
    const HRESULT hr =
        Answer("GetCurrentRecord", nothing ? HRESULT{WINBIO_E_DATABASE_NO_RESULTS} : HRESULT{S_OK});
    // A success without a record leaves the caller's structure as it came.
    current = SUCCEEDED(hr) && !nothing ? &records[cursor_] : nullptr;
    return hr;
}

HRESULT ScriptedStorage::AddRecord(const WINBIO_STORAGE_RECORD& record) {
    std::string call = "AddRecord" + Presence(record.Identity) + std::to_string(record.SubFactor) +
                       Presence(record.IndexVector) + std::to_string(record.IndexElementCount) +
                       Presence(record.PayloadBlob) + std::to_string(record.PayloadBlobSize) + " ";
    call.append(record.TemplateBlob, record.TemplateBlob + record.TemplateBlobSize);
    return Answer(std::move(call), S_OK);
}

}  // namespace orl::fuzz
