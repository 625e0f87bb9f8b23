#include <algorithm>

#include "matcher/matching/kernels/near_pairs.h"

namespace orl::matcher::plain {
namespace {

struct Position {
    float x, y;
};

Position firstOf(const BoundPositions& positions, std::size_t pair) {
    constexpr float kScale = 64.0F;
    return {static_cast<float>(positions.firstX64[pair]) / kScale,
            static_cast<float>(positions.firstY64[pair]) / kScale};
}

Position secondOf(const BoundPositions& positions, std::size_t pair) {
    constexpr float kScale = 32.0F;
    return {static_cast<float>(positions.secondX32[pair]) / kScale,
            static_cast<float>(positions.secondY32[pair]) / kScale};
}

float squaredResidual(const BoundPositions& positions, const NearPairsTask& task, std::size_t i) {
    const Position from = firstOf(positions, task.anchor);
    const Position onto = secondOf(positions, task.anchor);
    const Position first = firstOf(positions, i);
    const Position second = secondOf(positions, i);
    const float dx = first.x - from.x;
    const float dy = first.y - from.y;
    const float x = (onto.x + dx * task.cosine) - dy * task.sine;
    const float y = (onto.y + dx * task.sine) + dy * task.cosine;
    const float errorX = x - second.x;
    const float errorY = y - second.y;
    return errorX * errorX + errorY * errorY;
}

}  // namespace

void nearPairs(const BoundPositions& positions,
               const NearPairsTask& task,
               std::span<float> squaredResiduals,
               std::span<std::uint64_t> near) {
    const std::size_t words = (task.count + kNearPairsWordBits - 1) / kNearPairsWordBits;
    std::fill_n(near.begin(), words, std::uint64_t{0});
    for (std::size_t k = 0; k < task.count; ++k) {
        squaredResiduals[k] = squaredResidual(positions, task, task.begin + k);
        const std::uint64_t isNear = squaredResiduals[k] <= kMaxResidualSquaredGridUnits ? 1 : 0;
        near[k / kNearPairsWordBits] |= isNear << (k % kNearPairsWordBits);
    }
}

}  // namespace orl::matcher::plain

namespace orl::matcher {

NearPairs fastestNearPairs() {
#if defined(__SSE2__) && defined(__linux__)
    return __builtin_cpu_supports("avx2") ? avx2::nearPairs : sse2::nearPairs;
#elif defined(__SSE2__)
    return sse2::nearPairs;
#else
    return plain::nearPairs;
#endif
}

}  // namespace orl::matcher
