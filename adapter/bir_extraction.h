#pragma once

// Finds the ISO/IEC 19794-2 finger minutiae record inside a WINBIO_BIR.

#include <cstddef>
#include <cstdint>

#include "platform/windows_types.h"

namespace orl::adapter {

// Points IsoData at the standard data block of the BIR Bir[0..BirSize) and sets IsoSize to its
// length in bytes. The view lies inside the BIR and lives as long as that. Nothing about the record
// itself is checked, and a block may start anywhere, the header included.
//
// On failure the outputs are null and 0. E_INVALIDARG: no BIR, one shorter than its 32-byte header,
// or a block that ends beyond it. WINBIO_E_NO_CAPTURE_DATA: the block's size or offset is 0.
// Never throws; safe from any thread.
HRESULT ExtractISOFromBIR(const std::uint8_t* Bir,
                          std::size_t BirSize,
                          const std::uint8_t** IsoData,
                          std::size_t* IsoSize) noexcept;

}  // namespace orl::adapter
