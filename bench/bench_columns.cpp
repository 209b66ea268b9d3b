// Column description through the registered vectors: what the engine pays to learn the
// columns of a table, per table row and per column.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"
#include "units.hpp"

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
    count_units(state, "column", static_cast<double>(columns));
}
BENCHMARK(BM_ColumnsAllTables)->Unit(benchmark::kMicrosecond);

// One table's columns per iteration, into a fresh list.
void columns_of(benchmark::State& state, const char* table) {
    auto t = engine().find_table(table);
    if (!t) {
        state.SkipWithError("table not found");
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
    count_units(state, "column", static_cast<double>(columns));
}

void BM_ColumnsOneLeaf(benchmark::State& state) { columns_of(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_ColumnsOneLeaf)->Unit(benchmark::kNanosecond);
void BM_ColumnsNtpPeer(benchmark::State& state) { columns_of(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_ColumnsNtpPeer)->Unit(benchmark::kNanosecond);
// The largest table (395 columns, names up to 174 characters).
void BM_ColumnsLargestTable(benchmark::State& state) { columns_of(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_ColumnsLargestTable)->Unit(benchmark::kMicrosecond);

}  // namespace
