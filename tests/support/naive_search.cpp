// The second matcher's search: every triangle against every triangle.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <set>

#include "tests/support/naive_arithmetic.h"
#include "tests/support/naive_matching.h"

namespace orl::naive {
namespace {

// Largest difference of the three kinds, each below its limit, under one order; nothing otherwise.
std::optional<std::array<int, 3>> LargestDifferences(const TriangleFeature& a,
                                                     const TriangleFeature& b,
                                                     int shift) {
    const auto va = [&](int j) { return a.vertices[(j + shift) % 3]; };
    const auto vb = [&](int j) { return b.vertices[j % 3]; };
    int descriptor = 0;
    int relative = 0;
    int edge = 0;
    for (int j = 0; j < 3; ++j) {
        const int turned = Mod256(Mod256(vb(0).angle - va(0).angle) + va(j).angle);
        if (LinesApart(turned, vb(j).angle) >= 43) {
            return std::nullopt;
        }
        descriptor = std::max(descriptor, std::abs(b.sides[j] - a.sides[(j + shift) % 3]));
        relative =
            std::max(relative,
                     Apart(Fold(vb(j + 1).angle, vb(j).angle), Fold(va(j + 1).angle, va(j).angle)));
        for (int other : {j + 1, j + 2}) {
            edge = std::max(edge,
                            Apart(Fold(BearingByte(vb(other), vb(j)), vb(j).angle),
                                  Fold(BearingByte(va(other), va(j)), va(j).angle)));
        }
    }
    if (descriptor >= 18 || relative >= 35 || edge >= 35) {
        return std::nullopt;
    }
    return std::array<int, 3>{descriptor, relative, edge};
}

bool IsCandidate(const TriangleFeature& a, const TriangleFeature& b) {
    const int key = Wrapped8(a.sides[0]);
    const int other = Wrapped8(b.sides[0]);
    if (other < Wrapped8(key - 18) || other > Wrapped8(key + 18)) {
        return false;
    }
    bool near = true;
    for (int m = 0; m < 3; ++m) {
        near = near && std::abs(Wrapped8(b.sides[m] - a.sides[m])) <= 17;
    }
    return near;
}

}  // namespace

int TriangleSimilarity(const TriangleFeature& a, const TriangleFeature& b) {
    std::set<int> costs;
    for (int shift = 0; shift < 3; ++shift) {
        if (const auto d = LargestDifferences(a, b, shift)) {
            costs.insert(((*d)[2] * 1024 / 35) * ((*d)[1] * 1024 / 35) * ((*d)[0] * 1024 / 18));
        }
    }
    return costs.empty() ? 0 : 1024 - *costs.begin() / 1048576;
}

std::vector<TrianglePair> SearchTrianglePairs(std::span<const TriangleFeature> a,
                                              std::span<const TriangleFeature> b) {
    std::vector<TrianglePair> pairs;
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = 0; j < b.size(); ++j) {
            const int similarity = IsCandidate(a[i], b[j]) ? TriangleSimilarity(a[i], b[j]) : 0;
            if (similarity > 0) {
                pairs.push_back({similarity, i, j});
            }
        }
    }
    return pairs;
}

}  // namespace orl::naive
