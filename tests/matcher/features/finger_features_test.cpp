#include "matcher/features/finger_features.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/matcher/features/plain_features.h"

namespace orl::matcher {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr ImageSize kImage{.width = 400, .height = 400};

MinutiaList RandomFinger(std::mt19937& random, std::size_t count, const ImageSize& size) {
    MinutiaList minutiae;
    while (minutiae.size() < count) {
        Minutia minutia;
        minutia.type = random() % 4;
        minutia.x = static_cast<std::uint16_t>(random() % size.width);
        minutia.y = static_cast<std::uint16_t>(random() % size.height);
        minutia.angle = static_cast<std::uint16_t>(1 + random() % 360);
        minutiae.push_back(minutia);
    }
    return minutiae;
}

MinutiaList Finger(std::size_t count) {
    std::mt19937 random(static_cast<std::uint32_t>(count));
    return RandomFinger(random, count, kImage);
}

// Three minutiae that make one triangle.
const MinutiaList kThree = {{.type = 1, .x = 100, .y = 100, .angle = 360},
                            {.type = 2, .x = 300, .y = 100, .angle = 90},
                            {.type = 3, .x = 200, .y = 300, .angle = 180}};

TEST(BuildFingerFeatures, ReturnsTrueAndAppendsNothingForNoFinger) {
    std::vector<FingerFeatures> features;
    EXPECT_TRUE(BuildFingerFeatures(features, kImage, {}));
    EXPECT_THAT(features, IsEmpty());
    EXPECT_TRUE(BuildFingerFeatures(features, ImageSize{}, {}));
}

TEST(BuildFingerFeatures, MakesTheFeatureOfOneTriangle) {
    // Scale 256 / 400 = 0.64: (64, 64), (192, 64), (128, 192); angles 255, 64 (63.75), 128 (127.5).
    // The box centre (200, 200) is nearest to minutia 2, which is equally far from 0 and 1, so the
    // seed is 2, 0, 1; Orient = (-200)(200) - (-100)(0) < 0 turns it to 2, 1, 0.
    // Centre: x ((128 + 192) / 2 + 64) / 2 = 112, y ((192 + 64) / 2 + 64) / 2 = 96. Bearings of 2
    // at (16, 96): 57, of 1 at (80, -32): -15, of 0 at (-48, -32): -104. Order 0, 1, 2. Sides 128,
    // sqrt(64^2 + 128^2) = 143.1 twice; as signed bytes -128, -113, -113.
    const std::vector<MinutiaList> fingers = {kThree};
    std::vector<FingerFeatures> features;
    ASSERT_TRUE(BuildFingerFeatures(features, kImage, fingers));
    ASSERT_THAT(features, SizeIs(1));
    EXPECT_EQ(features[0].minutiaCount, 3U);
    ASSERT_THAT(features[0].triangles, SizeIs(1));
    const TriangleFeature& triangle = features[0].triangles[0];
    EXPECT_EQ(triangle.vertices[0], (TriangleVertex{.x = 64, .y = 64, .angle = 255, .type = 1}));
    EXPECT_EQ(triangle.vertices[1], (TriangleVertex{.x = 192, .y = 64, .angle = 64, .type = 2}));
    EXPECT_EQ(triangle.vertices[2], (TriangleVertex{.x = 128, .y = 192, .angle = 128, .type = 3}));
    EXPECT_THAT(triangle.sides, ElementsAre(143, 255, 255, 255));
}

TEST(BuildFingerFeatures, ReturnsFalseForTooFewOrTooManyMinutiae) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{1}, kMaxMinutiae + 1}) {
        const std::vector<MinutiaList> fingers = {Finger(count)};
        std::vector<FingerFeatures> features;
        EXPECT_FALSE(BuildFingerFeatures(features, kImage, fingers)) << count << " minutiae";
        EXPECT_THAT(features, IsEmpty());
    }
}

TEST(BuildFingerFeatures, BuildsAFingerOf128Minutiae) {
    const std::vector<MinutiaList> fingers = {Finger(kMaxMinutiae)};
    std::vector<FingerFeatures> features;
    EXPECT_TRUE(BuildFingerFeatures(features, kImage, fingers));
    ASSERT_THAT(features, SizeIs(1));
    EXPECT_EQ(features[0].minutiaCount, 128U);
}

TEST(BuildFingerFeatures, LetsTheErrorOfAFingerWithTwoMinutiaePass) {
    const std::vector<MinutiaList> fingers = {kThree, Finger(2), kThree};
    std::vector<FingerFeatures> features;
    try {
        BuildFingerFeatures(features, kImage, fingers);
        ADD_FAILURE() << "two points make no triangle";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "not triangulation");
    }
    EXPECT_THAT(features, SizeIs(1));  // the first finger stays, nothing of the second
}

TEST(BuildFingerFeatures, KeepsEarlierFingersWhenALaterOneHasTooFewMinutiae) {
    const std::vector<MinutiaList> fingers = {kThree, Finger(20), Finger(1), kThree};
    std::vector<FingerFeatures> features(1);
    EXPECT_FALSE(BuildFingerFeatures(features, kImage, fingers));
    ASSERT_THAT(features, SizeIs(3));  // one was there before
    EXPECT_EQ(features[1].minutiaCount, 3U);
    EXPECT_EQ(features[2].minutiaCount, 20U);
}

