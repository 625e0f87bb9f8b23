#pragma once

// The checksum that the store's rows carry: 64-bit FNV-1a over a row's values, each preceded by its
// length, so that no byte can move from one value to the next unseen. It finds accidents, not
// attacks.

#include <cstdint>
#include <span>
#include <string_view>

namespace orl::unit {

class RowChecksum {
  public:
    RowChecksum& add(std::span<const std::uint8_t> value) {
        addInteger(static_cast<std::int64_t>(value.size()));
        for (const std::uint8_t byte : value) {
            addByte(byte);
        }
        return *this;
    }
    RowChecksum& add(std::string_view text) {
        return add({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    RowChecksum& addInteger(std::int64_t value) {
        auto rest = static_cast<std::uint64_t>(value);
        for (int i = 0; i < kIntegerBytes; ++i, rest >>= kByteBits) {
            addByte(static_cast<std::uint8_t>(rest));
        }
        return *this;
    }
    // The sum as SQLite stores it: the same 64 bits, signed.
    [[nodiscard]] std::int64_t value() const { return static_cast<std::int64_t>(state_); }

  private:
    static constexpr int kIntegerBytes = 8;
    static constexpr unsigned kByteBits = 8;
    static constexpr std::uint64_t kOffsetBasis = 0xCBF29CE484222325;
    static constexpr std::uint64_t kPrime = 0x100000001B3;

    void addByte(std::uint8_t byte) { state_ = (state_ ^ byte) * kPrime; }

    std::uint64_t state_ = kOffsetBasis;
};

}  // namespace orl::unit
