// Column description (to_ntlist): every table and type against the catalogue, the name
// buffer's limits, and how a failure travels through the walk.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "harness.hpp"

using namespace fe_test;
using zan::plat::TraceRecord;

namespace {

const std::string k_eio = std::strerror(5);   // what the platform's failing add stores

zan_type_to_ntlist_fn type_fn(const std::string& type) { return fn<zan_type_to_ntlist_fn>((type + "_to_ntlist").c_str()); }

const zan_gx_table_row* table_rows() {
    init();
    return static_cast<const zan_gx_table_row*>(registered().gx_dispatch);
}

zan_columns_to_ntlist_fn columns_of(const std::string& table) {
    return table_rows()[expect().table(table).row].columns_to_ntlist;
}

bool ends_with(const std::string& s, const std::string& tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

class Columns : public ::testing::Test {
protected:
    void TearDown() override { zan::plat::fault_clear_all(); }
};

}  // namespace

TEST_F(Columns, EveryTableListsTheCatalogueColumnsThroughItsRegisteredRow) {
    const zan_gx_table_row* rows = table_rows();
    zan::plat::TraceCapture cap;
    size_t total = 0, widest = 0, longest = 0;
    int deepest = 0;
    std::string widest_table;
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) {
            EXPECT_EQ(rows[t.row].columns_to_ntlist, nullptr);
            continue;
        }
        SCOPED_TRACE(t.name);
        ASSERT_NE(rows[t.row].columns_to_ntlist, nullptr);
        Ntlist list;
        uint32_t err = 0;
        ASSERT_EQ(rows[t.row].columns_to_ntlist(list.list, &err), 0);
        EXPECT_EQ(err, 0u);
        const auto& got = list.entries();
        ASSERT_EQ(got.size(), t.columns.size());
        for (size_t i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got[i].name, t.columns[i].name) << "column " << i;
            EXPECT_EQ(got[i].code, t.columns[i].code) << got[i].name;
            longest = std::max(longest, got[i].name.size());
            deepest = std::max(deepest, t.columns[i].depth);
        }
        total += got.size();
        if (got.size() > widest) widest = got.size(), widest_table = t.name;
    }
    EXPECT_TRUE(cap.records().empty()) << "a successful walk traces nothing";
    // The census of the schema's columns.
    EXPECT_EQ(total, 2291u);
    EXPECT_EQ(widest, 395u);
    EXPECT_EQ(widest_table, "tbl_conf_mac_nacl_eol");
    EXPECT_EQ(longest, 174u);
    EXPECT_EQ(deepest, 11);
}

TEST_F(Columns, SpecialNamesAndTheTwoRowTable) {
    Ntlist vrf;
    uint32_t err = 0;
    ASSERT_EQ(type_fn("vrf_info")(vrf.list, "", &err), 0);
    ASSERT_EQ(vrf.entries().size(), 3u);
    EXPECT_EQ(vrf.entries()[2].name, "namestr");   // glued on, unlike the property name name.str
    EXPECT_EQ(vrf.entries()[2].code, 106u);

    Ntlist layer;
    ASSERT_EQ(type_fn("layer_head")(layer.list, "", &err), 0);
    ASSERT_GE(layer.entries().size(), 3u);
    EXPECT_EQ(layer.entries()[0].name, "lkeyflag");
    EXPECT_EQ(layer.entries()[1].name, "lkeylayer_idx");

    // Key columns first, then the value record's.
    Ntlist tv;
    ASSERT_EQ(columns_of("tbl_threat_visibility_ip_export")(tv.list, &err), 0);
    const TableRow& t = expect().table("tbl_threat_visibility_ip_export");
    ASSERT_EQ(tv.entries().size(), t.columns.size());
    EXPECT_EQ(t.columns.front().owner, "threat_visibility_ip_export_key");
    EXPECT_EQ(t.columns.back().owner, "threat_visibility_ip_export");
    Ntlist key;
    ASSERT_EQ(type_fn("threat_visibility_ip_export_key")(key.list, "", &err), 0);
    for (size_t i = 0; i < key.entries().size(); ++i) EXPECT_EQ(tv.entries()[i].name, key.entries()[i].name);
}

TEST_F(Columns, EveryTypeListsItsColumnsBehindThePrefix) {
    ASSERT_EQ(expect().records.size(), 1012u);
    for (const RecordRow& r : expect().records) {
        Ntlist list;
        uint32_t err = 0;
        ASSERT_EQ(type_fn(r.name)(list.list, "pre.fix.", &err), 0) << r.name;
        ASSERT_EQ(list.entries().size(), r.columns) << r.name;
        for (const auto& e : list.entries()) ASSERT_EQ(e.name.rfind("pre.fix.", 0), 0u) << r.name;
    }
}

