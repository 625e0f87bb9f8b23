#include "matcher/matching/pair_table.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "matcher/matching/kernels/running_sums.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {

PairTable::PairTable(std::span<const MinutiaPair> pairs, Scratch& scratch)
    : anchors_(scratch.take<BoundTask>(pairs.size())) {
    assert(pairs.size() <= kMaxPairs);
    sortByTurn(pairs, scratch);
    layOutPositions(scratch);
}

// The turn modulo 255: 0..254. How often 255 goes into a number of 0..510 is told by its upper bits
// once it is moved up by one, or by two from 256 on.
std::uint8_t PairTable::turnOf(const MinutiaPair& pair) {
    constexpr int kStepsPerTurn = static_cast<int>(kTurns);
    constexpr unsigned kByteBits = 8;
    const auto turn = static_cast<unsigned>(pair.second.angle - pair.first.angle + kStepsPerTurn);
    const unsigned times = (turn + 1 + (turn >> kByteBits)) >> kByteBits;
    return static_cast<std::uint8_t>(turn + times);
}

PairTable::Begins PairTable::countTurns(std::span<const MinutiaPair> pairs,
                                        std::span<std::uint8_t> turns) {
    Begins begins{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        turns[i] = turnOf(pairs[i]);
        ++begins[turns[i] + 1U];
    }
    makeRunningSums(begins);
    return begins;
}

// A stretch that reaches beyond the last turn goes on with the first ones behind it, and one that
// begins before the first turn begins with the last ones.
PairTable::Stretches PairTable::stretchesOf(const Begins& begins) {
    constexpr std::size_t kEnd = kReachSteps + 1;  // turns from a pair's own to its stretch's end
    const std::uint16_t size = begins[kTurns];
    Stretches stretches;
    for (std::size_t turn = 0; turn < kReachSteps; ++turn) {
        stretches.begins[turn] = begins[turn + kTurns - kReachSteps];
        stretches.counts[turn] =
            static_cast<std::uint16_t>(begins[turn + kEnd] + size - stretches.begins[turn]);
    }
    for (std::size_t turn = kReachSteps; turn <= kTurns - kEnd; ++turn) {
        stretches.begins[turn] = begins[turn - kReachSteps];
        stretches.counts[turn] =
            static_cast<std::uint16_t>(begins[turn + kEnd] - stretches.begins[turn]);
    }
    for (std::size_t turn = kTurns - kEnd + 1; turn < kTurns; ++turn) {
        stretches.begins[turn] = begins[turn - kReachSteps];
        stretches.counts[turn] = static_cast<std::uint16_t>(begins[turn + kEnd - kTurns] + size -
                                                            stretches.begins[turn]);
    }
    return stretches;
}

void PairTable::sortByTurn(std::span<const MinutiaPair> pairs, Scratch& scratch) {
    const std::span<std::uint8_t> turns = scratch.take<std::uint8_t>(pairs.size());
    Begins places = countTurns(pairs, turns);
    const Stretches stretches = stretchesOf(places);
    const std::size_t repeated = places[kStretchTurns - 1];
    sorted_ = scratch.take<MinutiaPair>(pairs.size() + repeated);
    std::uint16_t longest = 0;
    std::uint16_t shortest = std::numeric_limits<std::uint16_t>::max();
    const ScaledTurns& scaledTurns = ScaledTurns::Table();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const MinutiaPair& pair = pairs[i];
        const std::uint16_t place = places[turns[i]]++;
        const std::uint16_t count = stretches.counts[turns[i]];
        sorted_[place] = pair;
        anchors_[i] = {place,
                       stretches.begins[turns[i]],
                       count,
                       static_cast<std::uint16_t>(i),
                       scaledTurns.ofHypotheses(pair.second.angle - pair.first.angle)};
        longest = std::max(longest, count);
        shortest = std::min(shortest, count);
    }
    longestStretch_ = longest;
    shortestStretch_ = shortest;
    std::copy_n(sorted_.begin(), repeated, sorted_.last(repeated).begin());
}

void PairTable::layOutPositions(Scratch& scratch) {
    constexpr int kFirstScale = 64;
    constexpr int kSecondScale = 32;
    constexpr std::size_t kCoordinates = 4;  // of a pair: x and y, first and second
    const std::size_t entries = sorted_.size() + kBoundLanes;
    const std::span<std::int16_t> all = scratch.take<std::int16_t>(kCoordinates * entries);
    const std::span<std::int16_t> firstX = all.first(entries);
    const std::span<std::int16_t> firstY = all.subspan(entries, entries);
    const std::span<std::int16_t> secondX = all.subspan(2 * entries, entries);
    const std::span<std::int16_t> secondY = all.last(entries);
    for (std::size_t i = 0; i < sorted_.size(); ++i) {
        firstX[i] = static_cast<std::int16_t>(sorted_[i].first.x * kFirstScale);
        firstY[i] = static_cast<std::int16_t>(sorted_[i].first.y * kFirstScale);
        secondX[i] = static_cast<std::int16_t>(sorted_[i].second.x * kSecondScale);
        secondY[i] = static_cast<std::int16_t>(sorted_[i].second.y * kSecondScale);
    }
    for (const auto& values : {firstX, firstY, secondX, secondY}) {
        std::fill(values.end() - kBoundLanes, values.end(), std::int16_t{0});
    }
    positions_ = {firstX.data(), firstY.data(), secondX.data(), secondY.data()};
}

}  // namespace orl::matcher
