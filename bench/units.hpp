// The counters every benchmark reports: how many units one iteration handles ("columns") and
// the time per unit ("per_column"), which scripts/bench_table.py turns into the table.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

inline void count_units(benchmark::State& state, const char* unit, double n) {
    state.counters[std::string(unit) + "s"] = n;
    state.counters[std::string("per_") + unit] =
        benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