// Each type owns four messages, types in slot order: null arguments, prior error, no
// space, failed. A set word (prior error, or no space) stops the call at once and is kept.
TEST_F(Columns, EveryTypeTracesItsFourMessages) {
    const std::string p256(256, 'p');
    for (const RecordRow& r : expect().records) {
        SCOPED_TRACE(r.name);
        const zan_type_to_ntlist_fn f = type_fn(r.name);
        const uint32_t base = 4 * uint32_t(r.ordinal);
        zan::plat::TraceCapture cap;
        Ntlist list;

        uint32_t err = 0;
        EXPECT_EQ(f(nullptr, "", &err), -1);
        err = 7;
        EXPECT_EQ(f(list.list, "", &err), -1);
        EXPECT_EQ(err, 7u);
        err = 0;
        EXPECT_EQ(f(list.list, p256.c_str(), &err), -1);
        EXPECT_EQ(err, 28u);
        EXPECT_TRUE(list.entries().empty());
        EXPECT_EQ(cap.records().size(), 3u);   // one line each so far
        err = 0;
        zan::plat::fault_fail_nth("arbor_fe_ntlist_add", 1);
        EXPECT_EQ(f(list.list, "", &err), -1);
        EXPECT_EQ(err, 5u);

        const auto recs = cap.records();
        ASSERT_GE(recs.size(), 4u);
        for (const TraceRecord& t : recs) {
            EXPECT_EQ(t.unit, "to_ntlist");
            EXPECT_EQ(t.level, k_error_level);
        }
        EXPECT_EQ(recs[0].index, base + 0);
        EXPECT_EQ(recs[0].text, r.name + " to_ntlist, null arguments");
        EXPECT_EQ(recs[1].index, base + 1);
        EXPECT_EQ(recs[1].text, r.name + " to_nlist, prior error");
        EXPECT_EQ(recs[2].index, base + 2);
        EXPECT_EQ(recs[2].text, "no space in buffer for attribute name " + p256 + ".Availbale length is 256");
        EXPECT_EQ(recs.back().index, base + 3);
        EXPECT_EQ(recs.back().text, r.name + " to_ntlist failed (" + k_eio + ")");
    }
}

TEST_F(Columns, NullArgumentsShareOneTest) {
    const zan_type_to_ntlist_fn f = type_fn("if_handle");
    Ntlist list;
    uint32_t err = 0;
    zan::plat::TraceCapture cap;
    EXPECT_EQ(f(nullptr, "", &err), -1);
    EXPECT_EQ(f(list.list, nullptr, &err), -1);
    EXPECT_EQ(f(list.list, "", nullptr), -1);
    EXPECT_EQ(err, 0u);
    EXPECT_TRUE(list.entries().empty());
    ASSERT_EQ(cap.records().size(), 3u);
    for (const TraceRecord& t : cap.records()) EXPECT_EQ(t.text, "if_handle to_ntlist, null arguments");
}

TEST_F(Columns, APrefixOf255IsAcceptedAndNamesThatDoNotFitAreCut) {
    const std::string p255(255, 'q');
    zan::plat::TraceCapture cap;
    Ntlist list;
    uint32_t err = 0;
    // One byte of room is left: every attribute text is refused, the walk goes on with
    // the prefix alone, down through the glued vrf_name.
    ASSERT_EQ(type_fn("vrf_info")(list.list, p255.c_str(), &err), 0);
    EXPECT_EQ(err, 0u);
    ASSERT_EQ(list.entries().size(), 3u);
    const uint32_t codes[] = {4, 2, 106};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(list.entries()[i].name, p255);
        EXPECT_EQ(list.entries()[i].code, codes[i]);
    }
    EXPECT_TRUE(cap.records().empty());

    // 251 characters leave room for five more: cid fits, app_id is refused and the
    // column goes out under the prefix alone.
    Ntlist two;
    const std::string p251(251, 'q');
    ASSERT_EQ(type_fn("consumer")(two.list, p251.c_str(), &err), 0);   // cid, app_id
    ASSERT_EQ(two.entries().size(), 2u);
    EXPECT_EQ(two.entries()[0].name, p251 + "cid");
    EXPECT_EQ(two.entries()[1].name, p251);
}

