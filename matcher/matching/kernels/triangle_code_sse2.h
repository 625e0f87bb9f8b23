#pragma once

// The SSE2 forms of the steps that make triangle codes; see triangle_code_kernels.h for what they
// compute. Included by that header alone. startsOfQuarterTurns: see quarter_turn_starts_sse2.h.

#include <array>
#include <cstring>

#include <emmintrin.h>

namespace orl::matcher::sse2 {

inline constexpr std::uint32_t kGroupBytes = 0x00FFFFFF;  // three bytes of a group of four

// A code as one register: group j of the code is 32-bit lane j.
inline __m128i load(const TriangleCode& code) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(code.bytes.data()));
}

// The same back into memory.
inline void store(TriangleCode& code, __m128i value) {
    _mm_store_si128(reinterpret_cast<__m128i*>(code.bytes.data()), value);
}

// Four times the same group.
inline __m128i groupsOf(std::uint32_t group) {
    return _mm_set1_epi32(static_cast<int>(group));
}

// Each group's three bytes taken cyclically from byte `start` on; a fourth byte is dropped.
inline __m128i turnGroups(__m128i groups, std::size_t start) {
    constexpr int kGroupBits = 24;
    const int shift = static_cast<int>(8 * start);
    const __m128i down = _mm_srl_epi32(groups, _mm_cvtsi32_si128(shift));
    const __m128i up = _mm_sll_epi32(groups, _mm_cvtsi32_si128(kGroupBits - shift));
    return _mm_and_si128(_mm_or_si128(down, up), groupsOf(kGroupBytes));
}

// Forward difference of each byte, 255-step turn: to - from when `to` is greater, else that + 255,
// which is one less modulo 256.
inline __m128i turnsBetween(__m128i from, __m128i to) {
    const __m128i notGreater = _mm_cmpeq_epi8(_mm_max_epu8(from, to), from);
    return _mm_add_epi8(_mm_sub_epi8(to, from), notGreater);
}

// Group 0: the vertices' directions.
inline std::uint32_t directionsOf(const TriangleFeature& triangle) {
    return triangle.vertices[0].angle | std::uint32_t{triangle.vertices[1].angle} << 8U |
           std::uint32_t{triangle.vertices[2].angle} << 16U;
}

// Group 3: the side lengths.
inline std::uint32_t sidesOf(const TriangleFeature& triangle) {
    std::uint32_t sides = 0;
    std::memcpy(&sides, triangle.sides, sizeof(sides));
    return sides & kGroupBytes;
}

// The bearings that codesOfQuarterTurns needs: group m holds, for m quarter turns, the bearings of
// the edges that end in vertex 0, 1 and 2 and come from the next vertex.
inline __m128i nextEdgeBearings(const TriangleFeature& triangle,
                                const QuarterTurnBearings& bearings) {
    const auto fromNext = [&](std::size_t j) {
        const TriangleVertex& to = triangle.vertices[j];
        const TriangleVertex& from = triangle.vertices[(j + 1) % kCorners];
        return _mm_cvtsi32_si128(static_cast<int>(bearings(to.y - from.y, to.x - from.x)));
    };
    const __m128i firstTwo = _mm_unpacklo_epi8(fromNext(0), fromNext(1));
    const __m128i third = _mm_unpacklo_epi8(fromNext(2), _mm_setzero_si128());
    return _mm_unpacklo_epi16(firstTwo, third);
}

// Group m: the sides of the triangle, moved up by the first vertex after m quarter turns.
inline __m128i turnedSides(const TriangleFeature& triangle, const QuarterTurnStarts& starts) {
    constexpr unsigned kByteBits = 8;
    constexpr unsigned kTwoBytes = 16;
    const std::uint32_t sides = sidesOf(triangle);
    const std::array<std::uint32_t, kCorners> moved = {
        sides,
        (sides << kByteBits | sides >> kTwoBytes) & kGroupBytes,
        (sides << kTwoBytes | sides >> kByteBits) & kGroupBytes};
    const auto group = [&](std::size_t m) { return static_cast<int>(moved[starts[m]]); };
    return _mm_set_epi32(group(3), group(2), group(1), group(0));
}

// Group m: the vertices' directions after m quarter turns of 64 steps, 256-step turn.
inline __m128i turnedDirections(const TriangleFeature& triangle) {
    const __m128i quarterTurns = _mm_set_epi32(0x00C0C0C0, 0x00808080, 0x00404040, 0);
    return _mm_add_epi8(groupsOf(directionsOf(triangle)), quarterTurns);
}

inline TriangleCode codeOf(const TriangleFeature& triangle, const QuarterTurnBearings& bearings) {
    constexpr unsigned kOppositeShift = 16;
    std::array<std::uint32_t, kCorners> edges{};  // from the next vertex; opposite in byte 2
    for (std::size_t j = 0; j < kCorners; ++j) {
        const TriangleVertex& to = triangle.vertices[j];
        const TriangleVertex& from = triangle.vertices[(j + 1) % kCorners];
        edges[j] = bearings(to.y - from.y, to.x - from.x);
    }
    const auto joined = [](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        return static_cast<int>((a & 0xFFU) | (b & 0xFFU) << 8U | (c & 0xFFU) << 16U);
    };
    const std::uint32_t directions = directionsOf(triangle);
    const std::uint32_t nextDirections = directions >> 8U | (directions & 0xFFU) << 16U;
    const __m128i to = _mm_set_epi32(
        0,
        joined(edges[2] >> kOppositeShift, edges[0] >> kOppositeShift, edges[1] >> kOppositeShift),
        joined(edges[0], edges[1], edges[2]),
        static_cast<int>(nextDirections));
    const __m128i groups = _mm_set_epi32(0, 0x00FFFFFF, 0x00FFFFFF, 0x00FFFFFF);
    const __m128i turns = _mm_and_si128(turnsBetween(groupsOf(directions), to), groups);
    const __m128i sides = _mm_set_epi32(static_cast<int>(sidesOf(triangle)), 0, 0, 0);
    TriangleCode code;
    store(code, _mm_or_si128(turns, sides));
    return code;
}

inline void codesOfQuarterTurns(const TriangleFeature& triangle,
                                const QuarterTurnStarts& starts,
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
    const __m128i sides = turnedSides(triangle, starts);

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

inline TriangleCode turnedCode(const TriangleCode& code, std::size_t start) {
    TriangleCode turned;
    store(turned, turnGroups(load(code), start));
    return turned;
}

}  // namespace orl::matcher::sse2
