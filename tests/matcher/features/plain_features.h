#pragma once

// The features of a finger worked out plainly, with nothing shared with the shipped builder: what
// it is compared with.

#include <optional>
#include <span>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::test {

// The sorted triangles of a finger; nothing when its minutiae admit no triangle.
// REQUIRES: the image has a side above 0.
std::optional<std::vector<matcher::TriangleFeature>> PlainFeatures(
    std::span<const matcher::Minutia> minutiae, const matcher::ImageSize& size);

}  // namespace orl::test
