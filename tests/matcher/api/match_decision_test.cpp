#include "matcher/api/match_decision.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The limits as published, in decimal; the nearest single-precision value of each is meant.
struct Row {
    int level;
    const char* maxDistance;
    const char* maxAngle;
    const char* minCoverage;
    const char* minRatio;
    std::uint16_t minCount;
};

constexpr Row kRows[] = {
    {4, "15.0", "15.0", "0.35", "0.55", 16},
    {2, "15.0", "15.4688", "0.40", "0.55", 14},
    {1, "15.0", "15.0", "0.45", "0.50", 14},
    {0, "13.0", "13.0", "0.44461", "0.50", 14},
    {-1, "11.3498", "17.5781", "0.35", "0.50", 14},
    {-2, "13.0", "11.0", "0.45", "0.50", 18},
    {-3, "15.0", "11.25", "0.35", "0.50", 15},
    {-4, "11.7019", "8.0", "0.40", "0.50", 14},
    {-5, "15.0", "7.0", "0.35", "0.50", 14},
    {-6, "7.65416", "12.0", "0.40", "0.45", 14},
    {-7, "12.0", "14.0", "0.457249", "0.45", 18},
    {-8, "15.0", "8.0", "0.508312", "0.45", 18},
    {-9, "10.0", "11.0", "0.40", "0.45", 12},
    {-10, "10.0", "15.0", "0.40", "0.50", 17},
    {-11, "12.0", "11.0", "0.40", "0.45", 12},
    {-12, "15.0", "12.0", "0.35", "0.50", 18},
};

float Figure(const char* decimal) {
    return std::strtof(decimal, nullptr);
}

// The score that lies `level` tens above the default threshold of 300.
std::uint16_t ScoreAtLevel(int level) {
    return static_cast<std::uint16_t>(300 + 10 * level);
}

// Figures that satisfy the row, each exactly at its limit.
MatchDecisionInput AtTheLimitsOf(const Row& row) {
    return {.score = ScoreAtLevel(row.level),
            .threshold = 300,
            .fingerAgreement = true,
            .matchedCount = row.minCount,
            .distanceMedian = Figure(row.maxDistance),
            .angleMedian = Figure(row.maxAngle),
            .coverage = Figure(row.minCoverage),
            .matchedRatio = Figure(row.minRatio),
            .refined = true};
}

// Figures that satisfy every row, or none.
MatchDecisionInput BestFigures(int score, std::int32_t threshold) {
    return {.score = static_cast<std::uint16_t>(score),
            .threshold = threshold,
            .fingerAgreement = true,
            .matchedCount = 128,
            .distanceMedian = 0.0F,
            .angleMedian = 0.0F,
            .coverage = 1.0F,
            .matchedRatio = 1.0F,
            .refined = true};
}

MatchDecisionInput WorstFigures(int score, std::int32_t threshold) {
    return {.score = static_cast<std::uint16_t>(score),
            .threshold = threshold,
            .fingerAgreement = true,
            .matchedCount = 0,
            .distanceMedian = kNaN,
            .angleMedian = kNaN,
            .coverage = -kInfinity,
            .matchedRatio = -kInfinity,
            .refined = false};
}

std::string Name(const Row& row) {
    return "level " + std::to_string(row.level);
}

TEST(MatchDecision, StartsFromNothingMatchedUnrefinedAtTheDefaultThreshold) {
    const MatchDecisionInput input;
    EXPECT_EQ(input.score, 0);
    EXPECT_EQ(input.threshold, 300);
    EXPECT_TRUE(input.fingerAgreement);
    EXPECT_EQ(input.matchedCount, 0);
    EXPECT_EQ(input.distanceMedian, 0.0F);
    EXPECT_EQ(input.angleMedian, 0.0F);
    EXPECT_EQ(input.coverage, 0.0F);
    EXPECT_EQ(input.matchedRatio, 0.0F);
    EXPECT_FALSE(input.refined);
}

