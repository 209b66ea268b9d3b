// Value operations of the table rows, reached as an engine reaches them: slot 3 (to_vlist)
// of every table's row, over the rows of the default configuration. tbl_<t>_to_vlist_all
// has no row and no caller; it is reached through the library's symbol table.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/config.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {

constexpr uint32_t k_site_base = 409074688;   // the name copy of the first table's to_vlist

const db::Row* first_row(const std::string& table) { return default_store().rows(*db::table_info(table)).front(); }

using vlist_all_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_uri*, const void*, gx_do_vlist*, int32_t, uint32_t*);

// The attribute names of a row, as its to_properties delivers them.
std::vector<std::string> attribute_names(const std::string& table, const db::Row* row) {
    gx_do_properties* props = plat::properties_new();
    uint32_t err = 0;
    EXPECT_EQ(table_row(table).to_properties(nullptr, 0, row, props, 0, &err), 0);
    std::vector<std::string> out;
    for (const plat::NamedValue& nv : plat::properties_items(props)) out.push_back(nv.name);
    plat::properties_deref(props);
    return out;
}

long site_total(uint32_t tag) {
    for (const plat::AllocSite& s : plat::alloc_sites())
        if (s.tag == tag && s.type_name == "BYTE") return s.total;
    return 0;
}

class Rows : public ::testing::Test {
protected:
    gx_do_uri* uri = plat::uri_new({{"ntp_peer_server", {{{"peer_server_key", "10.0.0.1"}}}}});
    gx_do_nlist* names = gx_do_nlist_new();
    gx_do_vlist* vlist = gx_do_vlist_new();
    uint32_t err = 0;
    std::string table = "tbl_ntp_peer_eol";
    void TearDown() override {
        plat::uri_deref(uri);
        gx_do_nlist_deref(names);
        gx_do_vlist_deref(vlist);
        plat::fault_clear_all();
    }
    void ask(const std::vector<std::string>& list) {
        gx_do_nlist_clear(names);
        gx_do_vlist_clear(vlist);
        err = 0;
        for (const auto& n : list) gx_do_nlist_add_string(names, n.c_str());
    }
    int32_t fetch(const std::vector<std::string>& list, int32_t with_state = 0) {
        ask(list);
        return table_row(table).to_vlist(nullptr, 0, uri, names, first_row(table), vlist, with_state, &err);
    }
    plat::ValueList values() const { return plat::vlist_values(vlist); }
};

}  // namespace

TEST_F(Rows, WholeRowOfEveryTableIsItsColumnsAndEqualsAskingForEveryAttribute) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        table = t.name;
        SCOPED_TRACE(t.name);
        for (const db::Row* row : default_store().rows(*db::table_info(t.name))) {
            ask({});
            const int32_t whole = table_row(t.name).to_vlist(nullptr, 0, uri, names, row, vlist, 0, &err);
            EXPECT_GT(whole, 0);
            EXPECT_EQ(err, 0u);
            const plat::ValueList positional = values();
            ASSERT_EQ(positional.size(), t.columns.size());
            // The same values one name at a time, in the order of the attributes.
            const std::vector<std::string> attrs = attribute_names(t.name, row);
            ask(attrs);
            const int32_t named = table_row(t.name).to_vlist(nullptr, 0, uri, names, row, vlist, 0, &err);
            EXPECT_GT(named, 0);
            EXPECT_EQ(err, 0u);
            EXPECT_EQ(values(), positional);
        }
    }
}

