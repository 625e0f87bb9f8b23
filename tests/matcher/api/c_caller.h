#ifndef ORL_TESTS_MATCHER_API_C_CALLER_H
#define ORL_TESTS_MATCHER_API_C_CALLER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Calls every function of the matcher from C with a record that matches itself. Returns 0, or the
 * source line of the first answer that is not as expected. Leaves the matcher shut down. */
int CallEveryFunctionFromC(const uint8_t* record, int32_t recordSize);

#ifdef __cplusplus
}
#endif

#endif
