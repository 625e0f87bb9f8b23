#pragma once

// Well-formed UTF-8, as names and paths on the command line have to be.

#include <string_view>

namespace orl::unit {

// True for well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF.
bool isWellFormedUtf8(std::string_view text);

}  // namespace orl::unit
