// Key rendering, reached as an engine reaches it: slot 4 (to_nvlist) of every table's row,
// over the rows of the default configuration. The enumerations' name-value forms have no
// caller and are not exported; they are reached through the library's symbol table.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/config.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {

std::vector<const db::Row*> rows_of(const std::string& table) {
    const auto rows = default_store().rows(*db::table_info(table));
    return {rows.begin(), rows.end()};
}

using enum_nvlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_nvlist*, int32_t, int32_t,
                                   const void*, uint32_t*);

class Keys : public ::testing::Test {
protected:
    gx_do_nvlist* nvlist = gx_do_nvlist_new();
    uint32_t err = 0;
    void TearDown() override {
        gx_do_nvlist_deref(nvlist);
        plat::fault_clear_all();
        plat::rsl_stored_error_clear();
    }
    void renew() {
        gx_do_nvlist_deref(nvlist);
        nvlist = gx_do_nvlist_new();
        err = 0;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (const plat::NamedValue& nv : plat::nvlist_items(nvlist)) out.push_back(nv.name);
        return out;
    }
};

std::vector<std::string> names_of(const std::vector<KeyEntry>& key, size_t n = SIZE_MAX) {
    std::vector<std::string> out;
    for (size_t i = 0; i < key.size() && i < n; ++i) out.push_back(key[i].name);
    return out;
}

}  // namespace

TEST_F(Keys, EveryRowOfTheDefaultConfigurationDeliversItsKeyInOrder) {
    std::map<std::string, int> by_conversion;   // the single key's word, or "compound"
    size_t rows_seen = 0;
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        ASSERT_FALSE(t.key.empty());
        ++by_conversion[t.key.size() == 1 ? t.key[0].word : "compound"];
        const auto rows = rows_of(t.name);
        ASSERT_FALSE(rows.empty()) << "the default configuration has no row of it";
        const zan_tbl_to_nvlist_fn to_nvlist = table_row(t.name).to_nvlist;
        ASSERT_NE(to_nvlist, nullptr);
        for (const db::Row* row : rows) {
            renew();
            const int32_t result = to_nvlist(nullptr, 0, row, nvlist, &err);
            EXPECT_EQ(err, 0u);
            const plat::NameValueList items = plat::nvlist_items(nvlist);
            // The result is the last conversion's: the platform's adders answer the new length.
            EXPECT_EQ(result, static_cast<int32_t>(items.size()));
            ASSERT_EQ(names(), names_of(t.key));
            const db::Record& rec = *db::row_record(*row, t.key_record);
            for (size_t i = 0; i < items.size(); ++i) {
                plat::Value want = *db::value_of(db::handle(rec, t.key[i].name));
                want.is_default = false;   // a key has no state
                EXPECT_EQ(items[i].value, want) << t.key[i].name;
                EXPECT_EQ(items[i].value.leaf, t.key[i].word);
            }
            ++rows_seen;
        }
    }
    EXPECT_GE(rows_seen, 329u);
    // The split of the 329 tables by what their to_nvlist calls.
    EXPECT_EQ(by_conversion, (std::map<std::string, int>{
                                 {"u_int32", 295}, {"rsl_vstring", 25}, {"int32", 6}, {"ip_address", 1}, {"compound", 2}}));
}

TEST_F(Keys, NumberedRowsRenderTheirNumberWhateverTheirQueryKey) {
    // Queried by name, keyed by number: both halves of the difference are checked.
    for (const char* table : {"tbl_mdns_sp_sl_in", "tbl_mdns_sp_sl_out"}) {
        SCOPED_TRACE(table);
        EXPECT_NE(db::table_info(table)->key_kind, db::KeyKind::singleton);
        const db::Row* row = rows_of(table).front();
        renew();
        EXPECT_EQ(table_row(table).to_nvlist(nullptr, 0, row, nvlist, &err), 1);
        EXPECT_EQ(names(), std::vector<std::string>{"singleton_id"});
    }
}

TEST_F(Keys, RefusalsAtTableLevelInTheirOrder) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        const zan_tbl_to_nvlist_fn to_nvlist = table_row(t.name).to_nvlist;
        const db::Row* row = rows_of(t.name).front();
        // No error word: nothing to report through, -1.
        EXPECT_EQ(to_nvlist(nullptr, 0, row, nvlist, nullptr), -1);
        // No list: 22, also over an error already pending.
        for (uint32_t pending : {0u, 7u}) {
            err = pending;
            EXPECT_EQ(to_nvlist(nullptr, 0, row, nullptr, &err), -1);
            EXPECT_EQ(err, 22u);
        }
        // An error pending: -1, the word kept.
        err = 7;
        EXPECT_EQ(to_nvlist(nullptr, 0, row, nvlist, &err), -1);
        EXPECT_EQ(err, 7u);
        EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
    }
}

