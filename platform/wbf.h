#pragma once

// The part of the Windows Biometric Framework that an engine adapter meets: the structures that it
// reads and writes, the engine table that it hands out and the storage table that it calls.
// Layouts are those of 64-bit Windows, in natural alignment, and hold on every system;
// wbf_layout.cpp checks each size and offset. Names are the platform's.

#include "platform/wbf_codes.h"
#include "platform/windows_types.h"

struct WINBIO_ADAPTER_INTERFACE_VERSION {
    USHORT MajorVersion;
    USHORT MinorVersion;
};

// A data format by owner and type; 0 / 0 stands for no standard format.
struct WINBIO_REGISTERED_FORMAT {
    USHORT Owner;
    USHORT Type;
};
using PWINBIO_REGISTERED_FORMAT = WINBIO_REGISTERED_FORMAT*;

inline constexpr SIZE_T WINBIO_SECURITY_MAX_SID_BYTES = 68;
inline constexpr SIZE_T WINBIO_SECURE_ID_BYTES = 32;

// Whose record it is. Type is one of the WINBIO_ID_TYPE_ values and selects the union's member.
struct WINBIO_IDENTITY {
    WINBIO_IDENTITY_TYPE Type;
    union {
        ULONG Null;
        ULONG Wildcard;
        GUID TemplateGuid;
        struct {
            ULONG Size;  // bytes used of Data
            UCHAR Data[WINBIO_SECURITY_MAX_SID_BYTES];
        } AccountSid;
        UCHAR SecureId[WINBIO_SECURE_ID_BYTES];
    } Value;
};
using PWINBIO_IDENTITY = WINBIO_IDENTITY*;

// Where one block of a BIR lies, in bytes from the start of the BIR; 0 / 0 when it is absent.
struct WINBIO_BIR_DATA {
    ULONG Size;
    ULONG Offset;
};

// A biometric information record: this header, followed by the blocks that it points to.
struct WINBIO_BIR {
    WINBIO_BIR_DATA HeaderBlock;
    WINBIO_BIR_DATA StandardDataBlock;
    WINBIO_BIR_DATA VendorDataBlock;
    WINBIO_BIR_DATA SignatureBlock;
};
using PWINBIO_BIR = WINBIO_BIR*;

// What a BIR's header block holds.
struct WINBIO_BIR_HEADER {
    USHORT ValidFields;
    WINBIO_BIR_VERSION HeaderVersion;
    WINBIO_BIR_VERSION PatronHeaderVersion;
    WINBIO_BIR_DATA_FLAGS DataFlags;
    WINBIO_BIOMETRIC_TYPE Type;
    WINBIO_BIOMETRIC_SUBTYPE Subtype;
    WINBIO_BIR_PURPOSE Purpose;
    WINBIO_BIR_QUALITY DataQuality;
    LARGE_INTEGER CreationDate;
    struct {
        LARGE_INTEGER BeginDate;
        LARGE_INTEGER EndDate;
    } ValidityPeriod;
    WINBIO_REGISTERED_FORMAT BiometricDataFormat;
    WINBIO_REGISTERED_FORMAT ProductId;
};

// One stored record. It and all that it points to belong to the component that made it.
struct WINBIO_STORAGE_RECORD {
    PWINBIO_IDENTITY Identity;
    WINBIO_BIOMETRIC_SUBTYPE SubFactor;
    PULONG IndexVector;
    SIZE_T IndexElementCount;
    PUCHAR TemplateBlob;
    SIZE_T TemplateBlobSize;
    PUCHAR PayloadBlob;
    SIZE_T PayloadBlobSize;
};
using PWINBIO_STORAGE_RECORD = WINBIO_STORAGE_RECORD*;

struct WINBIO_SENSOR_INTERFACE;
struct WINBIO_ENGINE_INTERFACE;
struct WINBIO_STORAGE_INTERFACE;

// One biometric unit, as the service shows it to the unit's three adapters.
struct WINBIO_PIPELINE {
    HANDLE SensorHandle;
    HANDLE EngineHandle;
    HANDLE StorageHandle;
    WINBIO_SENSOR_INTERFACE* SensorInterface;
    WINBIO_ENGINE_INTERFACE* EngineInterface;
    WINBIO_STORAGE_INTERFACE* StorageInterface;
    PVOID SensorContext;
    PVOID EngineContext;  // the engine adapter's own; the service never touches it
    PVOID StorageContext;
    PVOID FrameworkInterface;
};
using PWINBIO_PIPELINE = WINBIO_PIPELINE*;

// A slot that takes nothing but the pipeline.
using WINBIO_PIPELINE_FN = HRESULT(WINAPI*)(PWINBIO_PIPELINE Pipeline);

// A slot whose parameters nobody here needs to know; it is only ever null or left alone.
using WINBIO_UNUSED_SLOT_FN = HRESULT(WINAPI*)(PWINBIO_PIPELINE Pipeline);

using WINBIO_CONTROL_UNIT_FN = HRESULT(WINAPI*)(PWINBIO_PIPELINE Pipeline,
                                                ULONG ControlCode,
                                                PUCHAR SendBuffer,
                                                SIZE_T SendBufferSize,
                                                PUCHAR ReceiveBuffer,
                                                SIZE_T ReceiveBufferSize,
                                                PSIZE_T ReceiveDataSize,
                                                PULONG OperationStatus);

#include "platform/wbf_engine_interface.h"
#include "platform/wbf_storage_interface.h"
