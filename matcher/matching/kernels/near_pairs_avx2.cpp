#include "matcher/matching/kernels/near_pairs.h"

#if defined(__SSE2__) && defined(__linux__)

#include <immintrin.h>

// See agreement_bound_avx2.cpp for the attribute. No multiplication is fused with an addition:
// AVX2 alone has no instruction for it.
#define ORL_AVX2 __attribute__((target("avx2")))

namespace orl::matcher::avx2 {
namespace {

ORL_AVX2 __m256 load(const std::int16_t* values) {
    return _mm256_cvtepi32_ps(
        _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(values))));
}

// The anchor pair and the turn about it, each number in all lanes, in the scaled units.
struct Alignment {
    __m256 fromX, fromY, ontoX, ontoY, cosine, sine;

    ORL_AVX2 Alignment(const BoundPositions& positions, const NearPairsTask& task)
        : fromX(_mm256_set1_ps(positions.firstX64[task.anchor])),
          fromY(_mm256_set1_ps(positions.firstY64[task.anchor])),
          ontoX(_mm256_set1_ps(positions.secondX32[task.anchor])),
          ontoY(_mm256_set1_ps(positions.secondY32[task.anchor])),
          cosine(_mm256_set1_ps(task.cosine * kNearPairsTurnScale)),
          sine(_mm256_set1_ps(task.sine * kNearPairsTurnScale)) {}
};

// Writes the lanes' squared residuals; returns a bit for each that is within the limit.
ORL_AVX2 unsigned nearLanes(const BoundPositions& positions,
                            const Alignment& alignment,
                            std::size_t i,
                            float* squaredResiduals) {
    const __m256 dx = _mm256_sub_ps(load(positions.firstX64 + i), alignment.fromX);
    const __m256 dy = _mm256_sub_ps(load(positions.firstY64 + i), alignment.fromY);
    const __m256 x =
        _mm256_sub_ps(_mm256_add_ps(alignment.ontoX, _mm256_mul_ps(dx, alignment.cosine)),
                      _mm256_mul_ps(dy, alignment.sine));
    const __m256 y =
        _mm256_add_ps(_mm256_add_ps(alignment.ontoY, _mm256_mul_ps(dx, alignment.sine)),
                      _mm256_mul_ps(dy, alignment.cosine));
    const __m256 errorX = _mm256_sub_ps(x, load(positions.secondX32 + i));
    const __m256 errorY = _mm256_sub_ps(y, load(positions.secondY32 + i));
    const __m256 squared =
        _mm256_add_ps(_mm256_mul_ps(errorX, errorX), _mm256_mul_ps(errorY, errorY));
    _mm256_storeu_ps(squaredResiduals,
                     _mm256_mul_ps(squared, _mm256_set1_ps(1.0F / kNearPairsScaleSquared)));
    const __m256 limit = _mm256_set1_ps(kMaxResidualSquaredGridUnits * kNearPairsScaleSquared);
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(squared, limit, _CMP_LE_OQ)));
}

}  // namespace

ORL_AVX2 void nearPairs(const BoundPositions& positions,
                        const NearPairsTask& task,
                        std::span<float> squaredResiduals,
                        std::span<std::uint64_t> near) {
    const Alignment alignment(positions, task);
    std::uint64_t* word = near.data();
    std::uint64_t bits = 0;
    for (std::size_t k = 0; k < task.count; k += kNearPairsLanes) {
        const std::size_t bit = k % kNearPairsWordBits;
        bits |= std::uint64_t{nearLanes(positions, alignment, task.begin + k, &squaredResiduals[k])}
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

}  // namespace orl::matcher::avx2

#endif
