#pragma once

// Files as bytes. Names are UTF-8 on every platform (on Linux any bytes the file system accepts).

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orl::tools {

// Reads the whole file, whatever its length. Returns false with a short reason (no trailing dot or
// newline) when it cannot be opened or read, for example because it is a directory.
bool readFile(const std::string& name, std::vector<std::uint8_t>& bytes, std::string& reason);

// Writes the file anew with these bytes. Returns false with a short reason when that fails.
bool writeFile(const std::string& name, std::span<const std::uint8_t> bytes, std::string& reason);

}  // namespace orl::tools
