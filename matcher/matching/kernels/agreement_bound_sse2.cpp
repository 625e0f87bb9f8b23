#include "matcher/matching/kernels/agreement_bound.h"

#if defined(__SSE2__)

#include <emmintrin.h>

namespace orl::matcher::sse2 {
namespace {

constexpr std::size_t kLanes = 8;

__m128i load(const std::int16_t* values) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(values));
}

__m128i sizeOf(__m128i values) {
    return _mm_max_epi16(values, _mm_sub_epi16(_mm_setzero_si128(), values));
}

// A pair's two vertices as seen from the anchor's.
struct Offsets {
    __m128i firstX, firstY, secondX, secondY;
};

// A turn, each number in all lanes.
struct Turn {
    __m128i cosine, sine;

    explicit Turn(ScaledTurn turn)
        : cosine(_mm_set1_epi16(turn.cosine)), sine(_mm_set1_epi16(turn.sine)) {}
};

// All ones in the lanes whose pair is too far off. Sums of two sizes may leave 16 bits; saturation
// keeps them above the limit.
__m128i tooFar(const Offsets& offsets, const Turn& turn) {
    const __m128i turnedX = _mm_sub_epi16(_mm_mulhi_epi16(offsets.firstX, turn.cosine),
                                          _mm_mulhi_epi16(offsets.firstY, turn.sine));
    const __m128i turnedY = _mm_add_epi16(_mm_mulhi_epi16(offsets.firstX, turn.sine),
                                          _mm_mulhi_epi16(offsets.firstY, turn.cosine));
    const __m128i sizeX = sizeOf(_mm_sub_epi16(turnedX, offsets.secondX));
    const __m128i sizeY = sizeOf(_mm_sub_epi16(turnedY, offsets.secondY));
    return _mm_or_si128(
        _mm_cmpgt_epi16(_mm_max_epi16(sizeX, sizeY), _mm_set1_epi16(kBoundPerCoordinate)),
        _mm_cmpgt_epi16(_mm_adds_epi16(sizeX, sizeY), _mm_set1_epi16(kBoundBothCoordinates)));
}

// All ones in the lanes from `count` on, which lie behind a task's last pair.
__m128i lanesFrom(int count) {
    return _mm_cmpgt_epi16(_mm_set_epi16(8, 7, 6, 5, 4, 3, 2, 1),
                           _mm_set1_epi16(static_cast<std::int16_t>(count)));
}

std::uint16_t sumOfLanes(__m128i counts) {
    __m128i sum = _mm_madd_epi16(counts, _mm_set1_epi16(1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::uint16_t>(_mm_cvtsi128_si32(sum));
}

}  // namespace

void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds) {
    std::uint16_t* bound = bounds.data();
    for (const BoundTask& task : tasks) {
        const __m128i firstX = _mm_set1_epi16(positions.firstX64[task.anchor]);
        const __m128i firstY = _mm_set1_epi16(positions.firstY64[task.anchor]);
        const __m128i secondX = _mm_set1_epi16(positions.secondX32[task.anchor]);
        const __m128i secondY = _mm_set1_epi16(positions.secondY32[task.anchor]);
        const Turn turn(task.turns[0]);
        const Turn otherTurn(task.turns[1]);
        __m128i agreeing = _mm_setzero_si128();
        __m128i otherAgreeing = _mm_setzero_si128();
        std::size_t i = task.begin;
        for (int left = task.count; left > 0; left -= static_cast<int>(kLanes), i += kLanes) {
            const Offsets offsets{_mm_sub_epi16(load(positions.firstX64 + i), firstX),
                                  _mm_sub_epi16(load(positions.firstY64 + i), firstY),
                                  _mm_sub_epi16(load(positions.secondX32 + i), secondX),
                                  _mm_sub_epi16(load(positions.secondY32 + i), secondY)};
            const __m128i behind = lanesFrom(left);
            const __m128i one = _mm_set1_epi16(1);
            agreeing = _mm_add_epi16(
                agreeing, _mm_andnot_si128(_mm_or_si128(tooFar(offsets, turn), behind), one));
            otherAgreeing = _mm_add_epi16(
                otherAgreeing,
                _mm_andnot_si128(_mm_or_si128(tooFar(offsets, otherTurn), behind), one));
        }
        *bound++ = sumOfLanes(agreeing);
        *bound++ = sumOfLanes(otherAgreeing);
    }
}

}  // namespace orl::matcher::sse2

#endif
