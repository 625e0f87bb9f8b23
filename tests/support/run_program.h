#pragma once

// Runs a built program and catches what it says.

#include <string>
#include <vector>

namespace orl::test {

struct ProgramOutcome {
    int exitStatus = -1;
    std::string out;  // standard output, byte for byte
    std::string err;
};

// Runs `program` with these arguments (UTF-8, passed on as they are, whatever letters they hold)
// and `input` on its standard input, waits for its end and returns the outcome. A program that was
// stopped by a signal has exit status 128 + the signal.
// Throws: std::runtime_error when it cannot be started.
ProgramOutcome RunProgram(const std::string& program,
                          const std::vector<std::string>& arguments,
                          const std::string& input = {});

}  // namespace orl::test
