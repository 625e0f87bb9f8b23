#pragma once

// How orl-finger ends, and how it says that something could not be used.

#include <ostream>
#include <string_view>

namespace orl::tools {

enum class ExitStatus {
    kDone = 0,
    kUnusable = 1,    // a record, pair or file could not be used; the rest was done
    kWrongUsage = 2,  // nothing was done
};

// Writes the one line "orl-finger: SUBJECT: REASON".
void complain(std::ostream& err, std::string_view subject, std::string_view reason);

// The worse of two ends.
constexpr ExitStatus worse(ExitStatus a, ExitStatus b) {
    return a < b ? b : a;
}

}  // namespace orl::tools
