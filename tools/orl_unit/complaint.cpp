#include "tools/orl_unit/complaint.h"

#include <ostream>

#include "tools/command_line/one_line.h"

namespace orl::unit {

void complain(std::ostream& err, const std::string& reason) {
    err << "orl-unit: " << tools::oneLine(reason) << '\n';
}

}  // namespace orl::unit
