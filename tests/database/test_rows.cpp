// Rows and their accessors, stored key forms, compound key records, typed objects, the
// path interface of the store, and readers on many threads.
#include <thread>

#include "db_test.hpp"

using namespace zan::db;
using namespace dbt;
using Bytes = std::vector<uint8_t>;

using Rows = StoreTest;

TEST_F(Rows, EveryTableRowYieldsItsTopRecordsThroughItsAccessors) {
    for (const TableInfo* t : tables()) {
        SCOPED_TRACE(std::string(t->name));
        RowPtr row = make_row(t->name);
        ASSERT_EQ(&table_of(*row), t);
        for (size_t i = 0; i < t->rows.size(); ++i) {
            auto get = fn<RowFn>(std::string(t->name) + "_" + std::string(t->rows[i]->name) + "_get_field");
            const void* rec = get(k_ctx, k_id, row.get());
            ASSERT_EQ(rec, row_record(*row, i));
            EXPECT_EQ(&type_of(*static_cast<const Record*>(rec)), t->rows[i]);
        }
    }
}

TEST_F(Rows, ARowIsOnlyReadByItsOwnTablesAccessor) {
    RowPtr peer = make_row("tbl_ntp_peer_eol");
    RowPtr src = make_row("tbl_ntp_source_eol");
    auto get = fn<RowFn>("tbl_ntp_peer_eol_ntp_peer_eol_get_field");
    EXPECT_EQ(get(k_ctx, k_id, src.get()), nullptr);
    EXPECT_EQ(get(k_ctx, k_id, nullptr), nullptr);
    EXPECT_EQ(get(k_ctx, k_id, row_record(*peer)), nullptr);   // a record is no row
    drop_row_record(*peer, 0);
    EXPECT_EQ(get(k_ctx, k_id, peer.get()), nullptr);
    EXPECT_TRUE(row_key(*peer).empty());
    // A second entrance's name gives a row of its table.
    RowPtr ace = make_row("tbl_conf_ip_nacl_ext_eol_final_b");
    EXPECT_EQ(table_of(*ace).name, "tbl_conf_ip_nacl_ext_eol_final");
    EXPECT_NE(fn<RowFn>("tbl_conf_ip_nacl_ext_eol_final_conf_ip_nacl_ext_eol_final_get_field")(k_ctx, k_id, ace.get()),
              nullptr);
}

TEST_F(Rows, StoredKeyFormsPerWord) {
    EXPECT_EQ(key_bytes(Word::u_int32, "258"), (Bytes{2, 1, 0, 0}));
    EXPECT_EQ(key_bytes(Word::int32, "-2"), (Bytes{0xfe, 0xff, 0xff, 0xff}));
    EXPECT_EQ(key_bytes(Word::rsl_vstring, "ab"), (Bytes{'a', 'b'}));
    EXPECT_EQ(key_bytes(Word::ip_address, "10.0.0.1"), (Bytes{4, 10, 0, 0, 1}));
    EXPECT_EQ(key_bytes(Word::ip_address, "::1")->size(), 17u);
    EXPECT_EQ(key_bytes(Word::u_int32, "-1"), std::nullopt);
    EXPECT_EQ(key_bytes(Word::int32, "2147483648"), std::nullopt);
    EXPECT_EQ(key_bytes(Word::ip_address, "10.0.0"), std::nullopt);
    EXPECT_EQ(key_bytes(Word::u_int32, "12x"), std::nullopt);
}

