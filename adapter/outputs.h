#pragma once

// Writing the outputs of entry points. A caller may leave an output out by passing null.

#include <cstring>
#include <type_traits>

#include "platform/wbf.h"

namespace orl::adapter {

template <typename T>
void SetOutput(T* output, std::type_identity_t<T> value) noexcept {
    if (output != nullptr) {
        *output = value;
    }
}

// Zeroes all bytes of an identity, whichever member of its union counts.
inline void ClearIdentity(PWINBIO_IDENTITY identity) noexcept {
    if (identity != nullptr) {
        std::memset(identity, 0, sizeof(*identity));
    }
}

}  // namespace orl::adapter
