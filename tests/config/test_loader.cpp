// The configuration loader: every attribute of every table through a file and back out of
// the store, parent links and keys for the walk, refused files with the place they name,
// and loads that fail leaving nothing behind.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "zan/config.hpp"

using namespace zan::db;
using json = nlohmann::ordered_json;
namespace cfg = zan::config;

namespace {

class Config : public ::testing::Test {
protected:
    void SetUp() override { before_ = live_counts(); }
    void TearDown() override {
        EXPECT_EQ(live_counts().rows, before_.rows) << "rows leaked";
        EXPECT_EQ(live_counts().records, before_.records) << "records leaked";
    }
    LiveCounts before_;
};

std::unique_ptr<Store> load(const std::string& text) {
    cfg::LoadResult r = cfg::load_text(text, "t.json");
    EXPECT_TRUE(r) << r.error;
    return std::move(r.store);
}

const TableInfo& table(std::string_view name) { return *table_info(name); }
const Record& rec(const Row* row, size_t i = 0) { return *row_record(*row, i); }

// Fills a row object with a distinct value for every attribute of a record type and
// records how to check each one in the store.
class Filler {
public:
    struct Check {
        std::string path;       // store path from the row's record
        const FieldInfo* field;
        json value;
    };

    void fill(const TypeInfo& t, const std::string& prefix, json& row, std::vector<Check>& checks, int depth = 0) {
        for (const FieldInfo& f : t.fields) {
            if (f.role != FieldRole::attribute) continue;
            std::string name = prefix + std::string(f.name);
            if (f.kind == FieldKind::nested) {
                fill(*f.target, name + ".", row, checks, depth);
                continue;
            }
            if (f.kind == FieldKind::sequence) {
                if (depth > 1) continue;
                json elements = json::array();
                for (int i = 0; i < 2; ++i) {
                    json el = json::object();
                    std::vector<Check> inner;
                    fill(*f.target, "", el, inner, depth + 1);
                    for (Check& c : inner) checks.push_back({name + "[" + std::to_string(i) + "]." + c.path, c.field, c.value});
                    elements.push_back(el);
                }
                row[name] = elements;
                continue;
            }
            json v = value(f);
            row[name] = v;
            checks.push_back({name, &f, v});
        }
    }

    json value(const FieldInfo& f) {
        unsigned n = ++n_;
        switch (f.kind) {
            case FieldKind::enumeration: return std::string(f.target->values[n % f.target->values.size()]);
            case FieldKind::flags: return json::array({std::string(f.target->values.front()), std::string(f.target->values.back())});
            case FieldKind::fixed_array: {
                json a = json::array();
                for (unsigned i = 0; i < std::min(3u, f.bound); ++i) a.push_back((n + i) % 200);
                return a;
            }
            case FieldKind::counted_array: return json::array({n % 200, (n + 1) % 200, (n + 2) % 200});
            case FieldKind::chars: return std::string("c") + std::to_string(n % 10);
            default: break;
        }
        switch (f.word) {
            case Word::rsl_vstring: return "text " + std::to_string(n);
            case Word::ip_address:
                return n % 2 ? "10.1." + std::to_string(n / 256 % 256) + "." + std::to_string(n % 256)
                             : "2001:db8::" + std::to_string(n % 9999);
            case Word::rsl_mac_addr: {
                char b[18];
                std::snprintf(b, sizeof b, "00:1b:%02x:%02x:00:%02x", n % 256, n / 256 % 256, n % 7);
                return b;
            }
            case Word::rsl_boolean: return n % 2 == 1;
            case Word::int16:
            case Word::int32: return -int(n % 30000);
            case Word::u_int8: return n % 256;
            case Word::u_int64: return 0x100000000ull + n;
            default: return n;
        }
    }

