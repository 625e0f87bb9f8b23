#include "platform/log_file_calls.h"
#include "platform/windows_types.h"

namespace orl::platform {
namespace {

// A path or name in the system's form. Longer ones are refused.
struct WidePath {
    static constexpr int kMaxUnits = 1024;

    WCHAR units[kMaxUnits];
};

// False when the text is no UTF-8 or too long.
bool Widen(const char* text, WidePath& wide) noexcept {
    constexpr int kUpToTheNul = -1;
    return MultiByteToWideChar(
               CP_UTF8, MB_ERR_INVALID_CHARS, text, kUpToTheNul, wide.units, WidePath::kMaxUnits) >
           0;
}

}  // namespace

bool ReadEnvironmentVariable(const char* name, std::span<char> value) noexcept {
    WidePath wideName = {};
    WidePath wideValue = {};
    if (!Widen(name, wideName)) {
        return false;
    }
    const DWORD units =
        GetEnvironmentVariableW(wideName.units, wideValue.units, WidePath::kMaxUnits);
    if (units == 0 || units >= WidePath::kMaxUnits) {
        return false;
    }
    // The value without its NUL, then a NUL.
    const int bytes = WideCharToMultiByte(CP_UTF8,
                                          0,
                                          wideValue.units,
                                          static_cast<int>(units) + 1,
                                          value.data(),
                                          static_cast<int>(value.size()),
                                          nullptr,
                                          nullptr);
    return bytes > 0;
}

void CreateFolder(const char* path) noexcept {
    WidePath wide = {};
    if (Widen(path, wide)) {
        CreateDirectoryW(wide.units, nullptr);
    }
}

AppendOnlyFile::~AppendOnlyFile() {
    if (IsOpen()) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

void AppendOnlyFile::Open(const char* path) noexcept {
    WidePath wide = {};
    if (!Widen(path, wide)) {
        return;
    }
    // Without the right to write elsewhere, every write goes to the end of the file.
    HANDLE file = CreateFileW(wide.units,
                              FILE_APPEND_DATA | SYNCHRONIZE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr,
                              OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    handle_ = reinterpret_cast<std::intptr_t>(file);
    static_assert(sizeof(HANDLE) == sizeof(std::intptr_t));
}

void AppendOnlyFile::Append(std::span<const char> bytes) const noexcept {
    if (IsOpen()) {
        DWORD written = 0;
        WriteFile(reinterpret_cast<HANDLE>(handle_),
                  bytes.data(),
                  static_cast<DWORD>(bytes.size()),
                  &written,
                  nullptr);
    }
}

LocalTime CurrentLocalTime() noexcept {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return {.year = now.wYear,
            .month = now.wMonth,
            .day = now.wDay,
            .hour = now.wHour,
            .minute = now.wMinute,
            .second = now.wSecond,
            .millisecond = now.wMilliseconds};
}

}  // namespace orl::platform
