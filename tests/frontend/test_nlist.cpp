// Paired name and value rendering, reached by name inside the loaded library as a sequence
// field reaches it, and compared with rendering to properties over the whole catalogue.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/config.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {

using full_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_nlist*, gx_do_vlist*, uint32_t*);


// A name list and a value list, released with the object.
struct Lists {
    gx_do_nlist* names = gx_do_nlist_new();
    gx_do_vlist* values = gx_do_vlist_new();
    Lists() = default;
    Lists(const Lists&) = delete;
    Lists& operator=(const Lists&) = delete;
    ~Lists() {
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(values);
    }
    std::vector<std::string> name_texts() const { return plat::nlist_names(names); }
    plat::ValueList value_items() const { return plat::vlist_values(values); }
};

full_fn full(const std::string& type) { return internal_fn<full_fn>(type + "_to_nlist_vlist_all"); }



class Nlist : public ::testing::Test {
protected:
    uint32_t err = 0;
    plat::ObjectCounts before = plat::live_objects();
    void TearDown() override {
        plat::fault_clear_all();
        // Every rendering releases what it made, on every way out.
        EXPECT_EQ(plat::live_objects().total(), before.total());
    }
    std::vector<std::string> property_names(const std::string& type, const void* obj) {
        gx_do_properties* props = plat::properties_new();
        uint32_t e = 0;
        EXPECT_EQ(type_row(type)(nullptr, 0, "", props, obj, 0, &e), 0) << type;
        std::vector<std::string> names = names_of(props);
        plat::properties_deref(props);
        return names;
    }
    // Both renderings of one record: the same names, and as many values as names.
    void same_as_properties(const std::string& type, const void* obj) {
        SCOPED_TRACE(type);
        Lists l;
        uint32_t e = 0;
        EXPECT_GE(full(type)(nullptr, 0, obj, l.names, l.values, 0, &e), 0);
        EXPECT_EQ(e, 0u);
        EXPECT_EQ(l.name_texts(), property_names(type, obj));
        EXPECT_EQ(gx_do_vlist_get_len(l.values), gx_do_nlist_get_len(l.names));
    }
};

// Record types of the catalogue, all of them or those reachable from the tables' rows.
std::vector<const db::TypeInfo*> record_types() {
    std::vector<const db::TypeInfo*> out;
    for (const RecordRow& r : expect().records) out.push_back(db::type_info(r.name));
    return out;
}

}  // namespace

// ------------------------------------------------------------------ names against properties

TEST_F(Nlist, EveryRecordTypeNamesWhatRenderingToPropertiesNames) {
    for (const db::TypeInfo* t : record_types()) {
        db::RecordPtr rec = db::make_record(t->name);
        same_as_properties(std::string(t->name), rec.get());
    }
}

TEST_F(Nlist, EveryRowOfTheDefaultConfigurationNamesWhatRenderingToPropertiesNames) {
    const db::Store& store = default_store();
    int done = 0;
    for (const db::TableInfo* t : db::tables()) {
        for (db::Row* row : store.rows(*t)) {
            for (size_t i = 0; i < t->rows.size(); ++i) {
                same_as_properties(std::string(t->rows[i]->name), db::row_record(*row, i));
                ++done;
            }
        }
    }
    EXPECT_GT(done, 0);
    // And the records that stand in no table, with their sequences.
    for (std::string_view type : store.record_types())
        for (db::Record* rec : store.records(type)) same_as_properties(std::string(type), rec);
}

