#pragma once

// Where platforms differ in how a program meets its caller.

#include <string>
#include <vector>

namespace orl::tools {

// Makes standard input and output carry bytes unchanged (no "\r\n" on Windows), in UTF-8.
void prepareStandardStreams();

// The arguments after the program's name, in UTF-8.
std::vector<std::string> argumentsAsUtf8(int argc, char** argv);

}  // namespace orl::tools
