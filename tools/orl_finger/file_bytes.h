#pragma once

// Files as bytes. Names are UTF-8 on every platform (on Linux any bytes the file system accepts).

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace orl::tools {

// The most that a record can have: a header, 255 views of 255 minutiae and the most extended data.
inline constexpr std::size_t kMaxFileBytes = 24 + 255 * (4 + 255 * 6 + 2 + 65535);

// Reads the whole file. Returns false with a short reason (no trailing dot or newline) when it
// cannot be opened or read, for example because it is a directory, or has more than kMaxFileBytes.
bool readFile(const std::string& name, std::vector<std::uint8_t>& bytes, std::string& reason);

// The same, with the reason as a message on `err`.
bool readOrComplain(const std::string& name, std::vector<std::uint8_t>& bytes, std::ostream& err);

// Writes the file anew with these bytes. Returns false with a short reason when that fails.
bool writeFile(const std::string& name, std::span<const std::uint8_t> bytes, std::string& reason);

}  // namespace orl::tools
