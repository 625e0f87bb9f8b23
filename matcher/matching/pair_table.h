#pragma once

// The minutia pairs of one orientation, laid out for the vote on alignments.
//
// The relative direction test compares how far both fingers turn from the anchor pair's directions
// to another pair's. It takes both modulo 255, so what it compares is the two pairs' own turns
// (second direction less first) modulo 255: the test passes exactly when those lie at most 35 steps
// apart on a circle of 255. So the pairs are sorted by their turn, and those that pass the test
// with an anchor are one stretch of them. The first turns stand there again behind the last, so
// that a stretch never wraps.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/agreement_bound.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/scratch.h"

namespace orl::matcher {

// The most pairs of a table: numbers of pairs are compared as signed 16-bit ones, too.
inline constexpr std::size_t kMaxPairs = 32767;

class PairTable {
  public:
    // Lays out `pairs`; all memory is taken from `scratch`.
    // REQUIRES: at most kMaxPairs. Throws: std::bad_alloc.
    PairTable(std::span<const MinutiaPair> pairs, Scratch& scratch);

    std::size_t size() const { return anchors_.size(); }

    // The pair at a place of the sorted order, up to the end of any stretch.
    const MinutiaPair& at(std::size_t place) const { return sorted_[place]; }

    // By index in the original list: where the pair stands, the stretch of all pairs that pass the
    // relative direction test with it (itself included), and its two hypotheses' turns.
    std::span<const BoundTask> anchors() const { return anchors_; }

    // Over all anchors, in pairs.
    std::uint16_t longestStretch() const { return longestStretch_; }
    std::uint16_t shortestStretch() const { return shortestStretch_; }

    // The coordinates of the sorted pairs, as the bounds want them.
    const BoundPositions& positions() const { return positions_; }

  private:
    static constexpr std::size_t kTurns = 255;
    static constexpr std::size_t kReachSteps = 35;
    static constexpr std::size_t kStretchTurns = 2 * kReachSteps + 1;

    // A run of places, for every turn.
    struct Stretches {
        std::array<std::uint16_t, kTurns> begins;
        std::array<std::uint16_t, kTurns> counts;
    };

    // Places of the first pair of each turn, and of the end.
    using Begins = std::array<std::uint16_t, kTurns + 1>;

    static std::uint8_t turnOf(const MinutiaPair& pair);
    static Begins countTurns(std::span<const MinutiaPair> pairs, std::span<std::uint8_t> turns);
    static Stretches stretchesOf(const Begins& begins);
    void sortByTurn(std::span<const MinutiaPair> pairs, Scratch& scratch);
    void layOutPositions(Scratch& scratch);

    std::span<BoundTask> anchors_;
    std::span<MinutiaPair> sorted_;
    BoundPositions positions_{};
    std::uint16_t longestStretch_ = 0;
    std::uint16_t shortestStretch_ = 0;
};

}  // namespace orl::matcher
