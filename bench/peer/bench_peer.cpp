// The same operations done by libyang 2 on an equivalent tree, measured in the process that
// measures ours (this executable also holds the resolution, row rendering and column
// description suites), so that the ratios compare figures of one run.
//
// The data tree is filled from the built-in configuration: every row of the VRF,
// address-family and route-target tables and the first row of tbl_conf_mac_nacl_eol are
// rendered through the library's own to_properties, and each attribute with a value becomes
// a leaf of the zan-peer module (generated from the catalogue, one leaf per column). An
// attribute that renders null has no leaf: YANG has no null value. The "full" entry also
// gives those a leaf (the first value of the leaf's type), so that it carries all 395.
#include <benchmark/benchmark.h>
#include <libyang/libyang.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "../bench_engine.hpp"

#ifndef ZAN_PEER_YANG
#error "ZAN_PEER_YANG must name the generated module"
#endif

namespace {

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "bench_peer: %s\n", what.c_str());
    std::exit(1);
}

const zan::engine::Engine& engine() { return bench_engine("bench_peer"); }

const zan::db::Store& store() {
    static const zan::db::Store* s = [] {
        engine();
        auto loaded = zan::config::load_default();
        if (!loaded) fail(loaded.error);
        return loaded.store.release();
    }();
    return *s;
}

// A value as libyang reads it from text; nullopt for a null.
std::optional<std::string> value_text(const zan::plat::Value& v) {
    using namespace zan::plat;
    if (std::holds_alternative<Null>(v.v)) return std::nullopt;
    if (auto* i = std::get_if<int64_t>(&v.v)) return std::to_string(*i);
    if (auto* u = std::get_if<uint64_t>(&v.v)) return std::to_string(*u);
    if (auto* b = std::get_if<bool>(&v.v)) return std::string(*b ? "true" : "false");
    if (auto* s = std::get_if<std::string>(&v.v)) return *s;
    if (auto* ip = std::get_if<Ip>(&v.v)) return format_ip(*ip);
    if (auto* mac = std::get_if<Mac>(&v.v)) return format_mac(*mac);
    if (auto* e = std::get_if<EnumText>(&v.v)) return e->text;
    fail("a value kind the module does not model: " + to_text(v));
}

// The attributes of one row as the library renders them.
std::vector<zan::plat::NamedValue> render(const char* table, const zan::db::Row* row) {
    const auto t = engine().find_table(table);
    if (!t || t->gx->to_properties == nullptr) fail(std::string("no to_properties for ") + table);
    gx_do_properties* props = zan::plat::properties_new();
    uint32_t err = 0;
    const int32_t status = t->gx->to_properties(zan::engine::Engine::context(), 0, row, props, 0, &err);
    auto items = zan::plat::properties_items(props);
    zan::plat::properties_deref(props);
    if (status != 0 || err != 0) fail(std::string("a row of ") + table + " does not render");
    return items;
}

// The first value of a leaf's type, for an attribute that rendered null.
std::string filler(const lysc_node* schema) {
    const lysc_type* type = reinterpret_cast<const lysc_node_leaf*>(schema)->type;
    switch (type->basetype) {
    case LY_TYPE_ENUM: return reinterpret_cast<const lysc_type_enum*>(type)->enums[0].name;
    case LY_TYPE_BOOL: return "false";
    case LY_TYPE_STRING:
        return reinterpret_cast<const lysc_type_str*>(type)->patterns ? "00:00:00:00:00:00" : "";
    case LY_TYPE_BITS: return "";
    default: return "0";
    }
}

struct Peer {
    ly_ctx* ctx = nullptr;
    const lys_module* module = nullptr;
    lyd_node* vrfs = nullptr;        // first of the top-level vrf entries
    lyd_node* mac_ace = nullptr;     // the entry with the attributes that have a value
    lyd_node* mac_full = nullptr;    // the entry with all 395 leaves (in its own tree)
    size_t mac_leaves = 0;
    size_t mac_full_leaves = 0;
    std::string grandchild;          // vrf / vrf_afi / vrf_afi_rt path of a configured entry
};

