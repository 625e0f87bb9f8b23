#include "adapter/heap_buffer.h"

#include <cstring>

#include "adapter/memory_wipe.h"
#include "platform/process_heap.h"

namespace orl::adapter {

void* AllocateZeroed(SIZE_T size) noexcept {
    return HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
}

PUCHAR CopyToProcessHeap(const void* bytes, SIZE_T size) noexcept {
    void* block = HeapAlloc(GetProcessHeap(), 0, size);
    if (block != nullptr) {
        std::memcpy(block, bytes, size);
    }
    return static_cast<PUCHAR>(block);
}

void WipeAndFree(void* block, SIZE_T size) noexcept {
    if (block != nullptr) {
        WipeMemory(block, size);
        HeapFree(GetProcessHeap(), 0, block);
    }
}

}  // namespace orl::adapter
