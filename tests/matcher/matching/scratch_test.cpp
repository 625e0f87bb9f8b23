#include "matcher/matching/scratch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

bool LiesIn(const Scratch& scratch, const void* place) {
    const auto* begin = reinterpret_cast<const std::byte*>(&scratch);
    const auto* byte = static_cast<const std::byte*>(place);
    return byte >= begin && byte < begin + sizeof(Scratch);
}

std::uintptr_t AddressOf(const void* place) {
    return reinterpret_cast<std::uintptr_t>(place);
}

TEST(Scratch, GivesArraysOfTheAskedLengthAlignedTo16Bytes) {
    const auto scratch = std::make_unique<Scratch>();
    for (std::size_t count = 1; count < 40; ++count) {
        const auto bytes = scratch->take<std::uint8_t>(count);
        const auto floats = scratch->take<float>(count);
        EXPECT_EQ(bytes.size(), count);
        EXPECT_EQ(floats.size(), count);
        EXPECT_EQ(AddressOf(bytes.data()) % 16, 0U);
        EXPECT_EQ(AddressOf(floats.data()) % 16, 0U);
    }
}

struct alignas(64) WideValue {
    std::uint64_t values[8];
};

TEST(Scratch, KeepsToAValuesOwnAlignmentWhenItIsGreater) {
    const auto scratch = std::make_unique<Scratch>();
    for (int i = 0; i < 5; ++i) {
        scratch->take<std::uint8_t>(1);
        EXPECT_EQ(AddressOf(scratch->take<WideValue>(2).data()) % 64, 0U);
    }
}

TEST(Scratch, GivesArraysThatDoNotOverlap) {
    const auto scratch = std::make_unique<Scratch>();
    std::vector<std::span<std::uint32_t>> arrays;
    for (std::uint32_t i = 0; i < 200; ++i) {
        arrays.push_back(scratch->take<std::uint32_t>(1 + i % 37));
        std::fill(arrays.back().begin(), arrays.back().end(), i);
    }
    for (std::uint32_t i = 0; i < 200; ++i) {
        for (const std::uint32_t value : arrays[i]) {
            ASSERT_EQ(value, i);
        }
    }
}

TEST(Scratch, TakesSmallArraysFromItsOwnBlock) {
    const auto scratch = std::make_unique<Scratch>();
    EXPECT_TRUE(LiesIn(*scratch, scratch->take<std::uint64_t>(1000).data()));
    EXPECT_TRUE(LiesIn(*scratch, scratch->take<std::uint8_t>(1).data()));
}

TEST(Scratch, SpillsToTheHeapWhenItsBlockIsFull) {
    const auto scratch = std::make_unique<Scratch>();
    const auto inBlock = scratch->take<std::uint8_t>(80 * 1024);
    const auto spilled = scratch->take<std::uint8_t>(300 * 1024);
    EXPECT_TRUE(LiesIn(*scratch, inBlock.data()));
    EXPECT_FALSE(LiesIn(*scratch, spilled.data()));
    std::fill(inBlock.begin(), inBlock.end(), std::uint8_t{1});
    std::fill(spilled.begin(), spilled.end(), std::uint8_t{2});
    EXPECT_EQ(std::accumulate(inBlock.begin(), inBlock.end(), 0), 80 * 1024);
    EXPECT_EQ(std::accumulate(spilled.begin(), spilled.end(), 0), 2 * 300 * 1024);
}

TEST(Scratch, StartsAnewAfterARelease) {
    const auto scratch = std::make_unique<Scratch>();
    const auto* first = scratch->take<std::uint32_t>(10).data();
    scratch->take<std::uint8_t>(500 * 1024);  // from the heap, given back
    scratch->release();
    EXPECT_EQ(scratch->take<std::uint32_t>(10).data(), first);
    scratch->release();
    scratch->release();
    EXPECT_EQ(scratch->take<std::uint32_t>(10).data(), first);
}

TEST(Scratch, TakesBackWhatWasTakenSinceAMark) {
    const auto scratch = std::make_unique<Scratch>();
    const auto kept = scratch->take<std::uint32_t>(10);
    std::fill(kept.begin(), kept.end(), 7U);
    const std::uint32_t* taken = nullptr;
    {
        const Scratch::Mark mark(*scratch);
        taken = scratch->take<std::uint32_t>(10).data();
        const Scratch::Mark inner(*scratch);
        scratch->take<std::uint8_t>(500 * 1024);  // from the heap
    }
    EXPECT_EQ(scratch->take<std::uint32_t>(10).data(), taken);
    EXPECT_EQ(std::count(kept.begin(), kept.end(), 7U), 10);
}

TEST(Scratch, FillsItsBlockToTheLastByte) {
    const auto scratch = std::make_unique<Scratch>();
    std::size_t taken = 0;
    while (LiesIn(*scratch, scratch->take<std::uint8_t>(16).data())) {
        ++taken;
    }
    EXPECT_EQ(taken, 120 * 1024 / 16);
    EXPECT_FALSE(LiesIn(*scratch, scratch->take<std::uint8_t>(1).data()));
}

// Its own storage, looked at after its end.
TEST(Scratch, WipesWhatWasUsedOfItsBlock) {
    const auto storage = std::make_unique<std::byte[]>(sizeof(Scratch) + alignof(Scratch));
    void* place = storage.get();
    std::size_t room = sizeof(Scratch) + alignof(Scratch);
    std::align(alignof(Scratch), sizeof(Scratch), place, room);
    auto* scratch = new (place) Scratch;
    {
        const Scratch::Mark mark(*scratch);
        const auto marked = scratch->take<std::uint8_t>(3000);
        std::fill(marked.begin(), marked.end(), std::uint8_t{1});
    }
    const auto last = scratch->take<std::uint8_t>(100);
    std::fill(last.begin(), last.end(), std::uint8_t{1});
    const std::byte* begin = reinterpret_cast<const std::byte*>(last.data());
    scratch->~Scratch();
    EXPECT_EQ(std::count(begin, begin + 3000, std::byte{0}), 3000);
}

TEST(Scratch, GivesAnEmptyArrayOnDemand) {
    const auto scratch = std::make_unique<Scratch>();
    EXPECT_TRUE(scratch->take<std::uint32_t>(0).empty());
}

}  // namespace
}  // namespace orl::matcher
