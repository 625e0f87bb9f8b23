#include "tools/command_line/text_lines.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/scratch_folder.h"

namespace orl::tools {
namespace {

using test::ScratchFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class TextLinesTest : public testing::Test {
  protected:
    std::string fileOf(const std::string& text) const {
        return folder_.Write("list", std::vector<std::uint8_t>(text.begin(), text.end()));
    }

    static std::vector<std::string> linesOf(TextLines& lines) {
        std::vector<std::string> all;
        for (std::string line; lines.next(line);) {
            all.push_back(line);
            EXPECT_EQ(lines.number(), all.size());
        }
        return all;
    }

    ScratchFolder folder_;
};

TEST_F(TextLinesTest, EndWithANewlineAndMayHaveACarriageReturnBeforeIt) {
    TextLines lines(fileOf("a\r\n\nb\rc\n"));
    EXPECT_THAT(linesOf(lines), ElementsAre("a", "", "b\rc"));
    EXPECT_EQ(lines.failure(), "");
}

TEST_F(TextLinesTest, CountALastOneWithoutAnEnd) {
    TextLines lines(fileOf("a\nb"));
    EXPECT_THAT(linesOf(lines), ElementsAre("a", "b"));
    EXPECT_EQ(lines.failure(), "");
}

TEST_F(TextLinesTest, AreNoneInAnEmptyFile) {
    TextLines lines(fileOf(""));
    EXPECT_THAT(linesOf(lines), IsEmpty());
    EXPECT_EQ(lines.failure(), "");
}

TEST_F(TextLinesTest, HaveAGreatestLength) {
    const std::string longest(TextLines::kMaxLineBytes, 'x');
    TextLines lines(fileOf(longest + "\n" + longest + "y\n"));
    EXPECT_THAT(linesOf(lines), ElementsAre(longest));
    EXPECT_EQ(lines.failure(), "line 2 is longer than 65536 bytes");
}

TEST_F(TextLinesTest, TellWhyTheFileCannotBeRead) {
    TextLines missing(folder_.PathOf("missing"));
    EXPECT_THAT(linesOf(missing), IsEmpty());
    EXPECT_EQ(missing.failure(), "No such file or directory");
    TextLines folder(folder_.PathOf("."));
    EXPECT_THAT(linesOf(folder), IsEmpty());
    EXPECT_EQ(folder.failure(), "is a directory");
    EXPECT_EQ(TextLines("-").name(), "standard input");
}

}  // namespace
}  // namespace orl::tools
