// Rendering to value lists: what it costs to turn one row of the built-in configuration into
// a flat value list through the to_vlist_all of its top type's row in the registered type
// array, and to fetch each of its attributes by name through the selectors (walked with
// strtok_r as a table's row operation walks them), and to ask the table's own to_vlist for
// all of them in one name list, per row and per attribute.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "attribute_names.hpp"
#include "bench_engine.hpp"
#include "bench_store.hpp"
#include "library_function.hpp"
#include "units.hpp"

namespace {

using select_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, char**, const void*, gx_do_vlist*, int32_t,
                              uint32_t*);

const zan::engine::Engine& engine() { return bench_engine("bench_vlist"); }

const zan::db::Store& store() { return bench_store("bench_vlist"); }

struct Target {
    const zan::db::Row* row = nullptr;
    const zan::db::TypeInfo* top = nullptr;
    zan_type_to_vlist_all_fn all = nullptr;
};

// The first configured row of a table with one top record, and its type's to_vlist_all.
bool target(benchmark::State& state, const char* table, Target& t) {
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (info == nullptr || store().rows(*info).empty() || info->rows.size() != 1) {
        state.SkipWithError("table or row not found");
        return false;
    }
    t.row = store().rows(*info).front();
    t.top = info->rows[0];
    const auto type = engine().find_type(t.top->name);
    if (!type || type->vlist->to_vlist_all == nullptr) {
        state.SkipWithError("the library registers no to_vlist_all");
        return false;
    }
    t.all = type->vlist->to_vlist_all;
    return true;
}

// One row per iteration into a fresh list (created and released inside the timed loop).
void render_all(benchmark::State& state, const char* table) {
    Target t;
    if (!target(state, table, t)) return;
    const void* rec = zan::db::row_record(*t.row);
    size_t values = 0;
    {
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = t.all(zan::engine::Engine::context(), 0, rec, list, 0, &err);
        values = static_cast<size_t>(gx_do_vlist_get_len(list));
        gx_do_vlist_deref(list);
        if (r < 0 || err != 0) {
            state.SkipWithError("the row does not render");
            return;
        }
    }
    for (auto _ : state) {
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        benchmark::DoNotOptimize(t.all(zan::engine::Engine::context(), 0, rec, list, 0, &err));
        gx_do_vlist_deref(list);
    }
    count_units(state, "value", static_cast<double>(values));
}

// Every attribute of the row fetched by name once per iteration, each into one list that is
// cleared between names; the name is copied per call, as strtok_r cuts it.
void select_all(benchmark::State& state, const char* table) {
    Target t;
    if (!target(state, table, t)) return;
    auto sel = reinterpret_cast<select_fn>(library_function(engine(), std::string(t.top->name) + "_to_vlist"));
    if (sel == nullptr) {
        state.SkipWithError("the library has no selector for the row's type");
        return;
    }
    const void* rec = zan::db::row_record(*t.row);
    std::vector<std::string> names;
    leaf_names(*t.top, "", names);
    gx_do_vlist* list = gx_do_vlist_new();
    char buffer[512];
    auto walk = [&](const std::string& name) {
        std::memcpy(buffer, name.c_str(), name.size() + 1);
        char* save = nullptr;
        const char* token = strtok_r(buffer, ".", &save);
        uint32_t err = 0;
        const int32_t r = sel(zan::engine::Engine::context(), 0, token, &save, rec, list, 0, &err);
        gx_do_vlist_clear(list);
        return r > 0 && err == 0;
    };
    for (const std::string& n : names) {
        if (!walk(n)) {
            state.SkipWithError(("no value for " + n).c_str());
            gx_do_vlist_deref(list);
            return;
        }
    }
    for (auto _ : state)
        for (const std::string& n : names) benchmark::DoNotOptimize(walk(n));
    gx_do_vlist_deref(list);
    count_units(state, "attribute", static_cast<double>(names.size()));
}

