#include "matcher/matching/candidate_index.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace orl::matcher {
namespace {

constexpr std::array<std::size_t, 3> kCircularGroups = {
    kTurnGroup, kNextEdgeGroup, kPreviousEdgeGroup};

constexpr std::size_t kWordBits = 64;

std::uint32_t sidesWord(const std::uint8_t* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Bits of the first `count` triangles of a stretch.
TriangleBits firstBits(std::size_t count) {
    const auto lowBits = [](std::size_t bits) {
        return bits >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
    };
    return TriangleBits{lowBits(count), count > kWordBits ? lowBits(count - kWordBits) : 0};
}

}  // namespace

CandidateIndex::Query::Query(const TriangleCode& code)
    : sides_(sidesWord(code.bytes.data() + kSideGroup)) {
    for (std::size_t group = 0; group < kCircularGroups.size(); ++group) {
        for (std::size_t j = 0; j < kCorners; ++j) {
            cells_[group][j] = cellOf(code.bytes[kCircularGroups[group] + j]);
        }
    }
}

CandidateIndex::CandidateIndex(const OrientedFinger& finger, Scratch& scratch)
    : stretches_(scratch.take<Stretch>((finger.triangles.size() + kTrianglesPerStretch - 1) /
                                       kTrianglesPerStretch)) {
    std::fill(stretches_.begin(), stretches_.end(), Stretch{});
    for (std::size_t u = 0; u < finger.triangles.size(); ++u) {
        Stretch& stretch = stretches_[u / kTrianglesPerStretch];
        const std::size_t index = u % kTrianglesPerStretch;
        stretch.sides[index] = sidesWord(finger.triangles[u].sides);
        insert(stretch.sets, finger.codes[u][0], index);
        if (finger.oriented[u].isIrregular) {
            for (std::size_t m = 1; m < kOrientations; ++m) {
                insert(stretch.sets, finger.codes[u][m], index);
            }
        }
    }
    for (Stretch& stretch : stretches_) {
        for (auto& group : stretch.sets) {
            for (Cells& cells : group) {
                widen(cells);
            }
        }
    }
}

void CandidateIndex::insert(StretchSets& sets, const TriangleCode& code, std::size_t index) {
    const std::size_t word = index / kWordBits;
    const std::uint64_t bit = std::uint64_t{1} << index % kWordBits;
    for (std::size_t group = 0; group < kCircularGroups.size(); ++group) {
        for (std::size_t j = 0; j < kCorners; ++j) {
            sets[group][j][cellOf(code.bytes[kCircularGroups[group] + j])][word] |= bit;
        }
    }
}

// Turns sets of what lies in each cell into sets of what lies within reach of it.
//
// Two bytes whose circular difference is at most 34 + 3 lie at most kReachCells cells apart: from
// one end of a cell of 8 to 37 steps beyond the other, and one more where the circle of 255 closes,
// are 45 steps, which begin in the fifth cell on.
void CandidateIndex::widen(Cells& cells) {
    static_assert(kMaxTurnDifferenceSteps + kMaxStepsOfQuarterTurn + kStepsPerCell <=
                  (kReachCells + 1) * kStepsPerCell - 1);
    static_assert(kReachCells == 5);
    // The cells with those within reach of both ends before and behind them, so that no index
    // wraps.
    constexpr std::size_t kWidth = 2 * kReachCells + 1;
    constexpr std::size_t kLength = kCells + kWidth - 1;
    std::array<TriangleBits, kLength> around;
    std::copy(cells.end() - kReachCells, cells.end(), around.begin());
    std::copy(cells.begin(), cells.end(), around.begin() + kReachCells);
    std::copy(cells.begin(), cells.begin() + kReachCells, around.end() - kReachCells);
    // What lies in four cells from one on; three of those make up 11 cells.
    constexpr std::size_t kFour = 4;
#pragma GCC unroll 4
    for (std::size_t i = 0; i + kFour <= kLength; ++i) {
        around[i] |= around[i + 1] | around[i + 2] | around[i + 3];
    }
#pragma GCC unroll 4
    for (std::size_t i = 0; i < kCells; ++i) {
        cells[i] = around[i] | around[i + kFour] | around[i + kWidth - kFour];
    }
}

// Under cyclic order q the second triangle's vertex j stands against the first one's q + j.
TriangleBits CandidateIndex::inReach(const StretchSets& sets,
                                     const Query& query,
                                     std::size_t order) {
    TriangleBits found = {~std::uint64_t{0}, ~std::uint64_t{0}};
    for (std::size_t group = 0; group < kCircularGroups.size(); ++group) {
        for (std::size_t j = 0; j < kCorners; ++j) {
            found &= sets[group][j][query.cells_[group][(order + j) % kCorners]];
        }
    }
    return found;
}

std::array<TriangleBits, kCorners> CandidateIndex::find(const Query& query,
                                                        std::size_t stretch,
                                                        std::size_t begin,
                                                        std::size_t end) const {
    assert(begin <= end && end <= kTrianglesPerStretch);
    const auto& [sets, sides] = stretches_[stretch];
    const TriangleBits near =
        pair_kernels::nearSides(
            sides, begin / kSideBlock, (end + kSideBlock - 1) / kSideBlock, query.sides_) &
        firstBits(end) & ~firstBits(begin);
    return {near & inReach(sets, query, 0),
            near & inReach(sets, query, 1),
            near & inReach(sets, query, 2)};
}

}  // namespace orl::matcher
