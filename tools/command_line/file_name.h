#pragma once

// Names of files that are to be read or written, and why they cannot be.

#include <filesystem>
#include <string>

namespace orl::tools {

// Finds the path that a name (see utf8_path.h) stands for. False with a short reason (no trailing
// dot or newline) when the name is not UTF-8, on Windows, or is that of a directory.
bool resolveFileName(const std::string& name, std::filesystem::path& path, std::string& reason);

// What the last failed call of the C library said, or `otherwise` when it said nothing. The caller
// has set errno to 0 before.
std::string reasonFromErrno(const char* otherwise);

}  // namespace orl::tools
