#pragma once

#include "tests/module/module_bytes.h"
#include "tests/module/module_image.h"

namespace orl::test {

// Reads a 64-bit portable executable. Throws: std::runtime_error.
ModuleImage ReadPeImage(const ModuleBytes& bytes);

}  // namespace orl::test