    static void expect(const Record& r, const Check& c) {
        SCOPED_TRACE(c.path);
        const FieldInfo& f = *c.field;
        switch (f.kind) {
            case FieldKind::enumeration:
                EXPECT_EQ(f.target->values[size_t(get_int(r, c.path))], c.value.get<std::string>()); return;
            case FieldKind::flags:
                EXPECT_EQ(get_u64(r, c.path), (1ull << *f.target->value_of(c.value[0].get<std::string>())) |
                                                  (1ull << *f.target->value_of(c.value[1].get<std::string>())));
                return;
            case FieldKind::fixed_array:
            case FieldKind::counted_array: {
                std::vector<uint64_t> got = get_array(r, c.path);
                for (size_t i = 0; i < c.value.size(); ++i) EXPECT_EQ(got.at(i), c.value[i].get<uint64_t>());
                return;
            }
            case FieldKind::chars: EXPECT_EQ(get_text(r, c.path), c.value.get<std::string>()); return;
            default: break;
        }
        switch (f.word) {
            case Word::rsl_vstring: EXPECT_EQ(get_text(r, c.path), c.value.get<std::string>()); break;
            case Word::ip_address: EXPECT_EQ(get_ip(r, c.path), *zan::plat::parse_ip(c.value.get<std::string>())); break;
            case Word::rsl_mac_addr:
                EXPECT_EQ(get_mac(r, c.path), *zan::plat::parse_mac(c.value.get<std::string>())); break;
            case Word::rsl_boolean: EXPECT_EQ(get_int(r, c.path) != 0, c.value.get<bool>()); break;
            case Word::u_int64: EXPECT_EQ(get_u64(r, c.path), c.value.get<uint64_t>()); break;
            default: EXPECT_EQ(get_int(r, c.path), c.value.get<int64_t>()); break;
        }
    }

private:
    unsigned n_ = 0;
};

// A row that names only its key, with a value of its key's word.
json key_row(const TableInfo& t) {
    json row = json::object();
    if (t.key_kind == KeyKind::compound) {
        for (const FieldInfo* p : t.key_parts)
            row[std::string(p->name)] = p->word == Word::ip_address ? json("192.0.2.1") : p->word == Word::int32 ? json(1) : json("k");
    } else {
        row[std::string(t.key_name)] = t.key_word == Word::rsl_vstring ? json("k") : t.key_word == Word::ip_address ? json("192.0.2.9") : json(1);
    }
    return row;
}

}  // namespace

// --------------------------------------------------------------------------- values

TEST_F(Config, EveryAttributeOfEveryTableRoundTripsThroughAFile) {
    Filler filler;
    for (const TableInfo* pos : positions()) {
        SCOPED_TRACE(std::string(pos->name));
        const TableInfo& t = *pos->table;
        json row = json::object();
        std::vector<std::vector<Filler::Check>> checks(t.rows.size());
        for (size_t r = 0; r < t.rows.size(); ++r) filler.fill(*t.rows[r], "", row, checks[r]);
        // Placed under a parent row that holds only its key, where the table has a parent.
        json doc = json::object();
        std::string name(t.name);
        if (pos->parent && pos->parent->table != &t) {
            json parent = key_row(*pos->parent->table);
            parent["children"][name] = json::array({row});
            doc[std::string(pos->parent->table->name)] = json::array({parent});
            if (pos->parent->parent && pos->parent->parent->table != pos->parent->table) {
                json grand = key_row(*pos->parent->parent->table);
                grand["children"] = doc;
                doc = json::object();
                doc[std::string(pos->parent->parent->table->name)] = json::array({grand});
            }
        } else {
            doc[name] = json::array({row});
        }
        auto store = load(doc.dump());
        if (!store) continue;
        ASSERT_EQ(store->rows(t).size(), 1u);
        const Row* got = store->rows(t)[0];
        if (pos->parent && pos->parent->table != &t) {
            ASSERT_NE(parent_of(*got), nullptr);
            EXPECT_EQ(&table_of(*parent_of(*got)), pos->parent->table);
        }
        for (size_t r = 0; r < t.rows.size(); ++r)
            for (const Filler::Check& c : checks[r]) Filler::expect(rec(got, r), c);
    }
}

