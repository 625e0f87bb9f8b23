#include "matcher/triangulation/delaunay_mesh.h"

#include <cmath>
#include <cstddef>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/matcher/triangulation/mesh_test_peer.h"
#include "tests/support/mesh_checker.h"
#include "tests/support/plain_sweep.h"

namespace orl::matcher {
namespace {

using Peer = DelaunayMeshTestPeer;
using Points = std::vector<double>;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;

void ExpectNoTriangulation(const Points& points, const char* why) {
    try {
        const DelaunayMesh mesh(points);
        ADD_FAILURE() << why << ": made " << mesh.vertices().size() << " half-edges";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "not triangulation") << why;
    }
}

TEST(DelaunayMesh, MakesOneTriangleOfThreePointsAfterTurningIt) {
    // The box centre (2, 2) is equally far from all; the lowest index is the first seed. Points 1
    // and 2 are both 4 away from it. Orient(0, 1, 2) = (0)(-4) - (4)(4) = -16: 1 and 2 swap.
    const Points points = {0, 0, 4, 0, 0, 4};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), ElementsAre(0, 2, 1));
    EXPECT_THAT(mesh.twins(), ElementsAre(NoIndex, NoIndex, NoIndex));
    EXPECT_EQ(mesh.hullStart(), 0U);
    EXPECT_THAT(mesh.hullNext(), ElementsAre(2, 0, 1));
    EXPECT_THAT(Peer::HullPrev(mesh), ElementsAre(1, 2, 0));
    EXPECT_THAT(Peer::HullTriangle(mesh), ElementsAre(0, 2, 1));
    EXPECT_EQ(Peer::Centre(mesh).x, 2.0);
    EXPECT_EQ(Peer::Centre(mesh).y, 2.0);
}

TEST(DelaunayMesh, KeepsThreePointsThatHaveTheWindingAlready) {
    // Orient(0, 1, 2) = (4)(4) - (0)(-4) = 16: no swap.
    const Points points = {0, 0, 0, 4, 4, 0};
    EXPECT_THAT(DelaunayMesh(points).vertices(), ElementsAre(0, 1, 2));
}

TEST(DelaunayMesh, RefusesFewerThanThreePoints) {
    ExpectNoTriangulation({}, "no point");
    ExpectNoTriangulation({5}, "half a point");
    ExpectNoTriangulation({5, 5}, "one point");
    ExpectNoTriangulation({5, 5, 9, 5}, "two points");
    ExpectNoTriangulation({5, 5, 9, 5, 7}, "two points and a half");
}

TEST(DelaunayMesh, RefusesPointsOnOneLine) {
    Points horizontal;
    Points vertical;
    Points slanted;
    Points falling;
    for (int i = 0; i < 128; ++i) {
        horizontal.insert(horizontal.end(), {i * 3.0, 7.0});
        vertical.insert(vertical.end(), {7.0, i * 3.0});
        slanted.insert(slanted.end(), {i * 3.0, i * 5.0});
        falling.insert(falling.end(), {i * 7.0, 2000.0 - i * 4.0});
    }
    ExpectNoTriangulation(horizontal, "horizontal");
    ExpectNoTriangulation(vertical, "vertical");
    ExpectNoTriangulation(slanted, "slanted");
    ExpectNoTriangulation(falling, "falling");
}

TEST(DelaunayMesh, RefusesPointsAtOneOrTwoSpots) {
    Points one;
    Points two;
    for (int i = 0; i < 128; ++i) {
        one.insert(one.end(), {100.0, 200.0});
        two.insert(two.end(), {i % 2 == 0 ? 100.0 : 300.0, 200.0});
    }
    ExpectNoTriangulation(one, "one spot");
    ExpectNoTriangulation(two, "two spots");
}

TEST(DelaunayMesh, LeavesOutAValueThatIsNoWholePoint) {
    const Points points = {0, 0, 4, 0, 0, 4, 9};
    EXPECT_THAT(DelaunayMesh(points).vertices(), ElementsAre(0, 2, 1));
}

TEST(DelaunayMesh, LeavesTheDiagonalOfASquareAsItWasInserted) {
    // All four are sqrt(8) from the box centre: i0 = 0. 1 and 3 are 4 away from it: i1 = 1. The
    // circle with 2 or with 3 is the same: i2 = 2. Orient(0, 1, 2) = (0)(0) - (4)(4) < 0 swaps.
    // Point 3 sees the edge 0-2 only: (0-4)(4-0) - (0-0)(4-0) = -16. Its circle goes through 1.
    const Points points = {0, 0, 4, 0, 4, 4, 0, 4};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), ElementsAre(0, 2, 1, 0, 3, 2));
    EXPECT_THAT(mesh.twins(), ElementsAre(5, NoIndex, NoIndex, NoIndex, NoIndex, 0));
}

