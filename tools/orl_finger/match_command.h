#pragma once

// orl-finger match: compares records and prints the outcomes.

#include <cstdint>
#include <ostream>
#include <string>

#include "tools/command_line/exit_status.h"

namespace orl::tools {

inline constexpr std::int32_t kDefaultThreshold = 300;

struct MatchOptions {
    // One pair, or else the name of a file of pairs, one PROBE<TAB>CANDIDATE a line; "-" is
    // standard input. Empty lines are passed over, and a carriage return at a line's end.
    std::string probe;
    std::string candidate;
    std::string pairsFile;
    std::int32_t threshold = kDefaultThreshold;  // handed to the matcher as it is
    bool json = false;
};

// Prints one outcome for each pair to `out`, in input order. A file that cannot be read gives a
// message on `err` and no outcome; a pair that cannot be matched gives both. A list that cannot be
// read to its end gives a message behind the outcomes of its first lines.
ExitStatus runMatch(const MatchOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orl::tools
