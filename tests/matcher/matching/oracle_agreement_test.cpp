// Whole matches against the plain matcher in tests/support: every figure must be the same, floats
// bit for bit. Any faster form of a stage has to pass these unchanged.

#include <cstdint>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/api/template_loading.h"
#include "matcher/features/finger_features.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/matching/match_driver.h"
#include "tests/support/naive_matching.h"
#include "tests/support/real_records.h"
#include "tests/support/synthetic_fingers.h"

namespace orl::matcher {
namespace {

using Fingers = std::vector<FingerFeatures>;

// What a set of comparisons went through, so that a test can tell that it met the rarer ways.
struct Tally {
    int compared = 0;
    int refined = 0;
    int middling = 0;  // score of 100..999
    int turned = 0;    // best orientation other than 0
};

void ExpectAgreement(const Fingers& first, const Fingers& second, Tally& tally) {
    const TemplateMatchResult actual = matchTemplates(first, second);
    const TemplateMatchResult expected = naive::MatchTemplates(first, second);
    ASSERT_EQ(actual.score, expected.score);
    ASSERT_EQ(actual.matchedCount, expected.matchedCount);
    ASSERT_EQ(actual.rotationDegrees, expected.rotationDegrees);
    ASSERT_EQ(actual.distanceMedian, expected.distanceMedian);
    ASSERT_EQ(actual, expected);
    ++tally.compared;
    tally.refined += actual.refined != 0 ? 1 : 0;
    tally.middling += actual.score >= 100 && actual.score < 1000 ? 1 : 0;
    tally.turned += actual.orientation != 0 ? 1 : 0;
}

TEST(OracleAgreement, HoldsForImpressionsOfRandomFingers) {
    Tally tally;
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 12 + seed % 40);
        const MinutiaList other =
            test::Impression(random,
                             finger,
                             {.rotationDegrees = static_cast<double>(random() % 360),
                              .jitterPixels = static_cast<int>(seed % 9),
                              .jitterDegrees = static_cast<int>(seed % 13),
                              .lostPercent = static_cast<int>(random() % 50),
                              .added = 3 + random() % 10});
        ExpectAgreement({test::BuiltFinger(finger)}, {test::BuiltFinger(other)}, tally);
    }
    EXPECT_EQ(tally.compared, 60);
    EXPECT_GT(tally.refined, 4);
    EXPECT_GT(tally.middling, 15);
    EXPECT_GT(tally.turned, 10);
}

// Noise that leaves scores about the middle, where the fine rotation search and the quality stages
// decide.
TEST(OracleAgreement, HoldsForPoorImpressions) {
    Tally tally;
    for (std::uint32_t seed = 100; seed < 160; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 25 + seed % 15);
        const MinutiaList other =
            test::Impression(random,
                             finger,
                             {.rotationDegrees = static_cast<double>(random() % 50),
                              .jitterPixels = 4 + static_cast<int>(seed % 10),
                              .jitterDegrees = 8 + static_cast<int>(seed % 12),
                              .lostPercent = 20,
                              .added = 6});
        ExpectAgreement({test::BuiltFinger(finger)}, {test::BuiltFinger(other)}, tally);
    }
    EXPECT_EQ(tally.compared, 60);
    EXPECT_GT(tally.refined, 15);
    EXPECT_GT(tally.middling, 30);
}

TEST(OracleAgreement, HoldsForUnrelatedRandomFingers) {
    Tally tally;
    for (std::uint32_t seed = 200; seed < 225; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 20 + random() % 50);
        const MinutiaList other = test::RandomMinutiaList(random, 20 + random() % 50);
        ExpectAgreement({test::BuiltFinger(finger)}, {test::BuiltFinger(other)}, tally);
    }
    EXPECT_EQ(tally.compared, 25);
}

TEST(OracleAgreement, HoldsForTemplatesOfSeveralFingers) {
    Tally tally;
    for (std::uint32_t seed = 300; seed < 306; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        Fingers first;
        Fingers second;
        for (std::uint32_t i = 0; i < 3; ++i) {
            const MinutiaList finger = test::RandomMinutiaList(random, 8 + random() % 16);
            first.push_back(test::BuiltFinger(finger));
            second.push_back(test::BuiltFinger(
                test::Impression(random, finger, {.jitterPixels = 6, .jitterDegrees = 9})));
        }
        second.pop_back();
        ExpectAgreement(first, second, tally);
    }
    EXPECT_EQ(tally.compared, 6);
}

