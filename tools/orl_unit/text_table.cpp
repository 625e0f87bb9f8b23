#include "tools/orl_unit/text_table.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace orl::unit {
namespace {

constexpr const char* kBetweenColumns = "  ";
// Bytes 10xxxxxx continue a code point in UTF-8.
constexpr unsigned kContinuationMask = 0xC0;
constexpr unsigned kContinuation = 0x80;

std::size_t codePointCount(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char letter) {
        return (static_cast<unsigned char>(letter) & kContinuationMask) != kContinuation;
    }));
}

std::string padded(const std::string& cell, std::size_t width, TextTable::Align align) {
    const std::string spaces(width - codePointCount(cell), ' ');
    return align == TextTable::Align::kRight ? spaces + cell : cell + spaces;
}

}  // namespace

void TextTable::addRow(std::vector<std::string> cells) {
    assert(cells.size() == columns_.size());
    rows_.push_back(std::move(cells));
}

std::string TextTable::text() const {
    std::vector<std::size_t> widths(columns_.size(), 0);
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], codePointCount(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += (i == 0 ? "" : kBetweenColumns) + padded(row[i], widths[i], columns_[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace orl::unit
