// Any points: the mesh is the plain sweep's, entry by entry, and sound unless a flip lost a hull
// entry. The first byte chooses the grid, so that lines, copies and circles are common; then two
// bytes a coordinate.

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "matcher/triangulation/delaunay_mesh.h"
#include "tests/support/mesh_checker.h"
#include "tests/support/plain_sweep.h"

namespace {

using orl::fuzz::Require;

unsigned Coordinate(const std::uint8_t* bytes) {
    return unsigned{bytes[0]} << 8U | bytes[1];
}

std::vector<double> PointsOf(const std::uint8_t* data, std::size_t size) {
    const unsigned mask = (1U << (1 + data[0] % 14)) - 1;  // 1 to 14 bits a coordinate
    std::vector<double> points;
    for (std::size_t i = 1; i + 3 < size; i += 4) {
        points.push_back(Coordinate(data + i) & mask);
        points.push_back(Coordinate(data + i + 2) & mask);
    }
    return points;
}

template <typename Sequence>
std::vector<std::uint64_t> Copied(const Sequence& sequence) {
    return {sequence.begin(), sequence.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 1 + 4 * 160;  // beyond the 128 points of a finger
    if (size < 1 || size > kMostBytes) {
        return 0;
    }
    const std::vector<double> points = PointsOf(data, size);
    const auto plain = orl::test::SweepPlainly(points);
    try {
        const orl::matcher::DelaunayMesh mesh(points);
        Require(plain.has_value(), "a triangulation where the plain sweep finds one");
        Require(Copied(mesh.vertices()) == plain->vertices, "the plain sweep's triangles");
        if (plain->lostHullEntries == 0) {
            const std::string broken = orl::test::CheckMesh(mesh, points);
            Require(broken.empty(), broken.c_str());
        }
    } catch (const std::runtime_error&) {
        Require(!plain.has_value(), "no triangulation where the plain sweep finds none");
    }
    return 0;
}
