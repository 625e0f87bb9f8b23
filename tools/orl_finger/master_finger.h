#pragma once

// A whole finger, of which every impression shows a part.

#include <vector>

#include "tools/orl_finger/ridge_flow.h"

namespace orl::tools {

enum class MinutiaKind { kEnding = 1, kBifurcation = 2 };  // the record's type codes

// A minutia of the model: place as in RidgeFlow, direction in turns, [0, 1), counter-clockwise.
struct ModelMinutia {
    Vector place;
    double direction = 0;
    MinutiaKind kind = MinutiaKind::kEnding;
};

struct MasterFinger {
    RidgeFlow flow;
    double ridgePeriod = 0;  // pixels from one ridge to the next
    std::vector<ModelMinutia> minutiae;
};

// A finger: its pad, its pattern, and minutiae that keep more than a ridge's width from each other,
// are denser near cores and deltas, and lie along the ridges.
MasterFinger drawFinger(RandomStream& random);

// Whether the point keeps `distance` from every minutia.
bool keepsApart(const Vector& point, const std::vector<ModelMinutia>& minutiae, double distance);

// A minutia at the point, along the ridges there, one way or the other.
ModelMinutia drawMinutiaAt(const RidgeFlow& flow, const Vector& point, RandomStream& random);

// An evenly spread point of the ellipse.
Vector drawPointInPad(const PadShape& pad, RandomStream& random);

}  // namespace orl::tools
