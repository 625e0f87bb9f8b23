#pragma once

// Two built templates in, one TemplateMatchResult out: every finger of the one against every finger
// of the other, in four quarter-turn orientations of the second finger. The stages are in
// pair_search.h, alignment.h and score.h; the turned copies in orientation.h.

#include <cstddef>
#include <optional>
#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

struct MatchContext;

// Compares every finger of `first` (the probe) with every finger of `second` (the candidate), each
// in four quarter-turn orientations of the second finger, and returns the best pair's figures. A
// template without fingers yields score 0. Read-only on both; safe from several threads at once.
// REQUIRES: the fingers were built as finger_features.h does.
// Throws: std::bad_alloc.
TemplateMatchResult matchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second);

// Matches the context's finger pair in all four orientations of the second finger and replaces
// `best` by the outcome of each that is better. Returns whether one was.
// REQUIRES: searchTrianglePairs has filled the context. Throws: std::bad_alloc.
bool matchFingerAllOrientations(MatchContext& context, FingerMatchResult& best);

// Matches the context's finger pair with the second finger given `orientation` (0..3) quarter
// turns. The result is all zero when fewer than 3 triangle pairs, fewer than 3 minutia pairs or
// fewer than 4 agreeing pairs are found. Nothing is returned as soon as it is certain that the
// result is not better than `best`, where one is given. REQUIRES: searchTrianglePairs has filled
// the context. Throws: std::bad_alloc.
std::optional<FingerMatchResult> matchFinger(MatchContext& context,
                                             std::size_t orientation,
                                             const FingerMatchResult* best);

}  // namespace orl::matcher
