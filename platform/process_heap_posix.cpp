#include <cstddef>
#include <cstdlib>

#include "platform/process_heap.h"

namespace {

constexpr std::size_t kBlockAlignment = 16;  // what the system's heap gives on 64-bit Windows
static_assert(alignof(std::max_align_t) >= kBlockAlignment,
              "malloc aligns blocks as the heap does");

}  // namespace

HANDLE GetProcessHeap() noexcept {
    static char heap;  // only its address is used
    return &heap;
}

LPVOID HeapAlloc(HANDLE /*heap*/, DWORD flags, SIZE_T bytes) noexcept {
    // malloc(0) may return null, which a caller would take for exhaustion.
    const std::size_t size = bytes == 0 ? 1 : bytes;
    return (flags & HEAP_ZERO_MEMORY) != 0 ? std::calloc(1, size) : std::malloc(size);
}

BOOL HeapFree(HANDLE /*heap*/, DWORD /*flags*/, LPVOID block) noexcept {
    std::free(block);
    return TRUE;
}
