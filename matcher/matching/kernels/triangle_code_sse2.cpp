#include "matcher/matching/kernels/triangle_code_kernels.h"

#if defined(__SSE2__)

#include <algorithm>
#include <cstring>

#include <emmintrin.h>

namespace orl::matcher::sse2 {
namespace {

__m128i load(const TriangleCode& code) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(code.bytes.data()));
}

void store(TriangleCode& code, __m128i value) {
    _mm_store_si128(reinterpret_cast<__m128i*>(code.bytes.data()), value);
}

__m128i groupsOf(std::uint32_t group) {
    return _mm_set1_epi32(static_cast<int>(group));
}

constexpr std::uint32_t kGroupBytes = 0x00FFFFFF;  // three bytes of a group of four

// Each group's three bytes taken cyclically from byte `start` on; a fourth byte is dropped.
__m128i turnGroups(__m128i groups, std::size_t start) {
    constexpr int kGroupBits = 24;
    const int shift = static_cast<int>(8 * start);
    const __m128i down = _mm_srl_epi32(groups, _mm_cvtsi32_si128(shift));
    const __m128i up = _mm_sll_epi32(groups, _mm_cvtsi32_si128(kGroupBits - shift));
    return _mm_and_si128(_mm_or_si128(down, up), groupsOf(kGroupBytes));
}

// Forward difference of each byte, 255-step turn: to - from when `to` is greater, else that + 255,
// which is one less modulo 256.
__m128i turnsBetween(__m128i from, __m128i to) {
    const __m128i notGreater = _mm_cmpeq_epi8(_mm_max_epu8(from, to), from);
    return _mm_add_epi8(_mm_sub_epi8(to, from), notGreater);
}

// The bearings that quarterTurnCodes needs: group m holds, for m quarter turns, the bearings of the
// edges that end in vertex 0, 1 and 2 and come from the next vertex.
__m128i nextEdgeBearings(const TriangleFeature& triangle, const QuarterTurnBearings& bearings) {
    const auto fromNext = [&](std::size_t j) {
        const TriangleVertex& to = triangle.vertices[j];
        const TriangleVertex& from = triangle.vertices[(j + 1) % kCorners];
        return _mm_cvtsi32_si128(static_cast<int>(bearings(to.y - from.y, to.x - from.x)));
    };
    const __m128i firstTwo = _mm_unpacklo_epi8(fromNext(0), fromNext(1));
    const __m128i third = _mm_unpacklo_epi8(fromNext(2), _mm_setzero_si128());
    return _mm_unpacklo_epi16(firstTwo, third);
}

std::uint32_t sidesWord(const TriangleFeature& triangle) {
    std::uint32_t word = 0;
    std::memcpy(&word, triangle.sides, sizeof(word));
    return word & kGroupBytes;
}

// Group m: the vertices' directions after m quarter turns of 64 steps, 256-step turn.
__m128i turnedDirections(const TriangleFeature& triangle) {
    const std::uint32_t directions = triangle.vertices[0].angle |
                                     std::uint32_t{triangle.vertices[1].angle} << 8U |
                                     std::uint32_t{triangle.vertices[2].angle} << 16U;
    const __m128i quarterTurns = _mm_set_epi32(0x00C0C0C0, 0x00808080, 0x00404040, 0);
    return _mm_add_epi8(groupsOf(directions), quarterTurns);
}

}  // namespace

void codesOfQuarterTurns(const TriangleFeature& triangle,
                         const QuarterTurnBearings& bearings,
                         QuarterTurnCodes& codes) {
    constexpr int kSwapHalves = 0x4E;  // groups 2, 3, 0, 1: two more quarter turns
    const __m128i directions = turnedDirections(triangle);
    const __m128i nextEdges = nextEdgeBearings(triangle, bearings);
    // The edge into vertex j from the previous one is the edge into the previous one, turned
    // around.
    const __m128i previousEdges = turnGroups(_mm_shuffle_epi32(nextEdges, kSwapHalves), 2);
    const __m128i mask = groupsOf(kGroupBytes);
    const __m128i turn = _mm_and_si128(turnsBetween(directions, turnGroups(directions, 1)), mask);
    const __m128i next = _mm_and_si128(turnsBetween(directions, nextEdges), mask);
    const __m128i previous = _mm_and_si128(turnsBetween(directions, previousEdges), mask);
    const __m128i sides = groupsOf(sidesWord(triangle));

    // Transposed: one group of each kind for every orientation.
    const __m128i turnNextLow = _mm_unpacklo_epi32(turn, next);
    const __m128i turnNextHigh = _mm_unpackhi_epi32(turn, next);
    const __m128i previousSidesLow = _mm_unpacklo_epi32(previous, sides);
    const __m128i previousSidesHigh = _mm_unpackhi_epi32(previous, sides);
    store(codes[0], _mm_unpacklo_epi64(turnNextLow, previousSidesLow));
    store(codes[1], _mm_unpackhi_epi64(turnNextLow, previousSidesLow));
    store(codes[2], _mm_unpacklo_epi64(turnNextHigh, previousSidesHigh));
    store(codes[3], _mm_unpackhi_epi64(turnNextHigh, previousSidesHigh));
}