TEST(MatchDecision, AcceptsFiguresExactlyAtEveryLimitOfEveryRow) {
    for (const Row& row : kRows) {
        EXPECT_TRUE(decideMatch(AtTheLimitsOf(row))) << Name(row);
    }
}

TEST(MatchDecision, RejectsTheNextFloatAboveTheDistanceLimitOfEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        input.distanceMedian = std::nextafter(input.distanceMedian, kInfinity);
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsTheNextFloatAboveTheAngleLimitOfEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        input.angleMedian = std::nextafter(input.angleMedian, kInfinity);
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsTheNextFloatBelowTheCoverageLimitOfEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        input.coverage = std::nextafter(input.coverage, -kInfinity);
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsTheNextFloatBelowTheRatioLimitOfEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        input.matchedRatio = std::nextafter(input.matchedRatio, -kInfinity);
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsOneMatchedMinutiaTooFewInEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        --input.matchedCount;
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsUnrefinedFiguresInEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = BestFigures(ScoreAtLevel(row.level), 300);
        EXPECT_TRUE(decideMatch(input)) << Name(row);
        input.refined = false;
        EXPECT_FALSE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, RejectsANanInEitherMedianOfEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput distance = AtTheLimitsOf(row);
        distance.distanceMedian = kNaN;
        EXPECT_FALSE(decideMatch(distance)) << Name(row);
        MatchDecisionInput angle = AtTheLimitsOf(row);
        angle.angleMedian = kNaN;
        EXPECT_FALSE(decideMatch(angle)) << Name(row);
    }
}

TEST(MatchDecision, LetsANanInCoverageOrRatioPassInEveryRow) {
    for (const Row& row : kRows) {
        MatchDecisionInput input = AtTheLimitsOf(row);
        input.coverage = kNaN;
        EXPECT_TRUE(decideMatch(input)) << Name(row);
        input.matchedRatio = kNaN;
        EXPECT_TRUE(decideMatch(input)) << Name(row);
    }
}

TEST(MatchDecision, MatchesOnScoreAloneAtLevelThreeButNotAtLevelFour) {
    for (const int score : {325, 330, 334}) {
        EXPECT_TRUE(decideMatch(WorstFigures(score, 300))) << score;
    }
    for (const int score : {335, 340, 344}) {
        EXPECT_FALSE(decideMatch(WorstFigures(score, 300))) << score;
        EXPECT_TRUE(decideMatch(BestFigures(score, 300))) << score;
    }
}

TEST(MatchDecision, MatchesOnScoreAloneFromLevelFiveOn) {
    for (const int score : {345, 346, 400, 999, 1000, 65535}) {
        EXPECT_TRUE(decideMatch(WorstFigures(score, 300))) << score;
    }
}

TEST(MatchDecision, NeverMatchesBelowLevelMinusTwelve) {
    EXPECT_TRUE(decideMatch(BestFigures(175, 300)));
    for (const int score : {174, 170, 100, 0}) {
        EXPECT_FALSE(decideMatch(BestFigures(score, 300))) << score;
    }
}

TEST(MatchDecision, NeverMatchesWhenTheFingersDisagree) {
    for (const int score : {175, 300, 330, 345, 1000}) {
        MatchDecisionInput input = BestFigures(score, 300);
        input.fingerAgreement = false;
        EXPECT_FALSE(decideMatch(input)) << score;
    }
}

