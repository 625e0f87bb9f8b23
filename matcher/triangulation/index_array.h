#pragma once

// A growing sequence of indices that keeps up to kInlineCapacity of them inside the object
// and takes heap memory only for more: a mesh of a finger's points needs none. Pointers and
// iterators stay valid until the array grows beyond its capacity.

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace orl::matcher {

template <std::size_t kInlineCapacity, typename Index = std::uint64_t>
class IndexArray {
  public:
    using value_type = Index;
    using iterator = value_type*;
    using const_iterator = const value_type*;

    // Uninitialised: entries are written before they count
    IndexArray() = default;
    IndexArray(const IndexArray&) = delete;
    IndexArray& operator=(const IndexArray&) = delete;

    std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
    std::size_t capacity() const { return static_cast<std::size_t>(limit_ - begin_); }
    bool empty() const { return end_ == begin_; }
    iterator begin() { return begin_; }
    iterator end() { return end_; }
    const_iterator begin() const { return begin_; }
    const_iterator end() const { return end_; }
    const value_type* data() const { return begin_; }

    // REQUIRES: i below size().
    value_type& operator[](std::size_t i) {
        assert(i < size());
        return begin_[i];
    }
    value_type operator[](std::size_t i) const {
        assert(i < size());
        return begin_[i];
    }

    // Makes room for `capacity` entries in all. Throws: std::bad_alloc.
    void reserve(std::size_t capacity) {
        if (capacity > this->capacity()) {
            Grow(capacity);
        }
    }

    // Appends `count` entries, whose values are not set, and returns the first one.
    // Throws: std::bad_alloc.
    value_type* Extend(std::size_t count) {
        if (count > static_cast<std::size_t>(limit_ - end_)) {
            Grow(std::max(2 * capacity(), size() + count));
        }
        value_type* const first = end_;
        end_ += count;
        return first;
    }

    // The same; see FixedIndexArray. Throws: std::bad_alloc.
    value_type* ExtendInStep(std::size_t count) { return Extend(count); }

    // Throws: std::bad_alloc.
    void push_back(value_type value) { *Extend(1) = value; }

    // Becomes `count` copies of a value. Throws: std::bad_alloc.
    void assign(std::size_t count, value_type value) {
        clear();
        std::fill_n(Extend(count), count, value);
    }

    // Takes the last entry off. REQUIRES: not empty.
    value_type PopBack() {
        assert(!empty());
        return *--end_;
    }

    // Keeps the room.
    void clear() { end_ = begin_; }

  private:
    [[gnu::noinline, gnu::cold]] void Grow(std::size_t capacity) {
        auto room = std::make_unique<value_type[]>(capacity);
        end_ = std::copy(begin_, end_, room.get());
        heap_ = std::move(room);
        begin_ = heap_.get();
        limit_ = begin_ + capacity;
    }

    std::array<value_type, kInlineCapacity> inline_;
    std::unique_ptr<value_type[]> heap_;
    value_type* begin_ = inline_.data();
    value_type* end_ = inline_.data();
    value_type* limit_ = inline_.data() + kInlineCapacity;
};

}  // namespace orl::matcher
