#pragma once

// The triangle pairs of one orientation, in a growing array.

#include <algorithm>
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
    std::size_t size() const { return size_; }

    // Appends those of the candidates whose triangles are alike in an orientation; `ranks` holds
    // their ranks. Throws: std::bad_alloc; the list stays as it was then.
    void appendAlike(std::span<const Candidate> candidates,
                     const OrientationRanks* ranks,
                     std::size_t orientation) {
        reserveMore(candidates.size());
        std::size_t size = size_;
        for (const Candidate& candidate : candidates) {
            const PairRank rank = (*ranks++)[orientation];
            room_[size] = {rank, candidate.first, candidate.second};
            size += static_cast<std::size_t>(rank != kNotAlike);
        }
        size_ = size;
    }

  private:
    // One more than asked for: a pair is written before it is known to be kept.
    void reserveMore(std::size_t count) {
        if (count >= room_.size() - size_) {
            const auto grown = scratch_->take<TrianglePair>(2 * room_.size() + count + 1);
            std::copy_n(room_.begin(), size_, grown.begin());
            room_ = grown;
        }
    }

    Scratch* scratch_;
    std::span<TrianglePair> room_;
    std::size_t size_ = 0;
};

}  // namespace orl::matcher