// The vertex that a minutia at (x, y) becomes in an image of this size.
TriangleVertex VertexIn(const ImageSize& size, std::uint16_t x, std::uint16_t y) {
    // Two more minutiae, of type 0, make a triangle with it.
    const MinutiaList minutiae = {{.type = 3, .x = x, .y = y, .angle = 1},
                                  {.x = static_cast<std::uint16_t>(x + 7), .y = y, .angle = 1},
                                  {.x = x, .y = static_cast<std::uint16_t>(y + 5), .angle = 1}};
    const std::vector<MinutiaList> fingers = {minutiae};
    std::vector<FingerFeatures> features;
    EXPECT_TRUE(BuildFingerFeatures(features, size, fingers));
    for (const TriangleVertex& vertex : features[0].triangles[0].vertices) {
        if (vertex.type == 3) {
            return vertex;
        }
    }
    ADD_FAILURE() << "the minutia is no vertex";
    return {};
}

TEST(BuildFingerFeatures, ScalesBothAxesByTheLargerSide) {
    constexpr ImageSize kTall{.width = 256, .height = 400};
    // 0.64: the last column 255 is 163.2, the last row 399 is 255.36.
    EXPECT_EQ(VertexIn(kTall, 255, 399).x, 163);
    EXPECT_EQ(VertexIn(kTall, 255, 399).y, 255);
    constexpr ImageSize kWide{.width = 512, .height = 100};
    // 0.5: 101 is 50.5, which rounds up, 99 is 49.5, which does too.
    EXPECT_EQ(VertexIn(kWide, 101, 99).x, 51);
    EXPECT_EQ(VertexIn(kWide, 101, 99).y, 50);
    constexpr ImageSize kOneSided{.width = 0, .height = 256};
    EXPECT_EQ(VertexIn(kOneSided, 17, 200).x, 17);
}

// Deliberate: bytes keep the low 8 bits, they are not clamped.
TEST(BuildFingerFeatures, WrapsAMinutiaOnTheFarEdgeToZero) {
    EXPECT_EQ(VertexIn({.width = 400, .height = 300}, 400, 10).x, 0);    // 256
    EXPECT_EQ(VertexIn({.width = 256, .height = 256}, 300, 511).x, 44);  // 300 - 256
    EXPECT_EQ(VertexIn({.width = 256, .height = 256}, 300, 511).y, 255);
    EXPECT_EQ(VertexIn({.width = 1, .height = 1}, 16000, 3).x, 0);  // 4096000 is 16000 * 256
}

TEST(BuildFingerFeatures, ScalesInSinglePrecision) {
    constexpr ImageSize kOdd{.width = 388, .height = 374};
    const float scale = 256.0F / 388.0F;
    for (std::uint16_t x = 0; x < 388; ++x) {
        const float scaled = static_cast<float>(x) * scale;
        EXPECT_EQ(VertexIn(kOdd, x, 3).x, static_cast<int>(std::lround(scaled)) & 0xFF) << x;
    }
}

TEST(BuildFingerFeatures, SortsTheTrianglesFromLastToFirstKeepingEqualKeysInThatOrder) {
    std::mt19937 random(4711);
    const ImageSize sizes[] = {{388, 374}, {256, 400}, {300, 300}, {64, 64}, {1000, 100}};
    for (int round = 0; round < 300; ++round) {
        const ImageSize& size = sizes[static_cast<std::size_t>(round) % 5];
        const std::vector<MinutiaList> fingers = {RandomFinger(random, 3 + random() % 126, size)};
        std::vector<FingerFeatures> features;
        ASSERT_TRUE(BuildFingerFeatures(features, size, fingers)) << "round " << round;
        ASSERT_EQ(features[0].triangles, test::PlainFeatures(fingers[0], size))
            << "round " << round;
    }
}

TEST(BuildFingerFeatures, TrimsTheTrianglesStorage) {
    const std::vector<MinutiaList> fingers = {kThree, Finger(90)};
    std::vector<FingerFeatures> features;
    ASSERT_TRUE(BuildFingerFeatures(features, kImage, fingers));
    for (const FingerFeatures& finger : features) {
        EXPECT_EQ(finger.triangles.capacity(), finger.triangles.size());
    }
}

TEST(BuildFingerFeatures, KeepsImageSizeAndMinutiaeInTheFullForm) {
    const std::vector<MinutiaList> fingers = {kThree, Finger(50)};
    constexpr ImageSize kSize{.width = 388, .height = 374};
    std::vector<FullFingerFeatures> full;
    std::vector<FingerFeatures> compact;
    ASSERT_TRUE(BuildFingerFeatures(full, kSize, fingers));
    ASSERT_TRUE(BuildFingerFeatures(compact, kSize, fingers));
    ASSERT_THAT(full, SizeIs(2));
    for (std::size_t i = 0; i < full.size(); ++i) {
        EXPECT_EQ(full[i].minutiaCount, fingers[i].size());
        EXPECT_EQ(full[i].imageSize, kSize);
        EXPECT_EQ(full[i].minutiae, fingers[i]);
        EXPECT_EQ(full[i].triangles, compact[i].triangles);
    }
}

TEST(BuildFingerFeatures, GivesTheSameFeaturesOnSeveralThreadsAtOnce) {
    const std::vector<MinutiaList> fingers = {Finger(60), kThree, Finger(128)};
    std::vector<FingerFeatures> expected;
    ASSERT_TRUE(BuildFingerFeatures(expected, kImage, fingers));
    std::vector<std::vector<FingerFeatures>> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (auto& result : results) {
        threads.emplace_back([&fingers, &result] { BuildFingerFeatures(result, kImage, fingers); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& result : results) {
        ASSERT_THAT(result, SizeIs(expected.size()));
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(result[i].triangles, expected[i].triangles);
        }
    }
}

}  // namespace
}  // namespace orl::matcher
