#include "tools/orl_unit/executable_path.h"

#include <system_error>

#include "tools/orl_unit/command_error.h"

#ifdef _WIN32
#include <vector>

#include <windows.h>
#endif

namespace orl::unit {
namespace {

#ifdef _WIN32

constexpr std::size_t kMaxPathLetters = 32768;

std::filesystem::path executablePath() {
    std::vector<wchar_t> path(kMaxPathLetters);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return {path.data(), path.data() + length};
}

#else

std::filesystem::path executablePath() {
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

#endif

}  // namespace

std::filesystem::path executableFolder() {
    const std::filesystem::path path = executablePath();
    if (path.empty()) {
        throw CommandError("the system does not tell where this program lies");
    }
    return path.parent_path();
}

}  // namespace orl::unit
