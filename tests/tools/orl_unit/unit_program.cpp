#include "tests/tools/orl_unit/unit_program.h"

namespace orl::test {

ProgramOutcome RunOrlUnit(const std::vector<std::string>& arguments, const std::string& input) {
    return RunProgram(ORL_UNIT_PROGRAM, arguments, input);
}

std::string SampleRecord(const std::string& fingerAndImpression) {
    return "samples/" + fingerAndImpression + ".fmr";
}

}  // namespace orl::test
