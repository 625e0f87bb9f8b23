#pragma once

// The working memory of one matchTemplates call: the finger pair at hand, the lists that the stages
// hand to each other, and the best result of the finger pair's orientations so far. One call owns
// one context; it is never shared between threads and nothing of it survives the call.

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

#include "matcher/features/finger_model.h"
#include "matcher/matching/alignment_records.h"
#include "matcher/matching/match_results.h"

namespace orl::matcher {

// Two triangles that look alike. They belong to the fingers' lists and are not owned.
struct TrianglePair {
    std::int32_t similarity = 0;  // 1..1024, higher is better
    const TriangleFeature* first = nullptr;
    const TriangleFeature* second = nullptr;
};

// A minutia of the first finger and the one of the second finger that it is taken to be.
struct MinutiaPair {
    TriangleVertex first;
    TriangleVertex second;

    friend bool operator==(const MinutiaPair&, const MinutiaPair&) = default;
};

// What an alignment's statistics are measured against, the same for all alignments of one finger
// match.
struct AlignmentReference {
    float firstArea = 0.0F;   // bounding box of all pairs' first vertices, grid units squared
    float secondArea = 0.0F;  // bounding box of all pairs' second vertices
    std::uint64_t firstMinutiaCount = 0;
    std::uint64_t secondMinutiaCount = 0;
};

struct MatchContext {
    static constexpr std::size_t kInitialPairCapacity = 100;  // entries; the lists grow beyond it

    MatchContext() {
        trianglePairs.reserve(kInitialPairCapacity);
        minutiaPairs.reserve(kInitialPairCapacity);
    }

    // The finger pair at hand.
    std::span<const TriangleFeature> firstTriangles;
    std::uint64_t firstMinutiaCount = 0;
    const FingerFeatures* secondFinger = nullptr;

    // Of the current finger match; refilled by each stage.
    std::vector<TrianglePair> trianglePairs;
    std::unordered_set<std::uint16_t> firstPositions;   // x * 256 + y of paired first vertices
    std::unordered_set<std::uint16_t> secondPositions;  // the same of second vertices
    std::vector<MinutiaPair> minutiaPairs;              // consolidated
    AlignmentReference reference;
    std::vector<AlignmentHypothesis> hypotheses;  // by count, highest first

    FingerMatchResult best;  // of the orientations tried so far of the finger pair at hand
};

}  // namespace orl::matcher
