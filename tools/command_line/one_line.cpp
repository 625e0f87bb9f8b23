#include "tools/command_line/one_line.h"

#include <algorithm>

namespace orl::tools {
namespace {

constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

bool isControl(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte < kFirstPrintable || byte == kDelete;
}

}  // namespace

std::string oneLine(std::string_view text) {
    std::string line(text);
    std::replace_if(line.begin(), line.end(), isControl, '?');
    return line;
}

std::string inQuotes(std::string_view text) {
    std::string line(1, '\'');
    line += oneLine(text);
    line += '\'';
    return line;
}

std::string counted(std::size_t count, std::string_view noun) {
    std::string text = std::to_string(count) + ' ';
    text += noun;
    return count == 1 ? text : text + 's';
}

}  // namespace orl::tools
