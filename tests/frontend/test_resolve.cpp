// Path and query resolution as an engine drives it: through the registered top
// dispatcher, the exported dispatchers and traversers, with the reference platform's
// objects, traces, allocator accounting and fault points.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <thread>

#include "harness.hpp"
#include "zan/database.hpp"
#include "../sample_keys.hpp"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define ZAN_LEAK_CHECK_OFF() __lsan_disable()
#define ZAN_LEAK_CHECK_ON() __lsan_enable()
#else
#define ZAN_LEAK_CHECK_OFF() (void)0
#define ZAN_LEAK_CHECK_ON() (void)0
#endif

using namespace fe_test;
using zan::db::TableInfo;
using zan::db::Word;
using zan::plat::UriSegment;

namespace {

constexpr uint32_t k_debug = 0x7000000, k_error = 0x3000000;
constexpr uint32_t k_site_base = 0x1862F400;
const std::string k_unit = "path and query traversal";
const std::string k_ctx = "zan_config_db_zan_config_db_context";

using zan::test::Keys;
using zan::test::keys_of;

std::vector<uint8_t> stored_key(const TableInfo* p, const Keys& keys) {
    if (p->key_kind != zan::db::KeyKind::compound) return *zan::db::key_bytes(p->key_word, keys[0].second);
    zan::db::RecordPtr rec = zan::db::make_record(p->key_name);
    for (const auto& [n, v] : keys) zan::db::set_from_text(*rec, n, v);
    return zan::db::key_bytes(*rec);
}

// Positions from the root down to p.
std::vector<const TableInfo*> lineage(const TableInfo* p) {
    std::vector<const TableInfo*> out;
    for (const TableInfo* q = p; q != nullptr && out.size() < 4; q = q->parent) out.insert(out.begin(), q);
    return out;
}

std::string marker_of(const TableInfo* p) {
    if (p->name == "tbl_flow_record_eol") return "inst_tbl_flow_record";   // the one marker of its own
    return "inst_" + std::string(p->table->name);
}

bool is_child(const TableInfo* p) { return p->parent != nullptr && !p->link_field.empty(); }

std::vector<uint8_t> bytes16(const uint8_t* p) { return {p, p + 16}; }

struct Field {
    uint32_t id = 0;
    const uint8_t* luid = nullptr;
};
Field lookup(const zan_field_vft* vft, std::string_view name) {
    Field f;
    uint32_t err = 0;
    const std::string n(name);
    vft->get_field(nullptr, 0, n.c_str(), &f.id, &f.luid, &err);
    return f;
}

// First site numbers of each position's path and query traverser, by the counting rule:
// P then Q per position in traverser order; root and nolink path traversers take 1 site,
// children 5, one-key queries 3, compound queries 6 plus one per key part.
struct Sites {
    uint32_t path, query;
};
std::map<std::string, Sites> site_layout(uint32_t* total = nullptr) {
    std::map<std::string, Sites> first;
    uint32_t site = 0;
    for (const TableInfo* p : zan::db::positions()) {
        const uint32_t ps = site;
        site += is_child(p) ? 5 : 1;
        first[std::string(p->name)] = {ps, site};
        site += p->key_kind == zan::db::KeyKind::compound ? 6 + uint32_t(p->key_parts.size()) : 3;
    }
    if (total) *total = site;
    return first;
}

// One request: the two name lists, the params, the slot cell.
class Resolve : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(init(), 0); }
    void SetUp() override {
        zan::plat::fault_clear_all();
        dispatch = registered().dispatch;
    }
    void TearDown() override {
        zan::plat::fault_clear_all();
        reset();
        gx_do_nlist_deref(pd);
        gx_do_nlist_deref(pdc);
        zan::plat::params_free(params);
    }
    void reset() {
        gx_do_nlist_clear(pd);
        gx_do_nlist_clear(pdc);
        zan::plat::params_free(params);
        params = zan::plat::params_new();
        slot = nullptr;
    }
    // `shape` may change the path before it is offered (its count, a key list's length).
    int32_t run(const std::vector<UriSegment>& segs, uint32_t kind = 0, bool with_pd = true, bool with_pdc = true,
                const std::function<void(gx_do_uri*)>& shape = {}) {
        gx_do_uri* uri = zan::plat::uri_new(segs);
        if (shape) shape(uri);
        const int32_t rc = dispatch(nullptr, 3, 0x99, uri, with_pd ? pd : nullptr, with_pdc ? pdc : nullptr, params, 0,
                                    kind, &slot);
        zan::plat::uri_deref(uri);
        return rc;
    }
    // The ROOT table's own dispatcher, asked about a lone "*" segment.
    int32_t root_star(gx_do_nlist* pd_list, gx_do_nlist* pdc_list) {
        using disp = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_uri_segment*, gx_do_nlist*, gx_do_nlist*,
                                 arbor_params_t*, uint64_t, uint32_t, const void**, uint32_t);
        const auto root = fn<disp>(("fe_" + k_ctx + "_ROOT_path_query_dispatch").c_str());
        gx_do_uri* uri = zan::plat::uri_new({{"*", std::nullopt}});
        const int32_t rc =
            root(nullptr, 3, 0, gx_do_uri_get_segment(uri, 1), pd_list, pdc_list, params, 0, 0, &slot, 0);
        zan::plat::uri_deref(uri);
        return rc;
    }
    std::vector<zan::plat::TraversalView> travs() { return zan::plat::params_traversals(params); }
    std::vector<std::string> pd_names() { return zan::plat::nlist_names(pd); }
    std::vector<std::string> pdc_names() { return zan::plat::nlist_names(pdc); }

    zan_path_query_dispatch_fn dispatch = nullptr;
    gx_do_nlist* pd = gx_do_nlist_new();
    gx_do_nlist* pdc = gx_do_nlist_new();
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;
};

UriSegment seg(const TableInfo* p) { return {std::string(p->segment), keys_of(p)}; }
UriSegment seg(const char* position) { return seg(zan::db::table_info(position)); }
UriSegment bare(std::string name) { return {std::move(name), std::nullopt}; }

bool has_trace(const zan::plat::TraceCapture& cap, const std::string& text, uint32_t level) {
    for (const auto& r : cap.records())
        if (r.unit == k_unit && r.text == text && r.level == level) return true;
    return false;
}

// ------------------------------------------------------------------ the whole catalogue

