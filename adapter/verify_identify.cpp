#include "adapter/verify_identify.h"

#include <cstddef>
#include <cstdint>

#include "adapter/bir_extraction.h"
#include "adapter/engine_context.h"
#include "adapter/engine_log.h"
#include "adapter/matcher_bridge.h"
#include "adapter/outputs.h"
#include "adapter/stored_record_walk.h"

namespace orl::adapter {
namespace {

// The outputs that both operations have and never fill.
struct UnusedOutputs {
    PUCHAR* payloadBlob;
    PSIZE_T payloadBlobSize;
    PUCHAR* hashValue;
    PSIZE_T hashSize;
    PWINBIO_REJECT_DETAIL rejectDetail;

    void Clear() const noexcept {
        SetOutput(payloadBlob, nullptr);
        SetOutput(payloadBlobSize, 0);
        SetOutput(hashValue, nullptr);
        SetOutput(hashSize, 0);
        SetOutput(rejectDetail, 0);
    }
};

struct IsoView {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// What both operations need before they turn to storage: an attached unit, a captured sample with
// an ISO record, and a storage interface, looked for in this order.
HRESULT PrepareCapture(const WINBIO_PIPELINE* Pipeline, IsoView& captured) noexcept {
    const EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    if (context->SampleBuffer == nullptr) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    const HRESULT hr =
        LogResult("ExtractISOFromBIR(captured)",
                  ExtractISOFromBIR(
                      context->SampleBuffer, context->SampleSize, &captured.data, &captured.size));
    if (FAILED(hr)) {
        return hr;
    }
    return Pipeline->StorageInterface == nullptr ? E_FAIL : S_OK;
}

// Finds the ISO record of the first record that storage has for the subject.
HRESULT FindEnrolled(PWINBIO_PIPELINE Pipeline,
                     PWINBIO_IDENTITY Identity,
                     WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                     IsoView& enrolled) noexcept {
    const WINBIO_STORAGE_INTERFACE& storage = *Pipeline->StorageInterface;
    HRESULT hr = LogResult("StorageInterface->QueryBySubject",
                           storage.QueryBySubject(Pipeline, Identity, SubFactor));
    if (FAILED(hr)) {
        return hr;
    }
    WINBIO_STORAGE_RECORD record = {};
    hr = LogResult("StorageInterface->GetCurrentRecord",
                   storage.GetCurrentRecord(Pipeline, &record));
    if (FAILED(hr)) {
        return hr;
    }
    return LogResult(
        "ExtractISOFromBIR(enrolled)",
        ExtractISOFromBIR(
            record.TemplateBlob, record.TemplateBlobSize, &enrolled.data, &enrolled.size));
}

}  // namespace

HRESULT WINAPI EngineAdapterVerifyFeatureSet(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_IDENTITY Identity,
                                             WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                             PBOOLEAN Match,
                                             PUCHAR* PayloadBlob,
                                             PSIZE_T PayloadBlobSize,
                                             PUCHAR* HashValue,
                                             PSIZE_T HashSize,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept {
    EngineLog(kEngineLogTag,
              "EngineAdapterVerifyFeatureSet SubFactor=%u",
              static_cast<unsigned>(SubFactor));
    SetOutput(Match, FALSE);
    UnusedOutputs{PayloadBlob, PayloadBlobSize, HashValue, HashSize, RejectDetail}.Clear();

    IsoView captured;
    HRESULT hr = PrepareCapture(Pipeline, captured);
    if (FAILED(hr)) {
        return hr;
    }
    IsoView enrolled;
    hr = FindEnrolled(Pipeline, Identity, SubFactor, enrolled);
    if (FAILED(hr)) {
        return hr;
    }
    const bool match =
        MatchISOTemplates(enrolled.data, enrolled.size, captured.data, captured.size);
    SetOutput(Match, static_cast<BOOLEAN>(match));
    EngineLog(kEngineLogTag, "EngineAdapterVerifyFeatureSet: Match=%s", BooleanText(match));
    return S_OK;
}

HRESULT WINAPI EngineAdapterIdentifyFeatureSet(PWINBIO_PIPELINE Pipeline,
                                               PWINBIO_IDENTITY Identity,
                                               PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                               PUCHAR* PayloadBlob,
                                               PSIZE_T PayloadBlobSize,
                                               PUCHAR* HashValue,
                                               PSIZE_T HashSize,
                                               PWINBIO_REJECT_DETAIL RejectDetail) noexcept {
    LogEntry("EngineAdapterIdentifyFeatureSet");
    ClearIdentity(Identity);
    SetOutput(SubFactor, WINBIO_SUBTYPE_NO_INFORMATION);
    UnusedOutputs{PayloadBlob, PayloadBlobSize, HashValue, HashSize, RejectDetail}.Clear();

    IsoView captured;
    const HRESULT hr = PrepareCapture(Pipeline, captured);
    if (FAILED(hr)) {
        return hr;
    }
    const StoredRecordWalk walk = WalkStoredRecords(
        Pipeline, captured.data, captured.size, "EngineAdapterIdentifyFeatureSet");
    switch (walk.end) {
        case WalkEnd::kMatch:
            CopyRecordOwner(walk.record, Identity, SubFactor);
            EngineLog(kEngineLogTag,
                      "EngineAdapterIdentifyFeatureSet: IDENTIFIED at record[%d]",
                      walk.recordsBefore);
            return S_OK;
        case WalkEnd::kNoMatch:
            EngineLog(kEngineLogTag,
                      "EngineAdapterIdentifyFeatureSet: not identified after %d records \u2014 "
                      "WINBIO_E_UNKNOWN_ID",
                      walk.recordsBefore);
            break;
        case WalkEnd::kQueryFailed:
            break;
    }
    return WINBIO_E_UNKNOWN_ID;
}

}  // namespace orl::adapter
