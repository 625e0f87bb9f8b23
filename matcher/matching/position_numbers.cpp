#include "matcher/matching/position_numbers.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace orl::matcher {
namespace {

// A hash table of positions with linear probing. It has a place more than positions, and many more
// where triangles share them as those of a mesh do.
class PositionTable {
  public:
    PositionTable(std::size_t maxPositions, Scratch& scratch)
        : entries_(scratch.take<std::uint32_t>(std::bit_ceil(maxPositions + 1))),
          shift_(kWordBits - static_cast<unsigned>(std::countr_zero(entries_.size()))) {
        std::fill(entries_.begin(), entries_.end(), kFree);
    }

    // The position's number; the next free one when it has none yet.
    std::uint16_t numberOf(const TriangleVertex& vertex) {
        constexpr unsigned kByteBits = 8;
        const std::uint32_t key = (std::uint32_t{vertex.x} << kByteBits | vertex.y) + 1;
        std::size_t place = key * kMultiplier >> shift_;
        while (entries_[place] >> kNumberBits != key) {
            if (entries_[place] == kFree) {
                entries_[place] = key << kNumberBits | count_++;
                break;
            }
            place = (place + 1) & (entries_.size() - 1);
        }
        return static_cast<std::uint16_t>(entries_[place] % (1U << kNumberBits));
    }

    std::size_t count() const { return count_; }

  private:
    static constexpr unsigned kWordBits = 32;
    static constexpr unsigned kNumberBits = 15;
    static constexpr std::uint32_t kMultiplier = 0x9E3779B1;  // 2^32 over the golden ratio
    static constexpr std::uint32_t kFree = 0;

    // 1 to 65536 for the position above, its number below.
    std::span<std::uint32_t> entries_;
    unsigned shift_;
    std::uint32_t count_ = 0;
};

PositionBits bitsOf(const std::array<std::uint16_t, kCorners>& numbers) {
    static constexpr auto kBits = [] {
        std::array<PositionBits, kSharedPositionBit + 1> bits{};
        for (std::size_t number = 0; number < bits.size(); ++number) {
            bits[number] = positionBit(number);
        }
        return bits;
    }();
    const auto bit = [](std::size_t number) { return kBits[std::min(number, kSharedPositionBit)]; };
    return bit(numbers[0]) | bit(numbers[1]) | bit(numbers[2]);
}

}  // namespace

PositionNumbers positionNumbers(std::span<const TriangleFeature> triangles, Scratch& scratch) {
    assert(triangles.size() <= kMaxNumberedTriangles);
    const auto numbers = scratch.take<std::array<std::uint16_t, kCorners>>(triangles.size());
    const auto bits = scratch.take<PositionBits>(triangles.size());
    PositionTable table(kCorners * triangles.size(), scratch);
    for (std::size_t t = 0; t < triangles.size(); ++t) {
        const auto& [a, b, c] = triangles[t].vertices;
        numbers[t] = {table.numberOf(a), table.numberOf(b), table.numberOf(c)};
        bits[t] = bitsOf(numbers[t]);
    }
    return {numbers, bits, table.count()};
}

}  // namespace orl::matcher
