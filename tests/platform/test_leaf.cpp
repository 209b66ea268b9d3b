// Leaf conversions: values read from real store cells into properties and value lists.
#include <cerrno>

#include "leak_check.hpp"
#include "zan/database.hpp"
#include "zan/leaf.h"

using namespace zan::plat;
namespace db = zan::db;

namespace {

const rsl_ctx_t k_ctx = reinterpret_cast<rsl_ctx_t>(uintptr_t(0x1eaf));
constexpr rsl_ctx_id_t k_id = 3;

class Leaf : public LeakChecked {
protected:
    void SetUp() override {
        LeakChecked::SetUp();
        props = properties_new();
    }
    void TearDown() override {
        properties_deref(props);
        LeakChecked::TearDown();
    }
    const Value& at(const char* name) {
        const Value* v = properties_get(props, name);
        EXPECT_NE(v, nullptr) << name << " not set";
        static const Value none;
        return v ? *v : none;
    }
    gx_do_properties* props = nullptr;
    uint32_t err = 0;
};

// One real store cell of every leaf word, each holding an extreme or telling value.
struct LeafCells {
    db::RecordPtr consumer = db::make_record("consumer");                      // cid u_int8, app_id u_int16
    db::RecordPtr counters = db::make_record("stat_counters");                 // byte_cnt u_int64
    db::RecordPtr proxy = db::make_record("cfg_http_client_proxy_eol");        // rsl_vstring, int16, u_int32
    db::RecordPtr trk = db::make_record("cfg_dev_trk_bt_setlog_eol");          // bt_log_set rsl_boolean
    db::RecordPtr mac = db::make_record("conf_mac_nacl_dsthost_cp");           // rsl_mac_addr
    db::RecordPtr route = db::make_record("route");                            // addr ip_address
    void* i32 = db::make_typed_int32(-7);
    LeafCells() {
        db::set_int(*consumer, "cid", 255);
        db::set_int(*consumer, "app_id", 65535);
        db::set_u64(*counters, "byte_cnt", UINT64_MAX);
        db::set_text(*proxy, "http_proxy_name", "proxy.example");
        db::set_int(*proxy, "http_proxy_port", -2);
        db::set_int(*proxy, "singleton_id", 4000000000u);
        db::set_bool(*trk, "bt_log_set", true);
        db::set_mac(*mac, "destination_mac_address", *parse_mac("aa:bb:cc:00:11:22"));
        db::set_ip(*route, "addr", "2001:db8::1");
    }
    ~LeafCells() { db::destroy_typed(i32); }
    LeafCells(const LeafCells&) = delete;
    LeafCells& operator=(const LeafCells&) = delete;
};

}  // namespace

// present 0 sets null with the mark, and does not read the handle (NULL is fine).
TEST_F(Leaf, AbsentValueIsNullAndHandleUnread) {
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 1, 0, nullptr, &err), 0);
    EXPECT_EQ(enum_to_properties(k_ctx, k_id, "y", props, 0, 0, nullptr, &err), 0);
    EXPECT_EQ(bits_to_properties(k_ctx, k_id, "z", props, 0, 0, nullptr, &err), 0);
    EXPECT_EQ(var_string_to_properties(k_ctx, k_id, "w", props, 0, 0, nullptr, &err), 0);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(at("x"), (Value{Null{}, "int32", true}));
    EXPECT_TRUE(std::holds_alternative<Null>(at("y").v));
    EXPECT_TRUE(std::holds_alternative<Null>(at("z").v));
    EXPECT_TRUE(std::holds_alternative<Null>(at("w").v));
}

