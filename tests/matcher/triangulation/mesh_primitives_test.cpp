// The mesh's own building blocks: linking half-edges, appending triangles, the angular bucket key,
// and the bound on edge flips.

#include <array>
#include <cmath>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/matcher/triangulation/mesh_test_peer.h"

namespace orl::matcher {
namespace {

using Peer = DelaunayMeshTestPeer;
using testing::ElementsAre;

TEST(Link, AppendsNoIndexAtTheEndOfTheTwinsAndTouchesNothingElse) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Assign(Peer::Twins(mesh), {7, 8});
    Peer::Link(mesh, 2, NoIndex);
    EXPECT_THAT(mesh.twins(), ElementsAre(7, 8, NoIndex));
}

TEST(Link, SetsAnEarlierTwinToNoIndexAndTouchesNothingElse) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Assign(Peer::Twins(mesh), {2, 8, 0});
    Peer::Link(mesh, 0, NoIndex);
    EXPECT_THAT(mesh.twins(), ElementsAre(NoIndex, 8, 0));
}

TEST(Link, MakesTwoHalfEdgesTwinsOfEachOther) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Assign(Peer::Twins(mesh), {NoIndex, NoIndex, NoIndex});
    Peer::Link(mesh, 0, 2);
    EXPECT_THAT(mesh.twins(), ElementsAre(2, NoIndex, 0));
}

TEST(Link, AppendsTheFirstAndThenTheSecondAtTheEnd) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Link(mesh, 0, 1);
    EXPECT_THAT(mesh.twins(), ElementsAre(1, 0));
}

TEST(Link, ThrowsBeforeChangingAnythingWhenTheFirstIsBeyondTheEnd) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Assign(Peer::Twins(mesh), {NoIndex});
    EXPECT_THAT([&mesh] { Peer::Link(mesh, 2, 0); },
                testing::ThrowsMessage<std::runtime_error>("Cannot link edge"));
    EXPECT_THAT(mesh.twins(), ElementsAre(NoIndex));
}

TEST(Link, ThrowsWhenTheSecondWouldLeaveAGap) {
    DelaunayMesh mesh = Peer::Empty({});
    Peer::Assign(Peer::Twins(mesh), {NoIndex});
    EXPECT_THROW(Peer::Link(mesh, 0, 2), std::runtime_error);
    EXPECT_THROW(Peer::Link(mesh, 1, 3), std::runtime_error);
}

TEST(AddTriangle, ReturnsItsFirstHalfEdgeAndLinksItsThreeInOrder) {
    DelaunayMesh mesh = Peer::Empty({});
    EXPECT_EQ(Peer::AddTriangle(mesh, 4, 5, 6, NoIndex, NoIndex, NoIndex), 0U);
    EXPECT_EQ(Peer::AddTriangle(mesh, 5, 4, 7, 0, NoIndex, NoIndex), 3U);
    EXPECT_EQ(Peer::AddTriangle(mesh, 8, 5, 7, NoIndex, 5, NoIndex), 6U);
    EXPECT_EQ(Peer::AddTriangle(mesh, 4, 9, 7, NoIndex, NoIndex, 4), 9U);
    EXPECT_THAT(mesh.vertices(), ElementsAre(4, 5, 6, 5, 4, 7, 8, 5, 7, 4, 9, 7));
    EXPECT_THAT(
        mesh.twins(),
        ElementsAre(3, NoIndex, NoIndex, 0, 11, 7, NoIndex, 5, NoIndex, NoIndex, NoIndex, 4));
}

constexpr Point kCentre{10, 20};
constexpr std::uint64_t kBuckets = 8;

TEST(HullKey, GrowsWithTheAngleFromTheNegativeXAxisOverNegativeY) {
    struct Case {
        Point offset = {};
        std::uint64_t bucket = 0;
        const char* why = "";
    };
    // p = dx / (|dx| + |dy|); (1 + p) / 4 or, where dy > 0, (3 - p) / 4; times 8 buckets.
    constexpr Case kCases[] = {
        {{-5, 0}, 0, "(1 - 1) / 4 = 0"},
        {{-5, -5}, 1, "(1 - 1/2) / 4 = 1/8"},
        {{0, -5}, 2, "(1 + 0) / 4 = 1/4"},
        {{5, -5}, 3, "(1 + 1/2) / 4 = 3/8"},
        {{5, 0}, 4, "(1 + 1) / 4 = 1/2"},
        {{5, 5}, 5, "(3 - 1/2) / 4 = 5/8"},
        {{0, 5}, 6, "(3 - 0) / 4 = 3/4"},
        {{-5, 5}, 7, "(3 + 1/2) / 4 = 7/8"},
        {{-5, 0.001}, 7, "just below 1"},
        {{-5, -0.001}, 0, "just above 0"},
    };
    for (const Case& c : kCases) {
        const Point p{kCentre.x + c.offset.x, kCentre.y + c.offset.y};
        EXPECT_EQ(Peer::HullKey(kCentre, kBuckets, p), c.bucket) << c.why;
    }
}

TEST(HullKey, NeverFallsOverAWholeTurn) {
    constexpr std::uint64_t kManyBuckets = 1000;
    constexpr int kDirections = 5000;
    std::uint64_t previous = 0;
    for (int i = 0; i < kDirections; ++i) {
        const double angle = -3.14159265358979 + 6.28318530717958 * (i + 0.5) / kDirections;
        const Point p{kCentre.x + std::cos(angle), kCentre.y + std::sin(angle)};
        const std::uint64_t key = Peer::HullKey(kCentre, kManyBuckets, p);
        EXPECT_GE(key, previous) << "direction " << i;
        EXPECT_LT(key, kManyBuckets);
        previous = key;
    }
    EXPECT_EQ(previous, kManyBuckets - 1);
}

TEST(HullKey, WrapsToTheFirstBucketWhereRoundingMakesAWholeTurn) {
    // |dx| + |dy| = 1e17 + 1 rounds to 1e17, so p = -1 although dy > 0: (3 + 1) / 4 = 1.
    EXPECT_EQ(Peer::HullKey({0, 0}, kBuckets, {-1e17, 1}), 0U);
}

TEST(HullKey, PutsTheCentreIntoTheFirstBucket) {
    EXPECT_EQ(Peer::HullKey(kCentre, kBuckets, kCentre), 0U);
}

// Every sound mesh ends by itself; these five triangles name twins at random and would flip for
// ever. Found by trying random twins until one went on and on.
TEST(Legalize, EndsWhereTwinsDisagreeSoThatFlipsWouldNeverEnd) {
    constexpr std::array<double, 16> kPoints = {3, 7, 9, 2, 4, 5, 4, 1, 2, 8, 5, 2, 5, 6, 1, 4};
    DelaunayMesh mesh = Peer::Empty(kPoints);
    Peer::Assign(Peer::Vertices(mesh), {2, 1, 5, 3, 4, 0, 0, 5, 3, 0, 3, 7, 1, 5, 2});
    Peer::Assign(Peer::Twins(mesh), {12, 2, 5, 8, 5, 7, 5, 1, 9, 14, 6, 12, 12, 9, 2});
    EXPECT_LT(Peer::Legalize(mesh, 8), mesh.vertices().size());
}

}  // namespace
}  // namespace orl::matcher
