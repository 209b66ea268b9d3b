// Column description through the registered vectors: what the engine pays to learn the
// columns of a table, per table row and per column.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"

namespace {

const zan::engine::Engine& engine() { return bench_engine("bench_columns"); }

// Every named table once per iteration, each into a fresh list, as the engine does when
// it describes the whole context.
void BM_ColumnsAllTables(benchmark::State& state) {
    std::vector<zan::engine::TableRow> tables;
    for (const auto& r : engine().table_rows())
        if (!r.empty()) tables.push_back(r);
    size_t columns = 0;
    for (auto _ : state) {
        columns = 0;
        for (const auto& t : tables) {
            arbor_ntlist* list = zan::plat::ntlist_new();
            uint32_t err = 0;
            benchmark::DoNotOptimize(t.gx->columns_to_ntlist(list, &err));
            columns += zan::plat::ntlist_len(list);
            zan::plat::ntlist_free(list);
        }
    }
    state.counters["tables"] = static_cast<double>(tables.size());
    state.counters["columns"] = static_cast<double>(columns);
    state.counters["per_column"] = benchmark::Counter(static_cast<double>(columns),
                                                      benchmark::Counter::kIsIterationInvariantRate |
                                                          benchmark::Counter::kInvert);
}
BENCHMARK(BM_ColumnsAllTables)->Unit(benchmark::kMicrosecond);

// The largest table alone (395 columns, names up to 174 characters).
void BM_ColumnsLargestTable(benchmark::State& state) {
    auto t = engine().find_table("tbl_conf_mac_nacl_eol");
    if (!t) {
        state.SkipWithError("tbl_conf_mac_nacl_eol not found");
        return;
    }
    size_t columns = 0;
    for (auto _ : state) {
        arbor_ntlist* list = zan::plat::ntlist_new();
        uint32_t err = 0;
        benchmark::DoNotOptimize(t->gx->columns_to_ntlist(list, &err));
        columns = zan::plat::ntlist_len(list);
        zan::plat::ntlist_free(list);
    }
    state.counters["columns"] = static_cast<double>(columns);
    state.counters["per_column"] = benchmark::Counter(static_cast<double>(columns),
                                                      benchmark::Counter::kIsIterationInvariantRate |
                                                          benchmark::Counter::kInvert);
}
BENCHMARK(BM_ColumnsLargestTable)->Unit(benchmark::kMicrosecond);

}  // namespace
