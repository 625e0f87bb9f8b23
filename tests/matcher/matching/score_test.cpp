#include "matcher/matching/score.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

float JustBelow(float value) {
    return std::nextafter(value, -std::numeric_limits<float>::infinity());
}

float JustAbove(float value) {
    return std::nextafter(value, std::numeric_limits<float>::infinity());
}

AlignmentEvaluation Figures(float coverage, float ratio, float distance, float angle) {
    AlignmentEvaluation evaluation;
    evaluation.coverage = coverage;
    evaluation.matchedRatio = ratio;
    evaluation.distanceMedian = distance;
    evaluation.angleMedian = angle;
    return evaluation;
}

const AlignmentEvaluation kPerfect = Figures(1.0F, 1.0F, 0.0F, 0.0F);
const AlignmentEvaluation kHopeless = Figures(0.0F, 0.0F, 99.0F, 99.0F);

TEST(ScoreFromCount, FollowsTheFormula) {
    struct Case {
        std::uint64_t matched, countA, countB;
        std::uint32_t score;
        const char* why;
    };
    const std::vector<Case> cases = {
        {4, 4, 4, 222, "16000 / 16 = 1000, 1000 * 4 / 18 = 222.2"},
        {3, 18, 18, 0, "fewer than 4 matched"},
        {4, 18, 18, 49, "16000 / 324 = 49.4"},
        {4, 0, 18, 0, "no minutiae in the first finger"},
        {4, 18, 0, 0, "no minutiae in the second finger"},
        {10, 20, 30, 166, "100000 / 600 = 166.7"},
        {10, 18, 40, 138, "100000 / 720 = 138.9, 18 minutiae are enough"},
        {10, 17, 40, 138, "100000 / 680 = 147.1, 147 * 17 / 18 = 138.8"},
        {10, 9, 40, 138, "100000 / 360 = 277.8, 277 * 9 / 18 = 138.5"},
        {10, 40, 9, 138, "the smaller count may be the second one"},
        {31, 31, 31, 1000, "all matched"},
        {40, 20, 20, 1000, "1600000 / 400 = 4000 is cut to 1000"},
        {8, 4, 4, 888, "64000 / 16 = 4000, 4000 * 4 / 18 = 888.9: reduced before it is cut"},
        {128, 1, 1, 1000, "16384000 / 18 is cut to 1000"},
        {5000, 10000, 10000, 250, "the product 25e9 does not fit 32 bits"},
        {65535, 128, 128, 1000, "the greatest matched count"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(scoreFromCount(c.matched, c.countA, c.countB), c.score) << c.why;
    }
}

TEST(ScoreFromCount, StaysWithinItsRangeForAllFingerSizes) {
    for (std::uint64_t countA = 0; countA <= 128; ++countA) {
        for (std::uint64_t countB = 0; countB <= 128; ++countB) {
            for (std::uint64_t matched : {0U, 3U, 4U, 40U, 128U, 256U}) {
                const std::uint32_t score = scoreFromCount(matched, countA, countB);
                ASSERT_LE(score, 1000U);
                ASSERT_EQ(score, scoreFromCount(matched, countB, countA));
            }
        }
    }
}

TEST(RefinementBand, ReachesFrom180To400) {
    EXPECT_FALSE(isInRefinementBand(0));
    EXPECT_FALSE(isInRefinementBand(179));
    EXPECT_TRUE(isInRefinementBand(180));
    EXPECT_TRUE(isInRefinementBand(400));
    EXPECT_FALSE(isInRefinementBand(401));
    EXPECT_FALSE(isInRefinementBand(1000));
}

TEST(QualityBonus, HasAGateWithInclusiveSinglePrecisionLimits) {
    struct Case {
        AlignmentEvaluation figures;
        std::uint32_t bonus;
        const char* why;
    };
    const std::vector<Case> cases = {
        {Figures(0.4F, 0.45F, 10.5F, 12.0F), 1, "all at their limits"},
        {Figures(JustBelow(0.4F), 1.0F, 0.0F, 0.0F), 0, "coverage below 0.4"},
        {Figures(1.0F, JustBelow(0.45F), 0.0F, 0.0F), 0, "matched ratio below 0.45"},
        {Figures(1.0F, 1.0F, JustAbove(10.5F), 0.0F), 0, "distance median above 10.5"},
        {Figures(1.0F, 1.0F, 0.0F, JustAbove(12.0F)), 0, "angle median above 12"},
        {Figures(1.0F, 9.0F / 20.0F, 0.0F, 0.0F), 1, "9 of 20 is 0.45 in single precision"},
        {Figures(2.0F / 5.0F, 1.0F, 0.0F, 0.0F), 1, "2 of 5 is 0.4 in single precision"},
        {kHopeless, 0, "nothing passes"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(qualityBonus(c.figures, false, 200), c.bonus) << c.why;
        EXPECT_EQ(qualityBonus(c.figures, true, 200), c.bonus) << c.why << ", refined";
    }
}

// Deliberate: the tiers count only for scores that the driver never passes.
TEST(QualityBonus, GivesOneLevelToEveryPassingPairWhateverItsTier) {
    for (const AlignmentEvaluation& figures : {Figures(0.4F, 0.45F, 10.5F, 12.0F),
                                               Figures(0.45F, 0.45F, 10.5F, 11.5F),
                                               Figures(0.52F, 0.5F, 8.75F, 9.5F),
                                               Figures(0.6F, 0.52F, 7.5F, 8.0F),
                                               kPerfect}) {
        for (std::uint32_t score = 29; score <= 1000; ++score) {
            ASSERT_EQ(qualityBonus(figures, false, score), 1U);
            ASSERT_EQ(qualityBonus(figures, true, score), 1U);
        }
    }
}

TEST(QualityBonus, IsTheTierBelowAScoreOf29WithoutRefinement) {
    EXPECT_EQ(qualityBonus(Figures(0.6F, 0.52F, 7.5F, 8.0F), false, 28), 2U);
    EXPECT_EQ(qualityBonus(Figures(JustBelow(0.6F), 0.52F, 7.5F, 8.0F), false, 28), 1U);
    EXPECT_EQ(qualityBonus(Figures(0.6F, JustBelow(0.52F), 7.5F, 8.0F), false, 28), 1U);
    EXPECT_EQ(qualityBonus(Figures(0.6F, 0.52F, JustAbove(7.5F), 8.0F), false, 28), 1U);
    EXPECT_EQ(qualityBonus(Figures(0.6F, 0.52F, 7.5F, JustAbove(8.0F)), false, 28), 1U);
    EXPECT_EQ(qualityBonus(Figures(0.4F, 0.45F, 10.5F, 12.0F), false, 0), 1U);
    EXPECT_EQ(qualityBonus(kHopeless, false, 28), 0U);
}

// The tier, of which refinement makes 2 and 3, and one for a good alignment.
TEST(QualityBonus, GradesFromOneToFourBelowAScoreOf29AfterRefinement) {
    EXPECT_EQ(qualityBonus(kHopeless, true, 28), 0U);
    EXPECT_EQ(qualityBonus(Figures(0.4F, 0.45F, 10.5F, 12.0F), true, 28), 1U);
    EXPECT_EQ(qualityBonus(Figures(0.45F, 0.45F, 10.5F, 11.5F), true, 28), 2U);
    EXPECT_EQ(qualityBonus(Figures(0.52F, 0.5F, 8.75F, 9.5F), true, 28), 3U);
    EXPECT_EQ(qualityBonus(Figures(0.6F, 0.52F, 7.5F, 8.0F), true, 28), 4U);
}

TEST(QualityBonus, HasAMiddleTierWithInclusiveLimits) {
    EXPECT_EQ(qualityBonus(Figures(0.52F, 0.5F, 8.75F, 9.5F), true, 28), 3U);
    EXPECT_EQ(qualityBonus(Figures(JustBelow(0.52F), 0.5F, 8.75F, 9.5F), true, 28), 2U);
    EXPECT_EQ(qualityBonus(Figures(0.52F, JustBelow(0.5F), 8.75F, 9.5F), true, 28), 2U);
    EXPECT_EQ(qualityBonus(Figures(0.52F, 0.5F, JustAbove(8.75F), 9.5F), true, 28), 2U);
    EXPECT_EQ(qualityBonus(Figures(0.52F, 0.5F, 8.75F, JustAbove(9.5F)), true, 28), 2U);
}

// Deliberate: the coverage limit of a good alignment is the matched ratio's, 0.45.
TEST(QualityBonus, HoldsTheCoverageOfAGoodAlignmentAgainstTheRatiosLimit) {
    const std::uint32_t good = qualityBonus(Figures(0.45F, 0.45F, 10.5F, 11.5F), true, 28);
    EXPECT_LT(qualityBonus(Figures(JustBelow(0.45F), 0.45F, 10.5F, 11.5F), true, 28), good);
    EXPECT_LT(qualityBonus(Figures(0.45F, 0.45F, 10.5F, JustAbove(11.5F)), true, 28), good);
}

TEST(QualityPenaltyLevel, FollowsItsLimits) {
    struct Case {
        AlignmentEvaluation figures;
        std::uint32_t level;
        const char* why;
    };
    const std::vector<Case> cases = {
        {kPerfect, 0, "perfect figures"},
        {Figures(0.4F, 0.45F, 9.5F, 12.0F), 0, "all at the limits of level 0"},
        {Figures(JustBelow(0.4F), 0.45F, 9.5F, 12.0F), 1, "coverage below 0.4"},
        {Figures(0.4F, JustBelow(0.45F), 9.5F, 12.0F), 1, "matched ratio below 0.45"},
        {Figures(0.4F, 0.45F, JustAbove(9.5F), 12.0F), 1, "distance median above 9.5"},
        {Figures(0.4F, 0.45F, 9.5F, JustAbove(12.0F)), 1, "angle median above 12"},
        {Figures(0.38F, 0.5F, 11.0F, 14.0F), 1, "all at the limits of level 1"},
        {Figures(JustBelow(0.38F), 0.5F, 0.0F, 0.0F), 2, "coverage below 0.38"},
        {Figures(1.0F, 1.0F, JustAbove(11.0F), 0.0F), 2, "distance median above 11"},
        {Figures(1.0F, 1.0F, 0.0F, JustAbove(14.0F)), 2, "angle median above 14"},
        {Figures(0.32F, 0.5F, 12.5F, 18.0F), 2, "all at the limits of level 2"},
        {Figures(JustBelow(0.32F), 0.5F, 0.0F, 0.0F), 3, "coverage below 0.32"},
        {Figures(1.0F, 1.0F, JustAbove(12.5F), 0.0F), 3, "distance median above 12.5"},
        {Figures(1.0F, 1.0F, 0.0F, JustAbove(18.0F)), 3, "angle median above 18"},
        {Figures(JustBelow(0.4F), JustAbove(0.55F), 0.0F, 0.0F), 4, "many pairs, small patch"},
        {Figures(0.4F, 1.0F, 99.0F, 0.0F), 3, "a coverage of 0.4 is no small patch"},
        {Figures(0.1F, 1.0F, 99.0F, 99.0F), 4, "level 4 replaces level 3"},
        {Figures(0.1F, 11.0F / 20.0F, 0.0F, 0.0F), 3, "11 of 20 is 0.55 in single precision"},
        {Figures(8.0F / 25.0F, 0.5F, 0.0F, 0.0F), 2, "8 of 25 is 0.32 in single precision"},
        {Figures(19.0F / 50.0F, 0.5F, 0.0F, 0.0F), 1, "19 of 50 is 0.38 in single precision"},
        {kHopeless, 3, "nothing passes, but few pairs matched"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(qualityPenaltyLevel(c.figures, 300), c.level) << c.why;
    }
}

TEST(QualityPenaltyLevel, KnowsNoLevelFourBelowAScoreOf33) {
    const AlignmentEvaluation smallPatch = Figures(0.35F, 0.9F, 0.0F, 0.0F);
    EXPECT_EQ(qualityPenaltyLevel(smallPatch, 33), 4U);
    EXPECT_EQ(qualityPenaltyLevel(smallPatch, 32), 2U);
}

TEST(BandedQualityPenaltyLevel, IsZeroOutsideTheBand) {
    for (const std::uint32_t score : {0U, 180U, 289U, 401U, 1000U}) {
        EXPECT_EQ(bandedQualityPenaltyLevel(kHopeless, score), 0U) << score;
    }
    for (const std::uint32_t score : {290U, 345U, 400U}) {
        EXPECT_EQ(bandedQualityPenaltyLevel(kHopeless, score), 3U) << score;
    }
}

TEST(QualityStages, AddAndTakeInTheirBandsOnly) {
    const AlignmentEvaluation thin = Figures(0.3F, 0.55F, 0.0F, 0.0F);
    const AlignmentEvaluation thinButMany = Figures(0.3F, 0.56F, 0.0F, 0.0F);
    // Passes the bonus gate (distance 10 <= 10.5) but costs a penalty level (10 > 9.5).
    const AlignmentEvaluation fair = Figures(0.5F, 0.5F, 10.0F, 5.0F);
    struct Case {
        AlignmentEvaluation figures;
        std::uint32_t before, after;
        const char* why;
    };
    const std::vector<Case> cases = {
        {thin, 295, 265, "no bonus, level 3"},
        {thinButMany, 295, 255, "no bonus, level 4"},
        {thin, 420, 420, "above both bands"},
        {kPerfect, 420, 420, "above both bands"},
        {kPerfect, 179, 179, "below both bands"},
        {kHopeless, 179, 179, "below both bands"},
        {kPerfect, 180, 190, "the bonus band begins at 180"},
        {kPerfect, 310, 320, "and ends at 310"},
        {kPerfect, 311, 311, "above the bonus band, level 0"},
        {kHopeless, 289, 289, "no bonus, below the penalty band"},
        {kHopeless, 290, 260, "the penalty band begins at 290"},
        {kHopeless, 400, 370, "and ends at 400"},
        {kHopeless, 401, 401, "above both bands"},
        {fair, 279, 289, "the bonus leads up to the penalty band"},
        {fair, 280, 280, "the bonus leads into the penalty band: 290 - 10"},
        {fair, 310, 310, "320 - 10"},
        {fair, 311, 301, "no bonus, level 1"},
        {kPerfect, 0, 0, "nothing is nothing"},
        {kPerfect, 1000, 1000, "the greatest score"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(applyQualityStages(c.figures, false, c.before), c.after) << c.why;
        EXPECT_EQ(applyQualityStages(c.figures, true, c.before), c.after) << c.why << ", refined";
    }
}

TEST(ReportedRotation, TurnsStepsIntoDegreesAboveMinus180UpTo180) {
    EXPECT_EQ(reportedRotationDegrees(0), 0.0F);
    EXPECT_EQ(reportedRotationDegrees(-10), -14.0625F);    // -10 * 1.40625
    EXPECT_EQ(reportedRotationDegrees(246), -14.0625F);    // 345.9375 - 360
    EXPECT_EQ(reportedRotationDegrees(128), 180.0F);       // stays
    EXPECT_EQ(reportedRotationDegrees(-128), 180.0F);      // -180 + 360
    EXPECT_EQ(reportedRotationDegrees(129), -178.59375F);  // 181.40625 - 360
    EXPECT_EQ(reportedRotationDegrees(-129), 178.59375F);  // -181.40625 + 360
    EXPECT_EQ(reportedRotationDegrees(255), -1.40625F);    // 358.59375 - 360
    EXPECT_EQ(reportedRotationDegrees(-255), 1.40625F);    // -358.59375 + 360
}

TEST(ReportedRotation, IsTheSameForARotationAndItsReducedForm) {
    for (int steps = -255; steps < 0; ++steps) {
        EXPECT_EQ(reportedRotationDegrees(static_cast<std::int16_t>(steps)),
                  reportedRotationDegrees(static_cast<std::int16_t>(steps + 256)))
            << steps;
    }
}

}  // namespace
}  // namespace orl::matcher
