#include "adapter/heap_buffer.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <gmock/gmock.h>

#include "adapter/memory_wipe.h"
#include "platform/process_heap.h"
#include "tests/adapter/adapter_test.h"

namespace orl::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HeapBuffer : public AdapterTest {};

TEST_F(HeapBuffer, CopiesBytesToTheProcessHeap) {
    const std::vector<std::uint8_t> bytes = {1, 2, 3, 0, 5};
    PUCHAR copy = adapter::CopyToProcessHeap(bytes.data(), bytes.size());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Bytes(copy, bytes.size()), bytes);
    adapter::WipeAndFree(copy, bytes.size());
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 5", "free 5"));
}

TEST_F(HeapBuffer, AllocatesZeroedBlocks) {
    constexpr SIZE_T kBytes = 100;
    auto* block = static_cast<PUCHAR>(adapter::AllocateZeroed(kBytes));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(Bytes(block, kBytes), std::vector<std::uint8_t>(kBytes, 0));
    adapter::WipeAndFree(block, kBytes);
    EXPECT_THAT(CountingHeap::TakeEvents(), ElementsAre("alloc 100 zeroed", "free 100"));
}

TEST_F(HeapBuffer, WipesABlockBeforeItIsFreed) {
    std::vector<std::uint8_t> bytes(4096, 0xFF);
    PUCHAR copy = adapter::CopyToProcessHeap(bytes.data(), bytes.size());
    ASSERT_NE(copy, nullptr);
    adapter::WipeAndFree(copy, bytes.size());
    EXPECT_EQ(CountingHeap::UnwipedBlocks(), 0U);
}

TEST_F(HeapBuffer, LetsTheWatchedHeapSeeAnUnwipedBlock) {
    // The check of the tests themselves: a block freed as it is counts as unwiped.
    const std::uint8_t byte = 7;
    PUCHAR copy = adapter::CopyToProcessHeap(&byte, 1);
    HeapFree(GetProcessHeap(), 0, copy);
    EXPECT_EQ(CountingHeap::UnwipedBlocks(), 1U);
    CountingHeap::Reset();
}

TEST_F(HeapBuffer, GivesNullWhenMemoryRunsOut) {
    const std::uint8_t byte = 7;
    CountingHeap::FailAfter(0);
    EXPECT_EQ(adapter::CopyToProcessHeap(&byte, 1), nullptr);
    CountingHeap::FailAfter(0);
    EXPECT_EQ(adapter::AllocateZeroed(1), nullptr);
}

TEST_F(HeapBuffer, LeavesNullBlocksAloneWhateverTheirSize) {
    adapter::WipeAndFree(nullptr, 0);
    adapter::WipeAndFree(nullptr, 1000);
    EXPECT_THAT(CountingHeap::TakeEvents(), IsEmpty());
}

TEST(MemoryWipe, ZeroesTheGivenBytesAndNoOther) {
    for (std::size_t size = 0; size <= 64; ++size) {
        std::vector<std::uint8_t> bytes(66, 0xAB);
        adapter::WipeMemory(bytes.data() + 1, size);
        std::vector<std::uint8_t> expected(66, 0xAB);
        std::fill_n(expected.begin() + 1, size, std::uint8_t{0});
        EXPECT_EQ(bytes, expected) << "size " << size;
    }
}

TEST(MemoryWipe, AcceptsNoBytesAtNull) {
    adapter::WipeMemory(nullptr, 0);
}

}  // namespace
}  // namespace orl::test