TEST_F(Resolve, EveryPositionResolvesByItsFullPathWithKeys) {
    int checked = 0;
    for (const TableInfo* p : zan::db::positions()) {
        SCOPED_TRACE(std::string(p->name));
        reset();
        const auto line = lineage(p);
        std::vector<UriSegment> segs;
        for (const TableInfo* q : line) segs.push_back(seg(q));
        ASSERT_EQ(run(segs), 1);
        const auto t = travs();
        ASSERT_EQ(t.size(), 2 * line.size());
        for (size_t i = 0; i < line.size(); ++i) {
            const TableInfo* q = line[i];
            const auto& path = t[2 * i];
            const auto& query = t[2 * i + 1];
            EXPECT_EQ(path.pq, 0u);
            ASSERT_TRUE(path.pq_luid.has_value());
            EXPECT_EQ(bytes16(path.pq_luid->data()), bytes16(q->pq));
            EXPECT_EQ(bytes16(path.deref_table.type_luid), bytes16(q->luid));
            if (is_child(q)) {
                const Field row = lookup(q->parent->table->vft, q->parent->name.substr(4));
                ASSERT_TRUE(path.id_vec[0].has_value());
                EXPECT_EQ(bytes16(path.id_vec[0]->type_luid), bytes16(q->parent->luid));
                EXPECT_EQ(path.id_vec[0]->field_id, row.id);
                const zan::db::FieldInfo* link = q->parent->table->rows[0]->field(q->link_field);
                ASSERT_NE(link, nullptr);
                ASSERT_TRUE(path.id_vec[1].has_value());
                ASSERT_NE(row.luid, nullptr);
                EXPECT_EQ(bytes16(path.id_vec[1]->type_luid), bytes16(row.luid));
                EXPECT_EQ(path.id_vec[1]->field_id, link->id);
            } else {
                EXPECT_FALSE(path.id_vec[0].has_value());
                EXPECT_FALSE(path.id_vec[1].has_value());
            }
            EXPECT_EQ(query.pq, 1u);
            EXPECT_FALSE(query.pq_luid.has_value());
            EXPECT_EQ(bytes16(query.deref_table.type_luid), bytes16(q->luid));
            ASSERT_TRUE(query.key_luid.has_value());
            EXPECT_EQ(bytes16(query.key_luid->data()), bytes16(q->key_luid));
            EXPECT_EQ(query.key_field_id, std::optional(q->key_field_id));
            EXPECT_EQ(query.key_data, std::optional(stored_key(q, keys_of(q))));
        }
        EXPECT_EQ(slot, p->vft) << "the slot holds the last table's vector";
        // Inner markers are taken by the next segment's dispatcher; the last one stays.
        EXPECT_EQ(pdc_names(), std::vector<std::string>{marker_of(p)});
        EXPECT_TRUE(pd_names().empty());
        ++checked;
    }
    EXPECT_EQ(checked, 331);
}

TEST_F(Resolve, StarListsTheRootSegmentsOnlyAtTheFirstLevelInChainOrder) {
    std::vector<std::string> roots, all;
    for (const TableInfo* p : zan::db::positions()) {
        all.emplace_back(p->segment);
        if (p->parent == nullptr) roots.emplace_back(p->segment);
    }
    ASSERT_EQ(roots.size(), 107u);
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({bare("*")}), 3);
    EXPECT_TRUE(has_trace(cap, "  PD add FE Path P_tbl_ntp_peer_eol uri: ntp_peer_server", k_debug));
    EXPECT_EQ(pd_names(), roots);
    EXPECT_TRUE(pdc_names().empty()) << "ROOT was added and taken out again";
    EXPECT_TRUE(travs().empty());

    // Without pdc_list no gate closes: every table adds its name, in chain order.
    reset();
    EXPECT_EQ(run({bare("*")}, 0, true, false), 3);
    EXPECT_EQ(pd_names(), all);

    // Without pd_list nothing is collected and no ROOT marker is left.
    reset();
    EXPECT_EQ(run({bare("*")}, 0, false, true), 3);
    EXPECT_TRUE(pdc_names().empty());
}

TEST_F(Resolve, StarBelowATableListsExactlyItsChildren) {
    int parents = 0;
    for (const TableInfo* p : zan::db::positions()) {
        std::vector<std::string> kids;
        for (const TableInfo* q : zan::db::positions())
            if (q->parent == p) kids.emplace_back(q->segment);
        if (kids.empty()) continue;
        SCOPED_TRACE(std::string(p->name));
        reset();
        std::vector<UriSegment> segs;
        for (const TableInfo* q : lineage(p)) segs.push_back(seg(q));
        segs.push_back(bare("*"));
        EXPECT_EQ(run(segs), 3);
        EXPECT_EQ(pd_names(), kids);
        EXPECT_TRUE(pdc_names().empty()) << "the parent's marker is consumed";
        ++parents;
    }
    EXPECT_EQ(parents, 22);

    // Below a table without children nothing is listed and its marker stays.
    reset();
    EXPECT_EQ(run({seg("tbl_ntp_peer_eol"), bare("*")}), 3);
    EXPECT_TRUE(pd_names().empty());
    EXPECT_EQ(pdc_names(), std::vector<std::string>{"inst_tbl_ntp_peer_eol"});
}

TEST_F(Resolve, StarAsFirstKeyNameListsTheKeyNameAndKeepsThePathStep) {
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({{"ntp_peer_server", Keys{{"*", ""}}}}), 3);
    EXPECT_EQ(pd_names(), std::vector<std::string>{"peer_server_key"});
    ASSERT_EQ(travs().size(), 1u);
    EXPECT_EQ(travs()[0].pq, 0u);
    EXPECT_TRUE(has_trace(cap, "  PD add FE Key peer_server_key", k_debug));
    EXPECT_TRUE(has_trace(cap,
                          " zan_config_db zan_config_db_context ROOT path_query_dispatch: P_tbl_ntp_peer_eol Query path "
                          "not found\\n",
                          k_error));
    EXPECT_TRUE(has_trace(cap, " zan_config_db zan_config_db_context path_query_dispatch : No valid path found\\n",
                          0x6000000));

    // Compound keys never list.
    reset();
    EXPECT_EQ(run({{"ip_dhcp_svr", Keys{{"*", ""}}}}), 3);
    EXPECT_TRUE(pd_names().empty());
    // Without pd_list, a "*" key is just a wrong key.
    reset();
    EXPECT_EQ(run({{"ntp_peer_server", Keys{{"*", ""}}}}, 0, false, true), 3);
}

// ------------------------------------------------------------------ the top dispatcher alone

TEST_F(Resolve, TopDispatcherOffersSegmentOneAndReportsNoValidPath) {
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({bare("no_such_table")}), 3);
    const auto recs = cap.records();
    ASSERT_EQ(recs.size(), 3u);
    EXPECT_EQ(recs[0].unit, "path and query traversal");
    EXPECT_EQ(recs[0].level, 0x7000000u);
    EXPECT_EQ(recs[0].text, " Processing seg 1\\n");
    // A one-segment path with both lists entitles the root tables to list candidates: the
    // ROOT dispatcher takes the marker out again.
    EXPECT_EQ(recs[1].text, "  PDC stored table match ROOT");
    EXPECT_EQ(recs[2].unit, "path and query traversal");
    EXPECT_EQ(recs[2].level, 0x6000000u);
    EXPECT_EQ(recs[2].text, " zan_config_db zan_config_db_context path_query_dispatch : No valid path found\\n");
    EXPECT_TRUE(pdc_names().empty());
    EXPECT_TRUE(pd_names().empty());
    EXPECT_TRUE(travs().empty());
    EXPECT_EQ(slot, nullptr);
}

TEST_F(Resolve, TopDispatcherLeavesNoRootMarkerWithMoreSegments) {
    // (Without one of the two lists: StarListsTheRootSegmentsOnlyAtTheFirstLevelInChainOrder.)
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({bare("no_such_table"), bare("vrf_afi")}), 3);
    EXPECT_TRUE(pdc_names().empty());
    // The walk ends at the first segment nobody takes.
    ASSERT_EQ(cap.records().size(), 2u);
    EXPECT_EQ(cap.records()[0].text, " Processing seg 1\\n");
}

