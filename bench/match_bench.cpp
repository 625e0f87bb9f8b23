// Whole matches from bytes to decision, both records loaded and built for every pair, per folder of
// records, impostor and genuine pairs apart; items are matches.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "matcher/api/finger_matcher.h"

namespace orl::bench {
namespace {

constexpr std::size_t kPairLimit = 2880;

void RequireStatusOk(std::int32_t status) {
    if (status != ORLFingerMatcher_StatusOk) {
        throw std::runtime_error(ORLFingerMatcher_StatusText(status));
    }
}

void MatchPairs(benchmark::State& state, const std::vector<RecordPair>& pairs) {
    RequireStatusOk(ORLFingerMatcher_Initialize(nullptr, 0));
    std::size_t next = 0;
    for (auto _ : state) {
        const RecordPair& pair = pairs[next];
        next = next + 1 == pairs.size() ? 0 : next + 1;
        MatchResult result{};
        RequireStatusOk(
            ORLFingerMatcher_Match(pair.probe->bytes.data(),
                                   static_cast<std::int32_t>(pair.probe->bytes.size()),
                                   pair.candidate->bytes.data(),
                                   static_cast<std::int32_t>(pair.candidate->bytes.size()),
                                   0,
                                   &result,
                                   nullptr,
                                   0));
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(std::to_string(pairs.size()) + " pairs");
}

}  // namespace

void RegisterMatchBenchmarks() {
    for (const RecordSet& set : RecordSets()) {
        const std::vector<RecordPair> impostors = ImpostorPairs(set, kPairLimit);
        const std::vector<RecordPair> genuines = GenuinePairs(set);
        const std::string name = "Match/" + set.folder;
        benchmark::RegisterBenchmark((name + "/impostor").c_str(), MatchPairs, impostors);
        benchmark::RegisterBenchmark((name + "/genuine").c_str(), MatchPairs, genuines);
        benchmark::RegisterBenchmark((name + "/impostor").c_str(), MatchPairs, impostors)
            ->Threads(2)
            ->UseRealTime();
    }
}

}  // namespace orl::bench
