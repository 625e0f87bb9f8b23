#include "tools/orl_finger/master_finger.h"

#include <cmath>

#include <gtest/gtest.h>

namespace orl::tools {
namespace {

constexpr std::uint64_t kSeeds = 50;

TEST(MasterFinger, KeepsMinutiaeMoreThanARidgeApartAndOnThePad) {
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        RandomStream random(seed);
        const MasterFinger finger = drawFinger(random);
        EXPECT_NEAR(finger.ridgePeriod, 9.5, 3.0) << "seed " << seed;
        EXPECT_GE(finger.minutiae.size(), 55U) << "seed " << seed;
        EXPECT_LE(finger.minutiae.size(), 85U) << "seed " << seed;
        for (std::size_t i = 0; i < finger.minutiae.size(); ++i) {
            const Vector& a = finger.minutiae[i].place;
            const double u = a.x / finger.flow.pad.halfWidth;
            const double v = a.y / finger.flow.pad.halfHeight;
            EXPECT_LE(u * u + v * v, 1.0) << "seed " << seed;
            for (std::size_t j = 0; j < i; ++j) {
                const Vector& b = finger.minutiae[j].place;
                EXPECT_GT(std::hypot(a.x - b.x, a.y - b.y), finger.ridgePeriod) << "seed " << seed;
            }
        }
    }
}

TEST(MasterFinger, LaysMinutiaeAlongTheRidgesBothWays) {
    int forward = 0;
    int total = 0;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        RandomStream random(seed);
        const MasterFinger finger = drawFinger(random);
        for (const ModelMinutia& minutia : finger.minutiae) {
            const double along = minutia.direction - orientationAt(finger.flow, minutia.place);
            EXPECT_NEAR(along - 0.5 * std::round(along / 0.5), 0.0, 1e-12) << "seed " << seed;
            forward += along < 0.25 ? 1 : 0;
            ++total;
        }
    }
    // Within four standard errors of a half.
    EXPECT_NEAR(static_cast<double>(forward) / total, 0.5, 4.0 * 0.5 / std::sqrt(total));
}

}  // namespace
}  // namespace orl::tools
