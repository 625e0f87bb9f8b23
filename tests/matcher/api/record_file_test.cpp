#include "matcher/api/record_file.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"

namespace orl::matcher {
namespace {

using orl::test::ScratchFolder;
using Bytes = std::vector<std::uint8_t>;

TEST(ReadRecordFile, ReadsAFileThatFillsTheBufferToItsLastByte) {
    const ScratchFolder folder;
    const Bytes bytes = {0, 10, 13, 26, 255};
    Bytes buffer(5);
    EXPECT_EQ(readRecordFile(folder.Write("five", bytes), buffer), 5U);
    EXPECT_EQ(buffer, bytes);
}

TEST(ReadRecordFile, LeavesTheRestOfALongerBufferAlone) {
    const ScratchFolder folder;
    Bytes buffer(7, 99);
    EXPECT_EQ(readRecordFile(folder.Write("five", Bytes{1, 2, 3, 4, 5}), buffer), 5U);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, 4, 5, 99, 99}));
}

TEST(ReadRecordFile, RefusesAFileOneByteLongerThanTheBuffer) {
    const ScratchFolder folder;
    Bytes buffer(5);
    EXPECT_EQ(readRecordFile(folder.Write("six", Bytes(6, 1)), buffer), std::nullopt);
}

TEST(ReadRecordFile, ReadsAnEmptyFileAsNoBytes) {
    const ScratchFolder folder;
    Bytes buffer(5);
    EXPECT_EQ(readRecordFile(folder.Write("empty", {}), buffer), 0U);
}

TEST(ReadRecordFile, RefusesAMissingFileAndAFolder) {
    const ScratchFolder folder;
    Bytes buffer(5);
    EXPECT_EQ(readRecordFile(folder.PathOf("missing"), buffer), std::nullopt);
    EXPECT_EQ(readRecordFile(folder.PathOf("."), buffer), std::nullopt);
}

}  // namespace
}  // namespace orl::matcher
