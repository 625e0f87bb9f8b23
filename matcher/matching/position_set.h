#pragma once

// A set of grid positions, one bit each.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

class PositionSet {
  public:
    PositionSet() : words_{} {}

    // Adds the vertex's position; true when it was not in the set.
    bool insert(const TriangleVertex& vertex) {
        std::uint64_t& word = wordOf(vertex);
        const std::uint64_t bit = bitOf(vertex);
        const bool isNew = (word & bit) == 0;
        word |= bit;
        return isNew;
    }

    void erase(const TriangleVertex& vertex) { wordOf(vertex) &= ~bitOf(vertex); }

  private:
    static constexpr std::size_t kPositions = 256 * 256;
    static constexpr std::size_t kWordBits = 64;

    // Rows of 256 positions, four words each.
    std::uint64_t& wordOf(const TriangleVertex& vertex) {
        return words_[vertex.y * std::size_t{4} + vertex.x / kWordBits];
    }
    static std::uint64_t bitOf(const TriangleVertex& vertex) {
        return std::uint64_t{1} << (vertex.x % kWordBits);
    }

    std::array<std::uint64_t, kPositions / kWordBits> words_;
};

}  // namespace orl::matcher