TEST_F(Nlist, NullFormsNameWhatTheFullFormsNameForEveryTypeThatCanStandInAnArm) {
    // The types that can stand in an arm, directly or deeper, have a null form; no other has.
    ASSERT_FALSE(arm_types().empty());
    for (const db::TypeInfo* t : record_types()) {
        const std::string name(t->name);
        SCOPED_TRACE(name);
        auto null = reinterpret_cast<null_fn>(internal(name + "_to_null_nlist_vlist"));
        ASSERT_EQ(null != nullptr, arm_types().count(name) == 1);
        if (null == nullptr) continue;
        Lists l;
        EXPECT_GE(null(nullptr, 0, l.names, l.values, &err), 0);
        db::RecordPtr rec = db::make_record(name);
        Lists whole;
        EXPECT_GE(full(name)(nullptr, 0, rec.get(), whole.names, whole.values, 0, &err), 0);
        EXPECT_EQ(l.name_texts(), whole.name_texts());
        const plat::ValueList values = l.value_items();
        EXPECT_EQ(values.size(), l.name_texts().size());
        for (const plat::Value& v : values) EXPECT_TRUE(is_null(v));
    }
    // The extension groups of obj_type: one null and one name per value.
    for (const Group& g : expect().groups) {
        SCOPED_TRACE(g.name);
        auto null = internal_fn<null_fn>(g.name + "_to_null_nlist_vlist");
        ASSERT_NE(null, nullptr);
        Lists l;
        EXPECT_GE(null(nullptr, 0, l.names, l.values, &err), 0);
        EXPECT_EQ(l.name_texts(), g.values);
        EXPECT_EQ(l.value_items().size(), g.values.size());
    }
    // Absent lists or a pending error: -1 and nothing added.
    auto null = internal_fn<null_fn>(*arm_types().begin() + "_to_null_nlist_vlist");
    Lists l;
    EXPECT_EQ(null(nullptr, 0, nullptr, l.values, &err), -1);
    EXPECT_EQ(null(nullptr, 0, l.names, l.values, nullptr), -1);
    err = 5;
    EXPECT_EQ(null(nullptr, 0, l.names, l.values, &err), -1);
    EXPECT_EQ(gx_do_vlist_get_len(l.values), 0);
}

TEST_F(Nlist, UnionsNameEveryArmWhicheverIsSelected) {
    for_each_discriminator([&](db::Record& rec, uint32_t value) {
        db::set_int(rec, "compound_67.ntp_server", 7);
        Lists l;
        EXPECT_GE(full("ntp_peer_cp")(nullptr, 0, &rec, l.names, l.values, 0, &err), 0);
        EXPECT_EQ(l.name_texts(),
                  (std::vector<std::string>{"descriminator", "compound_66.ntp_peer", "compound_67.ntp_server"}));
        const plat::ValueList v = l.value_items();
        ASSERT_EQ(v.size(), 3u);
        EXPECT_EQ(is_null(v[1]), value != 1);
        EXPECT_EQ(is_null(v[2]), value != 2);
    });
}

// ------------------------------------------------------------------ nesting and extensions

TEST_F(Nlist, NestedNamesAreJoinedBehindTheFieldAndTheOutermostStandsFirst) {
    db::RecordPtr rec = db::make_record("ack_node");
    db::set_int(*rec, "dwnld_bl", 5);
    db::set_int(*rec, "om_node.cid", 9);
    Lists l;
    EXPECT_EQ(full("ack_node")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);   // om_node_oid's 0
    EXPECT_EQ(l.name_texts(), (std::vector<std::string>{"dwnld_bl", "resp_bl", "last_dwnld_timestamp", "om_node.cid"}));
    const plat::ValueList v = l.value_items();
    ASSERT_EQ(v.size(), 4u);
    EXPECT_EQ(std::get<uint64_t>(v[0].v), 5u);
    EXPECT_EQ(std::get<uint64_t>(v[3].v), 9u);
    EXPECT_EQ(v[3].leaf, "u_int8");

    // Two levels: the outer field's prefix stands before the inner one's.
    db::RecordPtr peer = db::make_record("ntp_peer_eol");
    Lists m;
    EXPECT_GE(full("ntp_peer_eol")(nullptr, 0, peer.get(), m.names, m.values, 0, &err), 0);
    EXPECT_EQ(m.name_texts().at(1), "compound_0.peer_or_server.descriminator");
    EXPECT_EQ(m.name_texts().at(33), "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle");
}

