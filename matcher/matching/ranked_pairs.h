#pragma once

// The triangle pairs of the four orientations, best first.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/candidate_ranks.h"
#include "matcher/matching/scratch.h"

namespace orl::matcher {

// Two triangles that look alike, as indices into the two fingers' lists.
struct TrianglePair {
    std::uint16_t first;
    std::uint16_t second;

    friend bool operator==(const TrianglePair&, const TrianglePair&) = default;
};

// By orientation, the most similar pair first.
using RankedPairs = std::array<std::span<const TrianglePair>, kOrientations>;

// The most candidates that can be ranked: those of two fingers are at most 251 * 251.
inline constexpr std::size_t kMaxCandidates = 65535;

// Sorts the candidates by rank in each orientation in which they are alike; equal ones keep their
// order. `ranks` holds the ranks, candidate by candidate; the result lives in `scratch`.
// REQUIRES: at most kMaxCandidates. Throws: std::bad_alloc.
RankedPairs rankedPairs(std::span<const Candidate> candidates,
                        std::span<const OrientationRanks> ranks,
                        Scratch& scratch);

}  // namespace orl::matcher