TEST_F(Rows, RefusalsPendingErrorAndTheUnlistedWholeRow) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        const zan_tbl_to_vlist_fn to_vlist = table_row(t.name).to_vlist;
        const db::Row* row = first_row(t.name);
        ask({"singleton_id"});
        err = 7;   // absent arguments leave the word untouched
        EXPECT_EQ(to_vlist(nullptr, 0, uri, nullptr, row, vlist, 0, &err), -1);
        EXPECT_EQ(to_vlist(nullptr, 0, nullptr, names, row, vlist, 0, &err), -1);
        EXPECT_EQ(to_vlist(nullptr, 0, uri, names, row, nullptr, 0, &err), -1);
        EXPECT_EQ(to_vlist(nullptr, 0, uri, names, row, vlist, 0, nullptr), -1);
        EXPECT_EQ(err, 7u);
        // A pending error answers 0, and nothing is added.
        EXPECT_EQ(to_vlist(nullptr, 0, uri, names, row, vlist, 0, &err), 0);
        EXPECT_EQ(err, 7u);
        EXPECT_EQ(gx_do_vlist_get_len(vlist), 0);

        const auto all = internal_fn<vlist_all_fn>(t.name + "_to_vlist_all");
        ASSERT_NE(all, nullptr);
        EXPECT_EQ(all(nullptr, 0, uri, row, vlist, 0, &err), -1);   // the word pending
        err = 0;
        EXPECT_EQ(all(nullptr, 0, nullptr, row, vlist, 0, &err), -1);
        EXPECT_EQ(all(nullptr, 0, uri, row, nullptr, 0, &err), -1);
        EXPECT_EQ(gx_do_vlist_get_len(vlist), 0);
        const int32_t result = all(nullptr, 0, uri, row, vlist, 0, &err);
        const plat::ValueList by_all = values();
        ask({});
        EXPECT_EQ(to_vlist(nullptr, 0, uri, names, row, vlist, 0, &err), result);
        EXPECT_EQ(values(), by_all);
        EXPECT_EQ(by_all.size(), t.columns.size());
    }
}

TEST_F(Rows, NameCopiesAreCountedPerTableFromTheFirstSiteOnAndFreed) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        table = t.name;
        const uint32_t tag = k_site_base | static_cast<uint32_t>(t.order);
        const long before = site_total(tag), live = plat::alloc_live();
        fetch({"a", "b.c", ""});
        EXPECT_EQ(site_total(tag), before + 3);
        EXPECT_EQ(plat::alloc_live(), live);
    }
}

TEST_F(Rows, ReservedNameAddsTheRowsPathWhereItStands) {
    const std::string uri_name = GX_DO_NAME_URI;
    EXPECT_EQ(fetch({uri_name}), 1);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_EQ(std::get<plat::Uri>(values()[0].v).text, plat::uri_text(uri));

    EXPECT_EQ(fetch({"peer_server_key", uri_name, "compound_0.peer_or_server.descriminator"}), 3);
    ASSERT_EQ(values().size(), 3u);
    EXPECT_TRUE(std::holds_alternative<plat::Uri>(values()[1].v));
    // The whole name is compared, before any cut at ".".
    EXPECT_EQ(fetch({uri_name + ".x"}), -1);
    EXPECT_TRUE(values().empty());

    // The adder's own answer is the result: a 0 folds into -1 like an unknown name's, any
    // other number is handed on as it came (a negative one at once, the later names unasked).
    struct Case {
        int32_t answer;
        std::vector<std::string> names;
        int32_t result;
        size_t values;
    };
    const Case cases[] = {
        {0, {uri_name}, -1, 1},
        {42, {uri_name}, 42, 1},
        {0, {"peer_server_key", uri_name}, -1, 2},
        {0, {uri_name, "peer_server_key"}, 2, 2},
        {-3, {uri_name, "peer_server_key"}, -3, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.answer) + " for " + c.names[0]);
        const long live = plat::alloc_live();
        plat::mr_uri_set_answer(c.answer);
        EXPECT_EQ(fetch(c.names), c.result);
        plat::mr_uri_set_answer(std::nullopt);
        EXPECT_EQ(err, 0u);
        const plat::ValueList got = values();
        ASSERT_EQ(got.size(), c.values);
        EXPECT_EQ(std::count_if(got.begin(), got.end(),
                                [](const plat::Value& v) { return std::holds_alternative<plat::Uri>(v.v); }),
                  1);
        EXPECT_EQ(plat::alloc_live(), live) << "the name copies are freed";
    }

    // A failing adder ends the list at once with its own answer; nothing leaks.
    const long live = plat::alloc_live();
    plat::fault_fail_nth("gx_do_vlist_add_mr_uri", 1);
    EXPECT_EQ(fetch({"peer_server_key", uri_name, "compound_0.peer_or_server.descriminator"}), -1);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_EQ(plat::alloc_live(), live);
}

