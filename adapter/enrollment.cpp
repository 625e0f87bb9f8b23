#include "adapter/enrollment.h"

#include <cstddef>
#include <cstdint>

#include "adapter/bir_extraction.h"
#include "adapter/engine_context.h"
#include "adapter/engine_log.h"
#include "adapter/outputs.h"
#include "adapter/stored_record_walk.h"

namespace orl::adapter {
namespace {

bool IsInProgress(const EngineContext& context) noexcept {
    return context.EnrollmentInProgress != FALSE;
}

bool HasTemplate(const EngineContext& context) noexcept {
    return context.EnrollmentTemplate != nullptr;
}

void DropTemplate(EngineContext& context) noexcept {
    DropBuffer(context.EnrollmentTemplate, context.EnrollmentTemplateSize);
}

HRESULT EnrollmentStatus(const EngineContext& context) noexcept {
    if (!IsInProgress(context)) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    return HasTemplate(context) ? S_OK : WINBIO_E_BAD_CAPTURE;
}

}  // namespace

HRESULT WINAPI EngineAdapterCreateEnrollment(PWINBIO_PIPELINE Pipeline) noexcept {
    LogEntry("EngineAdapterCreateEnrollment");
    EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    DropTemplate(*context);
    context->EnrollmentInProgress = TRUE;
    return S_OK;
}

HRESULT WINAPI EngineAdapterUpdateEnrollment(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept {
    LogEntry("EngineAdapterUpdateEnrollment");
    SetOutput(RejectDetail, 0);
    EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    if (!IsInProgress(*context)) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    if (context->SampleBuffer == nullptr) {
        SetOutput(RejectDetail, WINBIO_FP_POOR_QUALITY);
        return WINBIO_E_BAD_CAPTURE;
    }
    const HRESULT hr = ReplaceBuffer(context->EnrollmentTemplate,
                                     context->EnrollmentTemplateSize,
                                     context->SampleBuffer,
                                     context->SampleSize);
    if (FAILED(hr)) {
        return hr;
    }
    EngineLog(kEngineLogTag,
              "EngineAdapterUpdateEnrollment: template stored size=%zu",
              context->EnrollmentTemplateSize);
    return S_OK;
}

HRESULT WINAPI EngineAdapterGetEnrollmentStatus(PWINBIO_PIPELINE Pipeline,
                                                PWINBIO_REJECT_DETAIL RejectDetail) noexcept {
    LogEntry("EngineAdapterGetEnrollmentStatus");
    SetOutput(RejectDetail, 0);
    const EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    EngineLog(kEngineLogTag,
              "EngineAdapterGetEnrollmentStatus: InProgress=%d HasTemplate=%d",
              IsInProgress(*context) ? 1 : 0,
              HasTemplate(*context) ? 1 : 0);
    return LogResult("EngineAdapterGetEnrollmentStatus", EnrollmentStatus(*context));
}

HRESULT WINAPI EngineAdapterCheckForDuplicate(PWINBIO_PIPELINE Pipeline,
                                              PWINBIO_IDENTITY Identity,
                                              PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                              PBOOLEAN Duplicate) noexcept {
    LogEntry("EngineAdapterCheckForDuplicate");
    ClearIdentity(Identity);
    SetOutput(SubFactor, WINBIO_SUBTYPE_NO_INFORMATION);
    SetOutput(Duplicate, FALSE);

    const EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    if (!HasTemplate(*context) || context->EnrollmentTemplateSize == 0) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    const std::uint8_t* pendingIso = nullptr;
    std::size_t pendingIsoSize = 0;
    const HRESULT hr = LogResult("ExtractISOFromBIR(pending)",
                                 ExtractISOFromBIR(context->EnrollmentTemplate,
                                                   context->EnrollmentTemplateSize,
                                                   &pendingIso,
                                                   &pendingIsoSize));
    if (FAILED(hr)) {
        return hr;
    }
    if (Pipeline->StorageInterface == nullptr) {
        return E_FAIL;
    }
    const StoredRecordWalk walk =
        WalkStoredRecords(Pipeline, pendingIso, pendingIsoSize, "EngineAdapterCheckForDuplicate");
    switch (walk.end) {
        case WalkEnd::kMatch:
            CopyRecordOwner(walk.record, Identity, SubFactor);
            SetOutput(Duplicate, TRUE);
            EngineLog(kEngineLogTag,
                      "EngineAdapterCheckForDuplicate: DUPLICATE found at record[%d]",
                      walk.recordsBefore);
            break;
        case WalkEnd::kNoMatch:
            EngineLog(kEngineLogTag,
                      "EngineAdapterCheckForDuplicate: no duplicate found after %d records",
                      walk.recordsBefore);
            break;
        case WalkEnd::kQueryFailed:
            break;
    }
    return S_OK;
}

HRESULT WINAPI EngineAdapterCommitEnrollment(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_IDENTITY Identity,
                                             WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                             PUCHAR PayloadBlob,
                                             SIZE_T PayloadBlobSize) noexcept {
    EngineLog(kEngineLogTag,
              "EngineAdapterCommitEnrollment SubFactor=%u",
              static_cast<unsigned>(SubFactor));
    EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    if (!IsInProgress(*context) || !HasTemplate(*context)) {
        return WINBIO_E_INVALID_DEVICE_STATE;
    }
    if (Pipeline->StorageInterface == nullptr) {
        return E_FAIL;
    }
    WINBIO_STORAGE_RECORD record = {};
    record.Identity = Identity;
    record.SubFactor = SubFactor;
    record.TemplateBlob = context->EnrollmentTemplate;
    record.TemplateBlobSize = context->EnrollmentTemplateSize;
    record.PayloadBlob = PayloadBlob;
    record.PayloadBlobSize = PayloadBlobSize;
    const HRESULT hr = LogResult("StorageInterface->AddRecord",
                                 Pipeline->StorageInterface->AddRecord(Pipeline, &record));
    if (FAILED(hr)) {
        return hr;
    }
    context->EnrollmentInProgress = FALSE;
    return S_OK;
}

HRESULT WINAPI EngineAdapterDiscardEnrollment(PWINBIO_PIPELINE Pipeline) noexcept {
    LogEntry("EngineAdapterDiscardEnrollment");
    EngineContext* context = ContextOf(Pipeline);
    if (context != nullptr) {
        context->EnrollmentInProgress = FALSE;
        DropTemplate(*context);
    }
    return S_OK;
}

}  // namespace orl::adapter
