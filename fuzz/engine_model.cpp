#include "fuzz/engine_model.h"

#include <cstring>

namespace orl::fuzz {
namespace {

std::uint64_t LittleEndian32(const Bytes& bytes, std::size_t at) {
    return bytes[at] + 256ULL * bytes[at + 1] + 65536ULL * bytes[at + 2] +
           16777216ULL * bytes[at + 3];
}

// The part of a record that is compared: 24 bytes of header, 4 of the first view, 6 for each of the
// minutiae that byte 27 counts, and 2. Nothing when the record is shorter.
std::optional<Bytes> FirstView(const Bytes& record) {
    if (record.size() < 28) {
        return std::nullopt;
    }
    const std::size_t bytes = (record[27] + std::size_t{5}) * 6;
    if (bytes > record.size()) {
        return std::nullopt;
    }
    return Bytes(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes));
}

}  // namespace

bool ScriptedMemory::Gives() {
    if (!successesLeft_) {
        return true;
    }
    if (*successesLeft_ == 0) {
        successesLeft_.reset();
        return false;
    }
    --*successesLeft_;
    return true;
}

StandardData StandardDataOf(const Bytes& bir) {
    return {LittleEndian32(bir, 8), LittleEndian32(bir, 12)};
}

HRESULT RecordInBir(const Bytes& bir, SIZE_T statedBytes, Bytes& record) {
    record.clear();
    if (statedBytes < 32) {
        return E_INVALIDARG;
    }
    const auto [size, offset] = StandardDataOf(bir);
    if (size == 0 || offset == 0) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    if (size + offset > statedBytes) {
        return E_INVALIDARG;
    }
    const auto start = bir.begin() + static_cast<std::ptrdiff_t>(offset);
    record.assign(start, start + static_cast<std::ptrdiff_t>(size));
    return S_OK;
}

std::size_t EngineModel::LiveBlocks() const {
    return std::size_t{attached} + std::size_t{sample.has_value()} +
           std::size_t{pendingTemplate.has_value()} + std::size_t{typeInfo.has_value()};
}

HRESULT EngineModel::Attach() {
    attached = processHeap.Gives();
    return attached ? HRESULT{S_OK} : HRESULT{E_OUTOFMEMORY};
}

HRESULT EngineModel::Detach() {
    attached = false;
    enrolling = false;
    sample.reset();
    pendingTemplate.reset();
    typeInfo.reset();
    matcherReady = false;
    ++shutdowns;
    return S_OK;
}

HRESULT EngineModel::ClearContext() {
    sample.reset();
    return S_OK;
}

HRESULT EngineModel::AcceptSample(const std::optional<Bytes>& given,
                                  WINBIO_REJECT_DETAIL& rejectDetail) {
    if (!given || given->empty()) {
        rejectDetail = 7;
        return WINBIO_E_BAD_CAPTURE;
    }
    sample.reset();
    if (!processHeap.Gives()) {
        return E_OUTOFMEMORY;
    }
    sample = given;
    rejectDetail = 0;
    return S_OK;
}

HRESULT EngineModel::Export(Bytes& exported) {
    exported.clear();
    if (!sample) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    if (!processHeap.Gives()) {
        return E_OUTOFMEMORY;
    }
    exported = *sample;
    return S_OK;
}

HRESULT EngineModel::AcceptTypeInfo(const std::optional<Bytes>& given) {
    if (!attached) {
        return E_POINTER;
    }
    if (!given || given->empty()) {
        return E_INVALIDARG;
    }
    typeInfo.reset();
    if (!processHeap.Gives()) {
        return E_OUTOFMEMORY;
    }
    typeInfo = given;
    return S_OK;
}

HRESULT EngineModel::CapturedRecord(Bytes& record) const {
    if (!attached) {
        return E_POINTER;
    }
    if (!sample) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    const HRESULT hr = RecordInBir(*sample, sample->size(), record);
    if (SUCCEEDED(hr) && !hasStorage) {
        return E_FAIL;
    }
    return hr;
}

HRESULT EngineModel::Verify(const WINBIO_IDENTITY* identity,
                            WINBIO_BIOMETRIC_SUBTYPE subFactor,
                            bool& match) {
    match = false;
    Bytes captured;
    HRESULT hr = CapturedRecord(captured);
    if (FAILED(hr)) {
        return hr;
    }
    hr = storage.QueryBySubject(identity, subFactor);
    if (FAILED(hr)) {
        return hr;
    }
    ScriptedRecord* current = nullptr;
    hr = storage.GetCurrentRecord(current);
    if (FAILED(hr)) {
        return hr;
    }
    if (current == nullptr || !current->blob) {
        return E_INVALIDARG;
    }
    Bytes stored;
    hr = RecordInBir(*current->blob, current->statedBytes, stored);
    if (FAILED(hr)) {
        return hr;
    }
    match = Matches(stored, captured);
    return S_OK;
}

