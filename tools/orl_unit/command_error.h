#pragma once

// What a command throws when it cannot do its work: a reason for the user, in one line. main prints
// it on standard error and ends with exit status 1.

#include <stdexcept>
#include <string>
#include <string_view>

namespace orl::unit {

class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The text with every control character replaced by "?", so that it stays one line and leaves the
// terminal alone whatever a file name or a library's message holds.
std::string oneLine(std::string_view text);

// A name or path for a message: in single quotes, on one line.
std::string inQuotes(std::string_view text);

}  // namespace orl::unit
