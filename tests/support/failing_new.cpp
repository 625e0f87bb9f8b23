#include "tests/support/failing_new.h"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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

// Blocks of a greater alignment lie somewhere within an ordinary one, whose address stands before
// them.
void* AllocateAligned(std::size_t bytes, std::align_val_t alignment) noexcept {
    const auto boundary = static_cast<std::size_t>(alignment);
    void* whole = Allocate(bytes + boundary + sizeof(void*));
    if (whole == nullptr) {
        return nullptr;
    }
    const auto first = reinterpret_cast<std::uintptr_t>(whole) + sizeof(void*);
    const std::uintptr_t padding = (boundary - first % boundary) % boundary;
    std::byte* block = static_cast<std::byte*>(whole) + sizeof(void*) + padding;
    std::memcpy(block - sizeof(void*), &whole, sizeof(void*));
    return block;
}

void* AllocateAlignedOrThrow(std::size_t bytes, std::align_val_t alignment) {
    void* block = AllocateAligned(bytes, alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void ReleaseAligned(void* block) noexcept {
    if (block != nullptr) {
        void* whole = nullptr;
        std::memcpy(&whole, static_cast<std::byte*>(block) - sizeof(void*), sizeof(void*));
        Release(whole);
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

void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return AllocateAlignedOrThrow(bytes, alignment);
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return AllocateAlignedOrThrow(bytes, alignment);
}
void* operator new(std::size_t bytes,
                   std::align_val_t alignment,
                   const std::nothrow_t& /*tag*/) noexcept {
    return AllocateAligned(bytes, alignment);
}
void* operator new[](std::size_t bytes,
                     std::align_val_t alignment,
                     const std::nothrow_t& /*tag*/) noexcept {
    return AllocateAligned(bytes, alignment);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
    ReleaseAligned(block);
}
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept {
    ReleaseAligned(block);
}
void operator delete(void* block, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept {
    ReleaseAligned(block);
}
void operator delete[](void* block,
                       std::size_t /*bytes*/,
                       std::align_val_t /*alignment*/) noexcept {
    ReleaseAligned(block);
}
void operator delete(void* block,
                     std::align_val_t /*alignment*/,
                     const std::nothrow_t& /*tag*/) noexcept {
    ReleaseAligned(block);
}
void operator delete[](void* block,
                       std::align_val_t /*alignment*/,
                       const std::nothrow_t& /*tag*/) noexcept {
    ReleaseAligned(block);
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
