// A module with nothing but one of the log's bodies, so that a test can load it anew: each load
// starts with a log that has not been opened.

#include "adapter/engine_log.h"

#ifdef _WIN32
#define ORL_PROBE_EXPORT __declspec(dllexport)
#else
#define ORL_PROBE_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

ORL_PROBE_EXPORT void LogText(const char* text) {
    orl::adapter::EngineLog(orl::adapter::kEngineLogTag, "%s", text);
}

ORL_PROBE_EXPORT void LogSize(std::size_t size) {
    orl::adapter::EngineLog(orl::adapter::kEngineLogTag, "size=%zu", size);
}
}
