#pragma once

// orl-finger inspect: shows what the matcher reads out of records and builds from them.

#include <ostream>
#include <string>
#include <vector>

#include "tools/command_line/exit_status.h"

namespace orl::tools {

struct InspectOptions {
    std::vector<std::string> records;
    bool json = false;
};

// Prints one account for each record to `out`. A file that cannot be read gives a message on `err`
// and no account; a record that does not load gives both.
ExitStatus runInspect(const InspectOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orl::tools
