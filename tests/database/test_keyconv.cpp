// Key value conversion: a key's value to the stored form of a key field, and to the typed
// objects of compound key parts; failures, the error word, and memory.
#include <array>

#include "db_test.hpp"

using namespace zan::db;
using namespace dbt;
using Bytes = std::vector<uint8_t>;
namespace plat = zan::plat;

namespace {

// A key value as a path's key list holds it, reached through the data objects.
class KeyValue {
public:
    explicit KeyValue(plat::Value v) : list_(gx_do_nvlist_new()) {
        plat::nvlist_add(list_, "k", std::move(v));
        gx_do_iter it;
        gx_do_iter_prepare(&it);
        gx_do_nvlist_iter(list_, &it);
        value_ = gx_do_nvlist_item_get_value(gx_do_nvlist_get_next(&it));
    }
    explicit KeyValue(std::string text) : KeyValue(plat::Value{text, "", false}) {}
    explicit KeyValue(const char* text) : KeyValue(std::string(text)) {}
    ~KeyValue() { gx_do_nvlist_deref(list_); }
    gx_do_value* get() const { return value_; }

private:
    gx_do_nvlist* list_;
    gx_do_value* value_ = nullptr;
};

const uint8_t* key_luid(std::string_view table) { return table_info(table)->key_luid; }
const uint8_t* type_luid(const char* type) { return static_cast<const uint8_t*>(sym(std::string("type_") + type + "_luid")); }

struct Converted {
    std::optional<Bytes> bytes;   // nullopt: data was NULL
    uint32_t len = 0;
    uint32_t err = 0;
};

Converted convert(const KeyValue& v, const uint8_t* luid, uint32_t err = 0) {
    Converted c;
    c.err = err;
    void* data = reinterpret_cast<void*>(uintptr_t(1));   // must be overwritten
    c.len = 99;
    arbor_fe_gx_rsltype_get_data(k_ctx, k_id, 0, 0, v.get(), luid, &data, &c.len, &c.err);
    if (data) {
        auto* p = static_cast<const uint8_t*>(data);
        c.bytes = Bytes(p, p + c.len);
        __tallow_free(data);
    }
    return c;
}

Bytes ip4(std::array<uint8_t, 4> b) { return Bytes{4, b[0], b[1], b[2], b[3]}; }

}  // namespace

using KeyConversion = StoreTest;

TEST_F(KeyConversion, EveryKeyWordGivesItsStoredForm) {
    struct Case {
        const char* table;
        const char* text;
        Bytes bytes;
    } cases[] = {
        {"tbl_uidb_act_interface", "258", {2, 1, 0, 0}},                       // u_int32
        {"tbl_uidb_act_interface", "4294967295", {0xff, 0xff, 0xff, 0xff}},
        {"tbl_ci_vrf_afi_mode_eol", "0x10", {16, 0, 0, 0}},
        {"tbl_ntp_trusted_key_eol", "-2", {0xfe, 0xff, 0xff, 0xff}},            // int32
        {"tbl_ipv6_ace", "2147483647", {0xff, 0xff, 0xff, 0x7f}},
        {"tbl_ci_vrf_eol", "red", {'r', 'e', 'd'}},                            // rsl_vstring
        {"tbl_ci_vrf_eol", " a b ", {' ', 'a', ' ', 'b', ' '}},                // kept as it is
        {"tbl_ntp_peer_eol", "10.0.0.1", {'1', '0', '.', '0', '.', '0', '.', '1'}},
        {"tbl_ip_helpaddr", "192.0.2.255", ip4({192, 0, 2, 255})},             // ip_address
        {"tbl_ip_helpaddr", "2001:db8::1",
         {6, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}},
        {"tbl_ntp_source_eol", "1", {1, 0, 0, 0}},                             // singleton
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.table) + " " + c.text);
        Converted r = convert(KeyValue(c.text), key_luid(c.table));
        EXPECT_EQ(r.err, 0u);
        EXPECT_EQ(r.bytes, c.bytes);
        EXPECT_EQ(r.len, c.bytes.size());
    }
}

