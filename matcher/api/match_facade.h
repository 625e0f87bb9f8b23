#pragma once

// Loads two records, matches them and decides: the routines behind ORLFingerMatcher_Match. They do
// not look at the matcher's initialised state.

#include <cstddef>
#include <cstdint>
#include <string>

#include "matcher/matching/match_results.h"

namespace orl::matcher {

// Compares the record probe[0..probeSize) with candidate[0..candidateSize). `threshold` of 100 or
// less counts in tens (0 stays 0, -5 is -50). Fills `result` and `message` (empty on success) and
// returns a match status: 0, or 1 to 5 as ORLFingerMatcher_StatusText tells them.
// Throws: std::runtime_error "not triangulation", std::bad_alloc, std::length_error.
// Safe from several threads at once.
std::int32_t matchBuffers(const std::uint8_t* probe,
                          std::size_t probeSize,
                          const std::uint8_t* candidate,
                          std::size_t candidateSize,
                          TemplateMatchResult& result,
                          std::string& message,
                          std::int32_t threshold);

// The same for records in files; file names may carry identity texts, which must then agree.
std::int32_t matchFiles(const std::string& probePath,
                        const std::string& candidatePath,
                        TemplateMatchResult& result,
                        std::string& message,
                        std::int32_t threshold);

}  // namespace orl::matcher
