#include "tests/module/module_image.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/module/elf_image.h"
#include "tests/module/module_bytes.h"
#include "tests/module/pe_image.h"

namespace orl::test {

ModuleImage ReadModuleImage(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot open " + path);
    }
    const ModuleBytes bytes(std::vector<std::uint8_t>{std::istreambuf_iterator<char>(file), {}});
    constexpr std::uint32_t kElfMagic = 0x464C457F;  // "\x7F" "ELF"
    constexpr std::uint16_t kDosMagic = 0x5A4D;      // "MZ"
    if (bytes.U32(0) == kElfMagic) {
        return ReadElfImage(bytes);
    }
    if (bytes.U16(0) == kDosMagic) {
        return ReadPeImage(bytes);
    }
    throw std::runtime_error(path + " is neither an ELF nor a PE file");
}

}  // namespace orl::test
