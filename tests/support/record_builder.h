#pragma once

// Builds the bytes of ISO/IEC 19794-2:2005 finger minutiae records for tests, sound ones by default
// and broken ones by overriding the fields that a record says about itself.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orl::test {

// One minutia as the record holds it. Values beyond a field's width keep their low bits.
struct RecordMinutia {
    std::uint8_t type = 1;       // 2 bits
    std::uint16_t x = 0;         // pixels, 14 bits
    std::uint16_t y = 0;         // pixels, 14 bits
    std::uint8_t angleByte = 0;  // 256 steps a turn
    std::uint8_t quality = 0;
};

struct RecordView {
    std::uint8_t fingerPosition = 0;
    std::uint8_t viewAndImpression = 0;
    std::uint8_t fingerQuality = 0;
    std::vector<RecordMinutia> minutiae = {};
    std::vector<std::uint8_t> extendedData = {};
    std::optional<std::uint8_t> declaredMinutiae = std::nullopt;        // else minutiae.size()
    std::optional<std::uint16_t> declaredExtendedBytes = std::nullopt;  // else extendedData.size()
};

struct RecordContent {
    std::uint16_t captureEquipment = 0;
    std::uint16_t imageWidth = 400;            // pixels
    std::uint16_t imageHeight = 400;           // pixels
    std::uint16_t horizontalResolution = 197;  // pixels per cm
    std::uint16_t verticalResolution = 197;    // pixels per cm
    std::vector<RecordView> views = {};
    std::optional<std::uint8_t> declaredViews = std::nullopt;   // else views.size()
    std::optional<std::uint32_t> declaredBytes = std::nullopt;  // else the record's length
};

std::vector<std::uint8_t> BuildRecord(const RecordContent& content);

// A sound record of one view of a 400 x 400 image with these minutiae.
std::vector<std::uint8_t> BuildRecord(const std::vector<RecordMinutia>& minutiae);

// `count` minutiae of types 1 and 2 at different places of a width x height image, none of them in
// the outermost 8 pixels. The same seed gives the same minutiae on every platform.
// REQUIRES: count is well below width * height.
std::vector<RecordMinutia> RandomMinutiae(std::uint32_t seed,
                                          std::size_t count,
                                          std::uint16_t width = 400,
                                          std::uint16_t height = 400);

// Overwrites the length field, bytes 8 to 11, with the record's length; for records that a test has
// cut or lengthened. REQUIRES: 12 bytes or more.
void MendLengthField(std::vector<std::uint8_t>& record);

}  // namespace orl::test
