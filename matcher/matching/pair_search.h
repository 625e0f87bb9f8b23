#pragma once

// First half of a finger match: finds the pairs of triangles that look alike and turns them into a
// list of distinct minutia correspondences. Integer arithmetic on bytes throughout.

#include <cstddef>

#include "matcher/matching/match_context.h"

namespace orl::matcher {

// Fills context.trianglePairs: for every orientation the pairs that triangles of the first finger
// form with like triangles of the turned second finger, ranked by similarity. Of equal ones the
// first finger's triangles decide in list order, then the second's.
// Throws: std::bad_alloc.
void searchTrianglePairs(MatchContext& context);

// Compares the vertices of `second` with those of the first finger's triangle `firstCodes` under
// the three cyclic orders and returns the similarity of the best: 1024 for equal triangles, less
// for more costly ones, 0 when no order passes. Which order passed is not kept.
std::int32_t scoreTrianglePair(const TriangleCode& second, const CyclicCodes& firstCodes);

// Fills context.minutiaPairs with the vertices of an orientation's ranked triangle pairs, corner by
// corner; a correspondence is dropped when both of its positions are taken already. Returns false
// when fewer than 3 triangle pairs are there or fewer than 3 minutia pairs result: the fingers
// cannot be aligned then. Throws: std::bad_alloc.
bool consolidatePairs(MatchContext& context, std::size_t orientation);

}  // namespace orl::matcher
