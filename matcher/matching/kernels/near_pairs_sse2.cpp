#include "matcher/matching/kernels/near_pairs.h"

#if defined(__SSE2__)

#include <emmintrin.h>

namespace orl::matcher::sse2 {
namespace {

constexpr std::size_t kLanes = 4;

__m128 load(const std::int16_t* values) {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(values));
    // Into the upper halves and down again, which keeps the sign.
    constexpr int kHalfBits = 16;
    return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(low, low), kHalfBits));
}

// The anchor pair and the turn about it, each number in all lanes, in the scaled units.
struct Alignment {
    __m128 fromX, fromY, ontoX, ontoY, cosine, sine;

    Alignment(const BoundPositions& positions, const NearPairsTask& task)
        : fromX(_mm_set1_ps(positions.firstX64[task.anchor])),
          fromY(_mm_set1_ps(positions.firstY64[task.anchor])),
          ontoX(_mm_set1_ps(positions.secondX32[task.anchor])),
          ontoY(_mm_set1_ps(positions.secondY32[task.anchor])),
          cosine(_mm_set1_ps(task.cosine * kNearPairsTurnScale)),
          sine(_mm_set1_ps(task.sine * kNearPairsTurnScale)) {}
};

// Writes the lanes' squared residuals; returns a bit for each that is within the limit.
unsigned nearLanes(const BoundPositions& positions,
                   const Alignment& alignment,
                   std::size_t i,
                   float* squaredResiduals) {
    const __m128 dx = _mm_sub_ps(load(positions.firstX64 + i), alignment.fromX);
    const __m128 dy = _mm_sub_ps(load(positions.firstY64 + i), alignment.fromY);
    const __m128 x = _mm_sub_ps(_mm_add_ps(alignment.ontoX, _mm_mul_ps(dx, alignment.cosine)),
                                _mm_mul_ps(dy, alignment.sine));
    const __m128 y = _mm_add_ps(_mm_add_ps(alignment.ontoY, _mm_mul_ps(dx, alignment.sine)),
                                _mm_mul_ps(dy, alignment.cosine));
    const __m128 errorX = _mm_sub_ps(x, load(positions.secondX32 + i));
    const __m128 errorY = _mm_sub_ps(y, load(positions.secondY32 + i));
    const __m128 squared = _mm_add_ps(_mm_mul_ps(errorX, errorX), _mm_mul_ps(errorY, errorY));
    _mm_storeu_ps(squaredResiduals,
                  _mm_mul_ps(squared, _mm_set1_ps(1.0F / kNearPairsScaleSquared)));
    const __m128 limit = _mm_set1_ps(kMaxResidualSquaredGridUnits * kNearPairsScaleSquared);
    return static_cast<unsigned>(_mm_movemask_ps(_mm_cmple_ps(squared, limit)));
}

unsigned nearEight(const BoundPositions& positions,
                   const Alignment& alignment,
                   std::size_t i,
                   float* squaredResiduals) {
    return nearLanes(positions, alignment, i, squaredResiduals) |
           nearLanes(positions, alignment, i + kLanes, squaredResiduals + kLanes) << kLanes;
}

}  // namespace

void nearPairs(const BoundPositions& positions,
               const NearPairsTask& task,
               std::span<float> squaredResiduals,
               std::span<std::uint64_t> near) {
    const Alignment alignment(positions, task);
    std::uint64_t* word = near.data();
    std::uint64_t bits = 0;
    for (std::size_t k = 0; k < task.count; k += kNearPairsLanes) {
        const std::size_t bit = k % kNearPairsWordBits;
        bits |= std::uint64_t{nearEight(positions, alignment, task.begin + k, &squaredResiduals[k])}
                << bit;
        if (bit == kNearPairsWordBits - kNearPairsLanes) {
            *word++ = bits;
            bits = 0;
        }
    }
    const std::size_t left = task.count % kNearPairsWordBits;
    if (left > kNearPairsWordBits - kNearPairsLanes) {
        *--word &= ~std::uint64_t{0} >> (kNearPairsWordBits - left);
    } else if (left > 0) {
        *word = bits & (~std::uint64_t{0} >> (kNearPairsWordBits - left));
    }
}

}  // namespace orl::matcher::sse2

#endif
