#pragma once

// orl-unit delete NAME [FINGER], or delete --all.

#include <iosfwd>
#include <string>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

struct DeleteOptions {
    std::string name;
    std::string finger = "any";
    bool all = false;  // every record of everybody, instead of a name
};

// Deletes the records and prints how many. Throws CommandError when there are none.
void runDelete(const UnitOptions& unitOptions, const DeleteOptions& options, std::ostream& out);

}  // namespace orl::unit