TEST_F(Columns, AFailureDeepInTheWalkTravelsUpAndSiblingsSeeAPriorError) {
    const TableRow& t = expect().table("tbl_conf_mac_nacl_eol");
    const auto deep = std::find_if(t.columns.begin(), t.columns.end(), [](const Column& c) { return c.depth == 11; });
    ASSERT_NE(deep, t.columns.end());
    const size_t k = size_t(deep - t.columns.begin());

    zan::plat::TraceCapture cap;
    Ntlist list;
    uint32_t err = 0;
    zan::plat::fault_fail_nth("arbor_fe_ntlist_add", long(k) + 1);
    EXPECT_EQ(columns_of(t.name)(list.list, &err), -1);
    EXPECT_EQ(err, 5u);   // kept all the way up

    // What was added before the failure stays.
    ASSERT_GE(list.entries().size(), k);
    for (size_t i = 0; i < k; ++i) EXPECT_EQ(list.entries()[i].name, t.columns[i].name);

    const auto recs = cap.records();
    ASSERT_FALSE(recs.empty());
    int failed = 0, prior = 0;
    for (const TraceRecord& r : recs) {
        EXPECT_EQ(r.level, k_error_level);
        if (ends_with(r.text, " to_ntlist failed (" + k_eio + ")"))
            ++failed;
        else if (ends_with(r.text, " to_nlist, prior error"))
            ++prior;
        else
            ADD_FAILURE() << "unexpected trace " << r.text;
    }
    EXPECT_EQ(failed, 11) << "one failed line per level from the leaf's record up to the row";
    EXPECT_GT(prior, 0) << "nested siblings after the failure stop at their prior-error test";
    EXPECT_EQ(recs.front().text, deep->owner + " to_ntlist failed (" + k_eio + ")");
    EXPECT_EQ(recs.back().text, "conf_mac_nacl_eol to_ntlist failed (" + k_eio + ")");
}

TEST_F(Columns, TheKeyRecordsFailureShowsAsTheValueRecordsPriorError) {
    zan::plat::TraceCapture cap;
    Ntlist list;
    uint32_t err = 0;
    zan::plat::fault_fail_nth("arbor_fe_ntlist_add", 1);
    EXPECT_EQ(columns_of("tbl_threat_visibility_ip_export")(list.list, &err), -1);
    EXPECT_EQ(err, 5u);
    const auto recs = cap.records();
    ASSERT_EQ(recs.size(), 2u);
    EXPECT_EQ(recs[0].text, "threat_visibility_ip_export_key to_ntlist failed (" + k_eio + ")");
    EXPECT_EQ(recs[1].text, "threat_visibility_ip_export to_nlist, prior error");
}

TEST_F(Columns, ATableFunctionWithTheWordSetAnswersAtOnceWithoutTrace) {
    const zan_gx_table_row* rows = table_rows();
    zan::plat::TraceCapture cap;
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        Ntlist list;
        uint32_t err = 12;
        EXPECT_EQ(rows[t.row].columns_to_ntlist(list.list, &err), -1) << t.name;
        EXPECT_EQ(err, 12u);
        EXPECT_TRUE(list.entries().empty());
    }
    EXPECT_TRUE(cap.records().empty());
}

// The walk has no early exit: after a failed add every later column of the record is still
// offered, and each finds the error word set.
TEST_F(Columns, AfterAFailedAddTheWalkGoesOnWithTheWordSet) {
    const zan_type_to_ntlist_fn f = type_fn("ntp_peer_v6addr_cp_0_cp");   // three leaves
    uint32_t err = 0;
    Ntlist list;
    ASSERT_EQ(f(list.list, "", &err), 0);
    ASSERT_EQ(list.entries().size(), 3u);
    const long before = zan::plat::ntlist_add_calls_with_error();
    zan::plat::fault_fail_nth("arbor_fe_ntlist_add", 1);
    EXPECT_EQ(f(list.list, "", &err), -1);
    EXPECT_EQ(zan::plat::ntlist_add_calls_with_error() - before, 2);
}

// A prefix that leaves a nested record no room: the nested level writes the one "no space"
// line and sets 28, and the level above reports its failure on the way out.
TEST_F(Columns, ANestedLevelWithoutRoomFailsThereAndTheFailureTravelsUp) {
    const std::string p252(252, 'p');
    zan::plat::TraceCapture cap;
    Ntlist list;
    uint32_t err = 0;
    EXPECT_EQ(type_fn("vrf_info")(list.list, p252.c_str(), &err), -1);   // "name" fills it: 256 for vrf_name
    EXPECT_EQ(err, 28u);
    std::vector<std::string> lines;
    for (const TraceRecord& r : cap.records()) {
        EXPECT_EQ(r.level, k_error_level);
        lines.push_back(r.text);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "no space in buffer for attribute name " + p252 + "name.Availbale length is 256",
                         "vrf_info to_ntlist failed (" + std::string(std::strerror(28)) + ")"}));
}