TEST_F(Nlist, OmNodeOidDeliversCidAloneWithTheTraceOfItsEmptyExtension) {
    db::RecordPtr rec = db::make_record("om_node_oid");
    db::set_int(*rec, "cid", 200);
    Lists l;
    plat::TraceCapture traces;
    EXPECT_EQ(full("om_node_oid")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);
    EXPECT_EQ(l.name_texts(), (std::vector<std::string>{"cid"}));
    ASSERT_EQ(traces.records().size(), 1u);
    EXPECT_EQ(traces.records()[0].text, "om_node_oid version < 1 Rendering extension v163_om_node_oid_ext as null..");
    EXPECT_EQ(traces.records()[0].level, k_debug_level);
    // With the error word set on entry: -1, nothing added.
    err = 5;
    EXPECT_EQ(full("om_node_oid")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), -1);
    EXPECT_EQ(gx_do_nlist_get_len(l.names), 1);
}

TEST_F(Nlist, ExtensionAboveTheVariantGivesANullAndItsName) {
    db::RecordPtr rec = db::make_record("ci_ip_helpaddr_eol");
    db::set_text(*rec, "ci_ip_helpaddr_vrf_name", "red");
    {
        Lists l;
        EXPECT_GE(full("ci_ip_helpaddr_eol")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);
        EXPECT_EQ(l.name_texts().back(), "ci_ip_helpaddr_vrf_name");
        EXPECT_EQ(std::get<std::string>(l.value_items().back().v), "red");
    }
    db::set_variant(*rec, 0);
    {
        Lists l;
        plat::TraceCapture traces;
        EXPECT_GE(full("ci_ip_helpaddr_eol")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);
        EXPECT_EQ(l.name_texts().back(), "ci_ip_helpaddr_vrf_name");
        EXPECT_TRUE(is_null(l.value_items().back()));
        EXPECT_EQ(texts(traces).back(),
                  "ci_ip_helpaddr_eol version < 1 Rendering extension v166_ci_ip_helpaddr_eol_ext as null..");
    }
    {
        Lists l;
        plat::TraceCapture traces;
        plat::fault_fail_nth("gx_do_vlist_add_null", 1);
        EXPECT_EQ(full("ci_ip_helpaddr_eol")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), -1);
        EXPECT_EQ(texts(traces).back(), "ci_ip_helpaddr_eol error(-1) in rendering extension v166_ci_ip_helpaddr_eol_ext");
        EXPECT_EQ(traces.records().back().level, k_debug_level);
        EXPECT_EQ(gx_do_nlist_get_len(l.names), gx_do_vlist_get_len(l.values));
    }
}

TEST_F(Nlist, NegativeVariantAborts) {
    db::RecordPtr rec = db::make_record("ci_ip_helpaddr_eol");
    db::set_variant(*rec, -1);
    Lists l;
    EXPECT_DEATH((fatal_traces_to_stderr(), full("ci_ip_helpaddr_eol")(nullptr, 0, rec.get(), l.names, l.values, 0, &err)),
                 "\\[ci_ip_helpaddr_eol Received variant -1 < base version 0\\]");
}

// ------------------------------------------------------------------ failures

