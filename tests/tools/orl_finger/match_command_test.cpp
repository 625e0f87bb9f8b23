// orl-finger match, run as a program.

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/support/file_text.h"
#include "tests/support/record_builder.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

using nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kSameFinger[] = "samples/101_2.fmr";
constexpr char kOtherFinger[] = "samples/102_1.fmr";

constexpr unsigned kSeed = 11;

// Records that cannot be matched, each with what match says of it as a probe and as a candidate.
class MatchCommand : public testing::Test {
  protected:
    std::string sound() const { return folder_.Write("sound.fmr", soundBytes()); }

    std::string malformed() const {
        std::vector<std::uint8_t> bytes = soundBytes();
        bytes.pop_back();
        return folder_.Write("malformed.fmr", bytes);
    }

    std::string withoutViews() const {
        return folder_.Write("without_views.fmr", BuildRecord(RecordContent{}));
    }

    std::string withTwoMinutiae() const {
        return folder_.Write("two_minutiae.fmr", BuildRecord(RandomMinutiae(kSeed, 2)));
    }

    std::string empty() const { return folder_.Write("empty.fmr", {}); }

    const ScratchFolder& folder() const { return folder_; }

  private:
    static std::vector<std::uint8_t> soundBytes() { return BuildRecord(RandomMinutiae(kSeed, 30)); }

    ScratchFolder folder_;
};

// The one JSON line of a match.
ordered_json onlyLine(const ProgramOutcome& outcome) {
    const std::vector<std::string> lines = LinesOf(outcome.out);
    EXPECT_EQ(lines.size(), 1U) << outcome.out << outcome.err;
    return lines.empty() ? ordered_json() : ordered_json::parse(lines[0]);
}

std::vector<std::string> keysOf(const ordered_json& object) {
    std::vector<std::string> keys;
    for (const auto& item : object.items()) {
        keys.push_back(item.key());
    }
    return keys;
}

