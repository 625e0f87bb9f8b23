#pragma once

// The command line of orl-unit.

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/command_line/exit_status.h"

namespace orl::unit {

// Parses the arguments (UTF-8, without the program's name) and runs the command. Data goes to out,
// reasons to err, one line each. Throws std::exception for what no command foresees.
tools::ExitStatus runCommandLine(const std::vector<std::string>& arguments,
                                 std::ostream& out,
                                 std::ostream& err);

}  // namespace orl::unit
