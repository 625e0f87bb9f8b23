// Checks at compile time that the platform's structures have their 64-bit Windows layout.

#include <cstddef>

#include "platform/wbf.h"

static_assert(sizeof(void*) == 8 && sizeof(SIZE_T) == 8);
static_assert(sizeof(HRESULT) == 4 && sizeof(ULONG) == 4 && sizeof(DWORD) == 4);
static_assert(sizeof(USHORT) == 2 && sizeof(UCHAR) == 1 && sizeof(BOOLEAN) == 1);
static_assert(sizeof(BOOL) == 4 && sizeof(WCHAR) == 2 && sizeof(LARGE_INTEGER) == 8);

static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4);
static_assert(offsetof(GUID, Data2) == 4 && offsetof(GUID, Data3) == 6);
static_assert(offsetof(GUID, Data4) == 8);

static_assert(sizeof(WINBIO_ADAPTER_INTERFACE_VERSION) == 4);
static_assert(offsetof(WINBIO_ADAPTER_INTERFACE_VERSION, MinorVersion) == 2);
static_assert(sizeof(WINBIO_REGISTERED_FORMAT) == 4);
static_assert(offsetof(WINBIO_REGISTERED_FORMAT, Type) == 2);

static_assert(sizeof(WINBIO_IDENTITY) == 76 && alignof(WINBIO_IDENTITY) == 4);
static_assert(offsetof(WINBIO_IDENTITY, Value) == 4);
static_assert(offsetof(WINBIO_IDENTITY, Value.TemplateGuid) == 4);
static_assert(offsetof(WINBIO_IDENTITY, Value.AccountSid.Size) == 4);
static_assert(offsetof(WINBIO_IDENTITY, Value.AccountSid.Data) == 8);

static_assert(sizeof(WINBIO_BIR_DATA) == 8 && offsetof(WINBIO_BIR_DATA, Offset) == 4);
static_assert(sizeof(WINBIO_BIR) == 32);
static_assert(offsetof(WINBIO_BIR, HeaderBlock) == 0);
static_assert(offsetof(WINBIO_BIR, StandardDataBlock) == 8);
static_assert(offsetof(WINBIO_BIR, VendorDataBlock) == 16);
static_assert(offsetof(WINBIO_BIR, SignatureBlock) == 24);

static_assert(sizeof(WINBIO_BIR_HEADER) == 48 && alignof(WINBIO_BIR_HEADER) == 8);
static_assert(offsetof(WINBIO_BIR_HEADER, HeaderVersion) == 2);
static_assert(offsetof(WINBIO_BIR_HEADER, PatronHeaderVersion) == 3);
static_assert(offsetof(WINBIO_BIR_HEADER, DataFlags) == 4);
static_assert(offsetof(WINBIO_BIR_HEADER, Type) == 8);
static_assert(offsetof(WINBIO_BIR_HEADER, Subtype) == 12);
static_assert(offsetof(WINBIO_BIR_HEADER, Purpose) == 13);
static_assert(offsetof(WINBIO_BIR_HEADER, DataQuality) == 14);
static_assert(offsetof(WINBIO_BIR_HEADER, CreationDate) == 16);
static_assert(offsetof(WINBIO_BIR_HEADER, ValidityPeriod) == 24);
static_assert(offsetof(WINBIO_BIR_HEADER, BiometricDataFormat) == 40);
static_assert(offsetof(WINBIO_BIR_HEADER, ProductId) == 44);

static_assert(sizeof(WINBIO_STORAGE_RECORD) == 64 && alignof(WINBIO_STORAGE_RECORD) == 8);
static_assert(offsetof(WINBIO_STORAGE_RECORD, Identity) == 0);
static_assert(offsetof(WINBIO_STORAGE_RECORD, SubFactor) == 8);
static_assert(offsetof(WINBIO_STORAGE_RECORD, IndexVector) == 16);
static_assert(offsetof(WINBIO_STORAGE_RECORD, IndexElementCount) == 24);
static_assert(offsetof(WINBIO_STORAGE_RECORD, TemplateBlob) == 32);
static_assert(offsetof(WINBIO_STORAGE_RECORD, TemplateBlobSize) == 40);
static_assert(offsetof(WINBIO_STORAGE_RECORD, PayloadBlob) == 48);
static_assert(offsetof(WINBIO_STORAGE_RECORD, PayloadBlobSize) == 56);

