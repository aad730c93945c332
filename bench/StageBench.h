// The groups of stage benchmarks; each registers its own with Google Benchmark.
#pragma once

void RegisterFramingBenchmarks();
void RegisterRecordBenchmarks();