TEST_F(Config, EnumerationsFlagsAndStateByNameOrNumber) {
    auto store = load(R"({
      "tbl_ntp_peer_eol": [
        { "peer_server_key": "10.0.0.1",
          "compound_0.peer_or_server.descriminator": "ZAN_CFG_1",
          "compound_0.descriminator": 1,
          "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle": 4,
          "@state": { "peer_server_key": 1, "compound_0.descriminator": 0 },
          "@variant": 3 } ] })");
    ASSERT_TRUE(store);
    const Record& r = rec(store->rows(table("tbl_ntp_peer_eol"))[0]);
    const TypeInfo& u = *type_info("zan_cfg_union");
    EXPECT_EQ(u.values[size_t(get_int(r, "compound_0.peer_or_server.descriminator"))], "ZAN_CFG_1");
    EXPECT_EQ(get_int(r, "compound_0.descriminator"), 1);
    EXPECT_EQ(get_int(r, "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle"), 4);
    EXPECT_EQ(get_state(r, "peer_server_key"), 1);
    EXPECT_EQ(get_state(r, "compound_0.descriminator"), 0);
    EXPECT_EQ(get_state(r, "compound_0.peer_or_server.descriminator"), 2);
    EXPECT_EQ(get_variant(r), 3);
    EXPECT_EQ(get_variant(nested(r, "compound_0.compound_12")), 3);
}

// --------------------------------------------------------------------------- tree and keys

TEST_F(Config, RowsKeepParentsAndKeysForTheWalk) {
    auto store = load(R"({
      "tbl_ci_vrf_eol": [
        { "vrf_key_vrf_name": "red",
          "children": {
            "tbl_ci_vrf_mode_rt_eol": [ { "vrf_mode_rt_key": "65000:1" } ],
            "tbl_ci_vrf_afi_mode_eol": [
              { "vrf_af_afi": 1,
                "children": { "tbl_ci_vrf_mode_rt_eol": [ { "vrf_mode_rt_key": "65000:1" } ] } },
              { "vrf_af_afi": 2 } ] } },
        { "vrf_key_vrf_name": "blue",
          "children": { "tbl_ci_vrf_afi_mode_eol": [ { "vrf_af_afi": 1 } ] } } ],
      "tbl_cfg_vlan_eol": [ { "vlan_num": "10", "children": { "tbl_cfg_vlan_eol": [ { "vlan_num": "11" } ] } } ],
      "tbl_ip_dhcp_svr": [ { "vrf_name": "red", "dhcp_server": "10.0.0.5" },
                           { "vrf_name": "blue", "dhcp_server": "10.0.0.5" } ]
    })");
    ASSERT_TRUE(store);
    const TableInfo& vrf = table("tbl_ci_vrf_eol");
    const TableInfo& afi = table("tbl_ci_vrf_afi_mode_eol");
    const TableInfo& rt = table("tbl_ci_vrf_mode_rt_eol");
    const Row* red = store->find(vrf, nullptr, *key_bytes(Word::rsl_vstring, "red"));
    const Row* blue = store->find(vrf, nullptr, *key_bytes(Word::rsl_vstring, "blue"));
    ASSERT_TRUE(red && blue);
    EXPECT_EQ(parent_of(*red), nullptr);
    EXPECT_EQ(store->rows_under(vrf, nullptr).size(), 2u);
    ASSERT_EQ(store->rows_under(afi, red).size(), 2u);
    EXPECT_EQ(store->rows_under(afi, blue).size(), 1u);
    const Row* red_v4 = store->find(afi, red, *key_bytes(Word::u_int32, "1"));
    ASSERT_NE(red_v4, nullptr);
    EXPECT_NE(store->find(afi, blue, *key_bytes(Word::u_int32, "1")), red_v4);
    // The same route target under the VRF and under its address family (second entrance).
    auto rt_key = *key_bytes(Word::rsl_vstring, "65000:1");
    const Row* rt_vrf = store->find(rt, red, rt_key);
    const Row* rt_afi = store->find(rt, red_v4, rt_key);
    ASSERT_TRUE(rt_vrf && rt_afi);
    EXPECT_NE(rt_vrf, rt_afi);
    EXPECT_EQ(store->rows(rt).size(), 2u);
    // A table that is its own parent: a VLAN under a VLAN.
    const TableInfo& vlan = table("tbl_cfg_vlan_eol");
    const Row* v10 = store->find(vlan, nullptr, *key_bytes(Word::rsl_vstring, "10"));
    ASSERT_NE(v10, nullptr);
    EXPECT_EQ(parent_of(*store->find(vlan, v10, *key_bytes(Word::rsl_vstring, "11"))), v10);
    // Compound keys differ by any part.
    EXPECT_EQ(store->rows(table("tbl_ip_dhcp_svr")).size(), 2u);
}

