#pragma once

// The process heap. On Windows it is the system's. Elsewhere GetProcessHeap, HeapAlloc and HeapFree
// are supplied here over malloc, with the same contract; since every module of a process shares one
// malloc, a block may be allocated in one module and freed in another, as on Windows.

#include "platform/windows_types.h"

#ifndef _WIN32

inline constexpr DWORD HEAP_ZERO_MEMORY = 0x00000008;

extern "C" {

// The handle of the one heap; never null. Never throws; safe from any thread.
HANDLE GetProcessHeap() noexcept;

// A block of `bytes` bytes (0 is allowed) aligned to 16, zero-filled when `flags` holds
// HEAP_ZERO_MEMORY, or null when memory has run out. The caller owns it and returns it with
// HeapFree. Never throws; safe from any thread.
LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) noexcept;

// Frees a block of HeapAlloc; null is allowed. `flags` are ignored. Returns TRUE.
BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block) noexcept;

}  // extern "C"

#endif
