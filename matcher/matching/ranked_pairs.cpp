#include "matcher/matching/ranked_pairs.h"

#include <bit>
#include <cassert>

namespace orl::matcher {
namespace {

// A number for each orientation, and such a row for each rank; rows are filled up to blocks.
using Row = std::array<std::uint16_t, kOrientations>;
constexpr std::size_t kRowsAtOnce = 4;
constexpr std::size_t kRows = (kNotAlike / kRowsAtOnce + 1) * kRowsAtOnce;
using Rows = std::array<Row, kRows>;

// From how many candidates have a rank to where the first of them goes. Four sums at once: none
// outgrows its 16 bits.
void placesOfCounts(Rows& rows) {
    std::uint64_t sum = 0;
#pragma GCC unroll 4
    for (Row& row : rows) {
        const auto counts = std::bit_cast<std::uint64_t>(row);
        row = std::bit_cast<Row>(sum);
        sum += counts;
    }
}

}  // namespace

// A counting sort, in all orientations at once. What is not alike goes behind the last pair, as
// chance decides it and a branch would be foreseen wrongly all the time.
RankedPairs rankedPairs(std::span<const Candidate> candidates,
                        std::span<const OrientationRanks> ranks,
                        Scratch& scratch) {
    assert(candidates.size() <= kMaxCandidates && candidates.size() == ranks.size());
    Rows places{};
    for (const OrientationRanks& ofOne : ranks) {
        for (std::size_t m = 0; m < kOrientations; ++m) {
            ++places[ofOne[m]][m];
        }
    }
    placesOfCounts(places);
    const Row alike = places[kNotAlike];
    std::array<TrianglePair*, kOrientations> pairs;
    for (TrianglePair*& ofOrientation : pairs) {
        ofOrientation = scratch.take<TrianglePair>(candidates.size()).data();
    }
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const TrianglePair pair = {candidates[i].first, candidates[i].second};
        for (std::size_t m = 0; m < kOrientations; ++m) {
            pairs[m][places[ranks[i][m]][m]++] = pair;
        }
    }
    RankedPairs ranked;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        ranked[m] = {pairs[m], alike[m]};
    }
    return ranked;
}

}  // namespace orl::matcher
