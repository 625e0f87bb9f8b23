// orl-bench: all benchmarks, with the options of Google Benchmark.

#include <cstdio>
#include <exception>

#include <benchmark/benchmark.h>

#include "bench/benchmarks.h"

int main(int argc, char** argv) {
    try {
        orl::bench::RegisterLoadBenchmarks();
        orl::bench::RegisterMatchBenchmarks();
        orl::bench::RegisterStageBenchmarks();
        orl::bench::RegisterTriangulationBenchmarks();
#if defined(ORL_BENCH_CGAL)
        orl::bench::RegisterCgalBenchmarks();
#endif
        orl::bench::RegisterIdentifyBenchmarks();
        orl::bench::RegisterFirstMatchBenchmarks();
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            return 2;
        }
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orl-bench: %s\n", error.what());
        return 1;
    }
}
