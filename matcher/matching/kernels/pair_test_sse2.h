#pragma once

// The SSE2 forms of the comparison of triangle codes; see pair_test.h for what they compute.
// Included by that header alone.

#include <emmintrin.h>

namespace orl::matcher::sse2 {

inline __m128i codeBytes(const TriangleCode& code) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(code.bytes.data()));
}

// Byte-wise differences, the shorter way round for bytes that lie on a circle: 255 - d is d
// inverted.
inline __m128i differencesOf(__m128i a, __m128i b) {
    const __m128i circularBytes = _mm_set_epi32(0, -1, -1, -1);
    const __m128i plainDifference = _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
    return _mm_min_epu8(plainDifference, _mm_xor_si128(plainDifference, circularBytes));
}

// Of each group the largest byte, as a 32-bit number.
inline __m128i largestOfGroups(__m128i differences) {
    constexpr int kLowByte = 0xFF;
    __m128i largest = _mm_max_epu8(differences, _mm_srli_epi32(differences, 16));
    largest = _mm_max_epu8(largest, _mm_srli_epi32(largest, 8));
    return _mm_and_si128(largest, _mm_set1_epi32(kLowByte));
}

// Cost factors of four differences up to kLimit: a product in place of the division, as exact for
// so few numbers.
template <unsigned kLimit, unsigned kShift>
__m128i costFactors(__m128i differences) {
    constexpr unsigned kScaled = costFactor(1U << kShift, kLimit) + 1U;
    static_assert(kScaled < 0x8000);
    static_assert([] {
        for (unsigned difference = 0; difference <= kLimit; ++difference) {
            if (difference * kScaled >> kShift != costFactor(difference, kLimit)) {
                return false;
            }
        }
        return true;
    }());
    return _mm_srli_epi32(_mm_madd_epi16(differences, _mm_set1_epi32(kScaled)), kShift);
}

// Ranks of four pairs, as 32-bit numbers, from the three factors of each.
inline __m128i ranksOfFactors(__m128i edge, __m128i turn, __m128i side) {
    constexpr int kCostBitsPerPoint = 20;
    constexpr int kLaneBits = 32;
    const __m128i product = _mm_madd_epi16(edge, turn);
    const __m128i even = _mm_mul_epu32(product, side);
    const __m128i odd =
        _mm_mul_epu32(_mm_srli_epi64(product, kLaneBits), _mm_srli_epi64(side, kLaneBits));
    return _mm_or_si128(_mm_srli_epi64(even, kCostBitsPerPoint),
                        _mm_slli_epi64(_mm_srli_epi64(odd, kCostBitsPerPoint), kLaneBits));
}

inline OrientationRanks ranksOf(const QuarterTurnCodes& second, const TriangleCode& first) {
    static_assert(kMaxTurnDifferenceSteps == 0x22 && kMaxEdgeDifferenceSteps == 0x22 &&
                  kMaxSideDifferenceGridUnits == 0x11);
    const __m128i code = codeBytes(first);
    const auto largestOf = [&](std::size_t m) {
        return largestOfGroups(differencesOf(codeBytes(second[m]), code));
    };
    // Four bytes an orientation: the largest turn, edge from the next vertex, edge from the
    // previous one, and side.
    const __m128i largest = _mm_packus_epi16(_mm_packs_epi32(largestOf(0), largestOf(1)),
                                             _mm_packs_epi32(largestOf(2), largestOf(3)));
    const __m128i beyond = _mm_subs_epu8(largest, _mm_set1_epi32(0x11222222));
    const __m128i isAlike = _mm_cmpeq_epi32(beyond, _mm_setzero_si128());
    const __m128i lowByte = _mm_set1_epi32(0xFF);
    const __m128i turn = _mm_and_si128(largest, lowByte);
    const __m128i edge = _mm_and_si128(
        _mm_max_epu8(_mm_srli_epi32(largest, 8), _mm_srli_epi32(largest, 16)), lowByte);
    const __m128i side = _mm_srli_epi32(largest, 24);
    constexpr unsigned kCircularShift = 10;
    constexpr unsigned kSideShift = 9;
    const __m128i ranks =
        ranksOfFactors(costFactors<kMaxEdgeDifferenceSteps, kCircularShift>(edge),
                       costFactors<kMaxTurnDifferenceSteps, kCircularShift>(turn),
                       costFactors<kMaxSideDifferenceGridUnits, kSideShift>(side));
    const __m128i chosen = _mm_or_si128(_mm_and_si128(isAlike, ranks),
                                        _mm_andnot_si128(isAlike, _mm_set1_epi32(kNotAlike)));
    OrientationRanks result;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(result.data()), _mm_packs_epi32(chosen, chosen));
    return result;
}

// All ones for each of four triangles whose sides are near; `lowest` is 17 less than the sides
// that are compared with, byte by byte.
inline __m128i areNear(const std::uint32_t* sides, __m128i lowest) {
    static_assert(2 * kMaxSideDifferenceGridUnits == 0x22);
    const __m128i limits = _mm_set1_epi32(static_cast<int>(0xFF222222U));
    const __m128i words = _mm_load_si128(reinterpret_cast<const __m128i*>(sides));
    const __m128i beyond = _mm_subs_epu8(_mm_sub_epi8(words, lowest), limits);
    return _mm_cmpeq_epi32(beyond, _mm_setzero_si128());
}

inline TriangleBits nearSides(std::span<const std::uint32_t, kTrianglesPerStretch> sides,
                              std::size_t firstBlock,
                              std::size_t endBlock,
                              std::uint32_t firstSides) {
    constexpr std::size_t kWords = 4;
    const __m128i lowest = _mm_sub_epi8(_mm_set1_epi32(static_cast<int>(firstSides)),
                                        _mm_set1_epi8(kMaxSideDifferenceGridUnits));
    alignas(16) std::array<std::uint16_t, kTrianglesPerStretch / kSideBlock> bits{};
    for (std::size_t block = firstBlock; block < endBlock; ++block) {
        const std::uint32_t* const words = sides.data() + block * kSideBlock;
        const __m128i firstHalf =
            _mm_packs_epi32(areNear(words, lowest), areNear(words + kWords, lowest));
        const __m128i secondHalf = _mm_packs_epi32(areNear(words + 2 * kWords, lowest),
                                                   areNear(words + 3 * kWords, lowest));
        bits[block] =
            static_cast<std::uint16_t>(_mm_movemask_epi8(_mm_packs_epi16(firstHalf, secondHalf)));
    }
    return reinterpret_cast<TriangleBits>(
        _mm_load_si128(reinterpret_cast<const __m128i*>(bits.data())));
}

}  // namespace orl::matcher::sse2