TEST_F(Resolve, TopDispatcherOffersSegmentOneWhateverTheCountSays) {
    {
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run({}), 3);   // only segment 0
        ASSERT_FALSE(cap.records().empty());
        EXPECT_EQ(cap.records()[0].text, " Processing seg 1\\n");
        ASSERT_GE(cap.records().size(), 2u);
        EXPECT_EQ(cap.records()[1].text, "  PDC stored table match ROOT");
    }
    // A two-segment path whose count says otherwise: below 3 (0 and negative included) the
    // loop makes one pass, on segment 1, as the last segment; 3 makes it look at segment 2.
    const std::vector<UriSegment> two{seg("tbl_cfg_ip_dhcp_pool_eol"), seg("tbl_dhcp_pool_network")};
    struct Case {
        int32_t count;
        std::vector<UriSegment> segs;
        int32_t code;
        size_t passes, traversals;
        const char* last_table;   // the slot's table after the walk; nullptr: none
        size_t listed;            // names in pd_list
    };
    const Case cases[] = {
        {0, two, 1, 1, 2, "tbl_cfg_ip_dhcp_pool_eol", 0},
        {-1, two, 1, 1, 2, "tbl_cfg_ip_dhcp_pool_eol", 0},
        {1, two, 1, 1, 2, "tbl_cfg_ip_dhcp_pool_eol", 0},
        {2, two, 1, 1, 2, "tbl_cfg_ip_dhcp_pool_eol", 0},
        {3, two, 1, 2, 4, "tbl_dhcp_pool_network", 0},
        // a lone "*" under a count of 0 is still the one segment: the root tables list
        {0, {bare("*")}, 3, 1, 0, nullptr, 107},
        {0, {bare("*"), bare("dhcp_pool_network")}, 3, 1, 0, nullptr, 107},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("count " + std::to_string(c.count) + ", " + c.segs[0].name);
        reset();
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run(c.segs, 0, true, true, [&](gx_do_uri* uri) { zan::plat::uri_set_count(uri, c.count); }), c.code);
        std::vector<std::string> passes;
        for (const auto& r : cap.records())
            if (r.text.starts_with(" Processing seg ")) passes.push_back(r.text);
        ASSERT_EQ(passes.size(), c.passes);
        EXPECT_EQ(passes[0], " Processing seg 1\\n");
        EXPECT_EQ(travs().size(), c.traversals);
        EXPECT_EQ(slot, c.last_table ? zan::db::table_info(c.last_table)->vft : nullptr);
        EXPECT_EQ(pd_names().size(), c.listed);
        // The root marker only for a walk that ends at segment 1.
        bool root_marker = false;
        for (const auto& r : cap.records()) root_marker |= r.text == "  PDC stored table match ROOT";
        EXPECT_EQ(root_marker, c.passes == 1);
    }
}

// ------------------------------------------------------------------ traces of a success

TEST_F(Resolve, ASuccessTracesEachStepAtProgressLevel) {
    zan::plat::TraceCapture cap;
    ASSERT_EQ(run({seg("tbl_cfg_ip_dhcp_pool_eol"), seg("tbl_dhcp_pool_network")}), 1);
    std::vector<std::string> texts;
    for (const auto& r : cap.records()) {
        EXPECT_EQ(r.unit, k_unit);
        EXPECT_EQ(r.level, k_debug) << r.text;
        texts.push_back(r.text);
    }
    const std::vector<std::string> want = {
        " Processing seg 1\\n",
        "   Found path : cfg_ip_dhcp_pool_eol\\n",
        "  PDC store FE Path P_tbl_cfg_ip_dhcp_pool_eol table: inst_tbl_cfg_ip_dhcp_pool_eol",
        " nvlist_num = 1",
        " Processing query key : dhcp_pool_name",
        " Processing seg 2\\n",
        "  PDC stored table match inst_tbl_cfg_ip_dhcp_pool_eol",
        "   Found path : dhcp_pool_network\\n",
        "  PDC store FE Path P_tbl_dhcp_pool_network table: inst_tbl_dhcp_pool_network",
        " nvlist_num = 1",
        " Processing query key : singleton_id",
    };
    EXPECT_EQ(texts, want);
}

// ------------------------------------------------------------------ markers and the gate

TEST_F(Resolve, TheMarkerScanRemovesEveryExactOccurrenceAndClosesTheGateOtherwise) {
    auto ask = [&](std::vector<std::string> markers, bool with_pdc) {
        reset();
        for (const auto& m : markers) gx_do_nlist_add_string(pdc, m.c_str());
        return root_star(pd, with_pdc ? pdc : nullptr);
    };

    zan::plat::TraceCapture cap;
    EXPECT_EQ(ask({"ROOT", "inst_tbl_vrf", "ROOT"}, true), 3);
    EXPECT_EQ(pd_names().size(), 107u);
    EXPECT_EQ(pdc_names(), std::vector<std::string>{"inst_tbl_vrf"}) << "both ROOTs removed, nothing else";
    int matches = 0;
    for (const auto& r : cap.records()) matches += r.text == "  PDC stored table match ROOT" && r.level == k_debug;
    EXPECT_EQ(matches, 2);

    EXPECT_EQ(ask({"ROOTS"}, true), 3);   // a longer name is no match: the terminator counts
    EXPECT_TRUE(pd_names().empty());
    EXPECT_EQ(pdc_names(), std::vector<std::string>{"ROOTS"});

    EXPECT_EQ(ask({}, true), 3);   // an empty list closes the gate
    EXPECT_TRUE(pd_names().empty());

    EXPECT_EQ(ask({}, false), 3);   // no list leaves it open
    EXPECT_EQ(pd_names().size(), 107u);

    // With pd_list NULL the marker is removed all the same.
    reset();
    gx_do_nlist_add_string(pdc, "ROOT");
    EXPECT_EQ(root_star(nullptr, pdc), 3);
    EXPECT_TRUE(pdc_names().empty());
}

// An instance dispatcher's marker is matched exactly, whatever longer marker shares its
// start; with pd_list NULL it is taken out all the same.
TEST_F(Resolve, InstanceMarkersThatShareAPrefixAreToldApart) {
    using disp = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_uri_segment*, gx_do_nlist*, gx_do_nlist*,
                             arbor_params_t*, uint64_t, uint32_t, const void**, uint32_t);
    auto star = [&](const std::string& marker, std::vector<std::string> in_pdc, bool with_pd) {
        reset();
        for (const auto& m : in_pdc) gx_do_nlist_add_string(pdc, m.c_str());
        const auto f = fn<disp>(("fe_" + k_ctx + "_" + marker + "_path_query_dispatch").c_str());
        gx_do_uri* uri = zan::plat::uri_new({{"*", std::nullopt}});
        const int32_t rc =
            f(nullptr, 3, 0, gx_do_uri_get_segment(uri, 1), with_pd ? pd : nullptr, pdc, params, 0, 0, &slot, 0);
        zan::plat::uri_deref(uri);
        return rc;
    };
    const std::pair<std::string, std::string> pairs[] = {{"inst_tbl_mdns_sp", "inst_tbl_mdns_sp_sl_in"},
                                                         {"inst_tbl_flow_exporter", "inst_tbl_flow_exporter_options"},
                                                         {"inst_tbl_flow_monitor", "inst_tbl_flow_monitor_exporter"}};
    for (const auto& [marker, longer] : pairs) {
        SCOPED_TRACE(marker);
        EXPECT_EQ(star(marker, {longer}, true), 3);
        EXPECT_TRUE(pd_names().empty()) << "the longer marker opens no gate";
        EXPECT_EQ(pdc_names(), std::vector<std::string>{longer});
        EXPECT_EQ(star(marker, {longer, marker}, true), 3);
        EXPECT_FALSE(pd_names().empty()) << "the exact marker opens it";
        EXPECT_EQ(pdc_names(), std::vector<std::string>{longer});
        EXPECT_EQ(star(marker, {marker}, false), 3);
        EXPECT_TRUE(pdc_names().empty()) << "taken out with pd_list NULL";
    }
}

