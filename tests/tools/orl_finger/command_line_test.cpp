#include <gmock/gmock.h>

#include "tests/support/file_text.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(OrlFinger, TellsItsVersion) {
    const ProgramOutcome outcome = RunOrlFinger({"--version"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.out, "orl-finger " ORL_VERSION "\n");
    EXPECT_EQ(outcome.err, "");
}

TEST(OrlFinger, ExplainsEveryCommand) {
    const ProgramOutcome outcome = RunOrlFinger({"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, HasSubstr("match"));
    EXPECT_THAT(outcome.out, HasSubstr("inspect"));
    EXPECT_THAT(outcome.out, HasSubstr("generate"));
    EXPECT_EQ(RunOrlFinger({"match", "--help"}).exitStatus, 0);
}

TEST(OrlFinger, EndsWithStatus2OnWrongUsage) {
    const struct {
        const char* why;
        std::vector<std::string> arguments;
    } cases[] = {
        {"no command", {}},
        {"unknown command", {"compare", kRecord, kRecord}},
        {"unknown command alone", {"compare"}},
        {"two commands", {"inspect", kRecord, "--json", "--version-of-what"}},
        {"match without records", {"match"}},
        {"match with one record", {"match", kRecord}},
        {"match with three records", {"match", kRecord, kRecord, kRecord}},
        {"pairs and records", {"match", "--pairs", "-", kRecord, kRecord}},
        {"pairs without a file", {"match", "--json", "--pairs"}},
        {"a threshold in words", {"match", kRecord, kRecord, "--threshold", "high"}},
        {"a threshold beyond 32 bits", {"match", kRecord, kRecord, "--threshold", "2147483648"}},
        {"an empty threshold", {"match", kRecord, kRecord, "--threshold", ""}},
        {"a threshold in base 16", {"match", kRecord, kRecord, "--threshold", "0x10"}},
        {"a threshold with a fraction", {"match", kRecord, kRecord, "--threshold", "300.0"}},
        {"a threshold and a space", {"match", kRecord, kRecord, "--threshold", "300 "}},
        {"an empty name for the pairs", {"match", "--pairs", ""}},
        {"inspect without records", {"inspect", "--json"}},
        {"unknown option", {"inspect", kRecord, "--colour"}},
        {"generate without a folder",
         {"generate", "--fingers", "1", "--impressions", "1", "--seed", "1"}},
        {"generate without a seed",
         {"generate", "never-made", "--fingers", "1", "--impressions", "1"}},
        {"no fingers",
         {"generate", "never-made", "--fingers", "0", "--impressions", "1", "--seed", "1"}},
        {"no impressions",
         {"generate", "never-made", "--fingers", "1", "--impressions", "0", "--seed", "1"}},
        {"a negative seed",
         {"generate", "never-made", "--fingers", "1", "--impressions", "1", "--seed", "-1"}},
        {"an empty seed",
         {"generate", "never-made", "--fingers", "1", "--impressions", "1", "--seed", ""}},
        {"a seed beyond 64 bits",
         {"generate",
          "never-made",
          "--fingers",
          "1",
          "--impressions",
          "1",
          "--seed",
          "18446744073709551616"}},
    };
    for (const auto& testCase : cases) {
        const ProgramOutcome outcome = RunOrlFinger(testCase.arguments);
        EXPECT_EQ(outcome.exitStatus, 2) << testCase.why;
        EXPECT_EQ(outcome.out, "") << testCase.why;
        EXPECT_THAT(outcome.err, StartsWith("orl-finger: ")) << testCase.why;
        EXPECT_EQ(LinesOf(outcome.err).size(), 1U) << testCase.why << ": " << outcome.err;
    }
}

TEST(OrlFinger, NamesACommandThatItDoesNotKnow) {
    EXPECT_THAT(RunOrlFinger({"compare"}).err, HasSubstr("compare"));
}

TEST(OrlFinger, ComplainsInOneLineWhateverANameHolds) {
    const std::string err = RunOrlFinger({"inspect", "no\nsuch\x1B[2Jfile"}).err;
    EXPECT_THAT(err, StartsWith("orl-finger: no?such?[2Jfile: "));
    EXPECT_EQ(LinesOf(err).size(), 1U);
    EXPECT_THAT(RunOrlFinger({"inspect", ""}).err, StartsWith("orl-finger: '': "));
}

#ifndef _WIN32
TEST(OrlFinger, EndsWithStatus1WhenWhatWasAskedCannotBeWritten) {
    for (const char* arguments : {"--help", "--version", "inspect samples/101_1.fmr --json"}) {
        const ProgramOutcome outcome = RunProgram(
            "/bin/sh", {"-c", std::string(ORL_FINGER_PROGRAM " ") + arguments + " >/dev/full"});
        EXPECT_EQ(outcome.exitStatus, 1) << arguments;
        EXPECT_EQ(outcome.err, "orl-finger: standard output: could not be written\n") << arguments;
    }
}
#endif

}  // namespace
}  // namespace orl::test
