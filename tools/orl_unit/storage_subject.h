#pragma once

// The subject of a storage call: an identity and a sub-factor, either of which may be a wildcard.

#include <cstdint>
#include <optional>

#include "platform/wbf.h"
#include "tools/orl_unit/record_store.h"

namespace orl::unit {

// Whether a subject may be asked for or deleted: S_OK, E_POINTER without an identity, E_INVALIDARG
// for sub-factor NO_INFORMATION and for an identity that is neither GUID, SID nor wildcard.
HRESULT checkSubject(const WINBIO_IDENTITY* identity, WINBIO_BIOMETRIC_SUBTYPE subFactor);

// Nothing for ANY, otherwise the sub-factor itself.
std::optional<std::uint8_t> subFactorFilter(WINBIO_BIOMETRIC_SUBTYPE subFactor);

// The records of a subject. REQUIRES: checkSubject is content.
RecordFilter subjectFilter(const WINBIO_IDENTITY& identity, WINBIO_BIOMETRIC_SUBTYPE subFactor);

}  // namespace orl::unit
