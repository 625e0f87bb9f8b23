#pragma once

// Builds the features of fingers from their minutiae: triangulation, one TriangleFeature per
// triangle, sorted.

#include <span>
#include <vector>

#include "matcher/features/finger_model.h"

namespace orl::matcher {

// Appends one BasicFingerFeatures to `features` for each list of `fingers`, in order. Returns false
// as soon as a finger has fewer than 2 or more than 128 minutiae; what earlier fingers appended
// stays. True when every finger was built, also when `fingers` is empty.
// REQUIRES: imageSize has a side above 0 when `fingers` is not empty.
// Throws: std::runtime_error "not triangulation" when a finger's minutiae admit no triangle (two
// minutiae, all on one line, all at one spot); std::bad_alloc. Earlier fingers stay then too.
// Safe from several threads, each with its own `features`.
template <FeatureForm kForm>
bool BuildFingerFeatures(std::vector<BasicFingerFeatures<kForm>>& features,
                         const ImageSize& imageSize,
                         std::span<const MinutiaList> fingers);

// The same for the minutiae of one finger; takes no heap memory but what it appends.
template <FeatureForm kForm>
bool AppendFingerFeatures(std::vector<BasicFingerFeatures<kForm>>& features,
                          const ImageSize& imageSize,
                          std::span<const Minutia> minutiae);

extern template bool AppendFingerFeatures(std::vector<FingerFeatures>&,
                                          const ImageSize&,
                                          std::span<const Minutia>);
extern template bool AppendFingerFeatures(std::vector<FullFingerFeatures>&,
                                          const ImageSize&,
                                          std::span<const Minutia>);
extern template bool BuildFingerFeatures(std::vector<FingerFeatures>&,
                                         const ImageSize&,
                                         std::span<const MinutiaList>);
extern template bool BuildFingerFeatures(std::vector<FullFingerFeatures>&,
                                         const ImageSize&,
                                         std::span<const MinutiaList>);

}  // namespace orl::matcher