TEST_F(KeyConversion, TheFormMatchesTheRowKeyOfEveryTable) {
    // What a path's key converts to is what the store compares rows by, and what the store
    // makes of the same text.
    for (const TableInfo* t : tables()) {
        if (t->key_kind == KeyKind::compound) continue;
        SCOPED_TRACE(std::string(t->name));
        RowPtr row = make_row(t->name);
        std::string text = t->key_word == Word::rsl_vstring ? "k-1" : t->key_word == Word::ip_address ? "fe80::7" : "77";
        set_from_text(*row_record(*row), t->key_name, text);
        Converted r = convert(KeyValue(text), t->key_luid);
        ASSERT_EQ(r.err, 0u);
        EXPECT_EQ(r.bytes, row_key(*row));
        EXPECT_EQ(key_bytes(t->key_word, text), row_key(*row));
    }
}

TEST_F(KeyConversion, TypedValuesConvertByTheFieldsWord) {
    EXPECT_EQ(convert(KeyValue(plat::Value{int64_t(-7), "int32", false}), key_luid("tbl_ipv6_ace")).bytes,
              (Bytes{0xf9, 0xff, 0xff, 0xff}));
    EXPECT_EQ(convert(KeyValue(plat::Value{uint64_t(9), "u_int32", false}), key_luid("tbl_uidb_act_interface")).bytes,
              (Bytes{9, 0, 0, 0}));
    EXPECT_EQ(convert(KeyValue(plat::Value{*plat::parse_ip("10.1.2.3"), "ip_address", false}),
                      key_luid("tbl_ip_helpaddr"))
                  .bytes,
              ip4({10, 1, 2, 3}));
    Converted neg = convert(KeyValue(plat::Value{int64_t(-1), "int32", false}), key_luid("tbl_uidb_act_interface"));
    EXPECT_EQ(neg.err, 22u);
    EXPECT_FALSE(neg.bytes);
    EXPECT_EQ(convert(KeyValue(plat::Value{plat::Null{}, "", false}), key_luid("tbl_ci_vrf_eol")).err, 22u);
}

