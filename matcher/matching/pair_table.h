#pragma once

// The minutia pairs of one orientation, laid out for the vote on alignments.
//
// A pair can only agree with an anchor pair when both turn their directions by about the same: the
// relative direction test passes only if the two turns (second direction less first, modulo 256)
// differ by at most 37 steps, 35 and one each for a direction that wraps at 256 on a circle of 255.
// So the pairs are sorted by their turn, and what may agree with an anchor is one stretch of them.
// They stand there twice, one lap after the other, so that a stretch never wraps.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "matcher/matching/kernels/agreement_bound.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/scratch.h"

namespace orl::matcher {

class PairTable {
  public:
    // Lays out `pairs`; all memory is taken from `scratch`.
    // REQUIRES: fewer than 32768 pairs. Throws: std::bad_alloc.
    PairTable(std::span<const MinutiaPair> pairs, Scratch& scratch);

    // A run of positions in the sorted order; it may reach into the second lap.
    struct Stretch {
        std::uint16_t begin;
        std::uint16_t count;
    };

    std::size_t size() const { return places_.size(); }

    // Where the pair of that index in the original list stands in the first lap.
    std::size_t placeOf(std::size_t index) const { return places_[index]; }

    const MinutiaPair& at(std::size_t place) const { return sorted_[place]; }

    // The pairs that may agree with the one at `place` by their direction, itself included.
    Stretch alike(std::size_t place) const { return alike_[binOf(sorted_[place])]; }

    const BoundPositions& positions() const { return positions_; }

  private:
    static constexpr std::size_t kTurnsPerBin = 4;
    static constexpr std::size_t kBins = 256 / kTurnsPerBin;

    static std::size_t binOf(const MinutiaPair& pair) {
        return static_cast<std::uint8_t>(pair.second.angle - pair.first.angle) / kTurnsPerBin;
    }
    void sortByTurn(std::span<const MinutiaPair> pairs);
    void findStretches(const std::array<std::uint16_t, kBins + 1>& binBegins);
    void layOutPositions(Scratch& scratch);

    std::array<Stretch, kBins> alike_;
    std::span<std::uint16_t> places_;
    std::span<MinutiaPair> sorted_;  // two laps
    BoundPositions positions_;
};

}  // namespace orl::matcher
