#pragma once

// The benchmarks of each stage; each function registers its own.

namespace orl::bench {

void RegisterFirstMatchBenchmarks();
void RegisterIdentifyBenchmarks();
void RegisterLoadBenchmarks();
void RegisterMatchBenchmarks();
void RegisterStageBenchmarks();
void RegisterTriangulationBenchmarks();
void RegisterCgalBenchmarks();  // only where CGAL is installed

}  // namespace orl::bench
