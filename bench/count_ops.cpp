// Driver for instruction counts under valgrind --tool=callgrind --collect-atstart=no:
//   count_ops N [OP...]      (no OP: all of them; `count_ops --list` names them)
// For each operation: its setup and one warm-up call run uncollected, then N calls run
// with collection on, and the counts are dumped under the operation's name, so that each
// dump holds N calls and nothing else. "baseline" runs the same loop around an empty body.
// One line per operation on standard output: name, units per call and what the unit is
// (scripts/callgrind.sh divides by them).
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
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

#ifdef ZAN_PEER
#include "peer/peer_tree.hpp"
#endif

namespace {

using Keys = std::vector<std::pair<std::string, std::string>>;
using Body = std::function<void()>;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "count_ops: %s\n", what.c_str());
    std::exit(1);
}

const zan::engine::Engine& engine() { return bench_engine("count_ops"); }

const zan::db::Store& store() { return bench_store("count_ops"); }

zan::plat::UriSegment keyed(const char* position, const char* value) {
    const auto* t = zan::db::table_info(position);
    if (t == nullptr) fail(std::string("no position ") + position);
    return {std::string(t->segment), Keys{{std::string(t->key_name), value}}};
}

// One request of the engine on a path built once: a fresh params per call, pdc emptied after.
Body resolve(std::vector<zan::plat::UriSegment> path, int32_t want) {
    const auto dispatch = engine().dispatcher();
    gx_do_uri* uri = zan::plat::uri_new(path);
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    return [=] {
        static int ctx = 0;
        arbor_params_t* params = zan::plat::params_new();
        const void* slot = nullptr;
        const int32_t code = dispatch(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
        zan::plat::params_free(params);
        gx_do_nlist_clear(pdc);
        if (code != want) fail("resolution answered " + std::to_string(code) + ", want " + std::to_string(want));
    };
}

// The first configured row of a table into a fresh properties object.
Body properties(const char* table) {
    const auto t = engine().find_table(table);
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!t || !info || store().rows(*info).empty() || t->gx->to_properties == nullptr)
        fail(std::string("no row or to_properties for ") + table);
    const zan::db::Row* row = store().rows(*info).front();
    const auto fn = t->gx->to_properties;
    return [=] {
        gx_do_properties* props = zan::plat::properties_new();
        uint32_t err = 0;
        const int32_t status = fn(zan::engine::Engine::context(), 0, row, props, 0, &err);
        zan::plat::properties_deref(props);
        if (status != 0 || err != 0) fail(std::string("a row of ") + table + " does not render");
    };
}

// The first configured row through its top type's to_vlist_all into a fresh value list.
Body vlist_all(const char* table) {
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!info || store().rows(*info).empty() || info->rows.size() != 1) fail(std::string("no row of ") + table);
    const auto type = engine().find_type(info->rows[0]->name);
    if (!type || type->vlist->to_vlist_all == nullptr) fail(std::string("no to_vlist_all for ") + table);
    const void* rec = zan::db::row_record(*store().rows(*info).front());
    const auto fn = type->vlist->to_vlist_all;
    return [=] {
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = fn(zan::engine::Engine::context(), 0, rec, list, 0, &err);
        gx_do_vlist_deref(list);
        if (r < 0 || err != 0) fail(std::string("a row of ") + table + " does not render to a value list");
    };
}

// The first configured row through the table's own to_vlist with every leaf attribute of
// the row in one name list (names and path made once), into a fresh value list.
Body table_names(const char* table) {
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!info || store().rows(*info).empty() || info->rows.size() != 1) fail(std::string("no row of ") + table);
    const auto t = engine().find_table(table);
    if (!t || t->gx->to_vlist == nullptr) fail(std::string("no to_vlist for ") + table);
    std::vector<std::string> names;
    leaf_names(*info->rows[0], "", names);
    const zan::db::Row* row = store().rows(*info).front();
    gx_do_nlist* nlist = gx_do_nlist_new();
    for (const std::string& n : names) gx_do_nlist_add_string(nlist, n.c_str());
    gx_do_uri* uri = zan::plat::uri_new(zan::engine::row_segments(*row));
    const auto fn = t->gx->to_vlist;
    return [=] {
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = fn(zan::engine::Engine::context(), 0, uri, nlist, row, list, 0, &err);
        gx_do_vlist_deref(list);
        if (r < 0 || err != 0) fail(std::string("the names of ") + table + " do not render");
    };
}

