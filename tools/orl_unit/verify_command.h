#pragma once

// orl-unit verify NAME FINGER RECORD: is the record that finger of that identity?

#include <iosfwd>
#include <string>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

struct VerifyOptions {
    std::string name;
    std::string finger;
    std::string record;
};

// Prints "match" or "no match", or a JSON object. Throws CommandError when it cannot compare.
void runVerify(const UnitOptions& unitOptions, const VerifyOptions& options, std::ostream& out);

}  // namespace orl::unit