TEST(MatchLevel, CountsTensAfterTakingEachSideToItsNearestTen) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kGreatest = std::numeric_limits<std::int32_t>::max();
    constexpr struct {
        std::uint16_t score;
        std::int32_t threshold;
        std::int32_t level;
        const char* why;
    } kCases[] = {
        {345, 300, 5, "35 - 30"},
        {344, 300, 4, "34 - 30"},
        {335, 300, 4, "34 - 30"},
        {334, 300, 3, "33 - 30"},
        {325, 300, 3, "33 - 30"},
        {324, 300, 2, "32 - 30"},
        {175, 300, -12, "18 - 30"},
        {174, 300, -13, "17 - 30"},
        {300, 304, 0, "30 - 30"},
        {300, 305, -1, "30 - 31"},
        {0, 0, 0, "0 - 0"},
        {4, 0, 0, "0 - 0"},
        {5, 0, 1, "1 - 0"},
        {0, -4, 0, "0 - 1/10"},
        {0, -5, 0, "0 - 0/10"},
        {0, -6, 0, "0 - (-1/10), truncated to 0"},
        {0, -14, 0, "0 - (-9/10), truncated to 0"},
        {0, -15, 1, "0 - (-10/10)"},
        {0, -24, 1, "0 - (-19/10), truncated to -1"},
        {0, -25, 2, "0 - (-20/10)"},
        {0, -50, 4, "0 - (-45/10), truncated to -4"},
        {65535, 0, 6554, "65540/10, no wrap at 16 bits"},
        {0, kGreatest, -214748365, "2147483652/10 = 214748365"},
        {0, kLeast, 214748364, "-2147483643/10 = -214748364"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(matchLevel(c.score, c.threshold), c.level)
            << c.score << " at " << c.threshold << ": " << c.why;
    }
}

TEST(MatchLevel, TruncatesBothQuotientsTowardZero) {
    for (int score = 0; score <= 1000; score += 7) {
        for (int threshold = -1000; threshold <= 1500; ++threshold) {
            const double scoreTens = std::trunc((score + 5) / 10.0);
            const double thresholdTens = std::trunc((threshold + 5) / 10.0);
            ASSERT_EQ(matchLevel(static_cast<std::uint16_t>(score), threshold),
                      scoreTens - thresholdTens)
                << score << " at " << threshold;
        }
    }
}

// The rule once more, told as a list of reasons against a match.
bool SlowDecision(const MatchDecisionInput& input) {
    if (!input.fingerAgreement) {
        return false;
    }
    const double level =
        std::trunc((input.score + 5) / 10.0) - std::trunc((input.threshold + 5.0) / 10.0);
    if (level == 3 || level > 4) {
        return true;
    }
    for (const Row& row : kRows) {
        if (row.level == level) {
            const bool tooFar =
                std::isnan(input.distanceMedian) || input.distanceMedian > Figure(row.maxDistance);
            const bool tooTurned =
                std::isnan(input.angleMedian) || input.angleMedian > Figure(row.maxAngle);
            const bool tooLittleOverlap = input.coverage < Figure(row.minCoverage);
            const bool tooFewAgree = input.matchedRatio < Figure(row.minRatio);
            return !(tooFar || tooTurned || tooLittleOverlap || tooFewAgree || !input.refined ||
                     input.matchedCount < row.minCount);
        }
    }
    return false;
}

TEST(MatchDecision, AgreesWithTheRuleToldAsReasonsOnRandomFigures) {
    constexpr std::uint32_t kSeed = 20240611;
    constexpr int kRounds = 200000;
    std::mt19937 random(kSeed);
    const auto upTo = [&random](float limit) {
        return limit * static_cast<float>(random() % 1024) / 1023.0F;
    };
    int matches = 0;
    for (int round = 0; round < kRounds; ++round) {
        const MatchDecisionInput input = {
            .score = static_cast<std::uint16_t>(random() % 500),
            .threshold = static_cast<std::int32_t>(random() % 600) - 100,
            .fingerAgreement = random() % 8 != 0,
            .matchedCount = static_cast<std::uint16_t>(10 + random() % 20),
            .distanceMedian = upTo(16.0F),
            .angleMedian = random() % 50 == 0 ? kNaN : upTo(18.0F),
            .coverage = random() % 50 == 0 ? kNaN : 0.3F + upTo(0.4F),
            .matchedRatio = 0.4F + upTo(0.3F),
            .refined = random() % 4 != 0};
        const bool expected = SlowDecision(input);
        matches += expected ? 1 : 0;
        ASSERT_EQ(decideMatch(input), expected) << "seed " << kSeed << " round " << round;
    }
    EXPECT_GT(matches, kRounds / 20) << "the figures must reach both outcomes";
    EXPECT_LT(matches, kRounds - kRounds / 20);
}

}  // namespace
}  // namespace orl::matcher