TEST_F(Config, TheTwoRecordsOfTheExportTableShareOneRow) {
    auto store = load(R"({ "tbl_threat_visibility": [ { "singleton_id": 1, "children": {
        "tbl_threat_visibility_ip_export": [
          { "export_address": "10.2.0.9", "valid_port_number": 4739, "vrf_name": "mgmt",
            "tv_ip_export_parent_table_key": 1 } ] } } ] })");
    ASSERT_TRUE(store);
    const Row* row = store->rows(table("tbl_threat_visibility_ip_export"))[0];
    EXPECT_EQ(get_int(rec(row, 0), "valid_port_number"), 4739);
    EXPECT_EQ(get_int(rec(row, 1), "tv_ip_export_parent_table_key"), 1);
    auto key = key_bytes(rec(row, 0));
    EXPECT_EQ(store->find(table("tbl_threat_visibility_ip_export"), nullptr, key), row);
}

// --------------------------------------------------------------------------- refused files

TEST_F(Config, BrokenFilesAreRefusedWithTheirPlace) {
    const std::string vrf = R"("tbl_ci_vrf_eol": [ { "vrf_key_vrf_name": "red" }, )";
    std::string many_members;   // "a1": 1, ... "a20": 1
    for (int i = 1; i <= 20; ++i) many_members += (i > 1 ? ", \"a" : "\"a") + std::to_string(i) + "\": 1";
    struct Case {
        std::string text;
        std::vector<std::string> parts;
    } cases[] = {
        {"{ \"tbl_ntp_source_eol\": [ {\"singleton_id\": 1} ", {"t.json:1:", "bad JSON"}},
        {"{\n  \"tbl_hostname\": [ { \"singleton_id\": 1, } ]\n}", {"t.json:2:", "bad JSON"}},
        {"[]", {"t.json: top level: expected an object of tables, got array"}},
        {R"({ "tbl_nonesuch": [] })", {"t.json: tbl_nonesuch: unknown table"}},
        {R"({ "ntp_peer_eol": [] })", {"t.json: \"ntp_peer_eol\": unknown table"}},
        // found by fuzzing: a name with a control character, through a JSON escape
        {R"({ "tbl_ntp\nsource": [] })", {"t.json: tbl_ntp\\x0asource: unknown table"}},
        {R"({ "@default_vari\rnt": 1 })", {"\"@default_vari\\x0dnt\": unknown table"}},
        {R"({ "tbl_ntp_peer_eol": {} })", {"tbl_ntp_peer_eol: expected an array of rows, got object"}},
        {R"({ "tbl_ntp_peer_eol": [ 7 ] })", {"tbl_ntp_peer_eol[0]: expected a row object, got integer 7"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "no_such": 1 } ] })",
         {"tbl_ntp_peer_eol[0].\"no_such\": unknown attribute: no field 'no_such' in ntp_peer_eol"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "compound_0.nope.x": 1 } ] })",
         {"\"compound_0.nope.x\": unknown attribute: no field 'nope' in ntp_peer_cp_cp"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "compound_0": 1 } ] })",
         {"'compound_0' holds a record; name its attributes as \"compound_0.<attribute>\""}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "compound_0.": 1 } ] })", {"names a record, not a value"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "peer_server_key.x": 1 } ] })",
         {"'peer_server_key' of ntp_peer_eol holds no record"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": 5 } ] })",
         {"tbl_ntp_peer_eol[0].\"peer_server_key\": expected a string, got integer 5"}},
        {R"({ "tbl_ntp_trusted_key_eol": [ { "ntp_trusted_key_start": "abc" } ] })",
         {"\"ntp_trusted_key_start\": expected an integer, got string \"abc\""}},
        {R"({ "tbl_ntp_trusted_key_eol": [ { "ntp_trusted_key_start": 1.5 } ] })", {"expected an integer, got number 1.5"}},
        {R"({ "tbl_ntp_trusted_key_eol": [ { "ntp_trusted_key_start": 2147483648 } ] })",
         {"2147483648 is out of range for int32"}},
        {R"({ "tbl_uidb_act_interface": [ { "uidb_key_field": -1 } ] })", {"-1 is out of range for u_int32"}},
        {R"({ "tbl_uidb_act_interface": [ { "uidb_key_field": 1, "configure_interface_0": 1 } ] })",
         {"expected true or false, got integer 1"}},
        {R"({ "tbl_ip_dhcp_svr": [ { "vrf_name": "a", "dhcp_server": "10.0.0.300" } ] })",
         {"tbl_ip_dhcp_svr[0].\"dhcp_server\": \"10.0.0.300\" is no IPv4 or IPv6 address"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "compound_0.descriminator": "sideways" } ] })",
         {"string \"sideways\" is no value of zan_cfg_union"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "compound_0.descriminator": 99 } ] })",
         {"99 is no value of zan_cfg_union"}},
        {R"({ "tbl_vlan_group": [ { "vlan_group_name": "g", "vlans": [1, 70000] } ] })",
         {"tbl_vlan_group[0].\"vlans\"[1]: 70000 is out of range for u_int16"}},
        {R"({ "tbl_vlan_group": [ { "vlan_group_name": "g", "vlans": 3 } ] })", {"expected an array, got integer 3"}},
        {R"({ "tbl_vlan_group": [ { "vlan_group_name": "g", "num_vlans": 3 } ] })",
         {"'num_vlans' is the count or length of an array"}},
        {R"({ "tbl_ntp_peer_eol": [ { "peer_server_key": "a", "@state": { "peer_server_key": 300 } } ] })",
         {"tbl_ntp_peer_eol[0].\"@state\".\"peer_server_key\": expected a state flag 0 to 255, got integer 300"}},
        {R"({ "tbl_ntp_peer_eol": [ { "compound_0.descriminator": 1 } ] })",
         {"tbl_ntp_peer_eol[0]: row has no key attribute \"peer_server_key\""}},
        {R"({ "tbl_ip_dhcp_svr": [ { "vrf_name": "a" } ] })", {"row has no key attribute \"dhcp_server\""}},
        // Children without their parent.
        {R"({ "tbl_ci_vrf_afi_mode_eol": [ { "vrf_af_afi": 1 } ] })",
         {"t.json: tbl_ci_vrf_afi_mode_eol: tbl_ci_vrf_afi_mode_eol is no top-level table; its rows go under "
          "\"children\" of a tbl_ci_vrf_eol row"}},
        {R"({ "tbl_ci_vrf_mode_rt_eol": [] })", {"under \"children\" of a tbl_ci_vrf_eol or tbl_ci_vrf_afi_mode_eol row"}},
        {"{" + vrf + R"({ "vrf_key_vrf_name": "blue", "children": { "tbl_ci_vrf_afi_mode_eol": [ { "vrf_af_afi": 1,
             "children": { "tbl_ci_vrf_mode_descr_eol": [ { "singleton_id": 1 } ] } } ] } } ] })",
         {"t.json: tbl_ci_vrf_eol[1].children.tbl_ci_vrf_afi_mode_eol[0].children.tbl_ci_vrf_mode_descr_eol: "
          "tbl_ci_vrf_mode_descr_eol is no child of tbl_ci_vrf_afi_mode_eol; its parent is tbl_ci_vrf_eol"}},
        {R"({ "tbl_hostname": [ { "singleton_id": 1, "children": { "tbl_ntp_source_eol": [] } } ] })",
         {"tbl_ntp_source_eol is no child of tbl_hostname; its rows stand at the top level"}},
        {R"({ "tbl_hostname": [ { "singleton_id": 1, "children": [] } ] })",
         {"tbl_hostname[0].children: expected an object of child tables, got array"}},
        // Keys.
        {"{" + vrf + R"({ "vrf_key_vrf_name": "blue", "children": { "tbl_ci_vrf_afi_mode_eol": [
             { "vrf_af_afi": 1 }, { "vrf_af_afi": "2" } ] } } ] })",
         {"t.json: tbl_ci_vrf_eol[1].children.tbl_ci_vrf_afi_mode_eol[1].\"vrf_af_afi\": expected an integer, got string \"2\""}},
        {"{" + vrf + R"({ "vrf_key_vrf_name": "red" } ] })",
         {"tbl_ci_vrf_eol[1]: duplicate key: another tbl_ci_vrf_eol row at the top level has vrf_key_vrf_name \"red\""}},
        {R"({ "tbl_ip_dhcp_svr": [ { "vrf_name": "a", "dhcp_server": "10.0.0.1" },
                                    { "dhcp_server": "10.0.0.1", "vrf_name": "a" } ] })",
         {"tbl_ip_dhcp_svr[1]: duplicate key", "vrf_name \"a\", dhcp_server 10.0.0.1"}},
        {R"({ "tbl_hostname": [ { "singleton_id": 1, "singleton_id": 2 } ] })",
         {"t.json: tbl_hostname[0].\"singleton_id\": member repeated in the same object"}},
        {R"({ "tbl_hostname": [ { "singleton_id": 1 } ], "tbl_hostname": [] })",
         {"t.json: tbl_hostname: member repeated in the same object"}},
        // Objects of many members (checked by a set beyond the first few): a repeat after
        // the first sixteen, and an object after a large one, whose names are its own.
        {R"({ "tbl_hostname": [ {)" + many_members + R"(, "a5": 2 } ] })",
         {"t.json: tbl_hostname[0].\"a5\": member repeated in the same object"}},
        {R"({ "tbl_hostname": [ {)" + many_members + R"(}, { "b": 1, "a5": 1, "a19": 1, "b": 2 } ] })",
         {"t.json: tbl_hostname[1].\"b\": member repeated in the same object"}},
        {R"({ "tbl_hostname": [ {)" + many_members + R"(, "a20": 1 } ] })",
         {"t.json: tbl_hostname[0].\"a20\": member repeated in the same object"}},
        // Records that stand in no table.
        {R"({ "@records": [] })", {"t.json: \"@records\": expected an object of record types, got array"}},
        {R"({ "@records": { "obj_type": [] } })", {"\"@records\".\"obj_type\": unknown record type"}},
        {R"({ "@records": { "om_node": {} } })", {"\"om_node\": expected an array of records, got object"}},
        {R"({ "@records": { "om_node": [ 1 ] } })", {"\"om_node\"[0]: expected a record object, got integer 1"}},
        {R"({ "@records": { "om_node": [ { "cl": [ { "cid": 300 } ] } ] } })",
         {"\"om_node\"[0].\"cl\"[0].\"cid\": 300 is out of range for u_int8"}},
        {R"({ "@records": { "layer_head": [ { "layerl": [ { "cl": 5 } ] } ] } })",
         {"\"layerl\"[0].\"cl\": expected an array of elements, got integer 5"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        cfg::LoadResult r = cfg::load_text(c.text, "t.json");
        EXPECT_FALSE(r);
        EXPECT_EQ(r.error.find('\n'), std::string::npos) << r.error;
        for (const std::string& part : c.parts) EXPECT_NE(r.error.find(part), std::string::npos) << r.error;
    }
}

