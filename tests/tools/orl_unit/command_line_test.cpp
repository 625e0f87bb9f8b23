// orl-unit as a program, on every platform: usage, exit status, messages, and the demonstration.

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_unit/unit_program.h"

namespace orl::test {
namespace {

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

// One line, which names the program.
void expectOneComplaint(const ProgramOutcome& outcome, const std::string& part) {
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find("orl-unit: "), 0U) << outcome.err;
    EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

TEST(OrlUnit, HelpAndVersionEndWell) {
    for (const char* command : {"enroll", "verify", "identify", "list", "delete", "demo"}) {
        const ProgramOutcome help = RunOrlUnit({command, "--help"});
        EXPECT_EQ(help.exitStatus, 0) << command;
        EXPECT_NE(RunOrlUnit({"--help"}).out.find(command), std::string::npos) << command;
    }
    EXPECT_EQ(RunOrlUnit({"--version"}).out, "orl-unit " ORL_VERSION "\n");
}

TEST(OrlUnit, WrongUsageEndsWithTwo) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"conquer"},
        {"conquer", "alice"},
        {"verify"},
        {"verify", "alice", "right-index"},
        {"enroll", "alice", "right-index"},
        {"enroll", "--list", "a", "alice", "right-index", "x.fmr"},
        {"identify"},
        {"identify", "a.fmr", "b.fmr"},
        {"list", "extra"},
        {"delete"},
        {"delete", "alice", "--all"},
        {"demo", "--impostors", "many"},
        {"demo", "--impostors", ""},
        {"demo", "--impostors", "-1"},
        {"demo", "--impostors", "18446744073709551616"},
        {"demo", "--data", ""},
        {"list", "--store", ""},
        {"list", "--wait", "-1"},
        {"list", "--wait", "nan"},
        {"list", "--wait", ""},
        {"list", "--wait", "86401"},
        {"list", "--wait", "1 s"},
        {"list", "--unknown"},
    };
    for (const auto& arguments : wrong) {
        const ProgramOutcome outcome = RunOrlUnit(arguments);
        EXPECT_EQ(outcome.exitStatus, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.err.find("orl-unit: "), 0U) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(outcome.out, "") << testing::PrintToString(arguments);
    }
}

TEST(OrlUnit, NamesACommandThatItDoesNotKnow) {
    EXPECT_NE(RunOrlUnit({"conquer"}).err.find("conquer"), std::string::npos);
}

TEST(OrlUnit, WaitsForAnyNumberOfSecondsUpToADay) {
    for (const char* seconds : {"0", "0.25", "86400"}) {
        expectOneComplaint(RunOrlUnit({"list", "--store", ":memory:", "--wait", seconds}),
                           "store ':memory:' does not exist");  // so the number was taken
    }
}

#ifndef _WIN32
TEST(OrlUnit, EndsWithStatus1WhenWhatWasAskedCannotBeWritten) {
    for (const char* arguments : {"--help", "--version"}) {
        const ProgramOutcome outcome = RunProgram(
            "/bin/sh", {"-c", std::string(ORL_UNIT_PROGRAM " ") + arguments + " >/dev/full"});
        expectOneComplaint(outcome, "standard output could not be written");
    }
}

TEST(OrlUnit, StopsEnrollingAListWhenNoEnrollmentCanBeTold) {
    const ProgramOutcome outcome =
        RunProgram("/bin/sh",
                   {"-c",
                    ORL_UNIT_PROGRAM " --store :memory: enroll --allow-duplicate --list - "
                                     ">/dev/full"},
                   "alice\tright-index\tsamples/101_1.fmr\nbob\tright-index\tsamples/102_1.fmr\n");
    expectOneComplaint(outcome, "standard output could not be written");
}

TEST(OrlUnit, AListThatCannotBeReadIsNoEmptyOne) {
    for (const char* input : {"<.", "<&-"}) {
        const ProgramOutcome outcome = RunProgram(
            "/bin/sh",
            {"-c", std::string(ORL_UNIT_PROGRAM " --store :memory: enroll --list - ") + input});
        expectOneComplaint(outcome, "list 'standard input': ");
    }
}
#endif

