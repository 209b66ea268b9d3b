// Rendering to properties, reached as an engine reaches it: a table's slot 2 and the type
// rows of zan_config_db_type_gx_lut. Rows and records come from the reference store.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/config.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {

class Props : public PropsTest {};

}  // namespace

TEST_F(Props, NtpPeerRowDeliversItsValuesByLeafWordAndArm) {
    db::RowPtr row = db::make_row("tbl_ntp_peer_eol");
    db::Record& top = *db::row_record(*row);
    db::set_text(top, "peer_server_key", "10.0.0.1");
    db::set_enum(top, "compound_0.peer_or_server.descriminator", "ZAN_CFG_1");
    db::set_int(top, "compound_0.peer_or_server.compound_67.ntp_server", 7);
    db::set_int(top, "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle", 12);
    ASSERT_EQ(table_row("tbl_ntp_peer_eol").to_properties(nullptr, 0, row.get(), props, 0, &err), 0);
    EXPECT_EQ(err, 0u);

    // The 37 names in order: EveryTableRendersExactlyItsStaticAttributes.
    const std::string arms = "compound_0.peer_or_server.";
    EXPECT_EQ(at("peer_server_key").leaf, "rsl_vstring");
    EXPECT_EQ(std::get<plat::EnumText>(at(arms + "descriminator").v).text, "ZAN_CFG_1");
    EXPECT_TRUE(is_null(at(arms + "compound_66.ntp_peer")));   // arm 1 is not the selected one
    EXPECT_EQ(at(arms + "compound_67.ntp_server").leaf, "int32");
    EXPECT_EQ(std::get<int64_t>(at(arms + "compound_67.ntp_server").v), 7);
    const std::string handle = "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle";
    EXPECT_EQ(at(handle).leaf, "u_int32");
    EXPECT_EQ(std::get<uint64_t>(at(handle).v), 12u);
    // Discriminator 0 nulls every arm, the discriminators of unions inside them included.
    EXPECT_EQ(std::get<plat::EnumText>(at("compound_0.descriminator").v).text, "ZAN_CFG_NONE");
    EXPECT_TRUE(is_null(at("compound_0.compound_2.descriminator")));
    EXPECT_TRUE(is_null(at("compound_0.compound_57.compound_4.compound_7.compound_9.descriminator")));
    EXPECT_TRUE(is_null(at("compound_0.compound_2.compound_58.ntp_peer_v6addr")));
}

TEST_F(Props, EveryTableRendersExactlyItsStaticAttributes) {
    // The column names with a dot behind every nested field, glued ones included.
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        gx_do_properties* p = plat::properties_new();
        db::RowPtr row = db::make_row(t.name);
        uint32_t e = 0;
        ASSERT_EQ(table_row(t.name).to_properties(nullptr, 0, row.get(), p, 0, &e), 0);
        EXPECT_EQ(e, 0u);
        std::vector<std::string> want;
        for (const Column& c : t.columns) want.push_back(c.attribute);
        EXPECT_EQ(names_of(p), want);
        plat::properties_deref(p);
    }
}

TEST_F(Props, UnionArmsFollowTheDiscriminator) {
    const char* prefix = "compound_0.peer_or_server.";
    const std::string disc = std::string(prefix) + "descriminator";
    const std::string peer = std::string(prefix) + "compound_66.ntp_peer";
    const std::string server = std::string(prefix) + "compound_67.ntp_server";
    for_each_discriminator([&](db::Record& rec, uint32_t value) {
        fresh();
        ASSERT_EQ(render("ntp_peer_cp", rec, prefix), 0);
        EXPECT_EQ(names_of(props), (std::vector<std::string>{disc, peer, server}));
        EXPECT_EQ(is_null(at(peer)), value != 1);
        EXPECT_EQ(is_null(at(server)), value != 2);
    });
    // A value with no enumerator: PropsFail.DiscriminatorWithoutANameFailsTheUnion.
}

