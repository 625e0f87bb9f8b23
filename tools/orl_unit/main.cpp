// orl-unit: a biometric unit's host at the command line.

#include <exception>
#include <iostream>

#include "tools/command_line/standard_streams.h"
#include "tools/orl_unit/command_line.h"
#include "tools/orl_unit/complaint.h"

int main(int argc, char** argv) {
    using orl::tools::ExitStatus;
    ExitStatus end = ExitStatus::kFailed;
    try {
        orl::tools::prepareStandardStreams();
        end = orl::unit::runCommandLine(
            orl::tools::argumentsAsUtf8(argc, argv), std::cout, std::cerr);
    } catch (const std::exception& error) {
        orl::unit::complain(std::cerr, std::string("stopped: ") + error.what());
    }
    return static_cast<int>(end);
}
