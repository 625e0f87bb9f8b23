#pragma once

// A sequence of 16-bit indices with room for kCapacity of them inside the object and no more, so
// that an entry is reached from the object's own address. Otherwise as IndexArray.

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace orl::matcher {

template <std::size_t kCapacity>
class FixedIndexArray {
  public:
    using value_type = std::uint16_t;
    using iterator = value_type*;
    using const_iterator = const value_type*;

    // Uninitialised: entries are written before they count
    FixedIndexArray() = default;
    FixedIndexArray(const FixedIndexArray&) = delete;
    FixedIndexArray& operator=(const FixedIndexArray&) = delete;

    std::size_t size() const { return size_; }
    static constexpr std::size_t capacity() { return kCapacity; }
    bool empty() const { return size_ == 0; }
    iterator begin() { return entries_.data(); }
    iterator end() { return entries_.data() + size_; }
    const_iterator begin() const { return entries_.data(); }
    const_iterator end() const { return entries_.data() + size_; }
    const value_type* data() const { return entries_.data(); }

    // REQUIRES: i below size().
    value_type& operator[](std::size_t i) {
        assert(i < size_);
        return entries_[i];
    }
    value_type operator[](std::size_t i) const {
        assert(i < size_);
        return entries_[i];
    }

    // Nothing to do: all the room there can be is there. REQUIRES: capacity of at most kCapacity.
    static void reserve([[maybe_unused]] std::size_t capacity) { assert(capacity <= kCapacity); }

    // Appends `count` entries, whose values are not set, and returns the first one.
    // Throws: std::length_error when there is no room for them.
    value_type* Extend(std::size_t count) {
        assert(count <= kCapacity);
        if (size_ > kCapacity - count) {
            throw std::length_error("Too many indices");
        }
        return ExtendInStep(count);
    }

    // Extend for an array that grows in step with another one of its capacity, after that one has
    // found the room. Never throws.
    value_type* ExtendInStep(std::size_t count) {
        assert(count <= kCapacity - size_);
        value_type* const first = entries_.data() + size_;
        size_ += count;
        return first;
    }

    // Throws: std::length_error when there is no room for it.
    void push_back(value_type value) { *Extend(1) = value; }

    // Becomes `count` copies of a value. Throws: std::length_error when there is no room for them.
    void assign(std::size_t count, value_type value) {
        clear();
        std::fill_n(Extend(count), count, value);
    }

    void clear() { size_ = 0; }

  private:
    std::size_t size_ = 0;
    std::array<value_type, kCapacity> entries_;
};

}  // namespace orl::matcher