TEST_F(Props, StateFlagGivesPresentAndDefault) {
    for_each_state_flag([&](db::Record& rec, bool present, bool is_default) {
        fresh();
        ASSERT_EQ(render("ntp_maxdistance_cp", rec, "compound_0.", 1), 0);
        const plat::Value& v = at("compound_0.ntp_mdist_value_1");
        EXPECT_EQ(!is_null(v), present);
        EXPECT_EQ(v.is_default, is_default);
    });
    // Without state the flag is not consulted.
    db::RecordPtr rec = db::make_record("ntp_maxdistance_cp");
    db::set_state(*rec, "ntp_mdist_value_1", 0);
    ASSERT_EQ(render("ntp_maxdistance_cp", *rec, ""), 0);
    EXPECT_FALSE(is_null(at("ntp_mdist_value_1")));
}

TEST_F(Props, DefaultComparisonOnlyWithANonNegativeDefaultVariant) {
    for_each_default_case([&](db::Record& rec, const std::string&, bool is_default) {
        fresh();
        ASSERT_EQ(render("ntp_peer_cp_0_cp", rec, ""), 0);
        EXPECT_EQ(at(names_of(props).at(0)).is_default, is_default);
    });
}

TEST_F(Props, NameRoomIsTwoHundredFiftySixCharacters) {
    // ntp_mdist_value_1 is 17 characters; singleton_id of ntp_maxdist_eol 12.
    db::RecordPtr rec = db::make_record("ntp_maxdistance_cp");
    EXPECT_EQ(render("ntp_maxdistance_cp", *rec, std::string(239, 'p').c_str()), 0);
    EXPECT_EQ(names_of(props).back().size(), 256u);
    EXPECT_EQ(render("ntp_maxdistance_cp", *rec, std::string(240, 'p').c_str()), 3);
    {
        plat::TraceCapture traces;
        EXPECT_EQ(render("ntp_maxdistance_cp", *rec, std::string(256, 'p').c_str()), 3);
        EXPECT_TRUE(traces.records().empty());
    }
    plat::TraceCapture traces;
    EXPECT_EQ(render("ntp_maxdistance_cp", *rec, std::string(257, 'p').c_str()), 3);
    ASSERT_EQ(traces.records().size(), 1u);
    EXPECT_EQ(traces.records()[0].level, k_debug_level);
    EXPECT_NE(traces.records()[0].text.find("length greater than buffer size 256"), std::string::npos);
}

TEST_F(Props, ErrorWordEndsQuietlyInARecordAndFailsAtTheTable) {
    db::RowPtr row = db::make_row("tbl_ntp_maxdist_eol");
    err = 5;
    EXPECT_EQ(table_row("tbl_ntp_maxdist_eol").to_properties(nullptr, 0, row.get(), props, 0, &err), 3);
    EXPECT_EQ(render("ntp_maxdist_eol", *db::row_record(*row), ""), 0);
    EXPECT_TRUE(names_of(props).empty());
    // An accessor failing part-way: the rest is skipped, the answer is 0.
    err = 0;
    plat::fault_fail_nth("accessor", 1);
    EXPECT_EQ(render("ntp_maxdist_eol", *db::row_record(*row), ""), 0);
    EXPECT_NE(err, 0u);
}

TEST_F(Props, CountedArraysFollowTheCount) {
    db::RecordPtr rec = db::make_record("vlan_group");
    ASSERT_EQ(render("vlan_group", *rec, ""), 0);
    const plat::Value& empty = at("vlans");
    ASSERT_TRUE(std::holds_alternative<plat::ValueList>(empty.v));   // an array, not a null
    EXPECT_TRUE(std::get<plat::ValueList>(empty.v).empty());

    db::set_array(*rec, "vlans", {10, 20, 30});
    fresh();
    ASSERT_EQ(render("vlan_group", *rec, ""), 0);
    EXPECT_EQ(std::get<plat::ValueList>(at("vlans").v).size(), 3u);

    const Failed f = failing("gx_do_vlist_new", 1, [&] { return render("vlan_group", *rec, ""); });
    EXPECT_EQ(f.result, 10002);
    EXPECT_EQ(f.traces.back(), "vlan_group to_properties: gx_do_vlist_new failed");
    EXPECT_EQ(plat::live_objects().vlist, 0);
}

