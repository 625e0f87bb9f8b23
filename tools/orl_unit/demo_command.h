#pragma once

// orl-unit demo [--data DIR].

#include <cstddef>
#include <iosfwd>
#include <string>

#include "tools/orl_unit/unit_options.h"

namespace orl::unit {

// Enough impostor comparisons for a steady figure, and a matter of seconds.
inline constexpr std::size_t kDefaultImpostorLimit = 2000;

struct DemoOptions {
    std::string folder;  // empty: the sample records of the project
    std::size_t impostorLimit = kDefaultImpostorLimit;
    // Whether the user has named a store; otherwise one is made for the demonstration and removed.
    bool storeGiven = false;
};

// Runs the demonstration and prints its summary. Throws CommandError when something fails; rejected
// fingers are outcomes, not failures.
void runDemoCommand(const UnitOptions& unitOptions, const DemoOptions& options, std::ostream& out);

}  // namespace orl::unit