// A root table's segment with a key it does not know: ROOT answers 3 with its not-found
// line, and the instance dispatchers are still asked (one finds its marker and says so).
TEST_F(Resolve, ARootSegmentWithAnUnknownKeyGoesOnToTheInstanceDispatchers) {
    zan::plat::TraceCapture cap;
    gx_do_nlist_add_string(pdc, "inst_tbl_cfg_ip_dhcp_pool_eol");
    EXPECT_EQ(run({{"ntp_peer_server", Keys{{"nope", "1"}}}, bare("x")}), 3);
    EXPECT_TRUE(has_trace(cap,
                          " zan_config_db zan_config_db_context ROOT path_query_dispatch: P_tbl_ntp_peer_eol Query "
                          "path not found\\n",
                          k_error));
    EXPECT_TRUE(has_trace(cap, "  PDC stored table match inst_tbl_cfg_ip_dhcp_pool_eol", k_debug));
    EXPECT_EQ(pdc_names(), std::vector<std::string>{"inst_tbl_ntp_peer_eol"}) << "the peer's own marker stays";
}

// An instance dispatcher's two failure lines: its child's query answers 3 (a key it does not
// know), or anything but 1 and 3 (a key that does not convert).
TEST_F(Resolve, AnInstanceDispatcherTracesBothQueryFailures) {
    const std::string who = " zan_config_db zan_config_db_context inst_tbl_cfg_ip_dhcp_pool_eol path_query_dispatch: ";
    const UriSegment pool = seg("tbl_cfg_ip_dhcp_pool_eol");
    const std::string key(zan::db::table_info("tbl_dhcp_pool_network")->key_name);
    struct Case {
        UriSegment child;
        int32_t code;
        std::string trace;
    };
    const Case cases[] = {
        {{"dhcp_pool_network", Keys{{"nope", "1"}}}, 3, who + "P_tbl_dhcp_pool_network Query path not found\\n"},
        {{"dhcp_pool_network", Keys{{key, "not a value"}}}, 5, who + "Generate prop param failed\\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        reset();
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run({pool, c.child}), c.code);
        EXPECT_TRUE(has_trace(cap, c.trace, k_error));
    }
}

TEST_F(Resolve, ANameWithoutTextBeforeTheMarkerEndsTheScan) {
    reset();
    zan::plat::nlist_add_textless(pdc);
    gx_do_nlist_add_string(pdc, "ROOT");
    EXPECT_EQ(root_star(pd, pdc), 3);
    EXPECT_TRUE(pd_names().empty()) << "the scan stopped before the marker, so the gate is closed";
    EXPECT_EQ(pdc_names(), (std::vector<std::string>{"", "ROOT"})) << "nothing was removed";
    // The same marker before the textless name is found and taken out.
    reset();
    gx_do_nlist_add_string(pdc, "ROOT");
    zan::plat::nlist_add_textless(pdc);
    EXPECT_EQ(root_star(pd, pdc), 3);
    EXPECT_EQ(pd_names().size(), 107u);
    EXPECT_EQ(pdc_names(), std::vector<std::string>{""});
}

TEST_F(Resolve, ChildrenAreRecognisedWithoutTheirParentsMarker) {
    // The vrf's children are found after the vrf even without pdc_list...
    EXPECT_EQ(run({seg("tbl_ci_vrf_eol"), seg("tbl_ci_vrf_mode_rd_eol")}, 0, false, false), 1);
    EXPECT_EQ(travs().size(), 4u);
    // ...and a second entrance stores its table's vector and marker.
    reset();
    EXPECT_EQ(run({seg("tbl_ci_vrf_eol"), seg("tbl_ci_vrf_afi_mode_eol"), seg("tbl_ci_vrf_mode_rt_eol_b")}), 1);
    EXPECT_EQ(slot, zan::db::table_info("tbl_ci_vrf_mode_rt_eol")->vft);
    EXPECT_EQ(pdc_names(), std::vector<std::string>{"inst_tbl_ci_vrf_mode_rt_eol"});
}

// ------------------------------------------------------------------ path traverser failures

TEST_F(Resolve, AChildWithAnEmptySlotFails) {
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({seg("tbl_dhcp_pool_network")}), 5);
    EXPECT_TRUE(has_trace(cap, " Invalid from table VFT (incorrect path order)", k_error));
    EXPECT_TRUE(travs().empty());
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(zan::plat::live_traversals(), 0);
    // A name that doesn't match still answers 3, whatever the slot holds.
    reset();
    EXPECT_EQ(run({bare("not_a_segment")}), 3);
}

TEST_F(Resolve, AChildUnderAForeignParentAsksTheForeignVector) {
    // The ntp peer's vector knows no row field "cfg_ip_dhcp_pool_eol": it answers no LUID
    // and field id 0, so the child gets index 0 from its own constants and no index 1.
    EXPECT_EQ(run({seg("tbl_ntp_peer_eol"), seg("tbl_dhcp_pool_network")}), 1);
    const auto t = travs();
    ASSERT_EQ(t.size(), 4u);
    ASSERT_TRUE(t[2].id_vec[0].has_value());
    EXPECT_EQ(bytes16(t[2].id_vec[0]->type_luid), bytes16(zan::db::table_info("tbl_cfg_ip_dhcp_pool_eol")->luid));
    EXPECT_EQ(t[2].id_vec[0]->field_id, 0u);
    EXPECT_FALSE(t[2].id_vec[1].has_value());
    EXPECT_EQ(slot, zan::db::table_info("tbl_dhcp_pool_network")->vft);
    // The peer's marker matches no dispatcher and stays; the child's is added.
    EXPECT_EQ(pdc_names(), (std::vector<std::string>{"inst_tbl_ntp_peer_eol", "inst_tbl_dhcp_pool_network"}));
}