TEST_F(Config, RecordsOutsideTablesAreKeptByTypeWithTheirSequences) {
    auto store = load(R"({ "@records": {
        "layer_head": [ { "lkey.layer_idx": 3, "dwnld_marker": [ { "cid": 4 }, { "cid": 5 } ],
                          "layerl": [ { "obj_type": 1, "cl": [ { "cid": 9 } ] },
                                      { "obj_type": "OBJ_BFD", "cl": [ { "cid": 10 }, { "cid": 11 } ] } ] } ],
        "om_node": [ { "context": 1 }, { "context": 2 } ] } })");
    ASSERT_TRUE(store);
    EXPECT_EQ(store->size(), 0u);   // no rows
    EXPECT_EQ(store->record_types(), (std::vector<std::string_view>{"layer_head", "om_node"}));
    ASSERT_EQ(store->records("om_node").size(), 2u);
    EXPECT_EQ(get_u64(*store->records("om_node")[0], "context"), 1u);   // in the order written
    EXPECT_EQ(get_u64(*store->records("om_node")[1], "context"), 2u);
    const Record& head = *store->records("layer_head")[0];
    EXPECT_EQ(get_int(head, "lkey.layer_idx"), 3);
    EXPECT_EQ(sequence_size(head, "dwnld_marker"), 2u);
    EXPECT_EQ(get_int(head, "dwnld_marker[1].cid"), 5);
    ASSERT_EQ(sequence_size(head, "layerl"), 2u);
    EXPECT_EQ(sequence_size(head, "layerl[1].cl"), 2u);
    EXPECT_EQ(get_int(head, "layerl[1].cl[1].cid"), 11);
    EXPECT_EQ(get_int(head, "layerl[1].obj_type"), int64_t(*type_info("obj_type")->value_of("OBJ_BFD")));
    EXPECT_TRUE(store->records("ack_timer_head").empty());
    store->clear();
    EXPECT_TRUE(store->records("om_node").empty());
    // Only record types can be kept so.
    EXPECT_THROW(store->add_record("obj_type"), Error);
    EXPECT_THROW(store->add_record("nonesuch"), Error);
}

