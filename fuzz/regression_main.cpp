// Runs a fuzz target over the files of the folders named, as an ordinary program. Exit status 0
// when every file went through; a broken property aborts.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::size_t files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> text{std::istreambuf_iterator<char>(file), {}};
            const std::vector<std::uint8_t> bytes(text.begin(), text.end());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++files;
        }
    }
    std::printf("%zu inputs\n", files);
    return files > 0 ? 0 : 1;
}
