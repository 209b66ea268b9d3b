// What a row costs and what finding one costs: nested records take memory only once something
// is written into them (until then they answer as empty ones, through handles that stay put),
// and keyed lookups go through an index instead of comparing every row's key.
#include "db_test.hpp"

using namespace zan::db;
using namespace dbt;
using Bytes = std::vector<uint8_t>;

using Size = StoreTest;

namespace {

long records_now() { return live_counts().records; }
long compares_now() { return live_counts().key_compares; }

const void* get(const std::string& accessor, const void* obj) {
    uint32_t err = 0;
    const void* h = fn<GetFn>(accessor)(k_ctx, k_id, obj, &err);
    EXPECT_EQ(err, 0u) << accessor;
    return h;
}

}  // namespace

TEST_F(Size, ARowWithOneValueSetHoldsOneRecord) {
    // tbl_conf_mac_nacl_eol: four fields on top, 395 columns below them in nested records.
    const long before = records_now();
    Store store;
    Row& row = store.add("tbl_conf_mac_nacl_eol");
    Record& rec = *row_record(row);
    set_int(rec, "mac_ace_entry_number", 10);
    EXPECT_EQ(records_now() - before, 1) << "the unset nested records were made";

    // Reading them makes none: handles, values, state flags, variants, deeper records.
    const void* ace = get("conf_mac_nacl_eol_mac_ace_get", &rec);
    ASSERT_NE(ace, nullptr);
    EXPECT_EQ(ace, get("conf_mac_nacl_eol_mac_ace_get", &rec)) << "the handle moved";
    EXPECT_EQ(ace, handle(rec, "mac_ace"));
    EXPECT_EQ(rsl_get_instance_variant(ace, 1, 0), latest_variant());
    uint32_t err = 0;
    EXPECT_EQ(fn<ValueFn>("mac_nacl_descriminator_get_value")(k_ctx, k_id, ace, &err), 0u);
    EXPECT_EQ(fn<StateFn>("mac_nacl_descriminator_state_flag_get")(k_ctx, k_id, ace, &err), 2u);
    const void* stats = get("mac_nacl_mac_statistics_hw_get", ace);
    ASSERT_NE(stats, nullptr);
    EXPECT_EQ(fn<ValueFn>("mac_statistics_statistics_get_value")(k_ctx, k_id, stats, &err), 0u);
    EXPECT_EQ(get_int(rec, "mac_ace.mac_statistics_hw.statistics"), 0);
    EXPECT_EQ(get_state(rec, "parent_details.parent_key_conf_mac_nacl_mode_eol"), 2);
    EXPECT_EQ(get_text(rec, "parent_details.parent_key_conf_mac_nacl_mode_eol"), "");
    EXPECT_EQ(err, 0u);
    // A whole-tree variant reaches the records not made, through the handles given before.
    set_variant(rec, 5, true);
    EXPECT_EQ(rsl_get_instance_variant(ace, 1, 0), 5);
    EXPECT_EQ(rsl_get_instance_variant(handle(rec, "mac_ace.descriminator"), 1, 0), 5);
    EXPECT_EQ(records_now() - before, 1) << "reading made records";

    // A write makes the records on its way, and no other; the handle given before now
    // reads the written record.
    set_int(rec, "mac_ace.mac_statistics_hw.statistics", 1);
    EXPECT_EQ(records_now() - before, 3);
    EXPECT_EQ(fn<ValueFn>("mac_statistics_statistics_get_value")(k_ctx, k_id,
                                                                 get("mac_nacl_mac_statistics_hw_get", ace), &err),
              1u);
    EXPECT_EQ(rsl_get_instance_variant(handle(rec, "mac_ace.mac_statistics_hw"), 1, 0), 5);
    EXPECT_EQ(rsl_get_instance_variant(ace, 1, 0), 5);
    set_state(rec, "parent_details.parent_key_conf_mac_nacl_mode_eol", 1);
    EXPECT_EQ(records_now() - before, 4);

    // A value's handle given before its field is written stays the field's: it reads the
    // value, state flag and variant written later. So does the handle of a record not made
    // yet for the values written into it.
    const void* cmd = get("conf_mac_nacl_eol_mac_ace_cmd_get", &rec);
    const void* hw = handle(rec, "mac_ace.mac_statistics_hw.statistics");
    const void* arm = handle(rec, "mac_ace.action_cp");
    ASSERT_TRUE(value_of(cmd) && value_of(hw));
    EXPECT_EQ(std::get<std::string>(value_of(cmd)->v), "");
    set_text(rec, "mac_ace_cmd", "deny any any");
    set_value_variant(rec, "mac_ace_cmd", 7);
    set_int(rec, "mac_ace.mac_statistics_hw.statistics", 2);
    set_int(rec, "mac_ace.action_cp.action", 3);
    set_state(rec, "mac_ace.action_cp.action", 0);
    EXPECT_EQ(std::get<std::string>(value_of(cmd)->v), "deny any any");
    EXPECT_EQ(rsl_get_instance_variant(cmd, 1, 0), 7);
    EXPECT_EQ(std::get<int64_t>(value_of(hw)->v), 2);
    EXPECT_EQ(fn<ValueFn>("conf_mac_nacl_permitdeny_cp_action_get_value")(k_ctx, k_id, arm, &err), 3u);
    EXPECT_EQ(fn<StateFn>("conf_mac_nacl_permitdeny_cp_action_state_flag_get")(k_ctx, k_id, arm, &err), 0u);
    EXPECT_EQ(cmd, get("conf_mac_nacl_eol_mac_ace_cmd_get", &rec)) << "the handle moved";
}