TEST_F(Config, CommentsAreAllowed) {
    auto store = load("// hosts\n{ /* name */ \"tbl_hostname\": [ { \"singleton_id\": 1 } ] }");
    ASSERT_TRUE(store);
    EXPECT_EQ(store->size(), 1u);
}

// --------------------------------------------------------------------------- all or nothing

TEST_F(Config, AFailedLoadLeavesTheStoreAsItWas) {
    Store store;
    ASSERT_EQ(cfg::load_into(store, R"({ "tbl_hostname": [ { "singleton_id": 1, "compound_0.hostname_name_2": "edge-1" } ] })", "a.json"), "");
    const Row* before = store.rows(table("tbl_hostname"))[0];
    long rows = live_counts().rows;
    // Fails at the very last attribute, after many rows were made.
    std::string bad = R"({ "tbl_ntp_source_eol": [ { "singleton_id": 1 } ],
        "tbl_ci_vrf_eol": [ { "vrf_key_vrf_name": "red", "children": { "tbl_ci_vrf_afi_mode_eol": [ { "vrf_af_afi": 1 } ] } } ],
        "tbl_hostname": [ { "singleton_id": 1, "compound_0.hostname_name_2": 7 } ] })";
    std::string err = cfg::load_into(store, bad, "b.json");
    EXPECT_NE(err.find("b.json: tbl_hostname[0].\"compound_0.hostname_name_2\": expected a string"), std::string::npos) << err;
    EXPECT_EQ(store.size(), 1u);
    EXPECT_EQ(store.rows(table("tbl_hostname"))[0], before);
    EXPECT_EQ(get_text(rec(before), "compound_0.hostname_name_2"), "edge-1");
    EXPECT_TRUE(store.rows(table("tbl_ci_vrf_eol")).empty());
    EXPECT_EQ(live_counts().rows, rows);
    // A good load replaces the rows as a whole.
    ASSERT_EQ(cfg::load_into(store, R"({ "tbl_ntp_source_eol": [ { "singleton_id": 1 } ] })", "c.json"), "");
    EXPECT_TRUE(store.rows(table("tbl_hostname")).empty());
    EXPECT_EQ(store.size(), 1u);
}

