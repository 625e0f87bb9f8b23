#pragma once

// The ranking of many pairs of triangles, in forms with the same results: `plain` and `sse2` take
// one comparison at a time from pair_test.h, `avx2` makes two in one step; tests compare them.

#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/pair_test.h"

namespace orl::matcher {

// A pair of triangles that may be alike, as indices into the two fingers' lists.
struct Candidate {
    std::uint16_t first;
    std::uint16_t second;
    std::uint32_t orders;  // cyclic orders under which they may be alike; bit q for order q
};

// What candidates are compared by: the codes of the two fingers, by triangle.
struct CandidateCodes {
    const CyclicCodes* first;
    const QuarterTurnCodes* second;
};

// Writes the best rank of each candidate over its orders, in each orientation.
// REQUIRES: every candidate has an order; room for one entry each.
namespace plain {
void rankCandidates(const CandidateCodes& codes,
                    std::span<const Candidate> candidates,
                    OrientationRanks* ranks);
}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {
void rankCandidates(const CandidateCodes& codes,
                    std::span<const Candidate> candidates,
                    OrientationRanks* ranks);
}  // namespace sse2
#endif

#if defined(__SSE2__) && defined(__linux__)
namespace avx2 {
// REQUIRES: a processor with AVX2.
void rankCandidates(const CandidateCodes& codes,
                    std::span<const Candidate> candidates,
                    OrientationRanks* ranks);
}  // namespace avx2
#endif

// The fastest form that this processor runs. Windows keeps to 128 bits: compilers for it are known
// to spill wider registers to a stack that is not aligned for them.
using RankCandidates = void (*)(const CandidateCodes&,
                                std::span<const Candidate>,
                                OrientationRanks*);
RankCandidates fastestRankCandidates();

}  // namespace orl::matcher
