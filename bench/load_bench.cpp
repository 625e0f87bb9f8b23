// Building one finger: the whole load from a record's bytes, and its triangulation alone.

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "matcher/api/finger_matcher.h"
#include "matcher/api/template_loading.h"
#include "matcher/triangulation/delaunay_mesh.h"

namespace orl::bench {
namespace {

using orl::matcher::DelaunayMesh;
using orl::matcher::FullLoadedTemplate;
using orl::matcher::LoadedTemplate;

template <typename Template>
Template Load(const Record& record) {
    Template loaded;
    std::string message;
    const std::int32_t status = loadTemplateFromBuffer(record.bytes.data(),
                                                       record.bytes.size(),
                                                       "Probe",
                                                       ORLFingerMatcher_StatusProbeNotLoaded,
                                                       ORLFingerMatcher_StatusProbeEmpty,
                                                       loaded,
                                                       message);
    if (status != ORLFingerMatcher_StatusOk) {
        throw std::runtime_error(message);
    }
    return loaded;
}

void LoadRecords(benchmark::State& state, const RecordSet& set) {
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Load<LoadedTemplate>(set.records[next]));
        next = next + 1 == set.records.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

void Triangulate(benchmark::State& state, const RecordSet& set) {
    std::vector<std::vector<double>> fingers;
    std::size_t points = 0;
    for (const Record& record : set.records) {
        std::vector<double> coordinates;
        for (const auto& minutia : Load<FullLoadedTemplate>(record).fingers.front().minutiae) {
            coordinates.push_back(minutia.x);
            coordinates.push_back(minutia.y);
        }
        points += coordinates.size() / 2;
        fingers.push_back(std::move(coordinates));
    }
    std::size_t next = 0;
    for (auto _ : state) {
        const DelaunayMesh mesh{std::span<const double>(fingers[next])};
        benchmark::DoNotOptimize(mesh.vertices().data());
        next = next + 1 == fingers.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(std::to_string(points / fingers.size()) + " points on average");
}

}  // namespace

void RegisterLoadBenchmarks() {
    for (const RecordSet& set : RecordSets()) {
        benchmark::RegisterBenchmark(("Load/" + set.folder).c_str(),
                                     [&set](benchmark::State& state) { LoadRecords(state, set); });
        benchmark::RegisterBenchmark(("Triangulate/" + set.folder).c_str(),
                                     [&set](benchmark::State& state) { Triangulate(state, set); });
    }
}

}  // namespace orl::bench
