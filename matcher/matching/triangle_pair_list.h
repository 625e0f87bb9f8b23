#pragma once

// The triangle pairs of one orientation, in a growing array.

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/candidate_ranks.h"
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
    // An empty list with room for some `capacity` pairs; its memory is taken from `scratch`, which
    // must outlive it. Throws: std::bad_alloc.
    TrianglePairList(std::size_t capacity, Scratch& scratch)
        : scratch_(&scratch), room_(scratch.take<TrianglePair>(capacity)) {}

    std::span<TrianglePair> pairs() { return room_.first(size_); }
    std::span<const TrianglePair> pairs() const { return room_.first(size_); }

    // Makes room for `count` more pairs and one besides. Throws: std::bad_alloc; the list stays as
    // it was then.
    void reserveMore(std::size_t count) {
        if (count >= room_.size() - size_) {
            const auto grown = scratch_->take<TrianglePair>(2 * room_.size() + count + 1);
            std::copy_n(room_.begin(), size_, grown.begin());
            room_ = grown;
        }
    }

    // Where the next pair goes, and to how many the list has grown by what was written there.
    TrianglePair* end() { return room_.data() + size_; }
    void growTo(const TrianglePair* end) {
        size_ = static_cast<std::size_t>(end - room_.data());
        assert(size_ < room_.size());
    }

  private:
    Scratch* scratch_;
    std::span<TrianglePair> room_;
    std::size_t size_ = 0;
};

// Appends to each orientation's list those of the candidates whose triangles are alike in it;
// `ranks` holds the candidates' ranks. Throws: std::bad_alloc; no list has changed then.
void appendAlike(std::array<TrianglePairList, kOrientations>& lists,
                 std::span<const Candidate> candidates,
                 const OrientationRanks* ranks);

}  // namespace orl::matcher
