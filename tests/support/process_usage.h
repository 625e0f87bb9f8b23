#pragma once

// What this process holds of the system's goods, to see whether something grows.

#include <cstddef>

namespace orl::test {

// Open file descriptors, or handles on Windows.
std::size_t OpenHandles();

// Memory of this process alone, in bytes, whether in use or kept for later use.
std::size_t PrivateBytes();

}  // namespace orl::test
