#pragma once

// ISO/IEC 19794-2:2005 finger minutiae records with one finger view and no extended data.
//
//   offset  size  field
//   0       4     "FMR" and a zero byte
//   4       4     " 20" and a zero byte
//   8       4     record length
//   12      2     capture equipment
//   14      4     image width and height, pixels
//   18      4     horizontal and vertical resolution, pixels per cm
//   22      1     number of finger views, 1
//   23      1     reserved, 0
//   24      1     finger position code
//   25      1     view 0, live plain
//   26      1     finger quality
//   27      1     number of minutiae, n
//   28+6i   2     type (2 bits), x (14 bits)
//   30+6i   2     reserved (2 bits), y (14 bits)
//   32+6i   1     angle, 1.40625 degrees a step
//   33+6i   1     minutia quality, 1..100
//   28+6n   2     extended data length, 0
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

// The record as a file has it: one view, no extended data. REQUIRES: at most 255 minutiae.
std::vector<std::uint8_t> bytesFromRecord(const FingerRecord& record);

}  // namespace orl::tools
