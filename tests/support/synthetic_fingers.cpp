#include "tests/support/synthetic_fingers.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <stdexcept>
#include <tuple>

#include "matcher/features/finger_features.h"
#include "matcher/features/triangle_feature.h"

namespace orl::test {
namespace {

using matcher::Minutia;
using matcher::MinutiaList;
using matcher::TriangleFeature;
using matcher::TriangleVertex;

constexpr unsigned kFullTurnDegrees = 360;

// Evenly spread over 0..limit-1 as far as tests care.
unsigned Below(std::mt19937& random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

int Between(std::mt19937& random, int low, int high) {
    return low + static_cast<int>(Below(random, static_cast<unsigned>(high - low + 1)));
}

TriangleVertex RandomVertex(std::mt19937& random, unsigned extent) {
    constexpr unsigned kByteValues = 256;
    constexpr unsigned kTypes = 4;
    TriangleVertex vertex;
    vertex.x = static_cast<std::uint8_t>(Below(random, extent));
    vertex.y = static_cast<std::uint8_t>(Below(random, extent));
    vertex.angle = static_cast<std::uint8_t>(Below(random, kByteValues));
    vertex.type = static_cast<std::uint8_t>(Below(random, kTypes));
    return vertex;
}

// The position turned about the image's centre, clockwise as the image's y axis points down.
void TurnAboutCentre(double& x, double& y, double degrees) {
    constexpr double kPi = 3.14159265358979323846;
    const double radians = degrees * kPi / 180.0;
    const double centreX = kSyntheticImage.width / 2.0;
    const double centreY = kSyntheticImage.height / 2.0;
    const double dx = x - centreX;
    const double dy = y - centreY;
    x = centreX + dx * std::cos(radians) - dy * std::sin(radians);
    y = centreY + dx * std::sin(radians) + dy * std::cos(radians);
}

// 1..360, as loading leaves it.
std::uint16_t WholeTurnDegrees(int degrees) {
    constexpr int kTurn = kFullTurnDegrees;
    const int reduced = ((degrees % kTurn) + kTurn) % kTurn;
    return static_cast<std::uint16_t>(reduced == 0 ? kTurn : reduced);
}

}  // namespace

MinutiaList RandomMinutiaList(std::mt19937& random, std::size_t count) {
    MinutiaList list(count);
    for (Minutia& minutia : list) {
        minutia.type = 1 + Below(random, 2);
        minutia.x = static_cast<std::uint16_t>(Below(random, kSyntheticImage.width + 1U));
        minutia.y = static_cast<std::uint16_t>(Below(random, kSyntheticImage.height + 1U));
        minutia.angle = static_cast<std::uint16_t>(1 + Below(random, kFullTurnDegrees));
    }
    return list;
}

MinutiaList Impression(std::mt19937& random,
                       const MinutiaList& finger,
                       const ImpressionChange& change) {
    MinutiaList result;
    for (const Minutia& minutia : finger) {
        double x = minutia.x;
        double y = minutia.y;
        TurnAboutCentre(x, y, change.rotationDegrees);
        const long newX =
            std::lround(x) + Between(random, -change.jitterPixels, change.jitterPixels);
        const long newY =
            std::lround(y) + Between(random, -change.jitterPixels, change.jitterPixels);
        const int turned = minutia.angle + static_cast<int>(std::lround(change.rotationDegrees)) +
                           Between(random, -change.jitterDegrees, change.jitterDegrees);
        const bool lost = Between(random, 0, 99) < change.lostPercent;
        if (lost || newX < 0 || newY < 0 || newX > kSyntheticImage.width ||
            newY > kSyntheticImage.height) {
            continue;
        }
        result.push_back({minutia.type,
                          static_cast<std::uint16_t>(newX),
                          static_cast<std::uint16_t>(newY),
                          WholeTurnDegrees(turned)});
    }
    const MinutiaList added = RandomMinutiaList(random, change.added);
    result.insert(result.end(), added.begin(), added.end());
    result.resize(std::min(result.size(), matcher::kMaxMinutiae));
    return result;
}

matcher::FingerFeatures BuiltFinger(const MinutiaList& minutiae) {
    std::vector<matcher::FingerFeatures> features;
    if (!matcher::BuildFingerFeatures(features, kSyntheticImage, std::span(&minutiae, 1))) {
        throw std::invalid_argument("a synthetic finger needs 2 to 128 minutiae");
    }
    return features.front();
}

void SortTriangles(std::vector<TriangleFeature>& triangles) {
    const auto key = [](const TriangleFeature& triangle) {
        return std::tuple(static_cast<std::int8_t>(triangle.sides[0]),
                          static_cast<std::int8_t>(triangle.sides[1]),
                          static_cast<std::int8_t>(triangle.sides[2]));
    };
    std::stable_sort(triangles.begin(),
                     triangles.end(),
                     [&](const TriangleFeature& left, const TriangleFeature& right) {
                         return key(left) < key(right);
                     });
}

std::vector<TriangleFeature> RandomTriangles(std::mt19937& random,
                                             std::size_t count,
                                             unsigned extent) {
    std::vector<TriangleFeature> triangles;
    for (std::size_t i = 0; i < count; ++i) {
        const TriangleVertex a = RandomVertex(random, extent);
        const TriangleVertex b = RandomVertex(random, extent);
        const TriangleVertex c = RandomVertex(random, extent);
        triangles.push_back(matcher::MakeTriangleFeature(a, b, c));
    }
    SortTriangles(triangles);
    return triangles;
}

}  // namespace orl::test
