// What a match leaves behind in memory that it has freed: every block but the smallest is looked at
// when it is deleted.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "matcher/api/match_facade.h"
#include "tests/support/record_builder.h"

namespace {

std::atomic<bool> isWatching{false};
std::atomic<std::size_t> blocksSeen{0};
std::atomic<std::size_t> bytesLeft{0};

// Smaller blocks hold counts and addresses: the list of one finger, the positions' codes, a
// message.
constexpr std::size_t kSmallestWatchedBytes = 128;

// What a block may keep: how much of it was used, and the address of another one.
constexpr std::size_t kBytesOfItsOwn = 16;

// A block's size stands before it.
constexpr std::size_t kHeaderBytes = 64;
static_assert(kHeaderBytes % alignof(std::max_align_t) == 0);

void* Allocate(std::size_t bytes, std::size_t alignment) {
    // One more alignment, so that the block can begin at a multiple of it.
    // Zero, so that only what has been written there can be found there.
    auto* const whole = static_cast<std::byte*>(std::calloc(1, bytes + kHeaderBytes + alignment));
    if (whole == nullptr) {
        throw std::bad_alloc();
    }
    const auto end = reinterpret_cast<std::uintptr_t>(whole) + kHeaderBytes;
    std::byte* const block = whole + kHeaderBytes + (alignment - end % alignment) % alignment;
    std::memcpy(block - sizeof(bytes), &bytes, sizeof(bytes));
    std::memcpy(block - sizeof(bytes) - sizeof(whole), &whole, sizeof(whole));
    return block;
}

void Release(void* memory) noexcept {
    if (memory == nullptr) {
        return;
    }
    auto* const block = static_cast<std::byte*>(memory);
    std::size_t bytes = 0;
    std::byte* whole = nullptr;
    std::memcpy(&bytes, block - sizeof(bytes), sizeof(bytes));
    std::memcpy(&whole, block - sizeof(bytes) - sizeof(whole), sizeof(whole));
    if (isWatching && bytes >= kSmallestWatchedBytes) {
        ++blocksSeen;
        const auto zeros = std::count(block, block + bytes, std::byte{0});
        const std::size_t left = bytes - static_cast<std::size_t>(zeros);
        bytesLeft += left > kBytesOfItsOwn ? left : 0;
    }
    std::free(whole);
}

constexpr std::size_t kOrdinaryAlignment = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t bytes) {
    return Allocate(bytes, kOrdinaryAlignment);
}
void* operator new[](std::size_t bytes) {
    return Allocate(bytes, kOrdinaryAlignment);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    Release(block);
}
void operator delete[](void* block, std::size_t /*bytes*/) noexcept {
    Release(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
    Release(block);
}
void operator delete(void* block, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept {
    Release(block);
}

namespace orl::matcher {
namespace {

// Watches what is freed while it lives.
class Watch {
  public:
    Watch() {
        blocksSeen = 0;
        bytesLeft = 0;
        isWatching = true;
    }
    ~Watch() { isWatching = false; }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

std::int32_t Match(const std::vector<std::uint8_t>& probe,
                   const std::vector<std::uint8_t>& candidate,
                   std::string& message) {
    TemplateMatchResult result;
    const Watch watch;
    return matchBuffers(
        probe.data(), probe.size(), candidate.data(), candidate.size(), result, message, 300);
}

TEST(WipedMemory, IsSeenUnwipedByTheWatchItself) {
    const Watch watch;
    {
        const std::vector<std::uint8_t> block(200, 1);
        ASSERT_EQ(block.size(), 200U);
    }
    EXPECT_EQ(blocksSeen, 1U);
    EXPECT_EQ(bytesLeft, 200U);
}

TEST(WipedMemory, HoldsNothingOfTheRecordsAfterAMatch) {
    for (const std::size_t count : {3U, 20U, 48U, 128U}) {
        const auto probe = test::BuildRecord(test::RandomMinutiae(1, count));
        const auto other = test::BuildRecord(test::RandomMinutiae(2, count));
        std::string message;
        EXPECT_EQ(Match(probe, probe, message), ORLFingerMatcher_StatusOk) << count;
        EXPECT_EQ(bytesLeft, 0U) << count << ", genuine";
        EXPECT_EQ(Match(probe, other, message), ORLFingerMatcher_StatusOk) << count;
        EXPECT_EQ(bytesLeft, 0U) << count << ", impostor";
        // The match's memory at least, and both lists of triangles where they are long enough.
        EXPECT_GE(blocksSeen, count < 20 ? 1U : 3U) << count;
    }
}

// All triangles of an even grid with one direction are alike: the block of working memory does not
// hold their pairs.
TEST(WipedMemory, HoldsNothingOfTheRecordsInBlocksBesidesTheFirst) {
    std::vector<test::RecordMinutia> minutiae;
    for (std::uint16_t i = 0; i < 121; ++i) {
        minutiae.push_back({.x = static_cast<std::uint16_t>(20 + 30 * (i % 11)),
                            .y = static_cast<std::uint16_t>(20 + 30 * (i / 11))});
    }
    const auto record = test::BuildRecord(minutiae);
    std::string message;
    EXPECT_EQ(Match(record, record, message), ORLFingerMatcher_StatusOk);
    EXPECT_GT(blocksSeen, 3U);
    EXPECT_EQ(bytesLeft, 0U);
}

TEST(WipedMemory, HoldsNothingOfTheProbeWhenTheCandidateIsNoRecord) {
    const auto probe = test::BuildRecord(test::RandomMinutiae(1, 48));
    const std::vector<std::uint8_t> noRecord(100, 1);
    std::string message;
    EXPECT_EQ(Match(probe, noRecord, message), ORLFingerMatcher_StatusCandidateNotLoaded);
    EXPECT_EQ(blocksSeen, 1U);  // the probe's triangles
    EXPECT_EQ(bytesLeft, 0U);
}

}  // namespace
}  // namespace orl::matcher
