// Row rendering through the registered to_properties: what the engine pays to turn one
// row of the built-in configuration into a properties object, per row and per attribute.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "zan/config.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"
#include "bench_store.hpp"
#include "units.hpp"

namespace {

const zan::engine::Engine& engine() { return bench_engine("bench_properties"); }

// The built-in configuration, loaded once; the engine is loaded first, as the rows need it.
const zan::db::Store& store() { return bench_store("bench_properties"); }

// Renders the first configured row of the table into a fresh properties object per
// iteration (object creation and release included, as the engine pays them).
void render_table(benchmark::State& state, const char* table) {
    const auto row = engine().find_table(table);
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!row || !info || store().rows(*info).empty()) {
        state.SkipWithError("table or row not found");
        return;
    }
    if (row->gx->to_properties == nullptr) {
        state.SkipWithError("the library registers no to_properties");
        return;
    }
    const zan::db::Row* r = store().rows(*info).front();
    size_t attributes = 0;
    {
        gx_do_properties* props = zan::plat::properties_new();
        uint32_t err = 0;
        const int32_t status = row->gx->to_properties(zan::engine::Engine::context(), 0, r, props, 0, &err);
        attributes = zan::plat::properties_items(props).size();
        zan::plat::properties_deref(props);
        if (status != 0 || err != 0) {
            state.SkipWithError("the row does not render");
            return;
        }
    }
    for (auto _ : state) {
        gx_do_properties* props = zan::plat::properties_new();
        uint32_t err = 0;
        benchmark::DoNotOptimize(row->gx->to_properties(zan::engine::Engine::context(), 0, r, props, 0, &err));
        zan::plat::properties_deref(props);
    }
    count_units(state, "attribute", static_cast<double>(attributes));
}

void BM_PropertiesOneLeaf(benchmark::State& state) { render_table(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_PropertiesOneLeaf)->Unit(benchmark::kNanosecond);

void BM_PropertiesNtpPeer(benchmark::State& state) { render_table(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_PropertiesNtpPeer)->Unit(benchmark::kNanosecond);

void BM_PropertiesMacNacl(benchmark::State& state) { render_table(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_PropertiesMacNacl)->Unit(benchmark::kNanosecond);

}  // namespace
