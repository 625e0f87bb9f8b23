#pragma once

// Two built templates in, one TemplateMatchResult out: every finger of the one against every finger
// of the other, in four quarter-turn orientations of the second finger. The stages are in
// pair_search.h, alignment.h and score.h; the turned copies in orientation.h.

#include <cstdint>
#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

struct MatchContext;

// Compares every finger of `first` (the probe) with every finger of `second` (the candidate), each
// in four quarter-turn orientations of the second finger, and returns the best pair's figures. A
// template without fingers yields score 0. Read-only on both; safe from several threads at once.
// REQUIRES: every triangle list is sorted as TriangleKeyLess tells.
// Throws: std::bad_alloc, std::length_error when memory runs out.
TemplateMatchResult matchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second);

// Matches the context's first finger against `secondTriangles`, the triangles of a finger of
// `secondMinutiaCount` minutiae that were given `orientation` quarter turns (0..3; only reported).
// The result is all zero when fewer than 3 triangle pairs, fewer than 3 minutia pairs or fewer than
// 4 agreeing pairs are found.
// REQUIRES: context.firstTriangles and context.firstMinutiaCount are set; both lists are sorted.
// Throws: std::bad_alloc, std::length_error.
void matchFinger(MatchContext& context,
                 FingerMatchResult& result,
                 std::span<const TriangleFeature> secondTriangles,
                 std::uint64_t secondMinutiaCount,
                 std::uint32_t orientation);

// Matches the context's finger pair with the second finger given `orientation` quarter turns, and
// keeps the outcome in context.best when it is better. Returns the new outcome's score, 0..1000.
// REQUIRES: orientation in 1..3; context.secondFinger is set; context.best holds the best of the
// orientations before.
// Throws: std::bad_alloc, std::length_error.
std::uint16_t matchFingerAllOrientations(MatchContext& context, std::uint32_t orientation);

}  // namespace orl::matcher
