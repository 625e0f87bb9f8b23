#pragma once

// A plain table for the terminal: columns padded with spaces to the widest cell, two spaces apart.

#include <cstddef>
#include <string>
#include <vector>

namespace orl::unit {

class TextTable {
  public:
    enum class Align { kLeft, kRight };

    explicit TextTable(std::vector<Align> columns) : columns_(std::move(columns)) {}

    // Adds a row. REQUIRES: one cell for each column.
    void addRow(std::vector<std::string> cells);

    // The rows, each with a line end and without trailing spaces. Widths count code points.
    [[nodiscard]] std::string text() const;

  private:
    std::vector<Align> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace orl::unit