TEST_F(Resolve, PathTraverserFailuresDestroyTheTraversalAndLeaveSlotAndMarkersAlone) {
    struct Case {
        const char* point;
        long nth;
        bool child;
        std::string trace;
    };
    const Case cases[] = {
        {"arbor_traverse_create", 1, false, " Create arbor traverse inst for path failed"},
        {"arbor_params_t_set_last", 1, false, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_traverse_create", 1, true, " Create arbor traverse inst for path failed"},
        {"arbor_id_create", 1, true, " create arbor_id failed"},
        {"arbor_id_create", 2, true, " create arbor_id failed\\n"},
        {"arbor_params_t_set_last", 1, true, " Set arbor traverse inst failed, RSL err 5"},
        // Every setter's failure, and a traversal that gives no deref_table, shows at the end.
        {"arbor_traverse_pq_luid_set_mem", 1, false, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_traverse_pq_set_value", 1, false, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_traverse_deref_table_get", 1, false, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_id_type_luid_set_mem", 1, false, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_id_type_luid_set_mem", 2, true, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_id_type_luid_set_mem", 3, true, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_id_field_id_set_value", 1, true, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_id_field_id_set_value", 2, true, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_traverse_arbor_id_vec_set", 1, true, " Set arbor traverse inst failed, RSL err 5"},
        {"arbor_traverse_arbor_id_vec_set", 2, true, " Set arbor traverse inst failed, RSL err 5"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        reset();
        std::vector<UriSegment> segs;
        const void* parent_vft = nullptr;
        if (c.child) {
            ASSERT_EQ(run({seg("tbl_cfg_ip_dhcp_pool_eol")}), 1);
            parent_vft = slot;
            gx_do_nlist_clear(pdc);
            segs = {seg("tbl_dhcp_pool_network")};
        } else {
            segs = {seg("tbl_ntp_peer_eol")};
        }
        const size_t before = travs().size();
        const long live = zan::plat::live_traversals();
        zan::plat::fault_fail_nth(c.point, c.nth);
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run(segs), 5);
        EXPECT_TRUE(has_trace(cap, c.trace, k_error));
        EXPECT_EQ(travs().size(), before);
        EXPECT_EQ(zan::plat::live_traversals(), live);
        EXPECT_EQ(slot, parent_vft);
        EXPECT_TRUE(pdc_names().empty());
        zan::plat::fault_clear_all();
    }
}

TEST_F(Resolve, AMissDoesNotAllocate) {
    const long before = zan::plat::alloc_count();
    EXPECT_EQ(run({bare("no_such_table")}), 3);
    EXPECT_EQ(run({bare("no_such_table")}, 0, false, false), 3);
    EXPECT_EQ(run({bare("ntp_peer_serve")}), 3);    // a prefix of a segment name
    EXPECT_EQ(run({bare("ntp_peer_server_")}), 3);  // a segment name with more behind it
    EXPECT_EQ(zan::plat::alloc_count(), before);
}

// ------------------------------------------------------------------ request kinds

TEST_F(Resolve, RequestKindsDecideWhetherKeysAreNeeded) {
    const UriSegment no_keys = bare("ntp_peer_server");
    const UriSegment wrong_key{"ntp_peer_server", Keys{{"nope", "1"}}};
    struct Case {
        uint32_t kind;
        UriSegment segment;
        int32_t code;
        size_t traversals;
    };
    const Case cases[] = {
        {6, wrong_key, 1, 1},  {13, wrong_key, 1, 1},  {6, no_keys, 1, 1},  {5, wrong_key, 3, 1},
        {0, no_keys, 1, 1},    {5, no_keys, 1, 1},     {10, no_keys, 1, 1}, {11, no_keys, 1, 1},
        {12, no_keys, 1, 1},   {17, no_keys, 1, 1},    {3, no_keys, 0, 1},  {18, no_keys, 0, 1},
        {31, no_keys, 0, 1},   {32, no_keys, 0, 1},    {33, no_keys, 0, 1}, {4000000000u, no_keys, 0, 1},
        {1, no_keys, 0, 1},    {16, no_keys, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.kind);
        reset();
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run({c.segment}, c.kind), c.code);
        EXPECT_EQ(travs().size(), c.traversals);
        if (c.code == 0) {
            EXPECT_TRUE(has_trace(cap, " Gxcore doesn't send key but RSL defines key search", k_error));
        }
    }
    // With more segments the no-query kinds demand keys like any other.
    for (uint32_t kind : {6u, 13u, 0u}) {
        reset();
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run({no_keys, seg("tbl_ntp_peer_eol")}, kind), 0);
        EXPECT_TRUE(has_trace(cap, " Expecting keys for Q_tbl_ntp_peer_eol before moving to next path", k_error));
        EXPECT_TRUE(has_trace(cap,
                              " zan_config_db zan_config_db_context ROOT path_query_dispatch: Generate prop param "
                              "failed\\n",
                              k_error));
    }
    reset();
    EXPECT_EQ(run({seg("tbl_cfg_ip_dhcp_pool_eol"), seg("tbl_dhcp_pool_network")}, 6), 1);
    EXPECT_EQ(travs().size(), 3u) << "kind 6 makes no query step on the last segment only";
}

// ------------------------------------------------------------------ one-key query failures

// Allocation site tags of this run whose type is `type`.
std::vector<uint32_t> new_sites(const std::vector<zan::plat::AllocSite>& before, const std::string& type) {
    std::map<uint32_t, long> old;
    for (const auto& s : before)
        if (s.type_name == type) old[s.tag] = s.total;
    std::vector<uint32_t> out;
    for (const auto& s : zan::plat::alloc_sites())
        if (s.type_name == type && s.total > old[s.tag]) out.push_back(s.tag);
    return out;
}

TEST_F(Resolve, OneKeyQueryFailures) {
    const UriSegment good = seg("tbl_ntp_auth_key_eol");
    // The site tags of the two arrays, seen through the allocator's accounting.
    auto before = zan::plat::alloc_sites();
    ASSERT_EQ(run({good}), 1);
    const auto names_site = new_sites(before, "BYTE*");
    const auto values_site = new_sites(before, "gx_do_value*");
    ASSERT_EQ(names_site.size(), 1u);
    ASSERT_EQ(values_site.size(), 1u);
    EXPECT_EQ(values_site[0], names_site[0] + 1);

    struct Case {
        std::function<void()> arm;
        std::vector<UriSegment> segs;
        int32_t code;
        std::string trace;
        uint32_t level;
        size_t traversals;
    };
    const Case cases[] = {
        {[] {}, {{"ntp_auth_key", Keys{}}}, 0, " nvlist_num <= 0", k_debug, 1},
        {[&] { zan::plat::alloc_fail_site(names_site[0]); }, {good}, 5,
         " Failed to allocate memory for key_name_arr", k_error, 1},
        {[&] { zan::plat::alloc_fail_site(values_site[0]); }, {good}, 5,
         " Failed to allocate memory for nvlist_item_value_arr", k_error, 1},
        {[] { zan::plat::fault_fail_nth("get_field", 1); }, {good}, 0, " could not find the field_luid", k_error, 1},
        {[] { zan::plat::fault_fail_nth("arbor_traverse_create", 2); }, {good}, 0, " Create arbor query inst failed",
         k_error, 1},
        {[] { zan::plat::fault_fail_nth("arbor_params_t_set_last", 2); }, {good}, 0,
         " Set arbor query inst failed, RSL err 5", k_error, 1},
        {[] {}, {{"ntp_auth_key", Keys{{"ntp_auth_key_num", "not a number"}}}}, 5,
         " Arbor encountered RSL error : 22", k_error, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        reset();
        const long live = zan::plat::alloc_live();
        const long traversals = zan::plat::live_traversals();
        c.arm();
        zan::plat::TraceCapture cap;
        EXPECT_EQ(run(c.segs), c.code);
        zan::plat::fault_clear_all();
        EXPECT_TRUE(has_trace(cap, c.trace, c.level));
        EXPECT_EQ(travs().size(), c.traversals);
        EXPECT_EQ(zan::plat::live_traversals() - traversals, long(c.traversals)) << "no traversal left over";
        EXPECT_EQ(zan::plat::alloc_live() - live, long(c.traversals)) << "arrays and key data freed";
        EXPECT_EQ(slot, zan::db::table_info("tbl_ntp_auth_key_eol")->vft) << "the path step stands";
    }
}

// A key list whose length reads negative is not the empty list: both templates trace the
// length and ask the allocator for the length sign-extended times eight, which no allocator
// gives, and answer 5 like any failed allocation; the path step stands.
TEST_F(Resolve, ANegativeKeyListLengthFailsTheFirstAllocation) {
    struct Case {
        std::vector<UriSegment> segs;
        const char* table;
        int32_t len;
    };
    const Case cases[] = {
        {{seg("tbl_ntp_auth_key_eol")}, "tbl_ntp_auth_key_eol", -1},
        {{seg("tbl_ntp_auth_key_eol")}, "tbl_ntp_auth_key_eol", -2},
        {{seg("tbl_ip_dhcp_svr")}, "tbl_ip_dhcp_svr", -1},
        {{seg("tbl_threat_visibility"), seg("tbl_threat_visibility_ip_export")}, "tbl_threat_visibility_ip_export",
         -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.table) + " " + std::to_string(c.len));
        reset();
        const size_t last = c.segs.size();
        const long live = zan::plat::alloc_live();
        const long records = zan::db::live_counts().key_records;
        std::vector<size_t> asked;
        zan::plat::alloc_set_watch([&](const zan::plat::AllocCall& a) {
            if (a.kind == zan::plat::AllocCall::malloc && a.type_name == std::string_view("BYTE*"))
                asked.push_back(a.size);
        });
        zan::plat::TraceCapture cap;
        const int32_t code = run(c.segs, 0, true, true, [&](gx_do_uri* uri) {
            zan::plat::nvlist_set_len(gx_do_uri_segment_get_keys(gx_do_uri_get_segment(uri, int32_t(last))), c.len);
        });
        zan::plat::alloc_clear_watch();
        EXPECT_EQ(code, 5);
        EXPECT_TRUE(has_trace(cap, " nvlist_num = " + std::to_string(c.len), k_debug));
        EXPECT_FALSE(has_trace(cap, " nvlist_num <= 0", k_debug));
        std::vector<std::string> errors;
        bool passed_on = false;
        for (const auto& r : cap.records()) {
            if (r.level != k_error) continue;
            if (r.text.find("path_query_dispatch") == std::string::npos) errors.push_back(r.text);
            else passed_on |= r.text.ends_with("path_query_dispatch: Generate prop param failed\\n");
        }
        EXPECT_EQ(errors, std::vector<std::string>{" Failed to allocate memory for key_name_arr"});
        EXPECT_TRUE(passed_on) << "the dispatcher passes the 5 on with its line";
        ASSERT_EQ(asked.size(), last) << "one name array per query, the parent's included";
        EXPECT_EQ(asked.back(), size_t(int64_t(c.len) * 8));
        EXPECT_EQ(travs().size(), 2 * last - 1) << "the path steps stand, no query step";
        EXPECT_EQ(slot, zan::db::table_info(c.table)->vft);
        EXPECT_EQ(zan::db::live_counts().key_records, records);
        reset();
        EXPECT_EQ(zan::plat::alloc_live(), live) << "nothing but the traversals was kept";
    }
}

