#pragma once

// How both programs end.

namespace orl::tools {

enum class ExitStatus {
    kDone = 0,
    kFailed = 1,      // something could not be done or used; the rest was done
    kWrongUsage = 2,  // nothing was done
};

// The worse of two ends.
constexpr ExitStatus worse(ExitStatus a, ExitStatus b) {
    return a < b ? b : a;
}

}  // namespace orl::tools
