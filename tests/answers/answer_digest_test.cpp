#include "tests/answers/answer_digest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orl::test {
namespace {

Answer SomeAnswer() {
    Answer answer{.pair = "set 1 2"};
    answer.result.score = 250;
    answer.result.rotationDegrees = -2.5F;
    answer.result.coverage = 0.5F;
    return answer;
}

nlohmann::json DigestOf(const std::vector<Answer>& answers) {
    AnswerDigest digest;
    for (const Answer& answer : answers) {
        digest.Add(answer);
    }
    return nlohmann::json::parse(digest.JsonText("some"));
}

// The published test vectors of the checksum.
TEST(Fnv1a, GivesThePublishedSums) {
    const auto sum = [](std::string_view text) {
        Fnv1a digest;
        digest.Add(text);
        return digest.Text();
    };
    EXPECT_EQ(sum(""), "cbf29ce484222325");
    EXPECT_EQ(sum("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(sum("foobar"), "85944171f73967e8");
}

TEST(Fnv1a, TakesBytesAsItTakesText) {
    const std::vector<std::uint8_t> bytes{'a', 0xFF};
    Fnv1a ofBytes;
    Fnv1a ofText;
    ofBytes.Add(bytes);
    ofText.Add("a\xFF");
    EXPECT_EQ(ofBytes.Text(), ofText.Text());
}

TEST(AnswerDigest, CountsAnswersByStatus) {
    Answer refused = SomeAnswer();
    refused.result.status = 2;
    Answer thrown = SomeAnswer();
    thrown.triangulated = false;
    Answer matched = SomeAnswer();
    matched.result.decision = 1;
    const nlohmann::json line = DigestOf({SomeAnswer(), refused, thrown, matched});
    EXPECT_EQ(line["answers"], "some");
    EXPECT_EQ(line["count"], 4);
    EXPECT_EQ(line["statuses"], (nlohmann::json{{"0", 2}, {"2", 1}, {"thrown", 1}}));
    EXPECT_EQ(line["matched"], 1);
}

TEST(AnswerDigest, SumsTheSizesOfFractions) {
    const nlohmann::json line = DigestOf({SomeAnswer(), SomeAnswer()});
    EXPECT_EQ(line["rotationDegrees"], 5.0);
    EXPECT_EQ(line["coverage"], 1.0);
    EXPECT_EQ(line["angleMedian"], 0.0);
}

TEST(AnswerDigest, ChangesWithAnyWholeFigureAndWithTheOrder) {
    const auto whole = [](const std::vector<Answer>& answers) {
        return DigestOf(answers)["whole"];
    };
    Answer other = SomeAnswer();
    other.result.matchedCount = 1;
    Answer message = SomeAnswer();
    message.message = "x";
    EXPECT_EQ(whole({SomeAnswer()}), whole({SomeAnswer()}));
    EXPECT_NE(whole({SomeAnswer()}), whole({other}));
    EXPECT_NE(whole({SomeAnswer()}), whole({message}));
    EXPECT_NE(whole({SomeAnswer(), other}), whole({other, SomeAnswer()}));
}

TEST(DigestLines, CoverEveryPairOfTheSetOnce) {
    RecordPairs set{.name = "set", .records = {{1, 2}, {}}};
    constexpr std::size_t kPairs = 1001;
    set.pairs.resize(kPairs, {0, 1});
    const std::vector<std::string> lines = DigestLines(set);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(nlohmann::json::parse(lines[0])["count"], 2);
    EXPECT_EQ(nlohmann::json::parse(lines[1])["count"], 500);
    EXPECT_EQ(nlohmann::json::parse(lines[2])["count"], 500);
    EXPECT_EQ(nlohmann::json::parse(lines[3])["count"], 1);
}

}  // namespace
}  // namespace orl::test
