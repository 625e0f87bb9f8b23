#pragma once

// Watches the process heap for tests. A test program that links orl_counting_heap has its calls of
// HeapAlloc and HeapFree diverted to this one by the linker; the code under test is the shipped
// one.
//
// Blocks that are not asked to be zero-filled are handed out full of kUninitialisedByte. When a
// block is freed, the heap looks whether all its bytes are zero by then. The state is the
// process's; tests reset it. Safe from any thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orl::test {

inline constexpr std::uint8_t kUninitialisedByte = 0xA5;

class CountingHeap {
  public:
    // Forgets all blocks, events and planned failures.
    static void Reset();

    // Makes the allocation after `successes` more ones fail, once.
    static void FailAfter(std::size_t successes);

    // Blocks allocated since the reset and not yet freed.
    static std::size_t LiveBlocks();

    // Freed blocks that held a byte other than zero.
    static std::size_t UnwipedBlocks();

    // What happened since the reset, or since the last call: "alloc 56 zeroed", "alloc 40",
    // "alloc 40 failed", "free 40", and "free unknown" for a block of before the reset. Flags but
    // that for zeros, and a heap but the process's, are told behind the size.
    static std::vector<std::string> TakeEvents();
};

}  // namespace orl::test
