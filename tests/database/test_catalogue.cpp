// The database names of every table and type, the two numberings and their lookups,
// identifiers, and the table tree as the infos give it.
#include <cstring>
#include <set>

#include "db_test.hpp"
#include "zan_fe.h"

using namespace zan::db;
using namespace dbt;

namespace {

std::string name_prefix(const TypeInfo& t) {
    return t.category == Category::enumeration ? "enum_" : t.category == Category::flags ? "flag_" : "type_";
}

}  // namespace

TEST(Names, EveryTableHasItsNameIdentifierVectorAndAccessors) {
    ASSERT_EQ(tables().size(), 329u);
    for (const TableInfo* t : tables()) {
        std::string x(t->name);
        SCOPED_TRACE(x);
        auto* name = static_cast<const char*>(sym("table_" + x + "_name"));
        ASSERT_NE(name, nullptr);
        EXPECT_STREQ(name, x.c_str());
        EXPECT_EQ(sym("table_" + x + "_luid"), t->luid);
        auto* vft = static_cast<const zan_field_vft*>(sym(x + "_table_field_vft"));
        ASSERT_NE(vft, nullptr);
        EXPECT_EQ(vft, t->vft);
        EXPECT_EQ(vft->name, name);
        EXPECT_EQ(vft->luid, t->luid);
        EXPECT_EQ(reinterpret_cast<void*>(vft->get_field), sym(x + "_get_field"));
        for (const TypeInfo* row : t->rows) { EXPECT_NE(sym(x + "_" + std::string(row->name) + "_get_field"), nullptr); }
    }
}

TEST(Names, SecondEntrancesHaveNoNamesOfTheirOwnButUseTheirTables) {
    int seen = 0;
    for (const TableInfo* p : positions()) {
        if (!p->second_entrance) continue;
        ++seen;
        std::string x(p->name);
        EXPECT_EQ(sym("table_" + x + "_name"), nullptr);
        EXPECT_EQ(sym(x + "_table_field_vft"), nullptr);
        EXPECT_EQ(zan_config_db_table_mrst_lookup(x.c_str()), -1);
        EXPECT_EQ(p->row, -1);
        EXPECT_EQ(p->vft, p->table->vft);
        EXPECT_EQ(p->luid, p->table->luid);
        EXPECT_EQ(p->key_field, p->table->key_field);
        EXPECT_EQ(std::string(p->table->name) + "_b", x);
    }
    EXPECT_EQ(seen, 2);
    const TableInfo* b = table_info("tbl_conf_ip_nacl_ext_eol_final_b");
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->path, (std::vector<std::string_view>{"acl_extended_named", "ace_named"}));
    EXPECT_EQ(b->key_field, "key conf_ip_nacl_ext_eol_final_acl_entry_number");
    EXPECT_EQ(table_info("tbl_ci_vrf_mode_rt_eol_b")->key_field, "key ci_vrf_mode_rt_eol_vrf_mode_rt_key");
}

TEST(Names, EveryNamedTypeHasItsNameIdentifierAndVector) {
    ASSERT_EQ(types().size(), 1058u);
    for (const TypeInfo* t : types()) {
        std::string n(t->name);
        SCOPED_TRACE(n);
        auto* name = static_cast<const char*>(sym(name_prefix(*t) + n + "_name"));
        ASSERT_NE(name, nullptr);
        EXPECT_STREQ(name, n.c_str());
        EXPECT_EQ(sym("type_" + n + "_luid"), t->luid);
        auto* vft = static_cast<const zan_field_vft*>(sym("zan_" + n + "_field_vft"));
        ASSERT_NE(vft, nullptr);
        EXPECT_EQ(vft->name, name);
        EXPECT_EQ(vft->luid, t->luid);
        ASSERT_NE(vft->get_field, nullptr);
        if (t->category == Category::enumeration) { EXPECT_NE(sym(n + "_get_value"), nullptr); }
        if (t->category == Category::flags) { EXPECT_NE(sym(n + "_get_value"), nullptr); }
    }
    for (const char* l : {"type_rsl_vstring_luid", "type_ip_address_luid", "type_int32_luid"}) { EXPECT_NE(sym(l), nullptr); }
}

