#pragma once

// Fingers made up for tests of matching. They depend on the generator's state alone, and its raw
// numbers are used, not the library's distributions, which differ between platforms.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::test {

// Image of all synthetic fingers, pixels.
inline constexpr matcher::ImageSize kSyntheticImage = {388, 374};

// `count` minutiae anywhere on the image, its far edges included.
matcher::MinutiaList RandomMinutiaList(std::mt19937& random, std::size_t count);

// How a second impression differs from the first.
struct ImpressionChange {
    double rotationDegrees = 0.0;  // about the image's centre
    int jitterPixels = 0;          // at most, on each axis
    int jitterDegrees = 0;         // at most, of each direction
    int lostPercent = 0;           // minutiae that are missing
    std::size_t added = 0;         // random minutiae besides
};

// Another impression of the finger; minutiae that leave the image are lost.
matcher::MinutiaList Impression(std::mt19937& random,
                                const matcher::MinutiaList& finger,
                                const ImpressionChange& change);

// The finger's features. REQUIRES: 2..128 minutiae, not all on one line.
matcher::FingerFeatures BuiltFinger(const matcher::MinutiaList& minutiae);

// Sorts triangles as a finger's list stands: ascending by side bytes 0, 1 and 2 as signed bytes,
// equal ones in their order.
void SortTriangles(std::vector<matcher::TriangleFeature>& triangles);

// `count` triangles in a finger's order, built from vertices of random bytes with coordinates below
// `extent` (1..256 grid units).
std::vector<matcher::TriangleFeature> RandomTriangles(std::mt19937& random,
                                                      std::size_t count,
                                                      unsigned extent);

}  // namespace orl::test
