#pragma once

// The SSE2 form of startsOfQuarterTurns; see triangle_code_kernels.h for what it tells. Included by
// that header alone.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace orl::matcher::sse2 {

// A vertex as seen from the centre of each orientation: pairs of 16-bit numbers, x below y.
struct CentredVertex {
    __m128i offset;
    __m128i perpendicular;  // (y, -x): the product with another offset is their cross product

    CentredVertex(__m128i vertex, __m128i centre)
        : offset(_mm_sub_epi16(vertex, centre)), perpendicular(turnedBack(offset)) {}

    // One bit an orientation: whether the turned vertex lies above the centre, on negative y.
    unsigned above() const {
        const __m128i turnedY = _mm_madd_epi16(offset, _mm_set_epi16(0, -1, -1, 0, 0, 1, 1, 0));
        return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(turnedY)));
    }

    // All ones for each orientation in which this lies well ahead of the other; see the plain form.
    __m128i isWellAhead(const CentredVertex& other) const {
        constexpr int kCotangentBits = 4;
        const __m128i cross = _mm_madd_epi16(other.offset, perpendicular);
        const __m128i dot = _mm_madd_epi16(other.offset, offset);
        return _mm_and_si128(_mm_cmpgt_epi32(cross, _mm_setzero_si128()),
                             _mm_cmpgt_epi32(_mm_slli_epi32(cross, kCotangentBits), dot));
    }

  private:
    static __m128i turnedBack(__m128i offset) {
        constexpr int kHalfBits = 16;
        const __m128i swapped =
            _mm_or_si128(_mm_slli_epi32(offset, kHalfBits), _mm_srli_epi32(offset, kHalfBits));
        const __m128i negated = _mm_set1_epi32(static_cast<int>(0xFFFF0000U));
        return _mm_sub_epi16(_mm_xor_si128(swapped, negated), negated);
    }
};

// One byte an orientation for each set of orientations, a bit each: 1 where the orientation is in
// the set. Orientation 0 is left out, since it starts where the triangle does.
inline constexpr std::size_t kOrientationSets = std::size_t{1} << kOrientations;
inline constexpr std::array<std::uint32_t, kOrientationSets> kBytesOfOrientations = [] {
    constexpr unsigned kByteBits = 8;
    std::array<std::uint32_t, kOrientationSets> table{};
    for (std::uint32_t set = 0; set < table.size(); ++set) {
        for (unsigned m = 1; m < kOrientations; ++m) {
            table[set] |= (set >> m & 1U) << (kByteBits * m);
        }
    }
    return table;
}();

// The triangle's vertices and their centre in all four orientations at once: a vertex that lies
// well ahead of the one before it, cyclically, is in order, and the first one is that which lies
// above the centre while the one before it does not. See the plain form for what is told.
inline bool startsOfQuarterTurns(const TriangleFeature& triangle, QuarterTurnStarts& starts) {
    constexpr unsigned kAllOrientations = kOrientationSets - 1;
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&triangle));
    const __m128i firstTwo = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
    const __m128i a = _mm_shuffle_epi32(firstTwo, _MM_SHUFFLE(0, 0, 0, 0));
    const __m128i b = _mm_shuffle_epi32(firstTwo, _MM_SHUFFLE(2, 2, 2, 2));
    const __m128i c =
        _mm_shuffle_epi32(_mm_unpackhi_epi8(bytes, _mm_setzero_si128()), _MM_SHUFFLE(0, 0, 0, 0));
    // Orientations 0 to 3 mirror nothing, y, both, x.
    const __m128i up = _mm_set_epi16(0, 1, 1, 1, 1, 0, 0, 0);
    const __m128i half = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, b), up), 1);
    const __m128i centre = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(half, c), up), 1);
    const CentredVertex first(a, centre);
    const CentredVertex second(b, centre);
    const CentredVertex third(c, centre);

    const __m128i isOrdered =
        _mm_and_si128(_mm_and_si128(second.isWellAhead(first), third.isWellAhead(second)),
                      first.isWellAhead(third));
    const unsigned firstAbove = first.above();
    const unsigned secondAbove = second.above();
    const unsigned thirdAbove = third.above();
    const unsigned startsAtFirst = firstAbove & ~thirdAbove;
    const unsigned startsAtSecond = secondAbove & ~firstAbove;
    const unsigned startsAtThird = thirdAbove & ~secondAbove;
    if (static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(isOrdered))) != kAllOrientations ||
        (startsAtFirst | startsAtSecond | startsAtThird) != kAllOrientations) {
        return false;
    }
    const std::uint32_t packed =
        kBytesOfOrientations[startsAtSecond] | kBytesOfOrientations[startsAtThird] << 1U;
    std::memcpy(starts.data(), &packed, sizeof(packed));
    return true;
}

}  // namespace orl::matcher::sse2
