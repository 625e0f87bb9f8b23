#include "matcher/matching/pair_table.h"

#include <algorithm>
#include <cassert>

namespace orl::matcher {
namespace {

constexpr std::size_t kReachSteps = 37;  // between the turns of two pairs that agree
constexpr std::size_t kLaps = 2;

}  // namespace

PairTable::PairTable(std::span<const MinutiaPair> pairs, Scratch& scratch)
    : alike_{},
      places_(scratch.take<std::uint16_t>(pairs.size())),
      sorted_(scratch.take<MinutiaPair>(kLaps * pairs.size())),
      positions_{} {
    assert(pairs.size() < 32768);
    sortByTurn(pairs);
    layOutPositions(scratch);
}

void PairTable::sortByTurn(std::span<const MinutiaPair> pairs) {
    std::array<std::uint16_t, kBins + 1> begins{};
    for (const MinutiaPair& pair : pairs) {
        ++begins[binOf(pair) + 1];
    }
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        begins[bin + 1] = static_cast<std::uint16_t>(begins[bin + 1] + begins[bin]);
    }
    findStretches(begins);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const std::uint16_t place = begins[binOf(pairs[i])]++;
        places_[i] = place;
        sorted_[place] = pairs[i];
        sorted_[place + pairs.size()] = pairs[i];
    }
}

// From the bin of the last turn within reach below a bin's turns to that of the first one above.
void PairTable::findStretches(const std::array<std::uint16_t, kBins + 1>& binBegins) {
    constexpr std::size_t kReachBins = (kReachSteps + kTurnsPerBin - 1) / kTurnsPerBin;
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        const std::size_t first = (bin + kBins - kReachBins) % kBins;
        const std::size_t last = (bin + kReachBins) % kBins;
        const std::size_t end = binBegins[last + 1] + (last < first ? size() : 0);
        alike_[bin] = {binBegins[first], static_cast<std::uint16_t>(end - binBegins[first])};
    }
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
