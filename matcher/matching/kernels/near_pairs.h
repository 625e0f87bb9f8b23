#pragma once

// The exact positions test of one alignment. Forms with the same results: `plain` says what is
// computed, `sse2` does it for four pairs at a time and `avx2` for eight; tests compare them. The
// results are 32-bit floats, the same bits in all forms.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/agreement_bound.h"

namespace orl::matcher {

// An alignment about an anchor pair, and the pairs [begin, begin + count) to be tested with it.
struct NearPairsTask {
    std::uint16_t anchor;  // where the anchor pair stands
    std::uint16_t begin;
    std::uint16_t count;
    float cosine;
    float sine;
};

inline constexpr float kMaxResidualSquaredGridUnits = 324.0F;  // 18 grid units; the limit is near
inline constexpr std::size_t kNearPairsLanes = 8;
inline constexpr std::size_t kNearPairsWordBits = 64;

// For pair begin + k writes to squaredResiduals[k] the squared distance, in grid units, between its
// second vertex and where the alignment puts its first one, and to bit k % 64 of near[k / 64]
// whether that is within the limit. Bits from `count` on in the last word are 0.
//   x = (onto.x + dx * cosine) - dy * sine, y = (onto.y + dx * sine) + dy * cosine
// squaredResiduals has room for `count` rounded up to kNearPairsLanes, near for a bit each of them.
using NearPairs = void (*)(const BoundPositions& positions,
                           const NearPairsTask& task,
                           std::span<float> squaredResiduals,
                           std::span<std::uint64_t> near);

namespace plain {
void nearPairs(const BoundPositions& positions,
               const NearPairsTask& task,
               std::span<float> squaredResiduals,
               std::span<std::uint64_t> near);
}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {
void nearPairs(const BoundPositions& positions,
               const NearPairsTask& task,
               std::span<float> squaredResiduals,
               std::span<std::uint64_t> near);
}  // namespace sse2
#endif

#if defined(__SSE2__) && defined(__linux__)
namespace avx2 {
// REQUIRES: a processor with AVX2.
void nearPairs(const BoundPositions& positions,
               const NearPairsTask& task,
               std::span<float> squaredResiduals,
               std::span<std::uint64_t> near);
}  // namespace avx2
#endif

// The fastest form that this processor runs; see fastestAgreementBounds.
NearPairs fastestNearPairs();

// The faster forms compute in 1/32 grid unit, as the positions stand there. Scaling by a power of
// two changes no rounding, so scaling back gives the same bits; half the cosine and sine meet first
// vertices in 1/64.
inline constexpr float kNearPairsTurnScale = 0.5F;
inline constexpr float kNearPairsScaleSquared = 1024.0F;

}  // namespace orl::matcher
