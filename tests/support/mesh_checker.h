#pragma once

// Checks a finished triangulation against the rules that it promises, in exact integer arithmetic
// and with nothing of the mesh's own predicates.

#include <span>
#include <string>

#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::test {

// The first rule that the mesh of these points breaks, as text; empty when it is sound:
//
//   - there are triangles, with three half-edges each, and one twin entry for every half-edge;
//   - corners are points of the set, and the corners of a triangle lie at three different spots;
//   - every triangle has the winding (xb - xa)(yc - ya) - (yb - ya)(xc - xa) < 0;
//   - twins name each other and run along the same edge in opposite directions;
//   - the ring from hullStart along hullNext comes back to hullStart, visits no point twice, and
//     its edges are exactly the half-edges without a twin;
//   - no point of the set lies outside an edge of the ring;
//   - of the points at one spot exactly one is a corner, the same in all triangles;
//   - there are 2n - h - 2 triangles, n the number of different spots and h the number of them on
//     the outline of the set's convex hull, those within a straight side included;
//   - the areas of the triangles add up to the area of that hull;
//   - no point lies inside the circle through the corners of a triangle. Where the mesh's double
//     arithmetic cannot hold the value (sets wider than 4096), only edges are checked, each against
//     the two points opposite, and a value within the rounding error of that arithmetic passes.
//
// REQUIRES: points are the ones that the mesh was built from, whole numbers of at most 2^26.
std::string CheckMesh(const matcher::DelaunayMesh& mesh, std::span<const double> points);

}  // namespace orl::test
