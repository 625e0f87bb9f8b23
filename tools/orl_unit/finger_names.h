#pragma once

// Names of the sub-factors (finger positions) as the command line takes and prints them:
// "right-thumb" ... "left-little" for positions 1 to 10, "right-four-fingers", "left-four-fingers",
// "two-thumbs" for 13 to 15, "unspecified-1" ... "unspecified-10" for 0xF5 to 0xFE, and "any"
// (0xFF), which only questions may use. Position 0 (no information) has no name: no record may
// carry it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orl::unit {

// The sub-factor of a name (upper and lower case alike), or nothing for an unknown name.
std::optional<std::uint8_t> subFactorFromName(std::string_view name);

// The name of a sub-factor; one without a name is spelled "sub-factor-N".
std::string subFactorName(std::uint8_t subFactor);

// In one line, for messages: the names of what can be enrolled, and all names.
std::string enrollableFingerNames();
std::string knownFingerNames();

// True for the ten single fingers of a record's finger position code (1 to 10).
bool isSingleFinger(std::uint8_t position);

}  // namespace orl::unit
