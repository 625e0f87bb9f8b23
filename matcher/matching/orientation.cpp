#include "matcher/matching/orientation.h"

#include <algorithm>

#include "matcher/features/lookup_tables.h"
#include "matcher/features/triangle_feature.h"
#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {
namespace {

bool hasEdgeWithoutLength(const TriangleFeature& triangle) {
    const auto coincide = [](const TriangleVertex& a, const TriangleVertex& b) {
        return a.x == b.x && a.y == b.y;
    };
    const auto& [a, b, c] = triangle.vertices;
    return coincide(a, b) || coincide(b, c) || coincide(c, a);
}

std::uint8_t indexOf(const VertexOrder& order) {
    return static_cast<std::uint8_t>(std::find(kCornerOrders.begin(), kCornerOrders.end(), order) -
                                     kCornerOrders.begin());
}

std::array<TriangleVertex, kCorners> turnedVertices(const TriangleFeature& triangle,
                                                    std::size_t quarterTurns,
                                                    const VertexOrder& order) {
    return {turnedVertex(triangle.vertices[order[0]], quarterTurns),
            turnedVertex(triangle.vertices[order[1]], quarterTurns),
            turnedVertex(triangle.vertices[order[2]], quarterTurns)};
}

TriangleCode codeOfVertices(const std::array<TriangleVertex, kCorners>& vertices,
                            const TriangleFeature& triangle) {
    TriangleFeature reordered = triangle;
    std::copy(vertices.begin(), vertices.end(), reordered.vertices);
    return codeOf(reordered);
}

// For triangles whose turned vertices cannot be told without making each turned copy.
void orientByBearings(const TriangleFeature& triangle,
                      const QuarterTurnBearings& bearings,
                      QuarterTurnCodes& codes,
                      OrientedTriangle& oriented) {
    oriented.isIrregular = hasEdgeWithoutLength(triangle);
    QuarterTurnStarts starts{};
    for (std::size_t m = 1; m < kOrientations; ++m) {
        const auto [a, b, c] = turnedVertices(triangle, m, kCornerOrders[0]);
        oriented.order[m] = indexOf(BearingOrder(a, b, c));
        starts[m] = oriented.order[m] < kCorners ? oriented.order[m] : std::uint8_t{0};
    }
    code_kernels::codesOfQuarterTurns(triangle, starts, bearings, codes);
    for (std::size_t m = 1; m < kOrientations; ++m) {
        if (oriented.order[m] >= kCorners) {
            oriented.isIrregular = true;
            codes[m] = codeOfVertices(turnedVertices(triangle, m, kCornerOrders[oriented.order[m]]),
                                      triangle);
        }
    }
}

void orient(const TriangleFeature& triangle,
            const QuarterTurnBearings& bearings,
            QuarterTurnCodes& codes,
            OrientedTriangle& oriented) {
    QuarterTurnStarts starts;
    if (code_kernels::startsOfQuarterTurns(triangle, starts)) {
        oriented = {starts, false};
        code_kernels::codesOfQuarterTurns(triangle, starts, bearings, codes);
    } else {
        oriented.order[0] = 0;
        orientByBearings(triangle, bearings, codes, oriented);
    }
}

}  // namespace

OrientedFinger orientedFinger(std::span<const TriangleFeature> triangles, Scratch& scratch) {
    const QuarterTurnBearings& bearings = QuarterTurnBearings::Table();
    const auto codes = scratch.take<QuarterTurnCodes>(triangles.size());
    const auto oriented = scratch.take<OrientedTriangle>(triangles.size());
    for (std::size_t u = 0; u < triangles.size(); ++u) {
        orient(triangles[u], bearings, codes[u], oriented[u]);
    }
    return {triangles, codes, oriented};
}

}  // namespace orl::matcher