TEST(DelaunayMesh, FlipsAnEdgeWhoseCircleHoldsTheOppositePoint) {
    // Box centre (4, 4): nearest is 3 at (2, 3); nearest to that is 0 at (3, 0), 10 away squared.
    // Squared circle radii with 1: 10*26*20 / (4*14^2) = 6.63, with 2: 10*37*29 / (4*17^2) = 9.28,
    // with 4: 10*29*73 / 4 = 5292; so the seed is 3, 0, 1, turned to 3, 1, 0, and its centre is
    // (4.43, 2.14). Point 2 comes next (3.57 away) and sees 3-1: (1)(5) - (-6)(-1) = -1, and 1-0:
    // (0)(-4) - (-1)(-2) = -2. It makes the triangles (3, 2, 1) and (1, 2, 0).
    // Point 4 (7.3 away) sees 0-3 and 3-2 and makes (0, 4, 3) and (3, 4, 2). For the edge 3-2 and
    // the opposite point 1: D = (-7, 6), E = (1, 0), F = (-5, 1), ap = 85, bp = 1, cp = 26:
    // -7(0 - 1) - 6(26 + 5) + 85(1 - 0) = 7 - 186 + 85 = -94, so the edge becomes 4-1.
    const Points points = {3, 0, 7, 2, 8, 2, 2, 3, 0, 8};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), ElementsAre(3, 1, 0, 4, 2, 1, 1, 2, 0, 0, 4, 3, 3, 4, 1));
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, DoesNotJoinAPointToAHullEdgeOnItsLine) {
    // Seed: 1 is nearest to the box centre (2.5, 0.5), 2 nearest to 1; with 0 they make a right
    // angle, squared radius 1. Turned: 1, 0, 2. Point 3 at (5, 0) lies on the line of the edge 1-0:
    // (0)(-2) - (-3)(0) = 0, not seen. It sees 2-1: (1)(1) - (-4)(-1) = -3.
    const Points points = {0, 0, 2, 0, 1, 1, 5, 0};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), ElementsAre(1, 0, 2, 2, 3, 1));
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, SkipsAMinutiaThatLiesOnASeedPoint) {
    const Points points = {0, 0, 4, 0, 0, 4, 4, 0, 0, 0, 0, 4, 0, 0};
    EXPECT_THAT(DelaunayMesh(points).vertices(), ElementsAre(0, 2, 1));
}

TEST(DelaunayMesh, NeverTakesACopyOfTheFirstSeedAsTheSecond) {
    // 0, 1 and 2 coincide at the spot nearest to the box centre (5, 5); 0 is the seed.
    const Points points = {5, 4, 5, 4, 5, 4, 0, 0, 10, 0, 5, 10};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), Contains(0));
    EXPECT_THAT(mesh.vertices(), Not(Contains(1)));
    EXPECT_THAT(mesh.vertices(), Not(Contains(2)));
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, UsesTheFirstOfSeveralMinutiaeAtOnePosition) {
    const Points points = {0, 0, 4, 0, 0, 4, 10, 10, 10, 10, 10, 10};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), Contains(3));
    EXPECT_THAT(mesh.vertices(), Not(Contains(4)));
    EXPECT_THAT(mesh.vertices(), Not(Contains(5)));
    EXPECT_THAT(mesh.hullNext()[4], 0U);
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, TakesPointsWithinEpsilonOfEachOtherForOne) {
    constexpr double kEpsilon = 2.220446049250313e-16;
    // Around 0.25 doubles are a quarter of epsilon apart, so both sides of the limit exist. The
    // first three points are the seed; 3 and 4 are equally far from it by rounding, and the lower y
    // comes first.
    const Points within = {100, 100, 104, 100, 100, 104, 0.25, 0.25 + kEpsilon, 0.25, 0.25};
    const DelaunayMesh one(within);
    EXPECT_THAT(one.vertices(), Contains(4));
    EXPECT_THAT(one.vertices(), Not(Contains(3)));
    const Points beyond = {100, 100, 104, 100, 100, 104, 0.25, 0.25 + 1.25 * kEpsilon, 0.25, 0.25};
    const DelaunayMesh two(beyond);
    EXPECT_THAT(two.vertices(), Contains(4));
    EXPECT_THAT(two.vertices(), Contains(3));
}

