// The shipped body: nothing is logged.

#include "adapter/engine_log.h"

namespace orl::adapter {

void EngineLog(const char* /*tag*/, const char* /*format*/, ...) noexcept {}

}  // namespace orl::adapter