// The first configured row through its top type's <type>_to_nlist_vlist_all (held by no
// array; found in the library's symbol table) into a fresh name list and value list.
Body pairs(const char* table) {
    using pairs_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, int32_t,
                                 uint32_t*);
    const zan::db::TableInfo* info = zan::db::table_info(table);
    if (!info || store().rows(*info).empty() || info->rows.size() != 1) fail(std::string("no row of ") + table);
    auto fn = reinterpret_cast<pairs_fn>(
        library_function(engine(), std::string(info->rows[0]->name) + "_to_nlist_vlist_all"));
    if (fn == nullptr) fail(std::string("no to_nlist_vlist_all for ") + table);
    const void* rec = zan::db::row_record(*store().rows(*info).front());
    return [=] {
        gx_do_nlist* names = gx_do_nlist_new();
        gx_do_vlist* list = gx_do_vlist_new();
        uint32_t err = 0;
        const int32_t r = fn(zan::engine::Engine::context(), 0, rec, names, list, 0, &err);
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(list);
        if (r < 0 || err != 0) fail(std::string("a row of ") + table + " does not render to paired lists");
    };
}

// Column descriptions of some tables, each into a fresh list.
Body columns(std::vector<zan::engine::TableRow> tables) {
    return [tables] {
        for (const auto& t : tables) {
            arbor_ntlist* list = zan::plat::ntlist_new();
            uint32_t err = 0;
            t.gx->columns_to_ntlist(list, &err);
            zan::plat::ntlist_free(list);
        }
    };
}

std::vector<zan::engine::TableRow> all_tables() {
    std::vector<zan::engine::TableRow> out;
    for (const auto& r : engine().table_rows())
        if (!r.empty()) out.push_back(r);
    return out;
}

struct Op {
    const char* name;
    double units;        // units per call
    const char* unit;
    std::function<Body()> make;
};

