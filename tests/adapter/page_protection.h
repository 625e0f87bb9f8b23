#pragma once

namespace orl::test {

// Whether the page at `address` may be written. Throws: std::runtime_error when the system does not
// tell.
bool IsWritable(const void* address);

}  // namespace orl::test
