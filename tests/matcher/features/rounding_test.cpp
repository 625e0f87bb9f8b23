#include "matcher/features/rounding.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

TEST(RoundHalfUp, GivesWhatLroundGivesForEveryPixelOfEveryImageScale) {
    constexpr float kGridUnits = 256.0F;
    constexpr std::uint16_t kWidths[] = {
        1,   2,   3,   7,   64,  96,  255, 256, 257, 292, 300,  328,  364,  374,  388,   400,  480,
        500, 504, 508, 512, 560, 620, 640, 750, 800, 999, 1000, 1023, 2000, 4096, 16383, 65535};
    constexpr int kMaxPixels = 65535;
    for (const std::uint16_t width : kWidths) {
        const float scale = kGridUnits / static_cast<float>(width);
        for (int x = 0; x <= kMaxPixels; ++x) {
            const float value = static_cast<float>(x) * scale;
            ASSERT_EQ(RoundHalfUp(value), std::lround(value)) << x << " pixels of " << width;
        }
    }
}

TEST(RoundHalfUp, RoundsHalvesUpAndWhatLiesNextToThemToTheNearest) {
    for (int whole = 0; whole < (1 << 20); ++whole) {
        const float half = static_cast<float>(whole) + 0.5F;
        for (const float value : {half, std::nextafterf(half, 0.0F), std::nextafterf(half, 1e9F)}) {
            // Exact in double precision; lround itself is off below one half on some platforms.
            const double rounded = std::floor(static_cast<double>(value) + 0.5);
            ASSERT_EQ(static_cast<double>(RoundHalfUp(value)), rounded) << value;
        }
    }
}

TEST(RoundHalfUp, LeavesWholeNumbersBeyondTheLastFractionAsTheyAre) {
    for (const float value : {8388607.5F, 8388608.0F, 16777215.0F, 16777216.0F, 2147483520.0F}) {
        EXPECT_EQ(RoundHalfUp(value), std::lround(value)) << value;
    }
    EXPECT_EQ(RoundHalfUp(std::numeric_limits<float>::denorm_min()), 0);
}

}  // namespace
}  // namespace orl::matcher
