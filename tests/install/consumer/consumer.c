/* Asks the installed matcher about a record without a finger; exit status 0 when it answers so. */
#include <orl/finger_matcher.h>
#include <stdio.h>
#include <string.h>

int main(void) {
    static const uint8_t record[24] = {'F', 'M', 'R', 0, ' ', '2', '0', 0, 0, 0, 0, sizeof record};
    char text[80] = "";
    MatchResult result = {1, 1};
    int32_t status = ORLFingerMatcher_Initialize(text, (int32_t)sizeof text);
    if (status != ORLFingerMatcher_StatusOk || !ORLFingerMatcher_IsInitialized()) {
        fprintf(stderr, "not initialised: %s\n", text);
        return 1;
    }
    status = ORLFingerMatcher_Match(record,
                                    (int32_t)sizeof record,
                                    record,
                                    (int32_t)sizeof record,
                                    0,
                                    &result,
                                    text,
                                    (int32_t)sizeof text);
    ORLFingerMatcher_Shutdown();
    if (status != ORLFingerMatcher_StatusProbeEmpty || result.Matched != 0 ||
        strcmp(text, "Probe template contains no fingerprints from buffer") != 0) {
        fprintf(stderr, "status %d: %s\n", (int)status, text);
        return 1;
    }
    return 0;
}