// One list entry under `parent` (nullptr: top level) with a leaf per attribute that has a
// value, or per attribute whatever its value when `full`. Answers the leaves it holds.
size_t add_entry(const Peer& p, lyd_node* parent, const char* list, const char* key,
                 const std::vector<zan::plat::NamedValue>& attrs, bool full, lyd_node** entry) {
    std::optional<std::string> key_value;
    for (const auto& a : attrs)
        if (a.name == key) key_value = value_text(a.value);
    if (!key_value) fail(std::string(list) + ": the key " + key + " has no value");
    const std::string predicate = "[" + std::string(key) + "='" + *key_value + "']";
    if (lyd_new_list2(parent, p.module, list, predicate.c_str(), 0, entry) != LY_SUCCESS)
        fail(std::string("lyd_new_list2 ") + list + predicate + ": " + ly_errmsg(p.ctx));
    size_t leaves = 1;
    for (const auto& a : attrs) {
        if (a.name == key) continue;
        std::optional<std::string> text = value_text(a.value);
        if (!text && full) {
            const lysc_node* s = lys_find_child((*entry)->schema, p.module, a.name.c_str(), 0, 0, 0);
            if (s == nullptr) fail(std::string(list) + ": no leaf " + a.name);
            text = filler(s);
        }
        if (!text) continue;
        if (lyd_new_term(*entry, p.module, a.name.c_str(), text->c_str(), 0, nullptr) != LY_SUCCESS)
            fail(std::string("lyd_new_term ") + a.name + " = " + *text + ": " + ly_errmsg(p.ctx));
        ++leaves;
    }
    return leaves;
}

const Peer& peer() {
    static const Peer* made = [] {
        auto* p = new Peer;
        if (ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY, &p->ctx) != LY_SUCCESS) fail("ly_ctx_new");
        lys_module* m = nullptr;
        if (lys_parse_path(p->ctx, ZAN_PEER_YANG, LYS_IN_YANG, &m) != LY_SUCCESS)
            fail(std::string("loading ") + ZAN_PEER_YANG + ": " + ly_errmsg(p->ctx));
        p->module = m;

        const auto* vrf = zan::db::table_info("tbl_ci_vrf_eol");
        const auto* afi = zan::db::table_info("tbl_ci_vrf_afi_mode_eol");
        const auto* rt = zan::db::table_info("tbl_ci_vrf_mode_rt_eol");
        const auto* mac = zan::db::table_info("tbl_conf_mac_nacl_eol");
        if (!vrf || !afi || !rt || !mac) fail("a modelled table is missing");
        for (const zan::db::Row* v : store().rows_under(*vrf, nullptr)) {
            lyd_node* ve = nullptr;
            add_entry(*p, nullptr, "vrf", "vrf_key_vrf_name", render(vrf->name.data(), v), false, &ve);
            if (p->vrfs == nullptr) p->vrfs = ve;
            for (const zan::db::Row* a : store().rows_under(*afi, v)) {
                lyd_node* ae = nullptr;
                auto afi_attrs = render(afi->name.data(), a);
                add_entry(*p, ve, "vrf_afi", "vrf_af_afi", afi_attrs, false, &ae);
                for (const zan::db::Row* r : store().rows_under(*rt, a)) {
                    lyd_node* re = nullptr;
                    auto rt_attrs = render(rt->name.data(), r);
                    add_entry(*p, ae, "vrf_afi_rt", "vrf_mode_rt_key", rt_attrs, false, &re);
                    if (p->grandchild.empty()) {
                        char* path = lyd_path(re, LYD_PATH_STD, nullptr, 0);
                        p->grandchild = path;
                        std::free(path);
                    }
                }
            }
        }
        if (p->vrfs == nullptr || p->grandchild.empty()) fail("no vrf / vrf_afi / vrf_afi_rt row configured");

        if (store().rows(*mac).empty()) fail("no tbl_conf_mac_nacl_eol row configured");
        const auto attrs = render(mac->name.data(), store().rows(*mac).front());
        p->mac_leaves = add_entry(*p, nullptr, "mac_ace", "mac_ace_entry_number", attrs, false, &p->mac_ace);
        p->mac_full_leaves = add_entry(*p, nullptr, "mac_ace", "mac_ace_entry_number", attrs, true, &p->mac_full);
        if (p->mac_full_leaves != attrs.size())
            fail("the full entry holds " + std::to_string(p->mac_full_leaves) + " leaves, the row " +
                 std::to_string(attrs.size()) + " attributes");
        return p;
    }();
    return *made;
}

