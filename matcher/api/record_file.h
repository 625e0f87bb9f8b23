#pragma once

// Reads a record's file into a caller's buffer.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace orl::matcher {

// Reads the whole file at `path` (UTF-8) into `buffer` and returns its size in bytes. Returns
// nothing when the file cannot be opened or read, a folder included, or when it is longer than
// `buffer`. Throws: std::bad_alloc. Safe from several threads, each with its own buffer.
std::optional<std::size_t> readRecordFile(const std::string& path, std::span<std::uint8_t> buffer);

}  // namespace orl::matcher
