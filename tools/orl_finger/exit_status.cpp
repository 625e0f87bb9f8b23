#include "tools/orl_finger/exit_status.h"

namespace orl::tools {

void complain(std::ostream& err, std::string_view subject, std::string_view reason) {
    err << "orl-finger: " << subject << ": " << reason << '\n';
}

}  // namespace orl::tools
