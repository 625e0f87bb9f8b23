#pragma once

// orl-unit identify RECORD: whose finger is the record?

#include <iosfwd>
#include <string>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

struct IdentifyOptions {
    std::string record;
};

// Prints "NAME FINGER" or "not identified", or a JSON object. Throws CommandError when it cannot
// compare.
void runIdentify(const UnitOptions& unitOptions, const IdentifyOptions& options, std::ostream& out);

}  // namespace orl::unit
