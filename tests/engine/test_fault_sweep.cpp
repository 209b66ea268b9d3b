// The fault sweep: each representative request runs once to count the failure points it
// passes (allocations through the allocator and every named fault point of the platform:
// data-object creations, adds and sets, traversal and identity creation, accessors), then
// once more for each of those points failing in turn. Every run must answer a result its
// family documents for a failure, leave an error word the family can leave, release all it
// made (allocator and data-object counts back where they were) and return.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <cstdio>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "shared_engine.hpp"

namespace {

namespace db = zan::db;
namespace plat = zan::plat;

constexpr uint32_t k_error_level = 0x3000000;

// Where a compound-key traverser's appending fails: its own failure, or an error left by the
// setters of the table LUID before it.
const std::set<std::string> k_compound_stays = {"arbor_params_t_set_last", "arbor_traverse_deref_table_get",
                                                "arbor_id_type_luid_set_mem"};
constexpr uint32_t k_fatal_level = 0;

struct Outcome {
    int32_t result;
    uint32_t err;
};

struct SweptRequest {
    std::string name;
    std::function<Outcome()> run;
    std::set<int32_t> results;    // what the family answers, failing or not
    std::set<uint32_t> errors;    // error words it can leave (0 included)
    // The compound-key traversers never destroy a traversal they made: when appending it
    // fails, it stays where it is. Failures at these points may leave one traversal live.
    std::set<std::string> traversal_may_stay = {};
    // Two faults put the name and value lists of a sequence element out of step, and the
    // level above aborts: a nested paired rendering ignores the result of
    // gx_do_vlist_add_all, and a flag set whose list cannot be made answers 10002, which
    // counts as a value added. Failures at these points run in a child process, which must
    // either pass the checks or abort.
    std::set<std::string> may_abort = {};
    bool positive_too = false;    // any positive result counts as well (value-list adders)
};

// Records of types that no table row holds (the fixed array of en_address, the counted
// array of vlan_group, the u_int16 leaf of consumer), a row with an int16 leaf and a row
// whose array is unset, loaded apart from the default configuration.
const db::Store& record_store() {
    static auto* r = new zan::config::LoadResult(zan::config::load_text(
        R"({"@records": {"en_address": [{"addr": [0, 17, 34, 51, 68, 85]}],
                         "vlan_group": [{"vlan_group_name": "lab", "vlans": [5, 6, 7]}],
                         "consumer": [{"cid": 3, "app_id": 300}]},
            "tbl_cfg_http_client_proxy_eol": [{"singleton_id": 1, "http_proxy_name": "proxy", "http_proxy_port": 8080}],
            "tbl_vlan_group": [{"vlan_group_name": "unset", "vlans": [1], "@state": {"vlans": 0}}]})",
        "<sweep records>"));
    if (!*r) ADD_FAILURE() << r->error;
    return *r->store;
}

// The first row of the table in the store; a fresh row (kept for the test's life) for a table
// the configuration holds no row of.
const db::Row* first_row(const std::string& table, const db::Store& store = default_store()) {
    const db::TableInfo* t = db::table_info(table);
    if (t == nullptr) {
        ADD_FAILURE() << "no table " << table;
        return nullptr;
    }
    if (!store.rows(*t).empty()) return store.rows(*t).front();
    static std::vector<db::RowPtr>* made = new std::vector<db::RowPtr>;
    return made->emplace_back(db::make_row(table)).get();
}

// A position's path from the root, every segment with a key of its key's words.
std::vector<plat::UriSegment> position_segments(const db::TableInfo* p) {
    auto sample = [](db::Word w) -> std::string {
        switch (w) {
        case db::Word::rsl_vstring: return "k1";
        case db::Word::ip_address: return "10.1.2.3";
        case db::Word::rsl_mac_addr: return "00:11:22:33:44:55";
        case db::Word::rsl_boolean: return "true";
        default: return "7";
        }
    };
    std::vector<plat::UriSegment> segs;
    // At most four segments: tbl_cfg_vlan_eol stands under itself.
    for (const db::TableInfo* q = p; q != nullptr && segs.size() < 4; q = q->parent) {
        std::vector<std::pair<std::string, std::string>> keys;
        if (q->key_kind == db::KeyKind::compound)
            for (const db::FieldInfo* f : q->key_parts) keys.emplace_back(std::string(f->name), sample(f->word));
        else
            keys.emplace_back(std::string(q->key_name), sample(q->key_word));
        segs.insert(segs.begin(), plat::UriSegment{std::string(q->segment), keys});
    }
    return segs;
}

