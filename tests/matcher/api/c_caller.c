#include "tests/matcher/api/c_caller.h"

#include <string.h>

#include "matcher/api/finger_matcher.h"

#define ORL_EXPECT(condition) \
    if (!(condition)) {       \
        return __LINE__;      \
    }

int CallEveryFunctionFromC(const uint8_t* record, int32_t recordSize) {
    char text[64];
    MatchResult result;
    memset(text, 'x', sizeof text);
    memset(&result, 0x5A, sizeof result);

    ORLFingerMatcher_Shutdown();
    ORL_EXPECT(!ORLFingerMatcher_IsInitialized());
    ORL_EXPECT(
        ORLFingerMatcher_Match(
            record, recordSize, record, recordSize, 0, &result, text, (int32_t)sizeof text) ==
        ORLFingerMatcher_StatusNotInitialized);
    ORL_EXPECT(strcmp(text, "Call Initialize first.") == 0);
    ORL_EXPECT(result.Matched == 0 && result.Score == 0);

    ORL_EXPECT(ORLFingerMatcher_Initialize(text, (int32_t)sizeof text) ==
               ORLFingerMatcher_StatusOk);
    ORL_EXPECT(text[0] == '\0');
    ORL_EXPECT(ORLFingerMatcher_IsInitialized());
    ORL_EXPECT(
        ORLFingerMatcher_Match(
            record, recordSize, record, recordSize, 0, &result, text, (int32_t)sizeof text) ==
        ORLFingerMatcher_StatusOk);
    ORL_EXPECT(text[0] == '\0');
    ORL_EXPECT(result.Matched == 1 && result.Score == 1000);
    ORL_EXPECT(strcmp(ORLFingerMatcher_StatusText(ORLFingerMatcher_StatusOk),
                      "Match completed successfully") == 0);

    ORLFingerMatcher_Shutdown();
    ORL_EXPECT(!ORLFingerMatcher_IsInitialized());
    return 0;
}
