#include "matcher/api/finger_record.h"

#include <algorithm>
#include <array>
#include <span>

#include "matcher/api/record_reader.h"
#include "matcher/features/finger_features.h"

namespace orl::matcher {
namespace {

constexpr std::array<std::uint8_t, 8> kIdentifierAndVersion = {'F', 'M', 'R', 0, ' ', '2', '0', 0};
constexpr std::size_t kCaptureEquipmentBytes = 2;
constexpr std::size_t kResolutionBytes = 2;
constexpr std::size_t kReservedBytes = 1;
constexpr std::size_t kViewHeaderBytes = 4;
constexpr std::size_t kMinutiaCountOffset = 3;
constexpr std::size_t kBytesPerMinutia = 6;

struct RecordHeader {
    ImageSize imageSize;
    std::uint8_t viewCount = 0;           // byte 22
    std::uint8_t verticalResolution = 0;  // byte 20, the upper byte of two
};

// One finger view; both spans lie inside the record.
struct RecordView {
    std::span<const std::uint8_t> header;
    std::span<const std::uint8_t> minutiae;
};

// Reads the 24 header bytes. False when they are not those of a record of the reader's length.
bool readHeader(RecordReader& reader, RecordHeader& header) {
    const std::size_t recordBytes = reader.remaining();
    std::span<const std::uint8_t> identifier;
    std::uint32_t lengthField = 0;
    if (recordBytes < kRecordHeaderBytes ||
        !reader.readBytes(kIdentifierAndVersion.size(), identifier) ||
        !std::ranges::equal(identifier, kIdentifierAndVersion) || !reader.readUint32(lengthField) ||
        lengthField != recordBytes) {
        return false;
    }
    return reader.skip(kCaptureEquipmentBytes) && reader.readUint16(header.imageSize.width) &&
           reader.readUint16(header.imageSize.height) && reader.skip(kResolutionBytes) &&
           reader.readUint8(header.verticalResolution) && reader.skip(kResolutionBytes - 1) &&
           reader.readUint8(header.viewCount) && reader.skip(kReservedBytes);
}

// Reads one view up to the byte after its extended data; false when it runs past the record's end.
bool readView(RecordReader& reader, RecordView& view) {
    std::uint16_t extendedBytes = 0;
    return reader.readBytes(kViewHeaderBytes, view.header) &&
           reader.readBytes(view.header[kMinutiaCountOffset] * kBytesPerMinutia, view.minutiae) &&
           reader.readUint16(extendedBytes) && reader.skip(extendedBytes);
}

Minutia minutiaFromBytes(std::span<const std::uint8_t, kBytesPerMinutia> bytes) {
    constexpr unsigned kTypeShift = 6;
    constexpr unsigned kUpperCoordinateMask = 0x3F;
    const auto coordinate = [](unsigned upper, unsigned lower) {
        return static_cast<std::uint16_t>((upper & kUpperCoordinateMask) << 8U | lower);
    };
    return Minutia{.type = static_cast<std::uint32_t>(bytes[0] >> kTypeShift),
                   .x = coordinate(bytes[0], bytes[1]),
                   .y = coordinate(bytes[2], bytes[3]),
                   .angle = DegreesFromAngleByte(bytes[4])};
}

// Moves the reader past `viewCount` views; false when one runs past the record's end.
bool skipViews(RecordReader& reader, std::size_t viewCount) {
    for (std::size_t i = 0; i < viewCount; ++i) {
        RecordView view;
        if (!readView(reader, view)) {
            return false;
        }
    }
    return true;
}

// Appends the features of the next view; false when it has too few minutiae.
template <FeatureForm kForm>
bool loadView(RecordReader& reader, BasicLoadedTemplate<kForm>& loaded) {
    RecordView view;
    readView(reader, view);
    const std::size_t declared = view.minutiae.size() / kBytesPerMinutia;
    const std::size_t kept = std::min(declared, kMaxMinutiae);
    std::array<Minutia, kMaxMinutiae> minutiae;
    for (std::size_t i = 0; i < kept; ++i) {
        minutiae[i] =
            minutiaFromBytes(view.minutiae.subspan(i * kBytesPerMinutia).first<kBytesPerMinutia>());
    }
    return AppendFingerFeatures(
        loaded.fingers, loaded.imageSize, std::span<const Minutia>(minutiae).first(kept));
}

}  // namespace

template <FeatureForm kForm>
bool parseFingerRecord(BasicLoadedTemplate<kForm>& loaded,
                       const std::uint8_t* buffer,
                       std::size_t length) {
    if (buffer == nullptr || length > kMaxRecordBytes) {
        return false;
    }
    RecordReader reader({buffer, length});
    RecordHeader header;
    if (!readHeader(reader, header)) {
        return false;
    }
    loaded.imageSize = header.imageSize;
    // All views are read before the first one is built.
    RecordReader views = reader;
    if (!skipViews(reader, header.viewCount)) {
        return false;
    }
    // Without a side the image has no scale, so no finger can be placed on the matching grid.
    if (header.viewCount > 0 && header.imageSize == ImageSize{}) {
        return false;
    }
    loaded.fingers.reserve(loaded.fingers.size() + header.viewCount);
    for (std::size_t i = 0; i < header.viewCount; ++i) {
        if (!loadView(views, loaded)) {
            return false;
        }
    }
    return true;
}

template bool parseFingerRecord(LoadedTemplate&, const std::uint8_t*, std::size_t);
template bool parseFingerRecord(FullLoadedTemplate&, const std::uint8_t*, std::size_t);

bool scanFingerPositions(const std::uint8_t* buffer,
                         std::size_t length,
                         std::vector<std::uint8_t>& fingerPositions) {
    fingerPositions.clear();
    if (buffer == nullptr) {
        return false;
    }
    RecordReader reader({buffer, length});
    RecordHeader header;
    if (!readHeader(reader, header)) {
        return false;
    }
    // Deliberate: the scan counts views by byte 20, the upper byte of the vertical resolution, and
    // not by byte 22 as the parse does. Resolutions are rarely above 255, so most records yield no
    // position and finger positions do not take part in the decision.
    const std::uint8_t viewCount = header.verticalResolution;
    for (std::uint8_t i = 0; i < viewCount && reader.remaining() >= kViewHeaderBytes; ++i) {
        RecordView view;
        if (!readView(reader, view)) {
            fingerPositions.clear();
            return false;
        }
        fingerPositions.push_back(view.header[0]);
    }
    return true;
}

}  // namespace orl::matcher
