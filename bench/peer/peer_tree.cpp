// The libyang side of the comparison: the zan-peer module loaded into a context and a data
// tree filled from the built-in configuration. Every row of the VRF, address-family and
// route-target tables and the first row of tbl_conf_mac_nacl_eol are rendered through the
// library's own to_properties, and each attribute with a value becomes a leaf of the module
// (generated from the catalogue, one leaf per column). An attribute that renders null has no
// leaf: YANG has no null value. The "full" entry also gives those a leaf (the first value of
// the leaf's type), so that it carries all 395.
#include "peer_tree.hpp"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/platform.hpp"

#include "../bench_engine.hpp"
#include "../bench_store.hpp"

#ifndef ZAN_PEER_YANG
#error "ZAN_PEER_YANG must name the generated module"
#endif

namespace {


[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "bench_peer: %s\n", what.c_str());
    std::exit(1);
}

const zan::engine::Engine& engine() { return bench_engine("peer_tree"); }

const zan::db::Store& peer_store() { return bench_store("peer_tree"); }

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

}  // namespace

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
        for (const zan::db::Row* v : peer_store().rows_under(*vrf, nullptr)) {
            lyd_node* ve = nullptr;
            add_entry(*p, nullptr, "vrf", "vrf_key_vrf_name", render(vrf->name.data(), v), false, &ve);
            if (p->vrfs == nullptr) p->vrfs = ve;
            for (const zan::db::Row* a : peer_store().rows_under(*afi, v)) {
                lyd_node* ae = nullptr;
                auto afi_attrs = render(afi->name.data(), a);
                add_entry(*p, ve, "vrf_afi", "vrf_af_afi", afi_attrs, false, &ae);
                for (const zan::db::Row* r : peer_store().rows_under(*rt, a)) {
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

        if (peer_store().rows(*mac).empty()) fail("no tbl_conf_mac_nacl_eol row configured");
        const auto attrs = render(mac->name.data(), peer_store().rows(*mac).front());
        p->mac_leaves = add_entry(*p, nullptr, "mac_ace", "mac_ace_entry_number", attrs, false, &p->mac_ace);
        p->mac_full_leaves = add_entry(*p, nullptr, "mac_ace", "mac_ace_entry_number", attrs, true, &p->mac_full);
        if (p->mac_full_leaves != attrs.size())
            fail("the full entry holds " + std::to_string(p->mac_full_leaves) + " leaves, the row " +
                 std::to_string(attrs.size()) + " attributes");
        return p;
    }();
    return *made;
}

