#include "tools/orl_unit/storage_adapter.h"

#include <cstddef>

#include "tools/orl_unit/storage_routines.h"

namespace orl::unit {
namespace {

// {B1C5D0E3-7F42-4A6B-9D18-53E0A74C26F9}
constexpr GUID kStorageAdapterId = {
    0xB1C5D0E3, 0x7F42, 0x4A6B, {0x9D, 0x18, 0x53, 0xE0, 0xA7, 0x4C, 0x26, 0xF9}};

WINBIO_STORAGE_INTERFACE makeTable() {
    WINBIO_STORAGE_INTERFACE table = {};
    table.Version = {1, 0};
    table.Type = WINBIO_ADAPTER_TYPE_STORAGE;
    table.Size = offsetof(WINBIO_STORAGE_INTERFACE, NotifyPowerChange);
    table.AdapterId = kStorageAdapterId;
    table.Attach = StorageAdapterAttach;
    table.Detach = StorageAdapterDetach;
    table.ClearContext = StorageAdapterClearContext;
    table.CreateDatabase = StorageAdapterCreateDatabase;
    table.EraseDatabase = StorageAdapterEraseDatabase;
    table.OpenDatabase = StorageAdapterOpenDatabase;
    table.CloseDatabase = StorageAdapterCloseDatabase;
    table.GetDataFormat = StorageAdapterGetDataFormat;
    table.GetDatabaseSize = StorageAdapterGetDatabaseSize;
    table.AddRecord = StorageAdapterAddRecord;
    table.DeleteRecord = StorageAdapterDeleteRecord;
    table.QueryBySubject = StorageAdapterQueryBySubject;
    table.QueryByContent = StorageAdapterQueryByContent;
    table.GetRecordCount = StorageAdapterGetRecordCount;
    table.FirstRecord = StorageAdapterFirstRecord;
    table.NextRecord = StorageAdapterNextRecord;
    table.GetCurrentRecord = StorageAdapterGetCurrentRecord;
    table.ControlUnit = StorageAdapterControlUnit;
    table.ControlUnitPrivileged = StorageAdapterControlUnit;
    return table;
}

}  // namespace

WINBIO_STORAGE_INTERFACE* storageInterface() {
    static WINBIO_STORAGE_INTERFACE table = makeTable();
    return &table;
}

StorageContext& storageContext(const WINBIO_PIPELINE& pipeline) {
    return *static_cast<StorageContext*>(pipeline.StorageContext);
}

}  // namespace orl::unit
