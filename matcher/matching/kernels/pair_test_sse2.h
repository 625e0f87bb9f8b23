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

// Whether no byte exceeds its limit.
inline bool isWithin(__m128i differences, __m128i limits) {
    constexpr int kAllBytes = 0xFFFF;
    const __m128i beyond = _mm_subs_epu8(differences, limits);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(beyond, _mm_setzero_si128())) == kAllBytes;
}

// Of each group the largest byte, as a 32-bit number.
inline __m128i largestOfGroups(__m128i differences) {
    constexpr int kLowByte = 0xFF;
    __m128i largest = _mm_max_epu8(differences, _mm_srli_epi32(differences, 16));
    largest = _mm_max_epu8(largest, _mm_srli_epi32(largest, 8));
    return _mm_and_si128(largest, _mm_set1_epi32(kLowByte));
}

// Cost factors by difference. The limits of turns and edges are the same.
static_assert(kMaxTurnDifferenceSteps == kMaxEdgeDifferenceSteps);

template <std::size_t kLimit>
constexpr std::array<std::uint16_t, kLimit + 1> costFactors() {
    std::array<std::uint16_t, kLimit + 1> factors{};
    for (std::size_t difference = 0; difference <= kLimit; ++difference) {
        factors[difference] = costFactor(difference, kLimit);
    }
    return factors;
}
inline constexpr auto kCircularFactors = costFactors<kMaxEdgeDifferenceSteps>();
inline constexpr auto kSideFactors = costFactors<kMaxSideDifferenceGridUnits>();

inline OrientationRanks ranksOf(const QuarterTurnCodes& second, const TriangleCode& first) {
    static_assert(kMaxTurnDifferenceSteps == 0x22 && kMaxSideDifferenceGridUnits == 0x11);
    const __m128i limits = _mm_set_epi32(0x00111111, 0x00222222, 0x00222222, 0x00222222);
    const __m128i code = codeBytes(first);
    const __m128i differences[] = {differencesOf(codeBytes(second[0]), code),
                                   differencesOf(codeBytes(second[1]), code),
                                   differencesOf(codeBytes(second[2]), code),
                                   differencesOf(codeBytes(second[3]), code)};
    // Four bytes an orientation: the largest turn, edge from the next vertex, edge from the
    // previous one, and side.
    alignas(16) std::array<std::array<std::uint8_t, 4>, kOrientations> largest;
    _mm_store_si128(
        reinterpret_cast<__m128i*>(largest.data()),
        _mm_packus_epi16(
            _mm_packs_epi32(largestOfGroups(differences[0]), largestOfGroups(differences[1])),
            _mm_packs_epi32(largestOfGroups(differences[2]), largestOfGroups(differences[3]))));
    OrientationRanks ranks;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        const auto [turn, nextEdge, previousEdge, side] = largest[m];
        ranks[m] = isWithin(differences[m], limits)
                       ? rankOfFactors(kCircularFactors[std::max(nextEdge, previousEdge)],
                                       kCircularFactors[turn],
                                       kSideFactors[side])
                       : kNotAlike;
    }
    return ranks;
}

inline unsigned ordersToRank(const TriangleCode& second, const CyclicCodes& first) {
    static_assert(kMaxTurnDifferenceSteps + kMaxStepsOfQuarterTurn == 0x25);
    const __m128i limits = _mm_set_epi32(-1, 0x00252525, 0x00252525, 0x00252525);
    const __m128i code = codeBytes(second);
    const auto bit = [&](std::size_t order) {
        return static_cast<unsigned>(isWithin(differencesOf(code, codeBytes(first[order])), limits))
               << order;
    };
    return bit(0) | bit(1) | bit(2);
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
