#include "tests/support/mesh_checker.h"

#include <algorithm>
#include <array>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/matcher/triangulation/mesh_test_peer.h"

namespace orl::test {
namespace {

using matcher::DelaunayMesh;
using matcher::NoIndex;
using Peer = matcher::DelaunayMeshTestPeer;
using testing::HasSubstr;

// The corners 0..3 of a square around its middle, 4, and a copy of the middle, 5.
constexpr std::array<double, 12> kPoints = {0, 0, 10, 0, 10, 10, 0, 10, 5, 4, 5, 4};

class CheckMeshFinds : public testing::Test {
  protected:
    std::string Broken() const { return CheckMesh(mesh, kPoints); }

    // The half-edge from one point to another.
    matcher::HalfEdge Edge(matcher::PointIndex from, matcher::PointIndex to) const {
        for (matcher::HalfEdge e = 0; e < mesh.vertices().size(); ++e) {
            if (mesh.vertices()[e] == from && mesh.vertices()[matcher::NextHalfEdge(e)] == to) {
                return e;
            }
        }
        ADD_FAILURE() << "no half-edge from " << from << " to " << to;
        return 0;
    }

    DelaunayMesh mesh{kPoints};
};

TEST_F(CheckMeshFinds, NothingInASoundMesh) {
    EXPECT_EQ(Broken(), "");
    EXPECT_EQ(mesh.vertices().size(), 12U);  // four triangles around the middle
}

TEST_F(CheckMeshFinds, AListThatIsNoListOfTriangles) {
    Peer::Vertices(mesh).PopBack();
    EXPECT_THAT(Broken(), HasSubstr("no list of triangles"));
    Peer::Vertices(mesh).clear();
    EXPECT_THAT(Broken(), HasSubstr("no list of triangles"));
}

TEST_F(CheckMeshFinds, AMissingTwinEntry) {
    Peer::Twins(mesh).PopBack();
    EXPECT_THAT(Broken(), HasSubstr("one twin for every half-edge"));
}

TEST_F(CheckMeshFinds, ACornerThatIsNoPoint) {
    Peer::Vertices(mesh)[3] = 6;
    EXPECT_THAT(Broken(), HasSubstr("starts at no point"));
}

TEST_F(CheckMeshFinds, ATriangleWithTwoCornersAtOneSpot) {
    Peer::Vertices(mesh)[0] = 4;
    Peer::Vertices(mesh)[1] = 5;
    EXPECT_THAT(Broken(), HasSubstr("joins two points at one spot"));
}

TEST_F(CheckMeshFinds, ATriangleOfTheWrongWinding) {
    std::swap(Peer::Vertices(mesh)[6], Peer::Vertices(mesh)[7]);
    EXPECT_THAT(Broken(), HasSubstr("triangle 2 has the wrong winding"));
}

TEST_F(CheckMeshFinds, ATwinThatDoesNotNameItsPartner) {
    Peer::Twins(mesh)[Edge(0, 4)] = Edge(1, 4);
    EXPECT_THAT(Broken(), HasSubstr("does not name it"));
    Peer::Twins(mesh)[Edge(0, 4)] = 12;
    EXPECT_THAT(Broken(), HasSubstr("does not name it"));
}

TEST_F(CheckMeshFinds, TwinsAlongDifferentEdges) {
    const auto a = Edge(0, 4);
    const auto b = Edge(4, 0);
    const auto c = Edge(2, 4);
    const auto d = Edge(4, 2);
    auto& twins = Peer::Twins(mesh);
    twins[a] = d;
    twins[d] = a;
    twins[b] = c;
    twins[c] = b;
    EXPECT_THAT(Broken(), HasSubstr("run along different edges"));
}

TEST_F(CheckMeshFinds, ARingThatDoesNotComeBack) {
    auto& next = Peer::HullNext(mesh);
    const auto second = next[mesh.hullStart()];
    next[second] = second;
    EXPECT_THAT(Broken(), HasSubstr("does not come back"));
}

TEST_F(CheckMeshFinds, ARingThatLeavesOutAnEdge) {
    auto& next = Peer::HullNext(mesh);
    const auto second = next[mesh.hullStart()];
    next[mesh.hullStart()] = next[second];
    EXPECT_THAT(Broken(), HasSubstr("no edge of the hull ring"));
}

TEST_F(CheckMeshFinds, AHullHalfEdgeThatIsItsOwnTwin) {
    const auto outer = Edge(mesh.hullStart(), mesh.hullNext()[mesh.hullStart()]);
    Peer::Twins(mesh)[outer] = outer;
    EXPECT_THAT(Broken(), HasSubstr("run along different edges"));
}

TEST_F(CheckMeshFinds, AnInnerEdgeWithoutTwins) {
    Peer::Twins(mesh)[Edge(0, 4)] = NoIndex;
    Peer::Twins(mesh)[Edge(4, 0)] = NoIndex;
    EXPECT_THAT(Broken(), HasSubstr("no edge of the hull ring"));
}

TEST_F(CheckMeshFinds, APointOutsideTheRing) {
    auto points = kPoints;
    points[10] = 20;  // the copy moves out of the square
    EXPECT_THAT(CheckMesh(mesh, points), HasSubstr("with a point outside"));
}

TEST_F(CheckMeshFinds, ASpotThatNoTriangleUses) {
    auto points = kPoints;
    points[11] = 6;  // the copy moves off the middle
    EXPECT_EQ(CheckMesh(mesh, points), "a spot of the set is no corner");
}

TEST_F(CheckMeshFinds, TwoPointsAtOneSpotInDifferentTriangles) {
    Peer::Vertices(mesh)[Edge(4, 0)] = 5;
    EXPECT_THAT(Broken(), HasSubstr("run along different edges"));
}

TEST_F(CheckMeshFinds, AnEdgeWithTheOppositePointInsideItsCircle) {
    // Two triangles of a flat kite, split along the long diagonal: from (0, 0) to (20, 0) with the
    // other corners at (10, 3) and (10, -3), each well inside the circle of the other three.
    constexpr std::array<double, 8> kKite = {0, 0, 20, 0, 10, 3, 10, -3};
    DelaunayMesh kite(kKite);
    EXPECT_EQ(CheckMesh(kite, kKite), "");
    Peer::Assign(Peer::Vertices(kite), {0, 2, 1, 0, 1, 3});
    Peer::Assign(Peer::Twins(kite), {NoIndex, NoIndex, 3, 2, NoIndex, NoIndex});
    EXPECT_THAT(CheckMesh(kite, kKite), HasSubstr("inside its circle"));
}

}  // namespace
}  // namespace orl::test
