#include "adapter/interface_table.h"

#include "adapter/engine_context.h"
#include "adapter/engine_log.h"
#include "adapter/enrollment.h"
#include "adapter/outputs.h"
#include "adapter/verify_identify.h"

namespace orl::adapter {
namespace {

// {6D1F3A92-5B7C-4E08-9A41-2C7E5B90D3F6}: the adapter, and the format of its templates.
constexpr GUID kAdapterId = {
    0x6D1F3A92, 0x5B7C, 0x4E08, {0x9A, 0x41, 0x2C, 0x7E, 0x5B, 0x90, 0xD3, 0xF6}};

constexpr SIZE_T kIndexElements = 0;       // records are not indexed
constexpr SIZE_T kSamplesPerTemplate = 1;  // one capture completes an enrollment

HRESULT WINAPI EngineAdapterQueryPreferredFormat(PWINBIO_PIPELINE /*Pipeline*/,
                                                 PWINBIO_REGISTERED_FORMAT StandardFormat,
                                                 PGUID VendorFormat) noexcept {
    LogEntry("EngineAdapterQueryPreferredFormat");
    if (StandardFormat == nullptr || VendorFormat == nullptr) {
        return E_POINTER;
    }
    // Deliberate: this names an image format, although samples hold minutiae records.
    *StandardFormat = {.Owner = WINBIO_ANSI_381_FORMAT_OWNER, .Type = WINBIO_ANSI_381_FORMAT_TYPE};
    *VendorFormat = kAdapterId;
    return S_OK;
}

HRESULT WINAPI EngineAdapterQueryIndexVectorSize(PWINBIO_PIPELINE /*Pipeline*/,
                                                 PSIZE_T IndexElementCount) noexcept {
    if (IndexElementCount == nullptr) {
        return E_POINTER;
    }
    *IndexElementCount = kIndexElements;
    return S_OK;
}

HRESULT WINAPI EngineAdapterQueryHashAlgorithms(PWINBIO_PIPELINE /*Pipeline*/,
                                                PSIZE_T /*AlgorithmCount*/,
                                                PSIZE_T /*AlgorithmBufferSize*/,
                                                PUCHAR* /*AlgorithmBuffer*/) noexcept {
    LogEntry("EngineAdapterQueryHashAlgorithms");
    return E_NOTIMPL;
}

HRESULT WINAPI EngineAdapterSetHashAlgorithm(PWINBIO_PIPELINE /*Pipeline*/,
                                             SIZE_T /*AlgorithmBufferSize*/,
                                             PUCHAR /*AlgorithmBuffer*/) noexcept {
    LogEntry("EngineAdapterSetHashAlgorithm");
    return E_NOTIMPL;
}

HRESULT WINAPI EngineAdapterQuerySampleHint(PWINBIO_PIPELINE /*Pipeline*/,
                                            PSIZE_T SampleHint) noexcept {
    if (SampleHint == nullptr) {
        return E_POINTER;
    }
    *SampleHint = kSamplesPerTemplate;
    return S_OK;
}

HRESULT WINAPI EngineAdapterGetEnrollmentHash(PWINBIO_PIPELINE /*Pipeline*/,
                                              PUCHAR* HashValue,
                                              PSIZE_T HashSize) noexcept {
    LogEntry("EngineAdapterGetEnrollmentHash");
    SetOutput(HashValue, nullptr);
    SetOutput(HashSize, 0);
    return E_NOTIMPL;
}

HRESULT WINAPI EngineAdapterControlUnit(PWINBIO_PIPELINE /*Pipeline*/,
                                        ULONG /*ControlCode*/,
                                        PUCHAR /*SendBuffer*/,
                                        SIZE_T /*SendBufferSize*/,
                                        PUCHAR /*ReceiveBuffer*/,
                                        SIZE_T /*ReceiveBufferSize*/,
                                        PSIZE_T ReceiveDataSize,
                                        PULONG OperationStatus) noexcept {
    LogEntry("EngineAdapterControlUnit");
    SetOutput(ReceiveDataSize, 0);
    SetOutput(OperationStatus, 0);
    return E_NOTIMPL;
}

// Deliberate: version 1.0, whose own layout ends with slot 21, goes with the size of the layout of
// 41 slots, of which one beyond slot 21 is filled.
constexpr WINBIO_ENGINE_INTERFACE kEngineInterface = {
    .Version = {.MajorVersion = 1, .MinorVersion = 0},
    .Type = WINBIO_ADAPTER_TYPE_ENGINE,
    .Size = sizeof(WINBIO_ENGINE_INTERFACE),
    .AdapterId = kAdapterId,
    .Attach = EngineAdapterAttach,
    .Detach = EngineAdapterDetach,
    .ClearContext = EngineAdapterClearContext,
    .QueryPreferredFormat = EngineAdapterQueryPreferredFormat,
    .QueryIndexVectorSize = EngineAdapterQueryIndexVectorSize,
    .QueryHashAlgorithms = EngineAdapterQueryHashAlgorithms,
    .SetHashAlgorithm = EngineAdapterSetHashAlgorithm,
    .QuerySampleHint = EngineAdapterQuerySampleHint,
    .AcceptSampleData = EngineAdapterAcceptSampleData,
    .ExportEngineData = EngineAdapterExportEngineData,
    .VerifyFeatureSet = EngineAdapterVerifyFeatureSet,
    .IdentifyFeatureSet = EngineAdapterIdentifyFeatureSet,
    .CreateEnrollment = EngineAdapterCreateEnrollment,
    .UpdateEnrollment = EngineAdapterUpdateEnrollment,
    .GetEnrollmentStatus = EngineAdapterGetEnrollmentStatus,
    .GetEnrollmentHash = EngineAdapterGetEnrollmentHash,
    .CheckForDuplicate = EngineAdapterCheckForDuplicate,
    .CommitEnrollment = EngineAdapterCommitEnrollment,
    .DiscardEnrollment = EngineAdapterDiscardEnrollment,
    .ControlUnit = EngineAdapterControlUnit,
    .ControlUnitPrivileged = EngineAdapterControlUnit,
    .NotifyPowerChange = nullptr,
    .Reserved_1 = nullptr,
    .PipelineInit = nullptr,
    .PipelineCleanup = nullptr,
    .Activate = nullptr,
    .Deactivate = nullptr,
    .QueryExtendedInfo = nullptr,
    .IdentifyAll = nullptr,
    .SetEnrollmentSelector = nullptr,
    .SetEnrollmentParameters = nullptr,
    .QueryExtendedEnrollmentStatus = nullptr,
    .RefreshCache = nullptr,
    .SelectCalibrationFormat = nullptr,
    .QueryCalibrationData = nullptr,
    .SetAccountPolicy = nullptr,
    .CreateKey = nullptr,
    .IdentifyFeatureSetSecure = nullptr,
    .AcceptPrivateSensorTypeInfo = EngineAdapterAcceptPrivateSensorTypeInfo,
    .CreateEnrollmentAuthenticated = nullptr,
    .IdentifyFeatureSetAuthenticated = nullptr,
};

}  // namespace
}  // namespace orl::adapter

HRESULT WINAPI WbioQueryEngineInterface(PWINBIO_ENGINE_INTERFACE* EngineInterface) noexcept {
    // The platform's type lacks the const; the service only reads the table.
    *EngineInterface = const_cast<PWINBIO_ENGINE_INTERFACE>(&orl::adapter::kEngineInterface);
    return S_OK;
}
