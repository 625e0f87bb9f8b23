#include "matcher/matching/candidate_index.h"

#include <algorithm>
#include <array>

namespace orl::matcher {
namespace {

// Positions in a triangle code of the bytes that are indexed: all that lie on a circle.
constexpr std::array<std::size_t, 9> kIndexedBytes = {0, 1, 2, 4, 5, 6, 8, 9, 10};

constexpr std::size_t kStepsPerCell = 8;
constexpr std::size_t kCells = 256 / kStepsPerCell;

// Two bytes whose circular difference is at most 34 + 3 lie at most this many cells apart: from one
// end of a cell of 8 to 37 steps beyond the other, and one more where the circle of 255 closes, are
// 45 steps, which begin in the fifth cell on.
constexpr std::size_t kReachCells = 5;

std::size_t cellOf(std::uint8_t byte) {
    return byte / kStepsPerCell;
}

void insert(TriangleBits& set, std::size_t bit) {
    constexpr std::size_t kWordBits = 64;
    (bit < kWordBits ? set.low : set.high) |= std::uint64_t{1} << (bit % kWordBits);
}

// Turns sets of what lies in each cell into sets of what lies within reach of it.
void widen(std::span<TriangleBits> cells) {
    // Sets of what lies in the 1, 2, 4 and 8 cells from one on; the cells stand there a second time
    // behind the last one, as far as a reach goes, so that no index wraps.
    constexpr std::size_t kWidth = 2 * kReachCells + 1;
    constexpr std::size_t kLength = kCells + kWidth - 1;
    std::array<TriangleBits, kLength> sets;
    for (std::size_t i = 0; i < kLength; ++i) {
        sets[i] = cells[(i + kCells - kReachCells) % kCells];
    }
    for (std::size_t i = 0; i + 1 < kLength; ++i) {
        sets[i] = sets[i] | sets[i + 1];
    }
    for (std::size_t i = 0; i + 3 < kLength; ++i) {
        sets[i] = sets[i] | sets[i + 2];
    }
    for (std::size_t i = 0; i + 7 < kLength; ++i) {
        sets[i] = sets[i] | sets[i + 4];
    }
    for (std::size_t cell = 0; cell < kCells; ++cell) {
        cells[cell] = sets[cell] | sets[cell + kWidth - 8];
    }
}

}  // namespace

CandidateIndex::CandidateIndex(const OrientedFinger& finger, Scratch& scratch)
    : stretchCount_((finger.triangles.size() + kTrianglesPerStretch - 1) / kTrianglesPerStretch),
      sets_(scratch.take<TriangleBits>(kIndexedBytes.size() * stretchCount_ * kCells)) {
    std::fill(sets_.begin(), sets_.end(), TriangleBits{});
    for (std::size_t u = 0; u < finger.triangles.size(); ++u) {
        const std::size_t stretch = u / kTrianglesPerStretch;
        const std::size_t bit = u % kTrianglesPerStretch;
        for (std::size_t i = 0; i < kIndexedBytes.size(); ++i) {
            const auto cells = sets_.subspan((i * stretchCount_ + stretch) * kCells, kCells);
            if (finger.oriented[u].isIrregular) {
                std::for_each(cells.begin(), cells.end(), [bit](auto& set) { insert(set, bit); });
            } else {
                insert(cells[cellOf(finger.codes[u][0].bytes[kIndexedBytes[i]])], bit);
            }
        }
    }
    for (std::size_t first = 0; first < sets_.size(); first += kCells) {
        widen(sets_.subspan(first, kCells));
    }
}

TriangleBits CandidateIndex::find(const TriangleCode& code, std::size_t stretch) const {
    const TriangleBits* sets = sets_.data() + stretch * kCells;
    TriangleBits found{~std::uint64_t{0}, ~std::uint64_t{0}};
    for (const std::size_t byte : kIndexedBytes) {
        found = found & sets[cellOf(code.bytes[byte])];
        sets += stretchCount_ * kCells;
    }
    return found;
}

}  // namespace orl::matcher
