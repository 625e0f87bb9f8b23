#pragma once

// The adapter's one log function, and the lines that several entry points share.
//
// EngineLog has three bodies, of which each target links one: engine_log_off.cpp does nothing and
// is what ships, engine_log_file.cpp appends to a file, engine_log_capture.cpp keeps the lines for
// tests. No log line holds biometric data, and logging never changes a result.

#include "platform/windows_types.h"

// Lets the compiler check the arguments against the format. On Windows the formatting follows the C
// standard too (%zu), not the system library's dialect.
#if defined(_WIN32) && !defined(__clang__)
#define ORL_FORMAT_ARGUMENTS(formatIndex, firstArgument) \
    __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#else
#define ORL_FORMAT_ARGUMENTS(formatIndex, firstArgument) \
    __attribute__((format(printf, formatIndex, firstArgument)))
#endif

namespace orl::adapter {

inline constexpr char kEngineLogTag[] = "ORLA_ENGINE_ADAPTER";

// Logs one line: `format` with its arguments, as printf, marked with `tag`. Never throws; safe from
// any thread.
void EngineLog(const char* tag, const char* format, ...) noexcept ORL_FORMAT_ARGUMENTS(2, 3);

// The line of an entry point whose arguments are not logged.
inline void LogEntry(const char* entryPoint) noexcept {
    EngineLog(kEngineLogTag, ">> %s", entryPoint);
}

// The line that follows a call into another component; hands its result on.
inline HRESULT LogResult(const char* call, HRESULT hr) noexcept {
    EngineLog(kEngineLogTag,
              "%s returned HRESULT=0x%08X (%s)",
              call,
              static_cast<unsigned>(hr),
              FAILED(hr) ? "FAILED" : "SUCCESS");
    return hr;
}

// How a log line tells a boolean.
inline const char* BooleanText(bool value) noexcept {
    return value ? "TRUE" : "FALSE";
}

}  // namespace orl::adapter
