#include "adapter/engine_log_capture.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "adapter/engine_log.h"

namespace orl::adapter {
namespace {

struct Capture {
    std::mutex changes;
    std::vector<CapturedLine> lines;
};

Capture& TheCapture() {
    static Capture capture;
    return capture;
}

}  // namespace

void EngineLog(const char* tag, const char* format, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string message(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
    std::vsnprintf(message.data(), message.size() + 1, format, again);
    va_end(again);

    const std::scoped_lock lock(TheCapture().changes);
    TheCapture().lines.push_back({tag, std::move(message)});
}

std::vector<CapturedLine> TakeCapturedLog() {
    const std::scoped_lock lock(TheCapture().changes);
    return std::exchange(TheCapture().lines, {});
}

}  // namespace orl::adapter
