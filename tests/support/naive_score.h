#pragma once

// How the second matcher (naive_matching.h) makes its figures of an alignment.

#include <cstdint>

#include "tests/support/naive_matching.h"

namespace orl::naive {

// The score of n matched minutiae of fingers with a and b of them, 0..1000.
std::int64_t CountScore(std::int64_t n, std::int64_t a, std::int64_t b);

// The score after what the alignment's statistics add to it and take off it.
std::int64_t FinalScore(const Evaluation& e, std::int64_t score);

// A rotation of 256 steps a turn in degrees, above -180 and up to 180.
float Degrees(int rotation);

}  // namespace orl::naive
