#pragma once

// The geometric predicates of the triangulation: one formula each, in plain double arithmetic,
// evaluated as written. Reassociating a sum, replacing the reciprocal by a division or contracting
// a product and a sum moves last bits, and with them the order of near-ties and the mesh.
//
// For integer coordinates Orient is exact up to 2^25 and InCircle up to 4096.
// All functions are pure and never throw.

#include <cstring>
#include <limits>

namespace orl::matcher {

struct Point {
    double x = 0.0;
    double y = 0.0;
};

// True when p, q, r turn so that p sees the hull edge from q to r from outside. Three points on one
// line give false.
inline bool Orient(const Point& p, const Point& q, const Point& r) {
    return (q.y - p.y) * (r.x - q.x) - (q.x - p.x) * (r.y - q.y) < 0.0;
}

// True when p lies strictly inside the circle through a, b and c, which have the mesh's winding.
// Four points on one circle give false.
inline bool InCircle(const Point& a, const Point& b, const Point& c, const Point& p) {
    const double dx = a.x - p.x;
    const double dy = a.y - p.y;
    const double ex = b.x - p.x;
    const double ey = b.y - p.y;
    const double fx = c.x - p.x;
    const double fy = c.y - p.y;
    const double ap = dx * dx + dy * dy;
    const double bp = ex * ex + ey * ey;
    const double cp = fx * fx + fy * fy;
    return dx * (ey * cp - bp * fy) - dy * (ex * cp - bp * fx) + ap * (ex * fy - ey * fx) < 0.0;
}

// A point as a pair of lanes, which halves the work of InCircle. Multiplication and addition of two
// numbers do not depend on their order, so the lanes give the bits of the plain formula.
using PointLanes [[gnu::vector_size(2 * sizeof(double))]] = double;

// The point whose x and y stand at xy[0] and xy[1].
inline PointLanes LoadPoint(const double* xy) {
    PointLanes lanes;
    std::memcpy(&lanes, xy, sizeof lanes);
    return lanes;
}

inline PointLanes Swapped(PointLanes lanes) {
    return __builtin_shufflevector(lanes, lanes, 1, 0);
}

// The same predicate, to the same bits.
inline bool InCircle(PointLanes a, PointLanes b, PointLanes c, PointLanes p) {
    const PointLanes d = a - p;
    const PointLanes e = b - p;
    const PointLanes f = c - p;
    const PointLanes ap = d * d + Swapped(d * d);  // twice, in both lanes
    const PointLanes bp = e * e + Swapped(e * e);
    const PointLanes cp = f * f + Swapped(f * f);
    const PointLanes inner = d * Swapped(e * cp - bp * f);
    const PointLanes cross = e * Swapped(f);
    return inner[0] - inner[1] + ap[0] * (cross[0] - cross[1]) < 0.0;
}

// Orient for pairs of lanes: a difference of doubles lies below zero exactly when its first operand
// lies below the second, so the two products need only be compared.
inline bool Orient(PointLanes p, PointLanes q, PointLanes r) {
    const PointLanes products = (q - p) * Swapped(r - q);
    return products[1] < products[0];
}

// Coordinates for which ExactCircle answers as InCircle does: whole numbers that lie at most this
// far apart in each direction.
inline constexpr double kExactSpan = 4096.0;

// InCircle(a, b, c, p) for circles that pass from one triangle to the next, for coordinates within
// kExactSpan of each other.
//
// With u = b - a and v = c - a at a, s = c - p and t = b - p at p, InCircle's value is, multiplied
// out, -((u x v)(s . t) + (u . v)(s x t)): the sum of the angles at a and p against half a turn.
// Either form is exact when each intermediate is a whole number below 2^53: with differences of at
// most 2^12, the products and sums here stay within 2^25 and 2^51, those of InCircle within 2^52.
// So both have the sign of the same whole number.
class ExactCircle {
  public:
    ExactCircle(PointLanes a, PointLanes b, PointLanes c) : a_(a), b_(b), c_(c) {}

    bool Holds(PointLanes p) {
        p_ = p;
        const PointLanes fromX = __builtin_shufflevector(a_, p, 0, 2);
        const PointLanes fromY = __builtin_shufflevector(a_, p, 1, 3);
        const PointLanes toX = __builtin_shufflevector(b_, c_, 0, 2);
        const PointLanes toY = __builtin_shufflevector(b_, c_, 1, 3);
        const PointLanes x = toX - fromX;  // of u and s
        const PointLanes y = toY - fromY;
        const PointLanes otherX = Swapped(toX) - fromX;  // of v and t
        const PointLanes otherY = Swapped(toY) - fromY;
        const PointLanes dots = x * otherX + y * otherY;
        const PointLanes crosses = x * otherY - y * otherX;
        const PointLanes terms = crosses * Swapped(dots);
        return terms[0] + terms[1] > 0.0;
    }

    // The point asked for last takes the place of b.
    void MoveOn() { b_ = p_; }

  private:
    PointLanes a_;
    PointLanes b_;
    PointLanes c_;
    PointLanes p_ = {};
};

// The same with InCircle itself, for any coordinates.
class PlainCircle {
  public:
    PlainCircle(PointLanes a, PointLanes b, PointLanes c) : a_(a), b_(b), c_(c) {}

    bool Holds(PointLanes p) {
        p_ = p;
        return InCircle(a_, b_, c_, p);
    }

    void MoveOn() { b_ = p_; }

  private:
    PointLanes a_;
    PointLanes b_;
    PointLanes c_;
    PointLanes p_ = {};
};

// The circle through three points, relative to the first of them: with D = b - a and E = c - a,
// d = D x E, the centre lies at a + (X, Y) / 2d.
struct CircumcircleTerms {
    double bl;  // |D|^2
    double cl;  // |E|^2
    double d;   // twice the signed area of the triangle
    double X;
    double Y;
};

inline CircumcircleTerms CircumcircleOf(const Point& a, const Point& b, const Point& c) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double ex = c.x - a.x;
    const double ey = c.y - a.y;
    const double bl = dx * dx + dy * dy;
    const double cl = ex * ex + ey * ey;
    const double d = dx * ey - dy * ex;
    return {.bl = bl, .cl = cl, .d = d, .X = ey * bl - dy * cl, .Y = dx * cl - ex * bl};
}

// Squared radius of the circle through three points, or the largest double when two of them
// coincide with the first or all lie on one line.
inline double Circumradius(const Point& a, const Point& b, const Point& c) {
    const auto [bl, cl, d, X, Y] = CircumcircleOf(a, b, c);
    if (bl == 0.0 || cl == 0.0 || d == 0.0) {
        return std::numeric_limits<double>::max();
    }
    return (X * X + Y * Y) * ((1.0 / d) * 0.25) / d;
}

// Centre of the circle through three points. REQUIRES: they do not lie on one line.
inline Point Circumcentre(const Point& a, const Point& b, const Point& c) {
    const auto [bl, cl, d, X, Y] = CircumcircleOf(a, b, c);
    return {.x = a.x + X * 0.5 * (1.0 / d), .y = a.y + Y * 0.5 * (1.0 / d)};
}

}  // namespace orl::matcher
