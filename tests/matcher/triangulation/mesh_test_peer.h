#pragma once

// What tests reach of a mesh's inside: an empty mesh to try the primitives on, and writable arrays
// to break a finished one with.

#include <cstdint>
#include <initializer_list>
#include <span>

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
    static HalfEdge Legalize(DelaunayMesh& mesh, HalfEdge a) {
        return mesh.Legalize<PlainCircle>(a);
    }

    // The bucket of a point among `buckets` around a centre.
    static std::uint64_t HullKey(const Point& centre, std::uint64_t buckets, const Point& p) {
        DelaunayMesh mesh = Empty({});
        mesh.centre_ = centre;
        mesh.hashSize_ = buckets;
        return mesh.HullKey(p);
    }

    static auto& Vertices(DelaunayMesh& mesh) { return mesh.vertices_; }
    static auto& Twins(DelaunayMesh& mesh) { return mesh.twins_; }
    static auto& HullNext(DelaunayMesh& mesh) { return mesh.hullNext_; }
    static const auto& HullPrev(const DelaunayMesh& mesh) { return mesh.hullPrev_; }
    static const auto& HullTriangle(const DelaunayMesh& mesh) { return mesh.hullTriangle_; }

    // Gives one of the arrays above other entries.
    template <typename Array>
    static void Assign(Array& array, std::initializer_list<std::uint64_t> entries) {
        array.clear();
        for (const std::uint64_t entry : entries) {
            array.push_back(entry);
        }
    }
    static const Point& Centre(const DelaunayMesh& mesh) { return mesh.centre_; }
};

}  // namespace orl::matcher