TEST_F(Resolve, OnlyTheFirstKeyCounts) {
    EXPECT_EQ(run({{"ntp_peer_server", Keys{{"other", "x"}, {"peer_server_key", "k1"}}}}), 3);
    reset();
    EXPECT_EQ(run({{"ntp_peer_server", Keys{{"peer_server_key", "k1"}, {"other", "x"}}}}), 1);
    EXPECT_EQ(travs()[1].key_data, std::optional(std::vector<uint8_t>{'k', '1'}));
}

// ------------------------------------------------------------------ compound keys

TEST_F(Resolve, CompoundKeysTakeTheirPartsInAnyOrderFirstOccurrenceFirst) {
    const TableInfo* svr = zan::db::table_info("tbl_ip_dhcp_svr");
    const Keys in_order{{"vrf_name", "red"}, {"dhcp_server", "10.0.0.9"}};
    {
        zan::plat::TraceCapture cap;
        ASSERT_EQ(run({{"ip_dhcp_svr", in_order}}), 1);
        EXPECT_TRUE(has_trace(cap, " Processing query key : ip_dhcp_svr", k_debug));
    }
    const auto want = stored_key(svr, in_order);
    ASSERT_EQ(travs().size(), 2u);
    EXPECT_EQ(travs()[1].key_data, std::optional(want));
    EXPECT_EQ(travs()[1].key_field_id, std::optional(svr->key_field_id));

    reset();
    ASSERT_EQ(run({{"ip_dhcp_svr", Keys{{"x", "y"}, {"dhcp_server", "10.0.0.9"}, {"vrf_name", "red"},
                                         {"vrf_name", "blue"}}}}),
              1);
    EXPECT_EQ(travs()[1].key_data, std::optional(want));

    reset();
    zan::plat::TraceCapture cap;
    EXPECT_EQ(run({{"ip_dhcp_svr", Keys{{"dhcp_server", "10.0.0.9"}}}}), 3);
    EXPECT_TRUE(has_trace(cap,
                          " zan_config_db zan_config_db_context ROOT path_query_dispatch: P_tbl_ip_dhcp_svr Query "
                          "path not found\\n",
                          k_error));

    // Kinds that need no key on the last segment build no key record.
    reset();
    const long records = zan::db::live_counts().key_records;
    EXPECT_EQ(run({bare("ip_dhcp_svr")}, 5), 1);
    // Kinds 6 and 13 make no query step on the last segment, on both compound tables.
    for (uint32_t kind : {6u, 13u}) {
        SCOPED_TRACE(kind);
        reset();
        zan::db::key_calls_clear();
        EXPECT_EQ(run({{"ip_dhcp_svr", Keys{{"nope", "1"}}}}, kind), 1);
        EXPECT_EQ(travs().size(), 1u);
        reset();
        EXPECT_EQ(run({seg("tbl_threat_visibility"), {"tv_ip_export", Keys{{"nope", "1"}}}}, kind), 1);
        EXPECT_EQ(travs().size(), 3u);
        EXPECT_TRUE(zan::db::key_calls().obj_flags.empty()) << "no part converted";
    }
    EXPECT_EQ(zan::db::live_counts().key_records, records);
}

