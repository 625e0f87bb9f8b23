#include "matcher/features/finger_features.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

#include "matcher/features/angles.h"
#include "matcher/features/rounding.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/triangulation/bucket_sort.h"
#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::matcher {

namespace {

constexpr std::size_t kMinMinutiae = 2;
constexpr float kGridUnits = 256.0F;  // along the image's larger side

// No mesh has twice as many triangles as points.
constexpr std::size_t kMaxTriangles = 2 * kMaxMinutiae;

using Corner = TriangleMaker::Corner;

// Stored bytes are the low 8 bits of the rounded value, without clamping: a minutia on the far edge
// of the larger side scales to 256 and is stored as 0.
std::uint8_t LowByte(int value) {
    return static_cast<std::uint8_t>(value);
}

std::uint8_t GridByte(std::uint16_t pixels, float scale) {
    return LowByte(RoundHalfUp(static_cast<float>(pixels) * scale));
}

TriangleVertex VertexOf(const Minutia& minutia, float scale) {
    return {.x = GridByte(minutia.x, scale),
            .y = GridByte(minutia.y, scale),
            .angle = LowByte(DegreesToSteps(minutia.angle)),
            .type = static_cast<std::uint8_t>(minutia.type)};
}

// A triangle of the mesh on its way into the sorted list. The place in which it was made is the
// lowest byte of the number that it is sorted by: triangles of equal key keep that order.
struct SortItem {
    std::uint32_t keyAndPlace;
    std::uint32_t sideWord;
};

constexpr std::uint32_t kPlaceBits = 8;
static_assert(kMaxTriangles <= 1U << kPlaceBits);

// The corners of the mesh's triangles, three for each.
using TriangleCorners = std::span<const SmallDelaunayMesh::Index>;

// The items of all triangles, from the last one to the first, in the order of the finger's list.
void SortTriangles(TriangleCorners points, const Corner* corners, SortItem* sorted) {
    constexpr std::size_t kBuckets = 256;
    constexpr std::uint32_t kBucketShift = 32 - 8;
    // Uninitialised: filled as far as it is read
    std::array<SortItem, kMaxTriangles> items;
    const std::size_t count = points.size() / kHalfEdgesPerTriangle;
    assert(count <= kMaxTriangles);
    const SmallDelaunayMesh::Index* triangle = points.data() + kHalfEdgesPerTriangle * count;
    for (std::uint32_t place = 0; place < count; ++place) {
        triangle -= kHalfEdgesPerTriangle;
        const std::uint32_t sideWord = TriangleMaker::SideWord(
            corners[triangle[0]], corners[triangle[1]], corners[triangle[2]]);
        items[place] = {.keyAndPlace = TriangleKey(sideWord) << kPlaceBits | place,
                        .sideWord = sideWord};
    }
    BucketSort<kBuckets>(
        std::span<const SortItem>(items).first(count),
        sorted,
        [](const SortItem& item) { return item.keyAndPlace >> kBucketShift; },
        [](const SortItem& left, const SortItem& right) {
            return left.keyAndPlace < right.keyAndPlace;
        });
}

// The features of the sorted items.
void WriteTriangles(TriangleCorners points,
                    const Corner* corners,
                    const TriangleVertex* vertices,
                    const SortItem* items,
                    std::span<TriangleFeature> triangles) {
    constexpr std::size_t kPlaceMask = (1U << kPlaceBits) - 1;
    const TriangleMaker maker;
    for (TriangleFeature& feature : triangles) {
        const std::size_t triangle = triangles.size() - 1 - (items->keyAndPlace & kPlaceMask);
        const SmallDelaunayMesh::Index* const own = &points[kHalfEdgesPerTriangle * triangle];
        const VertexOrder& order = maker.OrderOf(corners[own[0]], corners[own[1]], corners[own[2]]);
        for (std::size_t i = 0; i < order.size(); ++i) {
            feature.vertices[i] = vertices[own[order[i]]];
        }
        StoreLittleEndian(items->sideWord, feature.sides);
        ++items;
    }
}

// One feature per triangle, made from the last triangle to the first and sorted; features of equal
// key stay in the order in which they were made.
std::vector<TriangleFeature> MakeTriangles(std::span<const Minutia> minutiae,
                                           const ImageSize& imageSize) {
    // Uninitialised: filled as far as they are read
    std::array<double, 2 * kMaxMinutiae> coordinates;
    std::array<TriangleVertex, kMaxMinutiae> vertices;
    std::array<Corner, kMaxMinutiae> corners;
    std::array<SortItem, kMaxTriangles> items;
    const float scale =
        kGridUnits / static_cast<float>(std::max(imageSize.width, imageSize.height));
    for (std::size_t i = 0; i < minutiae.size(); ++i) {
        coordinates[2 * i] = minutiae[i].x;
        coordinates[2 * i + 1] = minutiae[i].y;
        vertices[i] = VertexOf(minutiae[i], scale);
        corners[i] = TriangleMaker::CornerOf(vertices[i]);
    }
    const SmallDelaunayMesh mesh(std::span<const double>(coordinates).first(2 * minutiae.size()));
    const TriangleCorners points(mesh.vertices().data(), mesh.vertices().size());
    SortTriangles(points, corners.data(), items.data());
    std::vector<TriangleFeature> triangles(points.size() / kHalfEdgesPerTriangle);
    WriteTriangles(points, corners.data(), vertices.data(), items.data(), triangles);
    return triangles;
}

template <FeatureForm kForm>
BasicFingerFeatures<kForm> MakeFinger(std::span<const Minutia> minutiae,
                                      const ImageSize& imageSize) {
    BasicFingerFeatures<kForm> finger;
    finger.minutiaCount = minutiae.size();
    finger.triangles = MakeTriangles(minutiae, imageSize);
    if constexpr (kForm == FeatureForm::kFull) {
        finger.imageSize = imageSize;
        finger.minutiae.assign(minutiae.begin(), minutiae.end());
    }
    return finger;
}

}  // namespace

template <FeatureForm kForm>
bool AppendFingerFeatures(std::vector<BasicFingerFeatures<kForm>>& features,
                          const ImageSize& imageSize,
                          std::span<const Minutia> minutiae) {
    assert(imageSize.width > 0 || imageSize.height > 0);
    if (minutiae.size() < kMinMinutiae || minutiae.size() > kMaxMinutiae) {
        return false;
    }
    features.push_back(MakeFinger<kForm>(minutiae, imageSize));
    return true;
}

template <FeatureForm kForm>
bool BuildFingerFeatures(std::vector<BasicFingerFeatures<kForm>>& features,
                         const ImageSize& imageSize,
                         std::span<const MinutiaList> fingers) {
    return std::ranges::all_of(fingers, [&](const MinutiaList& minutiae) {
        return AppendFingerFeatures(features, imageSize, minutiae);
    });
}

template bool AppendFingerFeatures(std::vector<FingerFeatures>&,
                                   const ImageSize&,
                                   std::span<const Minutia>);
template bool AppendFingerFeatures(std::vector<FullFingerFeatures>&,
                                   const ImageSize&,
                                   std::span<const Minutia>);
template bool BuildFingerFeatures(std::vector<FingerFeatures>&,
                                  const ImageSize&,
                                  std::span<const MinutiaList>);
template bool BuildFingerFeatures(std::vector<FullFingerFeatures>&,
                                  const ImageSize&,
                                  std::span<const MinutiaList>);

}  // namespace orl::matcher
