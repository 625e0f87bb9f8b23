#pragma once

// What the adapter keeps for one biometric unit, and the entry points that only fill or read it.
//
// The service calls Attach before anything else for a unit and Detach last, and calls a unit's
// entry points one at a time; nothing here takes a lock. No entry point throws.

#include <cstddef>

#include "platform/wbf.h"

namespace orl::adapter {

// The block that a pipeline's EngineContext points to, from the process heap. It owns its three
// buffers, all from the process heap. A buffer's pointer alone tells whether it holds anything: a
// size may be out of date while its pointer is null.
struct EngineContext {
    PUCHAR PrivateSensorTypeInfo;
    SIZE_T PrivateSensorTypeInfoSize;  // bytes
    PUCHAR SampleBuffer;               // the last accepted sample, a whole WINBIO_BIR
    SIZE_T SampleSize;                 // bytes
    PUCHAR EnrollmentTemplate;         // the sample taken as template, a whole WINBIO_BIR
    SIZE_T EnrollmentTemplateSize;     // bytes
    BOOLEAN EnrollmentInProgress;
};
static_assert(offsetof(EngineContext, PrivateSensorTypeInfo) == 0);
static_assert(offsetof(EngineContext, PrivateSensorTypeInfoSize) == 8);
static_assert(offsetof(EngineContext, SampleBuffer) == 16);
static_assert(offsetof(EngineContext, SampleSize) == 24);
static_assert(offsetof(EngineContext, EnrollmentTemplate) == 32);
static_assert(offsetof(EngineContext, EnrollmentTemplateSize) == 40);
static_assert(offsetof(EngineContext, EnrollmentInProgress) == 48);

// The unit's context, or null when the pipeline is null or has none.
EngineContext* ContextOf(const WINBIO_PIPELINE* Pipeline) noexcept;

// Wipes and frees a buffer of the context and clears its pointer and size; nothing when it is null.
void DropBuffer(PUCHAR& buffer, SIZE_T& size) noexcept;

// Frees a buffer of the context and puts a copy of bytes[0..newSize) in its place. Returns S_OK, or
// E_OUTOFMEMORY with the pointer null and the size as it was.
HRESULT ReplaceBuffer(PUCHAR& buffer, SIZE_T& size, const void* bytes, SIZE_T newSize) noexcept;

// Gives the pipeline a fresh context. E_OUTOFMEMORY leaves the pipeline as it is.
HRESULT WINAPI EngineAdapterAttach(PWINBIO_PIPELINE Pipeline) noexcept;

// Wipes and frees the context with all it owns, when there is one, and shuts the matcher down. The
// next match of any unit readies the matcher again. S_OK.
HRESULT WINAPI EngineAdapterDetach(PWINBIO_PIPELINE Pipeline) noexcept;

// Drops the captured sample; an enrollment under way keeps its template. S_OK.
HRESULT WINAPI EngineAdapterClearContext(PWINBIO_PIPELINE Pipeline) noexcept;

// Keeps a copy of the sample[0..SampleSize) in place of the former one. Its contents are not looked
// at. WINBIO_E_BAD_CAPTURE, with RejectDetail WINBIO_FP_POOR_QUALITY and the former sample kept,
// when there are no bytes; E_OUTOFMEMORY leaves no sample. REQUIRES: the unit is attached.
HRESULT WINAPI EngineAdapterAcceptSampleData(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_BIR SampleBuffer,
                                             SIZE_T SampleSize,
                                             WINBIO_BIR_PURPOSE Purpose,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept;

// Hands out a copy of the captured sample, which the caller frees with HeapFree on the process
// heap. E_POINTER without both outputs, WINBIO_E_NO_CAPTURE_DATA without a sample, E_OUTOFMEMORY.
// Flags are ignored. REQUIRES: the unit is attached.
HRESULT WINAPI EngineAdapterExportEngineData(PWINBIO_PIPELINE Pipeline,
                                             WINBIO_BIR_DATA_FLAGS Flags,
                                             PUCHAR* FeatureSet,
                                             PSIZE_T FeatureSetSize) noexcept;

// Keeps a copy of what the sensor tells of its type; nothing reads it. E_POINTER without a context,
// E_INVALIDARG without bytes, E_OUTOFMEMORY.
HRESULT WINAPI EngineAdapterAcceptPrivateSensorTypeInfo(PWINBIO_PIPELINE Pipeline,
                                                        PUCHAR TypeInfoBuffer,
                                                        SIZE_T TypeInfoBufferSize) noexcept;

}  // namespace orl::adapter
