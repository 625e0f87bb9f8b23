#include "matcher/matching/pair_table.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "matcher/matching/kernels/running_sums.h"
#include "matcher/matching/scaled_turns.h"

namespace orl::matcher {

PairTable::PairTable(std::span<const MinutiaPair> pairs, Scratch& scratch)
    : anchors_(scratch.take<BoundTask>(pairs.size())) {
    assert(pairs.size() < 32768);
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
                                        std::span<std::uint8_t> turns) const {
    Begins begins{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        turns[i] = turnOf(pairs[i]);
        ++begins[turns[i] + 1U];
    }
    makeRunningSums(std::span(begins).first(kTurns + 1));
    for (std::size_t turn = 1; turn < kStretchTurns; ++turn) {
        begins[kTurns + turn] = static_cast<std::uint16_t>(begins[turn] + pairs.size());
    }
    return begins;
}

void PairTable::sortByTurn(std::span<const MinutiaPair> pairs, Scratch& scratch) {
    const std::span<std::uint8_t> turns = scratch.take<std::uint8_t>(pairs.size());
    const Begins begins = countTurns(pairs, turns);
    const std::size_t repeated = begins[kStretchTurns - 1];
    sorted_ = scratch.take<MinutiaPair>(pairs.size() + repeated);
    std::array<std::uint16_t, kTurns> next;
    std::copy_n(begins.begin(), next.size(), next.begin());
    std::uint16_t longest = 0;
    std::uint16_t shortest = std::numeric_limits<std::uint16_t>::max();
    const ScaledTurns& scaledTurns = ScaledTurns::Table();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const MinutiaPair& pair = pairs[i];
        const std::size_t turn = turns[i];
        const std::size_t first = turn < kReachSteps ? turn + kTurns - kReachSteps  //
                                                     : turn - kReachSteps;
        const std::uint16_t begin = begins[first];
        const auto count = static_cast<std::uint16_t>(begins[first + kStretchTurns] - begin);
        const std::uint16_t place = next[turn]++;
        sorted_[place] = pair;
        anchors_[i] = {place,
                       begin,
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
    const std::size_t entries = sorted_.size() + kBoundLanes;
    const std::span<std::int16_t> firstX = scratch.take<std::int16_t>(entries);
    const std::span<std::int16_t> firstY = scratch.take<std::int16_t>(entries);
    const std::span<std::int16_t> secondX = scratch.take<std::int16_t>(entries);
    const std::span<std::int16_t> secondY = scratch.take<std::int16_t>(entries);
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
