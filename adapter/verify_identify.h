#pragma once

// Verification of a claimed identity and identification of an unknown finger, with the sample that
// was accepted last. Neither changes the unit's context. Neither hands out a payload or a hash:
// those outputs are null or 0. A null output is left out. No entry point throws.

#include "platform/wbf.h"

namespace orl::adapter {

// Compares the sample with the first record that storage has for Identity and SubFactor. S_OK with
// Match TRUE or FALSE; any failure to get at one of the two ISO records is returned as it came, a
// failure of the matcher is Match FALSE. E_POINTER without a context, E_FAIL without a storage
// interface, WINBIO_E_NO_CAPTURE_DATA without a sample.
HRESULT WINAPI EngineAdapterVerifyFeatureSet(PWINBIO_PIPELINE Pipeline,
                                             PWINBIO_IDENTITY Identity,
                                             WINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                             PBOOLEAN Match,
                                             PUCHAR* PayloadBlob,
                                             PSIZE_T PayloadBlobSize,
                                             PUCHAR* HashValue,
                                             PSIZE_T HashSize,
                                             PWINBIO_REJECT_DETAIL RejectDetail) noexcept;

// Compares the sample with all stored records and tells whose the first matching one is.
// WINBIO_E_UNKNOWN_ID when none matches or storage fails; else as EngineAdapterVerifyFeatureSet.
HRESULT WINAPI EngineAdapterIdentifyFeatureSet(PWINBIO_PIPELINE Pipeline,
                                               PWINBIO_IDENTITY Identity,
                                               PWINBIO_BIOMETRIC_SUBTYPE SubFactor,
                                               PUCHAR* PayloadBlob,
                                               PSIZE_T PayloadBlobSize,
                                               PUCHAR* HashValue,
                                               PSIZE_T HashSize,
                                               PWINBIO_REJECT_DETAIL RejectDetail) noexcept;

}  // namespace orl::adapter
