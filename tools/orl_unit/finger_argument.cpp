#include "tools/orl_unit/finger_argument.h"

#include "platform/wbf.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/finger_names.h"

namespace orl::unit {

std::uint8_t fingerArgument(const std::string& name) {
    const auto subFactor = subFactorFromName(name);
    if (!subFactor) {
        throw CommandError("unknown finger " + inQuotes(name) + "; known are " +
                           knownFingerNames());
    }
    return *subFactor;
}

std::uint8_t enrollableFinger(const std::string& name) {
    const std::uint8_t subFactor = fingerArgument(name);
    if (subFactor == WINBIO_SUBTYPE_ANY) {
        throw CommandError("a finger is enrolled under its own name, not as " + inQuotes(name));
    }
    return subFactor;
}

}  // namespace orl::unit
