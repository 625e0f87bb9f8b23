#ifndef ORL_MATCHER_API_FINGER_MATCHER_H
#define ORL_MATCHER_API_FINGER_MATCHER_H

/* The fingerprint matcher's call surface; plain C can include it.
 *
 * Conventions:
 * 1. Records are ISO/IEC 19794-2:2005 finger minutiae records, given as bytes and a size. They are
 *    only read, and nothing is kept of them after a call.
 * 2. Calls return an integer status, 0 for success; ORLFingerMatcher_StatusText has their texts.
 * 3. A message is copied into the caller's error buffer cut to errorTextSize - 1 bytes and ended by
 *    a NUL. A null buffer, or a size below 1, receives nothing.
 * 4. ORLFingerMatcher_Initialize comes before the first match of a process, and again after an
 *    ORLFingerMatcher_Shutdown.
 * 5. All calls may come from any thread at any time; matches run side by side.
 * 6. ORLFingerMatcher_Match lets C++ exceptions pass: std::runtime_error "not triangulation" for a
 *    finger whose minutiae admit no triangle, std::bad_alloc and std::length_error when memory runs
 *    out. A caller in C++ catches them; see the README for callers in C.
 */

#include <stdbool.h>
#include <stdint.h>

#if defined(ORL_FINGER_MATCHER_EXPORTS) && defined(_WIN32)
#define ORL_FINGER_MATCHER_API __declspec(dllexport)
#elif defined(ORL_FINGER_MATCHER_EXPORTS)
#define ORL_FINGER_MATCHER_API __attribute__((visibility("default")))
#else
#define ORL_FINGER_MATCHER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Match statuses. */
enum {
    ORLFingerMatcher_StatusOk = 0,
    ORLFingerMatcher_StatusInvalidArguments = 1,
    ORLFingerMatcher_StatusProbeNotLoaded = 2,
    ORLFingerMatcher_StatusCandidateNotLoaded = 3,
    ORLFingerMatcher_StatusProbeEmpty = 4,
    ORLFingerMatcher_StatusCandidateEmpty = 5,
    ORLFingerMatcher_StatusNotInitialized = 10
};

/* What a match says. */
typedef struct MatchResult {
    int32_t Matched; /* 1 for a match, else 0 */
    uint16_t Score;  /* similarity, 0..1000 */
} MatchResult;

/* Readies the matcher; calling it again is harmless. Returns 0. */
ORL_FINGER_MATCHER_API int32_t ORLFingerMatcher_Initialize(char* errorText, int32_t errorTextSize);

/* Whether the matcher is initialised. */
ORL_FINGER_MATCHER_API bool ORLFingerMatcher_IsInitialized(void);

/* Returns the matcher to its uninitialised state; harmless when it is in it already. */
ORL_FINGER_MATCHER_API void ORLFingerMatcher_Shutdown(void);

/* Compares two records and decides whether they are of the same finger.
 *
 * probe, candidate: the records; a size below 1 counts as 0 and gives status 1.
 * threshold: 0 or below selects the default, 300; 1..100 count in tens (30 means 300); greater
 *     values stand as they are. The decision follows from the score's distance to it.
 * result: filled on return, zeroed first; null gives status 1.
 * errorText, errorTextSize: receives a message, empty on success. */
ORL_FINGER_MATCHER_API int32_t ORLFingerMatcher_Match(const uint8_t* probe,
                                                      int32_t probeSize,
                                                      const uint8_t* candidate,
                                                      int32_t candidateSize,
                                                      int32_t threshold,
                                                      MatchResult* result,
                                                      char* errorText,
                                                      int32_t errorTextSize);

/* The text of a match status; never null, lives as long as the module. */
ORL_FINGER_MATCHER_API const char* ORLFingerMatcher_StatusText(int32_t status);

#ifdef __cplusplus
}
#endif

#endif /* ORL_MATCHER_API_FINGER_MATCHER_H */
