#include "tests/support/environment_variable.h"

#include <cstdlib>
#include <utility>

#ifdef _WIN32
#include <filesystem>

#include <windows.h>
#endif

namespace orl::test {
namespace {

#ifdef _WIN32

std::wstring Widen(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

std::optional<std::string> Get(const std::string& name) {
    const std::wstring wideName = Widen(name);
    const DWORD room = GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
    if (room == 0) {
        return std::nullopt;
    }
    std::wstring value(room, L'\0');
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), room));
    const std::u8string text = std::filesystem::path(value).u8string();
    return std::string(text.begin(), text.end());
}

void Set(const std::string& name, const std::optional<std::string>& value) {
    SetEnvironmentVariableW(Widen(name).c_str(),
                            value.has_value() ? Widen(*value).c_str() : nullptr);
}

#else

std::optional<std::string> Get(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

void Set(const std::string& name, const std::optional<std::string>& value) {
    if (value.has_value()) {
        setenv(name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name.c_str());
    }
}

#endif

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)), former_(Get(name_)) {
    Set(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
    Set(name_, former_);
}

}  // namespace orl::test
