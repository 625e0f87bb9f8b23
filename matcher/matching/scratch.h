#pragma once

// Working memory of one match: arrays of plain values taken from one block, one after the other.
// What does not fit into the block comes from the heap. All of it is wiped before it is freed, as
// it tells of the fingers compared.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include "matcher/features/memory_wipe.h"

namespace orl::matcher {

class Scratch {
  public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { WipeMemory(block_.data(), mostUsedBytes_); }

    // An array of `count` uninitialised values, aligned to 16 bytes at least. Valid until release,
    // or until a mark set before is gone. Throws: std::bad_alloc.
    template <typename Value>
    std::span<Value> take(std::size_t count) {
        static_assert(std::is_trivially_copyable_v<Value> &&
                      std::is_trivially_destructible_v<Value>);
        constexpr std::size_t kAlignment = std::max<std::size_t>(alignof(Value), 16);
        static_assert(kAlignment <= kGreatestAlignment);
        const std::size_t bytes = count * sizeof(Value);
        const std::size_t begin = (usedBytes_ + kAlignment - 1) & ~(kAlignment - 1);
        if (bytes > kBlockBytes - begin) {
            return {static_cast<Value*>(takeFromHeap(bytes)), count};
        }
        usedBytes_ = begin + bytes;
        mostUsedBytes_ = std::max(mostUsedBytes_, usedBytes_);
        return {reinterpret_cast<Value*>(block_.data() + begin), count};
    }

    // Gives everything back.
    void release() {
        usedBytes_ = 0;
        heapBlocks_.reset();
    }

    // Gives back, when it goes, what was taken from the block since it was made. What came from the
    // heap stays until release.
    class Mark {
      public:
        explicit Mark(Scratch& scratch) : scratch_(scratch), usedBytes_(scratch.usedBytes_) {}
        Mark(const Mark&) = delete;
        Mark& operator=(const Mark&) = delete;
        ~Mark() { scratch_.usedBytes_ = usedBytes_; }

      private:
        Scratch& scratch_;
        std::size_t usedBytes_;
    };

  private:
    static constexpr std::size_t kBlockBytes = std::size_t{120} * 1024;
    static constexpr std::size_t kGreatestAlignment = 64;

    // Stands at the beginning of a block from the heap, `bytes` of which follow.
    struct alignas(kGreatestAlignment) HeapBlock {
        std::unique_ptr<HeapBlock> next;
        std::size_t bytes;

        static void operator delete(void* block) {
            ::operator delete (block, std::align_val_t{kGreatestAlignment});
        }
        ~HeapBlock() { WipeMemory(this + 1, bytes); }
    };

    void* takeFromHeap(std::size_t bytes) {
        void* memory =
            ::operator new (sizeof(HeapBlock) + bytes, std::align_val_t{kGreatestAlignment});
        heapBlocks_.reset(new (memory) HeapBlock{std::move(heapBlocks_), bytes});
        return heapBlocks_.get() + 1;
    }

    // Left uninitialised on purpose: every array is written before it is read.
    alignas(kGreatestAlignment) std::array<std::byte, kBlockBytes> block_;
    std::size_t usedBytes_ = 0;
    std::size_t mostUsedBytes_ = 0;  // since construction
    std::unique_ptr<HeapBlock> heapBlocks_;
};

}  // namespace orl::matcher
