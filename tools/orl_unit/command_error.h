#pragma once

// What a command throws when it cannot do its work: a reason for the user, in one line. main prints
// it on standard error and ends with exit status 1.

#include <stdexcept>

#include "tools/command_line/one_line.h"

namespace orl::unit {

using tools::inQuotes;
using tools::oneLine;

class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Standard output cannot be written: whatever else a command has to do would not be told.
class OutputError : public CommandError {
  public:
    OutputError() : CommandError("standard output could not be written") {}
};

}  // namespace orl::unit