TEST(DelaunayMesh, TakesPointsEpsilonApartAlongEitherAxisForOne) {
    // Doubles from 1 on are epsilon apart. The first three points are the seed; 3 lies beyond it on
    // the axis, and 4 a step or two further out, where it sees the edge from 3 to the other axis.
    constexpr double kEpsilon = 2.220446049250313e-16;
    for (const double steps : {1.0, 2.0}) {
        const double far = 1 + steps * kEpsilon;
        const Points alongX = {0, 0, 0.25, 0, 0, 0.25, 1, 0, far, 0};
        const Points alongY = {0, 0, 0, 0.25, 0.25, 0, 0, 1, 0, far};
        for (const Points& points : {alongX, alongY}) {
            const DelaunayMesh mesh(points);
            EXPECT_THAT(mesh.vertices(), Contains(3));
            EXPECT_THAT(mesh.vertices(), Contains(4).Times(steps > 1 ? 1 : 0)) << steps;
        }
    }
}

// Deliberate: the box maxima start at a tiny positive number.
TEST(DelaunayMesh, SeedsNearTheMiddleBetweenTheMinimaAndZeroWhenEveryCoordinateIsNegative) {
    // The box is taken as (-10, -10) to (0, 0), its centre as (-5, -5). Squared distances: 50, 18,
    // 34, 34, so the seed is 1; around the true centre (-6, -6) all four would tie and 0 would win.
    // 2 and 3 are 8 away from 1: i1 = 2. All circles are the same: i2 = 0. Orient(1, 2, 0) =
    // (0)(0) - (-8)(-8) = -64 turns it to 1, 0, 2. Point 3 sees 1-0: (8)(-8) - (0)(-8) = -64.
    const Points points = {-10, -10, -2, -2, -10, -2, -2, -10};
    const DelaunayMesh mesh(points);
    EXPECT_THAT(mesh.vertices(), ElementsAre(1, 0, 2, 1, 3, 0));
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, HasTwoNMinusHMinusTwoTrianglesForPointsInGeneralPosition) {
    // A pentagon around two inner points: n = 7, h = 5, 2 * 7 - 5 - 2 = 7.
    const Points points = {0, 30, 25, 1, 61, 3, 70, 40, 30, 66, 29, 27, 42, 31};
    const DelaunayMesh mesh(points);
    EXPECT_EQ(mesh.vertices().size() / 3, 7U);
    EXPECT_EQ(test::CheckMesh(mesh, points), "");
}

TEST(DelaunayMesh, PairsHalfEdgesThatRunAlongOneEdgeInOppositeDirections) {
    std::mt19937 random(3);
    Points points;
    for (int i = 0; i < 2 * 128; ++i) {
        points.push_back(static_cast<double>(random() % 500));
    }
    const DelaunayMesh mesh(points);
    const auto& vertices = mesh.vertices();
    for (HalfEdge e = 0; e < vertices.size(); ++e) {
        const HalfEdge twin = mesh.twins()[e];
        if (twin != NoIndex) {
            EXPECT_EQ(vertices[e], vertices[NextHalfEdge(twin)]);
            EXPECT_EQ(vertices[twin], vertices[NextHalfEdge(e)]);
        }
    }
}

TEST(DelaunayMesh, HasRoomForTheTrianglesOfItsPointsFromTheStart) {
    std::mt19937 random(5);
    for (const std::uint64_t n : {128U, 129U, 400U}) {
        Points points;
        for (std::uint64_t i = 0; i < 2 * n; ++i) {
            points.push_back(static_cast<double>(random() % 500));
        }
        const DelaunayMesh mesh(points);
        EXPECT_EQ(mesh.vertices().capacity(), 6 * n - 15) << n << " points";
        EXPECT_EQ(mesh.twins().capacity(), 6 * n - 15) << n << " points";
    }
}

// Deliberate: distances that overflow equal each other, whatever the coordinates.
TEST(DelaunayMesh, SweepsPointsOfOverflowingDistanceInIndexOrder) {
    std::mt19937_64 random(29);
    for (int round = 0; round < 2000; ++round) {
        constexpr double kFar = 1e160;               // its square is infinite
        Points points = {kFar, kFar, -kFar, -kFar};  // the box centre is the origin
        for (int i = 0; i < 2 * 12; ++i) {
            const double size = i < 12 ? 1.0 : kFar / 1000.0;
            points.push_back((static_cast<double>(random() % 2001) - 1000.0) * size);
        }
        const auto plain = test::SweepPlainly(points);
        ASSERT_TRUE(plain.has_value());
        const DelaunayMesh mesh(points);
        ASSERT_THAT(mesh.vertices(), testing::ElementsAreArray(plain->vertices)) << round;
        ASSERT_THAT(mesh.twins(), testing::ElementsAreArray(plain->twins)) << round;
    }
}

