#include "tests/support/failing_new.h"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> armed{false};
std::atomic<std::int64_t> failAtAllocation{0};
std::atomic<std::int64_t> allocations{0};
std::atomic<std::int64_t> liveBlocks{0};

void* Allocate(std::size_t bytes) noexcept {
    if (armed.load() && allocations.fetch_add(1) + 1 == failAtAllocation.load()) {
        return nullptr;
    }
    void* block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block != nullptr) {
        liveBlocks.fetch_add(1);
    }
    return block;
}

void* AllocateOrThrow(std::size_t bytes) {
    void* block = Allocate(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void Release(void* block) noexcept {
    if (block != nullptr) {
        liveBlocks.fetch_sub(1);
        std::free(block);
    }
}

}  // namespace

void* operator new(std::size_t bytes) {
    return AllocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return AllocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(bytes);
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
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
    Release(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
    Release(block);
}

namespace orl::test {

std::int64_t LiveBlocks() {
    return liveBlocks.load();
}

FailingNew::FailingNew(std::int64_t failAt) {
    assert(!armed.load());
    allocations = 0;
    failAtAllocation = failAt;
    armed = true;
}

FailingNew::~FailingNew() {
    armed = false;
}

bool FailingNew::Failed() const {
    return failAtAllocation.load() > 0 && allocations.load() >= failAtAllocation.load();
}

std::int64_t FailingNew::Allocations() const {
    return allocations.load();
}

}  // namespace orl::test
