#include "matcher/matching/orientation.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matcher/features/lookup_tables.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"
#include "matcher/matching/scratch.h"
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

// A finger in its orientations together with the memory they live in.
class Oriented {
  public:
    explicit Oriented(std::vector<TriangleFeature> triangles)
        : triangles_(std::move(triangles)),
          scratch_(new Scratch),
          finger_(orientedFinger(triangles_, *scratch_)) {}

    const OrientedFinger& finger() const { return finger_; }

    // The turned list as triangles; the sides are those of the list.
    std::vector<TriangleFeature> list(std::size_t orientation) const {
        std::vector<TriangleFeature> list = triangles_;
        for (std::size_t u = 0; u < list.size(); ++u) {
            const auto& order = kCornerOrders[finger_.oriented[u].order[orientation]];
            for (std::size_t j = 0; j < kCorners; ++j) {
                list[u].vertices[j] = turnedVertex(triangles_[u].vertices[order[j]], orientation);
            }
        }
        return list;
    }

  private:
    std::vector<TriangleFeature> triangles_;
    std::unique_ptr<Scratch> scratch_;
    OrientedFinger finger_;
};

TEST(OrientedFinger, PutsTheTurnedVerticesIntoTheirOrderAgain) {
    const TriangleFeature triangle =
        MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 1}, {20, 30, 3, 2});
    const TriangleFeature turned = Oriented({triangle}).list(2).at(0);
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

TEST(OrientedFinger, TakesTheListAsItStandsInOrientationZero) {
    // Not in the order of their bearings.
    const TriangleFeature triangle{.vertices = {{30, 10, 2, 1}, {10, 10, 1, 0}, {20, 30, 3, 2}}};
    EXPECT_EQ(Oriented({triangle}).list(0).at(0), triangle);
    EXPECT_EQ(Oriented({triangle}).finger().codes[0][0], codeOf(triangle));
}

// Triangles of equal key keep their order in a sorted copy, so that place u of the list is place u
// of every turned list.
TEST(OrientedFinger, KeepsTheOrderOfManyTrianglesOfEqualKey) {
    std::vector<TriangleFeature> triangles;
    for (std::uint8_t i = 0; i < 50; ++i) {
        triangles.push_back(MakeTriangleFeature({10, 10, i, 0}, {30, 10, i, 0}, {20, 30, i, 0}));
    }
    const Oriented oriented(triangles);
    for (int turns = 1; turns < 4; ++turns) {
        EXPECT_EQ(oriented.list(static_cast<std::size_t>(turns)), naive::Turned(triangles, turns));
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        EXPECT_EQ(oriented.list(2)[i].vertices[0].angle, i + 128) << i;
    }
}

TEST(OrientedFinger, KeepsWrappedSidesBeforeShortOnes) {
    // Sides 140, 140 and 198 are negative as signed bytes.
    const TriangleFeature large =
        MakeTriangleFeature({10, 10, 1, 0}, {150, 10, 2, 0}, {10, 150, 3, 0});
    const TriangleFeature small =
        MakeTriangleFeature({10, 10, 1, 0}, {30, 10, 2, 0}, {20, 30, 3, 0});
    std::vector<TriangleFeature> sorted = {small, large};
    test::SortTriangles(sorted);
    ASSERT_EQ(sorted[0], large);
    for (int turns = 1; turns < 4; ++turns) {
        EXPECT_EQ(Oriented(sorted).list(static_cast<std::size_t>(turns)),
                  naive::Turned(sorted, turns));
    }
}

TEST(OrientedFinger, OfNoTrianglesIsEmpty) {
    const Oriented none({});
    EXPECT_TRUE(none.finger().triangles.empty());
    EXPECT_TRUE(none.finger().codes.empty());
    EXPECT_TRUE(none.finger().oriented.empty());
}

// The code by which a turned triangle must compare: its own, brought into the vertex order of the
// triangle that it was turned from where that is a cyclic one.
TriangleCode ExpectedCode(const TriangleFeature& triangle,
                          const TriangleFeature& turned,
                          std::size_t orientation) {
    for (std::size_t start = 0; start < kCorners; ++start) {
        const auto isFrom = [&](std::size_t j) {
            return turned.vertices[j] ==
                   turnedVertex(triangle.vertices[(start + j) % kCorners], orientation);
        };
        if (isFrom(0) && isFrom(1) && isFrom(2)) {
            return cyclicCodesOf(turned,
                                 QuarterTurnBearings::Table())[(kCorners - start) % kCorners];
        }
    }
    return codeOf(turned);
}

