// Rendering to properties when a step fails: each failure's status, its trace (or the
// deliberate lack of one), the error word, and what stays released.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {

using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_properties*, uint32_t*);

class PropsFail : public PropsTest {};

}  // namespace

// A failing leaf conversion passes its status up; the traced leaves name the type and
// field, the three address-like ones stay silent, a character array names the bare field.
TEST_F(PropsFail, LeafConversionFailuresByLeafWord) {
    struct Case {
        const char* type;
        const char* attribute;
        const char* trace;   // "" : none
    };
    const Case cases[] = {
        {"consumer", "cid", "consumer to_properties: u_int8_to_properties failed for consumer_cid"},
        {"consumer", "app_id", "consumer to_properties: u_int16_to_properties failed for consumer_app_id"},
        {"stat_counters", "pkt_cnt", "stat_counters to_properties: u_int64_to_properties failed for stat_counters_pkt_cnt"},
        {"cfg_http_client_proxy_eol", "singleton_id",
         "cfg_http_client_proxy_eol to_properties: u_int32_to_properties failed for cfg_http_client_proxy_eol_singleton_id"},
        {"cfg_http_client_proxy_eol", "http_proxy_port",
         "cfg_http_client_proxy_eol to_properties: int16_to_properties failed for cfg_http_client_proxy_eol_http_proxy_port"},
        {"cfg_http_client_proxy_eol", "http_proxy_name", ""},
        {"cfg_dev_trk_bt_setlog_eol", "bt_log_set",
         "cfg_dev_trk_bt_setlog_eol to_properties: rsl_boolean_to_properties failed for cfg_dev_trk_bt_setlog_eol_bt_log_set"},
        {"conf_mac_nacl_dsthost_cp", "destination_mac_address", ""},
        {"route", "addr", ""},
        {"if_name", "name", "if_name to_properties: var_string_to_properties failed for name"},
        {"layer_key", "flag", "layer_key to_properties: layer_flag_to_properties failed for layer_key_flag"},
        {"db_fields", "flags", "db_fields to_properties: db_flags_to_properties failed for db_fields_flags"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.type) + "." + c.attribute);
        db::RecordPtr rec = db::make_record(c.type);
        fresh();
        ASSERT_EQ(render(c.type, *rec), 0);
        const std::vector<std::string> names = names_of(props);
        const auto at = std::find(names.begin(), names.end(), c.attribute);
        ASSERT_NE(at, names.end());
        fresh();
        const Failed f = failing("gx_do_properties_set_value", long(at - names.begin()) + 1,
                                 [&] { return render(c.type, *rec); });
        EXPECT_EQ(f.result, -1);
        EXPECT_EQ(err, 0u);
        // what went out before the failure stays
        EXPECT_EQ(names_of(props), std::vector<std::string>(names.begin(), at));
        EXPECT_EQ(f.traces, *c.trace ? std::vector<std::string>{c.trace} : std::vector<std::string>{});
        if (*c.trace) {
            EXPECT_EQ(f.level, k_error_level);
        }
    }
}

TEST_F(PropsFail, DiscriminatorWithoutANameFailsTheUnion) {
    db::RecordPtr rec = db::make_record("ntp_peer_cp");
    db::set_int(*rec, "descriminator", 23);   // ZAN_CFG_21 is the last name
    plat::TraceCapture traces;
    EXPECT_EQ(render("ntp_peer_cp", *rec), 3);
    EXPECT_TRUE(names_of(props).empty());
    // Behind a prefix the same.
    EXPECT_EQ(render("ntp_peer_cp", *rec, "compound_0.peer_or_server."), 3);
    const std::string want = "ntp_peer_cp to_properties: zan_cfg_union_to_properties failed for ntp_peer_cp_descriminator";
    EXPECT_EQ(texts(traces), (std::vector<std::string>{want, want}));
    EXPECT_EQ(traces.records().at(1).level, k_error_level);
}

// Fixed arrays fail with 3 where counted ones give 10002; the list is released on every path.
TEST_F(PropsFail, FixedArrayFailures) {
    db::RecordPtr rec = db::make_record("en_address");
    struct Case {
        const char* point;
        long nth;
        int32_t status;
        std::string trace;
    };
    for (const Case& c : {Case{"gx_do_vlist_new", 1, 3, "en_address to_properties: gx_do_vlist_new failed"},
                          Case{"gx_do_vlist_add_value", 3, 3, "en_address to_properties: u_int8_to_vlist failed for en_address_addr"},
                          Case{"gx_do_properties_set_array", 1, -1, "en_address to_properties: gx_do_properties_set_array failed"}}) {
        const Failed f = failing(c.point, c.nth, [&] { return render("en_address", *rec); });
        EXPECT_EQ(f.result, c.status);
        EXPECT_EQ(f.traces, std::vector<std::string>{c.trace});
    }
    EXPECT_TRUE(names_of(props).empty());
    EXPECT_EQ(err, 0u);
}

TEST_F(PropsFail, ArrayStateNullThatFailsGivesThree) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_state(*rec, "vlans", 0);
    plat::TraceCapture traces;
    plat::fault_fail_nth("gx_do_properties_set_null", 1);
    EXPECT_EQ(render("vlan_group", *rec, "", 1), 3);
    EXPECT_EQ(texts(traces).back(), "vlan_group to_properties: gx_do_properties_set_null failed for vlan_group_vlans");
}

