#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/log_file_calls.h"

namespace orl::platform {
namespace {

constexpr mode_t kFolderMode = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;
constexpr mode_t kFileMode = S_IRUSR | S_IWUSR | S_IRGRP;
constexpr long kNanosecondsPerMillisecond = 1'000'000;
constexpr int kFirstYear = 1900;  // where tm_year counts from

}  // namespace

bool ReadEnvironmentVariable(const char* name, std::span<char> value) noexcept {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') {
        return false;
    }
    const std::size_t bytes = std::strlen(text) + 1;
    if (bytes > value.size()) {
        return false;
    }
    std::memcpy(value.data(), text, bytes);
    return true;
}

void CreateFolder(const char* path) noexcept {
    static_cast<void>(mkdir(path, kFolderMode));
}

AppendOnlyFile::~AppendOnlyFile() {
    if (IsOpen()) {
        close(static_cast<int>(handle_));
    }
}

void AppendOnlyFile::Open(const char* path) noexcept {
    handle_ = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kFileMode);
}

void AppendOnlyFile::Append(std::span<const char> bytes) const noexcept {
    if (IsOpen()) {
        const ssize_t written = write(static_cast<int>(handle_), bytes.data(), bytes.size());
        static_cast<void>(written);
    }
}

LocalTime CurrentLocalTime() noexcept {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm fields = {};
    localtime_r(&now.tv_sec, &fields);
    return {.year = fields.tm_year + kFirstYear,
            .month = fields.tm_mon + 1,
            .day = fields.tm_mday,
            .hour = fields.tm_hour,
            .minute = fields.tm_min,
            .second = fields.tm_sec,
            .millisecond = static_cast<int>(now.tv_nsec / kNanosecondsPerMillisecond)};
}

}  // namespace orl::platform
