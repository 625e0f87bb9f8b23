#include "platform/log_file_calls.h"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/environment_variable.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"

namespace orl::test {
namespace {

constexpr char kVariable[] = "ORL_TEST_VARIABLE (x)";

bool Exists(const std::string& utf8) {
    return std::filesystem::exists(std::u8string(utf8.begin(), utf8.end()));
}

TEST(ReadEnvironmentVariable, GivesTheValue) {
    const EnvironmentVariable variable(kVariable, "a value \xC3\xA4");
    std::array<char, 64> value;
    EXPECT_TRUE(platform::ReadEnvironmentVariable(kVariable, value));
    EXPECT_STREQ(value.data(), "a value \xC3\xA4");
}

TEST(ReadEnvironmentVariable, TellsAnUnsetOrEmptyVariable) {
    std::array<char, 64> value;
    {
        const EnvironmentVariable variable(kVariable, std::nullopt);
        EXPECT_FALSE(platform::ReadEnvironmentVariable(kVariable, value));
    }
    const EnvironmentVariable variable(kVariable, "");
    EXPECT_FALSE(platform::ReadEnvironmentVariable(kVariable, value));
}

TEST(ReadEnvironmentVariable, NeedsRoomForTheValueAndItsEnd) {
    const EnvironmentVariable variable(kVariable, "12345");
    std::array<char, 5> tooSmall;
    EXPECT_FALSE(platform::ReadEnvironmentVariable(kVariable, tooSmall));
    std::array<char, 6> exact;
    EXPECT_TRUE(platform::ReadEnvironmentVariable(kVariable, exact));
    EXPECT_STREQ(exact.data(), "12345");
}

TEST(CreateFolder, MakesOneFolderAndAcceptsThatItExists) {
    const ScratchFolder scratch;
    const std::string folder = scratch.PathOf("folder \xC3\xA4");
    platform::CreateFolder(folder.c_str());
    EXPECT_TRUE(Exists(folder));
    platform::CreateFolder(folder.c_str());
    EXPECT_TRUE(Exists(folder));
}

TEST(CreateFolder, MakesNoFoldersInBetween) {
    const ScratchFolder scratch;
    const std::string inner = scratch.PathOf("missing") + platform::kPathSeparator + "inner";
    platform::CreateFolder(inner.c_str());
    EXPECT_FALSE(Exists(inner));
}

TEST(AppendOnlyFile, AppendsToWhatIsThereByteForByte) {
    const ScratchFolder scratch;
    const std::string path = scratch.Write("file \xC3\xA4", BytesOf("one\r\n"));
    {
        platform::AppendOnlyFile file;
        EXPECT_FALSE(file.IsOpen());
        file.Open(path.c_str());
        ASSERT_TRUE(file.IsOpen());
        file.Append(std::string_view("two\n"));
        file.Append(std::string_view("three\0", 6));
    }
    EXPECT_EQ(FileText(path), std::string("one\r\ntwo\nthree\0", 15));
}

TEST(AppendOnlyFile, LetsTwoWritersAppendInTurn) {
    const ScratchFolder scratch;
    const std::string path = scratch.PathOf("file");
    platform::AppendOnlyFile first;
    platform::AppendOnlyFile second;
    first.Open(path.c_str());
    second.Open(path.c_str());
    first.Append(std::string_view("a"));
    second.Append(std::string_view("b"));
    first.Append(std::string_view("c"));
    EXPECT_EQ(FileText(path), "abc");
}

TEST(AppendOnlyFile, StaysClosedWhenTheFolderIsMissingAndIgnoresWrites) {
    const ScratchFolder scratch;
    platform::AppendOnlyFile file;
    const std::string path = scratch.PathOf("missing") + platform::kPathSeparator + "file";
    file.Open(path.c_str());
    EXPECT_FALSE(file.IsOpen());
    file.Append(std::string_view("lost"));
    EXPECT_FALSE(Exists(path));
}

TEST(CurrentLocalTime, HasFieldsInTheirRanges) {
    const platform::LocalTime now = platform::CurrentLocalTime();
    EXPECT_GE(now.year, 2024);
    EXPECT_TRUE(now.month >= 1 && now.month <= 12) << now.month;
    EXPECT_TRUE(now.day >= 1 && now.day <= 31) << now.day;
    EXPECT_TRUE(now.hour >= 0 && now.hour <= 23) << now.hour;
    EXPECT_TRUE(now.minute >= 0 && now.minute <= 59) << now.minute;
    EXPECT_TRUE(now.second >= 0 && now.second <= 60) << now.second;
    EXPECT_TRUE(now.millisecond >= 0 && now.millisecond <= 999) << now.millisecond;
}

}  // namespace
}  // namespace orl::test
