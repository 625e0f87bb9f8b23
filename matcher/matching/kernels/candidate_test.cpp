#include "matcher/matching/kernels/candidate_test.h"

#include <algorithm>
#include <bit>

namespace orl::matcher {
namespace {

template <unsigned (*kOrdersToRank)(const TriangleCode&, const CyclicCodes&)>
std::size_t dropUnlike(const CandidateCodes& codes, std::span<Candidate> candidates) {
    std::size_t kept = 0;
    for (const Candidate candidate : candidates) {
        const std::uint32_t orders =
            kOrdersToRank(codes.second[candidate.second][0], codes.first[candidate.first]) |
            codes.secondOrders[candidate.second];
        candidates[kept] = {candidate.first, candidate.second, orders};
        kept += static_cast<std::size_t>(orders != 0);
    }
    return kept;
}

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
const CandidateTest candidateTest = {dropUnlike<ordersToRank>, rank<ranksOf>};
}

#if defined(__SSE2__)
namespace sse2 {
const CandidateTest candidateTest = {dropUnlike<ordersToRank>, rank<ranksOf>};
}
#endif

const CandidateTest& fastestCandidateTest() {
#if defined(__SSE2__) && defined(__linux__)
    return __builtin_cpu_supports("avx2") != 0 ? avx2::candidateTest : sse2::candidateTest;
#elif defined(__SSE2__)
    return sse2::candidateTest;
#else
    return plain::candidateTest;
#endif
}

}  // namespace orl::matcher
