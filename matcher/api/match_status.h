#pragma once

// The texts of the match statuses, shared by the call surface and the loader's messages.

#include <cstdint>

namespace orl::matcher {

// The text of a match status (see finger_matcher.h); an unknown status has one too. The text lives
// as long as the module. Never throws.
const char* matchStatusText(std::int32_t status);

}  // namespace orl::matcher
