#pragma once

// Working memory of one match: arrays of plain values taken from one block, given back all at once.
// What does not fit into the block comes from the heap until the next release.

#include <array>
#include <cstddef>
#include <memory_resource>
#include <span>
#include <type_traits>

namespace orl::matcher {

class Scratch {
  public:
    Scratch() : resource_(block_.data(), block_.size()) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // An array of `count` uninitialised values, aligned to 16 bytes at least. Valid until release.
    // Throws: std::bad_alloc.
    template <typename Value>
    std::span<Value> take(std::size_t count) {
        static_assert(std::is_trivially_copyable_v<Value> &&
                      std::is_trivially_destructible_v<Value>);
        constexpr std::size_t kAlignment = alignof(Value) > 16 ? alignof(Value) : 16;
        void* memory = resource_.allocate(count * sizeof(Value), kAlignment);
        return {static_cast<Value*>(memory), count};
    }

    void release() { resource_.release(); }

  private:
    static constexpr std::size_t kBlockBytes = std::size_t{96} * 1024;

    // Left uninitialised on purpose: every array is written before it is read.
    alignas(64) std::array<std::byte, kBlockBytes> block_;
    std::pmr::monotonic_buffer_resource resource_;
};

}  // namespace orl::matcher
