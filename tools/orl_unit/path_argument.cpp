#include "tools/orl_unit/path_argument.h"

#include <system_error>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"

namespace orl::unit {

std::filesystem::path pathArgument(const std::string& name, const std::string& what) {
    try {
        return tools::pathFromUtf8(name);
    } catch (const std::system_error&) {
        throw CommandError(what + " " + inQuotes(name) + " has a name that is not UTF-8");
    }
}

}  // namespace orl::unit
