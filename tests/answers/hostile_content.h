#pragma once

// The ways of making a record's content hostile, for hostile_records.h.

#include <cstddef>
#include <cstdint>
#include <span>

#include "tests/support/record_builder.h"
#include "tools/orl_finger/random_stream.h"

namespace orl::test {

// Chance in whole numbers.
class ChanceStream {
  public:
    ChanceStream(std::uint64_t seed, std::uint64_t part)
        : random_(tools::RandomStream::forPart(seed, part, 0)) {}

    // A figure from 0 to limit - 1. REQUIRES: limit > 0.
    std::size_t Below(std::size_t limit) { return random_.nextBits() % limit; }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(random_.nextBits()); }

    // A figure as Below gives it, as a coordinate.
    std::uint16_t PixelBelow(std::size_t limit) { return static_cast<std::uint16_t>(Below(limit)); }

  private:
    tools::RandomStream random_;
};

// Changes the content of a sound record of one view of 20 minutiae or more.
using ContentChange = void (*)(RecordContent&, ChanceStream&);

std::span<const ContentChange> ContentChanges();

}  // namespace orl::test