// One fault per row: the answer, every trace (the first at error level), the names that stand
// and how many values. No failure writes the error word.
TEST_F(Nlist, FailuresOfLeavesNestingNullFormsAndArms) {
    db::RecordPtr vrf = db::make_record("vrf_info");
    db::RecordPtr ack = db::make_record("ack_node");
    db::RecordPtr peer = db::make_record("ntp_peer_cp");
    db::set_int(*peer, "descriminator", 2);
    auto record = [&](const char* type, const db::RecordPtr& rec) {
        return [this, type, &rec](Lists& l) { return full(type)(nullptr, 0, rec.get(), l.names, l.values, 0, &err); };
    };
    auto null_form = [&](const std::string& type) {
        auto null = internal_fn<null_fn>(type + "_to_null_nlist_vlist");
        return [this, null](Lists& l) { return null ? null(nullptr, 0, l.names, l.values, &err) : -99; };
    };
    // ntp_peer_cp_0_cp stands in an arm of ntp_peer_cp: one int32 leaf. A group of obj_type's
    // values has an empty type word in its messages.
    const std::string leaf(db::type_info("ntp_peer_cp_0_cp")->fields.at(0).name);
    const std::string& v = expect().groups.at(0).values.at(0);
    const std::string ack_run = "abcdefghijklmnopabcdefghijk om_node_oid_to_vlist for ack_node_om_node failed";
    using Names = std::optional<std::vector<std::string>>;
    const std::vector<std::string> none, ack_leaves{"dwnld_bl", "resp_bl", "last_dwnld_timestamp"};
    struct Case {
        std::function<int32_t(Lists&)> call;
        const char* point;
        long nth;
        Names traces;   // nullopt: not looked at
        Names names;
        int values;   // -1: not looked at
    };
    const Case cases[] = {
        {record("vrf_info", vrf), "gx_do_vlist_add_value", 1,
         std::vector<std::string>{"abcdefghijklmnopabcdefghijk u_int32_to_vlist for vrf_info_table_id failed"}, none, -1},
        // The name of a leaf not added: no trace, and its value stays.
        {record("vrf_info", vrf), "gx_do_nlist_add_string", 2, none, Names{{"table_id"}}, 2},
        {record("ack_node", ack), "gx_do_vlist_add_value", 4,   // om_node.cid
         std::vector<std::string>{"abcdefghijklmnopabcdefghijklmn u_int8_to_vlist for om_node_oid_cid failed", ack_run},
         ack_leaves, 3},
        // Any of the nested rendering's three objects missing: no trace, nothing added.
        {record("ack_node", ack), "gx_do_nlist_new", 1, none, ack_leaves, 3},
        {record("ack_node", ack), "gx_do_vlist_new", 1, none, ack_leaves, 3},
        {record("ack_node", ack), "gx_do_strbuf_new", 1, none, ack_leaves, 3},
        // A joined name not added: 3 leaves, cid inside, then om_node.cid.
        {record("ack_node", ack), "gx_do_nlist_add_string", 5, std::nullopt, ack_leaves, -1},
        {null_form("ntp_peer_cp_0_cp"), "gx_do_vlist_add_null", 1,
         std::vector<std::string>{"ntp_peer_cp_0_cp to_nlist_vlist_all: int32 set null failed for " + leaf +
                                  "for ntp_peer_cp_0_cp"}, std::nullopt, -1},
        {null_form("ntp_peer_cp_0_cp"), "gx_do_nlist_add_string", 1,
         std::vector<std::string>{"ntp_peer_cp_0_cp to_nlist_vlist_all: int32 add nlist failed for " + leaf},
         std::nullopt, 1},
        // A nested arm's null failing (the discriminator's, then arm 1's first leaf): its own
        // trace, then its holder's.
        {null_form("ntp_peer_v6addr_cp"), "gx_do_vlist_add_null", 2,
         std::vector<std::string>{"ntp_peer_v6addr_cp_0_cp to_nlist_vlist_all: ip_address set null failed for "
                                  "ntp_peer_v6addrfor ntp_peer_v6addr_cp_0_cp",
                                  "ntp_peer_v6addr_cp to_nlist_vlist_all: ntp_peer_v6addr_cp_0_cp failed for "
                                  "compound_58for ntp_peer_v6addr_cp"},
         Names{{"descriminator"}}, -1},
        {null_form(expect().groups.at(0).name), "gx_do_vlist_add_null", 1,
         std::vector<std::string>{v + " to_nlist_vlist_all:  set null failed for " + v + "for " + v}, std::nullopt, -1},
        {null_form(expect().groups.at(0).name), "gx_do_nlist_add_string", 1,
         std::vector<std::string>{v + " to_nlist_vlist_all:  add nlist failed for " + v}, std::nullopt, -1},
        // Arm 1 is not selected: its null form fails.
        {record("ntp_peer_cp", peer), "gx_do_vlist_add_null", 1,
         std::vector<std::string>{
             "ntp_peer_cp_0_cp to_nlist_vlist_all: int32 set null failed for ntp_peerfor ntp_peer_cp_0_cp",
             "ntp_peer_cp to_nlist_vlist_all: ntp_peer_cp_0_cp failed for compound_66for ntp_peer_cp"},
         Names{{"descriminator"}}, -1},
        // Arm 2 is selected: its leaf fails (the discriminator's value is the first).
        {record("ntp_peer_cp", peer), "gx_do_vlist_add_value", 2,
         std::vector<std::string>{
             "abcdefghijklmnopabcdefghijklmnopabc int32_to_vlist for ntp_peer_cp_1_cp_ntp_server failed",
             "ntp_peer_cp to_ nlist_vlist_all ntp_peer_cp_1_cp_to_vlist for ntp_peer_cp_compound_67 failed"},
         Names{{"descriminator", "compound_66.ntp_peer"}}, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.point) + " " + std::to_string(c.nth) + " " +
                     (c.traces && !c.traces->empty() ? c.traces->back() : ""));
        Lists l;
        const Failed f = failing(c.point, c.nth, [&] { return c.call(l); });
        EXPECT_EQ(f.result, -1);
        if (c.traces) {
            EXPECT_EQ(f.traces, *c.traces);
        }
        if (c.traces && !c.traces->empty()) {
            EXPECT_EQ(f.level, k_error_level);
        }
        if (c.names) {
            EXPECT_EQ(l.name_texts(), *c.names);
        }
        if (c.values >= 0) {
            EXPECT_EQ(gx_do_vlist_get_len(l.values), c.values);
        }
        EXPECT_EQ(err, 0u);
    }
    // The discriminator itself: a value without an enumerator fails in its conversion.
    db::set_int(*peer, "descriminator", 23);
    Lists l;
    plat::TraceCapture traces;
    EXPECT_LT(full("ntp_peer_cp")(nullptr, 0, peer.get(), l.names, l.values, 0, &err), 0);
    EXPECT_EQ(texts(traces).back(),
              "abcdefghijklmnopabcdefghijklmn zan_cfg_union_to_vlist for ntp_peer_cp_descriminator failed");
}

