// The stages of a match of two loaded records, each with those before it: the difference between
// two lines is what a stage takes. Items are matches.

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "bench/loaded_record.h"
#include "matcher/matching/match_context.h"
#include "matcher/matching/match_driver.h"
#include "matcher/matching/pair_search.h"

namespace orl::bench {
namespace {

using matcher::FingerFeatures;
using matcher::MatchContext;
using matcher::MatchMemory;

constexpr std::size_t kPairLimit = 500;

struct FingerPair {
    FingerFeatures probe;
    FingerFeatures candidate;
};

FingerFeatures FirstFinger(const Record& record) {
    return Load<matcher::LoadedTemplate>(record).fingers.front();
}

std::vector<FingerPair> FingerPairs(const RecordSet& set) {
    std::vector<FingerPair> pairs;
    for (const RecordPair& pair : ImpostorPairs(set, kPairLimit)) {
        pairs.push_back({FirstFinger(*pair.probe), FirstFinger(*pair.candidate)});
    }
    return pairs;
}

using Stage = std::function<void(MatchContext& context)>;

void RunStages(benchmark::State& state, const RecordSet& set, const Stage& stage) {
    const std::vector<FingerPair> pairs = FingerPairs(set);
    const auto memory = std::make_unique<MatchMemory>();
    std::size_t next = 0;
    for (auto _ : state) {
        const FingerPair& pair = pairs[next];
        next = next + 1 == pairs.size() ? 0 : next + 1;
        memory->scratch.release();
        MatchContext context(pair.probe, pair.candidate, *memory);
        stage(context);
        benchmark::DoNotOptimize(context);
    }
    state.SetItemsProcessed(state.iterations());
}

void MatchLoaded(benchmark::State& state, const RecordSet& set) {
    const std::vector<FingerPair> pairs = FingerPairs(set);
    std::size_t next = 0;
    for (auto _ : state) {
        const FingerPair& pair = pairs[next];
        next = next + 1 == pairs.size() ? 0 : next + 1;
        benchmark::DoNotOptimize(
            matchTemplates(std::span(&pair.probe, 1), std::span(&pair.candidate, 1)));
    }
    state.SetItemsProcessed(state.iterations());
}

void Consolidate(MatchContext& context) {
    searchTrianglePairs(context);
    for (std::size_t orientation = 0; orientation < matcher::kOrientations; ++orientation) {
        benchmark::DoNotOptimize(consolidatePairs(context, orientation));
    }
}

}  // namespace

void RegisterStageBenchmarks() {
    for (const RecordSet& set : RecordSets()) {
        const auto add = [&set](const char* stage, const auto& run) {
            benchmark::RegisterBenchmark(("Stages/" + set.folder + "/" + stage).c_str(),
                                         [&set, run](benchmark::State& state) { run(state, set); });
        };
        const auto addStage = [&add](const char* name, const Stage& stage) {
            add(name, [stage](benchmark::State& state, const RecordSet& records) {
                RunStages(state, records, stage);
            });
        };
        addStage("1_orient", [](MatchContext&) {});
        addStage("2_pair_search", [](MatchContext& context) { searchTrianglePairs(context); });
        addStage("3_consolidation", Consolidate);
        add("4_alignment", MatchLoaded);
    }
}

}  // namespace orl::bench
