// What orl-finger says of the shipped samples, against the lines kept in tests/golden. A change in
// any figure shows here; tests/golden/rewrite.sh writes the lines anew when it is meant.

#include <gtest/gtest.h>

#include "tests/support/file_text.h"
#include "tests/support/golden_lines.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

TEST(Golden, ToleratesTheLastBitsOfFloatsAndNothingElse) {
    EXPECT_TRUE(LinesAgree(R"({"a":[1,0.5]})", R"({"a":[1,0.500001]})"));
    EXPECT_TRUE(LinesAgree("[1]", "[1.000001]"));
    EXPECT_FALSE(LinesAgree("[0.5]", "[0.50001]"));
    EXPECT_FALSE(LinesAgree("[100000]", "[100001]"));
    EXPECT_FALSE(LinesAgree(R"({"a":1})", R"({"b":1})"));
    EXPECT_FALSE(LinesAgree("[true]", "[1]"));
    EXPECT_FALSE(LinesAgree("[1,2]", "[1]"));
    EXPECT_FALSE(LinesAgree("[]", "{}"));
}

TEST(Golden, TellsTheLinesThatDifferAndMissingOnes) {
    const std::string file = "tests/golden/match.jsonl";
    std::vector<std::string> lines = LinesOf(FileText(file));
    ASSERT_GT(lines.size(), 1U);
    EXPECT_EQ(DifferencesFromGolden(lines, file), "");
    lines[1] = "[]";
    EXPECT_EQ(DifferencesFromGolden(lines, file).find(file + ":2\n said []\n kept {"), 0U);
    lines.pop_back();
    EXPECT_NE(DifferencesFromGolden(lines, file), "");
    EXPECT_NE(DifferencesFromGolden({}, file), "");
}

TEST(Golden, MatchesOfSamplesAreAsKept) {
    const ProgramOutcome outcome =
        RunOrlFinger({"match", "--pairs", "tests/golden/match_pairs.tsv", "--json"});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(DifferencesFromGolden(LinesOf(outcome.out), "tests/golden/match.jsonl"), "");
}

TEST(Golden, InspectionsOfSamplesAreAsKept) {
    std::vector<std::string> arguments{"inspect", "--json"};
    for (const std::string& record : LinesOf(FileText("tests/golden/inspect_records.txt"))) {
        arguments.push_back(record);
    }
    const ProgramOutcome outcome = RunOrlFinger(arguments);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(DifferencesFromGolden(LinesOf(outcome.out), "tests/golden/inspect.jsonl"), "");
}

}  // namespace
}  // namespace orl::test
