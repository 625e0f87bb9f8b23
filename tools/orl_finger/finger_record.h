#pragma once

// ISO/IEC 19794-2:2005 finger minutiae records with one finger view and no extended data.
//
//   bytes  0.. 3  "FMR", 0          22  number of views, 1     28+6i  type (2 bits), x (14 bits)
//          4.. 7  " 20", 0          23  reserved, 0            30+6i  reserved (2 bits), y (14
//          bits) 8..11  record length     24  finger position        32+6i  angle, 1.40625 degrees
//          a step
//         12..13  capture equipment 25  view 0, live plain     33+6i  minutia quality, 1..100
//         14..17  width, height     26  finger quality         then   extended data length, 0
//         18..21  pixels per cm     27  number of minutiae n
//
// Multi-byte fields are big-endian, so a record has 30 + 6n bytes.

#include <cstdint>
#include <vector>

namespace orl::tools {

struct RecordMinutia {
    std::uint8_t type = 0;     // 1 ridge ending, 2 ridge bifurcation
    std::uint16_t x = 0;       // pixels from the left edge, 0..16383
    std::uint16_t y = 0;       // pixels from the upper edge, 0..16383
    std::uint8_t angle = 0;    // 256 steps a turn, counter-clockwise
    std::uint8_t quality = 0;  // 1..100

    friend bool operator==(const RecordMinutia&, const RecordMinutia&) = default;
};

struct FingerRecord {
    std::uint16_t width = 0;  // pixels
    std::uint16_t height = 0;
    std::uint16_t pixelsPerCm = 0;
    std::uint8_t quality = 0;             // of the finger, 0..100
    std::vector<RecordMinutia> minutiae;  // at most 255
};

std::vector<std::uint8_t> bytesFromRecord(const FingerRecord& record);

}  // namespace orl::tools
