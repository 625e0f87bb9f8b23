#include "tools/orl_unit/finger_argument.h"

#include "platform/wbf.h"
#include "tools/orl_unit/command_error.h"
#include "tools/orl_unit/finger_names.h"

namespace orl::unit {
namespace {

std::uint8_t fingerOf(const std::string& name, const std::string& known) {
    const auto subFactor = subFactorFromName(name);
    if (!subFactor) {
        throw CommandError("unknown finger " + inQuotes(name) + "; known are " + known);
    }
    return *subFactor;
}

}  // namespace

std::uint8_t fingerArgument(const std::string& name) {
    return fingerOf(name, knownFingerNames());
}

std::uint8_t enrollableFinger(const std::string& name) {
    const std::uint8_t subFactor = fingerOf(name, enrollableFingerNames());
    if (subFactor == WINBIO_SUBTYPE_ANY) {
        throw CommandError("a finger is enrolled under its own name, not as " + inQuotes(name));
    }
    return subFactor;
}

}  // namespace orl::unit
