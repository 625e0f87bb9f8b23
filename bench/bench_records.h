#pragma once

// The records that benchmarks run on: the real ones below the folder that the environment variable
// ORL_RECORDS names, else the shipped samples.

#include <cstdint>
#include <string>
#include <vector>

namespace orl::bench {

struct Record {
    std::string finger;               // the part of the file's name before "_"
    std::string name;                 // the file's name without its extension
    std::vector<std::uint8_t> bytes;  // the ISO/IEC 19794-2 record
};

// The records of one folder, in the order of their names.
struct RecordSet {
    std::string folder;
    std::vector<Record> records;
};

// One set for each folder that holds *.fmr files, in the order of their names.
// Throws: std::runtime_error when there is none.
const std::vector<RecordSet>& RecordSets();

// A pair of records of one set, both at least 10 minutiae large.
struct RecordPair {
    const Record* probe;
    const Record* candidate;
};

// All pairs of impressions of one finger.
std::vector<RecordPair> GenuinePairs(const RecordSet& set);

// Cross-finger pairs, spread over the set evenly, at most `limit`.
std::vector<RecordPair> ImpostorPairs(const RecordSet& set, std::size_t limit);

}  // namespace orl::bench
