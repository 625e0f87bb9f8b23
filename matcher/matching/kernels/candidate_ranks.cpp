#include "matcher/matching/kernels/candidate_ranks.h"

#include <algorithm>
#include <bit>

namespace orl::matcher {
namespace {

template <OrientationRanks (*kRanksOf)(const QuarterTurnCodes&, const TriangleCode&)>
void rank(const CandidateCodes& codes,
          std::span<const Candidate> candidates,
          OrientationRanks* ranks) {
    for (const Candidate& candidate : candidates) {
        std::uint32_t orders = candidate.orders;
        const auto ranksOfLowest = [&] {
            const auto order = static_cast<std::size_t>(std::countr_zero(orders));
            return kRanksOf(codes.second[candidate.second], codes.first[candidate.first][order]);
        };
        OrientationRanks best = ranksOfLowest();
        for (orders &= orders - 1; orders != 0; orders &= orders - 1) {
            const OrientationRanks others = ranksOfLowest();
            for (std::size_t m = 0; m < kOrientations; ++m) {
                best[m] = std::min(best[m], others[m]);
            }
        }
        *ranks++ = best;
    }
}

}  // namespace

namespace plain {
void rankCandidates(const CandidateCodes& codes,
                    std::span<const Candidate> candidates,
                    OrientationRanks* ranks) {
    rank<ranksOf>(codes, candidates, ranks);
}
}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {
void rankCandidates(const CandidateCodes& codes,
                    std::span<const Candidate> candidates,
                    OrientationRanks* ranks) {
    rank<ranksOf>(codes, candidates, ranks);
}
}  // namespace sse2
#endif

RankCandidates fastestRankCandidates() {
#if defined(__SSE2__) && defined(__linux__)
    return __builtin_cpu_supports("avx2") != 0 ? avx2::rankCandidates : sse2::rankCandidates;
#elif defined(__SSE2__)
    return sse2::rankCandidates;
#else
    return plain::rankCandidates;
#endif
}

}  // namespace orl::matcher
