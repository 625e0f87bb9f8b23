#pragma once

// Two built templates in, one TemplateMatchResult out.

#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

// Compares every finger of `first` (the probe) with every finger of `second` (the candidate), each
// in four quarter-turn orientations of the second finger, and returns the best pair's figures. A
// template without fingers yields score 0. Read-only on both; safe from several threads at once.
// Throws: std::bad_alloc, std::length_error when memory runs out.
TemplateMatchResult matchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second);

}  // namespace orl::matcher