std::optional<bool> EngineModel::FindAmongStored(const Bytes& fresh,
                                                 WINBIO_IDENTITY& identity,
                                                 WINBIO_BIOMETRIC_SUBTYPE& subFactor) {
    if (FAILED(storage.QueryByContent(0xFF, nullptr, 0))) {
        return std::nullopt;
    }
    HRESULT moved = storage.FirstRecord();
    while (SUCCEEDED(moved)) {
        ScriptedRecord* current = nullptr;
        if (FAILED(storage.GetCurrentRecord(current))) {
            return false;
        }
        Bytes stored;
        if (current != nullptr && current->blob &&
            SUCCEEDED(RecordInBir(*current->blob, current->statedBytes, stored)) &&
            Matches(stored, fresh)) {
            if (current->identity) {
                identity = *current->identity;
            }
            subFactor = current->subFactor;
            return true;
        }
        moved = storage.NextRecord();
    }
    return false;
}

HRESULT EngineModel::Identify(WINBIO_IDENTITY& identity, WINBIO_BIOMETRIC_SUBTYPE& subFactor) {
    std::memset(&identity, 0, sizeof(identity));
    subFactor = 0;
    Bytes captured;
    const HRESULT hr = CapturedRecord(captured);
    if (FAILED(hr)) {
        return hr;
    }
    const bool found = FindAmongStored(captured, identity, subFactor).value_or(false);
    return found ? HRESULT{S_OK} : HRESULT{WINBIO_E_UNKNOWN_ID};
}

HRESULT EngineModel::CreateEnrollment() {
    if (!attached) {
        return E_POINTER;
    }
    pendingTemplate.reset();
    enrolling = true;
    return S_OK;
}

HRESULT EngineModel::UpdateEnrollment(WINBIO_REJECT_DETAIL& rejectDetail) {
    rejectDetail = 0;
    if (!attached) {
        return E_POINTER;
    }
    if (!enrolling) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    if (!sample) {
        rejectDetail = 7;
        return WINBIO_E_BAD_CAPTURE;
    }
    pendingTemplate.reset();
    if (!processHeap.Gives()) {
        return E_OUTOFMEMORY;
    }
    pendingTemplate = sample;
    return S_OK;
}

HRESULT EngineModel::EnrollmentStatus() const {
    if (!attached) {
        return E_POINTER;
    }
    if (!enrolling) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    return pendingTemplate ? HRESULT{S_OK} : HRESULT{WINBIO_E_BAD_CAPTURE};
}

HRESULT EngineModel::CheckForDuplicate(WINBIO_IDENTITY& identity,
                                       WINBIO_BIOMETRIC_SUBTYPE& subFactor,
                                       bool& duplicate) {
    std::memset(&identity, 0, sizeof(identity));
    subFactor = 0;
    duplicate = false;
    if (!attached) {
        return E_POINTER;
    }
    if (!pendingTemplate) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    Bytes pending;
    const HRESULT hr = RecordInBir(*pendingTemplate, pendingTemplate->size(), pending);
    if (FAILED(hr)) {
        return hr;
    }
    if (!hasStorage) {
        return E_FAIL;
    }
    duplicate = FindAmongStored(pending, identity, subFactor).value_or(false);
    return S_OK;
}

HRESULT EngineModel::Commit(WINBIO_IDENTITY* identity,
                            WINBIO_BIOMETRIC_SUBTYPE subFactor,
                            UCHAR* payload,
                            SIZE_T payloadBytes) {
    if (!attached) {
        return E_POINTER;
    }
    if (!enrolling || !pendingTemplate) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    if (!hasStorage) {
        return E_FAIL;
    }
    WINBIO_STORAGE_RECORD record = {};
    record.Identity = identity;
    record.SubFactor = subFactor;
    record.TemplateBlob = pendingTemplate->data();
    record.TemplateBlobSize = pendingTemplate->size();
    record.PayloadBlob = payload;
    record.PayloadBlobSize = payloadBytes;
    const HRESULT hr = storage.AddRecord(record);
    if (SUCCEEDED(hr)) {
        enrolling = false;
        return S_OK;
    }
    return hr;
}

HRESULT EngineModel::Discard() {
    enrolling = false;
    pendingTemplate.reset();
    return S_OK;
}

bool EngineModel::Matches(const Bytes& stored, const Bytes& fresh) {
    if (!matcherReady) {
        ++initializations;
        matcherReady = initialization == Initialization::kSucceeds;
        if (!matcherReady) {
            return false;
        }
    }
    auto storedView = FirstView(stored);
    auto freshView = FirstView(fresh);
    if (!storedView || !freshView) {
        return false;
    }
    const bool storedCopied = generalHeap.Gives();
    const bool freshCopied = generalHeap.Gives();
    if (!storedCopied || !freshCopied) {
        return false;
    }
    compared.push_back({std::move(*storedView), std::move(*freshView)});
    Comparison answer = Comparison::kNoMatch;
    if (!comparisons.empty()) {
        answer = comparisons.front();
        comparisons.pop_front();
    }
    return answer == Comparison::kMatch;
}

}  // namespace orl::fuzz
