#include "tests/support/process_usage.h"

#include <cstdint>

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

// Asks for each handle there may be, since GetProcessHandleCount is not the same everywhere.
std::size_t OpenHandles() {
    constexpr std::uintptr_t kHandleStep = 4;  // handles are multiples of it
    constexpr std::uintptr_t kHandlesEnd = 65536;
    std::size_t count = 0;
    for (std::uintptr_t handle = kHandleStep; handle < kHandlesEnd; handle += kHandleStep) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) != 0 ? 1 : 0;
    }
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