// A set error word skips leaves but not an array: its room check runs and it is set, empty.
TEST_F(PropsFail, ErrorWordBeforeAnArrayStillSetsItEmpty) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_array(*rec, "vlans", {5, 6});
    plat::fault_fail_nth("accessor", 1);   // the group's name, the first field
    EXPECT_EQ(render("vlan_group", *rec), 0);
    EXPECT_NE(err, 0u);
    ASSERT_EQ(names_of(props), std::vector<std::string>{"vlans"});
    const plat::Value* v = plat::properties_get(props, "vlans");
    ASSERT_TRUE(std::holds_alternative<plat::ValueList>(v->v));
    EXPECT_TRUE(std::get<plat::ValueList>(v->v).empty());
}

// Null renderings: the normal form checks prefix and error word with its own trace, the
// lenient form (extensions, obj_type groups) takes a null prefix and names stand alone.
TEST_F(PropsFail, NullRenderingArgumentsAndRoom) {
    auto normal = internal_fn<null_fn>("ntp_peer_cp_0_cp_to_null_properties");
    ASSERT_NE(normal, nullptr);
    for (bool null_err : {false, true}) {
        plat::TraceCapture traces;
        EXPECT_EQ(normal(nullptr, 0, null_err ? "p." : nullptr, props, null_err ? nullptr : &err), 3);
        EXPECT_EQ(texts(traces), std::vector<std::string>{"ntp_peer_cp_0_cp to_properties null argument(s)"});
    }
    // Room for the full name: 256 characters. "ntp_peer" is 8, "ci_ip_helpaddr_vrf_name" 23;
    // a prefix of 256 is taken in but leaves no room, one of 257 is refused on entry.
    auto lenient = internal_fn<null_fn>("v166_ci_ip_helpaddr_eol_ext_to_null_properties");
    ASSERT_NE(lenient, nullptr);
    struct Room {
        null_fn f;
        size_t prefix;
        const char* field;
        int32_t status;
    };
    for (const Room& r : {Room{normal, 248, "ntp_peer", 0}, Room{normal, 249, "ntp_peer", 3},
                          Room{normal, 256, "ntp_peer", 3}, Room{normal, 257, "ntp_peer", 3},
                          Room{lenient, 233, "ci_ip_helpaddr_vrf_name", 0},
                          Room{lenient, 234, "ci_ip_helpaddr_vrf_name", 3}}) {
        SCOPED_TRACE(std::to_string(r.prefix) + " + " + r.field);
        fresh();
        const std::string prefix(r.prefix, 'p');
        plat::TraceCapture traces;
        EXPECT_EQ(r.f(nullptr, 0, prefix.c_str(), props, &err), r.status);
        EXPECT_TRUE(traces.records().empty());
        EXPECT_EQ(err, 0u);
        EXPECT_EQ(names_of(props), r.status == 0 ? std::vector<std::string>{prefix + r.field}
                                                 : std::vector<std::string>{});
    }
    fresh();
    err = 9;
    EXPECT_EQ(normal(nullptr, 0, "p.", props, &err), 0);
    err = 0;
    EXPECT_TRUE(names_of(props).empty());
    EXPECT_EQ(normal(nullptr, 0, "p.", props, &err), 0);
    EXPECT_EQ(names_of(props), std::vector<std::string>{"p.ntp_peer"});

    {
        plat::TraceCapture traces;
        EXPECT_EQ(lenient(nullptr, 0, "", nullptr, &err), 3);
        EXPECT_EQ(lenient(nullptr, 0, "", props, nullptr), 3);
        EXPECT_TRUE(traces.records().empty());
    }
    fresh();
    EXPECT_EQ(lenient(nullptr, 0, nullptr, props, &err), 0);
    EXPECT_EQ(names_of(props), std::vector<std::string>{"ci_ip_helpaddr_vrf_name"});
    plat::TraceCapture traces;
    plat::fault_fail_nth("gx_do_properties_set_null", 1);
    EXPECT_EQ(lenient(nullptr, 0, "x.", props, &err), -1);
    EXPECT_EQ(texts(traces), std::vector<std::string>{
        "ci_ip_helpaddr_vrf_name to_properties: rsl_vstring_set_null_properties failed for ci_ip_helpaddr_vrf_name"});
}

TEST_F(PropsFail, ObjTypeGroupNullsNameTheirValues) {
    auto group = internal_fn<null_fn>("v1_0_obj_type_ext_to_null_properties");
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group(nullptr, 0, nullptr, props, &err), 0);
    const std::vector<std::string> names = names_of(props);
    ASSERT_EQ(names.size(), 18u);
    EXPECT_EQ(names.front(), "OBJ_RIP_GW");
    EXPECT_EQ(names.back(), "OBJ_L2VPN_DECAP");
    plat::TraceCapture traces;
    plat::fault_fail_nth("gx_do_properties_set_null", 2);
    EXPECT_EQ(group(nullptr, 0, "", props, &err), -1);
    EXPECT_EQ(texts(traces),
              std::vector<std::string>{"OBJ_UDLD_GW to_properties: _set_null_properties failed for OBJ_UDLD_GW"});
}
