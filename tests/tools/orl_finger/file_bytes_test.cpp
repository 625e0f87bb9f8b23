#include "tools/orl_finger/file_bytes.h"

#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"

namespace orl::tools {
namespace {

using test::ScratchFolder;

std::vector<std::uint8_t> patternOfLength(std::size_t length) {
    std::vector<std::uint8_t> bytes(length);
    for (std::size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    }
    return bytes;
}

TEST(FileBytes, ReadsBackWhatItWroteWhateverTheLength) {
    const ScratchFolder folder;
    for (const std::size_t length : {0U, 1U, 6200U, 65535U, 65536U, 65537U, 200000U}) {
        const std::string name = folder.PathOf("bytes");
        const std::vector<std::uint8_t> written = patternOfLength(length);
        std::string reason;
        ASSERT_TRUE(writeFile(name, written, reason)) << reason;
        std::vector<std::uint8_t> read{1, 2, 3};
        ASSERT_TRUE(readFile(name, read, reason)) << reason;
        EXPECT_EQ(read, written) << length;
    }
}

TEST(FileBytes, ChangesNoLineEnds) {
    const ScratchFolder folder;
    const std::vector<std::uint8_t> written{'\n', '\r', '\n', 0x1A, 'x'};  // 0x1A ends a DOS text
    std::string reason;
    ASSERT_TRUE(writeFile(folder.PathOf("lines"), written, reason));
    std::vector<std::uint8_t> read;
    ASSERT_TRUE(readFile(folder.PathOf("lines"), read, reason));
    EXPECT_EQ(read, written);
}

TEST(FileBytes, TakesNamesAsUtf8) {
    const ScratchFolder folder;
    const std::string name = folder.Write("f\xC3\xBCnf_\xE6\x8C\x87.fmr", patternOfLength(5));
    std::vector<std::uint8_t> read;
    std::string reason;
    ASSERT_TRUE(readFile(name, read, reason)) << reason;
    EXPECT_EQ(read, patternOfLength(5));
}

TEST(FileBytes, TellsWhyAFileCannotBeRead) {
    const ScratchFolder folder;
    std::vector<std::uint8_t> bytes;
    std::string reason;
    EXPECT_FALSE(readFile(folder.PathOf("missing"), bytes, reason));
    EXPECT_EQ(reason, "No such file or directory");
    EXPECT_FALSE(readFile(folder.PathOf("."), bytes, reason));
    EXPECT_EQ(reason, "is a directory");
    EXPECT_FALSE(readFile("", bytes, reason));
}

TEST(FileBytes, ReadsAFileAsLongAsTheLargestRecordAndNoLongerOne) {
    const ScratchFolder folder;
    std::vector<std::uint8_t> bytes;
    std::string reason;
    EXPECT_TRUE(
        readFile(folder.Write("most", std::vector<std::uint8_t>(kMaxFileBytes)), bytes, reason));
    EXPECT_EQ(bytes.size(), kMaxFileBytes);
    EXPECT_FALSE(readFile(
        folder.Write("more", std::vector<std::uint8_t>(kMaxFileBytes + 1)), bytes, reason));
    EXPECT_EQ(reason, "is longer than any record");
}

TEST(FileBytes, TellsWhyAFileCannotBeWritten) {
    const ScratchFolder folder;
    std::string reason;
    EXPECT_FALSE(writeFile(folder.PathOf("no/such/folder"), patternOfLength(3), reason));
    EXPECT_FALSE(reason.empty());
    EXPECT_FALSE(writeFile(folder.PathOf("."), patternOfLength(3), reason));
    EXPECT_EQ(reason, "is a directory");
}

}  // namespace
}  // namespace orl::tools
