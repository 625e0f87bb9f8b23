#include "tools/orl_finger/finger_record.h"

#include <cassert>
#include <limits>

namespace orl::tools {
namespace {

constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kViewHeaderBytes = 4;
constexpr std::size_t kMinutiaBytes = 6;
constexpr std::size_t kExtendedLengthBytes = 2;

void append16(std::vector<std::uint8_t>& bytes, std::size_t value) {
    constexpr int kByteBits = 8;
    bytes.push_back(static_cast<std::uint8_t>(value >> kByteBits));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void append32(std::vector<std::uint8_t>& bytes, std::size_t value) {
    constexpr int kHalfBits = 16;
    append16(bytes, value >> kHalfBits);
    append16(bytes, value);
}

void appendMinutia(std::vector<std::uint8_t>& bytes, const RecordMinutia& minutia) {
    constexpr int kPositionBits = 14;
    append16(bytes, (std::size_t{minutia.type} << kPositionBits) | minutia.x);
    append16(bytes, minutia.y);
    bytes.push_back(minutia.angle);
    bytes.push_back(minutia.quality);
}

}  // namespace

std::vector<std::uint8_t> bytesFromRecord(const FingerRecord& record) {
    constexpr std::uint8_t kUnknownPosition = 0;
    constexpr std::uint8_t kFirstViewLivePlain = 0;
    assert(record.minutiae.size() <= std::numeric_limits<std::uint8_t>::max());
    const std::size_t length = kHeaderBytes + kViewHeaderBytes +
                               kMinutiaBytes * record.minutiae.size() + kExtendedLengthBytes;
    std::vector<std::uint8_t> bytes{'F', 'M', 'R', 0, ' ', '2', '0', 0};
    append32(bytes, length);
    append16(bytes, 0);  // capture equipment: not told
    append16(bytes, record.width);
    append16(bytes, record.height);
    append16(bytes, record.pixelsPerCm);
    append16(bytes, record.pixelsPerCm);
    bytes.push_back(1);  // finger views
    bytes.push_back(0);  // reserved
    bytes.push_back(kUnknownPosition);
    bytes.push_back(kFirstViewLivePlain);
    bytes.push_back(record.quality);
    bytes.push_back(static_cast<std::uint8_t>(record.minutiae.size()));
    for (const RecordMinutia& minutia : record.minutiae) {
        appendMinutia(bytes, minutia);
    }
    append16(bytes, 0);  // no extended data
    return bytes;
}

}  // namespace orl::tools
