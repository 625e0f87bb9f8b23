#include "adapter/stored_record_walk.h"

#include "adapter/bir_extraction.h"
#include "adapter/engine_log.h"
#include "adapter/matcher_bridge.h"
#include "adapter/outputs.h"

namespace orl::adapter {
namespace {

// Reads the record under the storage adapter's cursor; false when that fails.
bool ReadCurrentRecord(PWINBIO_PIPELINE Pipeline, WINBIO_STORAGE_RECORD& record) noexcept {
    record = {};
    return SUCCEEDED(LogResult("StorageInterface->GetCurrentRecord",
                               Pipeline->StorageInterface->GetCurrentRecord(Pipeline, &record)));
}

}  // namespace

StoredRecordWalk WalkStoredRecords(PWINBIO_PIPELINE Pipeline,
                                   const std::uint8_t* Iso,
                                   std::size_t IsoSize,
                                   const char* caller) noexcept {
    const WINBIO_STORAGE_INTERFACE& storage = *Pipeline->StorageInterface;
    StoredRecordWalk walk;
    if (FAILED(LogResult("StorageInterface->QueryByContent",
                         storage.QueryByContent(Pipeline, WINBIO_SUBTYPE_ANY, nullptr, 0)))) {
        return walk;
    }
    walk.end = WalkEnd::kNoMatch;
    for (HRESULT moved = storage.FirstRecord(Pipeline);
         SUCCEEDED(moved) && ReadCurrentRecord(Pipeline, walk.record);
         moved = storage.NextRecord(Pipeline)) {
        const std::uint8_t* storedIso = nullptr;
        std::size_t storedIsoSize = 0;
        if (SUCCEEDED(ExtractISOFromBIR(walk.record.TemplateBlob,
                                        walk.record.TemplateBlobSize,
                                        &storedIso,
                                        &storedIsoSize))) {
            const bool match = MatchISOTemplates(storedIso, storedIsoSize, Iso, IsoSize);
            EngineLog(kEngineLogTag,
                      "%s: record[%d] match=%s",
                      caller,
                      walk.recordsBefore,
                      BooleanText(match));
            if (match) {
                walk.end = WalkEnd::kMatch;
                return walk;
            }
        }
        ++walk.recordsBefore;
    }
    return walk;
}

void CopyRecordOwner(const WINBIO_STORAGE_RECORD& record,
                     PWINBIO_IDENTITY Identity,
                     PWINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept {
    if (record.Identity != nullptr) {
        SetOutput(Identity, *record.Identity);
    }
    SetOutput(SubFactor, record.SubFactor);
}

}  // namespace orl::adapter
