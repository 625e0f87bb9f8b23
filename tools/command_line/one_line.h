#pragma once

// Text for messages, which are one line each whatever a file name or a library's message holds.

#include <cstddef>
#include <string>
#include <string_view>

namespace orl::tools {

// The text with every control character replaced by "?", so that it stays one line and leaves the
// terminal alone.
std::string oneLine(std::string_view text);

// A name or path for a message: in single quotes, on one line.
std::string inQuotes(std::string_view text);

// A number of things by an English noun whose plural ends in "s": "1 record", "0 records".
std::string counted(std::size_t count, std::string_view noun);

}  // namespace orl::tools
