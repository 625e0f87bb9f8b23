#include "matcher/matching/triangle_pair_list.h"

#include <bit>

namespace orl::matcher {

// A pair is written to all four lists and kept where it counts: chance decides that, so a branch
// would be foreseen wrongly all the time.
void appendAlike(std::array<TrianglePairList, kOrientations>& lists,
                 std::span<const Candidate> candidates,
                 const OrientationRanks* ranks) {
    static_assert(kNotAlike == 1U << 10U, "no other rank has this bit");
    constexpr unsigned kNotAlikeBit = 10;
    constexpr unsigned kRankBits = 16;
    std::array<TrianglePair*, kOrientations> ends;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        lists[m].reserveMore(candidates.size());
        ends[m] = lists[m].end();
    }
    for (const Candidate& candidate : candidates) {
        // A pair as a little-endian word: rank, first, second.
        const std::uint64_t triangles =
            (std::uint64_t{candidate.second} << kRankBits | candidate.first) << kRankBits;
        for (std::size_t m = 0; m < kOrientations; ++m) {
            const std::uint64_t rank = (*ranks)[m];
            *ends[m] = std::bit_cast<TrianglePair>(triangles | rank);
            ends[m] += (rank >> kNotAlikeBit) ^ 1U;
        }
        ++ranks;
    }
    for (std::size_t m = 0; m < kOrientations; ++m) {
        lists[m].growTo(ends[m]);
    }
}

}  // namespace orl::matcher
