#pragma once

// orl-unit list: what is enrolled.

#include <iosfwd>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

// Prints a table of the records in the order of enrollment, or a JSON object a line. Throws
// CommandError when the store cannot be read.
void runList(const UnitOptions& unitOptions, std::ostream& out);

}  // namespace orl::unit
