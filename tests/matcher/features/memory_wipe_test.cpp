#include "matcher/features/memory_wipe.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

TEST(MemoryWipe, ZeroesTheGivenBytesAndNoOther) {
    for (std::size_t size = 0; size < 300; ++size) {
        std::vector<std::uint8_t> bytes(size + 2, 0xA5);
        WipeMemory(bytes.data() + 1, size);
        EXPECT_EQ(bytes.front(), 0xA5) << size;
        EXPECT_EQ(bytes.back(), 0xA5) << size;
        EXPECT_EQ(std::count(bytes.begin() + 1, bytes.end() - 1, 0),
                  static_cast<std::ptrdiff_t>(size));
    }
}

}  // namespace
}  // namespace orl::matcher
