#pragma once

// Bytes that end exactly at a page no one may read, so that a read beyond the end stops the test.

#include <cstddef>
#include <cstdint>
#include <span>

namespace orl::test {

class GuardedBuffer {
  public:
    // Holds a copy of `bytes`, which may be empty. Throws: std::bad_alloc when pages run out.
    explicit GuardedBuffer(std::span<const std::uint8_t> bytes);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // Never null; data() + size() is the first unreadable byte.
    const std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

  private:
    void* pages_ = nullptr;
    std::size_t pagesBytes_ = 0;
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace orl::test
