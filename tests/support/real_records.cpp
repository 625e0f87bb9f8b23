#include "tests/support/real_records.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace orl::test {

std::vector<std::filesystem::path> RealRecordFiles() {
    std::vector<std::filesystem::path> files;
    const char* folder = std::getenv("ORL_RECORDS");
    if (folder == nullptr || *folder == '\0') {
        return files;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().extension() == ".fmr") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return {bytes.begin(), bytes.end()};
}

}  // namespace orl::test
