// orl-finger generate, run as a program.

#include <filesystem>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/support/file_text.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

using nlohmann::json;

ProgramOutcome generate(const std::string& folder,
                        int fingers,
                        int impressions,
                        const std::string& seed) {
    return RunOrlFinger({"generate",
                         folder,
                         "--fingers",
                         std::to_string(fingers),
                         "--impressions",
                         std::to_string(impressions),
                         "--seed",
                         seed});
}

std::string recordName(const std::string& folder, int finger, int impression) {
    return folder + "/" + std::to_string(finger) + "_" + std::to_string(impression) + ".fmr";
}

std::size_t entriesIn(const std::string& folder) {
    const std::filesystem::directory_iterator entries{
        std::filesystem::path(std::u8string(folder.begin(), folder.end()))};
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// The command that samples/README.md tells.
TEST(GenerateCommand, MakesTheShippedSamplesByteForByte) {
    constexpr int kFingers = 10;
    constexpr int kImpressions = 4;
    const ScratchFolder scratch;
    const std::string folder = scratch.PathOf("samples");
    const ProgramOutcome outcome = generate(folder, kFingers, kImpressions, "5");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "40 records in " + folder + "\n");
    EXPECT_EQ(entriesIn(folder), 40U);
    for (int finger = 101; finger < 101 + kFingers; ++finger) {
        for (int impression = 1; impression <= kImpressions; ++impression) {
            ASSERT_EQ(FileText(recordName(folder, finger, impression)),
                      FileText(recordName("samples", finger, impression)))
                << "finger " << finger << ", impression " << impression;
        }
    }
    EXPECT_EQ(entriesIn("samples"), 41U);  // and the README
}

TEST(GenerateCommand, KeepsAFingerWhenMoreAreAskedFor) {
    const ScratchFolder scratch;
    generate(scratch.PathOf("few"), 2, 1, "8");
    generate(scratch.PathOf("many"), 3, 5, "8");
    for (const int finger : {101, 102}) {
        EXPECT_EQ(FileText(recordName(scratch.PathOf("few"), finger, 1)),
                  FileText(recordName(scratch.PathOf("many"), finger, 1)));
    }
}

TEST(GenerateCommand, MakesOtherFingersFromAnotherSeed) {
    const ScratchFolder scratch;
    generate(scratch.PathOf("a"), 1, 1, "0");
    generate(scratch.PathOf("b"), 1, 1, "18446744073709551615");
    EXPECT_NE(FileText(recordName(scratch.PathOf("a"), 101, 1)),
              FileText(recordName(scratch.PathOf("b"), 101, 1)));
}

TEST(GenerateCommand, TellsWhyAFolderCannotBeWritten) {
    const ScratchFolder scratch;
    const std::string file = scratch.Write("file", BytesOf("in the way"));
    const ProgramOutcome inTheWay = generate(file, 1, 1, "1");
    EXPECT_EQ(inTheWay.exitStatus, 1);
    EXPECT_EQ(inTheWay.out, "");
    EXPECT_THAT(inTheWay.err, testing::StartsWith("orl-finger: " + file));
    std::filesystem::create_directory(scratch.PathOf("101_1.fmr"));
    const ProgramOutcome blocked = generate(scratch.PathOf("."), 1, 1, "1");
    EXPECT_EQ(blocked.exitStatus, 1);
    EXPECT_THAT(blocked.err, testing::HasSubstr("101_1.fmr: is a directory"));
}

// How often the matcher, at its default threshold, takes two impressions for one finger.
double acceptedShare(const std::string& pairs) {
    const ProgramOutcome outcome = RunOrlFinger({"match", "--pairs", "-", "--json"}, pairs);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    const std::vector<std::string> lines = LinesOf(outcome.out);
    int accepted = 0;
    for (const std::string& line : lines) {
        accepted += json::parse(line)["matched"].get<bool>() ? 1 : 0;
    }
    return static_cast<double>(accepted) / static_cast<double>(lines.size());
}

// The shares that real records of good sensors reach: most genuine pairs, hardly an impostor.
TEST(GenerateCommand, MakesFingersThatTheMatcherKnowsAgainAndTellsApart) {
    constexpr int kFingers = 30;
    const ScratchFolder scratch;
    const std::string folder = scratch.PathOf("records");
    generate(folder, kFingers, 2, "77");
    std::string genuine;
    std::string impostor;
    for (int a = 101; a < 101 + kFingers; ++a) {
        genuine += recordName(folder, a, 1) + "\t" + recordName(folder, a, 2) + "\n";
        for (int b = a + 1; b < 101 + kFingers; ++b) {
            impostor += recordName(folder, a, 1) + "\t" + recordName(folder, b, 1) + "\n";
        }
    }
    const double genuineShare = acceptedShare(genuine);
    EXPECT_GE(genuineShare, 0.60);
    EXPECT_LE(genuineShare, 0.97);
    EXPECT_LE(acceptedShare(impostor), 0.01);
}

}  // namespace
}  // namespace orl::test
