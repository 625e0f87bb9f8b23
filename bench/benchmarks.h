#pragma once

// The benchmarks of each stage; each function registers its own.

namespace orl::bench {

void RegisterLoadBenchmarks();
void RegisterMatchBenchmarks();
void RegisterTriangulationBenchmarks();

}  // namespace orl::bench
