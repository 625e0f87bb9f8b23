// Appends each line to <program files>\ORL_WBF_Drivers\orl_engine_adapter.log:
//
//   2024-03-01 14:05:09.042 ORLA_ENGINE_ADAPTER >> EngineAdapterAttach
//
// The first line logged makes the folder when it is missing and opens the file; it stays open until
// the module is unloaded. Whatever fails is given up silently and not tried again. A line is
// written by one append, under a lock, so lines of several units never mix. Control characters in a
// message become spaces, so that one call is one line; what exceeds kMaxLineBytes is cut off.

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <span>

#include "adapter/engine_log.h"
#include "platform/log_file_calls.h"

namespace orl::adapter {
namespace {

// The folder that holds installed programs; the first of the two that is set counts.
constexpr const char* kProgramFolderVariables[] = {"ProgramFiles(x86)", "ProgramFiles"};
constexpr char kLogFolderName[] = "ORL_WBF_Drivers";
constexpr char kLogFileName[] = "orl_engine_adapter.log";
constexpr char kTimestampFormat[] = "%04d-%02d-%02d %02d:%02d:%02d.%03d";

constexpr std::size_t kMaxPathBytes = 1024;
constexpr std::size_t kMaxLineBytes = 2048;  // the newline included
constexpr std::size_t kTimestampBytes = 64;  // ample for any clock value
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kDelete = 0x7F;

class LogFile {
  public:
    LogFile() noexcept = default;

    void AppendLine(std::span<const char> line) noexcept {
        const std::scoped_lock lock(lines_);
        if (!openingTried_) {
            openingTried_ = true;
            Open();
        }
        file_.Append(line);
    }

  private:
    void Open() noexcept {
        char programFolder[kMaxPathBytes];
        const bool named =
            std::any_of(std::begin(kProgramFolderVariables),
                        std::end(kProgramFolderVariables),
                        [&programFolder](const char* variable) {
                            return platform::ReadEnvironmentVariable(variable, programFolder);
                        });
        char folder[kMaxPathBytes];
        char path[kMaxPathBytes];
        if (named && Join(programFolder, kLogFolderName, folder) &&
            Join(folder, kLogFileName, path)) {
            platform::CreateFolder(folder);
            file_.Open(path);
        }
    }

    // Writes folder + separator + name; false when it does not fit.
    static bool Join(const char* folder, const char* name, std::span<char> path) noexcept {
        const int bytes = std::snprintf(
            path.data(), path.size(), "%s%s%s", folder, platform::kPathSeparator, name);
        return bytes > 0 && static_cast<std::size_t>(bytes) < path.size();
    }

    std::mutex lines_;
    bool openingTried_ = false;
    platform::AppendOnlyFile file_;
};

LogFile logFile;

// Where printed text ends in a buffer, given what snprintf returned: less than the buffer when the
// text was cut, and 0 when it failed.
std::size_t PrintedBytes(int printed, std::size_t room) noexcept {
    return printed < 0 ? 0 : std::min(static_cast<std::size_t>(printed), room - 1);
}

void PrintTimestamp(std::span<char> text) noexcept {
    const platform::LocalTime now = platform::CurrentLocalTime();
    std::snprintf(text.data(),
                  text.size(),
                  kTimestampFormat,
                  now.year,
                  now.month,
                  now.day,
                  now.hour,
                  now.minute,
                  now.second,
                  now.millisecond);
}

bool IsControlCharacter(char letter) noexcept {
    const auto code = static_cast<unsigned char>(letter);
    return code < kFirstPrintable || code == kDelete;
}

}  // namespace

void EngineLog(const char* tag, const char* format, ...) noexcept {
    char timestamp[kTimestampBytes];
    PrintTimestamp(timestamp);

    char line[kMaxLineBytes];
    std::size_t used =
        PrintedBytes(std::snprintf(line, sizeof(line), "%s %s ", timestamp, tag), sizeof(line));
    const std::size_t messageStart = used;
    std::va_list arguments;
    va_start(arguments, format);
    const std::size_t room = sizeof(line) - used;
    used += PrintedBytes(std::vsnprintf(line + used, room, format, arguments), room);
    va_end(arguments);

    std::replace_if(line + messageStart, line + used, IsControlCharacter, ' ');
    line[used++] = '\n';  // in the place of the NUL
    logFile.AppendLine({line, used});
}

}  // namespace orl::adapter
