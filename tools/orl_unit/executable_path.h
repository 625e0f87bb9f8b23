#pragma once

// Where this program lies, to find what is built or installed beside it.

#include <filesystem>

namespace orl::unit {

// The folder of the running program. Throws CommandError when the system does not tell.
std::filesystem::path executableFolder();

}  // namespace orl::unit
