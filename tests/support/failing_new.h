#pragma once

// A global operator new that counts and can be told to fail. A program gets it by linking
// orl_failing_new; until a FailingNew exists it behaves as the ordinary one.

#include <cstdint>

namespace orl::test {

// Blocks that operator new gave out in this process and operator delete has not taken back.
std::int64_t LiveBlocks();

// While one lives, the n-th allocation of the process from its construction on fails, once; nothrow
// forms return null. Only one may live at a time.
class FailingNew {
  public:
    // failAt counts from 1; 0 fails none.
    explicit FailingNew(std::int64_t failAt);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    // Whether the allocation that was to fail has been asked for.
    bool Failed() const;
    // Allocations asked for since construction, the failed one included.
    std::int64_t Allocations() const;
};

}  // namespace orl::test