TEST_F(MatchCommand, PrintsItsKeysInTheirOrder) {
    const ProgramOutcome outcome = RunOrlFinger({"match", kRecord, kSameFinger, "--json"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(keysOf(onlyLine(outcome)),
                testing::ElementsAre("probe",
                                     "candidate",
                                     "status",
                                     "message",
                                     "matched",
                                     "score",
                                     "threshold",
                                     "fingerAgreement",
                                     "firstFingerIndex",
                                     "secondFingerIndex",
                                     "pairCount",
                                     "matchedCount",
                                     "rotationDegrees",
                                     "orientation",
                                     "distanceMedian",
                                     "angleMedian",
                                     "coverage",
                                     "matchedRatio",
                                     "refined"));
}

TEST_F(MatchCommand, MatchesARecordWithItself) {
    const ordered_json line = onlyLine(RunOrlFinger({"match", kRecord, kRecord, "--json"}));
    EXPECT_EQ(line["probe"], kRecord);
    EXPECT_EQ(line["candidate"], kRecord);
    EXPECT_EQ(line["status"], 0);
    EXPECT_EQ(line["message"], "");
    EXPECT_EQ(line["matched"], true);
    EXPECT_EQ(line["threshold"], 300);
    EXPECT_EQ(line["rotationDegrees"], 0);
    EXPECT_EQ(line["orientation"], 0);
    EXPECT_EQ(line["distanceMedian"], 0);
}

TEST_F(MatchCommand, TellsFingersApart) {
    const ordered_json line = onlyLine(RunOrlFinger({"match", kRecord, kOtherFinger, "--json"}));
    EXPECT_EQ(line["status"], 0);
    EXPECT_EQ(line["matched"], false);
}

TEST_F(MatchCommand, PrintsNoCarriageReturn) {
    EXPECT_THAT(RunOrlFinger({"match", kRecord, kRecord, "--json"}).out, Not(HasSubstr("\r")));
    EXPECT_THAT(RunOrlFinger({"match", kRecord, kRecord}).out, Not(HasSubstr("\r")));
}

TEST_F(MatchCommand, HandsTheThresholdToTheMatcherAsItIs) {
    const struct {
        const char* given;
        int effective;  // 100 or less counts in tens
    } cases[] = {{"30", 300}, {"100", 1000}, {"101", 101}, {"450", 450}, {"0", 0}, {"-5", -50}};
    for (const auto& testCase : cases) {
        const ordered_json line = onlyLine(RunOrlFinger(
            {"match", kRecord, kOtherFinger, "--threshold", testCase.given, "--json"}));
        EXPECT_EQ(line["threshold"], testCase.effective) << testCase.given;
    }
}

TEST_F(MatchCommand, DecidesByTheGivenThreshold) {
    const std::vector<std::string> low{
        "match", kRecord, kOtherFinger, "--threshold", "-5", "--json"};
    EXPECT_EQ(onlyLine(RunOrlFinger(low))["matched"], true);  // any score is 50 or more above -50
}

TEST_F(MatchCommand, ReportsRecordsThatDoNotLoadAndNamesTheOneAtFault) {
    const struct {
        std::string probe;
        std::string candidate;
        int status;
        std::string message;
        std::string subject;
    } cases[] = {
        {malformed(), sound(), 2, "Probe template could not be loaded from buffer", malformed()},
        {sound(),
         malformed(),
         3,
         "Candidate template could not be loaded from buffer",
         malformed()},
        {withoutViews(),
         sound(),
         4,
         "Probe template contains no fingerprints from buffer",
         withoutViews()},
        {sound(),
         withoutViews(),
         5,
         "Candidate template contains no fingerprints from buffer",
         withoutViews()},
        {empty(), sound(), 1, "Invalid match arguments", empty() + ", " + sound()},
    };
    for (const auto& testCase : cases) {
        const ProgramOutcome outcome =
            RunOrlFinger({"match", testCase.probe, testCase.candidate, "--json"});
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(outcome.err, "orl-finger: " + testCase.subject + ": " + testCase.message + "\n");
        const ordered_json line = onlyLine(outcome);
        EXPECT_EQ(line["status"], testCase.status);
        EXPECT_EQ(line["message"], testCase.message);
        EXPECT_EQ(line["matched"], false);
        EXPECT_EQ(line["score"], 0);
        EXPECT_EQ(line["threshold"], 300);
        EXPECT_EQ(line["fingerAgreement"], true);
    }
}

TEST_F(MatchCommand, ReportsAnExceptionWithItsTextAndZerosElsewhere) {
    const std::string record = withTwoMinutiae();
    const ProgramOutcome outcome =
        RunOrlFinger({"match", record, sound(), "--threshold", "40", "--json"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err, "orl-finger: " + record + ", " + sound() + ": not triangulation\n");
    ordered_json expected{{"probe", record}, {"candidate", sound()}};
    expected.update(ordered_json::parse(
        R"({"status":-1,"message":"not triangulation","matched":false,"score":0,"threshold":0,
            "fingerAgreement":false,"firstFingerIndex":0,"secondFingerIndex":0,"pairCount":0,
            "matchedCount":0,"rotationDegrees":0,"orientation":0,"distanceMedian":0,
            "angleMedian":0,"coverage":0,"matchedRatio":0,"refined":false})"));
    EXPECT_EQ(onlyLine(outcome), expected);
}

TEST_F(MatchCommand, PrintsNothingForAFileThatCannotBeRead) {
    const std::string missing = folder().PathOf("missing.fmr");
    const ProgramOutcome outcome = RunOrlFinger({"match", kRecord, missing, "--json"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "orl-finger: " + missing + ": No such file or directory\n");
    const ProgramOutcome onFolder = RunOrlFinger({"match", "samples", kRecord, "--json"});
    EXPECT_EQ(onFolder.exitStatus, 1);
    EXPECT_EQ(onFolder.out, "");
    EXPECT_EQ(onFolder.err, "orl-finger: samples: is a directory\n");
}

TEST_F(MatchCommand, MatchesAFileLongerThanAnyRecord) {
    const std::string name = folder().Write("long.fmr", std::vector<std::uint8_t>(100000, 'F'));
    EXPECT_EQ(onlyLine(RunOrlFinger({"match", name, kRecord, "--json"}))["status"], 2);
}

TEST_F(MatchCommand, MatchesPairsInTheirOrder) {
    const std::string pairs = std::string(kRecord) + "\t" + kOtherFinger + "\n" + kSameFinger +
                              "\t" + kRecord + "\n" + kRecord + "\t" + kRecord + "\n";
    const std::string file = folder().Write("pairs.tsv", BytesOf(pairs));
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", file, "--json"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0] + "\n", RunOrlFinger({"match", kRecord, kOtherFinger, "--json"}).out);
    EXPECT_EQ(lines[1] + "\n", RunOrlFinger({"match", kSameFinger, kRecord, "--json"}).out);
    EXPECT_EQ(lines[2] + "\n", RunOrlFinger({"match", kRecord, kRecord, "--json"}).out);
}

TEST_F(MatchCommand, ReadsPairsFromStandardInput) {
    const std::string pair = std::string(kRecord) + "\t" + kSameFinger;
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", "-", "--json"}, pair);
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.out, RunOrlFinger({"match", kRecord, kSameFinger, "--json"}).out);
    EXPECT_EQ(RunOrlFinger({"match", "--pairs", "-", "--json"}, "").exitStatus, 0);
}

TEST_F(MatchCommand, PassesOverEmptyLinesAndCarriageReturns) {
    const std::string pair = std::string(kRecord) + "\t" + kSameFinger;
    const ProgramOutcome outcome =
        RunOrlFinger({"match", "--pairs", "-", "--json"}, "\r\n\n" + pair + "\r\n\n");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(onlyLine(outcome)["candidate"], kSameFinger);
}

TEST_F(MatchCommand, GoesOnAfterPairsThatCannotBeUsed) {
    const std::string missing = folder().PathOf("missing.fmr");
    const std::string good = std::string(kRecord) + "\t" + kSameFinger + "\n";
    const std::string pairs = "no tab here\n" + good + "a\tb\tc\n" + "\t" + kRecord + "\n" +
                              kRecord + "\t\n" + missing + "\t" + kRecord + "\n" + malformed() +
                              "\t" + kRecord + "\n" + good;
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", "-", "--json"}, pairs);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(LinesOf(outcome.err),
                testing::ElementsAre("orl-finger: standard input:1: expected PROBE<TAB>CANDIDATE",
                                     "orl-finger: standard input:3: expected PROBE<TAB>CANDIDATE",
                                     "orl-finger: standard input:4: expected PROBE<TAB>CANDIDATE",
                                     "orl-finger: standard input:5: expected PROBE<TAB>CANDIDATE",
                                     "orl-finger: " + missing + ": No such file or directory",
                                     "orl-finger: " + malformed() +
                                         ": Probe template could not be loaded from buffer"));
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(ordered_json::parse(lines[0])["status"], 0);
    EXPECT_EQ(ordered_json::parse(lines[1])["status"], 2);
    EXPECT_EQ(lines[2], lines[0]);
}

TEST_F(MatchCommand, NamesThePairsFileThatCannotBeRead) {
    const std::string missing = folder().PathOf("missing.tsv");
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", missing, "--json"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "orl-finger: " + missing + ": No such file or directory\n");
}

TEST_F(MatchCommand, DoesNotTakeAListThatCannotBeReadForAnEmptyOne) {
    const ProgramOutcome outcome =
        RunOrlFinger({"match", "--pairs", folder().PathOf("."), "--json"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err, "orl-finger: " + folder().PathOf(".") + ": is a directory\n");
}

#ifndef _WIN32
TEST_F(MatchCommand, DoesNotTakeStandardInputThatCannotBeReadForAnEmptyList) {
    for (const char* input : {"<.", "<&-"}) {
        const ProgramOutcome outcome = RunProgram(
            "/bin/sh", {"-c", std::string(ORL_FINGER_PROGRAM " match --pairs - --json ") + input});
        EXPECT_EQ(outcome.exitStatus, 1) << input;
        EXPECT_THAT(outcome.err, StartsWith("orl-finger: standard input: ")) << input;
    }
}
#endif

TEST_F(MatchCommand, StopsAtALineThatIsTooLongForAPair) {
    const std::string good = std::string(kRecord) + "\t" + kRecord + "\n";
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", "-", "--json"},
                                                good + std::string(65537, 'x') + "\n" + good);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(LinesOf(outcome.out).size(), 1U);
    EXPECT_EQ(outcome.err, "orl-finger: standard input: line 2 is longer than 65536 bytes\n");
}

TEST_F(MatchCommand, FindsRecordsByUtf8Names) {
    const std::string name =
        folder().Write("\xC3\xA4nne_\xE6\x8C\x87.fmr", BytesOf(FileText(kRecord)));
    const ProgramOutcome byPairs =
        RunOrlFinger({"match", "--pairs", "-", "--json"}, name + "\t" + kRecord + "\n");
    EXPECT_EQ(byPairs.exitStatus, 0) << byPairs.err;
    EXPECT_EQ(onlyLine(byPairs)["probe"], name);
    const ProgramOutcome byArguments = RunOrlFinger({"match", name, kRecord, "--json"});
    EXPECT_EQ(byArguments.out, byPairs.out) << byArguments.err;
}

TEST_F(MatchCommand, SaysTheOutcomeInWordsWithoutJson) {
    const ProgramOutcome same = RunOrlFinger({"match", kRecord, kRecord});
    EXPECT_EQ(same.exitStatus, 0);
    EXPECT_THAT(same.out, HasSubstr("MATCH, score "));
    EXPECT_THAT(same.out, HasSubstr("(threshold 300)"));
    const ProgramOutcome other = RunOrlFinger({"match", kRecord, kOtherFinger});
    EXPECT_EQ(other.exitStatus, 0);
    EXPECT_THAT(other.out, HasSubstr("no match, score "));
    const ProgramOutcome broken = RunOrlFinger({"match", kRecord, malformed()});
    EXPECT_EQ(broken.exitStatus, 1);
    EXPECT_THAT(broken.out,
                HasSubstr("not compared: Candidate template could not be loaded from buffer"));
}

}  // namespace
}  // namespace orl::test