// Vertices and sides as the plain rotation gives them, and codes that compare as its triangles do.
void ExpectPlainOrientations(const std::vector<TriangleFeature>& triangles) {
    const Oriented oriented(triangles);
    for (std::size_t orientation = 0; orientation < kOrientations; ++orientation) {
        const auto expected =
            orientation == 0 ? triangles : naive::Turned(triangles, static_cast<int>(orientation));
        ASSERT_EQ(oriented.list(orientation), expected);
        for (std::size_t u = 0; u < triangles.size(); ++u) {
            ASSERT_EQ(oriented.finger().codes[u][orientation],
                      ExpectedCode(triangles[u], expected[u], orientation))
                << u;
        }
    }
}

TEST(OrientedFinger, AgreesWithThePlainRotationOnRandomTriangles) {
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned extent = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 40 : 3;
        ExpectPlainOrientations(test::RandomTriangles(random, 200, extent));
    }
}

TriangleFeature MadeAt(std::array<std::array<int, 2>, 3> spots) {
    const auto vertex = [&](std::size_t i) {
        return TriangleVertex{static_cast<std::uint8_t>(spots[i][0]),
                              static_cast<std::uint8_t>(spots[i][1]),
                              static_cast<std::uint8_t>(40 * i + 7),
                              0};
    };
    return MakeTriangleFeature(vertex(0), vertex(1), vertex(2));
}

// Vertices on one line, axis-parallel or not, and at one spot: bearings tie there, or the centre
// coincides with a vertex.
TEST(OrientedFinger, AgreesWithThePlainRotationOnFlatTriangles) {
    std::vector<TriangleFeature> triangles;
    for (int step = -6; step <= 6; ++step) {
        for (int other = -6; other <= 6; ++other) {
            triangles.push_back(MadeAt({{{100, 100}, {100 + step, 100}, {100 + other, 100}}}));
            triangles.push_back(MadeAt({{{100, 100}, {100, 100 + step}, {100, 100 + other}}}));
            triangles.push_back(
                MadeAt({{{100, 100}, {100 + step, 100 + step}, {100 + other, 100 + other}}}));
            triangles.push_back(MadeAt(
                {{{100, 100}, {100 + 2 * step, 100 - step}, {100 + 2 * other, 100 - other}}}));
            triangles.push_back(MadeAt({{{100, 100}, {100 + step, 100}, {100, 100 + other}}}));
        }
    }
    test::SortTriangles(triangles);
    ExpectPlainOrientations(triangles);
}

// Every triangle whose corners lie in a grid of 4 by 4: all ways of being flat and of rounding.
TEST(OrientedFinger, AgreesWithThePlainRotationOnAllSmallTriangles) {
    std::vector<TriangleFeature> triangles;
    for (int a = 0; a < 16; ++a) {
        for (int b = 0; b < 16; ++b) {
            for (int c = 0; c < 16; ++c) {
                triangles.push_back(MadeAt({{{a % 4, a / 4}, {b % 4, b / 4}, {c % 4, c / 4}}}));
            }
        }
    }
    test::SortTriangles(triangles);
    ExpectPlainOrientations(triangles);
}

TEST(OrientedFinger, AgreesWithThePlainRotationOnTheEdgesOfTheGrid) {
    constexpr std::array<int, 5> kEdges = {0, 1, 128, 254, 255};
    std::vector<TriangleFeature> triangles;
    for (std::size_t i = 0; i < 25 * 25 * 25; i += 3) {
        const auto spot = [&](std::size_t n) {
            return std::array{kEdges[n % 5], kEdges[n / 5 % 5]};
        };
        triangles.push_back(MadeAt({spot(i), spot(i / 25), spot(i / 625)}));
    }
    test::SortTriangles(triangles);
    ExpectPlainOrientations(triangles);
}

// What makes the candidate index hold in all orientations.
TEST(OrientedFinger, MovesNoCircularByteByMoreThanThreeStepsUnlessItSaysSo) {
    std::mt19937 random(7);
    const Oriented oriented(test::RandomTriangles(random, 4000, 256));
    const auto& finger = oriented.finger();
    for (std::size_t u = 0; u < finger.triangles.size(); ++u) {
        if (finger.oriented[u].isIrregular) {
            continue;
        }
        for (std::size_t m = 1; m < kOrientations; ++m) {
            for (std::size_t byte = 0; byte < kSideGroup; ++byte) {
                const int apart =
                    std::abs(finger.codes[u][m].bytes[byte] - finger.codes[u][0].bytes[byte]);
                ASSERT_LE(std::min(apart, 255 - apart), 3) << u << ", byte " << byte;
            }
        }
    }
}

}  // namespace
}  // namespace orl::matcher