TEST_F(Props, ExtensionBelowTheVariantIsRenderedAsNull) {
    db::RecordPtr rec = db::make_record("ci_ip_helpaddr_eol");
    db::set_text(*rec, "ci_ip_helpaddr_vrf_name", "red");
    db::set_variant(*rec, 1);
    ASSERT_EQ(render("ci_ip_helpaddr_eol", *rec, ""), 0);
    EXPECT_EQ(std::get<std::string>(at("ci_ip_helpaddr_vrf_name").v), "red");

    db::set_variant(*rec, 0);
    fresh();
    plat::TraceCapture traces;
    ASSERT_EQ(render("ci_ip_helpaddr_eol", *rec, ""), 0);
    EXPECT_TRUE(is_null(at("ci_ip_helpaddr_vrf_name")));
    ASSERT_FALSE(traces.records().empty());
    EXPECT_EQ(traces.records().back().text,
              "ci_ip_helpaddr_eol version < 1 Rendering extension v166_ci_ip_helpaddr_eol_ext as null..");
}

TEST_F(Props, FailingSetInANestedRecordTracesEveryLevel) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    // the nested int32
    const Failed f = failing("gx_do_properties_set_value", 2, [&] { return render("ntp_maxdist_eol", *rec, ""); });
    EXPECT_NE(f.result, 0);
    ASSERT_GE(f.traces.size(), 2u);
    EXPECT_EQ(f.traces[f.traces.size() - 2],
              "ntp_maxdistance_cp to_properties: int32_to_properties failed for ntp_maxdistance_cp_ntp_mdist_value_1");
    EXPECT_EQ(f.traces.back(),
              "ntp_maxdist_eol to_properties: ntp_maxdistance_cp_to_properties failed for ntp_maxdist_eol_compound_0");
}

TEST_F(Props, NegativeVariantAborts) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    db::set_variant(*rec, -1);
    EXPECT_DEATH((fatal_traces_to_stderr(), render("ntp_maxdist_eol", *rec, "")),
                 "\\[ntp_maxdist_eol Received variant -1 < base version 0\\]");
}

TEST_F(Props, FailingNullOfAnUnselectedArmIsPassedUpWithBothTraces) {
    db::RecordPtr rec = db::make_record("ntp_peer_cp");
    db::set_int(*rec, "descriminator", 2);
    const Failed f = failing("gx_do_properties_set_null", 1, [&] { return render("ntp_peer_cp", *rec, ""); });
    EXPECT_NE(f.result, 0);
    EXPECT_EQ(f.traces, (std::vector<std::string>{
                            "ntp_peer_cp_0_cp to_properties: int32_set_null_properties failed for ntp_peer_cp_0_cp",
                            "ntp_peer_cp to_null_properties: ntp_peer_cp_0_cp_to_null_properties failed for ntp_peer_cp"}));
    // The discriminator went out before the arm failed; nothing of arm 2 did.
    EXPECT_EQ(names_of(props), (std::vector<std::string>{"descriminator"}));
}

TEST_F(Props, ArrayStateFlagNullsTheWholeArrayWithoutReadingElements) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_array(*rec, "vlans", {1, 2});
    db::set_state(*rec, "vlans", 4);   // only the two low bits count
    const long before = plat::fault_calls("accessor");
    ASSERT_EQ(render("vlan_group", *rec, "", 1), 0);
    EXPECT_TRUE(is_null(at("vlans")));
    // vlan_group_name: state and value; vlans: the whole-array state only.
    EXPECT_EQ(plat::fault_calls("accessor") - before, 3);

    db::set_state(*rec, "vlans", 2);
    db::set_element_state(*rec, "vlans", 1, 0);
    fresh();
    ASSERT_EQ(render("vlan_group", *rec, "", 1), 0);
    const auto& elements = std::get<plat::ValueList>(at("vlans").v);
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_FALSE(is_null(elements[0]));
    EXPECT_TRUE(is_null(elements[1]));
}

