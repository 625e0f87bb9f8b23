#include "tools/orl_unit/storage_call.h"
#include "tools/orl_unit/storage_routines.h"
#include "tools/orl_unit/storage_subject.h"

namespace orl::unit {
namespace {

// Tells the host that the cursor has come to a record.
void noteRecord(StorageContext& context) {
    if (context.onRecord) {
        context.onRecord(context.results.position() + 1, context.results.size());
    }
}

// The result of a call that has put the cursor on the first record.
HRESULT resultOnFirstRecord(StorageContext& context, StoreStatus status) {
    const HRESULT result = resultOf(context, std::move(status));
    if (FAILED(result)) {
        return result;
    }
    if (context.results.empty()) {
        return WINBIO_E_DATABASE_NO_RESULTS;
    }
    noteRecord(context);
    return S_OK;
}

}  // namespace

HRESULT WINAPI StorageAdapterQueryBySubject(PWINBIO_PIPELINE Pipeline,
                                            PWINBIO_IDENTITY Identity,
                                            WINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept {
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& store) -> HRESULT {
        const HRESULT checked = checkSubject(Identity, SubFactor);
        if (FAILED(checked)) {
            return checked;
        }
        return resultOnFirstRecord(
            context, context.results.select(store, subjectFilter(*Identity, SubFactor)));
    });
}

HRESULT WINAPI StorageAdapterQueryByContent(PWINBIO_PIPELINE Pipeline,
                                            WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                            PULONG IndexVector,
                                            SIZE_T IndexElementCount) noexcept {
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& store) -> HRESULT {
        if (SubFactor == WINBIO_SUBTYPE_NO_INFORMATION) {
            return E_INVALIDARG;
        }
        if (IndexElementCount != store.format().indexElementCount) {
            return WINBIO_E_DATABASE_BAD_INDEX_VECTOR;
        }
        if (IndexVector == nullptr && IndexElementCount > 0) {
            return E_POINTER;
        }
        RecordFilter filter;
        filter.subFactor = subFactorFilter(SubFactor);
        if (IndexElementCount > 0) {
            filter.indexVector.emplace(IndexVector, IndexVector + IndexElementCount);
        }
        return resultOnFirstRecord(context, context.results.select(store, filter));
    });
}

HRESULT WINAPI StorageAdapterGetRecordCount(PWINBIO_PIPELINE Pipeline,
                                            PSIZE_T RecordCount) noexcept {
    if (RecordCount == nullptr) {
        return E_POINTER;
    }
    *RecordCount = 0;
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& /*store*/) -> HRESULT {
        *RecordCount = context.results.size();
        return context.results.empty() ? WINBIO_E_DATABASE_NO_RESULTS : S_OK;
    });
}

HRESULT WINAPI StorageAdapterFirstRecord(PWINBIO_PIPELINE Pipeline) noexcept {
    return withStore(Pipeline, [](StorageContext& context, RecordStore& store) -> HRESULT {
        return resultOnFirstRecord(context, context.results.moveFirst(store));
    });
}

HRESULT WINAPI StorageAdapterNextRecord(PWINBIO_PIPELINE Pipeline) noexcept {
    return withStore(Pipeline, [](StorageContext& context, RecordStore& store) -> HRESULT {
        if (context.results.empty()) {
            return WINBIO_E_DATABASE_NO_RESULTS;
        }
        bool moved = false;
        const HRESULT result = resultOf(context, context.results.moveNext(store, moved));
        if (FAILED(result)) {
            return result;
        }
        if (!moved) {
            return WINBIO_E_DATABASE_NO_MORE_RECORDS;
        }
        noteRecord(context);
        return S_OK;
    });
}

HRESULT WINAPI StorageAdapterGetCurrentRecord(PWINBIO_PIPELINE Pipeline,
                                              PWINBIO_STORAGE_RECORD RecordContents) noexcept {
    if (RecordContents == nullptr) {
        return E_POINTER;
    }
    *RecordContents = {};
    return withStore(Pipeline, [&](StorageContext& context, RecordStore& /*store*/) -> HRESULT {
        if (context.results.empty()) {
            return WINBIO_E_DATABASE_NO_RESULTS;
        }
        StoredRecord& record = context.results.current();
        RecordContents->Identity = &record.identity;
        RecordContents->SubFactor = record.subFactor;
        RecordContents->IndexVector =
            record.indexVector.empty() ? nullptr : record.indexVector.data();
        RecordContents->IndexElementCount = record.indexVector.size();
        RecordContents->TemplateBlob = record.templateBlob.data();
        RecordContents->TemplateBlobSize = record.templateBlob.size();
        RecordContents->PayloadBlob = record.payload.empty() ? nullptr : record.payload.data();
        RecordContents->PayloadBlobSize = record.payload.size();
        return S_OK;
    });
}

HRESULT WINAPI StorageAdapterClearContext(PWINBIO_PIPELINE Pipeline) noexcept {
    if (Pipeline == nullptr) {
        return E_POINTER;
    }
    if (StorageContext* const context = contextOf(Pipeline)) {
        context->results.clear();
    }
    return S_OK;
}

}  // namespace orl::unit
