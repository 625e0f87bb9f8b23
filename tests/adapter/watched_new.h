#pragma once

// Watches the general heap's arrays for tests: a program that links watched_new.cpp gets its array
// forms of operator new and delete from there.

#include <cstddef>

namespace orl::test {

class WatchedNew {
  public:
    // Forgets all watched blocks, counts and planned failures.
    static void Reset();

    // Makes the allocation by the nothrow form after `successes` more ones give null, once.
    static void FailNothrowAfter(std::size_t successes);

    // From now on the block at `block` is looked at when it is deleted.
    static void Watch(const void* block, std::size_t bytes);

    // Watched blocks that have not been deleted.
    static std::size_t LiveBlocks();

    // Watched blocks that held a byte other than zero when they were deleted.
    static std::size_t UnwipedBlocks();

    // Nothrow allocations that were given and not deleted since, since the reset.
    static std::size_t LiveNothrowBlocks();
};

}  // namespace orl::test