TEST_F(KeyConversion, ValuesThatDoNotConvertSetEinvalAndYieldNothing) {
    uint8_t unknown[16] = {0xde, 0xad};
    struct Case {
        const char* text;
        const uint8_t* luid;
    } cases[] = {
        {"abc", key_luid("tbl_ntp_trusted_key_eol")},
        {"abc", key_luid("tbl_uidb_act_interface")},
        {"12x", key_luid("tbl_ntp_trusted_key_eol")},
        {"", key_luid("tbl_uidb_act_interface")},
        {"-1", key_luid("tbl_uidb_act_interface")},
        {"4294967296", key_luid("tbl_uidb_act_interface")},
        {"2147483648", key_luid("tbl_ntp_trusted_key_eol")},
        {"-2147483649", key_luid("tbl_ntp_trusted_key_eol")},
        {"99999999999999999999999", key_luid("tbl_ipv6_ace")},
        {"10.0.0", key_luid("tbl_ip_helpaddr")},
        {"10.0.0.256", key_luid("tbl_ip_helpaddr")},
        {"2001:db8:::1", key_luid("tbl_ip_helpaddr")},
        {"red", key_luid("tbl_ip_helpaddr")},
        {"red", unknown},
        {"red", nullptr},
        // A compound key's field is a record, not a value.
        {"x", key_luid("tbl_ip_dhcp_svr")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Converted r = convert(KeyValue(c.text), c.luid);
        EXPECT_EQ(r.err, 22u);
        EXPECT_FALSE(r.bytes);
        EXPECT_EQ(r.len, 0u);
    }
}

TEST_F(KeyConversion, AnErrorWordAlreadySetIsKeptAndNothingIsMade) {
    Converted bad = convert(KeyValue("abc"), key_luid("tbl_uidb_act_interface"), 5);
    EXPECT_EQ(bad.err, 5u);
    Converted good = convert(KeyValue("7"), key_luid("tbl_uidb_act_interface"), 5);
    EXPECT_EQ(good.err, 5u);
    EXPECT_FALSE(good.bytes);
    EXPECT_EQ(good.len, 0u);

    uint32_t err = 34;
    KeyValue v("10.0.0.1");
    EXPECT_EQ(arbor_fe_gx_rsltype_get_rsl_obj(k_ctx, k_id, 0, 0, v.get(), type_luid("ip_address"), &err), nullptr);
    EXPECT_EQ(err, 34u);
}

TEST_F(KeyConversion, EmptyTextKeyHasMemoryOfItsOwn) {
    uint32_t err = 0, len = 5;
    void* data = nullptr;
    KeyValue v("");
    arbor_fe_gx_rsltype_get_data(k_ctx, k_id, 0, 1, v.get(), key_luid("tbl_ci_vrf_eol"), &data, &len, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_NE(data, nullptr);
    EXPECT_EQ(len, 0u);
    __tallow_free(data);
}

TEST_F(KeyConversion, AllocationFailureSetsEnomem) {
    plat::alloc_fail_nth(1);
    Converted r = convert(KeyValue("red"), key_luid("tbl_ci_vrf_eol"));
    EXPECT_EQ(r.err, 12u);
    EXPECT_FALSE(r.bytes);
}

TEST_F(KeyConversion, TypedObjectsForCompoundKeyParts) {
    uint32_t err = 0;
    auto obj = [&](const char* type, plat::Value v) {
        KeyValue kv(std::move(v));
        return arbor_fe_gx_rsltype_get_rsl_obj(k_ctx, k_id, 0, 1, kv.get(), type_luid(type), &err);
    };
    auto text = [](const char* s) { return plat::Value{std::string(s), "", false}; };

    void* s = obj("rsl_vstring", text("blue"));
    void* a4 = obj("ip_address", text("10.9.8.7"));
    void* a6 = obj("ip_address", text("2001:db8::5"));
    void* n = obj("int32", text("-4739"));
    void* ip_typed = obj("ip_address", plat::Value{*plat::parse_ip("10.0.0.2"), "ip_address", false});
    ASSERT_EQ(err, 0u);
    EXPECT_EQ(cell_of(s)->word, Word::rsl_vstring);
    EXPECT_EQ(cell_of(s)->text, "blue");
    EXPECT_EQ(key_bytes(*cell_of(a4)), ip4({10, 9, 8, 7}));
    EXPECT_EQ(cell_of(a6)->ip, *plat::parse_ip("2001:db8::5"));
    EXPECT_EQ(cell_of(n)->word, Word::int32);
    EXPECT_EQ(cell_of(n)->num.i32, -4739);
    EXPECT_EQ(cell_of(ip_typed)->ip, *plat::parse_ip("10.0.0.2"));
    rsl_vstring_destroy(k_ctx, k_id, s);
    ip_address_destroy(k_ctx, k_id, a4);
    ip_address_destroy(k_ctx, k_id, a6);
    int32_destroy(k_ctx, k_id, n);
    ip_address_destroy(k_ctx, k_id, ip_typed);
    EXPECT_EQ(bad_releases_since(), 0);

    uint8_t unknown[16] = {1};
    for (auto [type, value] : {std::pair{"int32", "abc"}, {"int32", "2147483648"}, {"ip_address", "300.1.1.1"},
                               {"ip_address", "blue"}}) {
        SCOPED_TRACE(std::string(type) + " " + value);
        err = 0;
        EXPECT_EQ(obj(type, text(value)), nullptr);
        EXPECT_EQ(err, 22u);
    }
    err = 0;
    KeyValue kv("x");
    EXPECT_EQ(arbor_fe_gx_rsltype_get_rsl_obj(k_ctx, k_id, 0, 0, kv.get(), unknown, &err), nullptr);
    EXPECT_EQ(err, 22u);
}