TEST_F(Config, FilesAreReadOrRefusedByName) {
    std::string path = ::testing::TempDir() + "zan_config_test.json";
    {
        std::ofstream out(path);
        out << R"({ "tbl_hostname": [ { "singleton_id": 1, "compound_0.hostname_name_2": "edge-2" } ] })";
    }
    cfg::LoadResult ok = cfg::load_file(path);
    ASSERT_TRUE(ok) << ok.error;
    EXPECT_EQ(get_text(rec(ok.store->rows(table("tbl_hostname"))[0]), "compound_0.hostname_name_2"), "edge-2");
    std::remove(path.c_str());
    cfg::LoadResult missing = cfg::load_file(path);
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.error, path + ": cannot read: No such file or directory");
}

// "@default_variant" is handed back (not applied); it must be a 32-bit integer, and a
// failed load hands back nothing.
TEST_F(Config, DefaultVariantIsReadFromTheTopLevel) {
    cfg::LoadResult r = cfg::load_text(R"({ "@default_variant": -1, "tbl_ntp_source_eol": [ { "singleton_id": 1 } ] })", "v.json");
    ASSERT_TRUE(r) << r.error;
    EXPECT_EQ(r.default_variant, std::optional<int32_t>(-1));
    EXPECT_EQ(r.store->size(), 1u);
    EXPECT_EQ(cfg::load_text(R"({ "tbl_ntp_source_eol": [] })", "v.json").default_variant, std::nullopt);

    for (const char* bad : {R"({ "@default_variant": "2" })", R"({ "@default_variant": 2147483648 })",
                            R"({ "@default_variant": -2147483649 })", R"({ "@default_variant": 1.5 })"}) {
        cfg::LoadResult f = cfg::load_text(bad, "v.json");
        EXPECT_FALSE(f) << bad;
        EXPECT_NE(f.error.find("v.json: \"@default_variant\": "), std::string::npos) << f.error;
        EXPECT_EQ(f.default_variant, std::nullopt);
    }
    Store store;
    std::optional<int32_t> v = 9;
    ASSERT_EQ(cfg::load_into(store, R"({ "@default_variant": 2147483647 })", "w.json", &v), "");
    EXPECT_EQ(v, std::optional<int32_t>(INT32_MAX));

    // A variant read before the load fails is not handed back either: the caller's value
    // and the store stay as they were, whether the failure is in a row, the JSON or a key.
    ASSERT_EQ(cfg::load_into(store, R"({ "tbl_hostname": [ { "singleton_id": 1 } ] })", "w.json"), "");
    const Row* kept = store.rows(table("tbl_hostname"))[0];
    for (const char* bad : {R"({ "@default_variant": 5, "tbl_ntp_source_eol": [ { "singleton_id": 1 } ],
                                 "tbl_hostname": [ { "singleton_id": "x" } ] })",
                            R"({ "@default_variant": 5, "tbl_ntp_source_eol": [ { "singleton_id": 1 } ] )",
                            R"({ "@default_variant": 5, "tbl_ntp_source_eol": [ { "singleton_id": 1 } ],
                                 "tbl_ci_vrf_eol": [ { "vrf_key_vrf_name": "red" }, { "vrf_key_vrf_name": "red" } ] })"}) {
        SCOPED_TRACE(bad);
        v = 9;
        EXPECT_NE(cfg::load_into(store, bad, "w.json", &v), "");
        EXPECT_EQ(v, std::optional<int32_t>(9));
        EXPECT_EQ(store.size(), 1u);
        EXPECT_TRUE(store.rows(table("tbl_ntp_source_eol")).empty());
        EXPECT_EQ(store.rows(table("tbl_hostname"))[0], kept);
        cfg::LoadResult r = cfg::load_text(bad, "w.json");
        EXPECT_FALSE(r);
        EXPECT_EQ(r.store, nullptr);
        EXPECT_EQ(r.default_variant, std::nullopt);
    }
}