std::vector<Op> operations() {
    std::vector<Op> ops = {
        {"baseline", 1, "call", [] { return Body([] {}); }},
        {"resolve_root_head", 1, "segment",
         [] { return resolve({keyed("tbl_cfg_ip_dhcp_relay_bootp_ignore_eol", "1")}, 1); }},
        {"resolve_root_tail", 1, "segment", [] { return resolve({keyed("tbl_cfg_veil_parameter_map", "pmap")}, 1); }},
        {"resolve_grandchild", 3, "segment",
         [] {
             return resolve({keyed("tbl_ci_vrf_eol", "red"), keyed("tbl_ci_vrf_afi_mode_eol", "1"),
                             keyed("tbl_ci_vrf_mode_rt_eol_b", "65000:11")},
                            1);
         }},
        {"resolve_walk_grandchild", 3, "segment",
         [] {
             const auto dispatch = engine().dispatcher();
             gx_do_uri* uri = zan::plat::uri_new({keyed("tbl_ci_vrf_eol", "red"), keyed("tbl_ci_vrf_afi_mode_eol", "1"),
                                                  keyed("tbl_ci_vrf_mode_rt_eol_b", "65000:11")});
             gx_do_nlist* pd = gx_do_nlist_new();
             gx_do_nlist* pdc = gx_do_nlist_new();
             return Body([=] {
                 static int ctx = 0;
                 arbor_params_t* params = zan::plat::params_new();
                 const void* slot = nullptr;
                 const int32_t code =
                     dispatch(&ctx, 0, 0, uri, pd, pdc, params, 0, zan::engine::k_kind_read_row, &slot);
                 const auto w = zan::engine::walk(store(), zan::plat::params_traversals(params));
                 zan::plat::params_free(params);
                 gx_do_nlist_clear(pdc);
                 if (code != 1 || w.rows.size() != 1) fail("the route target's path does not walk to its row");
             });
         }},
        {"resolve_compound", 1, "segment",
         [] {
             const auto* t = zan::db::table_info("tbl_ip_dhcp_svr");
             if (t == nullptr || t->key_parts.size() != 2) fail("tbl_ip_dhcp_svr has no two-part key");
             return resolve({{std::string(t->segment), Keys{{std::string(t->key_parts[0]->name), "red"},
                                                            {std::string(t->key_parts[1]->name), "10.0.0.5"}}}},
                            1);
         }},
        {"resolve_chain_tail_parent", 1, "segment", [] { return resolve({keyed("tbl_cfg_classmap", "CM-VOICE")}, 1); }},
        {"resolve_chain_tail", 2, "segment",
         [] { return resolve({keyed("tbl_cfg_classmap", "CM-VOICE"), keyed("tbl_match_proto_clause", "1")}, 1); }},
        {"resolve_miss", double(zan::db::positions().size()), "position",
         [] { return resolve({{"no_such_segment", Keys{{"singleton_id", "1"}}}}, 3); }},
        {"properties_one_leaf", 1, "attribute", [] { return properties("tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"); }},
        {"properties_ntp_peer", 37, "attribute", [] { return properties("tbl_ntp_peer_eol"); }},
        {"properties_mac_nacl", 395, "attribute", [] { return properties("tbl_conf_mac_nacl_eol"); }},
        {"vlist_all_mac_nacl", 395, "value", [] { return vlist_all("tbl_conf_mac_nacl_eol"); }},
        {"pairs_mac_nacl", 395, "value", [] { return pairs("tbl_conf_mac_nacl_eol"); }},
        {"table_names_mac_nacl", 395, "attribute", [] { return table_names("tbl_conf_mac_nacl_eol"); }},
        {"columns_all_tables", 0, "column", [] { return columns(all_tables()); }},
        {"columns_largest_table", 395, "column",
         [] {
             auto t = engine().find_table("tbl_conf_mac_nacl_eol");
             if (!t) fail("no tbl_conf_mac_nacl_eol");
             return columns({*t});
         }},
    };
    // The column count of all tables, from the tables themselves.
    for (Op& op : ops)
        if (std::strcmp(op.name, "columns_all_tables") == 0) {
            size_t n = 0;
            for (const auto& t : all_tables()) {
                arbor_ntlist* list = zan::plat::ntlist_new();
                uint32_t err = 0;
                t.gx->columns_to_ntlist(list, &err);
                n += zan::plat::ntlist_entries(list).size();
                zan::plat::ntlist_free(list);
            }
            op.units = double(n);
        }
#ifdef ZAN_PEER
    ops.push_back({"peer_find_path", 3, "segment", [] {
                       return Body([] {
                           lyd_node* match = nullptr;
                           if (lyd_find_path(peer().vrfs, peer().grandchild.c_str(), 0, &match) != LY_SUCCESS)
                               fail("lyd_find_path finds nothing");
                       });
                   }});
    ops.push_back({"peer_print_mac_ace", double(peer().mac_leaves), "attribute", [] {
                       return Body([] {
                           char* out = nullptr;
                           lyd_print_mem(&out, peer().mac_ace, LYD_JSON, LYD_PRINT_SHRINK);
                           std::free(out);
                       });
                   }});
    ops.push_back({"peer_print_mac_ace_full", double(peer().mac_full_leaves), "attribute", [] {
                       return Body([] {
                           char* out = nullptr;
                           lyd_print_mem(&out, peer().mac_full, LYD_JSON, LYD_PRINT_SHRINK);
                           std::free(out);
                       });
                   }});
    ops.push_back({"peer_schema_leaves", 395, "column", [] {
                       const lysc_node* list = lys_find_path(peer().ctx, nullptr, "/zan-peer:mac_ace", 0);
                       if (list == nullptr) fail("no mac_ace list");
                       return Body([list] {
                           char buffer[512];
                           std::vector<std::pair<std::string, int>> out;
                           for (const lysc_node* n = lysc_node_child(list); n != nullptr; n = n->next) {
                               if (n->nodetype != LYS_LEAF) continue;
                               lysc_path(n, LYSC_PATH_DATA, buffer, sizeof buffer);
                               out.emplace_back(buffer, reinterpret_cast<const lysc_node_leaf*>(n)->type->basetype);
                           }
                       });
                   }});
#endif
    return ops;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const Op& op : operations()) std::printf("%s\n", op.name);
        return 0;
    }
    if (argc < 2) fail("usage: count_ops N [OP...] | --list");
    const long n = std::strtol(argv[1], nullptr, 10);
    if (n <= 0) fail("N must be a positive count");
    std::vector<std::string> wanted(argv + 2, argv + argc);
    store();
    for (const Op& op : operations()) {
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), op.name) == wanted.end()) continue;
        const Body body = op.make();
        body();   // warm-up: first-use work of the operation stays out of the counts
        CALLGRIND_ZERO_STATS;
        CALLGRIND_TOGGLE_COLLECT;
        for (long i = 0; i < n; ++i) body();
        CALLGRIND_TOGGLE_COLLECT;
        CALLGRIND_DUMP_STATS_AT(op.name);
        std::printf("%s %g %s\n", op.name, op.units, op.unit);
    }
    return 0;
}
