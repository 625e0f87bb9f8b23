#include "tests/adapter/watched_new.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>

namespace {

constexpr std::size_t kMaxBlocks = 16;  // far more than any test has alive at once

struct Block {
    const void* address = nullptr;
    std::size_t bytes = 0;
    bool watched = false;
};

// Fixed arrays, since nothing here may allocate.
struct WatchState {
    std::mutex changes;
    std::array<Block, kMaxBlocks> blocks = {};
    std::optional<std::size_t> allocationsUntilFailure;
    std::size_t unwipedBlocks = 0;
};

WatchState& State() {
    static WatchState state;
    return state;
}

Block* Find(WatchState& state, const void* address) {
    auto* const found = std::find_if(state.blocks.begin(),
                                     state.blocks.end(),
                                     [address](const Block& b) { return b.address == address; });
    return found == state.blocks.end() ? nullptr : found;
}

bool IsZero(const void* block, std::size_t bytes) {
    const auto* start = static_cast<const std::uint8_t*>(block);
    return std::all_of(start, start + bytes, [](std::uint8_t b) { return b == 0; });
}

void* Allocate(std::size_t bytes) noexcept {
    return std::malloc(bytes == 0 ? 1 : bytes);
}

void* AllocateNothrow(std::size_t bytes) noexcept {
    WatchState& state = State();
    const std::scoped_lock lock(state.changes);
    if (state.allocationsUntilFailure == std::size_t{0}) {
        state.allocationsUntilFailure.reset();
        return nullptr;
    }
    if (state.allocationsUntilFailure.has_value()) {
        --*state.allocationsUntilFailure;
    }
    void* block = Allocate(bytes);
    if (Block* slot = Find(state, nullptr); slot != nullptr && block != nullptr) {
        *slot = {.address = block, .bytes = bytes, .watched = false};
    }
    return block;
}

void Release(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    WatchState& state = State();
    const std::scoped_lock lock(state.changes);
    if (Block* known = Find(state, block); known != nullptr) {
        if (known->watched && !IsZero(block, known->bytes)) {
            ++state.unwipedBlocks;
        }
        *known = {};
    }
    std::free(block);
}

std::size_t CountBlocks(bool onlyWatched) {
    WatchState& state = State();
    const std::scoped_lock lock(state.changes);
    return static_cast<std::size_t>(
        std::count_if(state.blocks.begin(), state.blocks.end(), [onlyWatched](const Block& b) {
            return b.address != nullptr && (b.watched || !onlyWatched);
        }));
}

}  // namespace

void* operator new[](std::size_t bytes) {
    void* block = Allocate(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateNothrow(bytes);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete[](void* block, std::size_t /*bytes*/) noexcept {
    Release(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    Release(block);
}

namespace orl::test {

void WatchedNew::Reset() {
    WatchState& state = State();
    const std::scoped_lock lock(state.changes);
    state.blocks = {};
    state.allocationsUntilFailure.reset();
    state.unwipedBlocks = 0;
}

void WatchedNew::FailNothrowAfter(std::size_t successes) {
    const std::scoped_lock lock(State().changes);
    State().allocationsUntilFailure = successes;
}

void WatchedNew::Watch(const void* block, std::size_t bytes) {
    const std::scoped_lock lock(State().changes);
    Block* slot = Find(State(), block);
    if (slot == nullptr) {
        slot = Find(State(), nullptr);
    }
    *slot = {.address = block, .bytes = bytes, .watched = true};
}

std::size_t WatchedNew::LiveBlocks() {
    return CountBlocks(true);
}

std::size_t WatchedNew::UnwipedBlocks() {
    const std::scoped_lock lock(State().changes);
    return State().unwipedBlocks;
}

std::size_t WatchedNew::LiveNothrowBlocks() {
    return CountBlocks(false);
}

}  // namespace orl::test
