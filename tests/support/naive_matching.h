#pragma once

// A second matcher, written straight from the rules and only for tests: every triangle against
// every triangle, ordered containers instead of hash sets and bisection, trigonometry computed anew
// for each use, vertices ordered and triangles rebuilt here. It shares with the real one nothing
// but the plain value types. Slow, single-purpose, and meant to agree in every bit.

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "matcher/features/finger_model.h"
#include "matcher/matching/match_results.h"

namespace orl::naive {

using matcher::FingerFeatures;
using matcher::FingerMatchResult;
using matcher::TemplateMatchResult;
using matcher::TriangleFeature;
using matcher::TriangleVertex;

// Similarity of two triangles, 1..1024, or 0 when no cyclic order makes them alike.
int TriangleSimilarity(const TriangleFeature& a, const TriangleFeature& b);

struct TrianglePair {
    int similarity;
    std::size_t a;  // index into the first finger's list
    std::size_t b;  // index into the second finger's list

    friend bool operator==(const TrianglePair&, const TrianglePair&) = default;
};

// All pairs of like triangles, in the order in which the search must find them.
std::vector<TrianglePair> SearchTrianglePairs(std::span<const TriangleFeature> a,
                                              std::span<const TriangleFeature> b);

// The same by similarity, greatest first; equal ones keep their order.
std::vector<TrianglePair> Ranked(const std::vector<TrianglePair>& pairs);

using MinutiaPair = std::pair<TriangleVertex, TriangleVertex>;

// Pairs ranked by similarity, joined corner by corner, those whose positions are both taken left
// out. Empty for fewer than 3 triangle pairs.
std::vector<MinutiaPair> Consolidate(const std::vector<TrianglePair>& trianglePairs,
                                     std::span<const TriangleFeature> a,
                                     std::span<const TriangleFeature> b);

struct Evaluation {
    int count;
    std::size_t anchor;
    int rotation;
    float distanceMedian;
    float angleMedian;
    float coverage;
    float matchedRatio;
};

// One alignment, with statistics.
Evaluation Evaluate(const std::vector<MinutiaPair>& pairs,
                    std::size_t anchor,
                    int rotation,
                    std::uint64_t countA,
                    std::uint64_t countB);

// The best of all hypotheses, refined or not; count below 4 when there is no alignment.
Evaluation BestAlignment(const std::vector<MinutiaPair>& pairs,
                         std::uint64_t countA,
                         std::uint64_t countB,
                         bool refine);

// The finger's triangles after quarter turns, rebuilt and sorted.
std::vector<TriangleFeature> Turned(std::span<const TriangleFeature> triangles, int quarterTurns);

FingerMatchResult MatchFinger(const FingerFeatures& a, const FingerFeatures& b, int quarterTurns);

TemplateMatchResult MatchTemplates(std::span<const FingerFeatures> first,
                                   std::span<const FingerFeatures> second);

}  // namespace orl::naive
