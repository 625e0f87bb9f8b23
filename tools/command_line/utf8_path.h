#pragma once

// Paths as the command line has them: UTF-8 on every platform (on Linux any bytes that the file
// system accepts).

#include <filesystem>
#include <string>
#include <string_view>

namespace orl::tools {

// The path that a UTF-8 name stands for.
// Throws: std::system_error on Windows when `name` is not UTF-8.
std::filesystem::path pathFromUtf8(std::string_view name);

// The UTF-8 name of a path.
std::string utf8FromPath(const std::filesystem::path& path);

}  // namespace orl::tools
