#pragma once

// Finger names as arguments of commands.

#include <cstdint>
#include <string>

namespace orl::unit {

// The sub-factor of a finger name. Throws CommandError, listing the names, for an unknown one.
std::uint8_t fingerArgument(const std::string& name);

// The same for a finger to be enrolled, where "any" is refused.
std::uint8_t enrollableFinger(const std::string& name);

}  // namespace orl::unit
