// Field lookups of the table and type vectors: what the path and query traversers ask.
#include <set>

#include "db_test.hpp"

using namespace zan::db;
using namespace dbt;

namespace {

struct Answer {
    uint32_t id = 0xdeadbeef;
    const uint8_t* luid = nullptr;
    uint32_t err = 0;
};

Answer ask(zan_get_field_fn fn, const std::string& name, uint32_t err = 0) {
    Answer a;
    a.err = err;
    fn(k_ctx, k_id, name.c_str(), &a.id, &a.luid, &a.err);
    return a;
}

}  // namespace

using Vectors = StoreTest;

TEST_F(Vectors, TableVectorsFindTheirRowFieldsAndKeyField) {
    for (const TableInfo* t : tables()) {
        SCOPED_TRACE(std::string(t->name));
        for (size_t i = 0; i < t->rows.size(); ++i) {
            Answer a = ask(t->vft->get_field, std::string(t->rows[i]->name));
            EXPECT_EQ(a.id, i + 1);
            EXPECT_EQ(a.luid, t->rows[i]->luid);
            EXPECT_EQ(a.err, 0u);
        }
        Answer k = ask(t->vft->get_field, t->key_field);
        ASSERT_NE(k.luid, nullptr);
        EXPECT_EQ(k.err, 0u);
        if (t->key_kind == KeyKind::compound) {
            EXPECT_EQ(k.luid, t->key_type->luid);
            continue;
        }
        // The key field is the row type's own field: the same id and identifier.
        Answer f = ask(t->rows[0]->vft->get_field, std::string(t->key_name));
        EXPECT_EQ(k.id, f.id);
        EXPECT_EQ(k.luid, f.luid);
        // The named lookup and the vector's are the same function.
        Answer n = ask(fn<zan_get_field_fn>(std::string(t->name) + "_get_field"), t->key_field);
        EXPECT_EQ(n.luid, k.luid);
    }
}

TEST_F(Vectors, TheKeyStringsTheTraversersUse) {
    auto lookup = [](const char* table, const char* name) {
        return ask(table_info(table)->vft->get_field, name);
    };
    EXPECT_NE(lookup("tbl_ntp_peer_eol", "key ntp_peer_eol_peer_server_key").luid, nullptr);
    EXPECT_NE(lookup("tbl_ip_dhcp_svr", "key ip_dhcp_svr").luid, nullptr);
    EXPECT_NE(lookup("tbl_threat_visibility_ip_export", "key threat_visibility_ip_export_key").luid, nullptr);
    EXPECT_NE(lookup("tbl_cfg_ip_dhcp_relay_bootp_ignore_eol", "key cfg_ip_dhcp_relay_bootp_ignore_eol_singleton_id").luid,
              nullptr);
    Answer tv = lookup("tbl_threat_visibility_ip_export", "threat_visibility_ip_export");
    EXPECT_EQ(tv.id, 2u);
    // Near misses find nothing: exact names only.
    EXPECT_EQ(lookup("tbl_ntp_peer_eol", "key ntp_peer_eol_peer_server_ke").luid, nullptr);
    EXPECT_EQ(lookup("tbl_ntp_peer_eol", "key ntp_peer_eol_peer_server_key ").luid, nullptr);
    EXPECT_EQ(lookup("tbl_ntp_peer_eol", "peer_server_key").luid, nullptr);
}

TEST_F(Vectors, UnknownNamesLeaveEverythingAsItWas) {
    const zan_field_vft* vft = table_info("tbl_ntp_source_eol")->vft;
    Answer a = ask(vft->get_field, "no_such_field");
    EXPECT_EQ(a.luid, nullptr);
    EXPECT_EQ(a.id, 0xdeadbeefu);
    EXPECT_EQ(a.err, 0u);
    uint32_t id = 1, err = 0;
    const uint8_t* l = nullptr;
    vft->get_field(k_ctx, k_id, nullptr, &id, &l, &err);
    EXPECT_EQ(l, nullptr);
    EXPECT_EQ(ask(type_info("int32")->vft->get_field, "anything").luid, nullptr);
}

TEST_F(Vectors, ChildrenFindTheParentRowAndTheirLinkField) {
    int children = 0;
    for (const TableInfo* p : positions()) {
        if (!p->parent || p->link_field.empty()) continue;
        ++children;
        SCOPED_TRACE(std::string(p->name));
        const TableInfo& parent = *p->parent->table;
        std::string parent_row(parent.name.substr(4));
        Answer row = ask(parent.vft->get_field, parent_row);
        ASSERT_NE(row.luid, nullptr);
        EXPECT_EQ(row.luid, parent.rows[0]->luid);
        // The link lookup of the parent row type, by its name.
        auto info = fn<zan_get_field_fn>("zan_" + parent_row + "_get_field_info");
        Answer link = ask(info, std::string(p->link_field));
        ASSERT_NE(link.luid, nullptr);
        const FieldInfo* f = parent.rows[0]->field(p->link_field);
        ASSERT_NE(f, nullptr);
        EXPECT_EQ(f->role, FieldRole::link);
        EXPECT_EQ(link.id, f->id);
    }
    EXPECT_EQ(children, 224 - 4);
}

TEST_F(Vectors, TypeVectorsNumberEveryFieldOnce) {
    for (const TypeInfo* t : types()) {
        if (t->category != Category::record) {
            EXPECT_TRUE(t->fields.empty());
            continue;
        }
        std::set<uint32_t> ids;
        for (const FieldInfo& f : t->fields) {
            Answer a = ask(t->vft->get_field, std::string(f.name));
            EXPECT_EQ(a.id, f.id) << t->name << "." << f.name;
            EXPECT_EQ(a.luid, f.luid);
            ids.insert(f.id);
        }
        EXPECT_EQ(ids.size(), t->fields.size()) << t->name;
        if (!t->fields.empty()) { EXPECT_EQ(*ids.rbegin(), t->fields.size()) << t->name; }
    }
    const TypeInfo* ports = type_info("ipv6_src_port_equal");
    EXPECT_EQ(ports->field("num_ports")->role, FieldRole::bound);
}

TEST_F(Vectors, AFailingLookupSetsTheErrorWordOnlyWhenClear) {
    const zan_field_vft* vft = table_info("tbl_ntp_peer_eol")->vft;
    zan::plat::fault_fail_nth("get_field", 1);
    Answer a = ask(vft->get_field, "key ntp_peer_eol_peer_server_key");
    EXPECT_EQ(a.luid, nullptr);
    EXPECT_EQ(a.err, 5u);
    zan::plat::fault_fail_nth("get_field", 1);
    Answer b = ask(type_info("ntp_peer_eol")->vft->get_field, "peer_server_key", 12);
    EXPECT_EQ(b.luid, nullptr);
    EXPECT_EQ(b.err, 12u);
    EXPECT_NE(ask(vft->get_field, "key ntp_peer_eol_peer_server_key").luid, nullptr);
}