TEST_F(Rows, TheStoreFindsRowsByParentAndKey) {
    Store store;
    Row& pool_a = store.add("tbl_cfg_ip_dhcp_pool_eol");
    Row& pool_b = store.add("tbl_cfg_ip_dhcp_pool_eol");
    set_text(*row_record(pool_a), "dhcp_pool_name", "a");
    set_text(*row_record(pool_b), "dhcp_pool_name", "b");
    Row& net_a = store.add("tbl_dhcp_pool_network", &pool_a);
    Row& net_b = store.add("tbl_dhcp_pool_network", &pool_b);
    set_int(*row_record(net_a), "singleton_id", 1);
    set_int(*row_record(net_b), "singleton_id", 1);
    const TableInfo& pools = *table_info("tbl_cfg_ip_dhcp_pool_eol");
    const TableInfo& nets = *table_info("tbl_dhcp_pool_network");
    EXPECT_EQ(store.find(pools, nullptr, *key_bytes(Word::rsl_vstring, "b")), &pool_b);
    EXPECT_EQ(store.find(pools, nullptr, *key_bytes(Word::rsl_vstring, "c")), nullptr);
    Bytes one = *key_bytes(Word::u_int32, "1");
    EXPECT_EQ(store.find(nets, &pool_b, one), &net_b);
    EXPECT_EQ(store.find(nets, &pool_a, one), &net_a);
    EXPECT_EQ(parent_of(net_b), &pool_b);
    EXPECT_EQ(store.rows(nets).size(), 2u);
    EXPECT_EQ(store.size(), 4u);
    store.clear();
    EXPECT_TRUE(store.rows(pools).empty());
}

namespace {

struct KeyOps {
    CreateFn create;
    LenFn len;
    MarshalFn marshal;
    DestroyFn destroy;
    explicit KeyOps(const std::string& k)
        : create(fn<CreateFn>(k + "_create")), len(fn<LenFn>(k + "_len")), marshal(fn<MarshalFn>(k + "_marshal")),
          destroy(fn<DestroyFn>(k + "_destroy")) {}
    Bytes bytes(void* rec, uint32_t* err) const {
        Bytes b(len(k_ctx, k_id, rec));
        b.resize(marshal(k_ctx, k_id, b.data(), rec, uint32_t(b.size()), err));
        return b;
    }
};

// Sets a field of a key record from a fresh typed object, as the compound query traverser does.
uint32_t set_part(const std::string& setter, void* rec, void* obj, DestroyFn release) {
    uint32_t err = 0;
    fn<SetFn>(setter)(k_ctx, k_id, rec, obj, &err);
    release(k_ctx, k_id, obj);
    return err;
}

}  // namespace

TEST_F(Rows, CompoundKeyFormDoesNotDependOnTheOrderOfSetting) {
    KeyOps ops("threat_visibility_ip_export_key");
    auto ip = fn<DestroyFn>("ip_address_destroy");
    auto i32 = fn<DestroyFn>("int32_destroy");
    auto vs = fn<DestroyFn>("rsl_vstring_destroy");
    const std::string k = "threat_visibility_ip_export_key_";
    void* a = ops.create(k_ctx, k_id);
    void* b = ops.create(k_ctx, k_id);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(set_part(k + "export_address_set", a, make_typed(Word::ip_address, "192.0.2.1"), ip), 0u);
    EXPECT_EQ(set_part(k + "valid_port_number_set", a, make_typed_int32(2055), i32), 0u);
    EXPECT_EQ(set_part(k + "vrf_name_set", a, make_typed_vstring("red"), vs), 0u);
    EXPECT_EQ(set_part(k + "vrf_name_set", b, make_typed_vstring("red"), vs), 0u);
    EXPECT_EQ(set_part(k + "valid_port_number_set", b, make_typed(Word::int32, "2055"), i32), 0u);
    EXPECT_EQ(set_part(k + "export_address_set", b, make_typed_ip(*zan::plat::parse_ip("192.0.2.1")), ip), 0u);
    uint32_t err = 0;
    Bytes ka = ops.bytes(a, &err), kb = ops.bytes(b, &err);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(ka, kb);
    EXPECT_EQ(ka, (Bytes{4, 192, 0, 2, 1, 0x07, 0x08, 0, 0, 3, 0, 0, 0, 'r', 'e', 'd'}));
    // The same key on a row of the table.
    RowPtr row = make_row("tbl_threat_visibility_ip_export");
    set_ip(*row_record(*row, 0), "export_address", "192.0.2.1");
    set_int(*row_record(*row, 0), "valid_port_number", 2055);
    set_text(*row_record(*row, 0), "vrf_name", "red");
    EXPECT_EQ(row_key(*row), ka);
    // Too small a buffer.
    uint8_t small[4];
    EXPECT_EQ(ops.marshal(k_ctx, k_id, small, a, sizeof small, &err), 0u);
    EXPECT_EQ(err, 28u);
    ops.destroy(k_ctx, k_id, a);
    ops.destroy(k_ctx, k_id, b);
}

