// What orl-finger says of the shipped samples, against the lines kept in tests/golden. A change in
// any figure shows here; tests/golden/rewrite.sh writes the lines anew when it is meant.

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/file_text.h"
#include "tests/tools/orl_finger/finger_program.h"

namespace orl::test {
namespace {

using nlohmann::json;

// Cosine and sine tables hold what the platform's library gives, which differs in the last bit of a
// few entries: floats from Windows may differ by this share, all else must be equal.
constexpr double kOtherPlatformTolerance = 1e-5;

bool isClose(double a, double b) {
    return std::abs(a - b) <= kOtherPlatformTolerance * std::max(std::abs(a), std::abs(b));
}

bool agree(const json& said, const json& kept);

bool membersAgree(const json& said, const json& kept) {
    if (said.size() != kept.size()) {
        return false;
    }
    for (auto a = said.begin(), b = kept.begin(); a != said.end(); ++a, ++b) {
        if ((said.is_object() && a.key() != b.key()) || !agree(*a, *b)) {
            return false;
        }
    }
    return true;
}

bool agree(const json& said, const json& kept) {
    if (said.is_structured() && kept.is_structured()) {
        return said.type() == kept.type() && membersAgree(said, kept);
    }
    if (said.is_number_float() || kept.is_number_float()) {
        return said.is_number() && kept.is_number() &&
               isClose(said.get<double>(), kept.get<double>());
    }
    return said == kept;
}

void expectLines(const std::string& said, const std::string& goldenFile) {
    const std::vector<std::string> lines = LinesOf(said);
    const std::vector<std::string> kept = LinesOf(FileText(goldenFile));
    ASSERT_EQ(lines.size(), kept.size());
    ASSERT_FALSE(kept.empty());
    for (std::size_t i = 0; i < kept.size(); ++i) {
#ifdef _WIN32
        EXPECT_TRUE(agree(json::parse(lines[i]), json::parse(kept[i])))
            << goldenFile << ":" << i + 1 << "\n said " << lines[i] << "\n kept " << kept[i];
#else
        EXPECT_EQ(lines[i], kept[i]) << goldenFile << ":" << i + 1;
#endif
    }
}

TEST(Golden, ToleratesTheLastBitsOfFloatsAndNothingElse) {
    EXPECT_TRUE(agree(json::parse(R"({"a":[1,0.5]})"), json::parse(R"({"a":[1,0.500001]})")));
    EXPECT_TRUE(agree(json::parse("[1]"), json::parse("[1.000001]")));
    EXPECT_FALSE(agree(json::parse("[0.5]"), json::parse("[0.50001]")));
    EXPECT_FALSE(agree(json::parse("[100000]"), json::parse("[100001]")));
    EXPECT_FALSE(agree(json::parse(R"({"a":1})"), json::parse(R"({"b":1})")));
    EXPECT_FALSE(agree(json::parse("[true]"), json::parse("[1]")));
    EXPECT_FALSE(agree(json::parse("[1,2]"), json::parse("[1]")));
    EXPECT_FALSE(agree(json::parse("[]"), json::parse("{}")));
}

TEST(Golden, MatchesOfSamplesAreAsKept) {
    const ProgramOutcome outcome =
        RunOrlFinger({"match", "--pairs", "tests/golden/match_pairs.tsv", "--json"});
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    expectLines(outcome.out, "tests/golden/match.jsonl");
}

TEST(Golden, InspectionsOfSamplesAreAsKept) {
    std::vector<std::string> arguments{"inspect", "--json"};
    for (const std::string& record : LinesOf(FileText("tests/golden/inspect_records.txt"))) {
        arguments.push_back(record);
    }
    const ProgramOutcome outcome = RunOrlFinger(arguments);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    expectLines(outcome.out, "tests/golden/inspect.jsonl");
}

}  // namespace
}  // namespace orl::test
