#pragma once

// How orl-unit says that something could not be done.

#include <iosfwd>
#include <string>

namespace orl::unit {

// Writes the one line "orl-unit: REASON".
void complain(std::ostream& err, const std::string& reason);

}  // namespace orl::unit
