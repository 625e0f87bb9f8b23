#pragma once

// What tests reach of a mesh's inside: an empty mesh to try the primitives on, and writable arrays
// to break a finished one with.

#include <cstdint>
#include <span>
#include <vector>

#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::matcher {

class DelaunayMeshTestPeer {
  public:
    static DelaunayMesh Empty(std::span<const double> points) {
        return DelaunayMesh(points, DelaunayMesh::Unbuilt{});
    }

    static HalfEdge AddTriangle(DelaunayMesh& mesh,
                                PointIndex i0,
                                PointIndex i1,
                                PointIndex i2,
                                HalfEdge a,
                                HalfEdge b,
                                HalfEdge c) {
        return mesh.AddTriangle(i0, i1, i2, a, b, c);
    }
    static void Link(DelaunayMesh& mesh, HalfEdge a, HalfEdge b) { mesh.Link(a, b); }
    static HalfEdge Legalize(DelaunayMesh& mesh, HalfEdge a) { return mesh.Legalize(a); }

    // The bucket of a point among `buckets` around a centre.
    static std::uint64_t HullKey(const Point& centre, std::uint64_t buckets, const Point& p) {
        DelaunayMesh mesh = Empty({});
        mesh.centre_ = centre;
        mesh.hashSize_ = buckets;
        return mesh.HullKey(p);
    }

    static std::vector<PointIndex>& Vertices(DelaunayMesh& mesh) { return mesh.vertices_; }
    static std::vector<HalfEdge>& Twins(DelaunayMesh& mesh) { return mesh.twins_; }
    static std::vector<PointIndex>& HullNext(DelaunayMesh& mesh) { return mesh.hullNext_; }
    static const std::vector<PointIndex>& HullPrev(const DelaunayMesh& mesh) {
        return mesh.hullPrev_;
    }
    static const std::vector<HalfEdge>& HullTriangle(const DelaunayMesh& mesh) {
        return mesh.hullTriangle_;
    }
    static const Point& Centre(const DelaunayMesh& mesh) { return mesh.centre_; }
};

}  // namespace orl::matcher
