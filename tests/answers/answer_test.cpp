#include "tests/answers/answer.h"

#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "matcher/api/finger_matcher.h"
#include "tests/support/record_builder.h"

namespace orl::test {
namespace {

Answer AnswerWithEveryFigure() {
    Answer answer{.pair = "set 12 7"};
    answer.result = {.status = 1,
                     .decision = 2,
                     .score = 3,
                     .threshold = -4,
                     .fingerAgreement = false,
                     .firstFingerIndex = 5,
                     .secondFingerIndex = 6,
                     .pairCount = 7,
                     .matchedCount = 8,
                     .rotationDegrees = -1.40625F,
                     .orientation = 3,
                     .distanceMedian = 0.1F,
                     .angleMedian = std::numeric_limits<float>::denorm_min(),
                     .coverage = std::numeric_limits<float>::max(),
                     .matchedRatio = 1.0F / 3.0F,
                     .refined = 1};
    answer.message = "Probe: not a record";
    return answer;
}

TEST(Answer, SurvivesBeingWrittenAsALine) {
    const Answer answer = AnswerWithEveryFigure();
    EXPECT_EQ(AnswerOfLine(LineOf(answer)), answer);
    EXPECT_EQ(AnswerOfLine(LineOf(Answer{.pair = "a 0 0"})), Answer{.pair = "a 0 0"});
}

TEST(Answer, HasEveryFigureInItsTextOrAmongItsFractions) {
    const Answer answer = AnswerWithEveryFigure();
    EXPECT_EQ(WholeTextOf(answer), "set 12 7 1 1 2 3 -4 0 5 6 7 8 3 1 :Probe: not a record");
    const matcher::TemplateMatchResult& result = answer.result;
    EXPECT_EQ(FractionsOf(answer),
              (std::vector<float>{result.rotationDegrees,
                                  result.distanceMedian,
                                  result.angleMedian,
                                  result.coverage,
                                  result.matchedRatio}));
}

TEST(Answer, IsNotReadFromBrokenLines) {
    const std::string line = LineOf(AnswerWithEveryFigure());
    const std::string start = line.substr(0, line.find(':'));
    for (const std::string& broken : {std::string(), std::string("x"), start, "x" + line}) {
        EXPECT_THROW(AnswerOfLine(broken), std::runtime_error) << broken;
    }
}

TEST(Answer, IsThatOfThePublicEntry) {
    const std::vector<std::uint8_t> record = BuildRecord(RandomMinutiae(1, 40));
    MatchResult said{};
    ASSERT_EQ(ORLFingerMatcher_Initialize(nullptr, 0), 0);
    ASSERT_EQ(ORLFingerMatcher_Match(record.data(),
                                     static_cast<std::int32_t>(record.size()),
                                     record.data(),
                                     static_cast<std::int32_t>(record.size()),
                                     0,
                                     &said,
                                     nullptr,
                                     0),
              0);
    const Answer answer = AnswerTo("p", record, record);
    EXPECT_TRUE(answer.triangulated);
    EXPECT_EQ(answer.result.score, said.Score);
    EXPECT_EQ(answer.result.decision, said.Matched);
    EXPECT_EQ(answer.result.threshold, 300);
}

TEST(Answer, TellsAFingerThatAdmitsNoTriangle) {
    std::vector<RecordMinutia> line = RandomMinutiae(1, 40);
    for (RecordMinutia& minutia : line) {
        minutia.y = 100;
    }
    const std::vector<std::uint8_t> record = BuildRecord(line);
    const Answer answer = AnswerTo("p", record, record);
    EXPECT_EQ(answer, (Answer{.pair = "p", .triangulated = false}));
}

TEST(Answer, TellsTheStatusAndMessageOfARecordThatCannotBeLoaded) {
    const Answer answer = AnswerTo("p", {}, {});
    EXPECT_EQ(answer.result.status, 1U);
    EXPECT_NE(answer.message, "");
}

}  // namespace
}  // namespace orl::test
