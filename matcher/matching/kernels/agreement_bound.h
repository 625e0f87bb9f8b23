#pragma once

// The innermost step of the vote on alignments: quick upper bounds of how many minutia pairs agree
// with one, in 16-bit arithmetic. The bound proper takes pairs within a square; the tight one, half
// as dear again, within the circle that agreement is about, and is nearly always the count. Forms
// with the same results: `plain` says what is computed, `sse2` does it for eight pairs at a time
// and `avx2` for sixteen; tests compare them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orl::matcher {

// Positions of minutia pairs as the bound reads them: arrays of 16-bit numbers, first vertices in
// 1/64 grid unit, second ones in 1/32. Readable for kBoundLanes entries beyond any stretch asked
// for.
struct BoundPositions {
    const std::int16_t* firstX64;
    const std::int16_t* firstY64;
    const std::int16_t* secondX32;
    const std::int16_t* secondY32;
};

inline constexpr std::size_t kBoundLanes = 16;

// Cosine and sine in 1/32767, rounded to nearest.
struct ScaledTurn {
    std::int16_t cosine;
    std::int16_t sine;
};

// A residual of at most 18 grid units keeps both coordinates' errors within this, in 1/32 grid
// unit: 18 * 32 = 576. Rounding adds to that: each product is cut down by less than 1, so x is off
// by less than 1 and y by less than 2; the turn's numbers are rounded (at most 510 * 64 / 65536 / 2
// = 0.25) and scaled by 32767 in place of 32768 (361 * 32 / 32768 = 0.35). Together less than 2.6.
inline constexpr std::int16_t kBoundPerCoordinate = 576 + 3;

// The errors off by 1.6 and 2.6 are together off by less than 3.1: the residual's square, in 1/32
// grid unit squared, stays within this.
inline constexpr std::int32_t kBoundSquared = (576 + 4) * (576 + 4);

// Two alignments about one anchor, and the pairs [begin, begin + count) that may agree with them.
struct BoundTask {
    std::uint16_t anchor;  // where the anchor pair stands
    std::uint16_t begin;
    std::uint16_t count;
    std::uint16_t pair;  // the anchor's number for whoever reads the bounds; not read here
    std::array<ScaledTurn, 2> turns;
};

// Writes for each task and turn, in order, how many of the task's pairs may lie within 18 grid
// units of where the alignment puts them (agreementBounds: along x and along y): at least as many
// as do. The anchor counts itself when it is among them. `bounds` has room for two numbers a task.
using AgreementBounds = void (*)(const BoundPositions& positions,
                                 std::span<const BoundTask> tasks,
                                 std::span<std::uint16_t> bounds);

namespace plain {
void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds);
void tightAgreementBounds(const BoundPositions& positions,
                          std::span<const BoundTask> tasks,
                          std::span<std::uint16_t> bounds);
}  // namespace plain

#if defined(__SSE2__)
namespace sse2 {
void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds);
void tightAgreementBounds(const BoundPositions& positions,
                          std::span<const BoundTask> tasks,
                          std::span<std::uint16_t> bounds);
}  // namespace sse2
#endif

#if defined(__SSE2__) && defined(__linux__)
namespace avx2 {
// REQUIRES: a processor with AVX2.
void agreementBounds(const BoundPositions& positions,
                     std::span<const BoundTask> tasks,
                     std::span<std::uint16_t> bounds);
void tightAgreementBounds(const BoundPositions& positions,
                          std::span<const BoundTask> tasks,
                          std::span<std::uint16_t> bounds);
}  // namespace avx2
#endif

// The fastest forms that this processor runs. Windows keeps to 128 bits: compilers for it are known
// to spill wider registers to a stack that is not aligned for them.
AgreementBounds fastestAgreementBounds();
AgreementBounds fastestTightAgreementBounds();

}  // namespace orl::matcher
