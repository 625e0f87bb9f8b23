#pragma once

// Memory for biometric data. Samples and templates in the host live in SecretBytes: a vector whose
// memory is overwritten with zeros before it goes back to the heap, when it grows included.

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace orl::unit {

// Overwrites byteCount bytes with zeros in a way that the optimiser must keep. Never throws.
inline void wipeMemory(void* memory, std::size_t byteCount) noexcept {
    volatile auto* byte = static_cast<volatile std::uint8_t*>(memory);
    for (std::size_t i = 0; i < byteCount; ++i) {
        byte[i] = 0;
    }
}

// Allocator that wipes what it frees. Stateless: all instances are equal.
template <typename Value>
struct WipingAllocator {
    using value_type = Value;

    WipingAllocator() = default;
    template <typename Other>
    // NOLINTNEXTLINE(google-explicit-constructor): allocators of different values convert
    WipingAllocator(const WipingAllocator<Other>&) noexcept {}

    Value* allocate(std::size_t count) {
        return static_cast<Value*>(::operator new(count * sizeof(Value)));
    }
    void deallocate(Value* values, std::size_t count) noexcept {
        wipeMemory(values, count * sizeof(Value));
        ::operator delete(values);
    }
    template <typename Other>
    bool operator==(const WipingAllocator<Other>&) const noexcept {
        return true;
    }
};

using SecretBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

}  // namespace orl::unit