TEST(DelaunayMesh, IsThatOfThePlainSweepOnBothSidesOfItsInlineRoom) {
    std::mt19937 random(31);
    for (std::uint64_t n = DelaunayMesh::kInlinePoints - 2; n < DelaunayMesh::kInlinePoints + 3;
         ++n) {
        for (const unsigned span : {12U, 60U, 500U, 16384U}) {  // copies and ties, then none
            Points points;
            for (std::uint64_t i = 0; i < 2 * n; ++i) {
                points.push_back(static_cast<double>(random() % span));
            }
            const DelaunayMesh mesh(points);
            const auto plain = test::SweepPlainly(points);
            ASSERT_TRUE(plain.has_value());
            EXPECT_THAT(mesh.vertices(), testing::ElementsAreArray(plain->vertices)) << n;
            EXPECT_THAT(mesh.twins(), testing::ElementsAreArray(plain->twins)) << n;
            EXPECT_THAT(mesh.hullNext(), testing::ElementsAreArray(plain->hullNext)) << n;
        }
    }
}

// Deliberate: while a point is being joined, the ring is broken at the points that have just left
// it. In this set a flip reaches the hull then, and its walk meets such a point.
TEST(DelaunayMesh, EndsTheHullWalkAtAPointThatHasJustLeftTheHull) {
    const Points points = {10, 2, 16, 1, 24, 1, 18, 1, 2, 0, 33, 1, 2, 1, 36, 1, 5, 2};
    const DelaunayMesh mesh(points);
    const auto plain = test::SweepPlainly(points);
    ASSERT_TRUE(plain.has_value());
    EXPECT_GT(plain->lostHullEntries, 0);
    EXPECT_THAT(mesh.vertices(), testing::ElementsAreArray(plain->vertices));
    EXPECT_THAT(mesh.twins(), testing::ElementsAreArray(plain->twins));
    EXPECT_THAT(mesh.vertices(), Each(testing::Lt(9U)));
    // What is lost concerns half-edges only: the ring itself comes back to its start.
    PointIndex i = mesh.hullStart();
    std::size_t visited = 0;
    do {
        i = mesh.hullNext()[i];
        ++visited;
    } while (i != mesh.hullStart() && visited <= 9);
    EXPECT_LE(visited, 9U);
}

TEST(DelaunayMesh, EndsForAnyFiniteCoordinatesHoweverExtreme) {
    std::mt19937_64 random(17);
    for (int round = 0; round < 3000; ++round) {
        Points points;
        const std::size_t n = 3 + random() % 30;
        const int span = 1 + static_cast<int>(random() % 1000);
        while (points.size() < 2 * n) {
            const int exponent =
                static_cast<int>(random() % static_cast<unsigned>(2 * span)) - span;
            const double mantissa = static_cast<double>(random() % 2001) - 1000.0;
            points.push_back(std::ldexp(mantissa, exponent));
        }
        try {
            const DelaunayMesh mesh(points);
            ASSERT_EQ(mesh.twins().size(), mesh.vertices().size()) << "round " << round;
            ASSERT_THAT(mesh.vertices(), Each(testing::Lt(n))) << "round " << round;
        } catch (const std::runtime_error& error) {
            ASSERT_STREQ(error.what(), "not triangulation") << "round " << round;
        }
    }
}

TEST(DelaunayMesh, GivesTheSameMeshOnSeveralThreadsAtOnce) {
    std::mt19937 random(9);
    Points points;
    for (int i = 0; i < 2 * 100; ++i) {
        points.push_back(static_cast<double>(random() % 400));
    }
    const DelaunayMesh expected(points);
    std::vector<std::vector<PointIndex>> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (auto& result : results) {
        threads.emplace_back([&points, &result] {
            for (int round = 0; round < 20; ++round) {
                const DelaunayMesh mesh(points);
                result.assign(mesh.vertices().begin(), mesh.vertices().end());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(results, Each(testing::ElementsAreArray(expected.vertices())));
}

}  // namespace
}  // namespace orl::matcher
