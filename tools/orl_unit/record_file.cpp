#include "tools/orl_unit/record_file.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <system_error>

#include "tools/command_line/utf8_path.h"
#include "tools/orl_unit/command_error.h"

namespace orl::unit {
namespace {

// Layout of a record: header of 24 bytes, then views of a 4-byte header, the minutiae and a 2-byte
// length of extended data.
constexpr std::array<std::uint8_t, 8> kMagicAndVersion = {'F', 'M', 'R', 0, ' ', '2', '0', 0};
constexpr std::size_t kLengthOffset = 8;
constexpr std::size_t kWidthOffset = 14;
constexpr std::size_t kHeightOffset = 16;
constexpr std::size_t kViewCountOffset = 22;
constexpr std::size_t kRecordHeaderBytes = 24;
constexpr std::size_t kViewHeaderBytes = 4;
constexpr std::size_t kViewQualityOffset = 2;
constexpr std::size_t kViewMinutiaCountOffset = 3;
constexpr std::size_t kMinutiaBytes = 6;
constexpr std::size_t kExtendedLengthBytes = 2;

std::size_t bigEndian(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t width) {
    std::size_t value = 0;
    for (const std::uint8_t byte : bytes.subspan(offset, width)) {
        value = value << 8U | byte;
    }
    return value;
}

// Steps over one view. Returns the offset behind it, or nothing when it passes the record's end.
std::optional<std::size_t> endOfView(std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (bytes.size() - offset < kViewHeaderBytes) {
        return std::nullopt;
    }
    const std::size_t minutiaBytes = bytes[offset + kViewMinutiaCountOffset] * kMinutiaBytes;
    offset += kViewHeaderBytes;
    if (bytes.size() - offset < minutiaBytes + kExtendedLengthBytes) {
        return std::nullopt;
    }
    offset += minutiaBytes;
    const std::size_t extendedBytes = bigEndian(bytes, offset, kExtendedLengthBytes);
    offset += kExtendedLengthBytes;
    if (bytes.size() - offset < extendedBytes) {
        return std::nullopt;
    }
    return offset + extendedBytes;
}

std::optional<std::string> headerDefect(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kRecordHeaderBytes) {
        return "is too short (" + std::to_string(bytes.size()) + " bytes)";
    }
    if (bytes.size() > kMaxRecordBytes) {
        return "is longer than " + std::to_string(kMaxRecordBytes) + " bytes";
    }
    if (!std::equal(kMagicAndVersion.begin(), kMagicAndVersion.end(), bytes.begin())) {
        return "is not a finger minutiae record of version 20";
    }
    if (bigEndian(bytes, kLengthOffset, 4) != bytes.size()) {
        return "says it has " + std::to_string(bigEndian(bytes, kLengthOffset, 4)) +
               " bytes, but has " + std::to_string(bytes.size());
    }
    if (bytes[kViewCountOffset] == 0) {
        return "holds no finger view";
    }
    if (bigEndian(bytes, kWidthOffset, 2) == 0 && bigEndian(bytes, kHeightOffset, 2) == 0) {
        return "has an image size of 0 x 0";
    }
    return std::nullopt;
}

SecretBytes readWholeFile(const std::filesystem::path& path) {
    std::error_code failure;
    if (std::filesystem::is_directory(path, failure)) {
        throw CommandError("record " + inQuotes(tools::utf8FromPath(path)) + " is a directory");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw CommandError("record " + inQuotes(tools::utf8FromPath(path)) + " cannot be opened");
    }
    // One byte more than the largest record tells a longer file apart without reading it whole.
    SecretBytes bytes(kMaxRecordBytes + 1);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (file.bad()) {
        throw CommandError("record " + inQuotes(tools::utf8FromPath(path)) + " cannot be read");
    }
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace

std::optional<std::string> recordDefect(std::span<const std::uint8_t> bytes) {
    if (auto defect = headerDefect(bytes)) {
        return defect;
    }
    std::optional<std::size_t> offset = kRecordHeaderBytes;
    for (std::size_t view = 0; view < bytes[kViewCountOffset]; ++view) {
        offset = endOfView(bytes, *offset);
        if (!offset) {
            return "is cut off inside finger view " + std::to_string(view + 1);
        }
    }
    const std::size_t minutiaCount = bytes[kRecordHeaderBytes + kViewMinutiaCountOffset];
    if (minutiaCount < kMinMinutiae) {
        return "has too few minutiae to compare (" + std::to_string(minutiaCount) + ", at least " +
               std::to_string(kMinMinutiae) + " are needed)";
    }
    if (bytes.size() != kRecordHeaderBytes + kViewHeaderBytes + minutiaCount * kMinutiaBytes +
                            kExtendedLengthBytes) {
        return "holds more than one finger view or extended data, which the engine does not "
               "compare";
    }
    return std::nullopt;
}

FingerRecord readRecordFile(const std::filesystem::path& path) {
    FingerRecord record;
    record.bytes = readWholeFile(path);
    if (const auto defect = recordDefect(record.bytes)) {
        throw CommandError("record " + inQuotes(tools::utf8FromPath(path)) + " " + *defect);
    }
    record.fingerPosition = record.bytes[kRecordHeaderBytes];
    record.quality = record.bytes[kRecordHeaderBytes + kViewQualityOffset];
    record.minutiaCount = record.bytes[kRecordHeaderBytes + kViewMinutiaCountOffset];
    return record;
}

}  // namespace orl::unit
