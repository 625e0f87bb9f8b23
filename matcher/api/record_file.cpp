#include "matcher/api/record_file.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace orl::matcher {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileOwner = std::unique_ptr<std::FILE, FileCloser>;

FileOwner openForReading(const std::string& path) {
#ifdef _WIN32
    try {
        const std::filesystem::path native(std::u8string(path.begin(), path.end()));
        return FileOwner(_wfopen(native.c_str(), L"rb"));
    } catch (const std::filesystem::filesystem_error&) {
        return nullptr;  // not UTF-8, so no file has this name
    }
#else
    return FileOwner(std::fopen(path.c_str(), "rb"));
#endif
}

}  // namespace

std::optional<std::size_t> readRecordFile(const std::string& path, std::span<std::uint8_t> buffer) {
    const FileOwner file = openForReading(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), file.get());
    const bool endsInBuffer = std::fgetc(file.get()) == EOF;
    if (std::ferror(file.get()) != 0 || !endsInBuffer) {
        return std::nullopt;
    }
    return size;
}

}  // namespace orl::matcher
