#include "tools/orl_finger/complaint.h"

#include "tools/command_line/one_line.h"

namespace orl::tools {

void complain(std::ostream& err, std::string_view subject, std::string_view reason) {
    err << "orl-finger: " << (subject.empty() ? inQuotes(subject) : oneLine(subject)) << ": "
        << oneLine(reason) << '\n';
}

}  // namespace orl::tools
