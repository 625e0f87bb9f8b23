#include "platform/process_heap.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace orl::test {
namespace {

constexpr SIZE_T kSizes[] = {1, 7, 8, 15, 16, 17, 32, 100, 4096, 1U << 20};

TEST(ProcessHeap, IsOneForTheProcess) {
    EXPECT_NE(GetProcessHeap(), nullptr);
    EXPECT_EQ(GetProcessHeap(), GetProcessHeap());
}

TEST(ProcessHeap, AlignsItsBlocksTo16Bytes) {
    for (const SIZE_T size : kSizes) {
        void* block = HeapAlloc(GetProcessHeap(), 0, size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U) << size << " bytes";
        EXPECT_NE(HeapFree(GetProcessHeap(), 0, block), FALSE);
    }
}

TEST(ProcessHeap, FillsABlockWithZerosWhenAsked) {
    for (const SIZE_T size : kSizes) {
        // A dirty block of the same size, so that a fresh one would not be zero by chance.
        void* dirty = HeapAlloc(GetProcessHeap(), 0, size);
        ASSERT_NE(dirty, nullptr);
        std::fill_n(static_cast<volatile std::uint8_t*>(dirty), size, std::uint8_t{0xFF});
        HeapFree(GetProcessHeap(), 0, dirty);

        auto* block =
            static_cast<std::uint8_t*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + size, [](std::uint8_t b) { return b == 0; }))
            << size << " bytes";
        HeapFree(GetProcessHeap(), 0, block);
    }
}

TEST(ProcessHeap, GivesABlockForNoBytes) {
    for (const DWORD flags : {DWORD{0}, DWORD{HEAP_ZERO_MEMORY}}) {
        void* block = HeapAlloc(GetProcessHeap(), flags, 0);
        EXPECT_NE(block, nullptr);
        HeapFree(GetProcessHeap(), 0, block);
    }
}

TEST(ProcessHeap, TakesNullBack) {
    HeapFree(GetProcessHeap(), 0, nullptr);
}

}  // namespace
}  // namespace orl::test