SweptRequest resolve_request(const std::string& what, const std::string& table,
                             std::set<std::string> traversal_may_stay = {}) {
    const db::Row* row = first_row(table);
    zan::engine::Request req;
    if (row) req.segments = zan::engine::row_segments(*row);
    req.kind = zan::engine::k_kind_read_row;
    return {"resolve " + what + " (" + table + ")",
            [req] { return Outcome{engine().request(req).code, 0}; },
            {0, 1, 3, 5},
            {0},
            std::move(traversal_may_stay)};
}

SweptRequest properties_request(const std::string& table, int32_t with_state,
                                const db::Store& store = default_store(), const std::string& note = "") {
    const db::Row* row = first_row(table, store);
    return {"to_properties " + table + (with_state ? " with state" : "") + note,
            [row, table, with_state] {
                const auto t = engine().find_table(table);
                gx_do_properties* props = plat::properties_new();
                uint32_t err = 0;
                const int32_t r = t->gx->to_properties(zan::engine::Engine::context(), 0, row, props, with_state, &err);
                plat::properties_deref(props);
                return Outcome{r, err};
            },
            {0, 3, 10002, -1, 22},
            {0, 5, 22}};
}

SweptRequest columns_request(const std::string& table) {
    return {"columns " + table,
            [table] {
                const auto r = engine().columns(*engine().find_table(table));
                return Outcome{r.status, r.err};
            },
            {0, -1},
            {0, 5, 28}};
}

long traversals_live() {
    long n = 0;
    for (const plat::AllocSite& s : plat::alloc_sites())
        if (s.type_name == "arbor_traverse") n += s.live;
    return n;
}

// A stored object record (om_node and the like) through the type vectors, as the engine
// renders a value of a type with no table around it. Only types with sequence fields
// (`sequences`) can put an element's lists out of step.
SweptRequest type_request(const std::string& type, bool vlist, const db::Store& store = default_store(),
                          bool sequences = true) {
    const auto records = store.records(type);
    const db::Record* rec = records.empty() ? nullptr : records.front();
    if (rec == nullptr) ADD_FAILURE() << "no stored " << type;
    return {(vlist ? "type vector to_vlist_all " : "type vector to_properties ") + type,
            [rec, type, vlist] {
                const auto row = engine().find_type(type);
                uint32_t err = 0;
                int32_t r;
                if (vlist) {
                    gx_do_vlist* list = gx_do_vlist_new();
                    r = row->vlist->to_vlist_all(zan::engine::Engine::context(), 0, rec, list, 1, &err);
                    gx_do_vlist_deref(list);
                    r = r >= 0 ? 0 : r;   // success is the last value's positive result
                } else {
                    gx_do_properties* props = plat::properties_new();
                    r = row->props->to_properties(zan::engine::Engine::context(), 0, "", props, rec, 1, &err);
                    plat::properties_deref(props);
                }
                return Outcome{r, err};
            },
            vlist ? std::set<int32_t>{0, -1} : std::set<int32_t>{0, 3, 10002, -1, 22},
            {0, 5, 22},
            {},
            sequences ? std::set<std::string>{"gx_do_vlist_add_all", "gx_do_vlist_new"} : std::set<std::string>{}};
}

// A table row's slot 3 with a name list (empty: the whole row), as the engine asks for
// attribute values; the reserved name asks for the row's path.
SweptRequest vlist_request(const std::string& table, std::vector<std::string> names) {
    const db::Row* row = first_row(table);
    std::string what = "to_vlist " + table + (names.empty() ? " (whole row)" : "");
    for (const std::string& n : names) what += " " + n;
    SweptRequest q{what,
                   [row, table, names] {
                       const auto t = engine().find_table(table);
                       gx_do_uri* uri = plat::uri_new(zan::engine::row_segments(*row));
                       gx_do_nlist* nlist = gx_do_nlist_new();
                       for (const std::string& n : names) gx_do_nlist_add_string(nlist, n.c_str());
                       gx_do_vlist* list = gx_do_vlist_new();
                       uint32_t err = 0;
                       int32_t r = -2;   // the request could not be put together
                       if (uri && nlist && list && gx_do_nlist_get_len(nlist) == int32_t(names.size()))
                           r = t->gx->to_vlist(zan::engine::Engine::context(), 0, uri, nlist, row, list, 1, &err);
                       if (list) gx_do_vlist_deref(list);
                       if (nlist) gx_do_nlist_deref(nlist);
                       if (uri) plat::uri_deref(uri);
                       return Outcome{r, err};
                   },
                   {-2, -1, 0},
                   {0, 5, 12, 22}};
    q.positive_too = true;
    return q;
}

SweptRequest nvlist_request(const std::string& table) {
    const db::Row* row = first_row(table);
    SweptRequest q{"to_nvlist " + table,
                   [row, table] {
                       const auto t = engine().find_table(table);
                       gx_do_nvlist* list = gx_do_nvlist_new();
                       uint32_t err = 0;
                       const int32_t r = list ? t->gx->to_nvlist(zan::engine::Engine::context(), 0, row, list, &err) : -2;
                       if (list) gx_do_nvlist_deref(list);
                       return Outcome{r, err};
                   },
                   {-2, -1},
                   {0, 5, 14, 22}};
    q.positive_too = true;
    return q;
}

