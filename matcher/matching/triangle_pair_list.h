#pragma once

// The triangle pairs of one orientation, in a growing array.

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/pair_test.h"
#include "matcher/matching/scratch.h"

namespace orl::matcher {

// Two triangles that look alike, as indices into the two fingers' lists.
struct alignas(8) TrianglePair {
    PairRank rank;  // kMaxSimilarity less the similarity (1..1024, higher is better)
    std::uint16_t first;
    std::uint16_t second;
};

class TrianglePairList {
  public:
    // An empty list with room for `capacity` pairs; its memory is taken from `scratch`, which must
    // outlive it. Throws: std::bad_alloc.
    TrianglePairList(std::size_t capacity, Scratch& scratch)
        : scratch_(&scratch), room_(scratch.take<TrianglePair>(capacity)) {}

    std::span<TrianglePair> pairs() { return room_.first(size_); }
    std::span<const TrianglePair> pairs() const { return room_.first(size_); }
    std::size_t size() const { return size_; }

    // Makes room for `count` more pairs. Throws: std::bad_alloc; the list stays as it was then.
    void reserveMore(std::size_t count) {
        if (count > room_.size() - size_) {
            const auto grown = scratch_->take<TrianglePair>(2 * room_.size() + count);
            std::copy(
                room_.begin(), room_.begin() + static_cast<std::ptrdiff_t>(size_), grown.begin());
            room_ = grown;
        }
    }

    // Appends the pair if its triangles are alike. REQUIRES: room for one more pair.
    void appendIfAlike(const TrianglePair& pair) {
        assert(size_ < room_.size());
        room_[size_] = pair;
        size_ += static_cast<std::size_t>(pair.rank != kNotAlike);
    }

  private:
    Scratch* scratch_;
    std::span<TrianglePair> room_;
    std::size_t size_ = 0;
};

}  // namespace orl::matcher
