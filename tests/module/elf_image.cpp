#include "tests/module/elf_image.h"

namespace orl::test {
namespace {

// Offsets of the fields read, as the ELF-64 object file format fixes them.
constexpr std::uint64_t kProgramHeaderOffset = 32;
constexpr std::uint64_t kSectionHeaderOffset = 40;
constexpr std::uint64_t kProgramHeaderSize = 56;
constexpr std::uint64_t kProgramHeaderCount = 56;  // field at 56 of the file header
constexpr std::uint64_t kSectionHeaderSize = 64;
constexpr std::uint64_t kSectionHeaderCount = 60;
constexpr std::uint64_t kSectionNameTable = 62;
constexpr std::uint32_t kProgramGnuStack = 0x6474E551;
constexpr std::uint32_t kSectionDynamic = 6;
constexpr std::uint32_t kSectionDynamicSymbols = 11;
constexpr std::uint64_t kDynamicEntrySize = 16;
constexpr std::uint64_t kDynamicNeeded = 1;
constexpr std::uint64_t kSymbolSize = 24;

struct Section {
    std::uint64_t header;
    std::uint32_t name, type, link;
    std::uint64_t flags, offset, size;
};

Section SectionAt(const ModuleBytes& bytes, std::uint64_t index) {
    const std::uint64_t at = bytes.U64(kSectionHeaderOffset) + index * kSectionHeaderSize;
    return {at,
            bytes.U32(at),
            bytes.U32(at + 4),
            bytes.U32(at + 40),
            bytes.U64(at + 8),
            bytes.U64(at + 24),
            bytes.U64(at + 32)};
}

void ReadDynamicSymbols(const ModuleBytes& bytes, const Section& section, ModuleImage& image) {
    const Section names = SectionAt(bytes, section.link);
    for (std::uint64_t at = section.offset + kSymbolSize; at < section.offset + section.size;
         at += kSymbolSize) {
        const bool isDefined = bytes.U16(at + 6) != 0;
        const bool isLocal = (bytes.Number(at + 4, 1) >> 4U) == 0;
        if (isDefined && !isLocal) {
            image.exports.push_back(bytes.Text(names.offset + bytes.U32(at)));
        }
    }
}

void ReadNeededLibraries(const ModuleBytes& bytes, const Section& section, ModuleImage& image) {
    const Section names = SectionAt(bytes, section.link);
    for (std::uint64_t at = section.offset; at < section.offset + section.size;
         at += kDynamicEntrySize) {
        if (bytes.U64(at) == kDynamicNeeded) {
            image.libraries.push_back(bytes.Text(names.offset + bytes.U64(at + 8)));
        }
    }
}

}  // namespace

ModuleImage ReadElfImage(const ModuleBytes& bytes) {
    constexpr std::uint64_t kFlagWrite = 1;
    constexpr std::uint64_t kFlagExecute = 4;
    ModuleImage image;
    const Section names = SectionAt(bytes, bytes.U16(kSectionNameTable));
    for (std::uint64_t i = 0; i < bytes.U16(kSectionHeaderCount); ++i) {
        const Section section = SectionAt(bytes, i);
        image.sections.push_back({bytes.Text(names.offset + section.name),
                                  (section.flags & kFlagWrite) != 0,
                                  (section.flags & kFlagExecute) != 0});
        if (section.type == kSectionDynamicSymbols) {
            ReadDynamicSymbols(bytes, section, image);
        } else if (section.type == kSectionDynamic) {
            ReadNeededLibraries(bytes, section, image);
        }
    }
    for (std::uint64_t i = 0; i < bytes.U16(kProgramHeaderCount); ++i) {
        const std::uint64_t at = bytes.U64(kProgramHeaderOffset) + i * kProgramHeaderSize;
        if (bytes.U32(at) == kProgramGnuStack) {
            image.hasExecutableStack = (bytes.U32(at + 4) & 1U) != 0;
        }
    }
    return image;
}

}  // namespace orl::test
