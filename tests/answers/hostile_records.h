#pragma once

// Records that a careless or hostile writer might make, derived from sound ones: minutiae in places
// that triangulations break at, counts and sizes at their limits, several views, fields that say
// too much or too little, bytes cut, added and changed.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/orl_finger/finger_record.h"

namespace orl::test {

// Each way of making a record hostile, used on kHostileVariants sound records each: record i is
// made in way i % ways. The same arguments give the same bytes on every platform. REQUIRES: `sound`
// holds a record, and each record 20 minutiae or more.
std::vector<std::vector<std::uint8_t>> HostileRecords(const std::vector<tools::FingerRecord>& sound,
                                                      std::uint64_t seed);

inline constexpr std::size_t kHostileVariants = 4;

}  // namespace orl::test