TEST_F(Rows, NamesThatGiveNoTokenOrNoAttribute) {
    for (const std::vector<std::string>& list : {std::vector<std::string>{""}, {"..."}, {"."}, {"nonsense"},
                                                 {"compound_0"}}) {
        SCOPED_TRACE(list[0]);
        EXPECT_EQ(fetch(list), -1);
        EXPECT_TRUE(values().empty());
        EXPECT_EQ(err, 0u);
    }
    // Only the last name decides: an unknown last name gives -1 with the first value in the
    // list, the reverse order the known name's result.
    EXPECT_EQ(fetch({"peer_server_key", "nonsense"}), -1);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_EQ(fetch({"nonsense", "peer_server_key"}), 1);
    EXPECT_EQ(values().size(), 1u);
    // Repeated dots count as one.
    EXPECT_EQ(fetch({"compound_0..peer_or_server...descriminator"}), 1);
}

TEST_F(Rows, ErrorSetByTheFirstSelectorStopsTheLaterSelectorsNotTheCopies) {
    // The array of the first name loses its count read (EIO): the selector still adds the
    // (empty) array and answers it, with the word set. The second name is copied and cut,
    // its selector not called, so the first result stands.
    table = "tbl_vlan_group";
    const uint32_t tag = k_site_base | static_cast<uint32_t>(expect().table(table).order);
    const long before = site_total(tag);
    ask({"vlans", "vlan_group_name"});
    plat::fault_fail_nth("accessor", 1);
    const int32_t r = table_row(table).to_vlist(nullptr, 0, uri, names, first_row(table), vlist, 0, &err);
    EXPECT_EQ(err, 5u);
    EXPECT_EQ(site_total(tag), before + 2);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_TRUE(std::holds_alternative<plat::ValueList>(values()[0].v));
    EXPECT_EQ(r, 1);
}

TEST_F(Rows, NoMemoryForACopyEndsTheListWithNoMemory) {
    const long live = plat::alloc_live();
    ask({"peer_server_key", "compound_0.peer_or_server.descriminator"});
    plat::alloc_fail_nth(2);   // the second name's copy
    EXPECT_EQ(table_row(table).to_vlist(nullptr, 0, uri, names, first_row(table), vlist, 0, &err), -1);
    EXPECT_EQ(err, 12u);
    EXPECT_EQ(values().size(), 1u);   // what was added stays
    EXPECT_EQ(plat::alloc_live(), live);
}

TEST_F(Rows, TwoRecordTableAsksTheKeyRecordFirst) {
    table = "tbl_threat_visibility_ip_export";
    const db::Row* row = first_row(table);
    const db::Record& key = *db::row_record(*row, 0);
    const db::Record& value = *db::row_record(*row, 1);
    EXPECT_EQ(fetch({"vrf_name"}), 1);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_EQ(std::get<std::string>(values()[0].v), db::get_text(key, "vrf_name"));
    EXPECT_EQ(fetch({"tv_ip_export_parent_table_key", "export_address"}), 2);
    ASSERT_EQ(values().size(), 2u);
    EXPECT_EQ(std::get<uint64_t>(values()[0].v), db::get_u64(value, "tv_ip_export_parent_table_key"));
    EXPECT_EQ(fetch({"nonsense"}), -1);

    // The value record's selector is handed the same save pointer: the rest of a dotted
    // name is still there for it (and ignored behind a leaf).
    EXPECT_EQ(fetch({"tv_ip_export_parent_table_key.x.y"}), 1);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_EQ(std::get<uint64_t>(values()[0].v), db::get_u64(value, "tv_ip_export_parent_table_key"));
    // A key attribute that sets the word: its -1 stands, and the value record is not asked.
    plat::fault_fail_nth("accessor", 1);
    EXPECT_EQ(fetch({"vrf_name"}), -1);
    EXPECT_EQ(err, 5u);
    EXPECT_TRUE(values().empty());
    plat::fault_clear_all();

    // The whole row: the key record's values, then the value record's, whose result is the
    // row's (here the list's length after its one value).
    const int32_t columns = int32_t(expect().table(table).columns.size());
    EXPECT_EQ(fetch({}), columns);
    EXPECT_EQ(values().size(), size_t(columns));
    // A failing key record ends the row before the value record; a failing value record
    // leaves the key record's values and answers its own failure.
    struct Case {
        long nth;
        size_t values;
    };
    for (const Case& c : {Case{1, 0}, Case{3, 2}, Case{4, 3}}) {
        SCOPED_TRACE(c.nth);
        plat::fault_set_value_add_answer(-7);
        plat::fault_fail_nth("gx_do_vlist_add_value", c.nth);
        EXPECT_EQ(fetch({}), -7);
        plat::fault_clear_all();
        EXPECT_EQ(values().size(), c.values);
    }
}
