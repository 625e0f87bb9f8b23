#include "matcher/api/finger_matcher.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "matcher/api/match_facade.h"
#include "matcher/api/match_status.h"

namespace {

constexpr std::int32_t kDefaultThreshold = 300;

// The matcher's only state. The mutex orders the changes of the flag; readers do without it, since
// a match works on its own data whatever the flag becomes meanwhile.
struct MatcherState {
    std::mutex changes;
    std::atomic<bool> initialized{false};
};
MatcherState matcherState;

// Copies `text`, cut to size - 1 bytes, and a NUL into errorText; nothing when there is no room.
void copyErrorText(std::string_view text, char* errorText, std::int32_t errorTextSize) {
    if (errorText == nullptr || errorTextSize < 1) {
        return;
    }
    const std::size_t room = static_cast<std::size_t>(errorTextSize) - 1;
    const std::size_t copied = std::min(text.size(), room);
    std::memcpy(errorText, text.data(), copied);
    errorText[copied] = '\0';
}

std::size_t sizeOrZero(std::int32_t size) {
    return size < 1 ? 0 : static_cast<std::size_t>(size);
}

}  // namespace

std::int32_t ORLFingerMatcher_Initialize(char* errorText, std::int32_t errorTextSize) {
    const std::scoped_lock lock(matcherState.changes);
    matcherState.initialized = true;
    copyErrorText("", errorText, errorTextSize);
    return ORLFingerMatcher_StatusOk;
}

bool ORLFingerMatcher_IsInitialized(void) {
    return matcherState.initialized;
}

void ORLFingerMatcher_Shutdown(void) {
    const std::scoped_lock lock(matcherState.changes);
    matcherState.initialized = false;
}

std::int32_t ORLFingerMatcher_Match(const std::uint8_t* probe,
                                    std::int32_t probeSize,
                                    const std::uint8_t* candidate,
                                    std::int32_t candidateSize,
                                    std::int32_t threshold,
                                    MatchResult* result,
                                    char* errorText,
                                    std::int32_t errorTextSize) {
    copyErrorText("", errorText, errorTextSize);
    if (result == nullptr) {
        copyErrorText("Result pointer is null.", errorText, errorTextSize);
        return ORLFingerMatcher_StatusInvalidArguments;
    }
    *result = {};
    if (!ORLFingerMatcher_IsInitialized()) {
        copyErrorText("Call Initialize first.", errorText, errorTextSize);
        return ORLFingerMatcher_StatusNotInitialized;
    }
    orl::matcher::TemplateMatchResult matched;
    std::string message;
    const std::int32_t status =
        orl::matcher::matchBuffers(probe,
                                   sizeOrZero(probeSize),
                                   candidate,
                                   sizeOrZero(candidateSize),
                                   matched,
                                   message,
                                   threshold < 1 ? kDefaultThreshold : threshold);
    result->Matched = matched.decision;
    result->Score = matched.score;
    copyErrorText(message, errorText, errorTextSize);
    return status;
}

const char* ORLFingerMatcher_StatusText(std::int32_t status) {
    return orl::matcher::matchStatusText(status);
}