TEST_F(Rows, KeyRecordSettersRefuseWhatDoesNotFit) {
    KeyOps ops("ip_dhcp_svr");
    void* rec = ops.create(k_ctx, k_id);
    auto set_vrf = fn<SetFn>("ip_dhcp_svr_vrf_name_set");
    void* number = make_typed_int32(5);
    uint32_t err = 0;
    set_vrf(k_ctx, k_id, rec, number, &err);   // an int32 into an rsl_vstring field
    EXPECT_EQ(err, 22u);
    err = 0;
    set_vrf(k_ctx, k_id, rec, nullptr, &err);
    EXPECT_EQ(err, 22u);
    RecordPtr plain = make_record("ip_dhcp_svr");   // not made by ip_dhcp_svr_create
    err = 0;
    void* text = make_typed_vstring("v");
    set_vrf(k_ctx, k_id, plain.get(), text, &err);
    EXPECT_EQ(err, 22u);
    EXPECT_EQ(ops.len(k_ctx, k_id, plain.get()), 0u);
    err = 0;
    zan::plat::fault_fail_nth("accessor", 1);
    set_vrf(k_ctx, k_id, rec, text, &err);
    EXPECT_EQ(err, 5u);
    // A typed object released through another kind's operation is freed and counted.
    fn<DestroyFn>("ip_address_destroy")(k_ctx, k_id, number);
    EXPECT_EQ(bad_releases_since(), 1);
    fn<DestroyFn>("rsl_vstring_destroy")(k_ctx, k_id, text);
    fn<DestroyFn>("rsl_vstring_destroy")(k_ctx, k_id, nullptr);
    ops.destroy(k_ctx, k_id, plain.get());   // refused: not a key record
    EXPECT_EQ(bad_releases_since(), 2);
    ops.destroy(k_ctx, k_id, rec);
}

TEST_F(Rows, KeyRecordsComeFromThePlatformAllocator) {
    KeyOps ops("ip_dhcp_svr");
    long before = zan::plat::alloc_live();
    tallow_set_callsite_tag(0x1862f4aa);
    void* rec = ops.create(k_ctx, k_id);
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(zan::plat::alloc_live(), before + 1);
    EXPECT_EQ(live_counts().key_records, 1);
    ops.destroy(k_ctx, k_id, rec);
    EXPECT_EQ(zan::plat::alloc_live(), before);
    zan::plat::alloc_fail_nth(1);
    EXPECT_EQ(ops.create(k_ctx, k_id), nullptr);
}

