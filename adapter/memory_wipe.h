#pragma once

// Overwrites biometric bytes before their memory is given back.

#include <cstddef>

namespace orl::adapter {

// Sets bytes[0..size) to zero in a way that the compiler may not leave out, although nothing reads
// them afterwards. A null pointer is allowed when size is 0. Never throws.
void WipeMemory(void* bytes, std::size_t size) noexcept;

}  // namespace orl::adapter
