// orl-unit: a biometric unit's host at the command line.

#include <exception>
#include <iostream>

#include "tools/command_line/standard_streams.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/command_line.h"

int main(int argc, char** argv) {
    using orl::unit::ExitStatus;
    ExitStatus end = ExitStatus::Failed;
    try {
        orl::tools::prepareStandardStreams();
        end = orl::unit::runCommandLine(
            orl::tools::argumentsAsUtf8(argc, argv), std::cout, std::cerr);
    } catch (const std::exception& error) {
        orl::unit::complain(std::cerr, "stopped: " + orl::unit::oneLine(error.what()));
    }
    return static_cast<int>(end);
}
