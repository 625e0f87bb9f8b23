#include "tools/orl_finger/finger_record.h"

#include <gtest/gtest.h>

#include "matcher/api/template_loading.h"

namespace orl::tools {
namespace {

FingerRecord smallRecord() {
    FingerRecord record;
    record.width = 388;
    record.height = 374;
    record.pixelsPerCm = 197;
    record.quality = 80;
    record.minutiae = {{2, 300, 40, 64, 90}, {1, 16383, 257, 255, 1}, {1, 5, 6, 0, 50}};
    return record;
}

TEST(FingerRecord, IsLaidOutAsTheStandardSays) {
    const std::vector<std::uint8_t> expected{
        'F',  'M',  'R',  0,    ' ', '2', '0', 0,  // format and version
        0,    0,    0,    48,                      // 24 + 4 + 3 * 6 + 2
        0,    0,                                   // capture equipment
        0x01, 0x84, 0x01, 0x76,                    // 388 x 374
        0,    197,  0,    197,                     // pixels per cm
        1,    0,                                   // one view
        0,    0,    80,   3,                       // position, view and type, quality, count
        0x81, 0x2C, 0x00, 0x28, 64,  90,           // bifurcation (2 << 6 = 0x80) at 300, 40
        0x7F, 0xFF, 0x01, 0x01, 255, 1,            // ending (1 << 6 = 0x40) at 0x3FFF, 257
        0x40, 0x05, 0x00, 0x06, 0,   50,           // ending at 5, 6
        0,    0};                                  // no extended data
    EXPECT_EQ(bytesFromRecord(smallRecord()), expected);
}

TEST(FingerRecord, IsReadBackByTheMatcher) {
    const std::vector<std::uint8_t> bytes = bytesFromRecord(smallRecord());
    matcher::FullLoadedTemplate loaded;
    std::string message;
    ASSERT_EQ(
        matcher::loadTemplateFromBuffer(bytes.data(), bytes.size(), "Probe", 2, 4, loaded, message),
        0)
        << message;
    EXPECT_EQ(loaded.imageSize, (matcher::ImageSize{388, 374}));
    ASSERT_EQ(loaded.fingers.size(), 1U);
    const std::vector<matcher::Minutia> expected{
        {2, 300, 40, 270}, {1, 16383, 257, 1}, {1, 5, 6, 360}};
    EXPECT_EQ(loaded.fingers[0].minutiae, expected);
}

TEST(FingerRecord, MayBeEmpty) {
    FingerRecord record = smallRecord();
    record.minutiae.clear();
    EXPECT_EQ(bytesFromRecord(record).size(), 30U);
}

}  // namespace
}  // namespace orl::tools
