#include "matcher/matching/kernels/agreement_bound.h"

#if defined(__SSE2__) && defined(__linux__)

#include <immintrin.h>

// Every function here that takes or returns a vector is compiled for AVX2 by an attribute of its
// own, so that no shared inline function is.
#define ORL_AVX2 __attribute__((target("avx2")))

namespace orl::matcher::avx2 {
namespace {

constexpr std::size_t kLanes = 16;

ORL_AVX2 __m256i load(const std::int16_t* values) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values));
}

ORL_AVX2 __m256i sizeOf(__m256i values) {
    return _mm256_abs_epi16(values);
}

// A pair's two vertices as seen from the anchor's.
struct Offsets {
    __m256i firstX, firstY, secondX, secondY;
};

// A turn, each number in all lanes.
struct Turn {
    __m256i cosine, sine;

    ORL_AVX2 explicit Turn(ScaledTurn turn)
        : cosine(_mm256_set1_epi16(turn.cosine)), sine(_mm256_set1_epi16(turn.sine)) {}
};

// All ones in the lanes whose pair is too far off. Sums of two sizes may leave 16 bits; saturation
// keeps them above the limit.
ORL_AVX2 __m256i tooFar(const Offsets& offsets, const Turn& turn) {
    const __m256i turnedX = _mm256_sub_epi16(_mm256_mulhi_epi16(offsets.firstX, turn.cosine),
                                             _mm256_mulhi_epi16(offsets.firstY, turn.sine));
    const __m256i turnedY = _mm256_add_epi16(_mm256_mulhi_epi16(offsets.firstX, turn.sine),
                                             _mm256_mulhi_epi16(offsets.firstY, turn.cosine));
    const __m256i sizeX = sizeOf(_mm256_sub_epi16(turnedX, offsets.secondX));
    const __m256i sizeY = sizeOf(_mm256_sub_epi16(turnedY, offsets.secondY));
    return _mm256_or_si256(
        _mm256_cmpgt_epi16(_mm256_max_epi16(sizeX, sizeY), _mm256_set1_epi16(kBoundPerCoordinate)),
        _mm256_cmpgt_epi16(_mm256_adds_epi16(sizeX, sizeY),
                           _mm256_set1_epi16(kBoundBothCoordinates)));
}

// All ones in the lanes from `count` on, which lie behind a task's last pair.
ORL_AVX2 __m256i lanesFrom(int count) {
    return _mm256_cmpgt_epi16(
        _mm256_set_epi16(16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1),
        _mm256_set1_epi16(static_cast<std::int16_t>(count)));
}

ORL_AVX2 std::uint16_t sumOfLanes(__m256i counts) {
    const __m256i pairs = _mm256_madd_epi16(counts, _mm256_set1_epi16(1));
    __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::uint16_t>(_mm_cvtsi128_si32(sum));
}

}  // namespace

ORL_AVX2 void agreementBounds(const BoundPositions& positions,
                              std::span<const BoundTask> tasks,
                              std::span<std::uint16_t> bounds) {
    std::uint16_t* bound = bounds.data();
    for (const BoundTask& task : tasks) {
        const __m256i firstX = _mm256_set1_epi16(positions.firstX64[task.anchor]);
        const __m256i firstY = _mm256_set1_epi16(positions.firstY64[task.anchor]);
        const __m256i secondX = _mm256_set1_epi16(positions.secondX32[task.anchor]);
        const __m256i secondY = _mm256_set1_epi16(positions.secondY32[task.anchor]);
        const Turn turn(task.turns[0]);
        const Turn otherTurn(task.turns[1]);
        __m256i agreeing = _mm256_setzero_si256();
        __m256i otherAgreeing = _mm256_setzero_si256();
        std::size_t i = task.begin;
        for (int left = task.count; left > 0; left -= static_cast<int>(kLanes), i += kLanes) {
            const Offsets offsets{_mm256_sub_epi16(load(positions.firstX64 + i), firstX),
                                  _mm256_sub_epi16(load(positions.firstY64 + i), firstY),
                                  _mm256_sub_epi16(load(positions.secondX32 + i), secondX),
                                  _mm256_sub_epi16(load(positions.secondY32 + i), secondY)};
            const __m256i behind = lanesFrom(left);
            const __m256i one = _mm256_set1_epi16(1);
            agreeing = _mm256_add_epi16(
                agreeing, _mm256_andnot_si256(_mm256_or_si256(tooFar(offsets, turn), behind), one));
            otherAgreeing = _mm256_add_epi16(
                otherAgreeing,
                _mm256_andnot_si256(_mm256_or_si256(tooFar(offsets, otherTurn), behind), one));
        }
        *bound++ = sumOfLanes(agreeing);
        *bound++ = sumOfLanes(otherAgreeing);
    }
}

}  // namespace orl::matcher::avx2

#endif
