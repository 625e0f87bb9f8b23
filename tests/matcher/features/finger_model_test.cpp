#include "matcher/features/finger_model.h"

#include <cstddef>

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

static_assert(offsetof(TriangleVertex, x) == 0);
static_assert(offsetof(TriangleVertex, y) == 1);
static_assert(offsetof(TriangleVertex, angle) == 2);
static_assert(offsetof(TriangleVertex, type) == 3);
static_assert(offsetof(TriangleFeature, vertices) == 0);
static_assert(offsetof(TriangleFeature, sides) == 12);
static_assert(sizeof(Minutia::type) == 4 && sizeof(Minutia::x) == 2 && sizeof(Minutia::y) == 2 &&
              sizeof(Minutia::angle) == 2);
static_assert(sizeof(ImageSize) == 4);

TEST(AngleByte, BecomesDegreesInTheOtherDirectionOfRotation) {
    EXPECT_EQ(DegreesFromAngleByte(0), 360);
    EXPECT_EQ(DegreesFromAngleByte(1), 358);  // 358.59
    EXPECT_EQ(DegreesFromAngleByte(64), 270);
    EXPECT_EQ(DegreesFromAngleByte(128), 180);
    EXPECT_EQ(DegreesFromAngleByte(192), 90);
    EXPECT_EQ(DegreesFromAngleByte(255), 1);  // 1.41
}

TEST(AngleByte, GivesTheWholeDegreesBelowTheExactAngleForAll256Bytes) {
    for (int angleByte = 0; angleByte <= 255; ++angleByte) {
        // A step is 45/32 of a degree: 360 - a * 45/32 = (11520 - 45a) / 32, cut to whole degrees.
        const int expected = (11520 - 45 * angleByte) / 32;
        const int degrees = DegreesFromAngleByte(static_cast<std::uint8_t>(angleByte));
        EXPECT_EQ(degrees, expected) << "byte " << angleByte;
        EXPECT_GE(degrees, 1) << "byte " << angleByte;
        EXPECT_LE(degrees, 360) << "byte " << angleByte;
    }
}

}  // namespace
}  // namespace orl::matcher
