#include "tests/module/pe_image.h"

#include <stdexcept>

namespace orl::test {
namespace {

constexpr std::uint64_t kPeHeaderPointer = 0x3C;
constexpr std::uint64_t kOptionalHeader = 24;  // from the "PE" signature
constexpr std::uint16_t kOptionalHeaderMagic64 = 0x20B;
constexpr std::uint64_t kDllCharacteristics = 70;  // from the optional header
constexpr std::uint64_t kDataDirectories = 112;
constexpr std::uint64_t kSectionHeaderSize = 40;
constexpr std::uint32_t kDirectoryExport = 0;
constexpr std::uint32_t kDirectoryImport = 1;
constexpr std::uint32_t kDirectoryResource = 2;
constexpr std::uint32_t kDirectoryRelocation = 5;
constexpr std::uint64_t kImportDescriptorSize = 20;
constexpr std::uint32_t kResourceTypeVersion = 16;

class PeReader {
  public:
    explicit PeReader(const ModuleBytes& bytes)
        : bytes_(bytes), header_(bytes.U32(kPeHeaderPointer)) {
        constexpr std::uint32_t kSignature = 0x4550;  // "PE\0\0"
        if (bytes.U32(header_) != kSignature ||
            bytes.U16(header_ + kOptionalHeader) != kOptionalHeaderMagic64) {
            throw std::runtime_error("not a 64-bit portable executable");
        }
    }

    ModuleImage Read() const {
        ModuleImage image;
        image.dllCharacteristics = bytes_.U16(header_ + kOptionalHeader + kDllCharacteristics);
        image.hasRelocations = Directory(kDirectoryRelocation) != 0;
        ReadSections(image);
        ReadExports(image);
        ReadImports(image);
        ReadResources(image);
        return image;
    }

  private:
    std::uint64_t Directory(std::uint32_t index) const {
        return bytes_.U32(header_ + kOptionalHeader + kDataDirectories + 8ULL * index);
    }
    std::uint64_t SectionHeader(std::uint32_t index) const {
        return header_ + kOptionalHeader + bytes_.U16(header_ + 20) + index * kSectionHeaderSize;
    }
    std::uint32_t SectionCount() const { return bytes_.U16(header_ + 6); }

    // File offset of a relative virtual address.
    std::uint64_t At(std::uint64_t address) const {
        for (std::uint32_t i = 0; i < SectionCount(); ++i) {
            const std::uint64_t section = SectionHeader(i);
            const std::uint64_t start = bytes_.U32(section + 12);
            if (address >= start && address < start + bytes_.U32(section + 16)) {
                return address - start + bytes_.U32(section + 20);
            }
        }
        throw std::runtime_error("an address lies in no section");
    }

    void ReadSections(ModuleImage& image) const {
        constexpr std::uint32_t kExecute = 0x20000000;
        constexpr std::uint32_t kWrite = 0x80000000;
        for (std::uint32_t i = 0; i < SectionCount(); ++i) {
            const std::uint32_t flags = bytes_.U32(SectionHeader(i) + 36);
            image.sections.push_back(
                {bytes_.Text(SectionHeader(i), 8), (flags & kWrite) != 0, (flags & kExecute) != 0});
        }
    }
    void ReadExports(ModuleImage& image) const {
        if (Directory(kDirectoryExport) == 0) {
            return;
        }
        const std::uint64_t table = At(Directory(kDirectoryExport));
        const std::uint64_t names = At(bytes_.U32(table + 32));
        // By ordinal: a function without a name would show as a difference of the two counts.
        for (std::uint32_t i = 0; i < bytes_.U32(table + 20); ++i) {
            image.exports.push_back(i < bytes_.U32(table + 24)
                                        ? bytes_.Text(At(bytes_.U32(names + 4ULL * i)))
                                        : std::string("(nameless)"));
        }
    }
    void ReadImports(ModuleImage& image) const {
        if (Directory(kDirectoryImport) == 0) {
            return;
        }
        for (std::uint64_t at = At(Directory(kDirectoryImport)); bytes_.U32(at + 12) != 0;
             at += kImportDescriptorSize) {
            image.libraries.push_back(bytes_.Text(At(bytes_.U32(at + 12))));
        }
    }
    void ReadResources(ModuleImage& image) const {
        if (Directory(kDirectoryResource) == 0) {
            return;
        }
        const std::uint64_t root = At(Directory(kDirectoryResource));
        const std::uint32_t entries = bytes_.U16(root + 12) + 0U + bytes_.U16(root + 14);
        for (std::uint32_t i = 0; i < entries; ++i) {
            if (bytes_.U32(root + 16 + 8ULL * i) == kResourceTypeVersion) {
                image.hasVersionResource = true;
            }
        }
    }

    const ModuleBytes& bytes_;
    std::uint64_t header_;
};

}  // namespace

ModuleImage ReadPeImage(const ModuleBytes& bytes) {
    return PeReader(bytes).Read();
}

}  // namespace orl::test
