#include "matcher/triangulation/half_edge.h"

#include <gtest/gtest.h>

namespace orl::matcher {
namespace {

TEST(HalfEdge, BelongsToTheTriangleOfItsThird) {
    EXPECT_EQ(TriangleOf(0), 0U);
    EXPECT_EQ(TriangleOf(2), 0U);
    EXPECT_EQ(TriangleOf(3), 1U);
    EXPECT_EQ(TriangleOf(752), 250U);  // the last one of 251 triangles
}

TEST(HalfEdge, RunsAroundItsTriangleInThreeSteps) {
    for (HalfEdge e = 0; e < 3000; ++e) {
        EXPECT_EQ(NextHalfEdge(e), 3 * (e / 3) + (e + 1) % 3);
        EXPECT_EQ(PrevHalfEdge(e), 3 * (e / 3) + (e + 2) % 3);
        EXPECT_EQ(PrevHalfEdge(NextHalfEdge(e)), e);
        EXPECT_EQ(NextHalfEdge(NextHalfEdge(e)), PrevHalfEdge(e));
        EXPECT_EQ(TriangleOf(NextHalfEdge(e)), TriangleOf(e));
    }
}

TEST(HalfEdge, AreAtMostThreeForEachOfTwoNMinusFiveTriangles) {
    EXPECT_EQ(MaxHalfEdges(3), 3U);
    EXPECT_EQ(MaxHalfEdges(128), 753U);
}

TEST(HalfEdge, HasAllBitsSetWhereThereIsNone) {
    EXPECT_EQ(NoIndex, 0xFFFFFFFFFFFFFFFFU);
}

}  // namespace
}  // namespace orl::matcher
