#pragma once

// The pairs of triangles that a search has found, in a growing array.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/candidate_ranks.h"
#include "matcher/matching/scratch.h"

namespace orl::matcher {

class CandidateList {
  public:
    // An empty list; its memory is taken from `scratch`, which must outlive it.
    // Throws: std::bad_alloc.
    explicit CandidateList(Scratch& scratch)
        : scratch_(&scratch), room_(scratch.take<Candidate>(kInitialCapacity)) {}

    std::span<const Candidate> candidates() const { return room_.first(size_); }

    // Adds the pairs of triangle `first` with those of the stretch from `offset` on that were found
    // for each cyclic order. Throws: std::bad_alloc; the list stays as it was then.
    void add(std::size_t first,
             std::size_t offset,
             const std::array<TriangleBits, kCorners>& found) {
        constexpr std::size_t kWordBits = 64;
        reserveStretch();
        for (std::size_t word = 0; word < kTrianglesPerStretch / kWordBits; ++word) {
            addWord(
                first, offset + word * kWordBits, {found[0][word], found[1][word], found[2][word]});
        }
    }

  private:
    static constexpr std::size_t kInitialCapacity = 1024;  // rarely more

    void reserveStretch() {
        if (room_.size() - size_ < kTrianglesPerStretch) {
            const auto grown = scratch_->take<Candidate>(2 * room_.size());
            std::copy_n(room_.begin(), size_, grown.begin());
            room_ = grown;
        }
    }

    void addWord(std::size_t first,
                 std::size_t offset,
                 const std::array<std::uint64_t, kCorners>& found) {
        Candidate* next = room_.data() + size_;
        for (std::uint64_t left = found[0] | found[1] | found[2]; left != 0; left &= left - 1) {
            const auto bit = static_cast<unsigned>(std::countr_zero(left));
            const std::uint64_t orders = (found[0] >> bit & 1U) | (found[1] >> bit & 1U) << 1U |
                                         (found[2] >> bit & 1U) << 2U;
            *next++ = {static_cast<std::uint16_t>(first),
                       static_cast<std::uint16_t>(offset + bit),
                       static_cast<std::uint32_t>(orders)};
        }
        size_ = static_cast<std::size_t>(next - room_.data());
    }

    Scratch* scratch_;
    std::span<Candidate> room_;
    std::size_t size_ = 0;
};

}  // namespace orl::matcher