TEST(OrlUnit, AListThatIsAFolderIsTold) {
    expectOneComplaint(RunOrlUnit({"--store", ":memory:", "enroll", "--list", "samples"}),
                       "list 'samples': is a directory");
}

TEST(OrlUnit, TheDemonstrationCountsEveryOutcome) {
    const ProgramOutcome outcome = RunOrlUnit({"demo", "--data", "samples", "--json"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const auto json = nlohmann::json::parse(outcome.out);
    // 10 fingers x 4 impressions: 10 enrolled, 30 further ones, each against 9 other fingers.
    EXPECT_EQ(json["fingers"], 10);
    EXPECT_EQ(json["impressions"], 40);
    EXPECT_EQ(json["enroll"]["samples"], 10);
    EXPECT_EQ(json["enroll"]["comparisons"], 10 * 9 / 2);
    EXPECT_EQ(json["verifyGenuine"]["samples"], 30);
    EXPECT_EQ(json["verifyImpostor"]["samples"], 270);
    EXPECT_EQ(json["impostorPairs"], 270);
    EXPECT_EQ(json["identify"]["samples"], 30);
    // Most genuine impressions are accepted and hardly an impostor.
    EXPECT_GE(json["verifyGenuine"]["accepted"], 20);
    EXPECT_LE(json["verifyImpostor"]["accepted"], 2);
    EXPECT_GE(json["identify"]["right"], 20);
    EXPECT_GT(json["millisecondsPerComparison"], 0.0);
    EXPECT_EQ(json["unusable"].size(), 0U);
}

TEST(OrlUnit, TheDemonstrationFindsItsSamplesAndPrintsATable) {
    const ProgramOutcome outcome = RunOrlUnit({"demo", "--impostors", "7"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("10 fingers, 40 impressions"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\nVerify, impostor        7 "), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Impostor samples are 7 evenly spread of 270 pairs."),
              std::string::npos);
}

TEST(OrlUnit, TheDemonstrationGoesOnBesideUnusableAndDuplicateRecords) {
    const ScratchFolder folder;
    const auto record = BuildRecord(RandomMinutiae(5, 40));
    folder.Write("a_1.fmr", record);
    folder.Write("a_2.fmr", record);
    folder.Write("b_1.fmr", record);  // the same finger under another name
    folder.Write("c_1.fmr", BuildRecord(RandomMinutiae(6, 2)));
    folder.Write("d_1.fmr", std::vector<std::uint8_t>{1, 2, 3});
    const ProgramOutcome outcome = RunOrlUnit({"demo", "--data", folder.PathOf("."), "--json"});
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["enroll"]["accepted"], 1);
    EXPECT_EQ(json["enroll"]["rejected"], 1);
    EXPECT_EQ(json["duplicates"][0]["record"], "b_1.fmr");
    EXPECT_EQ(json["duplicates"][0]["duplicateOf"], "a");
    EXPECT_EQ(json["unusable"].size(), 2U);
    EXPECT_EQ(json["verifyGenuine"]["accepted"], 1);
    EXPECT_EQ(json["verifyImpostor"]["samples"], 0);
}

TEST(OrlUnit, TheDemonstrationOfAFolderWithoutRecordsFails) {
    const ScratchFolder folder;
    expectOneComplaint(RunOrlUnit({"demo", "--data", folder.PathOf(".")}),
                       "holds no usable record");
    expectOneComplaint(RunOrlUnit({"demo", "--data", folder.PathOf("missing")}), "cannot be read");
}

TEST(OrlUnit, AWrongModuleIsTold) {
    const ScratchFolder folder;
    const std::string text = folder.Write("text.so", std::vector<std::uint8_t>{'x'});
    expectOneComplaint(RunOrlUnit({"--module", text, "--store", ":memory:", "list"}),
                       "cannot be loaded");
    expectOneComplaint(
        RunOrlUnit({"--module", folder.PathOf("no.so"), "--store", ":memory:", "list"}),
        "does not exist");
    expectOneComplaint(RunOrlUnit({"--module", ORL_OTHER_MODULE, "--store", ":memory:", "list"}),
                       "is no engine adapter");
}

TEST(OrlUnit, ABadRecordIsTold) {
    const ScratchFolder folder;
    const std::string bad = folder.Write("bad.fmr", std::vector<std::uint8_t>(50));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"enroll", "alice", "right-index", bad},
          {"verify", "alice", "right-index", bad},
          {"identify", bad}}) {
        std::vector<std::string> all = {"--store", ":memory:"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        expectOneComplaint(RunOrlUnit(all), "is not a finger minutiae record of version 20");
    }
}

