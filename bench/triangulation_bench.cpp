// Triangulation alone: of random points, as many as an ordinary finger has and the most there are,
// and of the records' minutiae; in both forms of the mesh.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "bench/point_sets.h"
#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::bench {
namespace {

template <typename Mesh>
void Triangulate(benchmark::State& state, const std::vector<PointSet>& sets) {
    std::size_t next = 0;
    for (auto _ : state) {
        const Mesh mesh(sets[next]);
        benchmark::DoNotOptimize(mesh.vertices().data());
        if (mesh.vertices().empty()) {
            throw std::runtime_error("no triangle");
        }
        next = next + 1 == sets.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(std::to_string(MeanPoints(sets)) + " points");
}

void Register(const std::string& name, const std::vector<PointSet>& sets) {
    benchmark::RegisterBenchmark(("Triangulate/" + name).c_str(), [sets](benchmark::State& state) {
        Triangulate<matcher::SmallDelaunayMesh>(state, sets);
    });
    benchmark::RegisterBenchmark(
        ("TriangulateWide/" + name).c_str(),
        [sets](benchmark::State& state) { Triangulate<matcher::DelaunayMesh>(state, sets); });
}

}  // namespace

void RegisterTriangulationBenchmarks() {
    for (const std::size_t points : {std::size_t{40}, std::size_t{128}}) {
        Register("random" + std::to_string(points), RandomPointSets(points));
    }
    for (const RecordSet& set : RecordSets()) {
        Register(set.folder, PointSetsOf(set));
    }
}

}  // namespace orl::bench