TEST_F(Nlist, ArrayFailures) {
    db::RecordPtr rec = db::make_record("en_address");
    db::set_array(*rec, "addr", {1, 2, 3, 4, 5, 6});
    const std::string run = "abcdefghijklmnopabcdefghijklm";   // as long as "en_address to_nlist_vlist_all"
    struct Case {
        const char* point;
        long nth;
        int32_t with_state;
        std::string trace;
    } cases[] = {
        {"gx_do_vlist_new", 1, 0, run + " gx_do_vlist_new failed"},
        {"gx_do_vlist_add_value", 3, 0, run + " u_int8_to_vlist for en_address_addr failed"},
        {"gx_do_vlist_add_array", 1, 0, run + " gx_do_vlist_add_array failed"},
        {"gx_do_vlist_add_null", 1, 1, "en_address to_inlist_vlist_all failed for en_address_addr"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        if (c.with_state) db::set_state(*rec, "addr", 0);
        Lists l;
        const Failed f = failing(c.point, c.nth, [&] {
            return full("en_address")(nullptr, 0, rec.get(), l.names, l.values, c.with_state, &err);
        });
        EXPECT_EQ(f.result, -1);
        EXPECT_EQ(f.traces, (std::vector<std::string>{c.trace}));
        EXPECT_EQ(gx_do_vlist_get_len(l.values), 0);
        EXPECT_EQ(gx_do_nlist_get_len(l.names), 0);
    }
    // An unset array is a null with its name; a set one an array of its elements.
    Lists l;
    EXPECT_GE(full("en_address")(nullptr, 0, rec.get(), l.names, l.values, 1, &err), 0);
    db::set_state(*rec, "addr", 2);
    EXPECT_GE(full("en_address")(nullptr, 0, rec.get(), l.names, l.values, 1, &err), 0);
    EXPECT_EQ(l.name_texts(), (std::vector<std::string>{"addr", "addr"}));
    const plat::ValueList v = l.value_items();
    EXPECT_TRUE(is_null(v[0]));
    EXPECT_EQ(std::get<plat::ValueList>(v[1].v).size(), 6u);
}

TEST_F(Nlist, CountedArrayFollowsItsCount) {
    db::RecordPtr rec = db::make_record("vlan_group");
    Lists l;
    EXPECT_GE(full("vlan_group")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);
    db::set_array(*rec, "vlans", {10, 20, 30});
    EXPECT_GE(full("vlan_group")(nullptr, 0, rec.get(), l.names, l.values, 0, &err), 0);
    const plat::ValueList v = l.value_items();
    const std::vector<std::string> names = l.name_texts();
    ASSERT_EQ(names.size(), 4u);
    EXPECT_EQ(names[1], "vlans");
    EXPECT_TRUE(std::get<plat::ValueList>(v[1].v).empty());   // count 0: an empty array, not a null
    const auto& vlans = std::get<plat::ValueList>(v[3].v);
    ASSERT_EQ(vlans.size(), 3u);
    EXPECT_EQ(std::get<uint64_t>(vlans[2].v), 30u);
    EXPECT_EQ(vlans[2].leaf, "u_int16");
}

// ------------------------------------------------------------------ sequences

namespace {
// An ack_timer_head with elements whose dwnld_bl are the given numbers.
db::RecordPtr timer_head(const std::vector<int>& bls) {
    db::RecordPtr head = db::make_record("ack_timer_head");
    int cid = 1;
    for (int bl : bls) {
        db::Record& el = db::append(*head, "layerl");
        db::set_int(el, "dwnld_bl", bl);
        db::set_int(el, "om_node.cid", cid++);
    }
    return head;
}

const std::vector<std::string> k_ack_node_names{"dwnld_bl", "resp_bl", "last_dwnld_timestamp", "om_node.cid"};

// The names of each element of an array of name-value lists, and their dwnld_bl values.
void expect_elements(const plat::Value& array, std::vector<int> bls) {
    const auto& items = std::get<plat::ValueList>(array.v);
    ASSERT_EQ(items.size(), bls.size());
    for (size_t i = 0; i < items.size(); ++i) {
        const auto& nv = std::get<plat::NameValueList>(items[i].v);
        std::vector<std::string> names;
        for (const auto& item : nv) names.push_back(item.name);
        EXPECT_EQ(names, k_ack_node_names);
        EXPECT_EQ(std::get<uint64_t>(nv.at(0).value.v), uint64_t(bls[i]));
        EXPECT_EQ(std::get<uint64_t>(nv.at(3).value.v), i + 1);
    }
}
}  // namespace

TEST_F(Nlist, SequencesOfNoAndSeveralElements) {
    for (auto bls : {std::vector<int>{}, std::vector<int>{10, 20, 30}}) {
        SCOPED_TRACE(bls.size());
        db::RecordPtr head = timer_head(bls);
        Lists l;
        EXPECT_GE(full("ack_timer_head")(nullptr, 0, head.get(), l.names, l.values, 0, &err), 0);
        EXPECT_EQ(l.name_texts(), (std::vector<std::string>{"layerl"}));
        const plat::ValueList v = l.value_items();
        ASSERT_EQ(v.size(), 1u);
        expect_elements(v[0], bls);
    }
    // An unset sequence is a null with its name.
    db::RecordPtr head = timer_head({1});
    db::set_state(*head, "layerl", 0);
    Lists l;
    EXPECT_GE(full("ack_timer_head")(nullptr, 0, head.get(), l.names, l.values, 1, &err), 0);
    EXPECT_EQ(l.name_texts(), (std::vector<std::string>{"layerl"}));
    EXPECT_TRUE(is_null(l.value_items().at(0)));
}

TEST_F(Nlist, SequenceOfRecordsWithSequencesInside) {
    db::RecordPtr head = db::make_record("layer_head");
    db::append(*head, "dwnld_marker");
    db::Record& node = db::append(*head, "layerl");
    db::set_int(db::append(node, "cl"), "cid", 7);
    db::append(node, "cl");
    Lists l;
    EXPECT_GE(full("layer_head")(nullptr, 0, head.get(), l.names, l.values, 0, &err), 0);
    EXPECT_EQ(l.name_texts(), property_names("layer_head", head.get()));
    const plat::ValueList values = l.value_items();
    const auto& layers = std::get<plat::ValueList>(values.at(4).v);
    ASSERT_EQ(layers.size(), 1u);
    const auto& om = std::get<plat::NameValueList>(layers[0].v);
    std::vector<std::string> names;
    for (const auto& item : om) names.push_back(item.name);
    EXPECT_EQ(names, (std::vector<std::string>{"obj_type", "context", "attr_flag", "cl", "pl"}));
    EXPECT_EQ(std::get<plat::ValueList>(om.at(3).value.v).size(), 2u);
}

TEST_F(Nlist, SequenceFailures) {
    struct Case {
        const char* point;
        long nth;
        int32_t with_state;
        std::string trace;
    } cases[] = {
        {"gx_do_vlist_new", 1, 0, "ack_timer_head to_nlist_vlist_all: gx_do_xxx_new failed"},
        {"gx_do_nlist_new", 1, 0, "ack_timer_head to_nlist_vlist_all: gx_do_xxx_new failed"},
        {"gx_do_vlist_new", 2, 0, "ack_timer_head to_nlist_vlist_all: gx_do_xxx_new failed"},
        {"gx_do_nvlist_new", 2, 0, "ack_timer_head to_nlist_vlist_all: gx_do_nvlist_new failed"},
        {"gx_do_vlist_add_value", 5, 0, "ack_timer_head to_nlist_vlist_all: ack_nodeto_nlist_vlist_all failed for ack_timer_head_layerl"},
        {"gx_do_vlist_add_array", 1, 0, "ack_timer_head to_nlist_vlist_all: gx_do_vlist_add_array failed: -1"},
        {"gx_do_vlist_add_null", 1, 1, "ack_timer_head_ to_nlist_vlist_all: gx_do_vlist_add_null failed for ack_timer_head_layerl"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        db::RecordPtr head = timer_head({1, 2});
        if (c.with_state) db::set_state(*head, "layerl", 0);
        Lists l;
        plat::TraceCapture traces;
        plat::fault_fail_nth(c.point, c.nth);
        EXPECT_EQ(full("ack_timer_head")(nullptr, 0, head.get(), l.names, l.values, c.with_state, &err), -1);
        ASSERT_FALSE(traces.records().empty());
        EXPECT_EQ(texts(traces).back(), c.trace);
        EXPECT_EQ(traces.records().back().level, k_error_level);
        // The field gives up whole: neither its value nor its name stands.
        EXPECT_EQ(gx_do_vlist_get_len(l.values), 0);
        EXPECT_EQ(gx_do_nlist_get_len(l.names), 0);
        plat::fault_clear_all();
    }
}

// ------------------------------------------------------------------ lists out of step

namespace {
// A record whose nested record holds another of leaves only: the first value list copied up
// is the middle record's.
std::pair<const db::TypeInfo*, const db::FieldInfo*> three_levels() {
    for (const db::TypeInfo* t : record_types()) {
        for (const db::FieldInfo& f : t->fields) {
            if (f.role != db::FieldRole::attribute || f.kind != db::FieldKind::nested || f.arm != 0) continue;
            bool nests = false, nests_leaves_only = false;
            for (const db::FieldInfo& g : f.target->fields) {
                if (g.role != db::FieldRole::attribute || g.kind != db::FieldKind::nested) continue;
                nests = true;
                nests_leaves_only = g.arm == 0;
                for (const db::FieldInfo& h : g.target->fields)
                    nests_leaves_only = nests_leaves_only && h.kind != db::FieldKind::nested;
                break;
            }
            if (nests && nests_leaves_only) return {t, &f};
        }
    }
    return {nullptr, nullptr};
}
}  // namespace

TEST_F(Nlist, ListsOutOfStepAbortTheNestedRendering) {
    // A value list that silently takes nothing leaves the middle record's lists out of step;
    // the record above it finds that and aborts.
    auto [top, field] = three_levels();
    ASSERT_NE(top, nullptr);
    const std::string type(top->name);
    db::RecordPtr rec = db::make_record(type);
    Lists l;
    EXPECT_DEATH(
        {
            fatal_traces_to_stderr();
            plat::fault_fail_nth("gx_do_vlist_add_all", 1);
            full(type)(nullptr, 0, rec.get(), l.names, l.values, 0, &err);
        },
        type + " to_ nlist_vlist_all rendering error " + std::string(field->name) + " [0-9]+ [0-9]+");
}
