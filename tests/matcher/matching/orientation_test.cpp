#include "matcher/matching/orientation.h"

#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/triangle_feature.h"
#include "tests/support/naive_matching.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

TEST(TurnedVertex, FollowsTheTableOfQuarterTurns) {
    const TriangleVertex vertex = {10, 40, 200, 2};
    EXPECT_EQ(turnedVertex(vertex, 0), (TriangleVertex{10, 40, 200, 2}));
    EXPECT_EQ(turnedVertex(vertex, 1), (TriangleVertex{215, 10, 8, 2}));    // 200 + 64 - 256
    EXPECT_EQ(turnedVertex(vertex, 2), (TriangleVertex{245, 215, 72, 2}));  // 200 + 128 - 256
    EXPECT_EQ(turnedVertex(vertex, 3), (TriangleVertex{40, 245, 136, 2}));  // 200 + 192 - 256
}

TEST(TurnedVertex, WrapsDirectionsAt256) {
    EXPECT_EQ(turnedVertex({0, 0, 191, 0}, 1).angle, 255);
    EXPECT_EQ(turnedVertex({0, 0, 192, 0}, 1).angle, 0);
    EXPECT_EQ(turnedVertex({0, 0, 255, 0}, 1).angle, 63);
}

TEST(TurnedVertex, ComesBackAfterFourQuarterTurns) {
    for (unsigned i = 0; i < 256; ++i) {
        const TriangleVertex vertex = {static_cast<std::uint8_t>(i),
                                       static_cast<std::uint8_t>(7 * i + 3),
                                       static_cast<std::uint8_t>(5 * i + 1),
                                       static_cast<std::uint8_t>(i % 4)};
        TriangleVertex turned = vertex;
        for (std::uint32_t turns = 1; turns < 4; ++turns) {
            turned = turnedVertex(turned, 1);
            EXPECT_EQ(turned, turnedVertex(vertex, turns)) << i;
        }
        EXPECT_EQ(turnedVertex(turned, 1), vertex) << i;
    }
}

TEST(OrientationCopy, PutsTheTurnedVerticesIntoTheirOrderAgain) {
    const TriangleFeature triangle =
        MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 1}, {20, 30, 3, 2});
    const TriangleFeature turned = orientationCopy(std::vector{triangle}, 2).at(0);
    // Turned vertices (245,245) (225,245) (235,225); weighted centre x (235 + 235) / 2 = 235,
    // y (245 + 225) / 2 = 235; bearings of (10,10) 32, (-10,10) 96, (0,-10) -64.
    EXPECT_EQ(turned.vertices[0], (TriangleVertex{235, 225, 131, 2}));
    EXPECT_EQ(turned.vertices[1], (TriangleVertex{245, 245, 129, 0}));
    EXPECT_EQ(turned.vertices[2], (TriangleVertex{225, 245, 130, 1}));
    // Side lengths 20 and twice sqrt(10^2 + 20^2) = 22.4 stay.
    EXPECT_EQ(turned.sides[0], 22);
    EXPECT_EQ(turned.sides[1], 22);
    EXPECT_EQ(turned.sides[2], 20);
    EXPECT_EQ(turned.sides[3], 0);
}

TEST(OrientationCopy, RebuildsTheSideBytesInsteadOfCopyingThem) {
    TriangleFeature triangle = MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 1}, {20, 30, 3, 2});
    const TriangleFeature sound = orientationCopy(std::vector{triangle}, 1).at(0);
    triangle.sides[0] = 99;
    triangle.sides[3] = 7;
    EXPECT_EQ(orientationCopy(std::vector{triangle}, 1).at(0), sound);
}

TEST(OrientationCopy, SortsTheCopiesAsSignedBytesAndKeepsTheOrderOfEqualKeys) {
    const TriangleFeature small =
        MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 0}, {20, 30, 3, 0});
    TriangleFeature alike = small;
    alike.vertices[0].angle = 77;
    // Sides 140, 140 and 198 are negative as signed bytes.
    const TriangleFeature large =
        MakeTriangleFeature({10, 10, 1, 0}, {150, 10, 2, 0}, {10, 150, 3, 0});
    for (std::uint32_t orientation = 1; orientation < 4; ++orientation) {
        const auto copy = orientationCopy(std::vector{small, alike, large}, orientation);
        ASSERT_EQ(copy.size(), 3U);
        EXPECT_EQ(copy[0], orientationCopy(std::vector{large}, orientation).at(0));
        EXPECT_EQ(copy[1], orientationCopy(std::vector{small}, orientation).at(0));
        EXPECT_EQ(copy[2], orientationCopy(std::vector{alike}, orientation).at(0));
        const auto swapped = orientationCopy(std::vector{alike, small, large}, orientation);
        EXPECT_EQ(swapped[1], copy[2]);
        EXPECT_EQ(swapped[2], copy[1]);
    }
}

TEST(OrientationCopy, KeepsTheOrderOfManyTrianglesOfEqualKey) {
    std::vector<TriangleFeature> triangles;
    for (std::uint8_t i = 0; i < 50; ++i) {
        triangles.push_back(MakeTriangleFeature({10, 10, i, 0}, {30, 10, i, 0}, {20, 30, i, 0}));
    }
    const auto copy = orientationCopy(triangles, 2);
    ASSERT_EQ(copy.size(), 50U);
    for (std::size_t i = 0; i < copy.size(); ++i) {
        EXPECT_EQ(copy[i].vertices[0].angle, i + 128) << i;
    }
}

TEST(OrientationCopy, OfNoTrianglesIsEmpty) {
    EXPECT_TRUE(orientationCopy({}, 1).empty());
}

TEST(OrientationCopy, AgreesWithThePlainRotationOnRandomTriangles) {
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 40 : 3;
        const auto triangles = test::RandomTriangles(random, 200, extent);
        for (int turns = 1; turns < 4; ++turns) {
            ASSERT_EQ(orientationCopy(triangles, static_cast<std::uint32_t>(turns)),
                      naive::Turned(triangles, turns));
        }
    }
}

}  // namespace
}  // namespace orl::matcher
