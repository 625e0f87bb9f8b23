#include "tests/adapter/page_protection.h"

#include <cstdint>
#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <fstream>
#include <sstream>
#include <string>
#endif

namespace orl::test {

#ifdef _WIN32

bool IsWritable(const void* address) {
    MEMORY_BASIC_INFORMATION page = {};
    if (VirtualQuery(address, &page, sizeof(page)) == 0) {
        throw std::runtime_error("the page is unknown");
    }
    constexpr DWORD kWritable =
        PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
    return (page.Protect & kWritable) != 0;
}

#else

bool IsWritable(const void* address) {
    // Lines such as "55d0c0a00000-55d0c0a21000 r--p 00000000 08:01 1234 /path".
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = '\0';
        std::string rights;
        fields >> std::hex >> begin >> dash >> end >> rights;
        const auto wanted = reinterpret_cast<std::uintptr_t>(address);
        if (begin <= wanted && wanted < end) {
            return rights.find('w') != std::string::npos;
        }
    }
    throw std::runtime_error("the page is unknown");
}

#endif

}  // namespace orl::test
