#include "tests/support/file_text.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace orl::test {

std::string FileText(const std::string& name) {
    std::ifstream in(std::filesystem::path(std::u8string(name.begin(), name.end())),
                     std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + name);
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::uint8_t> BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

}  // namespace orl::test
