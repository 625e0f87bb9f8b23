#include "adapter/engine_context.h"

#include <cstring>

#include "adapter/engine_log.h"
#include "adapter/heap_buffer.h"
#include "adapter/matcher_bridge.h"
#include "adapter/outputs.h"

namespace orl::adapter {

EngineContext* ContextOf(const WINBIO_PIPELINE* Pipeline) noexcept {
    return Pipeline == nullptr ? nullptr : static_cast<EngineContext*>(Pipeline->EngineContext);
}

void DropBuffer(PUCHAR& buffer, SIZE_T& size) noexcept {
    if (buffer != nullptr) {
        WipeAndFree(buffer, size);
        buffer = nullptr;
        size = 0;
    }
}

HRESULT ReplaceBuffer(PUCHAR& buffer, SIZE_T& size, const void* bytes, SIZE_T newSize) noexcept {
    WipeAndFree(buffer, size);
    buffer = CopyToProcessHeap(bytes, newSize);
    if (buffer == nullptr) {
        return E_OUTOFMEMORY;
    }
    size = newSize;
    return S_OK;
}

HRESULT WINAPI EngineAdapterAttach(PWINBIO_PIPELINE Pipeline) noexcept {
    LogEntry("EngineAdapterAttach");
    void* context = AllocateZeroed(sizeof(EngineContext));
    if (context == nullptr) {
        return E_OUTOFMEMORY;
    }
    Pipeline->EngineContext = context;
    return S_OK;
}

HRESULT WINAPI EngineAdapterDetach(PWINBIO_PIPELINE Pipeline) noexcept {
    LogEntry("EngineAdapterDetach");
    EngineContext* context = ContextOf(Pipeline);
    if (context != nullptr) {
        DropBuffer(context->SampleBuffer, context->SampleSize);
        DropBuffer(context->EnrollmentTemplate, context->EnrollmentTemplateSize);
        DropBuffer(context->PrivateSensorTypeInfo, context->PrivateSensorTypeInfoSize);
        WipeAndFree(context, sizeof(*context));
    }
    Pipeline->EngineContext = nullptr;
    ShutDownMatcher();
    return S_OK;
}

HRESULT WINAPI EngineAdapterClearContext(PWINBIO_PIPELINE Pipeline) noexcept {
    LogEntry("EngineAdapterClearContext");
    EngineContext* context = ContextOf(Pipeline);
    if (context != nullptr) {
        DropBuffer(context->SampleBuffer, context->SampleSize);
    }
    return S_OK;
}

HRESULT WINAPI EngineAdapterAcceptSampleData(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_BIR SampleBuffer,
                                             SIZE_T SampleSize,
                                             WINBIO_BIR_PURPOSE Purpose,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept {
    EngineLog(kEngineLogTag,
              "EngineAdapterAcceptSampleData Purpose=0x%02X SampleSize=%zu",
              static_cast<unsigned>(Purpose),
              SampleSize);
    if (SampleBuffer == nullptr || SampleSize == 0) {
        SetOutput(RejectDetail, WINBIO_FP_POOR_QUALITY);
        return WINBIO_E_BAD_CAPTURE;
    }
    EngineContext* context = ContextOf(Pipeline);
    const HRESULT hr =
        ReplaceBuffer(context->SampleBuffer, context->SampleSize, SampleBuffer, SampleSize);
    if (FAILED(hr)) {
        return hr;
    }
    SetOutput(RejectDetail, 0);
    EngineLog(kEngineLogTag,
              "EngineAdapterAcceptSampleData: stored sample SampleSize=%zu",
              context->SampleSize);
    return S_OK;
}

HRESULT WINAPI EngineAdapterExportEngineData(PWINBIO_PIPELINE Pipeline,
                                             WINBIO_BIR_DATA_FLAGS /*Flags*/,
                                             PUCHAR* FeatureSet,
                                             PSIZE_T FeatureSetSize) noexcept {
    LogEntry("EngineAdapterExportEngineData");
    if (FeatureSet == nullptr || FeatureSetSize == nullptr) {
        return E_POINTER;
    }
    *FeatureSet = nullptr;
    *FeatureSetSize = 0;
    const EngineContext* context = ContextOf(Pipeline);
    if (context->SampleBuffer == nullptr) {
        return WINBIO_E_NO_CAPTURE_DATA;
    }
    *FeatureSet = CopyToProcessHeap(context->SampleBuffer, context->SampleSize);
    if (*FeatureSet == nullptr) {
        return E_OUTOFMEMORY;
    }
    *FeatureSetSize = context->SampleSize;
    EngineLog(kEngineLogTag, "EngineAdapterExportEngineData: OK size=%zu", context->SampleSize);
    return S_OK;
}

HRESULT WINAPI EngineAdapterAcceptPrivateSensorTypeInfo(PWINBIO_PIPELINE Pipeline,
                                                        PUCHAR TypeInfoBuffer,
                                                        SIZE_T TypeInfoBufferSize) noexcept {
    EngineLog(kEngineLogTag,
              "EngineAdapterAcceptPrivateSensorTypeInfo TypeInfoBufferSize=%zu",
              TypeInfoBufferSize);
    EngineContext* context = ContextOf(Pipeline);
    if (context == nullptr) {
        return E_POINTER;
    }
    if (TypeInfoBuffer == nullptr || TypeInfoBufferSize == 0) {
        return E_INVALIDARG;
    }
    DropBuffer(context->PrivateSensorTypeInfo, context->PrivateSensorTypeInfoSize);
    void* copy = AllocateZeroed(TypeInfoBufferSize);
    if (copy == nullptr) {
        return E_OUTOFMEMORY;
    }
    std::memcpy(copy, TypeInfoBuffer, TypeInfoBufferSize);
    context->PrivateSensorTypeInfo = static_cast<PUCHAR>(copy);
    context->PrivateSensorTypeInfoSize = TypeInfoBufferSize;
    return S_OK;
}

}  // namespace orl::adapter
