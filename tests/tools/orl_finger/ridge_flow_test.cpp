#include "tools/orl_finger/ridge_flow.h"

#include <array>
#include <cmath>
#include <map>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

constexpr PatternClass kPatterns[] = {PatternClass::kLeftLoop,
                                      PatternClass::kRightLoop,
                                      PatternClass::kWhorl,
                                      PatternClass::kArch,
                                      PatternClass::kTentedArch};
constexpr PadShape kPad{150, 190};

// The step from one orientation to the next, the short way: -0.25 to 0.25 turns.
double shortStep(double from, double to) {
    double step = to - from;
    step -= 0.5 * std::round(step / 0.5);
    return step;
}

// How far the orientation turns on a small counter-clockwise circle: half a turn forward round a
// core, half a turn back round a delta, nothing elsewhere.
double turnsRound(const RidgeFlow& flow, const Vector& centre) {
    constexpr int kSteps = 360;
    constexpr double kRadius = 2.0;
    double sum = 0.0;
    double last = orientationAt(flow, {centre.x + kRadius, centre.y});
    for (int i = 1; i <= kSteps; ++i) {
        const Vector spoke = rotated({kRadius, 0.0}, static_cast<double>(i) / kSteps);
        const double next = orientationAt(flow, {centre.x + spoke.x, centre.y + spoke.y});
        sum += shortStep(last, next);
        last = next;
    }
    return sum;
}

TEST(RidgeFlow, TurnsHalfATurnRoundCoresAndBackRoundDeltas) {
    for (const PatternClass pattern : kPatterns) {
        for (std::uint64_t seed = 1; seed <= 20; ++seed) {
            RandomStream random(seed);
            const RidgeFlow flow = drawFlow(pattern, kPad, random);
            for (const Vector& core : flow.cores) {
                EXPECT_NEAR(turnsRound(flow, core), 0.5, 1e-6) << "seed " << seed;
            }
            for (const Vector& delta : flow.deltas) {
                EXPECT_NEAR(turnsRound(flow, delta), -0.5, 1e-6) << "seed " << seed;
            }
            EXPECT_NEAR(turnsRound(flow, {kPad.halfWidth, kPad.halfHeight}), 0.0, 1e-6);
        }
    }
}

TEST(RidgeFlow, GivesEachPatternItsCoresAndDeltas) {
    std::map<PatternClass, std::array<std::size_t, 2>> counts;
    for (const PatternClass pattern : kPatterns) {
        RandomStream random(1);
        const RidgeFlow flow = drawFlow(pattern, kPad, random);
        counts[pattern] = {flow.cores.size(), flow.deltas.size()};
        for (const Vector& delta : flow.deltas) {
            EXPECT_LT(delta.y, flow.cores[0].y);  // deltas lie below
        }
    }
    const std::map<PatternClass, std::array<std::size_t, 2>> expected{
        {PatternClass::kLeftLoop, {1, 1}},
        {PatternClass::kRightLoop, {1, 1}},
        {PatternClass::kWhorl, {2, 2}},
        {PatternClass::kArch, {0, 0}},
        {PatternClass::kTentedArch, {1, 1}}};
    EXPECT_EQ(counts, expected);
}

TEST(RidgeFlow, PutsTheDeltaOppositeTheSideWhereTheLoopOpens) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        RandomStream left(seed);
        const RidgeFlow leftLoop = drawFlow(PatternClass::kLeftLoop, kPad, left);
        EXPECT_GT(leftLoop.deltas[0].x, leftLoop.cores[0].x);
        RandomStream right(seed);
        const RidgeFlow rightLoop = drawFlow(PatternClass::kRightLoop, kPad, right);
        EXPECT_LT(rightLoop.deltas[0].x, rightLoop.cores[0].x);
    }
}

TEST(RidgeFlow, RunsAnArchUpFromTheLeftAndDownToTheRight) {
    RandomStream random(4);
    const RidgeFlow arch = drawFlow(PatternClass::kArch, kPad, random);
    EXPECT_NEAR(orientationAt(arch, {0, 0}), 0.0, 1e-9);  // level in the middle
    const double left = orientationAt(arch, {-75, 0});
    const double right = orientationAt(arch, {75, 0});
    EXPECT_GT(left, 0.02);
    EXPECT_LT(left, 0.25);
    EXPECT_NEAR(left + right, 0.5, 1e-9);  // mirrored
}

TEST(RidgeFlow, DrawsPatternsAsOftenAsTheyAreFound) {
    constexpr int kDraws = 20000;
    const std::map<PatternClass, double> shares{{PatternClass::kLeftLoop, 0.338},
                                                {PatternClass::kRightLoop, 0.317},
                                                {PatternClass::kWhorl, 0.279},
                                                {PatternClass::kArch, 0.037},
                                                {PatternClass::kTentedArch, 0.029}};
    RandomStream random(6);
    std::map<PatternClass, int> drawn;
    for (int i = 0; i < kDraws; ++i) {
        ++drawn[drawPattern(random)];
    }
    for (const auto& [pattern, share] : shares) {
        const double standardError = std::sqrt(share * (1.0 - share) / kDraws);
        EXPECT_NEAR(static_cast<double>(drawn[pattern]) / kDraws, share, 4.0 * standardError);
    }
}

}  // namespace
}  // namespace orl::tools
