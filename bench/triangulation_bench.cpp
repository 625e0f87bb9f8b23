// Triangulation alone, of random points: the size of an ordinary finger and the largest there is.

#include <cstddef>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"
#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::bench {
namespace {

using orl::matcher::DelaunayMesh;
using PointSet = std::vector<double>;  // x0, y0, x1, y1, ...

constexpr std::size_t kPointSets = 64;  // taken in turn, so that no branch is learned by heart
constexpr std::uint32_t kSeed = 20240229;
constexpr unsigned kSidePixels = 400;

std::vector<PointSet> RandomPointSets(std::size_t points) {
    std::mt19937 random(kSeed);
    std::vector<PointSet> sets(kPointSets);
    for (PointSet& set : sets) {
        while (set.size() < 2 * points) {
            set.push_back(static_cast<double>(random() % kSidePixels));
        }
    }
    return sets;
}

void TriangulateRandomPoints(benchmark::State& state) {
    const auto points = static_cast<std::size_t>(state.range(0));
    const std::vector<PointSet> sets = RandomPointSets(points);
    std::size_t next = 0;
    for (auto _ : state) {
        const DelaunayMesh mesh(sets[next]);
        benchmark::DoNotOptimize(mesh.vertices().data());
        // Even with many points on the hull there are more triangles than points.
        if (mesh.vertices().size() <= matcher::kHalfEdgesPerTriangle * points) {
            throw std::runtime_error("too few triangles");
        }
        next = next + 1 == sets.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(std::to_string(points) + " random points");
}

}  // namespace

void RegisterTriangulationBenchmarks() {
    benchmark::RegisterBenchmark("TriangulateRandom", TriangulateRandomPoints)->Arg(40)->Arg(128);
}

}  // namespace orl::bench
