#include "tools/orl_finger/ridge_flow.h"

namespace orl::tools {
namespace {

double argumentSum(const std::vector<Vector>& centres, const Vector& point) {
    double sum = 0.0;
    for (const Vector& centre : centres) {
        sum += turnsOfVector(point.y - centre.y, point.x - centre.x);
    }
    return sum;
}

// Slope added at a point: none on the middle line, falling to the right and rising to the left.
// A plain arch bends most at mid-height and is level at its foot and top; the other patterns bend
// more the nearer the finger's tip.
double bendAt(const RidgeFlow& flow, const Vector& point) {
    const double across = point.x / flow.pad.halfWidth;
    const double upward = 0.5 * (1.0 + point.y / flow.pad.halfHeight);
    if (flow.pattern != PatternClass::kArch) {
        return -flow.bendTurns * across * upward;
    }
    constexpr double kPeakOfParabola = 4.0;      // 1 / max of h(1-h)
    constexpr double kPeakOfCubic = 2.59807621;  // 1 / max of u(1-u^2)
    const double height = kPeakOfParabola * upward * (1.0 - upward);
    const double slope = kPeakOfCubic * across * (1.0 - across * across);
    return -flow.bendTurns * height * slope;
}

void placeLoop(RidgeFlow& flow, double deltaSide, RandomStream& random) {
    const Vector core{random.normal(0, 10), random.normal(20, 12)};
    flow.cores = {core};
    flow.deltas = {
        {core.x + deltaSide * random.between(75, 115), core.y - random.between(80, 130)}};
}

void placeWhorl(RidgeFlow& flow, RandomStream& random) {
    const Vector middle{random.normal(0, 10), random.normal(15, 12)};
    const double halfGap = random.between(8, 30);
    const double lean = random.normal(0, 6);
    flow.cores = {{middle.x + lean, middle.y + halfGap}, {middle.x - lean, middle.y - halfGap}};
    flow.deltas = {{middle.x - random.between(85, 125), middle.y - random.between(85, 130)},
                   {middle.x + random.between(85, 125), middle.y - random.between(85, 130)}};
}

void placeTentedArch(RidgeFlow& flow, RandomStream& random) {
    const Vector core{random.normal(0, 8), random.normal(5, 12)};
    flow.cores = {core};
    flow.deltas = {{core.x + random.normal(0, 5), core.y - random.between(55, 100)}};
}

}  // namespace

PatternClass drawPattern(RandomStream& random) {
    constexpr double kLeftLoops = 0.338;
    constexpr double kLoops = kLeftLoops + 0.317;
    constexpr double kLoopsAndWhorls = kLoops + 0.279;
    constexpr double kAllButTentedArches = kLoopsAndWhorls + 0.037;
    const double draw = random.uniform();
    if (draw < kLeftLoops) {
        return PatternClass::kLeftLoop;
    }
    if (draw < kLoops) {
        return PatternClass::kRightLoop;
    }
    if (draw < kLoopsAndWhorls) {
        return PatternClass::kWhorl;
    }
    return draw < kAllButTentedArches ? PatternClass::kArch : PatternClass::kTentedArch;
}

RidgeFlow drawFlow(PatternClass pattern, const PadShape& pad, RandomStream& random) {
    RidgeFlow flow;
    flow.pattern = pattern;
    flow.pad = pad;
    flow.bendTurns = random.between(0.05, 0.10);
    switch (pattern) {
        case PatternClass::kLeftLoop:  // ridges come and go on the left, so the delta is on the
                                       // right
            placeLoop(flow, 1.0, random);
            break;
        case PatternClass::kRightLoop:
            placeLoop(flow, -1.0, random);
            break;
        case PatternClass::kWhorl:
            placeWhorl(flow, random);
            break;
        case PatternClass::kTentedArch:
            placeTentedArch(flow, random);
            break;
        case PatternClass::kArch:
            flow.bendTurns = random.between(0.07, 0.13);
            break;
    }
    return flow;
}

double orientationAt(const RidgeFlow& flow, const Vector& point) {
    const double argument = argumentSum(flow.cores, point) - argumentSum(flow.deltas, point);
    return 0.5 * wrappedTurns(2.0 * (0.5 * argument + bendAt(flow, point)));
}

}  // namespace orl::tools
