#pragma once

// How orl-finger says that something could not be used.

#include <ostream>
#include <string_view>

namespace orl::tools {

// Writes the one line "orl-finger: SUBJECT: REASON".
void complain(std::ostream& err, std::string_view subject, std::string_view reason);

}  // namespace orl::tools
