#include <algorithm>
#include <cstdlib>

#include "matcher/matching/kernels/agreement_bound.h"

namespace orl::matcher::plain {
namespace {

// The upper half of the 32-bit product, cut down toward minus infinity.
int highProduct(int a, int b) {
    constexpr int kHalfBits = 16;
    return (a * b) >> kHalfBits;
}

struct Error {
    int x, y;
};

Error errorOf(const BoundPositions& positions,
              std::size_t pair,
              std::size_t anchor,
              ScaledTurn turn) {
    const int dx = positions.firstX64[anchor] - positions.firstX64[pair];
    const int dy = positions.firstY64[anchor] - positions.firstY64[pair];
    return {highProduct(dx, turn.cosine) - highProduct(dy, turn.sine) -
                (positions.secondX32[anchor] - positions.secondX32[pair]),
            highProduct(dx, turn.sine) + highProduct(dy, turn.cosine) -
                (positions.secondY32[anchor] - positions.secondY32[pair])};
}

bool isInSquare(Error error) {
    return std::max(std::abs(error.x), std::abs(error.y)) <= kBoundPerCoordinate;
}

bool isInCircle(Error error) {
    return error.x * error.x + error.y * error.y <= kBoundSquared;
}

template <typename MayAgree>
std::uint16_t boundOf(const BoundPositions& positions,
                      const BoundTask& task,
                      ScaledTurn turn,
                      MayAgree mayAgree) {
    std::uint16_t agreeing = 0;
    for (std::size_t i = 0; i < task.count; ++i) {
        if (mayAgree(errorOf(positions, task.begin + i, task.anchor, turn))) {
            ++agreeing;
        }
    }
    return agreeing;
}

template <typename MayAgree>
void boundTasks(const BoundPositions& positions,
                std::span<const BoundTask> tasks,
                std::span<std::uint16_t> bounds,
                MayAgree mayAgree) {
    std::size_t next = 0;
    for (const BoundTask& task : tasks) {
        for (const ScaledTurn turn : task.turns) {
            bounds[next++] = boundOf(positions, task, turn, mayAgree);
        }
    }
}

}  // namespace

void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds) {
    boundTasks(positions, tasks, bounds, isInSquare);
}

void tightAgreementBounds(const BoundPositions& positions,
                          std::span<const BoundTask> tasks,
                          std::span<std::uint16_t> bounds) {
    boundTasks(positions, tasks, bounds, isInCircle);
}

}  // namespace orl::matcher::plain

namespace orl::matcher {

AgreementBounds fastestAgreementBounds() {
#if defined(__SSE2__) && defined(__linux__)
    return __builtin_cpu_supports("avx2") ? avx2::agreementBounds : sse2::agreementBounds;
#elif defined(__SSE2__)
    return sse2::agreementBounds;
#else
    return plain::agreementBounds;
#endif
}

AgreementBounds fastestTightAgreementBounds() {
#if defined(__SSE2__) && defined(__linux__)
    return __builtin_cpu_supports("avx2") ? avx2::tightAgreementBounds : sse2::tightAgreementBounds;
#elif defined(__SSE2__)
    return sse2::tightAgreementBounds;
#else
    return plain::tightAgreementBounds;
#endif
}

}  // namespace orl::matcher
