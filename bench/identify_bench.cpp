// An identification among many stored records, through the adapter module's table and a store in
// memory. Items are records compared: their rate must not fall as the store grows, and should come
// near that of single matches.

#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::bench {
namespace {

using unit::BiometricUnit;
using unit::FingerRecord;

constexpr std::size_t kFingersPerIdentity = 10;

// Empty where the record cannot be compared.
FingerRecord Wrapped(const Record& record) {
    FingerRecord wrapped;
    if (!unit::recordDefect(record.bytes)) {
        wrapped.bytes.assign(record.bytes.begin(), record.bytes.end());
    }
    return wrapped;
}

// Enrolls records of all fingers but the last, over and over, until there are `count`.
void Fill(BiometricUnit& unit, const RecordSet& set, std::size_t count) {
    std::size_t next = 0;
    for (std::size_t stored = 0; stored < count; next = (next + 1) % set.records.size()) {
        const Record& record = set.records[next];
        const FingerRecord wrapped = Wrapped(record);
        if (record.finger == set.records.back().finger || wrapped.bytes.empty()) {
            continue;
        }
        const unit::Subject subject{"identity " + std::to_string(stored / kFingersPerIdentity),
                                    static_cast<std::uint8_t>(1 + stored % kFingersPerIdentity)};
        if (!unit.enroll(wrapped, subject, unit::DuplicateRule::kAllow).stored) {
            throw std::runtime_error("a record was not enrolled");
        }
        ++stored;
    }
}

// A record of the last finger that matches none of the others', so that all are compared.
FingerRecord UnknownProbe(BiometricUnit& unit, const RecordSet& set) {
    for (const Record& record : set.records) {
        FingerRecord wrapped = Wrapped(record);
        if (record.finger == set.records.back().finger && !wrapped.bytes.empty() &&
            !unit.identify(wrapped).subject) {
            return wrapped;
        }
    }
    throw std::runtime_error("every record of the last finger is identified");
}

void Identify(benchmark::State& state, const RecordSet& set) {
    const auto count = static_cast<std::size_t>(state.range(0));
    BiometricUnit unit(ORL_ENGINE_ADAPTER_MODULE);
    unit.openStore(std::string(unit::kMemoryStorePath), unit::StoreUse::kCreateIfMissing, {});
    Fill(unit, set, count);
    const FingerRecord probe = UnknownProbe(unit, set);
    for (auto _ : state) {
        benchmark::DoNotOptimize(unit.identify(probe));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

// The same comparisons one by one: a verification against a stored record.
void Verify(benchmark::State& state, const RecordSet& set) {
    constexpr std::size_t kRecords = 100;
    BiometricUnit unit(ORL_ENGINE_ADAPTER_MODULE);
    unit.openStore(std::string(unit::kMemoryStorePath), unit::StoreUse::kCreateIfMissing, {});
    Fill(unit, set, kRecords);
    const FingerRecord probe = UnknownProbe(unit, set);
    std::size_t next = 0;
    for (auto _ : state) {
        const unit::Subject claimed{"identity " + std::to_string(next / kFingersPerIdentity),
                                    static_cast<std::uint8_t>(1 + next % kFingersPerIdentity)};
        benchmark::DoNotOptimize(unit.verify(probe, claimed));
        next = (next + 1) % kRecords;
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

void RegisterIdentifyBenchmarks() {
    const RecordSet& set = RecordSets().front();
    benchmark::RegisterBenchmark(("Verify/" + set.folder).c_str(),
                                 [&set](benchmark::State& state) { Verify(state, set); });
    benchmark::RegisterBenchmark(("Identify/" + set.folder).c_str(),
                                 [&set](benchmark::State& state) { Identify(state, set); })
        ->Arg(100)
        ->Arg(1000)
        ->Arg(10000)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace orl::bench
