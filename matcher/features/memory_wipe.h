#pragma once

// Overwrites biometric bytes before their memory is given back.

#include <cstddef>
#include <cstring>

namespace orl::matcher {

// Sets bytes[0..size) to zero in a way that the compiler may not leave out, although nothing reads
// them afterwards. A null pointer is allowed when size is 0.
inline void WipeMemory(void* bytes, std::size_t size) noexcept {
    // Claims to read the memory, so the compiler has to carry out the stores before it.
    const auto keepStores = [](std::byte* place) {
        __asm__ volatile("" : : "r"(place) : "memory");
    };
    // Pieces of a few stores each: no call, and no string instruction with its slow start.
    constexpr std::size_t kPieceBytes = 64;
    auto* next = static_cast<std::byte*>(bytes);
    for (; size >= kPieceBytes; size -= kPieceBytes) {
        std::memset(next, 0, kPieceBytes);
        keepStores(next);
        next += kPieceBytes;
    }
    if (size > 0) {
        std::memset(next, 0, size);
        keepStores(next);
    }
}

}  // namespace orl::matcher