TEST(OrlUnit, AWrongFingerOrNameIsTold) {
    const std::string record = SampleRecord("101_1");
    expectOneComplaint(RunOrlUnit({"--store", ":memory:", "enroll", "alice", "pinky", record}),
                       "unknown finger 'pinky'; known are right-thumb, ");
    EXPECT_EQ(
        RunOrlUnit({"--store", ":memory:", "enroll", "alice", "pinky", record}).err.find(", any\n"),
        std::string::npos);
    EXPECT_NE(
        RunOrlUnit({"--store", ":memory:", "verify", "alice", "pinky", record}).err.find(", any\n"),
        std::string::npos);
    expectOneComplaint(RunOrlUnit({"--store", ":memory:", "enroll", "alice", "any", record}),
                       "enrolled under its own name");
    expectOneComplaint(RunOrlUnit({"--store", ":memory:", "enroll", "a\nb", "left-thumb", record}),
                       "the name 'a?b' holds a control character");
}

TEST(OrlUnit, EnrollsIntoMemoryForAsLongAsItRuns) {
    const ProgramOutcome outcome = RunOrlUnit(
        {"enroll", "--store", ":memory:", "alice", "Right-Index", SampleRecord("101_1")});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "enrolled alice right-index\n");
}

TEST(OrlUnit, AListIsEnrolledLineByLine) {
    const std::string list = "alice\tright-index\t" + SampleRecord("101_1") +
                             "\n"
                             "\n"
                             "no tabs here\n"
                             "bob\tright-index\tmissing.fmr\n"
                             "bob\tpinky\t" +
                             SampleRecord("102_1") +
                             "\n"
                             "alice\tright-index\t" +
                             SampleRecord("102_1") +
                             "\r\n"
                             "carol\tleft-thumb\t" +
                             SampleRecord("103_1") + "\r\n";
    const ProgramOutcome outcome =
        RunOrlUnit({"--store", ":memory:", "enroll", "--list", "-"}, list);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "enrolled alice right-index\nenrolled carol left-thumb\n");
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 4) << outcome.err;
    EXPECT_EQ(firstLine(outcome.err),
              "orl-unit: line 3 of the list is not NAME<TAB>FINGER<TAB>RECORD");
}

TEST(OrlUnit, AMissingListIsTold) {
    expectOneComplaint(RunOrlUnit({"--store", ":memory:", "enroll", "--list", "missing.tsv"}),
                       "list 'missing.tsv': No such file or directory");
}

#ifdef _WIN32
TEST(OrlUnit, AListGoesOnAfterANameThatIsNotUtf8) {
    const std::string list =
        "alice\tright-index\t\xFF.fmr\nbob\tleft-thumb\t" + SampleRecord("103_1") + "\n";
    const ProgramOutcome outcome =
        RunOrlUnit({"--store", ":memory:", "enroll", "--list", "-"}, list);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "enrolled bob left-thumb\n");
    EXPECT_NE(outcome.err.find("has a name that is not UTF-8"), std::string::npos) << outcome.err;
}

TEST(OrlUnit, AStoreInAFileIsToldToBeUnavailable) {
    expectOneComplaint(RunOrlUnit({"--store", "store.db", "list"}), "in memory only");
}
#endif

}  // namespace
}  // namespace orl::test