TEST_F(Size, KeyedLookupsCompareAHandfulOfKeysWhateverTheTableSize) {
    constexpr int k_rows = 2000;
    Store store;
    const TableInfo& vrfs = *table_info("tbl_ci_vrf_eol");
    const TableInfo& afis = *table_info("tbl_ci_vrf_afi_mode_eol");
    std::vector<Row*> vrf_rows;
    for (int i = 0; i < k_rows; ++i) {
        Row& v = store.add("tbl_ci_vrf_eol");
        set_text(*row_record(v), "vrf_key_vrf_name", "vrf" + std::to_string(i));
        Row& a = store.add("tbl_ci_vrf_afi_mode_eol", &v);   // every VRF's family has key 1
        set_int(*row_record(a), "vrf_af_afi", 1);
        vrf_rows.push_back(&v);
    }
    const Bytes last = *key_bytes(Word::rsl_vstring, "vrf" + std::to_string(k_rows - 1));
    const Bytes one = *key_bytes(Word::u_int32, "1");
    ASSERT_EQ(store.find(vrfs, nullptr, last), vrf_rows.back());   // builds the indexes
    ASSERT_NE(store.find(afis, vrf_rows.back(), one), nullptr);

    struct Case {
        const char* what;
        std::function<bool()> lookup;
    };
    const Case cases[] = {
        {"last row by key", [&] { return store.find(vrfs, nullptr, last) == vrf_rows.back(); }},
        {"a missing key", [&] { return store.find(vrfs, nullptr, *key_bytes(Word::rsl_vstring, "nope")) == nullptr; }},
        {"key under one parent of many with the same key",
         [&] { return parent_of(*store.find(afis, vrf_rows[k_rows / 2], one)) == vrf_rows[k_rows / 2]; }},
        {"every row with a key shared by all parents", [&] { return store.with_key(afis, one).size() == k_rows; }},
        {"children of one parent", [&] { return store.children(afis, vrf_rows[7]).size() == 1; }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const long before = compares_now();
        EXPECT_TRUE(c.lookup());
        EXPECT_LE(compares_now() - before, 3);
    }

    // A key changed after the index was built is found under its new value only.
    set_text(*row_record(*vrf_rows[3]), "vrf_key_vrf_name", "renamed");
    EXPECT_EQ(store.find(vrfs, nullptr, *key_bytes(Word::rsl_vstring, "renamed")), vrf_rows[3]);
    EXPECT_EQ(store.find(vrfs, nullptr, *key_bytes(Word::rsl_vstring, "vrf3")), nullptr);
    // So is a row moved to another parent, and rows keep the order they were added in.
    Row& extra = store.add("tbl_ci_vrf_afi_mode_eol", vrf_rows[0]);
    set_int(*row_record(extra), "vrf_af_afi", 2);
    ASSERT_EQ(store.children(afis, vrf_rows[0]).size(), 2u);
    set_parent(extra, vrf_rows[1]);
    EXPECT_EQ(store.children(afis, vrf_rows[0]).size(), 1u);
    const auto under = store.children(afis, vrf_rows[1]);
    ASSERT_EQ(under.size(), 2u);
    EXPECT_EQ(under.back(), &extra);
    EXPECT_LT(Store::order_of(*under.front()), Store::order_of(*under.back()));
    EXPECT_EQ(store.find(afis, vrf_rows[1], *key_bytes(Word::u_int32, "2")), &extra);
}
