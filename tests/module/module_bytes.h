#pragma once

// A module file's bytes, read with bounds checks, little-endian.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace orl::test {

class ModuleBytes {
  public:
    explicit ModuleBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

    std::uint64_t Number(std::uint64_t offset, std::size_t width) const {
        RequireRange(offset, width);
        std::uint64_t value = 0;
        for (std::size_t i = width; i > 0; --i) {
            value = (value << 8U) | bytes_[static_cast<std::size_t>(offset) + i - 1];
        }
        return value;
    }
    std::uint16_t U16(std::uint64_t offset) const {
        return static_cast<std::uint16_t>(Number(offset, 2));
    }
    std::uint32_t U32(std::uint64_t offset) const {
        return static_cast<std::uint32_t>(Number(offset, 4));
    }
    std::uint64_t U64(std::uint64_t offset) const { return Number(offset, 8); }

    // The NUL-terminated text at `offset`, at most `limit` bytes of it.
    std::string Text(std::uint64_t offset, std::size_t limit = 4096) const {
        std::string text;
        while (text.size() < limit) {
            const auto c = static_cast<char>(Number(offset + text.size(), 1));
            if (c == '\0') {
                break;
            }
            text.push_back(c);
        }
        return text;
    }
    std::size_t size() const { return bytes_.size(); }

  private:
    void RequireRange(std::uint64_t offset, std::size_t width) const {
        if (offset > bytes_.size() || bytes_.size() - offset < width) {
            throw std::runtime_error("the module file points outside itself");
        }
    }

    std::vector<std::uint8_t> bytes_;
};

}  // namespace orl::test