TEST_F(Keys, AbsentKeyFieldLeavesTheWordAloneExceptInAKeyType) {
    size_t compound = 0;
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        db::RowPtr row = db::make_row(t.name);
        db::drop_row_record(*row, t.key_record);
        renew();
        plat::rsl_stored_error_clear();
        EXPECT_EQ(table_row(t.name).to_nvlist(&err, 0, row.get(), nvlist, &err), -1);
        EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
        const auto stored = plat::rsl_stored_error();
        if (t.key.size() > 1) {
            ++compound;
            EXPECT_EQ(err, 14u);
            ASSERT_TRUE(stored.has_value());
            EXPECT_EQ(stored->number, 14u);
            EXPECT_EQ(stored->ctx, &err);   // the caller's context, handed through
        } else {
            EXPECT_EQ(err, 0u);
            EXPECT_FALSE(stored.has_value());
        }
    }
    EXPECT_EQ(compound, 2u);
}

// The conversion's own failure value is the table's answer (-1 or another), while a key type
// answers -1 whatever its part's conversion gave.
TEST_F(Keys, SingleKeyConversionFailureIsTheResultWithoutTrace) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty() || t.key.size() != 1) continue;
        SCOPED_TRACE(t.name);
        renew();
        plat::TraceCapture traces;
        plat::fault_fail_nth("gx_do_nvlist_add_value", 1);
        plat::fault_set_value_add_answer(t.key[0].name.size() % 2 ? -1 : -7);
        EXPECT_EQ(table_row(t.name).to_nvlist(nullptr, 0, rows_of(t.name).front(), nvlist, &err),
                  t.key[0].name.size() % 2 ? -1 : -7);
        plat::fault_set_value_add_answer(-1);
        EXPECT_EQ(err, 0u);
        EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
        EXPECT_TRUE(traces.records().empty());
    }
}

TEST_F(Keys, AccessorErrorDoesNotStopTheConversion) {
    // The key's accessor fails (EIO) and yields nothing; the conversion is still called and,
    // finding the word set, adds nothing and refuses: its -1 is the table's answer.
    const TableRow& t = expect().table("tbl_ntp_peer_eol");
    plat::fault_fail_nth("accessor", 1);
    const long before = plat::fault_calls("gx_do_nvlist_add_value");
    const long calls = plat::fault_calls("accessor");
    EXPECT_EQ(table_row(t.name).to_nvlist(nullptr, 0, rows_of(t.name).front(), nvlist, &err), -1);
    EXPECT_EQ(err, 5u);
    EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
    EXPECT_EQ(plat::fault_calls("gx_do_nvlist_add_value"), before);
    EXPECT_EQ(plat::fault_calls("accessor") - calls, 1) << "the key value is read once";
}

TEST_F(Keys, KeyPartFailureTracesWithTheKeyFieldAndKeepsEarlierParts) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty() || t.key.size() < 2) continue;
        const db::TableInfo& info = *db::table_info(t.name);
        const std::string key_type(info.key_name);
        for (size_t part = 0; part < t.key.size(); ++part) {
            SCOPED_TRACE(t.name + " part " + t.key[part].name);
            renew();
            plat::TraceCapture traces;
            plat::fault_fail_nth("gx_do_nvlist_add_value", static_cast<long>(part) + 1);
            plat::fault_set_value_add_answer(-7);   // the part's answer is not handed on
            EXPECT_EQ(table_row(t.name).to_nvlist(nullptr, 0, rows_of(t.name).front(), nvlist, &err), -1);
            plat::fault_set_value_add_answer(-1);
            EXPECT_EQ(names(), names_of(t.key, part));
            const auto recs = traces.records();
            ASSERT_EQ(recs.size(), 1u);
            EXPECT_EQ(recs[0].unit, "to_nvlist");
            EXPECT_EQ(recs[0].level, k_error_level);
            EXPECT_EQ(recs[0].text, key_type + " to_nvlist arbor_nvlist_add_" + t.key[part].word + " for " + key_type +
                                        " failed err=0");
        }
    }
}

