#pragma once

// The command line of orl-unit.

#include <iosfwd>
#include <string>
#include <vector>

namespace orl::unit {

enum class ExitStatus {
    Done = 0,
    Failed = 1,      // the reason is on err
    WrongUsage = 2,  // nothing was done
};

// Parses the arguments (UTF-8, without the program's name) and runs the command. Data goes to out,
// reasons to err, one line each. Throws std::exception for what no command foresees.
ExitStatus runCommandLine(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

// Writes the one line "orl-unit: REASON".
void complain(std::ostream& err, const std::string& reason);

}  // namespace orl::unit
