#pragma once

// Buffers on the process heap, which the service shares: what the engine context owns, and what is
// handed to the service. Nothing else in the adapter calls HeapAlloc or HeapFree.
//
// No function throws; all are safe from any thread.

#include "platform/windows_types.h"

namespace orl::adapter {

// A zero-filled block of `size` bytes, or null when memory has run out. The caller owns it.
void* AllocateZeroed(SIZE_T size) noexcept;

// A copy of bytes[0..size), or null when memory has run out. The caller owns it.
// REQUIRES: size is not 0.
PUCHAR CopyToProcessHeap(const void* bytes, SIZE_T size) noexcept;

// Overwrites a block's `size` bytes with zeros and frees it. Does nothing for a null block,
// whatever the size.
void WipeAndFree(void* block, SIZE_T size) noexcept;

}  // namespace orl::adapter
