#include "matcher/features/finger_features.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>

#include "matcher/features/angles.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::matcher {

namespace {

constexpr std::size_t kMinMinutiae = 2;
constexpr float kGridUnits = 256.0F;  // along the image's larger side

// Stored bytes are the low 8 bits of the rounded value, without clamping: a minutia on the far edge
// of the larger side scales to 256 and is stored as 0.
std::uint8_t LowByte(long value) {
    return static_cast<std::uint8_t>(value);
}

std::uint8_t GridByte(std::uint16_t pixels, float scale) {
    return LowByte(std::lround(static_cast<float>(pixels) * scale));
}

TriangleVertex VertexOf(const Minutia& minutia, float scale) {
    return {.x = GridByte(minutia.x, scale),
            .y = GridByte(minutia.y, scale),
            .angle = LowByte(DegreesToSteps(minutia.angle)),
            .type = static_cast<std::uint8_t>(minutia.type)};
}

DelaunayMesh Triangulate(const MinutiaList& minutiae, std::span<double> coordinates) {
    std::size_t used = 0;
    for (const Minutia& minutia : minutiae) {
        coordinates[used++] = minutia.x;
        coordinates[used++] = minutia.y;
    }
    return DelaunayMesh(coordinates.first(used));
}

// One feature per triangle, from the last triangle to the first, then sorted; features of equal key
// stay in the order in which they were made.
std::vector<TriangleFeature> MakeTriangles(const MinutiaList& minutiae,
                                           const ImageSize& imageSize) {
    std::array<double, 2 * kMaxMinutiae> coordinates{};
    const DelaunayMesh mesh = Triangulate(minutiae, coordinates);
    const auto& corners = mesh.vertices();
    const float scale =
        kGridUnits / static_cast<float>(std::max(imageSize.width, imageSize.height));

    std::vector<TriangleFeature> triangles;
    triangles.reserve(corners.size() / kHalfEdgesPerTriangle);
    for (std::size_t t = corners.size() / kHalfEdgesPerTriangle; t-- > 0;) {
        const std::size_t first = kHalfEdgesPerTriangle * t;
        triangles.push_back(MakeTriangleFeature(VertexOf(minutiae[corners[first]], scale),
                                                VertexOf(minutiae[corners[first + 1]], scale),
                                                VertexOf(minutiae[corners[first + 2]], scale)));
    }
    std::stable_sort(triangles.begin(), triangles.end(), TriangleKeyLess);
    return triangles;
}

template <FeatureForm kForm>
BasicFingerFeatures<kForm> MakeFinger(const MinutiaList& minutiae, const ImageSize& imageSize) {
    BasicFingerFeatures<kForm> finger;
    finger.minutiaCount = minutiae.size();
    finger.triangles = MakeTriangles(minutiae, imageSize);
    if constexpr (kForm == FeatureForm::kFull) {
        finger.imageSize = imageSize;
        finger.minutiae = minutiae;
    }
    return finger;
}

}  // namespace

template <FeatureForm kForm>
bool BuildFingerFeatures(std::vector<BasicFingerFeatures<kForm>>& features,
                         const ImageSize& imageSize,
                         std::span<const MinutiaList> fingers) {
    assert(fingers.empty() || imageSize.width > 0 || imageSize.height > 0);
    for (const MinutiaList& minutiae : fingers) {
        if (minutiae.size() < kMinMinutiae || minutiae.size() > kMaxMinutiae) {
            return false;
        }
        features.push_back(MakeFinger<kForm>(minutiae, imageSize));
    }
    return true;
}

template bool BuildFingerFeatures(std::vector<FingerFeatures>&,
                                  const ImageSize&,
                                  std::span<const MinutiaList>);
template bool BuildFingerFeatures(std::vector<FullFingerFeatures>&,
                                  const ImageSize&,
                                  std::span<const MinutiaList>);

}  // namespace orl::matcher
