#pragma once

// Whole files as text, bytes unchanged. Names are UTF-8.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orl::test {

// What the file holds. Throws: std::runtime_error naming the file when it cannot be read.
std::string FileText(const std::string& name);

// The text's lines, without their newlines.
std::vector<std::string> LinesOf(const std::string& text);

std::vector<std::uint8_t> BytesOf(std::string_view text);

}  // namespace orl::test
