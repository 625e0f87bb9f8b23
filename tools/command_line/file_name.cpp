#include "tools/command_line/file_name.h"

#include <cerrno>
#include <system_error>

#include "tools/command_line/utf8_path.h"

namespace orl::tools {

bool resolveFileName(const std::string& name, std::filesystem::path& path, std::string& reason) {
    try {
        path = pathFromUtf8(name);
    } catch (const std::system_error&) {
        reason = "the name is not valid UTF-8";
        return false;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        reason = "is a directory";
        return false;
    }
    return true;
}

std::string reasonFromErrno(const char* otherwise) {
    return errno == 0 ? otherwise : std::generic_category().message(errno);
}

}  // namespace orl::tools
