#include "tools/orl_unit/identity_value.h"
#include "tools/orl_unit/storage_call.h"
#include "tools/orl_unit/storage_routines.h"
#include "tools/orl_unit/storage_subject.h"

namespace orl::unit {
namespace {

// Whether a record may be added, but for the length of its index vector.
HRESULT checkRecord(const WINBIO_STORAGE_RECORD* record) {
    if (record == nullptr || record->Identity == nullptr) {
        return E_POINTER;
    }
    const bool subFactorGiven = record->SubFactor != WINBIO_SUBTYPE_NO_INFORMATION &&
                                record->SubFactor != WINBIO_SUBTYPE_ANY;
    const bool templateGiven = record->TemplateBlob != nullptr && record->TemplateBlobSize > 0;
    const bool payloadSound = record->PayloadBlob != nullptr || record->PayloadBlobSize == 0;
    const bool indexSound = record->IndexVector != nullptr || record->IndexElementCount == 0;
    return identityValue(*record->Identity).has_value() && subFactorGiven && templateGiven &&
                   payloadSound && indexSound
               ? S_OK
               : E_INVALIDARG;
}

}  // namespace

HRESULT WINAPI StorageAdapterAddRecord(PWINBIO_PIPELINE Pipeline,
                                       PWINBIO_STORAGE_RECORD RecordContents) noexcept {
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& store) -> HRESULT {
        const HRESULT checked = checkRecord(RecordContents);
        if (FAILED(checked)) {
            return checked;
        }
        if (RecordContents->IndexElementCount != store.format().indexElementCount) {
            return WINBIO_E_DATABASE_BAD_INDEX_VECTOR;
        }
        const WINBIO_STORAGE_RECORD& record = *RecordContents;
        return resultOf(context,
                        store.addRecord({record.Identity,
                                         record.SubFactor,
                                         {record.IndexVector, record.IndexElementCount},
                                         {record.TemplateBlob, record.TemplateBlobSize},
                                         {record.PayloadBlob, record.PayloadBlobSize}}));
    });
}

HRESULT WINAPI StorageAdapterDeleteRecord(PWINBIO_PIPELINE Pipeline,
                                          PWINBIO_IDENTITY Identity,
                                          WINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept {
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& store) -> HRESULT {
        const HRESULT checked = checkSubject(Identity, SubFactor);
        if (FAILED(checked)) {
            return checked;
        }
        std::size_t removedCount = 0;
        const HRESULT removed = resultOf(
            context, store.removeRecords(subjectFilter(*Identity, SubFactor), removedCount));
        return removed == S_OK && removedCount == 0 ? WINBIO_E_DATABASE_NO_SUCH_RECORD : removed;
    });
}

}  // namespace orl::unit