TEST_F(Rows, PathsNameFieldsDownTheRecord) {
    RecordPtr r = make_record("ntp_peer_eol");
    set_enum(*r, "compound_0.peer_or_server.descriminator", "ZAN_CFG_1");
    EXPECT_EQ(get_int(*r, "compound_0.peer_or_server.descriminator"), 2);
    set_from_text(*r, "compound_0.peer_or_server.compound_67.ntp_server", "-5");
    EXPECT_EQ(get_int(nested(*r, "compound_0.peer_or_server.compound_67"), "ntp_server"), -5);
    set_ip(*r, "compound_0.compound_2.compound_58.ntp_peer_v6addr", "2001:db8::1");
    EXPECT_EQ(zan::plat::format_ip(get_ip(*r, "compound_0.compound_2.compound_58.ntp_peer_v6addr")), "2001:db8::1");
    set_from_text(*r, "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle", "0x10");
    EXPECT_EQ(get_int(*r, "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle"), 16);

    auto message = [&](auto&& f) {
        try {
            f();
        } catch (const Error& e) {
            return std::string(e.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(message([&] { set_int(*r, "compound_0.nope.x", 1); }),
              "ntp_peer_eol: 'compound_0.nope.x': no field 'nope' in ntp_peer_cp_cp");
    EXPECT_NE(message([&] { set_int(*r, "peer_server_key", 1); }).find("does not fit rsl_vstring"), std::string::npos);
    EXPECT_NE(message([&] { set_int(*r, "compound_0.compound_12.compound_15.ntp_peer_source_if_37.handle", -1); })
                  .find("does not fit u_int32"),
              std::string::npos);
    EXPECT_NE(message([&] { set_enum(*r, "compound_0.descriminator", "ZAN_CFG_22"); }).find("is no value"),
              std::string::npos);
    EXPECT_NE(message([&] { nested(*r, "peer_server_key"); }).find("holds no record"), std::string::npos);
    EXPECT_NE(message([] { make_record("tbl_ntp_peer_eol"); }).find("unknown type"), std::string::npos);
    EXPECT_NE(message([] { make_record("int32"); }).find("is not a record type"), std::string::npos);

    RecordPtr node = make_record("om_node");
    set_from_text(*node, "attr_flag", "OM_NODE_FLAG_REMOVE|OM_NODE_FLAG_ACK_REQ");
    EXPECT_EQ(get_int(*node, "attr_flag"), 0b101);
    set_from_text(*node, "obj_type", "OBJ_BFD");
    EXPECT_EQ(get_int(*node, "obj_type"), 1);
    append(*node, "cl");
    set_int(*node, "cl[0].cid", 9);
    EXPECT_EQ(get_int(nested(*node, "cl[0]"), "cid"), 9);
    EXPECT_NE(message([&] { set_int(*node, "cl[1].cid", 9); }).find("has 1 elements"), std::string::npos);
    RecordPtr name = make_record("acl_handle");
    set_from_text(*name, "name", "acl-7");
    EXPECT_EQ(get_int(*name, "name_len"), 5);
    RecordPtr ports = make_record("ipv6_src_port_equal");
    set_from_text(*ports, "src_equal_ports", "[80, 443]");
    EXPECT_EQ(get_array(*ports, "src_equal_ports"), (std::vector<uint64_t>{80, 443}));
    EXPECT_EQ(get_int(*ports, "num_ports"), 2);
}

TEST_F(Rows, ReadersOnManyThreadsSeeTheSameRows) {
    Store store;
    constexpr int k_rows = 64;
    for (int i = 0; i < k_rows; ++i) {
        Row& row = store.add("tbl_ntp_peer_eol");
        set_text(*row_record(row), "peer_server_key", "peer-" + std::to_string(i));
        set_int(*row_record(row), "compound_0.peer_or_server.compound_67.ntp_server", i);
    }
    const TableInfo& t = *table_info("tbl_ntp_peer_eol");
    auto row_get = fn<RowFn>("tbl_ntp_peer_eol_ntp_peer_eol_get_field");
    auto top = fn<GetFn>("ntp_peer_eol_compound_0_get");
    auto pos = fn<GetFn>("ntp_peer_cp_cp_peer_or_server_get");
    auto arm = fn<GetFn>("ntp_peer_cp_compound_67_get");
    auto server = fn<ValueFn>("ntp_peer_cp_1_cp_ntp_server_get_value");
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int n = 0; n < 4; ++n)
        readers.emplace_back([&] {
            for (int pass = 0; pass < 50; ++pass)
                for (int i = 0; i < k_rows; ++i) {
                    const Row* row = store.find(t, nullptr, *key_bytes(Word::rsl_vstring, "peer-" + std::to_string(i)));
                    uint32_t err = 0;
                    const void* rec = row_get(k_ctx, k_id, row);
                    const void* leaf = arm(k_ctx, k_id, pos(k_ctx, k_id, top(k_ctx, k_id, rec, &err), &err), &err);
                    if (server(k_ctx, k_id, leaf, &err) != uint32_t(i) || err || !type_info("ntp_peer_cp") ||
                        zan_config_db_table_mrst_lookup("tbl_ntp_peer_eol") != t.row)
                        ++wrong;
                }
        });
    for (auto& th : readers) th.join();
    EXPECT_EQ(wrong.load(), 0);
}
