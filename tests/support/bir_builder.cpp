#include "tests/support/bir_builder.h"

#include <algorithm>

namespace orl::test {
namespace {

constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kSizeField = 8;
constexpr std::size_t kOffsetField = 12;

void PutLittleEndian32(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < sizeof(value); ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace

std::vector<std::uint8_t> BuildBir(std::span<const std::uint8_t> standardData) {
    std::vector<std::uint8_t> bir(kHeaderBytes + standardData.size(), 0);
    SetStandardDataBlock(bir, static_cast<std::uint32_t>(standardData.size()), kHeaderBytes);
    std::copy(standardData.begin(), standardData.end(), bir.begin() + kHeaderBytes);
    return bir;
}

void SetStandardDataBlock(std::span<std::uint8_t> bir, std::uint32_t size, std::uint32_t offset) {
    PutLittleEndian32(bir, kSizeField, size);
    PutLittleEndian32(bir, kOffsetField, offset);
}

}  // namespace orl::test