TEST_F(Props, EnumerationAndFlagRowsRenderNamesAndIgnoreState) {
    db::RecordPtr rec = db::make_record("ntp_peer_cp");
    const void* disc = db::handle(*rec, "descriminator");
    db::set_state(*rec, "descriminator", 0);   // a row form does not look at it
    db::set_int(*rec, "descriminator", 22);
    ASSERT_EQ(type_row("zan_cfg_union")(nullptr, 0, "d", props, disc, 1, &err), 0);
    EXPECT_EQ(std::get<plat::EnumText>(at("d").v).text, "ZAN_CFG_21");
    EXPECT_FALSE(at("d").is_default);
    db::set_int(*rec, "descriminator", 23);
    {
        plat::TraceCapture traces;
        EXPECT_EQ(type_row("zan_cfg_union")(nullptr, 0, "e", props, disc, 0, &err), 3);
        EXPECT_TRUE(traces.records().empty());   // the field's owner names it, not the row
    }

    db::RecordPtr fields = db::make_record("db_fields");
    const void* flags = db::handle(*fields, "flags");
    ASSERT_EQ(type_row("db_flags")(nullptr, 0, "none", props, flags, 0, &err), 0);
    EXPECT_TRUE(std::get<plat::ValueList>(at("none").v).empty());   // an empty list, not a null
    db::set_flags(*fields, "flags", {"IS_PENDING_DELETE"});
    ASSERT_EQ(type_row("db_flags")(nullptr, 0, "set", props, flags, 0, &err), 0);
    const auto& bits = std::get<plat::ValueList>(at("set").v);
    ASSERT_EQ(bits.size(), 1u);
    EXPECT_EQ(std::get<plat::EnumText>(bits[0].v).text, "IS_PENDING_DELETE");

    plat::fault_fail_nth("gx_do_vlist_new", 1);
    EXPECT_EQ(type_row("db_flags")(nullptr, 0, "x", props, flags, 0, &err), 10002);
    EXPECT_EQ(err, 0u);
}

// ------------------------------------------------------------------ sequences

namespace {
db::RecordPtr timer_head(int elements) {
    db::RecordPtr head = db::make_record("ack_timer_head");
    for (int i = 0; i < elements; ++i) {
        db::Record& el = db::append(*head, "layerl");
        db::set_int(el, "dwnld_bl", 10 * (i + 1));
        db::set_int(el, "om_node.cid", i + 1);
    }
    return head;
}

std::vector<std::string> item_names(const plat::Value& element) {
    std::vector<std::string> out;
    for (const auto& item : std::get<plat::NameValueList>(element.v)) out.push_back(item.name);
    return out;
}
}  // namespace

TEST_F(Props, SequencesAreArraysOfNameValueLists) {
    for (int n : {0, 3}) {
        SCOPED_TRACE(n);
        db::RecordPtr head = timer_head(n);
        fresh();
        ASSERT_EQ(render("ack_timer_head", *head, "t."), 0);
        EXPECT_EQ(names_of(props), (std::vector<std::string>{"t.layerl"}));
        const auto& elements = std::get<plat::ValueList>(at("t.layerl").v);   // empty: an array, not a null
        ASSERT_EQ(elements.size(), size_t(n));
        for (int i = 0; i < n; ++i) {
            // Names inside an element are relative to the element, not prefixed with the array's.
            EXPECT_EQ(item_names(elements[i]),
                      (std::vector<std::string>{"dwnld_bl", "resp_bl", "last_dwnld_timestamp", "om_node.cid"}));
            const auto& items = std::get<plat::NameValueList>(elements[i].v);
            EXPECT_EQ(std::get<uint64_t>(items[0].value.v), uint64_t(10 * (i + 1)));
            EXPECT_EQ(std::get<uint64_t>(items[3].value.v), uint64_t(i + 1));
        }
    }
    // om_node: two sequences of om_node_oid, one of them empty.
    db::RecordPtr node = db::make_record("om_node");
    for (int cid : {4, 5, 6}) db::set_int(db::append(*node, "cl"), "cid", cid);
    fresh();
    ASSERT_EQ(render("om_node", *node, ""), 0);
    EXPECT_EQ(names_of(props), (std::vector<std::string>{"obj_type", "context", "attr_flag", "cl", "pl"}));
    const auto& cl = std::get<plat::ValueList>(at("cl").v);
    ASSERT_EQ(cl.size(), 3u);
    EXPECT_EQ(item_names(cl[2]), (std::vector<std::string>{"cid"}));
    EXPECT_EQ(std::get<uint64_t>(std::get<plat::NameValueList>(cl[2].v)[0].value.v), 6u);
    EXPECT_TRUE(std::get<plat::ValueList>(at("pl").v).empty());
    EXPECT_EQ(plat::live_objects().total(), 1);   // the properties object alone
}

