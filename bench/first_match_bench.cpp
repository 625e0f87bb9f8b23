// What the first match costs a process: loading the adapter module, attaching a unit, enrolling and
// verifying one record, with all lookup tables built on the way; and the memory that stays in use.

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "bench/bench_records.h"
#include "bench/benchmarks.h"
#include "tools/orl_unit/biometric_unit.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::bench {
namespace {

// Memory of this process that is in use and its own, KiB.
double ResidentKiB() {
    constexpr double kBytesPerKiB = 1024.0;
    std::ifstream statistics("/proc/self/statm");
    double pages = 0.0;
    double residentPages = 0.0;
    statistics >> pages >> residentPages;
    return residentPages * static_cast<double>(sysconf(_SC_PAGESIZE)) / kBytesPerKiB;
}

void FirstMatch(benchmark::State& state) {
    const Record& record = RecordSets().front().records.front();
    unit::FingerRecord sample;
    sample.bytes.assign(record.bytes.begin(), record.bytes.end());
    const unit::Subject subject{"first", 1};
    double usedKiB = 0.0;
    for (auto _ : state) {
        const double before = ResidentKiB();
        unit::BiometricUnit unit(ORL_ENGINE_ADAPTER_MODULE);
        unit.openStore(std::string(unit::kMemoryStorePath), unit::StoreUse::kCreateIfMissing, {});
        unit.enroll(sample, subject, unit::DuplicateRule::kAllow);
        if (!unit.verify(sample, subject).match) {
            throw std::runtime_error("a record does not match itself");
        }
        usedKiB = ResidentKiB() - before;
    }
    state.counters["resident_KiB"] = usedKiB;
    state.counters["module_KiB"] =
        static_cast<double>(std::filesystem::file_size(ORL_ENGINE_ADAPTER_MODULE)) / 1024.0;
}

}  // namespace

void RegisterFirstMatchBenchmarks() {
    benchmark::RegisterBenchmark("FirstMatch", FirstMatch)->Unit(benchmark::kMillisecond);
}

}  // namespace orl::bench
