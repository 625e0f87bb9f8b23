#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {

ProgramOutcome RunOrlFinger(const std::vector<std::string>& arguments, const std::string& input) {
    return RunProgram(ORL_FINGER_PROGRAM, arguments, input);
}

}  // namespace orl::test
