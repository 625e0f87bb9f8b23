#include "matcher/matching/kernels/agreement_bound.h"

#if defined(__SSE2__) && defined(__linux__)

#include <limits>

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

// Each lane's pair may agree when both its errors are within the limit. They are shifted so that
// those within it are the lowest of all 16-bit numbers: -kBoundPerCoordinate comes first.
struct InSquare {
    static constexpr int kLowest = std::numeric_limits<std::int16_t>::min();
    static constexpr auto kShift = static_cast<std::int16_t>(kLowest + kBoundPerCoordinate);

    ORL_AVX2 static __m256i test(__m256i errorX, __m256i errorY) {
        constexpr auto kEnd = static_cast<std::int16_t>(kLowest + 2 * kBoundPerCoordinate + 1);
        return _mm256_cmpgt_epi16(_mm256_set1_epi16(kEnd), _mm256_max_epi16(errorX, errorY));
    }
};

// When the sum of their squares is.
struct InCircle {
    static constexpr std::int16_t kShift = 0;

    ORL_AVX2 static __m256i test(__m256i errorX, __m256i errorY) {
        const __m256i low = _mm256_unpacklo_epi16(errorX, errorY);
        const __m256i high = _mm256_unpackhi_epi16(errorX, errorY);
        const __m256i end = _mm256_set1_epi32(kBoundSquared + 1);
        return _mm256_packs_epi32(_mm256_cmpgt_epi32(end, _mm256_madd_epi16(low, low)),
                                  _mm256_cmpgt_epi32(end, _mm256_madd_epi16(high, high)));
    }
};

// A pair's two vertices as seen from the anchor's, the second one's coordinates less the shift.
struct Offsets {
    __m256i firstX, firstY, secondX, secondY;
};

// A turn, each number in all lanes.
struct Turn {
    __m256i cosine, sine;

    ORL_AVX2 explicit Turn(ScaledTurn turn)
        : cosine(_mm256_set1_epi16(turn.cosine)), sine(_mm256_set1_epi16(turn.sine)) {}
};

// All ones in the lanes whose pair may agree.
template <typename Limit>
ORL_AVX2 __m256i mayAgree(const Offsets& offsets, const Turn& turn) {
    const __m256i turnedX = _mm256_sub_epi16(_mm256_mulhi_epi16(offsets.firstX, turn.cosine),
                                             _mm256_mulhi_epi16(offsets.firstY, turn.sine));
    const __m256i turnedY = _mm256_add_epi16(_mm256_mulhi_epi16(offsets.firstX, turn.sine),
                                             _mm256_mulhi_epi16(offsets.firstY, turn.cosine));
    return Limit::test(_mm256_sub_epi16(turnedX, offsets.secondX),
                       _mm256_sub_epi16(turnedY, offsets.secondY));
}

// All ones in the first `count` lanes, 0..kLanes.
ORL_AVX2 __m256i firstLanes(std::size_t count) {
    alignas(32) static constexpr std::array<std::int16_t, 2 * kLanes> kOnesThenZeros = {
        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    return load(kOnesThenZeros.data() + kLanes - count);
}

ORL_AVX2 Offsets offsetsFrom(const Offsets& anchor,
                             const BoundPositions& positions,
                             std::size_t i) {
    return {_mm256_sub_epi16(anchor.firstX, load(positions.firstX64 + i)),
            _mm256_sub_epi16(anchor.firstY, load(positions.firstY64 + i)),
            _mm256_sub_epi16(anchor.secondX, load(positions.secondX32 + i)),
            _mm256_sub_epi16(anchor.secondY, load(positions.secondY32 + i))};
}

// Writes the two sums of lanes.
ORL_AVX2 void writeSums(__m256i counts, __m256i otherCounts, std::uint16_t* sums) {
    const __m256i one = _mm256_set1_epi16(1);
    const __m256i both =
        _mm256_packs_epi32(_mm256_madd_epi16(counts, one), _mm256_madd_epi16(otherCounts, one));
    const __m256i quarters = _mm256_madd_epi16(both, one);
    __m128i sum =
        _mm_add_epi32(_mm256_castsi256_si128(quarters), _mm256_extracti128_si256(quarters, 1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    sums[0] = static_cast<std::uint16_t>(_mm_extract_epi16(sum, 0));
    sums[1] = static_cast<std::uint16_t>(_mm_extract_epi16(sum, 4));
}

template <typename Limit>
ORL_AVX2 void boundTasks(const BoundPositions& positions,
                         std::span<const BoundTask> tasks,
                         std::span<std::uint16_t> bounds) {
    std::uint16_t* bound = bounds.data();
    const __m256i shift = _mm256_set1_epi16(Limit::kShift);
    for (const BoundTask& task : tasks) {
        const Offsets anchor{
            _mm256_set1_epi16(positions.firstX64[task.anchor]),
            _mm256_set1_epi16(positions.firstY64[task.anchor]),
            _mm256_sub_epi16(_mm256_set1_epi16(positions.secondX32[task.anchor]), shift),
            _mm256_sub_epi16(_mm256_set1_epi16(positions.secondY32[task.anchor]), shift)};
        const Turn turn(task.turns[0]);
        const Turn otherTurn(task.turns[1]);
        __m256i counts = _mm256_setzero_si256();
        __m256i otherCounts = _mm256_setzero_si256();
        std::size_t i = task.begin;
        const std::size_t end = i + task.count;
        for (; i + kLanes < end; i += kLanes) {
            const Offsets offsets = offsetsFrom(anchor, positions, i);
            counts = _mm256_sub_epi16(counts, mayAgree<Limit>(offsets, turn));
            otherCounts = _mm256_sub_epi16(otherCounts, mayAgree<Limit>(offsets, otherTurn));
        }
        const Offsets offsets = offsetsFrom(anchor, positions, i);
        const __m256i left = firstLanes(end - i);
        counts = _mm256_sub_epi16(counts, _mm256_and_si256(mayAgree<Limit>(offsets, turn), left));
        otherCounts = _mm256_sub_epi16(otherCounts,
                                       _mm256_and_si256(mayAgree<Limit>(offsets, otherTurn), left));
        writeSums(counts, otherCounts, bound);
        bound += 2;
    }
}

}  // namespace

ORL_AVX2 void agreementBounds(const BoundPositions& positions,
                              std::span<const BoundTask> tasks,
                              std::span<std::uint16_t> bounds) {
    boundTasks<InSquare>(positions, tasks, bounds);
}

ORL_AVX2 void tightAgreementBounds(const BoundPositions& positions,
                                   std::span<const BoundTask> tasks,
                                   std::span<std::uint16_t> bounds) {
    boundTasks<InCircle>(positions, tasks, bounds);
}

}  // namespace orl::matcher::avx2

#endif
