#include "tests/support/counting_heap.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/process_heap.h"

// The linker's --wrap option sends the program's calls to the __wrap_ names and offers the heap
// itself under the __real_ names. Windows code calls through import pointers, so there the pointers
// are replaced. NOLINTBEGIN(bugprone-reserved-identifier): the linker prescribes the names.
#ifdef _WIN32
extern "C" {
extern LPVOID(WINAPI* const __real___imp_HeapAlloc)(HANDLE, DWORD, SIZE_T);
extern BOOL(WINAPI* const __real___imp_HeapFree)(HANDLE, DWORD, LPVOID);
}
#define ORL_REAL_HEAP_ALLOC __real___imp_HeapAlloc
#define ORL_REAL_HEAP_FREE __real___imp_HeapFree
#else
extern "C" {
LPVOID __real_HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) noexcept;
BOOL __real_HeapFree(HANDLE heap, DWORD flags, LPVOID block) noexcept;
}
#define ORL_REAL_HEAP_ALLOC __real_HeapAlloc
#define ORL_REAL_HEAP_FREE __real_HeapFree
#endif
// NOLINTEND(bugprone-reserved-identifier)

namespace orl::test {
namespace {

struct HeapState {
    std::mutex changes;
    std::map<void*, std::size_t> liveBlocks;  // address to size in bytes
    std::vector<std::string> events;
    std::optional<std::size_t> allocationsUntilFailure;
    std::size_t unwipedBlocks = 0;
};

HeapState& State() {
    static HeapState state;
    return state;
}

bool IsTimeToFail(HeapState& state) {
    if (!state.allocationsUntilFailure.has_value()) {
        return false;
    }
    if (*state.allocationsUntilFailure == 0) {
        state.allocationsUntilFailure.reset();
        return true;
    }
    --*state.allocationsUntilFailure;
    return false;
}

// How an event tells flags that the adapter has no business with, and a heap not the process's.
std::string Oddities(HANDLE heap, DWORD flags) {
    return (flags == 0 ? "" : " flags " + std::to_string(flags)) +
           (heap == GetProcessHeap() ? "" : " of another heap");
}

LPVOID CountedAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    HeapState& state = State();
    const std::scoped_lock lock(state.changes);
    const bool zeroed = (flags & HEAP_ZERO_MEMORY) != 0;
    std::string event = "alloc " + std::to_string(bytes) + (zeroed ? " zeroed" : "") +
                        Oddities(heap, flags & ~DWORD{HEAP_ZERO_MEMORY});
    void* block = IsTimeToFail(state) ? nullptr : ORL_REAL_HEAP_ALLOC(heap, flags, bytes);
    if (block == nullptr) {
        state.events.push_back(event + " failed");
        return nullptr;
    }
    if (!zeroed) {
        std::memset(block, kUninitialisedByte, bytes);
    }
    state.liveBlocks[block] = bytes;
    state.events.push_back(std::move(event));
    return block;
}

BOOL CountedFree(HANDLE heap, DWORD flags, LPVOID block) {
    HeapState& state = State();
    const std::scoped_lock lock(state.changes);
    const auto found = state.liveBlocks.find(block);
    if (found == state.liveBlocks.end()) {
        state.events.emplace_back("free unknown");
        return ORL_REAL_HEAP_FREE(heap, flags, block);
    }
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    if (std::any_of(bytes, bytes + found->second, [](std::uint8_t b) { return b != 0; })) {
        ++state.unwipedBlocks;
    }
    state.events.push_back("free " + std::to_string(found->second) + Oddities(heap, flags));
    state.liveBlocks.erase(found);
    return ORL_REAL_HEAP_FREE(heap, flags, block);
}

}  // namespace

void CountingHeap::Reset() {
    HeapState& state = State();
    const std::scoped_lock lock(state.changes);
    state.liveBlocks.clear();
    state.events.clear();
    state.allocationsUntilFailure.reset();
    state.unwipedBlocks = 0;
}

void CountingHeap::FailAfter(std::size_t successes) {
    const std::scoped_lock lock(State().changes);
    State().allocationsUntilFailure = successes;
}

std::size_t CountingHeap::LiveBlocks() {
    const std::scoped_lock lock(State().changes);
    return State().liveBlocks.size();
}

std::size_t CountingHeap::UnwipedBlocks() {
    const std::scoped_lock lock(State().changes);
    return State().unwipedBlocks;
}

std::vector<std::string> CountingHeap::TakeEvents() {
    const std::scoped_lock lock(State().changes);
    return std::exchange(State().events, {});
}

}  // namespace orl::test

// NOLINTBEGIN(bugprone-reserved-identifier): the linker prescribes the names.
#ifdef _WIN32
namespace {

LPVOID WINAPI WrappedAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    return orl::test::CountedAlloc(heap, flags, bytes);
}

BOOL WINAPI WrappedFree(HANDLE heap, DWORD flags, LPVOID block) {
    return orl::test::CountedFree(heap, flags, block);
}

}  // namespace

extern "C" {
LPVOID(WINAPI* __wrap___imp_HeapAlloc)(HANDLE, DWORD, SIZE_T) = WrappedAlloc;
BOOL(WINAPI* __wrap___imp_HeapFree)(HANDLE, DWORD, LPVOID) = WrappedFree;
}
#else
extern "C" {
LPVOID __wrap_HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) noexcept {
    return orl::test::CountedAlloc(heap, flags, bytes);
}
BOOL __wrap_HeapFree(HANDLE heap, DWORD flags, LPVOID block) noexcept {
    return orl::test::CountedFree(heap, flags, block);
}
}
#endif
// NOLINTEND(bugprone-reserved-identifier)
