#pragma once

// The routines behind the storage adapter's table, by the framework's slot names. Parameters,
// results and the rules of the result set are the framework's. None throws.

#include "platform/wbf.h"

namespace orl::unit {

// Life of the context and of a database (storage_database.cpp).
HRESULT WINAPI StorageAdapterAttach(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterDetach(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterCreateDatabase(PWINBIO_PIPELINE Pipeline,
                                            PGUID DatabaseId,
                                            WINBIO_BIOMETRIC_TYPE Factor,
                                            PGUID Format,
                                            PCWSTR FilePath,
                                            PCWSTR ConnectString,
                                            SIZE_T IndexElementCount,
                                            SIZE_T InitialSize) noexcept;
HRESULT WINAPI StorageAdapterEraseDatabase(PWINBIO_PIPELINE Pipeline,
                                           PGUID DatabaseId,
                                           PCWSTR FilePath,
                                           PCWSTR ConnectString) noexcept;
HRESULT WINAPI StorageAdapterOpenDatabase(PWINBIO_PIPELINE Pipeline,
                                          PGUID DatabaseId,
                                          PCWSTR FilePath,
                                          PCWSTR ConnectString) noexcept;
HRESULT WINAPI StorageAdapterCloseDatabase(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterGetDataFormat(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterGetDatabaseSize(PWINBIO_PIPELINE Pipeline,
                                             PSIZE_T AvailableRecordCount,
                                             PSIZE_T TotalRecordCount) noexcept;
HRESULT WINAPI StorageAdapterControlUnit(PWINBIO_PIPELINE Pipeline,
                                         ULONG ControlCode,
                                         PUCHAR SendBuffer,
                                         SIZE_T SendBufferSize,
                                         PUCHAR ReceiveBuffer,
                                         SIZE_T ReceiveBufferSize,
                                         PSIZE_T ReceiveDataSize,
                                         PULONG OperationStatus) noexcept;

// Changes (storage_changes.cpp).
HRESULT WINAPI StorageAdapterAddRecord(PWINBIO_PIPELINE Pipeline,
                                       PWINBIO_STORAGE_RECORD RecordContents) noexcept;
HRESULT WINAPI StorageAdapterDeleteRecord(PWINBIO_PIPELINE Pipeline,
                                          PWINBIO_IDENTITY Identity,
                                          WINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept;

// The result set and its cursor (storage_queries.cpp).
HRESULT WINAPI StorageAdapterClearContext(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterGetDatabaseSize(PWINBIO_PIPELINE Pipeline,
                                             PSIZE_T AvailableRecordCount,
                                             PSIZE_T TotalRecordCount) noexcept;
HRESULT WINAPI StorageAdapterQueryBySubject(PWINBIO_PIPELINE Pipeline,
                                            PWINBIO_IDENTITY Identity,
                                            WINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept;
HRESULT WINAPI StorageAdapterQueryByContent(PWINBIO_PIPELINE Pipeline,
                                            WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                            PULONG IndexVector,
                                            SIZE_T IndexElementCount) noexcept;
HRESULT WINAPI StorageAdapterGetRecordCount(PWINBIO_PIPELINE Pipeline,
                                            PSIZE_T RecordCount) noexcept;
HRESULT WINAPI StorageAdapterFirstRecord(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterNextRecord(PWINBIO_PIPELINE Pipeline) noexcept;
HRESULT WINAPI StorageAdapterGetCurrentRecord(PWINBIO_PIPELINE Pipeline,
                                              PWINBIO_STORAGE_RECORD RecordContents) noexcept;

}  // namespace orl::unit