TriangleCode turnedCode(const TriangleCode& code, std::size_t start) {
    TriangleCode turned;
    store(turned, turnGroups(load(code), start));
    return turned;
}

std::array<TriangleVertex, kCorners> turnedVertices(const TriangleFeature& triangle,
                                                    std::size_t quarterTurns) {
    // What is added to the directions, and which coordinates are mirrored, after each number of
    // quarter turns; odd numbers swap the coordinates before.
    static constexpr std::array<std::uint32_t, kOrientations> kAdded = {
        0, 0x00400000, 0x00800000, 0x00C00000};
    static constexpr std::array<std::uint32_t, kOrientations> kMirrored = {
        0, 0x000000FF, 0x0000FFFF, 0x0000FF00};
    __m128i vertices = _mm_loadu_si128(reinterpret_cast<const __m128i*>(triangle.vertices));
    if (quarterTurns % 2 != 0) {
        const __m128i x = _mm_slli_epi32(_mm_and_si128(vertices, groupsOf(0x000000FF)), 8);
        const __m128i y = _mm_srli_epi32(_mm_and_si128(vertices, groupsOf(0x0000FF00)), 8);
        const __m128i rest = _mm_and_si128(vertices, groupsOf(0xFFFF0000));
        vertices = _mm_or_si128(rest, _mm_or_si128(x, y));
    }
    vertices = _mm_xor_si128(vertices, groupsOf(kMirrored[quarterTurns]));
    vertices = _mm_add_epi8(vertices, groupsOf(kAdded[quarterTurns]));
    alignas(16) std::array<TriangleVertex, kCorners + 1> turned;
    _mm_store_si128(reinterpret_cast<__m128i*>(turned.data()), vertices);
    return {turned[0], turned[1], turned[2]};
}

namespace {

// Byte-wise differences, the shorter way round for bytes that lie on a circle: 255 - d is d
// inverted.
__m128i differencesOf(__m128i a, __m128i b) {
    const __m128i circularBytes = _mm_set_epi32(0, -1, -1, -1);
    const __m128i plainDifference = _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
    return _mm_min_epu8(plainDifference, _mm_xor_si128(plainDifference, circularBytes));
}

}  // namespace

unsigned agreeingQuarterTurns(const QuarterTurnCodes& second, const TriangleCode& first) {
    static_assert(kMaxTurnDifferenceSteps == 0x22 && kMaxEdgeDifferenceSteps == 0x22);
    const __m128i limits = _mm_set_epi32(-1, 0x00222222, 0x00222222, 0x00222222);
    const __m128i code = load(first);
    const auto beyond = [&](std::size_t m) {
        return _mm_subs_epu8(differencesOf(load(second[m]), code), limits);
    };
    const __m128i zero = _mm_setzero_si128();
    unsigned agreeing = 0;
    for (std::size_t m = 0; m < kOrientations; ++m) {
        const int bytes = _mm_movemask_epi8(_mm_cmpeq_epi8(beyond(m), zero));
        agreeing |= static_cast<unsigned>(bytes == 0xFFFF) << m;
    }
    return agreeing;
}

CodeDifference largestDifferences(const TriangleCode& second, const TriangleCode& first) {
    const __m128i difference = differencesOf(load(second), load(first));
    // The largest byte of each group ends in its lowest byte.
    __m128i largest = _mm_max_epu8(difference, _mm_srli_epi32(difference, 16));
    largest = _mm_max_epu8(largest, _mm_srli_epi32(largest, 8));
    alignas(16) std::array<std::uint8_t, 16> bytes;
    _mm_store_si128(reinterpret_cast<__m128i*>(bytes.data()), largest);
    return {bytes[kTurnGroup],
            std::max(bytes[kNextEdgeGroup], bytes[kPreviousEdgeGroup]),
            bytes[kSideGroup]};
}

}  // namespace orl::matcher::sse2

#endif
