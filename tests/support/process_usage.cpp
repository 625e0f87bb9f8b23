#include "tests/support/process_usage.h"

#ifdef _WIN32
#include <windows.h>
// Needs the header above.
#include <psapi.h>
#else
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>
#endif

namespace orl::test {

#ifdef _WIN32

std::size_t OpenHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

std::size_t PrivateBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof(counters);
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PagefileUsage;
}

#else

std::size_t OpenHandles() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(
        std::distance(descriptors, std::filesystem::directory_iterator()));
}

std::size_t PrivateBytes() {
    // Pages: all, resident, shared.
    std::size_t all = 0;
    std::size_t resident = 0;
    std::size_t shared = 0;
    std::ifstream("/proc/self/statm") >> all >> resident >> shared;
    return (resident - shared) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

#endif

}  // namespace orl::test
