#include "matcher/api/record_reader.h"

#include <array>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

constexpr std::array<std::uint8_t, 7> kBytes = {0x01, 0x82, 0x03, 0x84, 0x05, 0x86, 0x07};

TEST(RecordReader, ReadsBigEndianFieldsOneAfterAnother) {
    RecordReader reader(kBytes);
    std::uint32_t four = 0;
    std::uint16_t two = 0;
    std::uint8_t one = 0;
    EXPECT_TRUE(reader.readUint32(four));
    EXPECT_TRUE(reader.readUint16(two));
    EXPECT_TRUE(reader.readUint8(one));
    EXPECT_EQ(four, 0x01820384U);
    EXPECT_EQ(two, 0x0586U);
    EXPECT_EQ(one, 0x07U);
    EXPECT_EQ(reader.remaining(), 0U);
}

TEST(RecordReader, TakesBytesAsTheyStand) {
    RecordReader reader(kBytes);
    std::span<const std::uint8_t> bytes;
    EXPECT_TRUE(reader.skip(2));
    EXPECT_TRUE(reader.readBytes(3, bytes));
    EXPECT_EQ(bytes.data(), kBytes.data() + 2);
    EXPECT_EQ(bytes.size(), 3U);
    EXPECT_EQ(reader.remaining(), 2U);
}

TEST(RecordReader, LeavesCursorAndOutputAloneWhenAReadWouldPassTheEnd) {
    RecordReader reader({kBytes.data(), 1});
    std::uint32_t four = 41;
    std::uint16_t two = 42;
    std::span<const std::uint8_t> bytes;
    EXPECT_FALSE(reader.readUint32(four));
    EXPECT_FALSE(reader.readUint16(two));
    EXPECT_FALSE(reader.readBytes(2, bytes));
    EXPECT_FALSE(reader.skip(2));
    EXPECT_FALSE(reader.skip(static_cast<std::size_t>(-1)));
    EXPECT_EQ(four, 41U);
    EXPECT_EQ(two, 42U);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(reader.remaining(), 1U);
}

TEST(RecordReader, ReadsNothingFromAnEmptyRecordButNothing) {
    RecordReader reader({});
    std::uint8_t one = 43;
    std::span<const std::uint8_t> bytes;
    EXPECT_FALSE(reader.readUint8(one));
    EXPECT_EQ(one, 43U);
    EXPECT_TRUE(reader.skip(0));
    EXPECT_TRUE(reader.readBytes(0, bytes));
}

}  // namespace
}  // namespace orl::matcher
