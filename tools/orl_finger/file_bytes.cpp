#include "tools/orl_finger/file_bytes.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "tools/command_line/file_name.h"
#include "tools/orl_finger/complaint.h"

namespace orl::tools {
namespace {

constexpr std::size_t kReadChunkBytes = 65536;

}  // namespace

bool readFile(const std::string& name, std::vector<std::uint8_t>& bytes, std::string& reason) {
    std::filesystem::path path;
    if (!resolveFileName(name, path, reason)) {
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
    if (!resolveFileName(name, path, reason)) {
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
