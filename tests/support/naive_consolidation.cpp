// The second matcher's way from pairs of triangles to pairs of minutiae.

#include <functional>
#include <map>
#include <set>
#include <utility>

#include "tests/support/naive_matching.h"

namespace orl::naive {

std::vector<TrianglePair> Ranked(const std::vector<TrianglePair>& pairs) {
    std::multimap<int, TrianglePair, std::greater<>> bySimilarity;
    for (const TrianglePair& pair : pairs) {
        bySimilarity.emplace(pair.similarity, pair);
    }
    std::vector<TrianglePair> ranked;
    for (const auto& [similarity, pair] : bySimilarity) {
        ranked.push_back(pair);
    }
    return ranked;
}

std::vector<MinutiaPair> Consolidate(const std::vector<TrianglePair>& trianglePairs,
                                     std::span<const TriangleFeature> a,
                                     std::span<const TriangleFeature> b) {
    std::vector<MinutiaPair> result;
    if (trianglePairs.size() < 3) {
        return result;
    }
    std::set<std::pair<int, int>> takenA;
    std::set<std::pair<int, int>> takenB;
    for (const TrianglePair& pair : Ranked(trianglePairs)) {
        for (int j = 0; j < 3; ++j) {
            const TriangleVertex& va = a[pair.a].vertices[j];
            const TriangleVertex& vb = b[pair.b].vertices[j];
            const bool bothTaken =
                takenA.count({va.x, va.y}) == 1 && takenB.count({vb.x, vb.y}) == 1;
            takenA.insert({va.x, va.y});
            takenB.insert({vb.x, vb.y});
            if (!bothTaken) {
                result.emplace_back(va, vb);
            }
        }
    }
    return result;
}

}  // namespace orl::naive
