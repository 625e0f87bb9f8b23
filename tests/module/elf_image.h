#pragma once

#include "tests/module/module_bytes.h"
#include "tests/module/module_image.h"

namespace orl::test {

// Reads a 64-bit little-endian ELF shared object. Throws: std::runtime_error.
ModuleImage ReadElfImage(const ModuleBytes& bytes);

}  // namespace orl::test
