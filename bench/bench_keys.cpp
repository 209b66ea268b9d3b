// Key rendering through the registered to_nvlist: what the engine pays to get one row's key
// of the built-in configuration as a name-value list (list creation and release included).
#include <benchmark/benchmark.h>

#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"
#include "bench_store.hpp"

namespace {

const zan::engine::Engine& engine() { return bench_engine("bench_keys"); }

const zan::db::Store& store() { return bench_store("bench_keys"); }

void key_of(benchmark::State& state, const char* table) {
    const auto row = engine().find_table(table);
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!row || !info || store().rows(*info).empty() || row->gx->to_nvlist == nullptr) {
        state.SkipWithError("table, row or to_nvlist not found");
        return;
    }
    const zan::db::Row* r = store().rows(*info).front();
    for (auto _ : state) {
        gx_do_nvlist* list = gx_do_nvlist_new();
        uint32_t err = 0;
        benchmark::DoNotOptimize(row->gx->to_nvlist(zan::engine::Engine::context(), 0, r, list, &err));
        gx_do_nvlist_deref(list);
    }
}

void BM_KeyOneLeaf(benchmark::State& state) { key_of(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_KeyOneLeaf)->Unit(benchmark::kNanosecond);

void BM_KeyNtpPeer(benchmark::State& state) { key_of(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_KeyNtpPeer)->Unit(benchmark::kNanosecond);

void BM_KeyMacNacl(benchmark::State& state) { key_of(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_KeyMacNacl)->Unit(benchmark::kNanosecond);

void BM_KeyCompound(benchmark::State& state) { key_of(state, "tbl_threat_visibility_ip_export"); }
BENCHMARK(BM_KeyCompound)->Unit(benchmark::kNanosecond);

}  // namespace