// Lists of triangles that no triangulation would make: corners at one spot, sides that wrap, many
// equal keys and equal similarities.
TEST(OracleAgreement, HoldsForTrianglesOfAnyVertices) {
    Tally tally;
    for (std::uint32_t seed = 400; seed < 430; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 24 : 5;
        const std::size_t count = extent < 6 ? 12 : 40;
        const std::uint64_t minutiaCount = random() % 30;
        const FingerFeatures first = {minutiaCount, test::RandomTriangles(random, count, extent)};
        const FingerFeatures second = {minutiaCount + random() % 3,
                                       test::RandomTriangles(random, count, extent)};
        ExpectAgreement({first}, {first, second}, tally);
    }
    EXPECT_EQ(tally.compared, 30);
}

MinutiaList Lattice(int columns, int rows, int pitch, int turnDegreesPerStep) {
    MinutiaList list;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const int angle = 1 + ((row + column) * turnDegreesPerStep) % 360;
            list.push_back({1,
                            static_cast<std::uint16_t>(20 + column * pitch),
                            static_cast<std::uint16_t>(20 + row * pitch),
                            static_cast<std::uint16_t>(angle)});
        }
    }
    return list;
}

TEST(OracleAgreement, HoldsForLatticesWhoseTrianglesAllLookAlike) {
    Tally tally;
    for (int turn : {0, 1, 45, 90, 180}) {
        SCOPED_TRACE(testing::Message() << "turn " << turn);
        const FingerFeatures lattice = test::BuiltFinger(Lattice(4, 4, 60, turn));
        const FingerFeatures wider = test::BuiltFinger(Lattice(4, 3, 70, turn));
        ExpectAgreement({lattice}, {lattice}, tally);
        ExpectAgreement({lattice}, {wider}, tally);
    }
    EXPECT_EQ(tally.compared, 10);
}

TEST(OracleAgreement, HoldsForMinutiaeOnTheEdgesOfTheImage) {
    // A coordinate equal to the larger side reads as grid byte 0; sides of 128 and more wrap.
    Tally tally;
    for (std::uint32_t seed = 500; seed < 506; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        MinutiaList finger = test::RandomMinutiaList(random, 10);
        for (Minutia& minutia : finger) {
            minutia.x = random() % 2 == 0 ? 0 : test::kSyntheticImage.width;
        }
        const MinutiaList other = test::Impression(random, finger, {.jitterPixels = 3});
        ExpectAgreement({test::BuiltFinger(finger)},
                        {test::BuiltFinger(other.size() < 4 ? finger : other)},
                        tally);
    }
    EXPECT_EQ(tally.compared, 6);
}

TEST(OracleAgreement, HoldsForTheSmallestFingers) {
    Tally tally;
    for (std::uint32_t seed = 600; seed < 640; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 3 + seed % 7);
        const FingerFeatures built = test::BuiltFinger(finger);
        ExpectAgreement({built},
                        {built, test::BuiltFinger(test::Impression(random, finger, {.added = 3}))},
                        tally);
    }
    EXPECT_EQ(tally.compared, 40);
}

TEST(OracleAgreement, HoldsForTheLargestFinger) {
    Tally tally;
    std::mt19937 random(700);
    const MinutiaList finger = test::RandomMinutiaList(random, kMaxMinutiae);
    const MinutiaList other =
        test::Impression(random, finger, {.rotationDegrees = 5.0, .jitterPixels = 3});
    ExpectAgreement({test::BuiltFinger(finger)}, {test::BuiltFinger(other)}, tally);
    EXPECT_EQ(tally.compared, 1);
}

TEST(OracleAgreement, HoldsForLargeFingersThatMatchPoorly) {
    Tally tally;
    for (std::uint32_t seed = 710; seed < 714; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const MinutiaList finger = test::RandomMinutiaList(random, 100);
        const MinutiaList other = test::Impression(random,
                                                   finger,
                                                   {.rotationDegrees = 90.0 * (seed % 4) + 12.0,
                                                    .jitterPixels = 8,
                                                    .jitterDegrees = 14,
                                                    .lostPercent = 40,
                                                    .added = 30});
        ExpectAgreement({test::BuiltFinger(finger)}, {test::BuiltFinger(other)}, tally);
    }
    EXPECT_EQ(tally.compared, 4);
}

// The finger's features in an image of that size; none when its minutiae admit no triangle there.
Fingers BuiltIn(ImageSize size, const MinutiaList& minutiae) {
    Fingers fingers;
    try {
        EXPECT_TRUE(BuildFingerFeatures(fingers, size, std::span(&minutiae, 1)));
    } catch (const std::runtime_error&) {
        fingers.clear();
    }
    return fingers;
}

