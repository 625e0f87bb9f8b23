#include "tests/answers/answer_comparison.h"

#include <cmath>
#include <limits>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

namespace orl::test {
namespace {

AnswerComparison Compare(const std::string& first, const std::string& second) {
    std::istringstream a(first);
    std::istringstream b(second);
    return CompareAnswers(a, b);
}

std::string LineWith(std::uint16_t score, float coverage) {
    Answer answer{.pair = "set 0 1"};
    answer.result.score = score;
    answer.result.coverage = coverage;
    return LineOf(answer) + "\n";
}

TEST(CompareAnswers, FindsEqualListsTheSame) {
    const std::string lines = LineWith(1, 0.5F) + LineWith(2, 0.25F);
    const AnswerComparison comparison = Compare(lines, lines);
    EXPECT_TRUE(comparison.Same());
    EXPECT_TRUE(comparison.SameBits());
    EXPECT_EQ(comparison.digest.Answers(), 2U);
    EXPECT_EQ(comparison.fractionsUnequal, 0U);
    EXPECT_EQ(comparison.greatestDifference, 0.0);
    EXPECT_EQ(comparison.firstDifference, "");
}

TEST(CompareAnswers, ToleratesAndCountsTheLastBitsOfFractions) {
    const float near = std::nextafter(0.5F, 1.0F);  // 2^-24 more
    const AnswerComparison comparison = Compare(LineWith(1, 0.5F), LineWith(1, near));
    EXPECT_TRUE(comparison.Same());
    EXPECT_FALSE(comparison.SameBits());
    EXPECT_EQ(comparison.fractionsUnequal, 1U);
    EXPECT_NEAR(comparison.greatestDifference, 1.19e-7, 1e-9);
}

TEST(CompareAnswers, FindsAnyOtherDifference) {
    const AnswerComparison fraction = Compare(LineWith(1, 0.5F), LineWith(1, 0.50001F));
    EXPECT_FALSE(fraction.Same());
    EXPECT_EQ(fraction.fractionsTooFar, 1U);
    EXPECT_EQ(fraction.wholeDifferences, 0U);
    EXPECT_NE(fraction.firstDifference, "");
    const AnswerComparison whole = Compare(LineWith(1, 0.5F), LineWith(2, 0.5F));
    EXPECT_FALSE(whole.Same());
    EXPECT_FALSE(whole.SameBits());
    EXPECT_EQ(whole.wholeDifferences, 1U);
    EXPECT_EQ(whole.fractionsTooFar, 0U);
}

std::string RefinedLine(float rotation, float distance, std::uint32_t refined = 1) {
    Answer answer{.pair = "set 0 1"};
    answer.result.rotationDegrees = rotation;
    answer.result.distanceMedian = distance;
    answer.result.angleMedian = rotation / 2;
    answer.result.refined = refined;
    return LineOf(answer) + "\n";
}

TEST(CompareAnswers, CountsTiesOfRefinedAlignmentsApart) {
    const AnswerComparison tie = Compare(RefinedLine(11, 4.5F), RefinedLine(13, 4.50001F));
    EXPECT_TRUE(tie.Same());
    EXPECT_FALSE(tie.SameBits());
    EXPECT_EQ(tie.ties, 1U);
    EXPECT_EQ(tie.greatestDifference, 0.0);
}

TEST(CompareAnswers, TakesNoOtherRotationForATie) {
    const AnswerComparison farther = Compare(RefinedLine(11, 4.5F), RefinedLine(13, 4.501F));
    EXPECT_FALSE(farther.Same());
    EXPECT_EQ(farther.ties, 0U);
    const AnswerComparison plain = Compare(RefinedLine(11, 4.5F, 0), RefinedLine(13, 4.5F, 0));
    EXPECT_FALSE(plain.Same());
    EXPECT_EQ(plain.ties, 0U);
    const AnswerComparison same = Compare(RefinedLine(11, 4.5F), RefinedLine(11, 4.5F));
    EXPECT_TRUE(same.SameBits());
    EXPECT_EQ(same.ties, 0U);
}

TEST(CompareAnswers, FindsMissingAnswersAndEmptyLists) {
    const std::string one = LineWith(1, 0.5F);
    EXPECT_FALSE(Compare(one, one + one).Same());
    EXPECT_FALSE(Compare(one + one, one).Same());
    EXPECT_FALSE(Compare("", "").Same());
}

TEST(CompareAnswers, RefusesLinesThatAreNoAnswers) {
    EXPECT_THROW(Compare(LineWith(1, 0.5F), "something else\n"), std::runtime_error);
}

TEST(ShareOfDifference, IsInfiniteForWhatIsNoNumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ShareOfDifference(nan, 1.0F), infinite);
    EXPECT_EQ(ShareOfDifference(1.0F, nan), infinite);
    EXPECT_EQ(ShareOfDifference(0.0F, -0.0F), 0.0);
    EXPECT_EQ(ShareOfDifference(0.0F, 1.0F), 1.0);
    EXPECT_EQ(ShareOfDifference(-1.0F, 1.0F), 2.0);
}

}  // namespace
}  // namespace orl::test