TEST(Numbering, TypeSlotsRoundTripAndMatchTheTypeTable) {
    const zan_db_type_lut& lut = zan_config_db_type_dispatch_type_lut;
    ASSERT_EQ(lut.count, 1129u);
    ASSERT_EQ(type_slot_count(), 1129);
    int empty = 0;
    for (int i = 0; i < 1129; ++i) {
        const TypeInfo* t = type_at(i);
        const zan_db_type_lut_row& row = lut.rows[i];
        if (!t) {
            ++empty;
            EXPECT_EQ(row.name, nullptr);
            EXPECT_EQ(row.vft, nullptr);
            EXPECT_EQ(zan_config_db_type_dispatch_type_mrst_lookup(unused_type_name(i).c_str()), i);
            continue;
        }
        EXPECT_EQ(t->slot, i);
        EXPECT_STREQ(row.name, std::string(t->name).c_str());
        EXPECT_EQ(row.luid, t->luid);
        EXPECT_EQ(row.vft, t->vft);
        EXPECT_EQ(zan_config_db_type_dispatch_type_mrst_lookup(row.name), i);
    }
    EXPECT_EQ(empty, 71);
    EXPECT_EQ(type_at(0)->name, "T_ci_ipv6_address_prefix_cp");
    EXPECT_EQ(type_at(26), nullptr);
    EXPECT_EQ(type_at(1128)->name, "vrf_name");
    EXPECT_EQ(zan_config_db_type_dispatch_type_mrst_lookup("zan_unused_type_411"), 411);
    EXPECT_LT(zan_config_db_type_dispatch_type_mrst_lookup("no_such_type"), 0);
    EXPECT_LT(zan_config_db_type_dispatch_type_mrst_lookup("type_vrf_name"), 0);   // bare names only
    EXPECT_LT(zan_config_db_type_dispatch_type_mrst_lookup(nullptr), 0);
}

TEST(Numbering, TableRowsRoundTripWithTwoEmptyRows) {
    ASSERT_EQ(table_row_count(), 331);
    std::vector<int> empty;
    for (int i = 0; i < 331; ++i) {
        const TableInfo* t = table_at(i);
        if (!t) {
            empty.push_back(i);
            EXPECT_EQ(zan_config_db_table_mrst_lookup(unused_table_name(i).c_str()), i);
            continue;
        }
        EXPECT_EQ(t->row, i);
        EXPECT_EQ(zan_config_db_table_mrst_lookup(std::string(t->name).c_str()), i);
    }
    EXPECT_EQ(empty, (std::vector<int>{15, 269}));
    EXPECT_EQ(table_at(0)->name, "tbl_cfg_crypto_ca_trust_point_primary_eol");
    EXPECT_EQ(table_at(1)->name, "tbl_ci_ipv6_enable_eol");
    EXPECT_EQ(table_at(2)->name, "tbl_cfg_ip_dhcp_snooping_eol");
    EXPECT_EQ(zan_config_db_table_mrst_lookup("ntp_peer_eol"), -1);
    EXPECT_EQ(zan_config_db_table_mrst_lookup(""), -1);
    EXPECT_EQ(zan_config_db_table_mrst_lookup(nullptr), -1);
}

TEST(Identifiers, AreDistinctAndNameWhatTheyBelongTo) {
    std::set<std::string> seen;
    size_t n = 0;
    for (const TableInfo* t : tables()) {
        seen.insert(luid_hex(t->luid));
        ++n;
        EXPECT_EQ(find_luid(t->luid).table, t);
    }
    for (const TypeInfo* t : types()) {
        seen.insert(luid_hex(t->luid));
        ++n;
        EXPECT_EQ(find_luid(t->luid).type, t);
        EXPECT_EQ(find_luid(t->luid).field, nullptr);
        for (const FieldInfo& f : t->fields) {
            seen.insert(luid_hex(f.luid));
            ++n;
            LuidTarget x = find_luid(f.luid);
            EXPECT_EQ(x.field, &f);
            EXPECT_EQ(x.type, t);
        }
    }
    EXPECT_EQ(seen.size(), n);
    std::set<std::string> pqs;
    for (const TableInfo* p : positions()) {
        pqs.insert(luid_hex(p->pq));
        EXPECT_EQ(position_by_pq(p->pq), p);
    }
    EXPECT_EQ(pqs.size(), 331u);
    EXPECT_EQ(luid_hex(table_info("tbl_cfg_ip_dhcp_relay_bootp_ignore_eol")->pq), "73e836330f72c211ff0709c32e88091d");
    uint8_t unknown[16] = {};
    EXPECT_FALSE(find_luid(unknown));
}

TEST(Identifiers, TellTheWordOfAKeyField) {
    auto& vs = *static_cast<const uint8_t(*)[16]>(sym("type_rsl_vstring_luid"));
    EXPECT_EQ(word_of_luid(vs), Word::rsl_vstring);
    EXPECT_EQ(word_of_luid(static_cast<const uint8_t*>(sym("type_ip_address_luid"))), Word::ip_address);
    EXPECT_EQ(word_of_luid(static_cast<const uint8_t*>(sym("type_int32_luid"))), Word::int32);
    for (const TableInfo* t : tables()) {
        if (t->key_kind == KeyKind::compound) {
            EXPECT_EQ(word_of_luid(t->key_luid), Word::none) << t->name;
            continue;
        }
        EXPECT_EQ(word_of_luid(t->key_luid), t->key_word) << t->name;
    }
    EXPECT_EQ(word_of_luid(table_info("tbl_ip_helpaddr")->key_luid), Word::ip_address);
}

