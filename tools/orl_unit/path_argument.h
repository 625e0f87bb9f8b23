#pragma once

// Paths that the user gives.

#include <filesystem>
#include <string>

namespace orl::unit {

// The path that a name (UTF-8; on Linux any bytes) stands for. `what` is whose name it is, for the
// message. Throws CommandError on Windows when the name is not UTF-8.
std::filesystem::path pathArgument(const std::string& name, const std::string& what);

}  // namespace orl::unit
