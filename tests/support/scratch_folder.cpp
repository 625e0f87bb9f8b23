#include "tests/support/scratch_folder.h"

#include <fstream>
#include <random>
#include <stdexcept>

namespace orl::test {
namespace {

std::filesystem::path PathFromUtf8(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace

ScratchFolder::ScratchFolder() {
    std::random_device random;
    do {
        folder_ = std::filesystem::temp_directory_path() /
                  ("orl-test-" + std::to_string(random()) + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ScratchFolder::PathOf(const std::string& name) const {
    return Utf8FromPath(folder_ / PathFromUtf8(name));
}

std::string ScratchFolder::Write(const std::string& name,
                                 std::span<const std::uint8_t> bytes) const {
    const std::filesystem::path path = folder_ / PathFromUtf8(name);
    std::ofstream file(path, std::ios::binary);
    for (const std::uint8_t byte : bytes) {
        file.put(static_cast<char>(byte));
    }
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + Utf8FromPath(path));
    }
    return Utf8FromPath(path);
}

}  // namespace orl::test