// The error channels: a set word stops everything and is kept (a list form says so with
// -1, as it added nothing); a bad or mistyped handle raises EINVAL with status 0; a failing
// set returns its status.
TEST_F(Leaf, ErrorWordAndStatus) {
    void* i32 = db::make_typed_int32(1);
    err = 99;
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 0, 1, i32, &err), 0);
    EXPECT_EQ(enum_to_properties(k_ctx, k_id, "x", props, 0, 1, "A", &err), 0);
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 0, 0, nullptr, &err), 0);
    EXPECT_EQ(u_int32_to_vlist(k_ctx, k_id, nullptr, 0, 1, i32, &err), -1);
    EXPECT_EQ(err, 99u);
    EXPECT_TRUE(properties_items(props).empty());

    err = 0;
    EXPECT_EQ(u_int32_to_properties(k_ctx, k_id, "x", props, 0, 1, i32, &err), 0);   // int32 cell
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    // present with no value to read: the pointer-taking leaves refuse it the same way
    err = 0;
    EXPECT_EQ(enum_to_properties(k_ctx, k_id, "x", props, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    EXPECT_EQ(bits_to_properties(k_ctx, k_id, "x", props, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    EXPECT_EQ(var_string_to_properties(k_ctx, k_id, "x", props, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    EXPECT_TRUE(properties_items(props).empty());

    err = 0;
    fault_fail_nth("gx_do_properties_set_value", 1);
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 0, 1, i32, &err), -1);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(int32_to_properties(k_ctx, k_id, "x", props, 0, 1, i32, &err), 0);
    db::destroy_typed(i32);
}

TEST_F(Leaf, EnumBitsAndVarString) {
    gx_do_vlist* names = gx_do_vlist_new();
    EXPECT_EQ(enum_to_vlist(k_ctx, k_id, names, 0, 1, "CHANNEL_STATE_CONNECTED", &err), 1);
    EXPECT_EQ(enum_to_vlist(k_ctx, k_id, names, 0, 1, "CHANNEL_STATE_READ_SELECT", &err), 2);
    EXPECT_EQ(bits_to_properties(k_ctx, k_id, "flags", props, 1, 1, names, &err), 0);
    gx_do_vlist_deref(names);
    gx_do_vlist* empty = gx_do_vlist_new();
    EXPECT_EQ(bits_to_properties(k_ctx, k_id, "none", props, 0, 1, empty, &err), 0);
    gx_do_vlist_deref(empty);
    EXPECT_EQ(enum_to_properties(k_ctx, k_id, "mode", props, 0, 1, "IPV4_ADDRESS", &err), 0);
    EXPECT_EQ(var_string_to_properties(k_ctx, k_id, "name", props, 0, 1, "eth0", &err), 0);
    EXPECT_EQ(err, 0u);

    const Value& flags = at("flags");
    EXPECT_EQ(flags.leaf, "bits");
    EXPECT_TRUE(flags.is_default);
    ASSERT_TRUE(std::holds_alternative<ValueList>(flags.v));
    const auto& list = std::get<ValueList>(flags.v);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(std::get<EnumText>(list[0].v).text, "CHANNEL_STATE_CONNECTED");
    EXPECT_EQ(std::get<EnumText>(list[1].v).text, "CHANNEL_STATE_READ_SELECT");
    // no bit set: an empty list, not a null
    ASSERT_TRUE(std::holds_alternative<ValueList>(at("none").v));
    EXPECT_TRUE(std::get<ValueList>(at("none").v).empty());
    EXPECT_EQ(at("mode"), (Value{EnumText{"IPV4_ADDRESS"}, "enum", false}));
    EXPECT_EQ(at("name"), (Value{std::string("eth0"), "var_string", false}));
}

// Row forms ignore with_state and deliver is_default 0, present 1 under the prefix.
TEST_F(Leaf, RowFormsIgnoreWithState) {
    auto trk = db::make_record("cfg_dev_trk_bt_setlog_eol");
    db::set_bool(*trk, "bt_log_set", true);
    db::set_state(*trk, "bt_log_set", 1);
    void* ip = db::make_typed(db::Word::ip_address, "10.0.0.1");
    void* i32 = db::make_typed_int32(42);
    EXPECT_EQ(rsl_boolean_to_properties_perf(k_ctx, k_id, "b", props, db::handle(*trk, "bt_log_set"), 1, &err), 0);
    EXPECT_EQ(ip_address_to_properties_perf(k_ctx, k_id, "ip", props, ip, 1, &err), 0);
    EXPECT_EQ(int32_to_properties_perf(k_ctx, k_id, "n", props, i32, 1, &err), 0);
    EXPECT_EQ(int64_to_properties_perf(k_ctx, k_id, "wide", props, i32, 0, &err), 0);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(at("b"), (Value{true, "rsl_boolean", false}));
    EXPECT_EQ(to_text(at("ip")), "10.0.0.1");
    EXPECT_FALSE(at("ip").is_default);
    EXPECT_EQ(at("n"), (Value{int64_t(42), "int32", false}));
    EXPECT_EQ(at("wide"), (Value{int64_t(42), "int64", false}));
    // a scalar row without a value sets EINVAL
    EXPECT_EQ(u_int8_to_properties_perf(k_ctx, k_id, "u", props, nullptr, 0, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    db::destroy_typed(ip);
    db::destroy_typed(i32);
}

TEST_F(Leaf, DefaultComparisons) {
    void* any = db::make_typed(db::Word::ip_address, "0.0.0.0");
    void* one = db::make_typed(db::Word::ip_address, "0.0.0.1");
    void* v6 = db::make_typed(db::Word::ip_address, "::");
    void* text = db::make_typed_vstring("0.0.0.0");
    EXPECT_EQ(ip_address_is_default(k_ctx, k_id, any, "0.0.0.0", &err), 1);
    EXPECT_EQ(ip_address_is_default(k_ctx, k_id, one, "0.0.0.0", &err), 0);
    EXPECT_EQ(ip_address_is_default(k_ctx, k_id, v6, "0.0.0.0", &err), 0);   // family counts
    EXPECT_EQ(rsl_vstring_is_default(k_ctx, k_id, text, "0.0.0.0", &err), 1);
    EXPECT_EQ(rsl_vstring_is_default(k_ctx, k_id, text, "0.0.0.0 ", &err), 0);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(rsl_vstring_is_default(k_ctx, k_id, any, "0.0.0.0", &err), 0);   // not a string
    EXPECT_EQ(err, uint32_t(EINVAL));
    for (void* p : {any, one, v6, text}) db::destroy_typed(p);
}

TEST_F(Leaf, ElementConversions) {
    auto consumer = db::make_record("consumer");
    db::set_int(*consumer, "cid", 9);
    db::set_int(*consumer, "app_id", 300);
    void* u32 = db::make_typed(db::Word::u_int32, "70000");
    gx_do_vlist* list = gx_do_vlist_new();
    EXPECT_EQ(u_int8_to_vlist(k_ctx, k_id, list, 0, 1, db::handle(*consumer, "cid"), &err), 1);
    EXPECT_EQ(u_int16_to_vlist(k_ctx, k_id, list, 1, 1, db::handle(*consumer, "app_id"), &err), 2);
    EXPECT_EQ(u_int32_to_vlist(k_ctx, k_id, list, 0, 0, nullptr, &err), 3);
    EXPECT_EQ(u_int32_to_vlist(k_ctx, k_id, list, 0, 1, u32, &err), 4);
    EXPECT_EQ(err, 0u);
    auto values = vlist_values(list);
    ASSERT_EQ(values.size(), 4u);
    EXPECT_EQ(values[0], (Value{uint64_t(9), "u_int8", false}));
    EXPECT_EQ(values[1], (Value{uint64_t(300), "u_int16", true}));
    EXPECT_EQ(values[2], (Value{Null{}, "u_int32", false}));
    EXPECT_EQ(values[3], (Value{uint64_t(70000), "u_int32", false}));

    EXPECT_LT(u_int8_to_vlist(k_ctx, k_id, list, 0, 1, u32, &err), 0);   // wrong word
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    fault_fail_nth("gx_do_vlist_add_value", 1);
    EXPECT_LT(enum_to_vlist(k_ctx, k_id, list, 0, 1, "X", &err), 0);
    EXPECT_EQ(vlist_values(list).size(), 4u);
    gx_do_vlist_deref(list);
    db::destroy_typed(u32);
}

// Every leaf on a real cell of its own word, each holding an extreme or telling value: the
// full form delivers the value, its width and sign, the leaf word and the mark under the name
// given, in call order; the value-list and name-value forms keep all of that, and present 0
// gives a null and leaves the handle unread.
TEST_F(Leaf, FullVlistAndNvlistFormsOfEveryLeaf) {
    LeafCells c;
    auto& [consumer, counters, proxy, trk, mac, route, i32] = c;
    struct Case {
        int32_t (*full)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_properties*, int32_t, int32_t, const void*,
                        uint32_t*);
        int32_t (*vl)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist*, int32_t, int32_t, const void*, uint32_t*);
        int32_t (*nv)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_nvlist*, int32_t, int32_t, const void*, uint32_t*);
        const void* handle;
        const char* leaf;
        int32_t mark;
        decltype(Value::v) want;   // unused where `text` is given: compared as text
        const char* text;
    };
#define ZAN_FORMS(leaf) leaf##_to_properties, leaf##_to_vlist, leaf##_to_nvlist
    const Case cases[] = {
        {ZAN_FORMS(u_int8), db::handle(*consumer, "cid"), "u_int8", 0, uint64_t(255), nullptr},
        {ZAN_FORMS(u_int16), db::handle(*consumer, "app_id"), "u_int16", 1, uint64_t(65535), nullptr},
        {ZAN_FORMS(u_int64), db::handle(*counters, "byte_cnt"), "u_int64", 0, UINT64_MAX, nullptr},
        {ZAN_FORMS(rsl_vstring), db::handle(*proxy, "http_proxy_name"), "rsl_vstring", 0,
         std::string("proxy.example"), nullptr},
        {ZAN_FORMS(int16), db::handle(*proxy, "http_proxy_port"), "int16", 0, int64_t(-2), nullptr},
        {ZAN_FORMS(u_int32), db::handle(*proxy, "singleton_id"), "u_int32", 0, uint64_t(4000000000u), nullptr},
        {ZAN_FORMS(rsl_boolean), db::handle(*trk, "bt_log_set"), "rsl_boolean", 0, true, nullptr},
        {ZAN_FORMS(rsl_mac_addr), db::handle(*mac, "destination_mac_address"), "rsl_mac_addr", 0, {},
         "aa:bb:cc:00:11:22"},
        {ZAN_FORMS(ip_address), db::handle(*route, "addr"), "ip_address", 7, {}, "2001:db8::1"},
        {ZAN_FORMS(int32), i32, "int32", 0, int64_t(-7), nullptr},
    };
#undef ZAN_FORMS
    for (const Case& c : cases) {
        SCOPED_TRACE(c.leaf);
        const void* handle = c.handle;
        ASSERT_EQ(c.full(k_ctx, k_id, c.leaf, props, c.mark, 1, handle, &err), 0);
        EXPECT_EQ(err, 0u);
        const Value& full = at(c.leaf);
        if (c.text == nullptr) {
            EXPECT_EQ(full, (Value{c.want, c.leaf, c.mark != 0}));
        } else {
            EXPECT_EQ(to_text(full), c.text);
            EXPECT_EQ(full.leaf, c.leaf);
            EXPECT_EQ(full.is_default, c.mark != 0);
        }
        gx_do_vlist* list = gx_do_vlist_new();
        gx_do_nvlist* nvlist = gx_do_nvlist_new();
        EXPECT_EQ(c.vl(k_ctx, k_id, list, 1, 1, handle, &err), 1);
        EXPECT_EQ(c.vl(k_ctx, k_id, list, 0, 0, nullptr, &err), 2);
        EXPECT_EQ(c.nv(k_ctx, k_id, "k", nvlist, 1, 1, handle, &err), 1);
        EXPECT_EQ(c.nv(k_ctx, k_id, "n", nvlist, 0, 0, nullptr, &err), 2);
        EXPECT_EQ(err, 0u);
        const auto values = vlist_values(list);
        const auto items = nvlist_items(nvlist);
        ASSERT_EQ(values.size(), 2u);
        ASSERT_EQ(items.size(), 2u);
        // the list forms are given mark 1; the full form's value with that mark
        Value marked = full;
        marked.is_default = true;
        EXPECT_EQ(values[0], marked);
        EXPECT_EQ(items[0], (NamedValue{"k", marked}));
        EXPECT_EQ(values[1], (Value{Null{}, c.leaf, false}));
        EXPECT_EQ(items[1], (NamedValue{"n", Value{Null{}, c.leaf, false}}));
        // a pending error adds nothing and says so; a handle of another word is refused
        err = 5;
        EXPECT_EQ(c.vl(k_ctx, k_id, list, 0, 1, handle, &err), -1);
        EXPECT_EQ(c.nv(k_ctx, k_id, "k", nvlist, 0, 1, handle, &err), -1);
        err = 0;
        const void* other = c.handle == i32 ? db::handle(*consumer, "cid") : i32;
        EXPECT_LT(c.vl(k_ctx, k_id, list, 0, 1, other, &err), 0);
        EXPECT_EQ(err, uint32_t(EINVAL));
        err = 0;
        EXPECT_LT(c.nv(k_ctx, k_id, "k", nvlist, 0, 1, other, &err), 0);
        EXPECT_EQ(err, uint32_t(EINVAL));
        err = 0;
        EXPECT_LT(c.nv(k_ctx, k_id, nullptr, nvlist, 0, 1, handle, &err), 0);
        EXPECT_EQ(gx_do_vlist_get_len(list), 2);
        EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 2);
        gx_do_vlist_deref(list);
        gx_do_nvlist_deref(nvlist);
    }
    // delivery order is call order
    auto items = properties_items(props);
    ASSERT_EQ(items.size(), 10u);
    EXPECT_EQ(items.front().name, "u_int8");
    EXPECT_EQ(items.back().name, "int32");
}

// Pointer-given forms, the enumeration's entry and the whole-value rows of base types.
TEST_F(Leaf, GivenFormsAndBaseRows) {
    gx_do_vlist* list = gx_do_vlist_new();
    gx_do_vlist* names = gx_do_vlist_new();
    ASSERT_EQ(enum_to_vlist(k_ctx, k_id, names, 0, 1, "A", &err), 1);
    EXPECT_EQ(var_string_to_vlist(k_ctx, k_id, list, 0, 1, "Gi0/1", &err), 1);
    EXPECT_EQ(bits_to_vlist(k_ctx, k_id, list, 1, 1, names, &err), 2);
    EXPECT_EQ(bits_to_vlist(k_ctx, k_id, list, 0, 0, nullptr, &err), 3);
    EXPECT_EQ(err, 0u);
    EXPECT_LT(var_string_to_vlist(k_ctx, k_id, list, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    auto values = vlist_values(list);
    ASSERT_EQ(values.size(), 3u);
    EXPECT_EQ(values[0], (Value{std::string("Gi0/1"), "var_string", false}));
    EXPECT_EQ(values[1].leaf, "bits");
    EXPECT_TRUE(values[1].is_default);
    EXPECT_EQ(std::get<ValueList>(values[1].v).size(), 1u);
    EXPECT_EQ(values[2], (Value{Null{}, "bits", false}));

    gx_do_nvlist* nvlist = gx_do_nvlist_new();
    EXPECT_EQ(enum_to_nvlist(k_ctx, k_id, "e", nvlist, 0, 1, "ZAN_CFG_1", &err), 1);
    EXPECT_EQ(enum_to_nvlist(k_ctx, k_id, "e", nvlist, 0, 0, nullptr, &err), 2);
    EXPECT_LT(enum_to_nvlist(k_ctx, k_id, "e", nvlist, 0, 1, nullptr, &err), 0);
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 0;
    auto items = nvlist_items(nvlist);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0], (NamedValue{"e", Value{EnumText{"ZAN_CFG_1"}, "enum", false}}));

    // A base row adds the handle's value under the type's own word, whatever with_state says.
    void* u16 = db::make_typed(db::Word::u_int16, "7");
    void* ip = db::make_typed(db::Word::ip_address, "1.2.3.4");
    gx_do_vlist* rows = gx_do_vlist_new();
    EXPECT_EQ(u_int16_to_vlist_all(k_ctx, k_id, u16, rows, 1, &err), 1);
    EXPECT_EQ(counter64_to_vlist_all(k_ctx, k_id, u16, rows, 0, &err), 2);
    EXPECT_EQ(ip_address_to_vlist_all(k_ctx, k_id, ip, rows, 0, &err), 3);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(rsl_boolean_to_vlist_all(k_ctx, k_id, nullptr, rows, 0, &err), -1);
    EXPECT_EQ(err, uint32_t(EINVAL));
    EXPECT_EQ(u_int16_to_vlist_all(k_ctx, k_id, u16, rows, 0, &err), -1);  // pending error
    err = 0;
    EXPECT_EQ(u_int16_to_vlist_all(k_ctx, k_id, u16, nullptr, 0, &err), -1);
    values = vlist_values(rows);
    ASSERT_EQ(values.size(), 3u);
    EXPECT_EQ(values[0], (Value{uint64_t(7), "u_int16", false}));
    EXPECT_EQ(values[1], (Value{uint64_t(7), "counter64", false}));
    EXPECT_EQ(values[2].leaf, "ip_address");
    db::destroy_typed(u16);
    db::destroy_typed(ip);
    for (auto* l : {list, names, rows}) gx_do_vlist_deref(l);
    gx_do_nvlist_deref(nvlist);
}
