#include "tests/support/record_builder.h"

#include <random>
#include <set>
#include <utility>

namespace orl::test {
namespace {

constexpr unsigned kBitsPerByte = 8;
constexpr std::size_t kLengthFieldOffset = 8;
constexpr std::size_t kLengthFieldBytes = 4;

void Put8(std::vector<std::uint8_t>& bytes, unsigned value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void Put16(std::vector<std::uint8_t>& bytes, unsigned value) {
    Put8(bytes, value >> kBitsPerByte);
    Put8(bytes, value);
}

void StoreLengthField(std::vector<std::uint8_t>& record, std::size_t length) {
    for (std::size_t i = 0; i < kLengthFieldBytes; ++i) {
        const std::size_t shift = kBitsPerByte * (kLengthFieldBytes - 1 - i);
        record.at(kLengthFieldOffset + i) = static_cast<std::uint8_t>(length >> shift);
    }
}

void PutMinutia(std::vector<std::uint8_t>& bytes, const RecordMinutia& minutia) {
    constexpr unsigned kTypeShift = 14;
    constexpr unsigned kCoordinateMask = 0x3FFF;
    Put16(bytes,
          (static_cast<unsigned>(minutia.type) << kTypeShift) | (minutia.x & kCoordinateMask));
    Put16(bytes, minutia.y & kCoordinateMask);
    Put8(bytes, minutia.angleByte);
    Put8(bytes, minutia.quality);
}

void PutView(std::vector<std::uint8_t>& bytes, const RecordView& view) {
    Put8(bytes, view.fingerPosition);
    Put8(bytes, view.viewAndImpression);
    Put8(bytes, view.fingerQuality);
    Put8(bytes, view.declaredMinutiae.value_or(static_cast<std::uint8_t>(view.minutiae.size())));
    for (const RecordMinutia& minutia : view.minutiae) {
        PutMinutia(bytes, minutia);
    }
    Put16(
        bytes,
        view.declaredExtendedBytes.value_or(static_cast<std::uint16_t>(view.extendedData.size())));
    bytes.insert(bytes.end(), view.extendedData.begin(), view.extendedData.end());
}

}  // namespace

std::vector<std::uint8_t> BuildRecord(const RecordContent& content) {
    std::vector<std::uint8_t> bytes = {
        'F', 'M', 'R', 0, ' ', '2', '0', 0, 0, 0, 0, 0};  // the length follows at the end
    Put16(bytes, content.captureEquipment);
    Put16(bytes, content.imageWidth);
    Put16(bytes, content.imageHeight);
    Put16(bytes, content.horizontalResolution);
    Put16(bytes, content.verticalResolution);
    Put8(bytes, content.declaredViews.value_or(static_cast<std::uint8_t>(content.views.size())));
    Put8(bytes, 0);
    for (const RecordView& view : content.views) {
        PutView(bytes, view);
    }
    StoreLengthField(bytes, content.declaredBytes ? *content.declaredBytes : bytes.size());
    return bytes;
}

std::vector<std::uint8_t> BuildRecord(const std::vector<RecordMinutia>& minutiae) {
    RecordContent content;
    content.views.push_back(RecordView{.minutiae = minutiae});
    return BuildRecord(content);
}

std::vector<RecordMinutia> RandomMinutiae(std::uint32_t seed,
                                          std::size_t count,
                                          std::uint16_t width,
                                          std::uint16_t height) {
    constexpr std::uint32_t kMarginPixels = 8;
    constexpr std::uint32_t kAngleBytes = 256;
    std::mt19937 random(seed);
    const auto below = [&random](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    std::set<std::pair<std::uint16_t, std::uint16_t>> taken;
    std::vector<RecordMinutia> minutiae;
    while (minutiae.size() < count) {
        const auto x = static_cast<std::uint16_t>(kMarginPixels + below(width - 2 * kMarginPixels));
        const auto y =
            static_cast<std::uint16_t>(kMarginPixels + below(height - 2 * kMarginPixels));
        const auto angleByte = static_cast<std::uint8_t>(below(kAngleBytes));
        const auto type = static_cast<std::uint8_t>(1 + below(2));
        if (taken.emplace(x, y).second) {
            minutiae.push_back({.type = type, .x = x, .y = y, .angleByte = angleByte});
        }
    }
    return minutiae;
}

void MendLengthField(std::vector<std::uint8_t>& record) {
    StoreLengthField(record, record.size());
}

}  // namespace orl::test
