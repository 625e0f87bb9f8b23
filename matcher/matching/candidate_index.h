#pragma once

// Finds, for one triangle of the first finger, the triangles of the second finger that may be like
// it in any orientation, without looking at each: a filter that lets every true pair pass and few
// others.
//
// Every circular byte of the second finger's codes (orientation 0) falls into one of 32 cells of 8
// steps. For each byte and cell the index holds a set, one bit a triangle, of those whose byte lies
// within reach of the cell; the triangles that may agree with a code are what its bytes' sets have
// in common. Turning a finger moves such a byte by 3 steps at most (turns wrap at 256 steps, the
// circle has 255, bearings are rounded), so the reach is widened by that and serves all four
// orientations.

#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/orientation.h"
#include "matcher/matching/scratch.h"
#include "matcher/matching/triangle_code.h"

namespace orl::matcher {

// A stretch of 128 triangles of a set.
struct TriangleBits {
    std::uint64_t low = 0;   // triangles 0..63 of the stretch
    std::uint64_t high = 0;  // triangles 64..127

    friend TriangleBits operator&(TriangleBits a, TriangleBits b) {
        return {a.low & b.low, a.high & b.high};
    }
    friend TriangleBits operator|(TriangleBits a, TriangleBits b) {
        return {a.low | b.low, a.high | b.high};
    }
};

inline constexpr std::size_t kTrianglesPerStretch = 128;

class CandidateIndex {
  public:
    // Indexes the finger's triangles; the sets live in `scratch`. Throws: std::bad_alloc.
    CandidateIndex(const OrientedFinger& finger, Scratch& scratch);

    std::size_t stretchCount() const { return stretchCount_; }

    // The triangles of a stretch that may agree with `code`, one cyclic order of a triangle of the
    // first finger, in any orientation. Irregular triangles are always among
    // them.
    TriangleBits find(const TriangleCode& code, std::size_t stretch) const;

  private:
    std::size_t stretchCount_;
    std::span<TriangleBits> sets_;  // by indexed byte, then stretch, then cell
};

}  // namespace orl::matcher