// Calls at every fault point and allocation attempts so far.
std::vector<long> counts() {
    std::vector<long> out;
    for (std::string_view p : plat::fault_points()) out.push_back(plat::fault_calls(p));
    out.push_back(plat::alloc_count());
    return out;
}

struct Totals {
    long swept = 0, stayed = 0, aborts = 0, foreign_module = 0;
    std::set<std::string> failure_traces;   // distinct error and fatal lines the failures wrote
};

// Runs each request clean, counting the failure points it passes, then once per point
// failing in turn, with the checks above. Every trace must carry the module id, set to an
// unusual value for the sweep.
Totals sweep(const std::vector<SweptRequest>& requests, bool verbose, bool traces = true) {
    Totals t;
    const uint16_t module_before = g_arbor_fe_trace_module_id;
    g_arbor_fe_trace_module_id = 0xBEEF;
    const auto points = plat::fault_points();
    for (const SweptRequest& q : requests) {
        SCOPED_TRACE(q.name);
        plat::fault_clear_all();
        (void)q.run();   // first use: the allocator may keep a type record per thread for good
        const long objects = plat::live_objects().total();
        const long allocations = plat::alloc_live();
        const long traversals = traversals_live();
        // A clean run, counting what it passes.
        const std::vector<long> before = counts();
        const Outcome clean = q.run();
        const std::vector<long> after = counts();
        EXPECT_EQ(plat::alloc_live(), allocations);
        EXPECT_TRUE(clean.result == 0 || clean.result == 1 || (q.positive_too && clean.result > 0))
            << "clean run answered " << clean.result;
        EXPECT_EQ(clean.err, 0u);
        long points_of_request = 0;
        for (size_t p = 0; p <= points.size(); ++p) {
            const bool alloc = p == points.size();
            const std::string point = alloc ? "allocation" : std::string(points[p]);
            for (long n = 1; n <= after[p] - before[p]; ++n) {
                SCOPED_TRACE(point + " #" + std::to_string(n));
                if (alloc)
                    plat::alloc_fail_nth(n);
                else
                    plat::fault_fail_nth(point, n);
                // Points where the family may abort, or leave a traversal it made, run in a
                // child process: the parent stays whole and its leak check clean.
                if (q.may_abort.count(point) || q.traversal_may_stay.count(point)) {
                    const pid_t child = fork();
                    if (child == 0) {
                        const Outcome o = q.run();
                        const bool ok = (q.results.count(o.result) || (q.positive_too && o.result > 0)) &&
                                        q.errors.count(o.err) && plat::live_objects().total() == objects;
                        const long left = plat::alloc_live() - allocations;
                        const bool stays = left == 1 && traversals_live() == traversals + 1;
                        _exit(!ok ? 1 : left == 0 ? 0 : stays && q.traversal_may_stay.count(point) ? 3 : 2);
                    }
                    plat::fault_clear_all();
                    int status = 0;
                    if (waitpid(child, &status, 0) != child) ADD_FAILURE() << "no child to wait for";
                    const bool aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
                    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
                    EXPECT_TRUE((aborted && q.may_abort.count(point)) || code == 0 || code == 3) << "status " << status;
                    t.aborts += aborted;
                    t.stayed += code == 3;
                    ++points_of_request;
                    continue;
                }
                if (getenv("SWEEP_VERBOSE")) std::fprintf(stderr, "sweep %s %s #%ld\n", q.name.c_str(), point.c_str(), n);
                Outcome o;
                if (traces) {
                    plat::TraceCapture capture;
                    o = q.run();
                    for (const plat::TraceRecord& r : capture.records()) {
                        if (r.level == k_error_level || r.level == k_fatal_level) t.failure_traces.insert(r.unit + ": " + r.text);
                        t.foreign_module += r.module != 0xBEEF;
                    }
                } else {
                    o = q.run();   // no trace is formatted
                }
                plat::fault_clear_all();
                EXPECT_TRUE(q.results.count(o.result) || (q.positive_too && o.result > 0)) << "result " << o.result;
                EXPECT_TRUE(q.errors.count(o.err)) << "error word " << o.err;
                EXPECT_EQ(plat::live_objects().total(), objects) << "data objects left behind";
                EXPECT_EQ(plat::alloc_live(), allocations) << "allocations left behind";
                ++points_of_request;
            }
        }
        EXPECT_GT(points_of_request, 0);
        if (verbose) std::printf("fault sweep: %-48s %5ld points\n", q.name.c_str(), points_of_request);
        t.swept += points_of_request;
    }
    g_arbor_fe_trace_module_id = module_before;
    EXPECT_EQ(t.foreign_module, 0) << "traces that did not carry the module id";
    return t;
}

}  // namespace

