// Runs every benchmark of this folder; `--benchmark_filter` chooses among them.
#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
