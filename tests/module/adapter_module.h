#pragma once

// The built adapter module under test, named by the environment variable ORL_ADAPTER_MODULE.

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace orl::test {

inline std::string AdapterModulePath() {
    const char* path = std::getenv("ORL_ADAPTER_MODULE");
    if (path == nullptr) {
        throw std::runtime_error("ORL_ADAPTER_MODULE does not name the adapter module");
    }
    return path;
}

}  // namespace orl::test