TEST_F(Keys, EnumerationsRenderTheirValueTextsAndRefuseWhatTheyCannotRender) {
    size_t enums = 0, gated = 0;
    for (const TypeRow& row : expect().types) {
        if (row.category != "enum") continue;
        if (internal(row.name + "_to_nvlist") == nullptr) {
            EXPECT_EQ(row.name, "rsl_boolean") << "only the library's own enumeration has no front-end form";
            continue;
        }
        const auto fn = internal_fn<enum_nvlist_fn>(row.name + "_to_nvlist");
        ++enums;
        SCOPED_TRACE(row.name);
        // Enumeration values are read from any enumeration cell; om_node's obj_type holds them.
        db::RecordPtr rec = db::make_record("om_node");
        const std::string path = "obj_type";
        const db::TypeInfo& e = *db::type_info(row.name);
        for (uint32_t v = 0; v <= e.values.size(); ++v) {
            db::set_int(*rec, path, v);
            db::set_value_variant(*rec, path, db::latest_variant());
            renew();
            const int32_t result = fn(nullptr, 0, "attr", nvlist, 1, 1, db::handle(*rec, path), &err);
            if (v == e.values.size()) {   // no text for it
                EXPECT_EQ(result, -1);
                EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
                continue;
            }
            ASSERT_EQ(result, 1) << v;
            const plat::NameValueList items = plat::nvlist_items(nvlist);
            EXPECT_EQ(items[0].name, "attr");
            EXPECT_EQ(std::get<plat::EnumText>(items[0].value.v).text, e.values[v]);
            EXPECT_TRUE(items[0].value.is_default);
            const uint8_t level = e.value_levels.empty() ? 0 : e.value_levels[v];
            if (level == 0) continue;
            // An extension value below its level: a null under the value's own text.
            ++gated;
            db::set_value_variant(*rec, path, level - 1);
            renew();
            EXPECT_EQ(fn(nullptr, 0, "attr", nvlist, 1, 1, db::handle(*rec, path), &err), 1);
            const plat::NameValueList null_items = plat::nvlist_items(nvlist);
            EXPECT_EQ(null_items[0].name, e.values[v]);
            EXPECT_TRUE(std::holds_alternative<plat::Null>(null_items[0].value.v));
        }
        db::set_int(*rec, path, 0);
        const void* h = db::handle(*rec, path);
        uint32_t pending = 9;
        EXPECT_EQ(fn(nullptr, 0, "attr", nvlist, 0, 1, h, &pending), -1);
        EXPECT_EQ(fn(nullptr, 0, "attr", nullptr, 0, 1, h, &err), -1);
        EXPECT_EQ(fn(nullptr, 0, nullptr, nvlist, 0, 1, h, &err), -1);
        EXPECT_EQ(fn(nullptr, 0, "attr", nvlist, 0, 1, nullptr, &err), -1);
        EXPECT_EQ(pending, 9u);
    }
    EXPECT_EQ(enums, 13u);
    EXPECT_EQ(gated, 147u);
}

TEST_F(Keys, NegativeVariantAbortsOnlyTheEnumerationsThatCheckIt) {
    for (const char* name : {"obj_type", "zan_cfg_union", "addr_type"}) {
        SCOPED_TRACE(name);
        const auto fn = internal_fn<enum_nvlist_fn>(std::string(name) + "_to_nvlist");
        ASSERT_NE(fn, nullptr);
        db::RecordPtr rec = db::make_record("om_node");
        const std::string path = "obj_type";
        db::set_value_variant(*rec, path, -1);
        const void* h = db::handle(*rec, path);
        if (std::string(name) == "addr_type") {
            EXPECT_EQ(fn(nullptr, 0, "attr", nvlist, 0, 1, h, &err), 1);
            continue;
        }
        EXPECT_DEATH(
            {
                fatal_traces_to_stderr();
                fn(nullptr, 0, "attr", nvlist, 0, 1, h, &err);
            },
            std::string(name) + " Recieved variant -1 < base version 0");
    }
}

TEST_F(Keys, KeyTypesRefuseWhatTheyCannotRenderWithFourteen) {
    using key_type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_nvlist*, const void*, uint32_t*);
    for (const TableRow& t : expect().tables) {
        if (t.name.empty() || t.key.size() < 2) continue;
        const std::string key_type(db::table_info(t.name)->key_name);
        SCOPED_TRACE(key_type);
        const auto fn = internal_fn<key_type_fn>(key_type + "_to_nvlist");
        ASSERT_NE(fn, nullptr);
        const void* key = db::row_record(*rows_of(t.name).front(), t.key_record);
        EXPECT_EQ(fn(nullptr, 0, key_type.c_str(), nvlist, key, nullptr), -1);
        for (int missing = 0; missing < 3; ++missing) {
            renew();
            plat::rsl_stored_error_clear();
            EXPECT_EQ(fn(&err, 0, missing == 0 ? nullptr : key_type.c_str(), missing == 1 ? nullptr : nvlist,
                         missing == 2 ? nullptr : key, &err),
                      -1);
            EXPECT_EQ(err, 14u);
            ASSERT_TRUE(plat::rsl_stored_error().has_value());
            EXPECT_EQ(plat::rsl_stored_error()->number, 14u);
            EXPECT_EQ(gx_do_nvlist_get_len(nvlist), 0);
        }
        // Given everything, the parts under their own names, not under the key's.
        renew();
        EXPECT_EQ(fn(nullptr, 0, "any name", nvlist, key, &err), static_cast<int32_t>(t.key.size()));
        EXPECT_EQ(names(), names_of(t.key));
    }
}
