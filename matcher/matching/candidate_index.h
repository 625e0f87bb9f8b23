#pragma once

// Finds, for one triangle of the first finger, the triangles of the second finger that may be like
// it in any orientation, without looking at each: a filter that lets every true pair pass and few
// others.
//
// Every circular byte of the second finger's codes (orientation 0) falls into one of 32 cells of 8
// steps. For each byte and cell the index holds a set, one bit a triangle, of those whose byte lies
// within reach of the cell; the triangles that may agree with a code are what its bytes' sets have
// in common. Turning a finger moves such a byte by 3 steps at most, so the reach is widened by that
// and serves all four orientations; an irregular triangle, whose quarter turns need not resemble
// each other, stands in the cells of each of them. Side lengths, which no turn changes, are
// compared exactly.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/pair_test.h"
#include "matcher/matching/orientation.h"
#include "matcher/matching/scratch.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

class CandidateIndex {
  public:
    // A triangle of the first finger as the index wants it.
    class Query {
      public:
        // `code` is that of cyclic order 0.
        explicit Query(const TriangleCode& code);

      private:
        friend class CandidateIndex;

        // By vertex, for the turn and the edges from the next and from the previous vertex.
        std::array<std::array<std::uint16_t, kCorners>, 3> cells_;
        std::uint32_t sides_;
    };

    // Indexes the finger's triangles; the sets live in `scratch`. Throws: std::bad_alloc.
    CandidateIndex(const OrientedFinger& finger, Scratch& scratch);

    // The triangles begin..end - 1 of a stretch that may agree with the query in any orientation,
    // by cyclic order. REQUIRES:
    // begin <= end <= kTrianglesPerStretch.
    std::array<TriangleBits, kCorners> find(const Query& query,
                                            std::size_t stretch,
                                            std::size_t begin,
                                            std::size_t end) const;

  private:
    static constexpr std::size_t kStepsPerCell = 8;
    static constexpr std::size_t kCells = 256 / kStepsPerCell;
    static constexpr std::size_t kReachCells = 5;

    using Cells = std::array<TriangleBits, kCells>;
    // The sets of one stretch by group, vertex and cell.
    using StretchSets = std::array<std::array<Cells, kCorners>, 3>;

    struct Stretch {
        StretchSets sets;
        std::array<std::uint32_t, kTrianglesPerStretch> sides;
    };

    static std::uint16_t cellOf(std::uint8_t byte) { return byte / kStepsPerCell; }
    static void widen(Cells& cells);
    static void insert(StretchSets& sets, const TriangleCode& code, std::size_t index);
    static TriangleBits inReach(const StretchSets& sets, const Query& query, std::size_t order);

    std::span<Stretch> stretches_;
};

}  // namespace orl::matcher
