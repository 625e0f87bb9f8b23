#pragma once

// The built orl-unit, and records for it.

#include <string>
#include <vector>

#include "tests/support/run_program.h"

namespace orl::test {

ProgramOutcome RunOrlUnit(const std::vector<std::string>& arguments, const std::string& input = {});

// The path of one of the project's sample records, such as "101_2". Tests run in the project's
// folder.
std::string SampleRecord(const std::string& fingerAndImpression);

}  // namespace orl::test
