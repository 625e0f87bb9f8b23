#pragma once

// The pairs of records whose answers are compared from build to build. Chance comes from the
// generator's stream and whole-number arithmetic, so the pairs are the same bytes everywhere.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/answers/answer.h"

namespace orl::test {

struct RecordPairs {
    struct Pair {
        std::size_t probe;  // indices of `records`
        std::size_t candidate;
    };
    std::string name;  // without blanks
    std::vector<std::vector<std::uint8_t>> records = {};
    std::vector<Pair> pairs = {};
};

// 26 generated fingers of 8 impressions: each record with itself and with each other, 21,736 pairs,
// 728 of them of two impressions of one finger.
RecordPairs GeneratedPairs();

// The records of hostile_records.h, each with itself, with each other and with an impression of
// each of the generated fingers.
RecordPairs HostilePairs();

// For each folder of real records, 200 pairs (fewer where there are not that many): half of them
// neighbours in the order of names, half drawn. Empty without ORL_RECORDS.
// Throws: std::runtime_error when a record cannot be read.
std::vector<RecordPairs> RealPairs();

// Matches every pair, in order.
void ForEachAnswer(const RecordPairs& set, const std::function<void(const Answer&)>& take);

}  // namespace orl::test
