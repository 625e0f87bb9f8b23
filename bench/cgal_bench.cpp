// The same point sets through CGAL's triangulation, to compare with. Built where CGAL is installed;
// nothing else needs it.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "bench/point_sets.h"

namespace orl::bench {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Triangulation = CGAL::Delaunay_triangulation_2<Kernel>;
using CgalPoints = std::vector<Kernel::Point_2>;

std::vector<CgalPoints> CgalPointsOf(const std::vector<PointSet>& sets) {
    std::vector<CgalPoints> converted;
    for (const PointSet& set : sets) {
        CgalPoints points;
        for (std::size_t i = 0; i < set.size(); i += 2) {
            points.emplace_back(set[i], set[i + 1]);
        }
        converted.push_back(points);
    }
    return converted;
}

void TriangulateWithCgal(benchmark::State& state, const std::vector<CgalPoints>& sets) {
    std::size_t next = 0;
    for (auto _ : state) {
        Triangulation triangulation(sets[next].begin(), sets[next].end());
        benchmark::DoNotOptimize(triangulation);
        if (triangulation.number_of_faces() == 0) {
            throw std::runtime_error("no triangle");
        }
        next = next + 1 == sets.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

void Register(const std::string& name, const std::vector<PointSet>& sets) {
    benchmark::RegisterBenchmark(("TriangulateCgal/" + name).c_str(),
                                 [points = CgalPointsOf(sets)](benchmark::State& state) {
                                     TriangulateWithCgal(state, points);
                                 });
}

}  // namespace

void RegisterCgalBenchmarks() {
    for (const std::size_t points : {std::size_t{40}, std::size_t{128}}) {
        Register("random" + std::to_string(points), RandomPointSets(points));
    }
    for (const RecordSet& set : RecordSets()) {
        Register(set.folder, PointSetsOf(set));
    }
}

}  // namespace orl::bench
