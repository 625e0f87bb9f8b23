#pragma once

// Reading side of the log body that keeps its lines in memory, for tests.

#include <string>
#include <vector>

namespace orl::adapter {

struct CapturedLine {
    std::string tag;
    std::string message;
};

// The lines logged since the last call, oldest first, and forgets them. Safe from any thread.
std::vector<CapturedLine> TakeCapturedLog();

}  // namespace orl::adapter
