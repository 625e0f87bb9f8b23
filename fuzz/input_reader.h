#pragma once

// Takes a fuzzer's input apart into the small figures that a target makes its decisions by. Behind
// the input's end everything reads as zero, so that every input means something.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orl::fuzz {

class InputReader {
  public:
    explicit InputReader(std::span<const std::uint8_t> input) : rest_(input) {}

    bool AtEnd() const { return rest_.empty(); }

    std::uint8_t Byte() {
        if (rest_.empty()) {
            return 0;
        }
        const std::uint8_t byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }

    // A figure from 0 to limit - 1. REQUIRES: 0 < limit <= 256.
    std::size_t Below(std::size_t limit) { return Byte() % limit; }

    // True once in `times`.
    bool Once(std::size_t times) { return Below(times) == times - 1; }

    // The next `count` bytes; fewer at the input's end.
    std::vector<std::uint8_t> Bytes(std::size_t count) {
        const auto taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return {taken.begin(), taken.end()};
    }

  private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace orl::fuzz
