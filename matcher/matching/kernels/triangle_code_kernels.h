#pragma once

// The innermost steps on triangle codes, each in two forms with the same results: `plain` says what
// is computed, `sse2` does it a register at a time. `kernels` is the form that this build uses;
// tests compare the two.

#include <array>
#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"
#include "matcher/features/lookup_tables.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

// A byte of a comparison may differ by this much at most.
inline constexpr std::uint8_t kMaxTurnDifferenceSteps = 34;
inline constexpr std::uint8_t kMaxEdgeDifferenceSteps = 34;
inline constexpr std::uint8_t kMaxSideDifferenceGridUnits = 17;

// The largest differences between the turns, edges and sides of two codes.
struct CodeDifference {
    std::int32_t turn;
    std::int32_t edge;
    std::int32_t side;
};

// The cost of an order whose largest differences are these.
constexpr std::int32_t costOf(const CodeDifference& difference) {
    constexpr std::int32_t kScale = 1024;  // a factor just beyond its limit
    return (difference.edge * kScale / (kMaxEdgeDifferenceSteps + 1)) *
           (difference.turn * kScale / (kMaxTurnDifferenceSteps + 1)) *
           (difference.side * kScale / (kMaxSideDifferenceGridUnits + 1));
}

namespace plain {

// The triangle's codes after 0, 1, 2 and 3 quarter turns, its vertices in their present order.
void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes);

// The code with the vertices taken cyclically from `start` (0..2) on.
TriangleCode turnedCode(const TriangleCode& code, std::size_t start);

// The triangle's vertices after `quarterTurns` (0..3) quarter turns, in their present order.
std::array<TriangleVertex, kCorners> turnedVertices(const TriangleFeature& triangle,
                                                    std::size_t quarterTurns);

// Which of the four codes agree with `first` in turns and edges: bit m for code m.
unsigned agreeingQuarterTurns(const QuarterTurnCodes& second, const TriangleCode& first);

// The largest differences between two codes, each over its bytes.
CodeDifference largestDifferences(const TriangleCode& second, const TriangleCode& first);

}  // namespace plain

#if defined(__SSE2__)

namespace sse2 {

void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes);

TriangleCode turnedCode(const TriangleCode& code, std::size_t start);

std::array<TriangleVertex, kCorners> turnedVertices(const TriangleFeature& triangle,
                                                    std::size_t quarterTurns);

unsigned agreeingQuarterTurns(const QuarterTurnCodes& second, const TriangleCode& first);

CodeDifference largestDifferences(const TriangleCode& second, const TriangleCode& first);

}  // namespace sse2

namespace kernels = sse2;

#else

namespace kernels = plain;

#endif

}  // namespace orl::matcher
