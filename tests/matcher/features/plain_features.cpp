#include "tests/matcher/features/plain_features.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "tests/matcher/features/plain_triangle.h"
#include "tests/support/plain_sweep.h"

namespace orl::test {
namespace {

using matcher::ImageSize;
using matcher::Minutia;
using matcher::TriangleFeature;
using matcher::TriangleVertex;

TriangleVertex PlainVertex(const Minutia& minutia, float scale) {
    return {.x = static_cast<std::uint8_t>(std::lround(static_cast<float>(minutia.x) * scale)),
            .y = static_cast<std::uint8_t>(std::lround(static_cast<float>(minutia.y) * scale)),
            .angle = static_cast<std::uint8_t>((2 * minutia.angle * 255 + 360) / 720),
            .type = static_cast<std::uint8_t>(minutia.type)};
}

// Insertion: a feature moves left past every one of greater key, and stays behind equal ones.
void SortByInsertion(std::vector<TriangleFeature>& features) {
    const auto key = [](const TriangleFeature& feature) {
        const auto rank = [](std::uint8_t side) { return (side + 128) % 256; };
        return (rank(feature.sides[0]) * 256 + rank(feature.sides[1])) * 256 +
               rank(feature.sides[2]);
    };
    for (std::size_t i = 1; i < features.size(); ++i) {
        for (std::size_t k = i; k > 0 && key(features[k]) < key(features[k - 1]); --k) {
            std::swap(features[k], features[k - 1]);
        }
    }
}

}  // namespace

std::optional<std::vector<TriangleFeature>> PlainFeatures(std::span<const Minutia> minutiae,
                                                          const ImageSize& size) {
    std::vector<double> points;
    for (const Minutia& minutia : minutiae) {
        points.push_back(minutia.x);
        points.push_back(minutia.y);
    }
    const std::optional<PlainSweep> mesh = SweepPlainly(points);
    if (!mesh) {
        return std::nullopt;
    }
    const float scale = 256.0F / static_cast<float>(std::max(size.width, size.height));
    std::vector<TriangleFeature> features;
    for (std::size_t triangle = mesh->vertices.size() / 3; triangle > 0; --triangle) {
        std::array<TriangleVertex, 3> vertices;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            vertices[corner] =
                PlainVertex(minutiae[mesh->vertices[3 * (triangle - 1) + corner]], scale);
        }
        features.push_back(PlainTriangle(vertices));
    }
    SortByInsertion(features);
    return features;
}

}  // namespace orl::test
