#pragma once

// How the ridges of a finger run: an orientation at every point, by the zero-pole model (Sherlock
// and Monro, "A model for interpreting fingerprint topology", 1993). Each core is a zero and each
// delta a pole of a complex function, half of whose argument is the orientation:
//
//     orientation(z) = 1/2 * (sum of arg(z - core) - sum of arg(z - delta)) + bend(z)
//
// The model runs level far from its singular points; `bend` arches the ridges over the upper pad,
// as a finger's do, and makes the whole flow of a plain arch, which has no singular points.
//
// Lengths are pixels at 197 pixels per cm, with the origin in the middle of the finger's pad and y
// up. Orientations are turns, [0, 0.5).

#include <vector>

#include "tools/orl_finger/portable_math.h"
#include "tools/orl_finger/random_stream.h"

namespace orl::tools {

enum class PatternClass { kLeftLoop, kRightLoop, kWhorl, kArch, kTentedArch };

// The ellipse that a whole finger pad covers.
struct PadShape {
    double halfWidth = 0;
    double halfHeight = 0;
};

struct RidgeFlow {
    PatternClass pattern = PatternClass::kArch;
    std::vector<Vector> cores;
    std::vector<Vector> deltas;
    PadShape pad;
    double bendTurns = 0;  // how far the ridges slope at the pad's side, at the bend's height
};

// A pattern by the frequencies found in large collections (Wilson, Candela and Watson, 1994): left
// loop 33.8 %, right loop 31.7 %, whorl 27.9 %, arch 3.7 %, tented arch 2.9 %.
PatternClass drawPattern(RandomStream& random);

// A flow of that pattern with its singular points at plausible places.
RidgeFlow drawFlow(PatternClass pattern, const PadShape& pad, RandomStream& random);

// How the ridges run at a point, turns, [0, 0.5).
double orientationAt(const RidgeFlow& flow, const Vector& point);

}  // namespace orl::tools
