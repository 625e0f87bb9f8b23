#pragma once

// The few system calls behind a log file: an environment variable, a folder, a file that is only
// appended to, and the wall clock. Texts and paths are UTF-8 on every system. Nothing here throws.

#include <cstddef>
#include <cstdint>
#include <span>

namespace orl::platform {

// Between the names of a path.
#ifdef _WIN32
inline constexpr char kPathSeparator[] = "\\";
#else
inline constexpr char kPathSeparator[] = "/";
#endif

// Copies the variable's value and a NUL into `value`. False, with `value` unspecified, when the
// variable is unset or empty, or its value does not fit.
bool ReadEnvironmentVariable(const char* name, std::span<char> value) noexcept;

// Makes one folder; quietly does nothing when it exists or cannot be made.
void CreateFolder(const char* path) noexcept;

// A file open for appending for as long as the object lives. Not for use by several threads at
// once.
class AppendOnlyFile {
  public:
    constexpr AppendOnlyFile() noexcept = default;
    ~AppendOnlyFile();
    AppendOnlyFile(const AppendOnlyFile&) = delete;
    AppendOnlyFile& operator=(const AppendOnlyFile&) = delete;

    // Opens the file, making it when it is missing. A failure leaves the object without a file.
    // REQUIRES: no file has been opened yet.
    void Open(const char* path) noexcept;

    bool IsOpen() const noexcept { return handle_ != kNoHandle; }

    // Hands all the bytes to the system in one call; an error is ignored, as is a call without a
    // file.
    void Append(std::span<const char> bytes) const noexcept;

  private:
    static constexpr std::intptr_t kNoHandle = -1;  // in both systems' sense

    std::intptr_t handle_ = kNoHandle;
};

// The wall clock in the local time zone; month and day count from 1.
struct LocalTime {
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
    int millisecond;
};

// What the clock shows at the moment of the call, daylight saving time included.
LocalTime CurrentLocalTime() noexcept;

}  // namespace orl::platform
