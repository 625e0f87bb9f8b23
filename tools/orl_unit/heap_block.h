#pragma once

// A block of the process heap that an adapter has handed over; wiped and freed at the end.

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/process_heap.h"
#include "tools/orl_unit/secret_bytes.h"

namespace orl::unit {

class HeapBlock {
  public:
    // Takes over a block of HeapAlloc, or null.
    HeapBlock(void* block, std::size_t byteCount) : block_(block), byteCount_(byteCount) {}
    HeapBlock(const HeapBlock&) = delete;
    HeapBlock& operator=(const HeapBlock&) = delete;
    ~HeapBlock() {
        if (block_ != nullptr) {
            wipeMemory(block_, byteCount_);
            HeapFree(GetProcessHeap(), 0, block_);
        }
    }

    [[nodiscard]] std::span<const std::uint8_t> bytes() const {
        return {static_cast<const std::uint8_t*>(block_), byteCount_};
    }

  private:
    void* block_;
    std::size_t byteCount_;
};

}  // namespace orl::unit
