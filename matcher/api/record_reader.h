#pragma once

// A cursor over a record's bytes that reads big-endian fields and never leaves the record. Every
// read that would pass the end returns false, moves nothing and leaves its output alone.
// Never throws; owns nothing: the bytes outlive the reader.

#include <cstddef>
#include <cstdint>
#include <span>

namespace orl::matcher {

class RecordReader {
  public:
    explicit RecordReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    // Bytes between the cursor and the end of the record.
    std::size_t remaining() const { return rest_.size(); }

    // Takes the next `count` bytes as they stand.
    bool readBytes(std::size_t count, std::span<const std::uint8_t>& bytes) {
        if (count > rest_.size()) {
            return false;
        }
        bytes = rest_.first(count);
        rest_ = rest_.subspan(count);
        return true;
    }

    bool skip(std::size_t count) {
        std::span<const std::uint8_t> skipped;
        return readBytes(count, skipped);
    }

    bool readUint8(std::uint8_t& value) { return readBigEndian(value); }
    bool readUint16(std::uint16_t& value) { return readBigEndian(value); }
    bool readUint32(std::uint32_t& value) { return readBigEndian(value); }

  private:
    template <typename Unsigned>
    bool readBigEndian(Unsigned& value) {
        constexpr unsigned kBitsPerByte = 8;
        std::span<const std::uint8_t> bytes;
        if (!readBytes(sizeof(Unsigned), bytes)) {
            return false;
        }
        std::uint32_t joined = 0;
        for (const std::uint8_t byte : bytes) {
            joined = (joined << kBitsPerByte) | byte;
        }
        value = static_cast<Unsigned>(joined);
        return true;
    }

    std::span<const std::uint8_t> rest_;
};

}  // namespace orl::matcher