// Coordinates that a record can hold but no image has: they wrap in the grid.
TEST(OracleAgreement, HoldsForCoordinatesFarBeyondTheImage) {
    Tally tally;
    for (std::uint32_t seed = 720; seed < 750; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        MinutiaList finger = test::RandomMinutiaList(random, 5 + random() % 20);
        for (Minutia& minutia : finger) {
            minutia.x = static_cast<std::uint16_t>(random() % 16384);
            minutia.y = static_cast<std::uint16_t>(random() % 16384);
        }
        MinutiaList other = finger;
        other.pop_back();
        for (Minutia& minutia : other) {
            minutia.x = static_cast<std::uint16_t>((minutia.x + random() % 4) % 16384);
        }
        ExpectAgreement(BuiltIn({388, 374}, finger), BuiltIn({388, 374}, other), tally);
    }
    EXPECT_EQ(tally.compared, 30);
}

// In an image of 65535 pixels the minutiae of a finger fall on one or two grid positions, in one of
// a few pixels they fall anywhere.
TEST(OracleAgreement, HoldsForImagesOfAnySize) {
    Tally tally;
    for (const ImageSize size : {ImageSize{65535, 65535},
                                 {65535, 1},
                                 {1, 65535},
                                 {30000, 388},
                                 {6000, 6000},
                                 {40, 30},
                                 {1, 1},
                                 {0, 1},
                                 {16383, 0}}) {
        for (std::uint32_t seed = 750; seed < 756; ++seed) {
            SCOPED_TRACE(testing::Message()
                         << "seed " << seed << ", " << size.width << " by " << size.height);
            std::mt19937 random(seed);
            const MinutiaList finger = test::RandomMinutiaList(random, 6 + random() % 30);
            const MinutiaList other =
                test::Impression(random, finger, {.jitterPixels = 2, .jitterDegrees = 5});
            ExpectAgreement(BuiltIn(size, finger), BuiltIn(size, finger), tally);
            if (other.size() > 3) {
                ExpectAgreement(BuiltIn(size, finger), BuiltIn(size, other), tally);
            }
        }
    }
    EXPECT_GT(tally.compared, 80);
}

// Many triangles at one spot, of few directions: all alike, all bounds equal to the number of
// pairs.
TEST(OracleAgreement, HoldsForTrianglesThatCoincide) {
    Tally tally;
    for (std::uint32_t seed = 760; seed < 772; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        FingerFeatures first = {20, test::RandomTriangles(random, 25, 2)};
        for (TriangleFeature& triangle : first.triangles) {
            auto [a, b, c] = triangle.vertices;
            for (TriangleVertex* vertex : {&a, &b, &c}) {
                vertex->x = static_cast<std::uint8_t>(vertex->x * (seed % 3 == 0 ? 255 : 1));
                vertex->angle = static_cast<std::uint8_t>(vertex->angle % (seed % 2 == 0 ? 30 : 3));
            }
            triangle = MakeTriangleFeature(a, b, c);
        }
        test::SortTriangles(first.triangles);
        ExpectAgreement({first}, {first}, tally);
    }
    EXPECT_EQ(tally.compared, 12);
}

Fingers Loaded(const std::string& path) {
    LoadedTemplate loaded;
    std::string message;
    try {
        const std::int32_t status = loadTemplateFromFile(path, 2, 4, loaded, message);
        return status == 0 ? loaded.fingers : Fingers{};
    } catch (const std::runtime_error&) {
        return {};  // too few minutiae for a triangle
    }
}

TEST(OracleAgreement, HoldsForRealRecords) {
    const auto files = test::RealRecordFiles();
    if (files.size() < 2) {
        GTEST_SKIP() << "set ORL_RECORDS to a folder of *.fmr files to compare real records";
    }
    constexpr std::size_t kComparisons = 60;
    Tally tally;
    for (std::size_t i = 0; i < kComparisons; ++i) {
        const auto& probe = files[i * files.size() / kComparisons];
        const auto& candidate = files[(i * files.size() / kComparisons + 1 + i % 3) % files.size()];
        SCOPED_TRACE(probe.string() + " and " + candidate.string());
        ExpectAgreement(Loaded(probe.string()), Loaded(candidate.string()), tally);
    }
    EXPECT_EQ(tally.compared, static_cast<int>(kComparisons));
}

}  // namespace
}  // namespace orl::matcher
