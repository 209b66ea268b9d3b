// Path resolution through the registered dispatcher: what one request costs at the head and
// the tail of the root chain, one and two levels down, and for a segment nobody takes.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "bench_engine.hpp"
#include "bench_store.hpp"
#include "units.hpp"

namespace {

using Keys = std::vector<std::pair<std::string, std::string>>;

const zan::engine::Engine& engine() { return bench_engine("bench_resolve"); }

// A keyed segment of a position: its segment and key name as the database's table
// information has them.
zan::plat::UriSegment keyed(const char* position, const char* value) {
    const auto* t = zan::db::table_info(position);
    if (t == nullptr) {
        std::fprintf(stderr, "bench_resolve: no position %s\n", position);
        std::exit(1);
    }
    return {std::string(t->segment), Keys{{std::string(t->key_name), value}}};
}

// Calls the dispatcher on one path per iteration, with fresh params and emptied lists as a
// request of the engine has them, and reports the time per segment besides.
void run(benchmark::State& state, const std::vector<zan::plat::UriSegment>& path, int32_t want) {
    const auto dispatch = engine().dispatcher();
    gx_do_uri* uri = zan::plat::uri_new(path);
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    int ctx = 0;
    const long allocs_before = zan::plat::alloc_count();
    for (auto _ : state) {
        arbor_params_t* params = zan::plat::params_new();
        const void* slot = nullptr;
        const int32_t code = dispatch(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
        if (code != want) {
            state.SkipWithError(("code " + std::to_string(code) + ", want " + std::to_string(want)).c_str());
            zan::plat::params_free(params);
            break;
        }
        benchmark::DoNotOptimize(slot);
        zan::plat::params_free(params);
        gx_do_nlist_clear(pdc);
    }
    const double allocs = double(zan::plat::alloc_count() - allocs_before);
    count_units(state, "segment", double(path.size()));
    state.counters["allocs"] = benchmark::Counter(allocs, benchmark::Counter::kAvgIterations);
    gx_do_nlist_deref(pd);
    gx_do_nlist_deref(pdc);
    zan::plat::uri_deref(uri);
}

// First table of the root chain.
void BM_ResolveRootHead(benchmark::State& state) {
    run(state, {keyed("tbl_cfg_ip_dhcp_relay_bootp_ignore_eol", "1")}, 1);
}
BENCHMARK(BM_ResolveRootHead);

// Last table of the root chain: 106 traversers answer 3 first.
void BM_ResolveRootTail(benchmark::State& state) {
    run(state, {keyed("tbl_cfg_veil_parameter_map", "pmap")}, 1);
}
BENCHMARK(BM_ResolveRootTail);

// A root table's row and one of its children.
void BM_ResolveChild(benchmark::State& state) {
    run(state, {keyed("tbl_ci_vrf_eol", "red"), keyed("tbl_ci_vrf_mode_rd_eol", "1")}, 1);
}
BENCHMARK(BM_ResolveChild);

// Three keyed segments down to a second entrance.
void BM_ResolveGrandchild(benchmark::State& state) {
    run(state,
        {keyed("tbl_ci_vrf_eol", "red"), keyed("tbl_ci_vrf_afi_mode_eol", "1"),
         keyed("tbl_ci_vrf_mode_rt_eol_b", "65000:1")},
        1);
}
BENCHMARK(BM_ResolveGrandchild);

// The built-in configuration, for the walks.
const zan::db::Store& walk_store() { return bench_store("bench_resolve"); }

// The three-level path of a configured route target resolved and then walked over the
// built-in configuration by the engine, down to its one row: what a caller holding the
// tree pays to get from a keyed path to the row's node.
void BM_ResolveWalkGrandchild(benchmark::State& state) {
    const auto dispatch = engine().dispatcher();
    const zan::db::Store& store = walk_store();
    gx_do_uri* uri = zan::plat::uri_new({keyed("tbl_ci_vrf_eol", "red"), keyed("tbl_ci_vrf_afi_mode_eol", "1"),
                                         keyed("tbl_ci_vrf_mode_rt_eol_b", "65000:11")});
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    int ctx = 0;
    for (auto _ : state) {
        arbor_params_t* params = zan::plat::params_new();
        const void* slot = nullptr;
        const int32_t code = dispatch(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
        const zan::engine::Walk w = zan::engine::walk(store, zan::plat::params_traversals(params));
        zan::plat::params_free(params);
        gx_do_nlist_clear(pdc);
        if (code != 1 || w.rows.size() != 1) {
            state.SkipWithError(("code " + std::to_string(code) + ", " + std::to_string(w.rows.size()) +
                                 " rows; want 1 and one row").c_str());
            break;
        }
    }
    count_units(state, "segment", 3);
    gx_do_nlist_deref(pd);
    gx_do_nlist_deref(pdc);
    zan::plat::uri_deref(uri);
}
BENCHMARK(BM_ResolveWalkGrandchild);

// A root table keyed by two parts (a text and an address), both given.
void BM_ResolveCompound(benchmark::State& state) {
    const auto* t = zan::db::table_info("tbl_ip_dhcp_svr");
    if (t == nullptr || t->key_parts.size() != 2) {
        state.SkipWithError("tbl_ip_dhcp_svr has no two-part key");
        return;
    }
    run(state,
        {{std::string(t->segment),
          Keys{{std::string(t->key_parts[0]->name), "red"}, {std::string(t->key_parts[1]->name), "10.0.0.5"}}}},
        1);
}
BENCHMARK(BM_ResolveCompound);

// The parent of the last position of the whole chain, alone: what the path below costs
// before its second segment.
void BM_ResolveChainTailParent(benchmark::State& state) {
    run(state, {keyed("tbl_cfg_classmap", "CM-VOICE")}, 1);
}
BENCHMARK(BM_ResolveChainTailParent);

// The last position of the whole chain (the last traverser of the last dispatcher): its
// segment is offered to the root chain and to all 23 dispatchers before it is taken. The
// segment's own cost is this figure less BM_ResolveChainTailParent.
void BM_ResolveChainTail(benchmark::State& state) {
    const auto all = zan::db::positions();
    if (all.empty() || all.back()->name != "tbl_match_proto_clause") {
        state.SkipWithError("tbl_match_proto_clause is no longer the last position");
        return;
    }
    run(state, {keyed("tbl_cfg_classmap", "CM-VOICE"), keyed("tbl_match_proto_clause", "1")}, 1);
}
BENCHMARK(BM_ResolveChainTail);

// A segment that no table takes: all 23 dispatchers, all 331 traversers, and no memory.
void BM_ResolveMiss(benchmark::State& state) {
    const long before = zan::plat::alloc_count();
    run(state, {{"no_such_segment", Keys{{"singleton_id", "1"}}}}, 3);
    if (zan::plat::alloc_count() != before) state.SkipWithError("a miss allocated memory");
}
BENCHMARK(BM_ResolveMiss);

}  // namespace
