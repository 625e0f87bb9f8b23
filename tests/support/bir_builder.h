#pragma once

// Builds WINBIO_BIR blocks for tests.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orl::test {

// A BIR that holds nothing but this standard data block, right behind its 32-byte header.
std::vector<std::uint8_t> BuildBir(std::span<const std::uint8_t> standardData);

// Overwrites what a BIR of 16 bytes or more says of its standard data block, in bytes.
void SetStandardDataBlock(std::span<std::uint8_t> bir, std::uint32_t size, std::uint32_t offset);

}  // namespace orl::test
