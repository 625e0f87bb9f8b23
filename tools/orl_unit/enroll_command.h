#pragma once

// orl-unit enroll NAME FINGER RECORD, or enroll --list FILE with one NAME<TAB>FINGER<TAB>RECORD a
// line.

#include <iosfwd>
#include <string>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

struct EnrollOptions {
    std::string name;
    std::string finger;
    std::string record;
    std::string listFile;  // instead of the three above; "-" is standard input
    bool allowDuplicate = false;
};

// Enrolls and prints one line for each record once it is stored. With a list, a line that cannot be
// enrolled is told on err and the rest goes on; returns false then. Throws CommandError otherwise.
bool runEnroll(const UnitOptions& unitOptions,
               const EnrollOptions& options,
               std::ostream& out,
               std::ostream& err);

}  // namespace orl::unit
