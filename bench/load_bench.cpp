// Building one finger: the whole load from a record's bytes, and its features alone.

#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "bench/loaded_record.h"
#include "bench/point_sets.h"
#include "matcher/features/finger_features.h"

namespace orl::bench {
namespace {

using orl::matcher::FingerFeatures;
using orl::matcher::FullLoadedTemplate;
using orl::matcher::LoadedTemplate;
using orl::matcher::MinutiaList;

void LoadRecords(benchmark::State& state, const RecordSet& set) {
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Load<LoadedTemplate>(set.records[next]));
        next = next + 1 == set.records.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

// From minutiae to sorted triangle features.
void BuildFeatures(benchmark::State& state, const RecordSet& set) {
    const std::vector<MinutiaList> fingers = MinutiaeOf(set);
    const matcher::ImageSize imageSize = Load<FullLoadedTemplate>(set.records.front()).imageSize;
    std::vector<FingerFeatures> features;
    std::size_t next = 0;
    for (auto _ : state) {
        features.clear();
        AppendFingerFeatures(features, imageSize, fingers[next]);
        benchmark::DoNotOptimize(features.data());
        next = next + 1 == fingers.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

void RegisterLoadBenchmarks() {
    for (const RecordSet& set : RecordSets()) {
        benchmark::RegisterBenchmark(("Load/" + set.folder).c_str(),
                                     [&set](benchmark::State& state) { LoadRecords(state, set); });
        benchmark::RegisterBenchmark(
            ("Features/" + set.folder).c_str(),
            [&set](benchmark::State& state) { BuildFeatures(state, set); });
    }
}

}  // namespace orl::bench
