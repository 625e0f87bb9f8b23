#include "tools/orl_finger/master_finger.h"

namespace orl::tools {
namespace {

constexpr double kMeanRidgePeriodPixels = 9.5;
constexpr double kRidgePeriodDeviationPixels = 0.5;
constexpr double kSpacingInRidgePeriods = 1.2;
constexpr double kEndingShare = 0.6;

// Minutiae are about twice as dense at a core or delta as far from it; the reach is where half of
// the surplus is left.
constexpr double kDensityReachPixels = 45.0;

// Share of the greatest density, 0.5 to 1.
double densityAt(const RidgeFlow& flow, const Vector& point) {
    double nearest = 0.0;
    for (const std::vector<Vector>* centres : {&flow.cores, &flow.deltas}) {
        for (const Vector& centre : *centres) {
            const double ratio =
                lengthOf({point.x - centre.x, point.y - centre.y}) / kDensityReachPixels;
            const double nearness = 1.0 / (1.0 + ratio * ratio);
            nearest = nearness > nearest ? nearness : nearest;
        }
    }
    return 0.5 + 0.5 * nearest;
}

// Throws darts at the pad until `count` have stuck, or too many have missed.
void scatterMinutiae(MasterFinger& finger, std::size_t count, RandomStream& random) {
    constexpr int kMaxDarts = 4000;
    const double spacing = kSpacingInRidgePeriods * finger.ridgePeriod;
    for (int dart = 0; dart < kMaxDarts && finger.minutiae.size() < count; ++dart) {
        const Vector point = drawPointInPad(finger.flow.pad, random);
        if (random.chance(densityAt(finger.flow, point)) &&
            keepsApart(point, finger.minutiae, spacing)) {
            finger.minutiae.push_back(drawMinutiaAt(finger.flow, point, random));
        }
    }
}

}  // namespace

bool keepsApart(const Vector& point, const std::vector<ModelMinutia>& minutiae, double distance) {
    for (const ModelMinutia& other : minutiae) {
        if (lengthOf({point.x - other.place.x, point.y - other.place.y}) < distance) {
            return false;
        }
    }
    return true;
}

ModelMinutia drawMinutiaAt(const RidgeFlow& flow, const Vector& point, RandomStream& random) {
    constexpr double kHalfTurn = 0.5;
    ModelMinutia minutia;
    minutia.place = point;
    minutia.direction = orientationAt(flow, point) + (random.chance(0.5) ? kHalfTurn : 0.0);
    minutia.kind = random.chance(kEndingShare) ? MinutiaKind::kEnding : MinutiaKind::kBifurcation;
    return minutia;
}

Vector drawPointInPad(const PadShape& pad, RandomStream& random) {
    for (;;) {
        const Vector unit{random.between(-1, 1), random.between(-1, 1)};
        if (unit.x * unit.x + unit.y * unit.y <= 1.0) {
            return {unit.x * pad.halfWidth, unit.y * pad.halfHeight};
        }
    }
}

MasterFinger drawFinger(RandomStream& random) {
    constexpr int kFewestMinutiae = 55;
    constexpr int kMostMinutiae = 85;
    MasterFinger finger;
    finger.ridgePeriod = random.normal(kMeanRidgePeriodPixels, kRidgePeriodDeviationPixels);
    const PadShape pad{random.between(140, 170), random.between(170, 210)};
    const PatternClass pattern = drawPattern(random);
    finger.flow = drawFlow(pattern, pad, random);
    const int count = random.wholeBetween(kFewestMinutiae, kMostMinutiae);
    scatterMinutiae(finger, static_cast<std::size_t>(count), random);
    return finger;
}

}  // namespace orl::tools
