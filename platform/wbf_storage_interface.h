#pragma once

// The storage adapter's table: a 32-byte header and 30 slots. An older storage adapter's table is
// shorter, so only the slots up to ControlUnitPrivileged are sure to exist.

#include "platform/wbf.h"

struct WINBIO_STORAGE_INTERFACE {
    WINBIO_ADAPTER_INTERFACE_VERSION Version;
    WINBIO_ADAPTER_TYPE Type;  // WINBIO_ADAPTER_TYPE_STORAGE
    SIZE_T Size;               // bytes
    GUID AdapterId;

    WINBIO_PIPELINE_FN Attach;
    WINBIO_PIPELINE_FN Detach;
    WINBIO_PIPELINE_FN ClearContext;
    HRESULT(WINAPI* CreateDatabase)
    (PWINBIO_PIPELINE Pipeline,
     PGUID DatabaseId,
     WINBIO_BIOMETRIC_TYPE Factor,
     PGUID Format,
     PCWSTR FilePath,
     PCWSTR ConnectString,
     SIZE_T IndexElementCount,
     SIZE_T InitialSize);
    HRESULT(WINAPI* EraseDatabase)
    (PWINBIO_PIPELINE Pipeline, PGUID DatabaseId, PCWSTR FilePath, PCWSTR ConnectString);
    HRESULT(WINAPI* OpenDatabase)
    (PWINBIO_PIPELINE Pipeline, PGUID DatabaseId, PCWSTR FilePath, PCWSTR ConnectString);
    WINBIO_PIPELINE_FN CloseDatabase;
    WINBIO_UNUSED_SLOT_FN GetDataFormat;
    HRESULT(WINAPI* GetDatabaseSize)
    (PWINBIO_PIPELINE Pipeline, PSIZE_T AvailableRecordCount, PSIZE_T TotalRecordCount);
    HRESULT(WINAPI* AddRecord)(PWINBIO_PIPELINE Pipeline, PWINBIO_STORAGE_RECORD RecordContents);
    HRESULT(WINAPI* DeleteRecord)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_IDENTITY Identity, WINBIO_BIOMETRIC_SUBTYPE SubFactor);
    // Both queries leave the cursor on the first record found.
    HRESULT(WINAPI* QueryBySubject)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_IDENTITY Identity, WINBIO_BIOMETRIC_SUBTYPE SubFactor);
    HRESULT(WINAPI* QueryByContent)
    (PWINBIO_PIPELINE Pipeline,
     WINBIO_BIOMETRIC_SUBTYPE SubFactor,
     PULONG IndexVector,
     SIZE_T IndexElementCount);
    HRESULT(WINAPI* GetRecordCount)(PWINBIO_PIPELINE Pipeline, PSIZE_T RecordCount);
    WINBIO_PIPELINE_FN FirstRecord;
    WINBIO_PIPELINE_FN NextRecord;
    // Fills the record with pointers that stay valid until the cursor moves or the set changes.
    HRESULT(WINAPI* GetCurrentRecord)
    (PWINBIO_PIPELINE Pipeline, PWINBIO_STORAGE_RECORD RecordContents);
    WINBIO_CONTROL_UNIT_FN ControlUnit;
    WINBIO_CONTROL_UNIT_FN ControlUnitPrivileged;
    HRESULT(WINAPI* NotifyPowerChange)(PWINBIO_PIPELINE Pipeline, ULONG PowerEventType);
    WINBIO_UNUSED_SLOT_FN PipelineInit;
    WINBIO_UNUSED_SLOT_FN PipelineCleanup;
    WINBIO_UNUSED_SLOT_FN Activate;
    WINBIO_UNUSED_SLOT_FN Deactivate;
    WINBIO_UNUSED_SLOT_FN QueryExtendedInfo;
    WINBIO_UNUSED_SLOT_FN NotifyDatabaseChange;
    WINBIO_UNUSED_SLOT_FN Reserved1;
    WINBIO_UNUSED_SLOT_FN Reserved2;
    WINBIO_UNUSED_SLOT_FN UpdateRecordBegin;
    WINBIO_UNUSED_SLOT_FN UpdateRecordCommit;
};
using PWINBIO_STORAGE_INTERFACE = WINBIO_STORAGE_INTERFACE*;
