#pragma once

#include <cstdio>
#include <cstdlib>

namespace orl::fuzz {

// Ends the process, so that the fuzzer keeps the input, when a property does not hold.
inline void Require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", property);
        std::abort();
    }
}

}  // namespace orl::fuzz
