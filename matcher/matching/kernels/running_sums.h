#pragma once

// Running sums of 16-bit counts, in two forms with the same results: `plain` says what is computed,
// `sse2` adds up eight counts at a time; tests compare them.

#include <cstddef>
#include <cstdint>
#include <span>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace orl::matcher {

inline constexpr std::size_t kRunningSumsLanes = 8;

namespace plain {

// Makes each count the sum of those up to it, itself included. REQUIRES: a multiple of
// kRunningSumsLanes counts, all together below 65536.
inline void makeRunningSums(std::span<std::uint16_t> counts) {
    std::uint16_t sum = 0;
    for (std::uint16_t& count : counts) {
        sum = static_cast<std::uint16_t>(sum + count);
        count = sum;
    }
}

}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {

inline void makeRunningSums(std::span<std::uint16_t> counts) {
    constexpr int kCountBytes = sizeof(std::uint16_t);
    constexpr int kLastOfFour = _MM_SHUFFLE(3, 3, 3, 3);
    __m128i before = _mm_setzero_si128();  // the sum so far, in all lanes
    for (std::size_t i = 0; i < counts.size(); i += kRunningSumsLanes) {
        auto* const eight = reinterpret_cast<__m128i*>(&counts[i]);
        __m128i sums = _mm_loadu_si128(eight);
        sums = _mm_add_epi16(sums, _mm_slli_si128(sums, kCountBytes));
        sums = _mm_add_epi16(sums, _mm_slli_si128(sums, 2 * kCountBytes));
        sums = _mm_add_epi16(sums, _mm_slli_si128(sums, 4 * kCountBytes));
        sums = _mm_add_epi16(sums, before);
        _mm_storeu_si128(eight, sums);
        before = _mm_shuffle_epi32(_mm_shufflehi_epi16(sums, kLastOfFour), kLastOfFour);
    }
}

}  // namespace sse2

using sse2::makeRunningSums;
#else
using plain::makeRunningSums;
#endif

}  // namespace orl::matcher
