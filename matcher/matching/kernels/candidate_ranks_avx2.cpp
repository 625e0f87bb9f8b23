#include "matcher/matching/kernels/candidate_ranks.h"

#if defined(__SSE2__) && defined(__linux__)

#include <bit>

#include <immintrin.h>

// Every function here that takes or returns a vector is compiled for AVX2 by an attribute of its
// own, so that no shared inline function is.
#define ORL_AVX2 __attribute__((target("avx2")))

namespace orl::matcher::avx2 {
namespace {

// A code twice, or two codes one after the other.
ORL_AVX2 __m256i twice(const TriangleCode& code) {
    return _mm256_broadcastsi128_si256(
        _mm_load_si128(reinterpret_cast<const __m128i*>(code.bytes.data())));
}
ORL_AVX2 __m256i codePair(const TriangleCode* codes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(codes));
}

// Byte-wise differences, the shorter way round for bytes that lie on a circle; see pair_test_sse2.h
// for these steps.
ORL_AVX2 __m256i differencesOf(__m256i a, __m256i b) {
    const __m256i circularBytes = _mm256_set_epi32(0, -1, -1, -1, 0, -1, -1, -1);
    const __m256i difference = _mm256_or_si256(_mm256_subs_epu8(a, b), _mm256_subs_epu8(b, a));
    return _mm256_min_epu8(difference, _mm256_xor_si256(difference, circularBytes));
}

// Of each group the largest byte, as a 32-bit number.
ORL_AVX2 __m256i largestOfGroups(__m256i differences) {
    constexpr int kLowByte = 0xFF;
    const __m256i largest = _mm256_max_epu8(differences, _mm256_srli_epi32(differences, 16));
    return _mm256_and_si256(_mm256_max_epu8(largest, _mm256_srli_epi32(largest, 8)),
                            _mm256_set1_epi32(kLowByte));
}

// 1024 times a difference over one more than its limit, cut down; `scaled` over 2^shift is that
// ratio, as exact for so few numbers (see pair_test_sse2.h).
template <int kScaled, int kShift>
ORL_AVX2 __m128i costFactors(__m128i differences) {
    return _mm_srli_epi32(_mm_madd_epi16(differences, _mm_set1_epi32(kScaled)), kShift);
}

// Ranks in the four orientations, as 32-bit numbers, from four bytes each: the largest turn, edge
// from the next vertex, edge from the previous one, and side.
ORL_AVX2 __m128i ranksOfLargest(__m128i largest) {
    static_assert(kMaxTurnDifferenceSteps == 0x22 && kMaxEdgeDifferenceSteps == 0x22 &&
                  kMaxSideDifferenceGridUnits == 0x11);
    constexpr int kCircularScaled = 29960;  // 1024 / 35 in 1/1024, up
    constexpr int kCircularShift = 10;
    constexpr int kSideScaled = 29128;  // 1024 / 18 in 1/512, up
    constexpr int kSideShift = 9;
    constexpr int kCostBitsPerPoint = 20;
    const __m128i lowByte = _mm_set1_epi32(0xFF);
    const __m128i turn =
        costFactors<kCircularScaled, kCircularShift>(_mm_and_si128(largest, lowByte));
    const __m128i edge = costFactors<kCircularScaled, kCircularShift>(_mm_and_si128(
        _mm_max_epu8(_mm_srli_epi32(largest, 8), _mm_srli_epi32(largest, 16)), lowByte));
    const __m128i side = costFactors<kSideScaled, kSideShift>(_mm_srli_epi32(largest, 24));
    const __m128i ranks =
        _mm_srli_epi32(_mm_mullo_epi32(_mm_madd_epi16(edge, turn), side), kCostBitsPerPoint);
    const __m128i beyond = _mm_subs_epu8(largest, _mm_set1_epi32(0x11222222));
    const __m128i isAlike = _mm_cmpeq_epi32(beyond, _mm_setzero_si128());
    return _mm_blendv_epi8(_mm_set1_epi32(kNotAlike), ranks, isAlike);
}

// The ranks under one order as four 16-bit numbers.
ORL_AVX2 __m128i ranksOf(const QuarterTurnCodes& second, const TriangleCode& first) {
    const __m256i code = twice(first);
    const __m256i firstTwo = largestOfGroups(differencesOf(codePair(second.data()), code));
    const __m256i lastTwo = largestOfGroups(differencesOf(codePair(second.data() + 2), code));
    // Orientations 0 and 2 in the lower half, 1 and 3 in the upper one.
    const __m256i words = _mm256_packs_epi32(firstTwo, lastTwo);
    const __m256i bytes = _mm256_packus_epi16(words, words);
    const __m128i largest =
        _mm_unpacklo_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
    const __m128i ranks = ranksOfLargest(largest);
    return _mm_packs_epi32(ranks, ranks);
}

}  // namespace

ORL_AVX2 void rankCandidates(const CandidateCodes& codes,
                             std::span<const Candidate> candidates,
                             OrientationRanks* ranks) {
    for (const Candidate& candidate : candidates) {
        const QuarterTurnCodes& second = codes.second[candidate.second];
        const CyclicCodes& first = codes.first[candidate.first];
        std::uint32_t orders = candidate.orders;
        __m128i best = ranksOf(second, first[static_cast<std::size_t>(std::countr_zero(orders))]);
        for (orders &= orders - 1; orders != 0; orders &= orders - 1) {
            const auto order = static_cast<std::size_t>(std::countr_zero(orders));
            best = _mm_min_epi16(best, ranksOf(second, first[order]));
        }
        _mm_storel_epi64(reinterpret_cast<__m128i*>(ranks++), best);
    }
}

}  // namespace orl::matcher::avx2

#endif
