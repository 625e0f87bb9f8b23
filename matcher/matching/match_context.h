#pragma once

// What the stages of one finger pair's match hand to each other. One matchTemplates call owns its
// contexts and their memory; nothing is shared between threads or survives the call.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/features/finger_model.h"
#include "matcher/matching/orientation.h"
#include "matcher/matching/position_numbers.h"
#include "matcher/matching/ranked_pairs.h"
#include "matcher/matching/scratch.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

inline constexpr std::int32_t kMaxSimilarity = 1024;

// A minutia of the first finger and the one of the second finger that it is taken to be.
struct MinutiaPair {
    TriangleVertex first;
    TriangleVertex second;

    friend bool operator==(const MinutiaPair&, const MinutiaPair&) = default;
};

// The memory that all finger pairs of a call use in turn.
struct MatchMemory {
    Scratch scratch;
};

// One finger of the first template against one of the second.
struct MatchContext {
    // Prepares both fingers for the search. REQUIRES: `memory` is used by no other context; both
    // fingers outlive the context, and their triangles were made and sorted by the feature builder.
    // Throws: std::bad_alloc.
    MatchContext(const FingerFeatures& first, const FingerFeatures& second, MatchMemory& memory);

    MatchMemory& memory;
    std::uint64_t firstMinutiaCount;
    std::uint64_t secondMinutiaCount;
    std::span<const TriangleFeature> firstTriangles;
    std::span<const CyclicCodes> firstCodes;
    OrientedFinger second;
    PositionNumbers firstPositions;
    PositionNumbers secondPositions;

    // Filled by searchTrianglePairs.
    RankedPairs trianglePairs;

    // Filled by consolidatePairs for the orientation at hand.
    std::span<const MinutiaPair> minutiaPairs;
};

}  // namespace orl::matcher
