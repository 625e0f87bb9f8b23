#pragma once

// orl-finger generate: writes synthetic records, for demonstrations and tests. docs/generator.md
// tells the model. The same options give the same bytes on every platform.

#include <cstdint>
#include <ostream>
#include <string>

#include "tools/command_line/exit_status.h"

namespace orl::tools {

inline constexpr int kMostFingers = 100000;
inline constexpr int kMostImpressions = 1000;

struct GenerateOptions {
    std::string directory;  // made when missing
    int fingers = 0;        // 1..kMostFingers, named 101, 102, ...
    int impressions = 0;    // of each finger, 1..kMostImpressions, named 1, 2, ...
    std::uint64_t seed = 0;
};

// Writes DIRECTORY/FINGER_IMPRESSION.fmr for each impression of each finger, over older files of
// that name, and tells on `out` how many. A finger, and an impression of it, stays the same when
// more of them are asked for. Stops at the first file that cannot be written, with a message on
// `err`.
ExitStatus runGenerate(const GenerateOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orl::tools
