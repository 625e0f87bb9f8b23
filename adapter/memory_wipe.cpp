#include "adapter/memory_wipe.h"

#include <cstring>

namespace orl::adapter {

void WipeMemory(void* bytes, std::size_t size) noexcept {
    if (size == 0) {
        return;
    }
    std::memset(bytes, 0, size);
    // Claims to read the memory, so the compiler has to carry out the stores above.
    __asm__ volatile("" : : "r"(bytes) : "memory");
}

}  // namespace orl::adapter