// lyd_find_path on the three-level keyed path of a configured route target, from the first
// top-level node, as a caller holding the tree resolves a request's path.
void BM_PeerFindPath(benchmark::State& state) {
    const Peer& p = peer();
    lyd_node* match = nullptr;
    if (lyd_find_path(p.vrfs, p.grandchild.c_str(), 0, &match) != LY_SUCCESS || match == nullptr) {
        state.SkipWithError(("lyd_find_path finds nothing at " + p.grandchild).c_str());
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(lyd_find_path(p.vrfs, p.grandchild.c_str(), 0, &match));
        benchmark::DoNotOptimize(match);
    }
    state.SetLabel(p.grandchild);
    state.counters["segments"] = 3;
    state.counters["per_segment"] =
        benchmark::Counter(3, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PeerFindPath)->Unit(benchmark::kNanosecond);

// lyd_print_mem of one list entry as JSON into a fresh string, freed inside the loop.
void print_entry(benchmark::State& state, const lyd_node* entry, size_t leaves) {
    for (auto _ : state) {
        char* out = nullptr;
        benchmark::DoNotOptimize(lyd_print_mem(&out, entry, LYD_JSON, LYD_PRINT_SHRINK));
        std::free(out);
    }
    state.counters["attributes"] = double(leaves);
    state.counters["per_attribute"] = benchmark::Counter(
        double(leaves), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The entry of the row as configured: the attributes that have a value.
void BM_PeerPrintMacAce(benchmark::State& state) { print_entry(state, peer().mac_ace, peer().mac_leaves); }
BENCHMARK(BM_PeerPrintMacAce)->Unit(benchmark::kNanosecond);

// The entry with a leaf for every one of the 395 attributes.
void BM_PeerPrintMacAceFull(benchmark::State& state) {
    print_entry(state, peer().mac_full, peer().mac_full_leaves);
}
BENCHMARK(BM_PeerPrintMacAceFull)->Unit(benchmark::kNanosecond);

// The schema walk that lists the leaves of the mac_ace list: each leaf's data path and its
// base type, copied into a fresh list, as a column description hands out name and type.
void BM_PeerSchemaLeaves(benchmark::State& state) {
    const Peer& p = peer();
    const lysc_node* list = lys_find_path(p.ctx, nullptr, "/zan-peer:mac_ace", 0);
    if (list == nullptr) {
        state.SkipWithError("no mac_ace list in the module");
        return;
    }
    size_t leaves = 0;
    char buffer[512];
    for (auto _ : state) {
        std::vector<std::pair<std::string, int>> out;
        for (const lysc_node* n = lysc_node_child(list); n != nullptr; n = n->next) {
            if (n->nodetype != LYS_LEAF) continue;
            lysc_path(n, LYSC_PATH_DATA, buffer, sizeof buffer);
            out.emplace_back(buffer, reinterpret_cast<const lysc_node_leaf*>(n)->type->basetype);
        }
        leaves = out.size();
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["columns"] = double(leaves);
    state.counters["per_column"] = benchmark::Counter(
        double(leaves), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PeerSchemaLeaves)->Unit(benchmark::kMicrosecond);

}  // namespace