// Every position resolved with its keys, and every table's four row operations on a row of
// the built-in configuration (to_properties and to_vlist with state), each failing at every
// point it passes.
TEST(FaultSweep, EveryPositionAndEveryRowOperationOfEveryTable) {
    ASSERT_TRUE(engine().loaded());
    std::vector<SweptRequest> requests;
    for (const db::TableInfo* p : db::positions()) {
        zan::engine::Request req;
        req.segments = position_segments(p);
        req.kind = zan::engine::k_kind_read_row;
        const bool compound = p->key_kind == db::KeyKind::compound;
        requests.push_back({"resolve " + std::string(p->name), [req] { return Outcome{engine().request(req).code, 0}; },
                            {0, 1, 3, 5}, {0},
                            compound ? k_compound_stays : std::set<std::string>{}});
    }
    for (const db::TableInfo* t : db::tables()) {
        const std::string name(t->name);
        requests.push_back(properties_request(name, 1));
        requests.push_back(vlist_request(name, {}));
        requests.push_back(nvlist_request(name));
        requests.push_back(columns_request(name));
    }
    const Totals totals = sweep(requests, false);
    std::printf("fault sweep, everything: %zu requests, %ld points; %ld left a compound-key traversal, %ld aborted; "
                "%zu distinct failure trace lines\n",
                requests.size(), totals.swept, totals.stayed, totals.aborts, totals.failure_traces.size());
    EXPECT_GT(totals.failure_traces.size(), 592u) << "more of the families' failure lines than the representatives reach";
}

TEST(FaultSweep, EveryFailurePointOfEveryRepresentativeRequest) {
    ASSERT_TRUE(engine().loaded());
    const std::vector<SweptRequest> requests = {
        resolve_request("one key", "tbl_ntp_peer_eol"),
        resolve_request("compound key", "tbl_ip_dhcp_svr", k_compound_stays),
        resolve_request("child, three levels", "tbl_ci_vrf_mode_rt_eol"),
        resolve_request("compound key, three parts", "tbl_threat_visibility_ip_export", k_compound_stays),
        properties_request("tbl_ntp_peer_eol", 0),
        properties_request("tbl_ntp_peer_eol", 1),
        properties_request("tbl_conf_mac_nacl_eol", 0),
        properties_request("tbl_ip_dhcp_svr", 1),
        properties_request("tbl_vlan_group", 0),
        properties_request("tbl_vlan_group", 1),
        properties_request("tbl_cfg_dev_trk_bt_setlog_eol", 0),
        properties_request("tbl_cfg_http_client_proxy_eol", 0, record_store()),
        properties_request("tbl_vlan_group", 1, record_store(), ", array unset"),
        type_request("om_node", false),
        type_request("layer_head", false),
        type_request("ack_timer_head", false),
        type_request("om_node", true),
        type_request("layer_head", true),
        type_request("en_address", false, record_store(), false),
        type_request("en_address", true, record_store(), false),
        type_request("vlan_group", false, record_store(), false),
        type_request("vlan_group", true, record_store(), false),
        type_request("consumer", false, record_store(), false),
        vlist_request("tbl_ntp_peer_eol", {}),
        vlist_request("tbl_conf_mac_nacl_eol", {}),
        vlist_request("tbl_ntp_peer_eol", {"compound_0.peer_or_server.compound_67.ntp_server", "__uri__",
                                           "peer_server_key", "compound_0.peer_or_server.compound_66.ntp_peer"}),
        vlist_request("tbl_threat_visibility_ip_export", {}),
        vlist_request("tbl_vlan_group", {}),
        vlist_request("tbl_vlan_group", {"vlan_group_name", "vlans"}),
        nvlist_request("tbl_ntp_peer_eol"),
        nvlist_request("tbl_ip_dhcp_svr"),
        nvlist_request("tbl_threat_visibility_ip_export"),
        columns_request("tbl_ntp_peer_eol"),
        columns_request("tbl_conf_mac_nacl_eol"),
        columns_request("tbl_vlan_group"),
    };
    const Totals t = sweep(requests, true);
    std::printf("fault sweep: %ld points swept in all; %ld left a compound-key traversal and %ld aborted on lists "
                "out of step, as designed\n", t.swept, t.stayed, t.aborts);
    std::printf("fault sweep: %zu distinct failure trace lines written\n", t.failure_traces.size());
    if (getenv("SWEEP_TRACES"))
        for (const std::string& line : t.failure_traces) std::printf("  %s\n", line.c_str());
    EXPECT_GT(t.failure_traces.size(), 100u) << "the failures reach the families' failure traces";
}
