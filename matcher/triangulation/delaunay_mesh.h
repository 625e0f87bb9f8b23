#pragma once

// A Delaunay triangulation of points in the plane, built by a radial sweep with an advancing convex
// hull and edge flips, held as a half-edge mesh. Plain double arithmetic, no exact fallback.

#include <cstdint>
#include <span>
#include <vector>

namespace orl::matcher {

class DelaunayMesh {
  public:
    // Triangulates points (x0, y0, x1, y1, ...), which are not copied: the caller keeps them alive
    // and unchanged for the life of the mesh.
    // Throws: std::runtime_error "not triangulation" when no triangle can be formed (fewer than
    // three points, all on one line, all at one spot); std::runtime_error "Cannot link edge" on a
    // broken internal invariant; std::bad_alloc.
    explicit DelaunayMesh(std::span<const double> points);

    // The triangles, three point indices each, in the order of construction.
    const std::vector<std::uint64_t>& vertices() const { return vertices_; }

  private:
    std::vector<std::uint64_t> vertices_;
};

}  // namespace orl::matcher
