#include "tools/orl_finger/file_bytes.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_finger/complaint.h"

namespace orl::tools {
namespace {

constexpr std::size_t kReadChunkBytes = 65536;

bool resolveName(const std::string& name, std::filesystem::path& path, std::string& reason) {
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

// What the last failed call of the C library said, or `otherwise` when it said nothing.
std::string reasonFromErrno(const char* otherwise) {
    return errno == 0 ? otherwise : std::generic_category().message(errno);
}

}  // namespace

bool readFile(const std::string& name, std::vector<std::uint8_t>& bytes, std::string& reason) {
    std::filesystem::path path;
    if (!resolveName(name, path, reason)) {
        return false;
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        reason = reasonFromErrno("cannot be opened");
        return false;
    }
    bytes.clear();
    std::array<char, kReadChunkBytes> chunk{};
    while (in && bytes.size() <= kMaxFileBytes) {
        in.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        bytes.insert(bytes.end(), chunk.data(), chunk.data() + in.gcount());
    }
    if (in.bad()) {
        reason = reasonFromErrno("cannot be read");
        return false;
    }
    if (bytes.size() > kMaxFileBytes) {
        reason = "is longer than any record";
        return false;
    }
    return true;
}

bool readOrComplain(const std::string& name, std::vector<std::uint8_t>& bytes, std::ostream& err) {
    std::string reason;
    if (readFile(name, bytes, reason)) {
        return true;
    }
    complain(err, name, reason);
    return false;
}

bool writeFile(const std::string& name, std::span<const std::uint8_t> bytes, std::string& reason) {
    std::filesystem::path path;
    if (!resolveName(name, path, reason)) {
        return false;
    }
    errno = 0;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    for (const std::uint8_t byte : bytes) {
        out.put(static_cast<char>(byte));
    }
    out.close();
    if (!out) {
        reason = reasonFromErrno("cannot be written");
        return false;
    }
    return true;
}

}  // namespace orl::tools
