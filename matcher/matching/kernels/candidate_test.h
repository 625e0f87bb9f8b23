#pragma once

// The test of many pairs of triangles, in forms with the same results: `plain` and `sse2` take one
// comparison at a time from pair_test.h, `avx2` makes two in one step; tests compare them.

#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/pair_test.h"

namespace orl::matcher {

// A pair of triangles that may be alike, as indices into the two fingers' lists.
struct Candidate {
    std::uint16_t first;
    std::uint16_t second;
    std::uint32_t orders;  // cyclic orders under which they may agree; bit q for order q
};

// What candidates are compared by.
struct CandidateCodes {
    const CyclicCodes* first;
    const QuarterTurnCodes* second;
    const std::uint8_t* secondOrders;  // orders under which a second triangle is ranked in any case
};

// Finds each candidate's orders, drops the candidates that have none and moves the others up. How
// many are left.
using DropUnlike = std::size_t (*)(const CandidateCodes& codes, std::span<Candidate> candidates);

// Writes the best rank of each candidate over its orders, in each orientation.
// REQUIRES: every candidate has an order; room for one entry each.
using RankCandidates = void (*)(const CandidateCodes& codes,
                                std::span<const Candidate> candidates,
                                OrientationRanks* ranks);

struct CandidateTest {
    DropUnlike dropUnlike;
    RankCandidates rank;
};

// The fastest form that this processor runs. Windows keeps to 128 bits: compilers for it are known
// to spill wider registers to a stack that is not aligned for them.
const CandidateTest& fastestCandidateTest();

namespace plain {
extern const CandidateTest candidateTest;
}

#if defined(__SSE2__)
namespace sse2 {
extern const CandidateTest candidateTest;
}
#endif

#if defined(__SSE2__) && defined(__linux__)
namespace avx2 {
// REQUIRES of its functions: a processor with AVX2.
extern const CandidateTest candidateTest;
}  // namespace avx2
#endif

}  // namespace orl::matcher
