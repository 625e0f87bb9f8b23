#pragma once

// The engine adapter's table: a 32-byte header and 41 slots.

#include "platform/wbf.h"

struct WINBIO_ENGINE_INTERFACE {
    WINBIO_ADAPTER_INTERFACE_VERSION Version;
    WINBIO_ADAPTER_TYPE Type;  // WINBIO_ADAPTER_TYPE_ENGINE
    SIZE_T Size;               // bytes
    GUID AdapterId;

    WINBIO_PIPELINE_FN Attach;
    WINBIO_PIPELINE_FN Detach;
    WINBIO_PIPELINE_FN ClearContext;
    HRESULT(WINAPI* QueryPreferredFormat)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_REGISTERED_FORMAT StandardFormat, PGUID VendorFormat);
    HRESULT(WINAPI* QueryIndexVectorSize)(PWINBIO_PIPELINE Pipeline, PSIZE_T IndexElementCount);
    HRESULT(WINAPI* QueryHashAlgorithms)
    (PWINBIO_PIPELINE Pipeline,
     PSIZE_T AlgorithmCount,
     PSIZE_T AlgorithmBufferSize,
     PUCHAR* AlgorithmBuffer);
    HRESULT(WINAPI* SetHashAlgorithm)
    (PWINBIO_PIPELINE Pipeline, SIZE_T AlgorithmBufferSize, PUCHAR AlgorithmBuffer);
    HRESULT(WINAPI* QuerySampleHint)(PWINBIO_PIPELINE Pipeline, PSIZE_T SampleHint);
    HRESULT(WINAPI* AcceptSampleData)
    (PWINBIO_PIPELINE Pipeline,
     PWINBIO_BIR SampleBuffer,
     SIZE_T SampleSize,
     WINBIO_BIR_PURPOSE Purpose,
     PWINBIO_REJECT_DETAIL RejectDetail);
    // The platform types the buffer WINBIO_BIR**; as bytes the call is the same.
    HRESULT(WINAPI* ExportEngineData)
    (PWINBIO_PIPELINE Pipeline,
     WINBIO_BIR_DATA_FLAGS Flags,
     PUCHAR* FeatureSet,
     PSIZE_T FeatureSetSize);
    HRESULT(WINAPI* VerifyFeatureSet)
    (PWINBIO_PIPELINE Pipeline,
     PWINBIO_IDENTITY Identity,
     WINBIO_BIOMETRIC_SUBTYPE SubFactor,
     PBOOLEAN Match,
     PUCHAR* PayloadBlob,
     PSIZE_T PayloadBlobSize,
     PUCHAR* HashValue,
     PSIZE_T HashSize,
     PWINBIO_REJECT_DETAIL RejectDetail);
    HRESULT(WINAPI* IdentifyFeatureSet)
    (PWINBIO_PIPELINE Pipeline,
     PWINBIO_IDENTITY Identity,
     PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
     PUCHAR* PayloadBlob,
     PSIZE_T PayloadBlobSize,
     PUCHAR* HashValue,
     PSIZE_T HashSize,
     PWINBIO_REJECT_DETAIL RejectDetail);
    WINBIO_PIPELINE_FN CreateEnrollment;
    HRESULT(WINAPI* UpdateEnrollment)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_REJECT_DETAIL RejectDetail);
    HRESULT(WINAPI* GetEnrollmentStatus)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_REJECT_DETAIL RejectDetail);
    HRESULT(WINAPI* GetEnrollmentHash)
    (PWINBIO_PIPELINE Pipeline, PUCHAR* HashValue, PSIZE_T HashSize);
    HRESULT(WINAPI* CheckForDuplicate)
    (PWINBIO_PIPELINE Pipeline,
     PWINBIO_IDENTITY Identity,
     PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
     PBOOLEAN Duplicate);
    HRESULT(WINAPI* CommitEnrollment)
    (PWINBIO_PIPELINE Pipeline,
     PWINBIO_IDENTITY Identity,
     WINBIO_BIOMETRIC_SUBTYPE SubFactor,
     PUCHAR PayloadBlob,
     SIZE_T PayloadBlobSize);
    WINBIO_PIPELINE_FN DiscardEnrollment;
    WINBIO_CONTROL_UNIT_FN ControlUnit;
    WINBIO_CONTROL_UNIT_FN ControlUnitPrivileged;
    HRESULT(WINAPI* NotifyPowerChange)(PWINBIO_PIPELINE Pipeline, ULONG PowerEventType);
    WINBIO_UNUSED_SLOT_FN Reserved_1;
    WINBIO_UNUSED_SLOT_FN PipelineInit;
    WINBIO_UNUSED_SLOT_FN PipelineCleanup;
    WINBIO_UNUSED_SLOT_FN Activate;
    WINBIO_UNUSED_SLOT_FN Deactivate;
    WINBIO_UNUSED_SLOT_FN QueryExtendedInfo;
    WINBIO_UNUSED_SLOT_FN IdentifyAll;
    WINBIO_UNUSED_SLOT_FN SetEnrollmentSelector;
    WINBIO_UNUSED_SLOT_FN SetEnrollmentParameters;
    WINBIO_UNUSED_SLOT_FN QueryExtendedEnrollmentStatus;
    WINBIO_UNUSED_SLOT_FN RefreshCache;
    WINBIO_UNUSED_SLOT_FN SelectCalibrationFormat;
    WINBIO_UNUSED_SLOT_FN QueryCalibrationData;
    WINBIO_UNUSED_SLOT_FN SetAccountPolicy;
    WINBIO_UNUSED_SLOT_FN CreateKey;
    WINBIO_UNUSED_SLOT_FN IdentifyFeatureSetSecure;
    HRESULT(WINAPI* AcceptPrivateSensorTypeInfo)
    (PWINBIO_PIPELINE Pipeline, PUCHAR TypeInfoBuffer, SIZE_T TypeInfoBufferSize);
    WINBIO_UNUSED_SLOT_FN CreateEnrollmentAuthenticated;
    WINBIO_UNUSED_SLOT_FN IdentifyFeatureSetAuthenticated;
};
using PWINBIO_ENGINE_INTERFACE = WINBIO_ENGINE_INTERFACE*;

// The module's one export, WbioQueryEngineInterface.
using PWINBIO_QUERY_ENGINE_INTERFACE_FN =
    HRESULT(WINAPI*)(PWINBIO_ENGINE_INTERFACE* EngineInterface);