TEST_F(Resolve, CompoundKeyFailures) {
    const UriSegment tv = seg("tbl_threat_visibility");
    const UriSegment good{"tv_ip_export", Keys{{"vrf_name", "red"}, {"export_address", "10.0.0.1"},
                                                {"valid_port_number", "99"}}};
    auto before = zan::plat::alloc_sites();
    ASSERT_EQ(run({tv, good}), 1);
    const auto ckey_site = new_sites(before, "int32");
    const auto buffer_site = new_sites(before, "BYTE");
    ASSERT_EQ(ckey_site.size(), 1u);
    ASSERT_FALSE(buffer_site.empty());
    const uint32_t q_site = site_layout()["tbl_threat_visibility_ip_export"].query;
    EXPECT_EQ(ckey_site[0], k_site_base | (q_site + 2));

    struct Case {
        std::function<void()> arm;
        Keys keys;
        int32_t code;
        std::string trace;   // empty: no trace of error level beyond the dispatcher's
        long leaked = 0;     // allocations the traverser leaves behind by design
    };
    const Case cases[] = {
        {[&] { zan::plat::alloc_fail_site(k_site_base | (q_site + 4)); }, *good.keys, 0, ""},   // key record
        {[&] { zan::plat::alloc_fail_site(k_site_base | (q_site + 8)); }, *good.keys, 0, ""},   // key buffer
        {[&] { zan::plat::alloc_fail_site(ckey_site[0]); }, *good.keys, 5,
         " Failed to allocate memory for ckey_pos_arr"},
        {[] {}, Keys{{"vrf_name", "red"}, {"export_address", "not an address"}, {"valid_port_number", "99"}}, 0,
         " Arbor: unsupported type ip_address"},
        {[] {}, Keys{{"vrf_name", "red"}, {"export_address", "10.0.0.1"}, {"valid_port_number", "x"}}, 0,
         " Arbor: unsupported type int32"},
        // the child's path step looks up two fields first: its row field and its link field
        {[] { zan::plat::fault_fail_nth("get_field", 3); }, *good.keys, 0, " could not find the field_luid"},
        // A setter's error shows under the next part's type; the last setter's and the
        // marshalling's at the end.
        {[] { zan::plat::fault_fail_nth("accessor", 1); }, *good.keys, 0, " Arbor: unsupported type int32"},
        {[] { zan::plat::fault_fail_nth("accessor", 3); }, *good.keys, 5, " Arbor encountered RSL error : 5"},
        {[] { zan::plat::fault_fail_nth("accessor", 4); }, *good.keys, 5, " Arbor encountered RSL error : 5"},
        {[] { zan::plat::fault_fail_nth("arbor_traverse_create", 2); }, *good.keys, 0, ""},
        // a traversal that could not be appended is not destroyed: it stays behind
        {[] { zan::plat::fault_fail_nth("arbor_params_t_set_last", 2); }, *good.keys, 0, "", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        reset();
        const long live = zan::plat::alloc_live();
        ASSERT_EQ(run({tv}), 1);
        gx_do_nlist_clear(pdc);
        const long records = zan::db::live_counts().key_records;
        const long typed = zan::db::live_counts().typed;
        c.arm();
        zan::plat::TraceCapture cap;
        if (c.leaked) ZAN_LEAK_CHECK_OFF();   // the leak is the traverser's, by design
        EXPECT_EQ(run({{"tv_ip_export", c.keys}}), c.code);
        if (c.leaked) ZAN_LEAK_CHECK_ON();
        zan::plat::fault_clear_all();
        if (!c.trace.empty()) {
            EXPECT_TRUE(has_trace(cap, c.trace, k_error));
        }
        for (const auto& r : cap.records()) {
            if (r.level == k_error && r.text.find("path_query_dispatch") == std::string::npos) {
                EXPECT_EQ(r.text, c.trace);
            }
        }
        EXPECT_EQ(zan::db::live_counts().key_records, records);
        EXPECT_EQ(zan::db::live_counts().typed, typed);
        reset();   // frees the traversals: what is left is the traverser's
        EXPECT_EQ(zan::plat::alloc_live() - live, c.leaked) << "arrays, record, buffer and typed objects freed";
    }
}

// The position array is the third allocation: when it fails, the value array and then the
// name array are freed, and only then is the failure traced.
TEST_F(Resolve, ACompoundKeyFreesBothArraysBeforeTracingTheThirdAllocation) {
    std::vector<std::string> events;
    std::map<const void*, std::string> blocks;
    zan::plat::alloc_set_watch([&](const zan::plat::AllocCall& c) {
        if (c.kind != zan::plat::AllocCall::free) {
            events.push_back(std::string(c.block ? "malloc " : "failed ") + c.type_name);
            if (c.block) blocks[c.block] = c.type_name;
        } else if (blocks.count(c.block)) {
            events.push_back("free " + blocks[c.block]);
        }
    });
    zan::plat::trace_set_sink([&](const zan::plat::TraceRecord& r) {
        if (r.level == k_error) events.push_back("trace" + r.text);
    });
    zan::plat::alloc_fail_site(k_site_base | (site_layout()["tbl_ip_dhcp_svr"].query + 2));
    EXPECT_EQ(run({seg("tbl_ip_dhcp_svr")}), 5);
    zan::plat::trace_clear_sink();
    zan::plat::alloc_clear_watch();
    const std::vector<std::string> want = {"malloc BYTE*", "malloc gx_do_value*", "failed int32", "free gx_do_value*",
                                           "free BYTE*", "trace Failed to allocate memory for ckey_pos_arr"};
    ASSERT_GE(events.size(), want.size());
    auto at = std::find(events.begin(), events.end(), want[0]);
    ASSERT_NE(at, events.end());
    EXPECT_EQ(std::vector<std::string>(at, at + std::min<long>(want.size(), events.end() - at)), want);
}

// Both key templates hand the conversion the value flag of the request kind: 1 for kinds
// 3, 5 and 12, else 0 (kinds above 12 included); kinds 6 and 13 convert no key on the last
// segment.
TEST_F(Resolve, KeyConversionsGetTheValueFlagOfTheRequestKind) {
    const std::vector<UriSegment> one_key{seg("tbl_cfg_ip_dhcp_pool_eol"), seg("tbl_dhcp_pool_network")};
    const std::vector<UriSegment> compound{seg("tbl_threat_visibility"), seg("tbl_threat_visibility_ip_export")};
    std::vector<uint32_t> kinds = {35, 37, 44};
    for (uint32_t k = 0; k <= 18; ++k) kinds.push_back(k);
    for (uint32_t kind : kinds) {
        SCOPED_TRACE(kind);
        const uint32_t flag = kind == 3 || kind == 5 || kind == 12 ? 1 : 0;
        const bool last_converted = kind != 6 && kind != 13;
        for (const auto* path : {&one_key, &compound}) {
            reset();
            zan::db::key_calls_clear();
            run(*path, kind);
            const zan::db::KeyCalls& k = zan::db::key_calls();
            const size_t data = path == &one_key && last_converted ? 2 : 1;
            const size_t parts = path == &compound && last_converted ? 3 : 0;
            EXPECT_EQ(k.data_flags, std::vector<uint32_t>(data, flag));
            EXPECT_EQ(k.obj_flags, std::vector<uint32_t>(parts, flag));
        }
    }
}

// An address key reads the same in both templates: blanks around it do not count.
TEST_F(Resolve, BothKeyTemplatesReadAnAddressAlike) {
    const TableInfo* svr = zan::db::table_info("tbl_ip_dhcp_svr");
    ASSERT_EQ(run({{"ip_dhcp_svr", Keys{{"vrf_name", "red"}, {"dhcp_server", " 10.0.0.9 "}}}}), 1);
    EXPECT_EQ(travs().at(1).key_data,
              std::optional(stored_key(svr, Keys{{"vrf_name", "red"}, {"dhcp_server", "10.0.0.9"}})));
    for (const TableInfo* p : zan::db::positions()) {
        if (p->key_kind == zan::db::KeyKind::compound || p->key_word != Word::ip_address || p->parent) continue;
        reset();
        ASSERT_EQ(run({{std::string(p->segment), Keys{{std::string(p->key_name), " 10.0.0.9 "}}}}), 1) << p->name;
        EXPECT_EQ(travs().at(1).key_data, std::optional(*zan::db::key_bytes(Word::ip_address, "10.0.0.9")));
        break;
    }
}

// ------------------------------------------------------------------ site tags

TEST_F(Resolve, SiteTagsAreTheUnitBaseOredWithTheRunningSiteNumber) {
    uint32_t total = 0;
    auto first = site_layout(&total);
    EXPECT_EQ(total, 2215u);
    EXPECT_EQ(first["tbl_cfg_ip_dhcp_relay_bootp_ignore_eol"].path, 0u);

    // The compound query's own sites: three arrays, traversal, key record, a setter per
    // part, then the buffer.
    const auto [svr_p, svr_q] = first["tbl_ip_dhcp_svr"];
    auto svr_before = zan::plat::alloc_sites();
    ASSERT_EQ(run({seg("tbl_ip_dhcp_svr")}), 1);
    EXPECT_EQ(new_sites(svr_before, "BYTE*"), std::vector<uint32_t>{k_site_base | svr_q});
    EXPECT_EQ(new_sites(svr_before, "gx_do_value*"), std::vector<uint32_t>{k_site_base | (svr_q + 1)});
    EXPECT_EQ(new_sites(svr_before, "int32"), std::vector<uint32_t>{k_site_base | (svr_q + 2)});
    EXPECT_EQ(new_sites(svr_before, "arbor_traverse"),
              (std::vector<uint32_t>{k_site_base | svr_p, k_site_base | (svr_q + 3)}));
    const auto bytes = new_sites(svr_before, "BYTE");
    EXPECT_TRUE(std::count(bytes.begin(), bytes.end(), k_site_base | (svr_q + 7)) == 1) << "the key buffer";
    reset();

    // A child deep in the numbering: sites above 1024 fold onto the lower tags.
    const char* child = "tbl_vrf_af_mdt_mldp_eol";
    const auto [ps, qs] = first[child];
    ASSERT_GT(ps, 1024u);
    std::vector<UriSegment> segs;
    for (const TableInfo* q : lineage(zan::db::table_info(child))) segs.push_back(seg(q));
    auto before = zan::plat::alloc_sites();
    ASSERT_EQ(run(segs), 1);
    const auto traverse = new_sites(before, "arbor_traverse");
    const auto ids = new_sites(before, "arbor_id");
    auto has = [](const std::vector<uint32_t>& v, uint32_t tag) { return std::count(v.begin(), v.end(), tag) > 0; };
    EXPECT_TRUE(has(traverse, k_site_base | ps));
    EXPECT_TRUE(has(traverse, k_site_base | (qs + 2)));
    EXPECT_TRUE(has(ids, k_site_base | (ps + 1)));
    EXPECT_TRUE(has(ids, k_site_base | (ps + 3)));
    EXPECT_TRUE(has(new_sites(before, "BYTE*"), k_site_base | qs));
    EXPECT_TRUE(has(new_sites(before, "gx_do_value*"), k_site_base | (qs + 1)));
}

// Each part's setter gets a tag of its own: sites q+5, q+6 (and q+7 for the three-part key),
// pending when the setter runs.
TEST_F(Resolve, CompoundKeyPartSettersRunUnderTheirOwnTags) {
    auto first = site_layout();
    const uint32_t svr = k_site_base | first["tbl_ip_dhcp_svr"].query;
    const uint32_t tv = k_site_base | first["tbl_threat_visibility_ip_export"].query;
    using Tags = std::vector<std::pair<std::string, uint32_t>>;
    zan::db::key_calls_clear();
    ASSERT_EQ(run({seg("tbl_ip_dhcp_svr")}), 1);
    EXPECT_EQ(zan::db::key_calls().set_tags, (Tags{{"vrf_name", svr + 5}, {"dhcp_server", svr + 6}}));
    reset();
    zan::db::key_calls_clear();
    ASSERT_EQ(run({seg("tbl_threat_visibility"), seg("tbl_threat_visibility_ip_export")}), 1);
    EXPECT_EQ(zan::db::key_calls().set_tags,
              (Tags{{"export_address", tv + 5}, {"valid_port_number", tv + 6}, {"vrf_name", tv + 7}}));
}

// Every allocation of the front end names its type and pool by the library's own texts and
// per-thread cells: one cell per type name, the one pool "default" with its cell.
TEST_F(Resolve, AllocationsPassTheLibrarysTypeAndPoolCellsAndNames) {
    std::vector<zan::plat::AllocCall> calls;
    zan::plat::alloc_set_watch([&](const zan::plat::AllocCall& c) {
        if (c.kind != zan::plat::AllocCall::free) calls.push_back(c);
    });
    // Every query site kind: one-key arrays and key data, compound arrays, positions, buffer.
    ASSERT_EQ(run({seg("tbl_ip_dhcp_svr")}), 1);
    reset();
    ASSERT_EQ(run({seg("tbl_threat_visibility"), seg("tbl_threat_visibility_ip_export")}), 1);
    // The row functions' name copy.
    const zan_gx_table_row& row = table_row("tbl_ntp_peer_eol");
    const zan::db::Row* peer = default_store().rows(*zan::db::table_info("tbl_ntp_peer_eol"))[0];
    gx_do_uri* uri = zan::plat::uri_new({seg("tbl_ntp_peer_eol")});
    gx_do_nlist* names = gx_do_nlist_new();
    gx_do_nlist_add_string(names, "peer_server_key");
    gx_do_vlist* values = gx_do_vlist_new();
    uint32_t err = 0;
    EXPECT_GT(row.to_vlist(nullptr, 0, uri, names, peer, values, 0, &err), 0);
    gx_do_vlist_deref(values);
    gx_do_nlist_deref(names);
    zan::plat::uri_deref(uri);
    zan::plat::alloc_clear_watch();

    // This thread's cells and the library's texts, by the library file's symbol table.
    Dl_info info{};
    ASSERT_NE(dladdr(symbol(ZAN_FE_INIT_SYMBOL), &info), 0);
    void* tls = nullptr;
    ASSERT_EQ(dlinfo(library(), RTLD_DI_TLS_DATA, &tls), 0);
    ASSERT_NE(tls, nullptr);
    std::map<std::string, const void*> at;
    for (const ElfSymbol& s : read_elf(ZAN_FE_LIBRARY).symtab) {
        if (s.name.rfind("__TY_tinfot_ptr_", 0) == 0) at[s.name] = static_cast<char*>(tls) + s.value;
        if (s.name.rfind("__TY_tinfon_", 0) == 0) at[s.name] = static_cast<char*>(info.dli_fbase) + s.value;
    }
    std::set<std::string> seen;
    for (const zan::plat::AllocCall& c : calls) {
        const std::string type = c.type_name;
        const std::string sym = type == "BYTE" ? "BYTE" : type == "BYTE*" ? "BYTE_PTR"
                              : type == "gx_do_value*" ? "gx_do_value_PTR" : type == "int32" ? "int32" : "?";
        SCOPED_TRACE(type);
        seen.insert(type);
        EXPECT_EQ(c.type_name, at["__TY_tinfon_" + sym]);
        EXPECT_EQ(c.type_cell, at["__TY_tinfot_ptr_" + sym]);
        EXPECT_EQ(c.pool_name, at["__TY_tinfon_default"]);
        EXPECT_EQ(c.pool_cell, at["__TY_tinfot_ptr_default"]);
        if (c.kind == zan::plat::AllocCall::strdup) seen.insert("strdup");
    }
    EXPECT_EQ(seen, (std::set<std::string>{"BYTE", "BYTE*", "gx_do_value*", "int32", "strdup"}));
}

// ------------------------------------------------------------------ concurrency

TEST_F(Resolve, RequestsWithTheirOwnObjectsRunAtOnce) {
    const std::vector<UriSegment> segs = {seg("tbl_ci_vrf_eol"), seg("tbl_ci_vrf_afi_mode_eol"),
                                           seg("tbl_ci_vrf_mode_rt_eol_b")};
    std::vector<std::thread> threads;
    std::vector<int> ok(4, 0);
    for (int n = 0; n < 4; ++n) {
        threads.emplace_back([&, n] {
            for (int i = 0; i < 50; ++i) {
                gx_do_uri* uri = zan::plat::uri_new(segs);
                gx_do_nlist* p = gx_do_nlist_new();
                gx_do_nlist* c = gx_do_nlist_new();
                arbor_params_t* prm = zan::plat::params_new();
                const void* cell = nullptr;
                const bool good = dispatch(nullptr, 3, 0, uri, p, c, prm, 0, 0, &cell) == 1 &&
                                  zan::plat::params_traversals(prm).size() == 6 &&
                                  cell == zan::db::table_info("tbl_ci_vrf_mode_rt_eol")->vft;
                ok[n] += good;
                zan::plat::params_free(prm);
                gx_do_nlist_deref(c);
                gx_do_nlist_deref(p);
                zan::plat::uri_deref(uri);
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(ok, std::vector<int>(4, 50));
}

}  // namespace
