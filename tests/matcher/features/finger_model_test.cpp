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

TEST(Minutia, EqualsAnotherWhenAllFieldsDo) {
    const Minutia minutia = {.x = 1, .y = 2, .angle = 3};
    EXPECT_TRUE(minutia == (Minutia{.x = 1, .y = 2, .angle = 3}));
    EXPECT_FALSE(minutia == (Minutia{.x = 4, .y = 2, .angle = 3}));
    EXPECT_FALSE(minutia == (Minutia{.x = 1, .y = 4, .angle = 3}));
    EXPECT_FALSE(minutia == (Minutia{.x = 1, .y = 2, .angle = 4}));
    Minutia ofOtherType = minutia;
    ofOtherType.type = 1;
    EXPECT_FALSE(minutia == ofOtherType);
}

TEST(ImageSize, EqualsAnotherWhenBothSidesDo) {
    const ImageSize size = {.width = 300, .height = 400};
    EXPECT_TRUE(size == (ImageSize{.width = 300, .height = 400}));
    EXPECT_FALSE(size == (ImageSize{.width = 301, .height = 400}));
    EXPECT_FALSE(size == (ImageSize{.width = 300, .height = 401}));
}

TEST(TriangleFeature, EqualsAnotherWhenAllBytesDo) {
    const TriangleFeature feature = {.vertices = {{1, 2, 3, 0}, {4, 5, 6, 1}, {7, 8, 9, 2}},
                                     .sides = {50, 40, 30, 0}};
    EXPECT_TRUE(feature == TriangleFeature(feature));
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::uint8_t TriangleVertex::*const field : {&TriangleVertex::x,
                                                          &TriangleVertex::y,
                                                          &TriangleVertex::angle,
                                                          &TriangleVertex::type}) {
            TriangleFeature other = feature;
            other.vertices[i].*field = 77;
            EXPECT_FALSE(feature == other);
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        TriangleFeature other = feature;
        other.sides[i] = 77;
        EXPECT_FALSE(feature == other);
    }
}

TEST(FingerModel, HoldsNothingUntilItIsFilled) {
    EXPECT_EQ(FingerFeatures{}.minutiaCount, 0U);
    EXPECT_EQ(FullFingerFeatures{}.minutiaCount, 0U);
    EXPECT_EQ(FullFingerFeatures{}.imageSize, (ImageSize{.width = 0, .height = 0}));
    EXPECT_EQ(TriangleFeature{},
              (TriangleFeature{.vertices = {{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}},
                               .sides = {0, 0, 0, 0}}));
    EXPECT_EQ(Minutia{}, (Minutia{.type = {}, .x = 0, .y = 0, .angle = 0}));
}

}  // namespace
}  // namespace orl::matcher
