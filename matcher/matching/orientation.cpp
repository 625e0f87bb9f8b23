#include "matcher/matching/orientation.h"

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

// Puts the vertices of a triangle whose cyclic order a turn reverses into their own order.
void reorder(OrientedTriangle& oriented,
             std::size_t m,
             const VertexOrder& order,
             const TriangleFeature& triangle,
             TriangleCode& code) {
    const auto turned = oriented.vertices[m];
    oriented.vertices[m] = {turned[order[0]], turned[order[1]], turned[order[2]]};
    oriented.start[m] = 0;
    oriented.isIrregular = true;
    TriangleFeature reordered = triangle;
    for (std::size_t corner = 0; corner < kCorners; ++corner) {
        reordered.vertices[corner] = oriented.vertices[m][corner];
    }
    code = codeOf(reordered);
}

void orient(const TriangleFeature& triangle,
            const QuarterTurnBearings& bearings,
            QuarterTurnCodes& codes,
            OrientedTriangle& oriented) {
    kernels::codesOfQuarterTurns(triangle, bearings, codes);
    oriented.isIrregular = hasEdgeWithoutLength(triangle);
    oriented.vertices[0] = {triangle.vertices[0], triangle.vertices[1], triangle.vertices[2]};
    oriented.start[0] = 0;
    for (std::size_t m = 1; m < kOrientations; ++m) {
        oriented.vertices[m] = kernels::turnedVertices(triangle, m);
        const auto& [a, b, c] = oriented.vertices[m];
        const VertexOrder order = BearingOrder(a, b, c);
        oriented.start[m] = order[0];
        if (order[1] != (order[0] + 1) % kCorners) {
            reorder(oriented, m, order, triangle, codes[m]);
        }
    }
}

}  // namespace

std::array<TriangleVertex, kCorners> orderedVertices(const OrientedTriangle& triangle,
                                                     std::size_t orientation) {
    const auto& vertices = triangle.vertices[orientation];
    const std::size_t start = triangle.start[orientation];
    return {vertices[start], vertices[(start + 1) % kCorners], vertices[(start + 2) % kCorners]};
}

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
