#include "matcher/matching/kernels/agreement_bound.h"

#if defined(__SSE2__)

#include <limits>

#include <emmintrin.h>

namespace orl::matcher::sse2 {
namespace {

constexpr std::size_t kLanes = 8;

__m128i load(const std::int16_t* values) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(values));
}

// Each lane's pair may agree when both its errors are within the limit. They are shifted so that
// those within it are the lowest of all 16-bit numbers: -kBoundPerCoordinate comes first.
struct InSquare {
    static constexpr int kLowest = std::numeric_limits<std::int16_t>::min();
    static constexpr auto kShift = static_cast<std::int16_t>(kLowest + kBoundPerCoordinate);

    static __m128i test(__m128i errorX, __m128i errorY) {
        constexpr auto kEnd = static_cast<std::int16_t>(kLowest + 2 * kBoundPerCoordinate + 1);
        return _mm_cmpgt_epi16(_mm_set1_epi16(kEnd), _mm_max_epi16(errorX, errorY));
    }
};

// When the sum of their squares is.
struct InCircle {
    static constexpr std::int16_t kShift = 0;

    static __m128i test(__m128i errorX, __m128i errorY) {
        const __m128i low = _mm_unpacklo_epi16(errorX, errorY);
        const __m128i high = _mm_unpackhi_epi16(errorX, errorY);
        const __m128i end = _mm_set1_epi32(kBoundSquared + 1);
        return _mm_packs_epi32(_mm_cmpgt_epi32(end, _mm_madd_epi16(low, low)),
                               _mm_cmpgt_epi32(end, _mm_madd_epi16(high, high)));
    }
};

// A pair's two vertices as seen from the anchor's, the second one's coordinates less the shift.
struct Offsets {
    __m128i firstX, firstY, secondX, secondY;
};

// A turn, each number in all lanes.
struct Turn {
    __m128i cosine, sine;

    explicit Turn(ScaledTurn turn)
        : cosine(_mm_set1_epi16(turn.cosine)), sine(_mm_set1_epi16(turn.sine)) {}
};

// All ones in the lanes whose pair may agree.
template <typename Limit>
__m128i mayAgree(const Offsets& offsets, const Turn& turn) {
    const __m128i turnedX = _mm_sub_epi16(_mm_mulhi_epi16(offsets.firstX, turn.cosine),
                                          _mm_mulhi_epi16(offsets.firstY, turn.sine));
    const __m128i turnedY = _mm_add_epi16(_mm_mulhi_epi16(offsets.firstX, turn.sine),
                                          _mm_mulhi_epi16(offsets.firstY, turn.cosine));
    return Limit::test(_mm_sub_epi16(turnedX, offsets.secondX),
                       _mm_sub_epi16(turnedY, offsets.secondY));
}

// All ones in the first `count` lanes, 0..kLanes.
__m128i firstLanes(std::size_t count) {
    alignas(32) static constexpr std::array<std::int16_t, 2 * kLanes> kOnesThenZeros = {
        -1, -1, -1, -1, -1, -1, -1, -1};
    return load(kOnesThenZeros.data() + kLanes - count);
}

Offsets offsetsFrom(const Offsets& anchor, const BoundPositions& positions, std::size_t i) {
    return {_mm_sub_epi16(anchor.firstX, load(positions.firstX64 + i)),
            _mm_sub_epi16(anchor.firstY, load(positions.firstY64 + i)),
            _mm_sub_epi16(anchor.secondX, load(positions.secondX32 + i)),
            _mm_sub_epi16(anchor.secondY, load(positions.secondY32 + i))};
}

// Writes the two sums of lanes.
void writeSums(__m128i counts, __m128i otherCounts, std::uint16_t* sums) {
    const __m128i one = _mm_set1_epi16(1);
    const __m128i both =
        _mm_packs_epi32(_mm_madd_epi16(counts, one), _mm_madd_epi16(otherCounts, one));
    __m128i sum = _mm_madd_epi16(both, one);
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
    sums[0] = static_cast<std::uint16_t>(_mm_extract_epi16(sum, 0));
    sums[1] = static_cast<std::uint16_t>(_mm_extract_epi16(sum, 4));
}

template <typename Limit>
void boundTasks(const BoundPositions& positions,
                std::span<const BoundTask> tasks,
                std::span<std::uint16_t> bounds) {
    std::uint16_t* bound = bounds.data();
    const __m128i shift = _mm_set1_epi16(Limit::kShift);
    for (const BoundTask& task : tasks) {
        const Offsets anchor{
            _mm_set1_epi16(positions.firstX64[task.anchor]),
            _mm_set1_epi16(positions.firstY64[task.anchor]),
            _mm_sub_epi16(_mm_set1_epi16(positions.secondX32[task.anchor]), shift),
            _mm_sub_epi16(_mm_set1_epi16(positions.secondY32[task.anchor]), shift)};
        const Turn turn(task.turns[0]);
        const Turn otherTurn(task.turns[1]);
        __m128i counts = _mm_setzero_si128();
        __m128i otherCounts = _mm_setzero_si128();
        std::size_t i = task.begin;
        const std::size_t end = i + task.count;
        for (; i + kLanes < end; i += kLanes) {
            const Offsets offsets = offsetsFrom(anchor, positions, i);
            counts = _mm_sub_epi16(counts, mayAgree<Limit>(offsets, turn));
            otherCounts = _mm_sub_epi16(otherCounts, mayAgree<Limit>(offsets, otherTurn));
        }
        const Offsets offsets = offsetsFrom(anchor, positions, i);
        const __m128i left = firstLanes(end - i);
        counts = _mm_sub_epi16(counts, _mm_and_si128(mayAgree<Limit>(offsets, turn), left));
        otherCounts =
            _mm_sub_epi16(otherCounts, _mm_and_si128(mayAgree<Limit>(offsets, otherTurn), left));
        writeSums(counts, otherCounts, bound);
        bound += 2;
    }
}

}  // namespace

void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds) {
    boundTasks<InSquare>(positions, tasks, bounds);
}

void tightAgreementBounds(const BoundPositions& positions,
                          std::span<const BoundTask> tasks,
                          std::span<std::uint16_t> bounds) {
    boundTasks<InCircle>(positions, tasks, bounds);
}

}  // namespace orl::matcher::sse2

#endif