static_assert(sizeof(WINBIO_PIPELINE) == 80);
static_assert(offsetof(WINBIO_PIPELINE, SensorHandle) == 0);
static_assert(offsetof(WINBIO_PIPELINE, EngineHandle) == 8);
static_assert(offsetof(WINBIO_PIPELINE, StorageHandle) == 16);
static_assert(offsetof(WINBIO_PIPELINE, SensorInterface) == 24);
static_assert(offsetof(WINBIO_PIPELINE, EngineInterface) == 32);
static_assert(offsetof(WINBIO_PIPELINE, StorageInterface) == 40);
static_assert(offsetof(WINBIO_PIPELINE, SensorContext) == 48);
static_assert(offsetof(WINBIO_PIPELINE, EngineContext) == 56);
static_assert(offsetof(WINBIO_PIPELINE, StorageContext) == 64);
static_assert(offsetof(WINBIO_PIPELINE, FrameworkInterface) == 72);

namespace {

constexpr std::size_t kTableHeaderBytes = 32;
constexpr std::size_t kSlotBytes = 8;

// Where slot `number`, counted from 1, lies in either table, in bytes.
constexpr std::size_t SlotOffset(std::size_t number) {
    return kTableHeaderBytes + kSlotBytes * (number - 1);
}

constexpr std::size_t kEngineSlots = 41;
constexpr std::size_t kStorageSlots = 30;

}  // namespace

static_assert(sizeof(WINBIO_ENGINE_INTERFACE) == SlotOffset(kEngineSlots + 1));
static_assert(sizeof(WINBIO_ENGINE_INTERFACE) == 360);
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, Version) == 0);
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, Type) == 4);
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, Size) == 8);
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, AdapterId) == 16);
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, Attach) == SlotOffset(1));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, QueryPreferredFormat) == SlotOffset(4));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, QueryIndexVectorSize) == SlotOffset(5));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, QuerySampleHint) == SlotOffset(8));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, AcceptSampleData) == SlotOffset(9));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, ExportEngineData) == SlotOffset(10));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, VerifyFeatureSet) == SlotOffset(11));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, IdentifyFeatureSet) == SlotOffset(12));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, CreateEnrollment) == SlotOffset(13));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, UpdateEnrollment) == SlotOffset(14));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, GetEnrollmentStatus) == SlotOffset(15));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, GetEnrollmentHash) == SlotOffset(16));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, CheckForDuplicate) == SlotOffset(17));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, CommitEnrollment) == SlotOffset(18));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, DiscardEnrollment) == SlotOffset(19));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, ControlUnit) == SlotOffset(20));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, ControlUnitPrivileged) == SlotOffset(21));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, NotifyPowerChange) == SlotOffset(22));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, Reserved_1) == SlotOffset(23));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, SetAccountPolicy) == SlotOffset(36));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, CreateKey) == SlotOffset(37));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, IdentifyFeatureSetSecure) == SlotOffset(38));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, AcceptPrivateSensorTypeInfo) == SlotOffset(39));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, CreateEnrollmentAuthenticated) == SlotOffset(40));
static_assert(offsetof(WINBIO_ENGINE_INTERFACE, IdentifyFeatureSetAuthenticated) == SlotOffset(41));

static_assert(sizeof(WINBIO_STORAGE_INTERFACE) == SlotOffset(kStorageSlots + 1));
static_assert(sizeof(WINBIO_STORAGE_INTERFACE) == 272);
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, Type) == 4);
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, Size) == 8);
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, AdapterId) == 16);
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, Attach) == SlotOffset(1));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, CreateDatabase) == SlotOffset(4));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, AddRecord) == SlotOffset(10));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, DeleteRecord) == SlotOffset(11));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, QueryBySubject) == SlotOffset(12));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, QueryByContent) == SlotOffset(13));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, GetRecordCount) == SlotOffset(14));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, FirstRecord) == SlotOffset(15));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, NextRecord) == SlotOffset(16));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, GetCurrentRecord) == SlotOffset(17));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, ControlUnitPrivileged) == SlotOffset(19));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, NotifyPowerChange) == SlotOffset(20));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, QueryExtendedInfo) == SlotOffset(25));
static_assert(offsetof(WINBIO_STORAGE_INTERFACE, UpdateRecordCommit) == SlotOffset(30));