TEST(Tree, PositionsFormTheCatalogueTree) {
    ASSERT_EQ(positions().size(), 331u);
    int roots = 0;
    std::set<const TableInfo*> parents;
    for (const TableInfo* p : positions()) {
        if (!p->parent) {
            ++roots;
            EXPECT_EQ(p->path.size(), 1u);
            continue;
        }
        parents.insert(p->parent);
        if (p->parent == p) continue;
        EXPECT_EQ(p->path.size(), p->parent->path.size() + 1);
        EXPECT_EQ(p->path.back(), p->segment);
        EXPECT_LE(p->path.size(), 3u);
    }
    EXPECT_EQ(roots, 107);
    EXPECT_EQ(parents.size(), 22u);
    EXPECT_EQ(table_info("tbl_cfg_crypto_ca_trust_point_eol")->children.size(), 65u);
    const TableInfo* vlan = table_info("tbl_cfg_vlan_eol");
    EXPECT_EQ(vlan->parent, vlan);   // its own parent, and no root position
    EXPECT_EQ(vlan->path.size(), 1u);
    EXPECT_EQ(table_info("tbl_dhcp_pool_network")->link_field, "cfg_ip_dhcp_pool_eol_child_dhcp_pool_network");
    EXPECT_TRUE(table_info("tbl_cfg_dev_trk_bt_def_eol")->link_field.empty());
}

TEST(Tree, KeysAsTheCatalogueGivesThem) {
    int singletons = 0, compound = 0;
    for (const TableInfo* t : tables()) {
        singletons += t->key_kind == KeyKind::singleton;
        compound += t->key_kind == KeyKind::compound;
    }
    EXPECT_EQ(singletons + compound + 38, 329);
    EXPECT_EQ(compound, 2);
    const TableInfo* peer = table_info("tbl_ntp_peer_eol");
    EXPECT_EQ(peer->key_field, "key ntp_peer_eol_peer_server_key");
    EXPECT_EQ(peer->key_word, Word::rsl_vstring);
    const TableInfo* svr = table_info("tbl_ip_dhcp_svr");
    EXPECT_EQ(svr->key_field, "key ip_dhcp_svr");
    ASSERT_EQ(svr->key_parts.size(), 2u);
    EXPECT_EQ(svr->key_parts[0]->name, "vrf_name");
    EXPECT_EQ(svr->key_parts[1]->word, Word::ip_address);
    const TableInfo* tv = table_info("tbl_threat_visibility_ip_export");
    EXPECT_EQ(tv->key_field, "key threat_visibility_ip_export_key");
    ASSERT_EQ(tv->rows.size(), 2u);
    EXPECT_EQ(tv->rows[0]->name, "threat_visibility_ip_export_key");
    EXPECT_EQ(tv->key_type, tv->rows[0]);
    EXPECT_EQ(table_info("tbl_mdns_sp_sl_in")->key_field, "key mdns_sp_sl_in_sp_sl_in_name");
}

TEST(Types, EnumerationsFlagSetsAndKinds) {
    const TypeInfo* u = type_info("zan_cfg_union");
    ASSERT_EQ(u->values.size(), 23u);
    EXPECT_EQ(u->values[22], "ZAN_CFG_21");
    const TypeInfo* obj = type_info("obj_type");
    EXPECT_EQ(obj->values.size(), 746u);
    // A value in two extensions takes the lower level; every level renders at latest_variant().
    EXPECT_EQ(obj->value_levels[*obj->value_of("OBJ_ROUTE_MAP_LIST")], 15);
    EXPECT_EQ(obj->value_levels[0], 0);
    EXPECT_LE(*std::max_element(obj->value_levels.begin(), obj->value_levels.end()), latest_variant());
    EXPECT_EQ(type_info("channel_state")->values.size(), 5u);
    EXPECT_EQ(type_info("if_handle")->kind, 2);
    EXPECT_EQ(type_info("ntp_peer_eol")->kind, 1);
    EXPECT_EQ(type_info("int32")->kind, 4);
    EXPECT_EQ(type_info("rsl_vstring")->category, Category::library);
    const TypeInfo* helper = type_info("ci_ip_helpaddr_eol");
    EXPECT_EQ(helper->field("ci_ip_helpaddr_vrf_name")->level, 1);
    EXPECT_EQ(helper->field("singleton_id")->level, 0);
}