TEST_F(Config, LongFilesKeepThePlacesOfTheirFaults) {
    // Thousands of rows, each with an array and an object inside, before the faulty one: the
    // place counts the rows alone.
    constexpr int k_rows = 3000;
    auto text_with = [&](const std::string& last) {
        std::string t = R"({ "tbl_vlan_group": [)";
        for (int i = 0; i < k_rows; ++i)
            t += R"({ "vlan_group_name": "g)" + std::to_string(i) + R"(", "vlans": [1, 2], "@state": { "vlans": 1 } },)";
        return t + last + "] }";
    };
    struct Case {
        std::string last, error;
    } cases[] = {
        {R"({ "vlan_group_name": "x", "vlan_group_name": "y" })",
         "t.json: tbl_vlan_group[3000].\"vlan_group_name\": member repeated in the same object"},
        {R"({ "vlan_group_name": "g7" })",
         "t.json: tbl_vlan_group[3000]: duplicate key: another tbl_vlan_group row at the top level has vlan_group_name \"g7\""},
        {R"({ "vlan_group_name": "x", "vlans": [1, -2] })",
         "t.json: tbl_vlan_group[3000].\"vlans\"[1]: -2 is out of range for u_int16"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        const long rows = live_counts().rows;
        cfg::LoadResult r = cfg::load_text(text_with(c.last), "t.json");
        EXPECT_FALSE(r);
        EXPECT_EQ(r.error, c.error);
        EXPECT_EQ(live_counts().rows, rows) << "a refused file left rows";
    }
    cfg::LoadResult r = cfg::load_text(text_with(R"({ "vlan_group_name": "last" })"), "t.json");
    ASSERT_TRUE(r) << r.error;
    EXPECT_EQ(r.store->size(), size_t(k_rows + 1));
}