TEST_F(Props, UnsetSequenceIsANullAndReadsNoElement) {
    db::RecordPtr head = timer_head(2);
    db::set_state(*head, "layerl", 4);   // only the two low bits count
    const long before = plat::fault_calls("accessor");
    ASSERT_EQ(render("ack_timer_head", *head, "", 1), 0);
    EXPECT_TRUE(is_null(at("layerl")));
    EXPECT_EQ(plat::fault_calls("accessor") - before, 1);   // the state flag alone
}

TEST_F(Props, SequenceFailures) {
    struct Case {
        const char* point;
        long nth;
        int32_t with_state;
        int32_t status;
        std::string trace;
    } cases[] = {
        {"gx_do_vlist_new", 1, 0, 10002, "ack_timer_head to_properties: gx_do_xxx_new failed"},
        {"gx_do_nlist_new", 1, 0, 10002, "ack_timer_head to_properties: gx_do_xxx_new failed"},
        {"gx_do_vlist_new", 2, 0, 10002, "ack_timer_head to_properties: gx_do_xxx_new failed"},
        {"gx_do_nvlist_new", 2, 0, 10002, "ack_timer_head to_properties: gx_do_nvlist_new failed"},
        {"gx_do_vlist_add_value", 6, 0, 3,
         "ack_timer_head to_properties: ack_node_to_nlist_vlist_all failed for ack_timer_head_layerl"},
        {"gx_do_properties_set_array", 1, 0, -1, "ack_timer_head to_properties: gx_do_properties_set_array failed: -1"},
        {"gx_do_properties_set_null", 1, 1, 3,
         "ack_timer_head to_properties: gx_do_properties_set_null failed for ack_timer_head_layerl"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        db::RecordPtr head = timer_head(2);
        if (c.with_state) db::set_state(*head, "layerl", 0);
        fresh();
        const Failed f = failing(c.point, c.nth, [&] { return render("ack_timer_head", *head, "", c.with_state); });
        EXPECT_EQ(f.result, c.status);
        ASSERT_FALSE(f.traces.empty());
        EXPECT_EQ(f.traces.back(), c.trace);
        EXPECT_EQ(f.level, k_error_level);
        EXPECT_TRUE(names_of(props).empty());
        EXPECT_EQ(plat::live_objects().total(), 1);   // every list released; the properties object stays
        EXPECT_EQ(err, 0u);
    }
    // An accessor failing ends the walk quietly: the elements so far are set, the answer is 0.
    db::RecordPtr head = timer_head(3);
    fresh();
    plat::fault_fail_nth("accessor", 7);   // first, four leaves and a nested one, then next
    EXPECT_EQ(render("ack_timer_head", *head, "", 0), 0);
    EXPECT_NE(err, 0u);
    EXPECT_EQ(std::get<plat::ValueList>(at("layerl").v).size(), 1u);
}

TEST_F(Props, ElementListsOutOfStepAbort) {
    // A value list that silently takes nothing leaves an element's names one ahead of its values.
    db::RecordPtr head = timer_head(2);
    EXPECT_DEATH(
        {
            fatal_traces_to_stderr();
            plat::fault_fail_nth("gx_do_vlist_add_all", 1);
            render("ack_timer_head", *head, "");
        },
        "ack_timer_head to_ nlist_vlist_all rendering error layerl 4 3");
}

TEST_F(Props, DefaultRecordsRenderByTypeWithAllTheirElements) {
    for (const char* type : {"om_node", "layer_head", "ack_timer_head"}) {
        SCOPED_TRACE(type);
        ASSERT_FALSE(default_store().records(type).empty());
        for (db::Record* rec : default_store().records(type)) {
            fresh();
            ASSERT_EQ(render(type, *rec, ""), 0);
            for (const db::FieldInfo& f : db::type_info(type)->fields) {
                if (f.kind != db::FieldKind::sequence) continue;
                EXPECT_EQ(std::get<plat::ValueList>(at(std::string(f.name)).v).size(),
                          db::sequence_size(*rec, f.name));
            }
        }
    }
}

// Type rows of base enumerations and flag sets at their edges: a number past the last
// enumerator fails with 3, the last one renders, bits above a flag set's last are not looked
// at. The values are read from om_node's enumeration and flag cells.
TEST_F(Props, BaseTypeRowsAtTheEdgesOfTheirValues) {
    db::RecordPtr node = db::make_record("om_node");
    struct Case {
        const char* type;
        const char* cell;
        int64_t value;
        int32_t result;
        std::vector<std::string> texts;   // the enumerator, or the set bits' names
    };
    const Case cases[] = {
        {"pak_direction", "obj_type", 2, 0, {"BOTH_DIRECTION"}},
        {"pak_direction", "obj_type", 3, 3, {}},
        {"object_status", "obj_type", 6, 0, {"RSL_AOM_STATUS_MAX"}},
        {"object_status", "obj_type", 7, 3, {}},
        {"channel_state", "attr_flag", 0x10, 0, {"CHANNEL_STATE_WRITE_SELECT"}},
        {"channel_state", "attr_flag", 0x7e1, 0, {"CHANNEL_STATE_CONNECTED"}},
        {"channel_state", "attr_flag", 0x20, 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + std::to_string(c.value));
        fresh();
        db::set_int(*node, c.cell, c.value);
        EXPECT_EQ(type_row(c.type)(nullptr, 0, "attr", props, db::handle(*node, c.cell), 0, &err), c.result);
        if (c.result != 0) {
            EXPECT_EQ(plat::properties_get(props, "attr"), nullptr);
            continue;
        }
        std::vector<std::string> got;
        const plat::Value& v = at("attr");
        if (const auto* e = std::get_if<plat::EnumText>(&v.v)) got.push_back(e->text);
        if (const auto* l = std::get_if<plat::ValueList>(&v.v))
            for (const plat::Value& b : *l) got.push_back(std::get<plat::EnumText>(b.v).text);
        EXPECT_EQ(got, c.texts);
    }
}

// A character array reads its characters before the room check: a name that does not fit
// answers 3 with the length (twice) and the characters already fetched, and sets nothing.
TEST_F(Props, ACharacterArrayWhoseNameDoesNotFitIsReadFirst) {
    db::RecordPtr rec = db::make_record("if_name");
    db::set_text(*rec, "name", "Gi0/1");
    const long before = plat::fault_calls("accessor");
    EXPECT_EQ(render("if_name", *rec, std::string(253, 'p').c_str()), 3);   // 253 + "name" > 256
    EXPECT_EQ(plat::fault_calls("accessor") - before, 3);
    EXPECT_TRUE(names_of(props).empty());
    fresh();
    ASSERT_EQ(render("if_name", *rec, std::string(252, 'p').c_str()), 0);
    EXPECT_EQ(std::get<std::string>(at(std::string(252, 'p') + "name").v), "Gi0/1");
}

// tbl_threat_visibility_ip_export renders two top records: the key record, then the value
// record, unless the key record failed (its result comes back at once) or left the word set
// (0, and the value record is not rendered).
TEST_F(Props, TheTwoRecordTableRendersItsValueRecordOnlyAfterACleanKey) {
    db::RowPtr row = db::make_row("tbl_threat_visibility_ip_export");
    const zan_gx_table_row& t = table_row("tbl_threat_visibility_ip_export");
    const std::string value_attr = "tv_ip_export_parent_table_key";
    struct Case {
        const char* point;   // nullptr: no fault
        int32_t result;
        int64_t err;         // -1: whatever the failure left
        bool value_rendered;
    };
    for (const Case& c : {Case{nullptr, 0, 0, true}, Case{"accessor", 0, 5, false},
                          Case{"gx_do_properties_set_value", -1, -1, false}}) {
        SCOPED_TRACE(c.point ? c.point : "clean");
        fresh();
        if (c.point) plat::fault_fail_nth(c.point, 1);
        const int32_t r = t.to_properties(nullptr, 0, row.get(), props, 0, &err);
        plat::fault_clear_all();
        EXPECT_EQ(r != 0, c.result != 0) << r;
        if (c.err >= 0) { EXPECT_EQ(err, uint32_t(c.err)); }
        EXPECT_EQ(plat::properties_get(props, value_attr) != nullptr, c.value_rendered);
    }
}
