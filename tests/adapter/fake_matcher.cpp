#include "tests/adapter/fake_matcher.h"

#include <algorithm>
#include <cstring>

#include "matcher/api/finger_matcher.h"
#include "tests/adapter/watched_new.h"

namespace orl::test {
namespace {

bool IsZeroText(const char* text, std::int32_t size) {
    return std::all_of(text, text + size, [](char c) { return c == '\0'; });
}

}  // namespace

FakeMatcher& TheFakeMatcher() {
    static FakeMatcher fake;
    return fake;
}

}  // namespace orl::test

std::int32_t ORLFingerMatcher_Initialize(char* errorText, std::int32_t errorTextSize) {
    orl::test::FakeMatcher& fake = orl::test::TheFakeMatcher();
    ++fake.initializations;
    fake.initializeErrorTextSize = errorTextSize;
    fake.initializeErrorTextWasZero = orl::test::IsZeroText(errorText, errorTextSize);
    if (fake.initializeRaise) {
        fake.initializeRaise();
    }
    if (fake.initializeStatus != 0) {
        std::strncpy(
            errorText, fake.initializeText.c_str(), static_cast<std::size_t>(errorTextSize) - 1);
        return fake.initializeStatus;
    }
    fake.initialized = true;
    return 0;
}

bool ORLFingerMatcher_IsInitialized(void) {
    return orl::test::TheFakeMatcher().initialized;
}

void ORLFingerMatcher_Shutdown(void) {
    ++orl::test::TheFakeMatcher().shutdowns;
    orl::test::TheFakeMatcher().initialized = false;
}

std::int32_t ORLFingerMatcher_Match(const std::uint8_t* probe,
                                    std::int32_t probeSize,
                                    const std::uint8_t* candidate,
                                    std::int32_t candidateSize,
                                    std::int32_t threshold,
                                    MatchResult* result,
                                    char* errorText,
                                    std::int32_t errorTextSize) {
    orl::test::FakeMatcher& fake = orl::test::TheFakeMatcher();
    orl::test::WatchedNew::Watch(probe, static_cast<std::size_t>(probeSize));
    orl::test::WatchedNew::Watch(candidate, static_cast<std::size_t>(candidateSize));
    fake.matches.push_back({.probe = {probe, probe + probeSize},
                            .candidate = {candidate, candidate + candidateSize},
                            .threshold = threshold,
                            .errorTextSize = errorTextSize,
                            .errorTextWasZero = orl::test::IsZeroText(errorText, errorTextSize)});
    // Whatever the caller finds in the buffers, the status alone must count.
    std::strncpy(errorText, "text of the match", static_cast<std::size_t>(errorTextSize) - 1);
    *result = {};
    if (!fake.initialized) {
        return ORLFingerMatcher_StatusNotInitialized;
    }
    orl::test::MatchAnswer answer;
    if (!fake.answers.empty()) {
        answer = fake.answers.front();
        fake.answers.pop_front();
    }
    if (answer.raise) {
        answer.raise();
    }
    result->Matched = answer.matched;
    result->Score = answer.score;
    return answer.status;
}

const char* ORLFingerMatcher_StatusText(std::int32_t /*status*/) {
    return "";
}
