#pragma once

// First half of a finger match: finds the pairs of triangles that look alike and turns them into a
// list of distinct minutia correspondences. Integer arithmetic on bytes throughout.

#include <cstdint>
#include <span>
#include <vector>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_context.h"

namespace orl::matcher {

// The triangles of `sorted` whose key, the first side byte as a signed number, lies within 18 of
// `key`. The limits wrap in 8 bits: a key above 109 or below -110 gets an upper limit below its
// lower one and so an empty range. Never throws.
// REQUIRES: `sorted` is sorted as TriangleKeyLess tells.
std::span<const TriangleFeature> trianglesInKeyRange(std::span<const TriangleFeature> sorted,
                                                     std::int8_t key);

// Whether the first three side bytes differ by at most 17 each, the differences taken modulo 256 as
// signed bytes. Never throws.
bool areCandidates(const TriangleFeature& first, const TriangleFeature& second);

// Appends to context.trianglePairs, for every triangle of the first finger in list order, the pairs
// it forms with like triangles of `secondTriangles`, in list order.
// REQUIRES: `secondTriangles` is sorted as TriangleKeyLess tells and outlives the pairs.
// Throws: std::bad_alloc.
void searchTrianglePairs(MatchContext& context, std::span<const TriangleFeature> secondTriangles);

// Compares the vertices of `second` with those of `first` under the three cyclic orders and appends
// the pair to `pairs` when an order passes: similarity 1024 for equal triangles, less for more
// costly ones. Which order passed is not kept. Both triangles must outlive `pairs`.
// Throws: std::bad_alloc.
void scoreTrianglePair(const TriangleFeature& second,
                       std::vector<TrianglePair>& pairs,
                       const TriangleFeature& first);

// Ranks context.trianglePairs by similarity (equal ones keep their order) and fills
// context.minutiaPairs with their vertices, corner by corner; a correspondence is dropped when both
// of its positions are taken already. Returns false when fewer than 3 triangle pairs are there or
// fewer than 3 minutia pairs result: the fingers cannot be aligned then.
// Throws: std::bad_alloc, std::length_error.
bool consolidatePairs(MatchContext& context);

}  // namespace orl::matcher
