#pragma once

// Where a triangulation starts: the box around its points and the seed triangle near the middle.
// Passes over all points, two at a time, that give the bits and the choices of the plain formulas
// taken point by point.
//
// All functions are safe from any thread. Points are x0, y0, x1, y1, ..., every coordinate finite;
// a last single value is not a point.

#include <span>

#include "matcher/triangulation/half_edge.h"
#include "matcher/triangulation/predicates.h"

namespace orl::matcher {

struct PointBox {
    Point low;
    Point high;
    // Every coordinate is a whole number, and none lies further than kExactSpan from another one of
    // its axis.
    bool isExact = false;
};

// Deliberate: the maxima start at the smallest positive double, not at the most negative one. Where
// every coordinate is negative the box reaches up to zero, which moves the seed. Never throws.
PointBox BoxOf(std::span<const double> points);

struct Seed {
    PointIndex i0;
    PointIndex i1;
    PointIndex i2;
};

// Three points near the middle of the box that form a small circle, in the mesh's winding: the
// point nearest to the middle, the one nearest to that apart from its copies, and the one that
// makes the smallest circle with both; the first of equals each time.
// Throws: std::runtime_error "not triangulation" when there are no such three.
Seed ChooseSeed(std::span<const double> points, const PointBox& box);

}  // namespace orl::matcher
