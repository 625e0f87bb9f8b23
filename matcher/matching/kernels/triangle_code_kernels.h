#pragma once

// The steps that make triangle codes, each in two forms with the same results: `plain` says what is
// computed, `sse2` does it a register at a time. `code_kernels` is the form that this build uses;
// tests compare the two.

#include <cstddef>
#include <cstdint>

#include "matcher/features/finger_model.h"
#include "matcher/features/lookup_tables.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher::plain {

// Finds the first vertices of the triangle's quarter turns where they can be told from the signs of
// a few products; false, with `starts` undefined, where they cannot, or where a turn reverses the
// order of the vertices (flat triangles and those of a few grid units).
//
// A turned triangle's vertices stand in ascending order of their bearing from its weighted centre,
// -127..128 steps, equal bearings in the order of the triangle it was turned from. Where the centre
// lies inside the triangle, its vertices are in cyclic order already, and no two of them are within
// a step of each other as seen from it, that is the same cyclic order, starting behind the -x
// axis, where bearings jump.
bool startsOfQuarterTurns(const TriangleFeature& triangle, QuarterTurnStarts& starts);

// The code of a triangle with its vertices in their present order.
TriangleCode codeOf(const TriangleFeature& triangle, const QuarterTurnBearings& bearings);

// The triangle's codes after 0, 1, 2 and 3 quarter turns, given their first vertices.
void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnStarts& starts,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes);

// The code with the vertices taken cyclically from `start` (0..2) on.
TriangleCode turnedCode(const TriangleCode& code, std::size_t start);

}  // namespace orl::matcher::plain

#if defined(__SSE2__)
#include "matcher/matching/kernels/quarter_turn_starts_sse2.h"  // IWYU pragma: export
#include "matcher/matching/kernels/triangle_code_sse2.h"        // IWYU pragma: export
#endif

namespace orl::matcher {

#if defined(__SSE2__)
namespace code_kernels = sse2;
#else
namespace code_kernels = plain;
#endif

// The codes of a triangle under its three cyclic orders.
inline CyclicCodes cyclicCodesOf(const TriangleFeature& triangle,
                                 const QuarterTurnBearings& bearings) {
    const TriangleCode code = code_kernels::codeOf(triangle, bearings);
    return {code, code_kernels::turnedCode(code, 1), code_kernels::turnedCode(code, 2)};
}

}  // namespace orl::matcher
