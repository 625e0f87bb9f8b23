#pragma once

// The built orl-finger.

#include <string>
#include <vector>

#include "tests/support/run_program.h"

namespace orl::test {

// A sound record of the samples.
inline constexpr char kRecord[] = "samples/101_1.fmr";

ProgramOutcome RunOrlFinger(const std::vector<std::string>& arguments,
                            const std::string& input = {});

}  // namespace orl::test