// The table's own to_vlist, the operation the engine calls with a client's list of names:
// every leaf attribute of the row in one name list, the row's path as the URI, into a fresh
// value list per iteration (the names and the path are made once).
void table_names(benchmark::State& state, const char* table) {
    Target t;
    if (!target(state, table, t)) return;
    const auto tab = engine().find_table(table);
    if (!tab || tab->gx->to_vlist == nullptr) {
        state.SkipWithError("the library registers no to_vlist for the table");
        return;
    }
    std::vector<std::string> names;
    leaf_names(*t.top, "", names);
    gx_do_nlist* nlist = gx_do_nlist_new();
    for (const std::string& n : names) gx_do_nlist_add_string(nlist, n.c_str());
    gx_do_uri* uri = zan::plat::uri_new(zan::engine::row_segments(*t.row));
    const auto fn = tab->gx->to_vlist;
    auto once = [&] {
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = fn(zan::engine::Engine::context(), 0, uri, nlist, t.row, list, 0, &err);
        const size_t n = static_cast<size_t>(gx_do_vlist_get_len(list));
        gx_do_vlist_deref(list);
        return r > 0 && err == 0 && n == names.size();
    };
    if (!once()) state.SkipWithError("the names do not render one value each");
    for (auto _ : state) benchmark::DoNotOptimize(once());
    gx_do_nlist_deref(nlist);
    zan::plat::uri_deref(uri);
    count_units(state, "attribute", static_cast<double>(names.size()));
}

using pairs_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*);

// The row through its top type's <type>_to_nlist_vlist_all (held by no array: the engine
// reaches it only for the elements of a sequence; found in the symbol table), into a fresh
// name list and value list per iteration.
void render_pairs(benchmark::State& state, const char* table) {
    Target t;
    if (!target(state, table, t)) return;
    auto fn = reinterpret_cast<pairs_fn>(library_function(engine(), std::string(t.top->name) + "_to_nlist_vlist_all"));
    if (fn == nullptr) {
        state.SkipWithError("the library has no to_nlist_vlist_all for the row's type");
        return;
    }
    const void* rec = zan::db::row_record(*t.row);
    size_t values = 0;
    {
        gx_do_nlist* names = gx_do_nlist_new();
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = fn(zan::engine::Engine::context(), 0, rec, names, list, 0, &err);
        values = static_cast<size_t>(gx_do_vlist_get_len(list));
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(list);
        if (r < 0 || err != 0) {
            state.SkipWithError("the row does not render");
            return;
        }
    }
    for (auto _ : state) {
        gx_do_nlist* names = gx_do_nlist_new();
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        benchmark::DoNotOptimize(fn(zan::engine::Engine::context(), 0, rec, names, list, 0, &err));
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(list);
    }
    count_units(state, "value", static_cast<double>(values));
}

void BM_VlistAllOneLeaf(benchmark::State& state) { render_all(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_VlistAllOneLeaf)->Unit(benchmark::kNanosecond);
void BM_VlistAllNtpPeer(benchmark::State& state) { render_all(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_VlistAllNtpPeer)->Unit(benchmark::kNanosecond);
void BM_VlistAllMacNacl(benchmark::State& state) { render_all(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_VlistAllMacNacl)->Unit(benchmark::kNanosecond);

void BM_PairsOneLeaf(benchmark::State& state) { render_pairs(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_PairsOneLeaf)->Unit(benchmark::kNanosecond);
void BM_PairsNtpPeer(benchmark::State& state) { render_pairs(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_PairsNtpPeer)->Unit(benchmark::kNanosecond);
void BM_PairsMacNacl(benchmark::State& state) { render_pairs(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_PairsMacNacl)->Unit(benchmark::kNanosecond);

void BM_SelectOneLeaf(benchmark::State& state) { select_all(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_SelectOneLeaf)->Unit(benchmark::kNanosecond);
void BM_SelectNtpPeer(benchmark::State& state) { select_all(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_SelectNtpPeer)->Unit(benchmark::kNanosecond);
void BM_SelectMacNacl(benchmark::State& state) { select_all(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_SelectMacNacl)->Unit(benchmark::kNanosecond);

void BM_TableNamesOneLeaf(benchmark::State& state) { table_names(state, "tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }
BENCHMARK(BM_TableNamesOneLeaf)->Unit(benchmark::kNanosecond);
void BM_TableNamesNtpPeer(benchmark::State& state) { table_names(state, "tbl_ntp_peer_eol"); }
BENCHMARK(BM_TableNamesNtpPeer)->Unit(benchmark::kNanosecond);
void BM_TableNamesMacNacl(benchmark::State& state) { table_names(state, "tbl_conf_mac_nacl_eol"); }
BENCHMARK(BM_TableNamesMacNacl)->Unit(benchmark::kNanosecond);

}  // namespace
