#pragma once

// How an input of the match target holds two records: the first one's size in two bytes, high byte
// first, then both. A size beyond the input is cut to what is there.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orl::fuzz {

inline constexpr std::size_t kPairHeaderBytes = 2;

struct RecordPair {
    std::span<const std::uint8_t> probe;
    std::span<const std::uint8_t> candidate;
};

inline RecordPair SplitPair(std::span<const std::uint8_t> input) {
    if (input.size() < kPairHeaderBytes) {
        return {};
    }
    const auto records = input.subspan(kPairHeaderBytes);
    const std::size_t stated = input[0] * std::size_t{256} + input[1];
    const std::size_t probeBytes = std::min(stated, records.size());
    return {records.first(probeBytes), records.subspan(probeBytes)};
}

// REQUIRES: a probe of less than 65,536 bytes.
inline std::vector<std::uint8_t> JoinPair(std::span<const std::uint8_t> probe,
                                          std::span<const std::uint8_t> candidate) {
    std::vector<std::uint8_t> input = {static_cast<std::uint8_t>(probe.size() / 256),
                                       static_cast<std::uint8_t>(probe.size())};
    input.insert(input.end(), probe.begin(), probe.end());
    input.insert(input.end(), candidate.begin(), candidate.end());
    return input;
}

}  // namespace orl::fuzz
