#pragma once

// The benchmarks of each stage; each function registers its own.

namespace orl::bench {

void RegisterLoadBenchmarks();
void RegisterMatchBenchmarks();
void RegisterTriangulationBenchmarks();
void RegisterCgalBenchmarks();  // only where CGAL is installed

}  // namespace orl::bench
