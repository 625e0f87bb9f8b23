#pragma once

// The built orl-finger.

#include <string>
#include <vector>

#include "tests/support/run_program.h"

namespace orl::test {

ProgramOutcome RunOrlFinger(const std::vector<std::string>& arguments,
                            const std::string& input = {});

}  // namespace orl::test
