#pragma once

// The side length word of a triangle in 128-bit registers, three sides at once. Part of
// TriangleMaker, which works the word out by table on processors without them.

#include <cstdint>

#if defined(__SSE2__)

#include <emmintrin.h>

namespace orl::matcher {

// The word that SideLengthWord makes of the three distances. Each corner has x in its lower half
// and y in its upper one, 0..255. Pure; never throws.
//
// A squared distance n is at most 130,050 and thus exact in a float. The root of n is never halfway
// between two whole numbers, as (k + 1/2)^2 is none, and lies at least 1 / (8k + 4) from there, for
// the greatest k of 360 more than ten times the spacing of floats: adding a half and cutting the
// fraction off rounds it as the table does.
inline std::uint32_t SideWordOfLanes(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    const auto lane = [](std::uint32_t corner) {
        return _mm_cvtsi32_si128(static_cast<std::int32_t>(corner));
    };
    const __m128i from = _mm_unpacklo_epi64(_mm_unpacklo_epi32(lane(a), lane(b)), lane(c));
    const __m128i to = _mm_shuffle_epi32(from, _MM_SHUFFLE(3, 0, 2, 1));
    const __m128i sides = _mm_sub_epi16(from, to);
    const __m128 squares = _mm_cvtepi32_ps(_mm_madd_epi16(sides, sides));
    const __m128i lengths = _mm_cvttps_epi32(_mm_add_ps(_mm_sqrt_ps(squares), _mm_set1_ps(0.5F)));

    // Signed bytes, extended to lanes of 32 bits. Both halves of such a lane compare as the lane
    // does, so that the maxima and minima of 16 bits serve.
    constexpr int kExtensionBits = 24;
    const __m128i first = _mm_srai_epi32(_mm_slli_epi32(lengths, kExtensionBits), kExtensionBits);
    const __m128i second = _mm_shuffle_epi32(first, _MM_SHUFFLE(3, 0, 2, 1));
    const __m128i third = _mm_shuffle_epi32(first, _MM_SHUFFLE(3, 1, 0, 2));
    const __m128i greater = _mm_max_epi16(first, second);
    const __m128i smaller = _mm_min_epi16(first, second);
    const __m128i longest = _mm_max_epi16(greater, third);
    const __m128i shortest = _mm_min_epi16(smaller, third);
    const __m128i middle = _mm_max_epi16(smaller, _mm_min_epi16(greater, third));
    const __m128i word = _mm_or_si128(_mm_or_si128(longest, _mm_slli_epi32(middle, 8)),
                                      _mm_slli_epi32(shortest, 16));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(word));
}

}  // namespace orl::matcher

#endif
