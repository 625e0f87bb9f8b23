#pragma once

// The walk over all stored records in search of a finger, which identification and the duplicate
// check share. The storage adapter's order decides: the first record that matches ends the walk.

#include <cstddef>
#include <cstdint>

#include "platform/wbf.h"

namespace orl::adapter {

enum class WalkEnd {
    kQueryFailed,  // the storage adapter gave no records at all
    kNoMatch,      // the records came to an end, or could not be read further
    kMatch,
};

struct StoredRecordWalk {
    WalkEnd end = WalkEnd::kQueryFailed;
    int recordsBefore = 0;              // records walked; on a match, those before the matching one
    WINBIO_STORAGE_RECORD record = {};  // the matching one; the storage adapter's own
};

// Compares every stored record, until one matches, with the ISO record Iso[0..IsoSize). Records
// without a sound ISO record are counted but not compared. `caller` begins the line that is logged
// for each comparison. The result's record stays valid until the storage adapter's cursor moves.
// REQUIRES: Pipeline has a storage interface. Never throws.
StoredRecordWalk WalkStoredRecords(PWINBIO_PIPELINE Pipeline,
                                   const std::uint8_t* Iso,
                                   std::size_t IsoSize,
                                   const char* caller) noexcept;

// Hands out whose record it is: the identity when the record has one, and the sub-factor. Null
// outputs are left out.
void CopyRecordOwner(const WINBIO_STORAGE_RECORD& record,
                     PWINBIO_IDENTITY Identity,
                     PWINBIO_BIOMETRIC_SUBTYPE SubFactor) noexcept;

}  // namespace orl::adapter
