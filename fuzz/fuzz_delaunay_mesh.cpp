// Any points: the mesh is the plain sweep's, entry by entry, in both widths of its entries, and
// sound unless a flip lost a hull entry. The first byte chooses the grid, so that lines, copies and
// circles are common, and where it lies; then two bytes a coordinate.

#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "matcher/triangulation/delaunay_mesh.h"
#include "tests/support/mesh_checker.h"
#include "tests/support/plain_sweep.h"

namespace {

using orl::fuzz::Require;
using orl::matcher::SmallDelaunayMesh;

unsigned Coordinate(const std::uint8_t* bytes) {
    return unsigned{bytes[0]} << 8U | bytes[1];
}

constexpr unsigned kMostBits = 14;  // a coordinate of a record

// Where a grid begins, and how far apart its lines are.
struct Grid {
    double origin;
    double step;
};
constexpr Grid kGridOfRecords = {0, 1};

Grid GridOf(std::uint8_t choice) {
    static constexpr Grid kGrids[] = {
        kGridOfRecords, {-2000, 1}, {3e6, 1}, {1e9, 1}, {0, 0.5}, {-1e5, 0.001}, {0, 1e-17}};
    return kGrids[choice / kMostBits % std::size(kGrids)];
}

std::vector<double> PointsOf(const std::uint8_t* data, std::size_t size, const Grid& grid) {
    const unsigned mask = (1U << (1 + data[0] % kMostBits)) - 1;
    std::vector<double> points;
    for (std::size_t i = 1; i + 1 < size; i += 2) {
        points.push_back(grid.origin + (Coordinate(data + i) & mask) * grid.step);
    }
    points.resize(points.size() / 2 * 2);
    return points;
}

template <typename Sequence>
std::vector<std::uint64_t> Copied(const Sequence& sequence) {
    return {sequence.begin(), sequence.end()};
}

template <typename Mesh>
void CheckEntries(const Mesh& mesh, const orl::test::PlainSweep& plain) {
    Require(Copied(mesh.vertices()) == plain.vertices, "the plain sweep's triangles");
    std::vector<std::uint64_t> twins;
    for (const auto twin : mesh.twins()) {
        twins.push_back(twin == Mesh::kNone ? orl::matcher::NoIndex : twin);
    }
    Require(twins == plain.twins, "the plain sweep's twins");
    Require(Copied(mesh.hullNext()) == plain.hullNext, "the plain sweep's hull");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 1 + 4 * 160;  // beyond the 128 points of a finger
    if (size < 1 || size > kMostBytes) {
        return 0;
    }
    const Grid grid = GridOf(data[0]);
    const bool isOfRecords =
        grid.origin == kGridOfRecords.origin && grid.step == kGridOfRecords.step;
    const std::vector<double> points = PointsOf(data, size, grid);
    const auto plain = orl::test::SweepPlainly(points);
    try {
        const orl::matcher::DelaunayMesh mesh(points);
        Require(plain.has_value(), "a triangulation where the plain sweep finds one");
        CheckEntries(mesh, *plain);
        if (isOfRecords && points.size() / 2 <= SmallDelaunayMesh::kInlinePoints) {
            CheckEntries(SmallDelaunayMesh(points), *plain);
        }
        if (isOfRecords && plain->lostHullEntries == 0) {
            const std::string broken = orl::test::CheckMesh(mesh, points);
            Require(broken.empty(), broken.c_str());
        }
    } catch (const std::runtime_error&) {
        Require(!plain.has_value(), "no triangulation where the plain sweep finds none");
    }
    return 0;
}
