// Rendering to value lists: whole types through the to_vlist_all column of
// zan_config_db_fe_gx_type_dispatch_vft, and the attribute selectors, null runs and
// enumeration forms, which no array holds: those are found by name in the library's symbol
// table (fe_test::internal).
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "harness.hpp"
#include "zan/config.hpp"
#include "zan/database.hpp"

using namespace fe_test;
namespace db = zan::db;
namespace plat = zan::plat;

namespace {


using null_vlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist*, uint32_t*);
using select_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, char**, const void*, gx_do_vlist*, int32_t,
                              uint32_t*);
using enum_vlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_vlist*, int32_t, int32_t, uint32_t*);

zan_type_to_vlist_all_fn vlist_row(const std::string& type) {
    init();
    const auto* rows = static_cast<const zan_gx_type_vlist_row*>(registered().gx_type_dispatch);
    for (const TypeRow& t : expect().types)
        if (t.name == type) return rows[t.row].to_vlist_all;
    ADD_FAILURE() << "no type row " << type;
    return nullptr;
}


// Leaf attribute names of a record, dotted as selectors read them, in declaration order
// (extension attributes last), and the path the store sets them by.
void leaf_names(const db::TypeInfo& t, const std::string& prefix, std::vector<std::string>& out) {
    for (const db::FieldInfo& f : t.fields) {
        if (f.role != db::FieldRole::attribute) continue;
        if (f.kind == db::FieldKind::nested)
            leaf_names(*f.target, prefix + std::string(f.name) + ".", out);
        else
            out.push_back(prefix + std::string(f.name));
    }
}

// Sets every discriminator below (and in) rec to `pick(arms)`.
template <class Pick>
void set_discriminators(db::Record& rec, const db::TypeInfo& t, const std::string& prefix, Pick pick) {
    int arms = 0;
    for (const db::FieldInfo& f : t.fields)
        if (f.role == db::FieldRole::attribute && f.arm != 0) ++arms;
    for (const db::FieldInfo& f : t.fields) {
        if (f.role != db::FieldRole::attribute) continue;
        if (std::string_view(f.name) == "descriminator") db::set_int(rec, prefix + "descriminator", pick(arms));
        if (f.kind == db::FieldKind::nested)
            set_discriminators(rec, *f.target, prefix + std::string(f.name) + ".", pick);
    }
}

// Every integer and text leaf gets a value of its own, so that positions can be told apart.
void fill_distinct(db::Record& rec, const db::TypeInfo& t, const std::string& prefix, int& n) {
    for (const db::FieldInfo& f : t.fields) {
        if (f.role != db::FieldRole::attribute) continue;
        const std::string path = prefix + std::string(f.name);
        if (f.kind == db::FieldKind::nested) {
            fill_distinct(rec, *f.target, path + ".", n);
        } else if (f.kind == db::FieldKind::leaf && db::is_integer(f.word)) {
            db::set_int(rec, path, 1 + n++ % 100);
        } else if (f.kind == db::FieldKind::leaf && f.word == db::Word::rsl_vstring) {
            db::set_text(rec, path, "v" + std::to_string(n++));
        }
    }
}

// One value list per test, released with it; faults and variants are put back.
class Vlist : public ::testing::Test {
protected:
    gx_do_vlist* list = nullptr;
    uint32_t err = 0;
    void SetUp() override {
        init();
        list = gx_do_vlist_new();
    }
    void TearDown() override {
        gx_do_vlist_deref(list);
        plat::fault_clear_all();
        db::clear_default_variants();
    }
    void fresh() {
        gx_do_vlist_deref(list);
        list = gx_do_vlist_new();
        err = 0;
    }
    plat::ValueList values() { return plat::vlist_values(list); }
    int32_t all(const std::string& type, const void* obj, int32_t with_state = 0) {
        return vlist_row(type)(nullptr, 0, obj, list, with_state, &err);
    }
    // A selector walk over a dotted name, as a table's row operation makes it.
    int32_t select(const std::string& type, const void* obj, const std::string& name, int32_t with_state = 0) {
        std::vector<char> copy(name.begin(), name.end());
        copy.push_back('\0');
        char* save = nullptr;
        const char* token = strtok_r(copy.data(), ".", &save);
        return internal_fn<select_fn>(type + "_to_vlist")(nullptr, 0, token, &save, obj, list, with_state, &err);
    }
    int32_t null_run(const std::string& type) {
        return internal_fn<null_vlist_fn>(type + "_to_null_vlist")(nullptr, 0, list, &err);
    }
    // harness's failing() on a fresh list.
    Failed failing(const char* point, long nth, const std::function<int32_t()>& call) {
        fresh();
        return fe_test::failing(point, nth, call);
    }
};

}  // namespace

// ---------------------------------------------------------------- catalogue-wide

TEST_F(Vlist, EveryDefaultRowGivesOneValuePerColumnAndEachSelectorItsPositionalValue) {
    size_t rows_seen = 0, attributes = 0;
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        const db::TableInfo* info = db::table_info(t.name);
        ASSERT_NE(info, nullptr);
        ASSERT_FALSE(default_store().rows(*info).empty()) << "the default configuration has no row";
        for (const db::Row* row : default_store().rows(*info)) {
            ++rows_seen;
            fresh();
            std::vector<std::pair<size_t, std::string>> names;   // top record, attribute name
            for (size_t i = 0; i < info->rows.size(); ++i) {
                const db::Record* rec = db::row_record(*row, i);
                ASSERT_GE(all(std::string(info->rows[i]->name), rec), 0);
                std::vector<std::string> n;
                leaf_names(*info->rows[i], "", n);
                for (auto& s : n) names.emplace_back(i, s);
            }
            EXPECT_EQ(err, 0u);
            const plat::ValueList positional = values();
            ASSERT_EQ(positional.size(), t.columns.size());
            ASSERT_EQ(names.size(), t.columns.size());
            for (size_t c = 0; c < names.size(); ++c) {
                std::string bare = names[c].second;
                std::erase(bare, '.');
                std::string col = t.columns[c].name;
                std::erase(col, '.');
                ASSERT_EQ(bare, col);   // the walk above names the columns in their order
                fresh();
                const size_t top = names[c].first;
                const int32_t r = select(std::string(info->rows[top]->name), db::row_record(*row, top),
                                         names[c].second);
                ASSERT_GT(r, 0) << names[c].second;
                const plat::ValueList one = values();
                ASSERT_EQ(one.size(), 1u) << names[c].second;
                EXPECT_EQ(one[0], positional[c]) << names[c].second;
                ++attributes;
            }
        }
    }
    EXPECT_GE(rows_seen, expect().tables.size() - 2);
    EXPECT_GT(attributes, 0u);
}

TEST_F(Vlist, ValueCountDoesNotDependOnDiscriminators) {
    for (const TableRow& t : expect().tables) {
        if (t.name.empty()) continue;
        SCOPED_TRACE(t.name);
        const db::TableInfo* info = db::table_info(t.name);
        // 0 selects no arm; 1 and the last arm; a value above the arms selects none either.
        for (int choice = 0; choice < 4; ++choice) {
            SCOPED_TRACE(choice);
            db::RowPtr row = db::make_row(t.name);
            fresh();
            int n = 0;
            for (size_t i = 0; i < info->rows.size(); ++i) {
                db::Record& rec = *db::row_record(*row, i);
                fill_distinct(rec, *info->rows[i], "", n);
                set_discriminators(rec, *info->rows[i], "", [choice](int arms) {
                    return choice == 0 ? 0 : choice == 1 ? 1 : choice == 2 ? arms : std::min(arms + 1, 22);
                });
                ASSERT_GE(all(std::string(info->rows[i]->name), &rec), 0);
            }
            EXPECT_EQ(values().size(), t.columns.size());
            EXPECT_EQ(err, 0u);
        }
    }
}

TEST_F(Vlist, EveryRecordTypeAndItsNullRunGiveOneValuePerColumn) {
    // Fresh records: every discriminator 0, so every arm comes as nulls. Null runs exist for
    // exactly the types that can stand in an arm, and give as many nulls as the type has columns.
    size_t nulls = 0;
    for (const RecordRow& r : expect().records) {
        SCOPED_TRACE(r.name);
        db::RecordPtr rec = db::make_record(r.name);
        fresh();
        ASSERT_GE(all(r.name, rec.get()), 0);
        EXPECT_EQ(values().size(), r.columns);
        ASSERT_EQ(internal(r.name + "_to_null_vlist") != nullptr, arm_types().count(r.name) == 1);
        if (arm_types().count(r.name) == 0) continue;
        ++nulls;
        fresh();
        ASSERT_GE(null_run(r.name), 0);
        const plat::ValueList v = values();
        EXPECT_EQ(v.size(), r.columns);
        for (const plat::Value& x : v) EXPECT_TRUE(is_null(x));
    }
    EXPECT_GT(nulls, 0u);
}

TEST_F(Vlist, TypeVectorRowsPointAtTheirFamily) {
    init();
    const auto* rows = static_cast<const zan_gx_type_vlist_row*>(registered().gx_type_dispatch);
    size_t records = 0, enums = 0, flags = 0, base = 0, empty = 0;
    for (const TypeRow& t : expect().types) {
        SCOPED_TRACE(t.name);
        const zan_gx_type_vlist_row& row = rows[t.row];
        EXPECT_EQ(row.kind, t.kind_vlist);
        if (t.name.empty()) {
            EXPECT_EQ(row.to_vlist_all, nullptr);
            ++empty;
            continue;
        }
        ASSERT_NE(row.to_vlist_all, nullptr);
        Dl_info info{};
        ASSERT_NE(dladdr(reinterpret_cast<void*>(row.to_vlist_all), &info), 0);
        const std::string own = t.name + "_to_vlist_all";
        if (t.category == "library" || t.name == "rsl_boolean") {
            // The schema library's own row function, not one of ours.
            EXPECT_EQ(reinterpret_cast<void*>(row.to_vlist_all), dlsym(RTLD_DEFAULT, own.c_str()));
            EXPECT_EQ(internal(own), nullptr);
            ++base;
        } else {
            EXPECT_EQ(reinterpret_cast<void*>(row.to_vlist_all), internal(own));
            (t.category == "record" ? records : t.category == "enum" ? enums : flags)++;
        }
    }
    EXPECT_EQ(records, expect().records.size());
    EXPECT_EQ(records + enums + flags + base + empty, expect().types.size());
}

// ---------------------------------------------------------------- unions and state

TEST_F(Vlist, UnionDeliversItsSelectedArmAndNullsTheOthers) {
    for_each_discriminator([&](db::Record& rec, uint32_t value) {
        db::set_int(rec, "compound_66.ntp_peer", 5);
        db::set_int(rec, "compound_67.ntp_server", 7);
        fresh();
        ASSERT_GT(all("ntp_peer_cp", &rec), 0);
        const plat::ValueList v = values();
        ASSERT_EQ(v.size(), 3u);
        EXPECT_EQ(std::get<plat::EnumText>(v[0].v).text, value == 0 ? "ZAN_CFG_NONE" : "ZAN_CFG_" + std::to_string(value - 1));
        EXPECT_EQ(is_null(v[1]), value != 1);
        EXPECT_EQ(is_null(v[2]), value != 2);
        if (value == 2) {
            EXPECT_EQ(std::get<int64_t>(v[2].v), 7);
        }
        // The selector: the selected arm's value, or one null for an unselected arm whatever
        // the rest of the name says.
        for (const char* name : {"compound_66.ntp_peer", "compound_67.ntp_server", "compound_66.nonsense"}) {
            fresh();
            const int32_t r = select("ntp_peer_cp", &rec, name);
            const bool selected = (value == 1 && std::strncmp(name, "compound_66", 11) == 0) ||
                                  (value == 2 && std::strncmp(name, "compound_67", 11) == 0);
            if (selected && std::strstr(name, "nonsense")) {
                EXPECT_EQ(r, 0) << name;
                EXPECT_TRUE(values().empty());
                continue;
            }
            EXPECT_GT(r, 0) << name;
            ASSERT_EQ(values().size(), 1u) << name;
            EXPECT_EQ(is_null(values()[0]), !selected) << name;
        }
    });
    // A discriminator without a name: the union fails in its first value, naming the field.
    db::RecordPtr rec = db::make_record("ntp_peer_cp");
    db::set_int(*rec, "descriminator", 23);
    fresh();
    plat::TraceCapture traces;
    EXPECT_EQ(all("ntp_peer_cp", rec.get()), -1);
    EXPECT_EQ(texts(traces),
              std::vector<std::string>{"ntp_peer_cp to_vlist_all zan_cfg_union_to_vlist for ntp_peer_cp_descriminator failed"});
    EXPECT_EQ(traces.records().at(0).level, k_error_level);
}

TEST_F(Vlist, StateFlagGivesPresentAndDefaultAndIsReadOnlyWithState) {
    for_each_state_flag([&](db::Record& rec, bool present, bool is_default) {
        fresh();
        ASSERT_GT(all("ntp_maxdistance_cp", &rec, 1), 0);
        ASSERT_EQ(values().size(), 1u);
        EXPECT_EQ(!is_null(values()[0]), present);
        EXPECT_EQ(values()[0].is_default, is_default);
        fresh();
        ASSERT_GT(select("ntp_maxdistance_cp", &rec, "ntp_mdist_value_1", 1), 0);
        EXPECT_EQ(values().at(0).is_default, is_default);
    });
    // Without state: one accessor call (the value), and a flag of 0 changes nothing.
    db::RecordPtr rec = db::make_record("ntp_maxdistance_cp");
    db::set_state(*rec, "ntp_mdist_value_1", 0);
    fresh();
    const long before = plat::fault_calls("accessor");
    ASSERT_GT(all("ntp_maxdistance_cp", rec.get()), 0);
    EXPECT_EQ(plat::fault_calls("accessor") - before, 1);
    EXPECT_FALSE(is_null(values().at(0)));
}

TEST_F(Vlist, DefaultComparisonNeedsANonNegativeDefaultVariant) {
    for_each_default_case([&](db::Record& rec, const std::string& leaf, bool is_default) {
        fresh();
        ASSERT_GT(all("ntp_peer_cp_0_cp", &rec), 0);
        EXPECT_EQ(values().at(0).is_default, is_default);
        fresh();
        ASSERT_GT(select("ntp_peer_cp_0_cp", &rec, leaf), 0);
        EXPECT_EQ(values().at(0).is_default, is_default);
    });
}

TEST_F(Vlist, ErrorWordSetMidRecordLeavesOutLeavesAndFailsEveryNestedLevel) {
    // ntp_maxdist_eol: singleton_id, then compound_0. -> ntp_maxdistance_cp. A failing read
    // of the leaf's value sets the word; its conversion then adds nothing and refuses, which
    // fails the record at that leaf.
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    Failed f = failing("accessor", 1, [&] { return all("ntp_maxdist_eol", rec.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(err, 5u);
    EXPECT_TRUE(values().empty());
    EXPECT_EQ(f.traces, std::vector<std::string>{"ntp_maxdist_eol to_vlist_all u_int32_to_vlist "
                                                 "for ntp_maxdist_eol_singleton_id failed"});
    db::RecordPtr two = db::make_record("rsl_binidx");   // val, seq_num: two u_int32 leaves
    fresh();
    ASSERT_EQ(all("rsl_binidx", two.get()), 2);
    // seq_num's value: val stands, seq_num fails
    f = failing("accessor", 2, [&] { return all("rsl_binidx", two.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_EQ(f.traces, std::vector<std::string>{"rsl_binidx to_vlist_all u_int32_to_vlist for rsl_binidx_seq_num failed"});
    // In a union the discriminator is left out and the unselected arms too, with no null run
    // and no trace; the selected arm is still called, answers -1 and is traced.
    // The word is set by the first arm's read of the discriminator, the next to last accessor
    // call of a rendering with no arm selected.
    db::RecordPtr u = db::make_record("ntp_peer_cp");
    fresh();
    const long before = plat::fault_calls("accessor");
    ASSERT_GT(all("ntp_peer_cp", u.get()), 0);
    const long first_arm = plat::fault_calls("accessor") - before - 1;
    f = failing("accessor", first_arm, [&] { return all("ntp_peer_cp", u.get()); });
    EXPECT_EQ(f.result, 1);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_TRUE(f.traces.empty());
    db::set_int(*u, "descriminator", 2);
    const std::string arm(db::type_info("ntp_peer_cp")->field("compound_67")->type);
    f = failing("accessor", first_arm, [&] { return all("ntp_peer_cp", u.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_EQ(f.traces, std::vector<std::string>{"ntp_peer_cp to_vlist_all " + arm +
                                                 "_to_vlist ntp_peer_cp_compound_67 failed"});
    // A set word between tokens: the next selector refuses.
    fresh();
    err = 5;
    EXPECT_EQ(select("ntp_maxdist_eol", rec.get(), "singleton_id"), -1);
    EXPECT_EQ(all("ntp_maxdist_eol", rec.get()), -1);
}

TEST_F(Vlist, NegativeVariantAborts) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    db::set_variant(*rec, -1);
    // Each writes its fatal line (level 0, shown as "[text]") before the abort.
    const std::string fatal = "\\[ntp_maxdist_eol Received variant -1 < base version 0\\]";
    EXPECT_DEATH((fatal_traces_to_stderr(), all("ntp_maxdist_eol", rec.get())), fatal);
    EXPECT_DEATH((fatal_traces_to_stderr(), all("ntp_maxdist_eol", rec.get(), 1)), fatal);
    EXPECT_DEATH((fatal_traces_to_stderr(), select("ntp_maxdist_eol", rec.get(), "singleton_id")), fatal);
    db::RecordPtr u = db::make_record("ntp_peer_cp");
    db::set_value_variant(*u, "descriminator", -2);
    auto zan_cfg_union = internal_fn<enum_vlist_fn>("zan_cfg_union_to_vlist");
    EXPECT_DEATH((fatal_traces_to_stderr(), zan_cfg_union(nullptr, 0, db::handle(*u, "descriminator"), list, 0, 1, &err)),
                 "\\[zan_cfg_union Recieved variant -2 < base version 0\\]");
}

TEST_F(Vlist, NegativeVariantWritesTheFatalTraceFirst) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    db::set_variant(*rec, -3);
    EXPECT_DEATH(
        {
            fatal_traces_to_stderr();
            all("ntp_maxdist_eol", rec.get());
        },
        "\\[ntp_maxdist_eol Received variant -3 < base version 0\\]");
}

// ---------------------------------------------------------------- extensions

TEST_F(Vlist, ExtensionsAboveTheVariantComeAsNulls) {
    const db::TypeInfo* t = db::type_info("ci_ip_helpaddr_eol");
    std::vector<std::string> names;
    leaf_names(*t, "", names);
    ASSERT_EQ(names.back(), "ci_ip_helpaddr_vrf_name");
    db::RecordPtr rec = db::make_record("ci_ip_helpaddr_eol");
    db::set_text(*rec, "ci_ip_helpaddr_vrf_name", "blue");
    for (int32_t variant : {0, 1, 2}) {
        SCOPED_TRACE(variant);
        db::set_variant(*rec, variant);
        fresh();
        plat::TraceCapture traces;
        ASSERT_GT(all("ci_ip_helpaddr_eol", rec.get()), 0);
        ASSERT_EQ(values().size(), names.size());
        EXPECT_EQ(is_null(values().back()), variant < 1);
        if (variant < 1) {
            ASSERT_EQ(traces.records().size(), 1u);
            EXPECT_EQ(traces.records()[0].text,
                      "ci_ip_helpaddr_eol version < 1 Rendering extension v166_ci_ip_helpaddr_eol_ext as null..");
            EXPECT_EQ(traces.records()[0].level, k_debug_level);
        } else {
            EXPECT_EQ(std::get<std::string>(values().back().v), "blue");
            EXPECT_TRUE(traces.records().empty());
        }
        fresh();
        traces.clear();
        ASSERT_GT(select("ci_ip_helpaddr_eol", rec.get(), "ci_ip_helpaddr_vrf_name"), 0);
        EXPECT_EQ(is_null(values().at(0)), variant < 1);
        if (variant < 1) {
            EXPECT_EQ(texts(traces),
                      (std::vector<std::string>{"ci_ip_helpaddr_eol version < 1, cannot render value for attr in "
                                                "extension v166_ci_ip_helpaddr_eol_ext",
                                                "ci_ip_helpaddr_eol to_vlist rendering null for this "
                                                "ci_ip_helpaddr_vrf_name"}));
        }
        // Any token that gets that far writes the first of them.
        fresh();
        traces.clear();
        EXPECT_EQ(select("ci_ip_helpaddr_eol", rec.get(), "nonsense"), 0);
        EXPECT_EQ(traces.records().size(), variant < 1 ? 1u : 0u);
    }
    // The null of the extension fails: its debug trace with the number, which is returned.
    db::set_variant(*rec, 0);
    const Failed f = failing("gx_do_vlist_add_null", 1, [&] { return all("ci_ip_helpaddr_eol", rec.get()); });
    EXPECT_LT(f.result, 0);
    EXPECT_EQ(f.traces.back(), "ci_ip_helpaddr_eol error(-1) in rendering extension v166_ci_ip_helpaddr_eol_ext");
    EXPECT_EQ(f.level, k_debug_level);
}

TEST_F(Vlist, ExtensionsWithoutAttributesAddNothingAndEndOnTheErrorWord) {
    db::RecordPtr rec = db::make_record("uidb_act_interface");
    const size_t columns = expect().record("uidb_act_interface").columns;
    db::set_variant(*rec, 1);
    plat::TraceCapture traces;
    EXPECT_EQ(all("uidb_act_interface", rec.get()), 0);   // levels 2 and 3 as "null": result 0
    EXPECT_EQ(values().size(), columns);
    EXPECT_EQ(texts(traces),
              (std::vector<std::string>{"uidb_act_interface version < 2 Rendering extension v167_uidb_act_interface_ext as null..",
                                        "uidb_act_interface version < 3 Rendering extension v1612_uidb_act_interface_ext as null.."}));
    // The word set by the last accessor call of the fields: the first extension below the
    // variant ends the rendering with -1.
    db::set_variant(*rec, 0);
    fresh();
    long before = plat::fault_calls("accessor");
    ASSERT_EQ(all("uidb_act_interface", rec.get()), 0);
    const long last = plat::fault_calls("accessor") - before;
    const Failed f = failing("accessor", last, [&] { return all("uidb_act_interface", rec.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces,
              (std::vector<std::string>{"uidb_act_interface version < 1 Rendering extension v166_uidb_act_interface_ext as null..",
                                        "uidb_act_interface error(-1) in rendering extension v166_uidb_act_interface_ext"}));
    EXPECT_EQ(f.level, k_debug_level);
    // om_node_oid reads no variant: always the null branch, its cid's result replaced by 0.
    db::RecordPtr oid = db::make_record("om_node_oid");
    fresh();
    traces.clear();
    EXPECT_EQ(all("om_node_oid", oid.get()), 0);
    EXPECT_EQ(values().size(), 1u);
    EXPECT_EQ(texts(traces),
              std::vector<std::string>{"om_node_oid version < 1 Rendering extension v163_om_node_oid_ext as null.."});
    fresh();
    traces.clear();
    EXPECT_GT(select("om_node_oid", oid.get(), "cid"), 0);
    EXPECT_TRUE(traces.records().empty());
    EXPECT_EQ(select("om_node_oid", oid.get(), "other"), 0);
    EXPECT_EQ(texts(traces), std::vector<std::string>{"om_node_oid version < 1, cannot render value for attr in "
                                                      "extension v163_om_node_oid_ext"});
}

// ---------------------------------------------------------------- arrays

TEST_F(Vlist, ArraysAreOneValueEmptyWhenCountIsZeroNullOnlyByTheirFlag) {
    db::RecordPtr rec = db::make_record("vlan_group");
    for (const std::vector<uint64_t>& elements : {std::vector<uint64_t>{}, std::vector<uint64_t>{3, 4, 5}}) {
        db::set_array(*rec, "vlans", elements);
        fresh();
        ASSERT_GT(all("vlan_group", rec.get()), 0);
        const plat::Value v = values().back();
        ASSERT_TRUE(std::holds_alternative<plat::ValueList>(v.v));
        const auto& got = std::get<plat::ValueList>(v.v);
        ASSERT_EQ(got.size(), elements.size());
        for (size_t i = 0; i < got.size(); ++i) EXPECT_EQ(std::get<uint64_t>(got[i].v), elements[i]);
        fresh();
        ASSERT_GT(select("vlan_group", rec.get(), "vlans"), 0);
        EXPECT_EQ(values().at(0), v);
    }
    // The whole-array flag: one null and no element accessor; elements carry their own flags.
    db::set_state(*rec, "vlans", 4);
    fresh();
    const long before = plat::fault_calls("accessor");
    ASSERT_GE(all("vlan_group", rec.get(), 1), 0);
    EXPECT_TRUE(is_null(values().back()));
    EXPECT_EQ(plat::fault_calls("accessor") - before, 3);   // name: state, value; vlans: whole state
    db::set_state(*rec, "vlans", 2);
    db::set_element_state(*rec, "vlans", 1, 0);
    fresh();
    ASSERT_GT(all("vlan_group", rec.get(), 1), 0);
    const plat::ValueList elements = std::get<plat::ValueList>(values().back().v);
    ASSERT_EQ(elements.size(), 3u);
    EXPECT_FALSE(is_null(elements[0]));
    EXPECT_TRUE(is_null(elements[1]));
    // rsl_luid's array is its only field: a successful null leaves the result at 0.
    db::RecordPtr luid = db::make_record("rsl_luid");
    db::set_state(*luid, "data", 0);
    fresh();
    EXPECT_EQ(all("rsl_luid", luid.get(), 1), 0);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_TRUE(is_null(values()[0]));
    fresh();
    EXPECT_EQ(all("rsl_luid", luid.get()), 1);
    EXPECT_EQ(std::get<plat::ValueList>(values().at(0).v).size(), 16u);
}

// A counted array's bound is its count as it stands before the first element and after each
// one, and vlan_group's count counts by its low 16 bits: so in every family that fills an
// array (to_properties, to_vlist_all, the selector, to_nlist_vlist_all).
TEST_F(Vlist, CountedArrayBoundIsTheCountAtEachStepInEveryFamily) {
    using full_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*);
    // Elements of the array value at `i` (of the last value for -1); 99 when there is none.
    auto elements_at = [](const plat::ValueList& vs, long i) -> size_t {
        const size_t at = i < 0 ? vs.size() - 1 : size_t(i);
        if (vs.empty() || at >= vs.size() || !std::holds_alternative<plat::ValueList>(vs[at].v)) return 99;
        return std::get<plat::ValueList>(vs[at].v).size();
    };
    // The elements each family delivers for vlans.
    const std::map<std::string, std::function<size_t(const db::Record&)>> families = {
        {"to_properties", [&](const db::Record& r) {
             gx_do_properties* props = plat::properties_new();
             EXPECT_EQ(type_row("vlan_group")(nullptr, 0, "", props, &r, 0, &err), 0);
             const plat::Value* v = plat::properties_get(props, "vlans");
             const size_t n = v ? elements_at({*v}, 0) : 99;
             plat::properties_deref(props);
             return n;
         }},
        {"to_vlist_all", [&](const db::Record& r) {
             fresh();
             EXPECT_GT(all("vlan_group", &r), 0);
             return elements_at(values(), -1);
         }},
        {"selector", [&](const db::Record& r) {
             fresh();
             EXPECT_GT(select("vlan_group", &r, "vlans"), 0);
             return elements_at(values(), 0);
         }},
        {"to_nlist_vlist_all", [&](const db::Record& r) {
             fresh();
             gx_do_nlist* names = gx_do_nlist_new();
             EXPECT_GE(internal_fn<full_fn>("vlan_group_to_nlist_vlist_all")(nullptr, 0, &r, names, list, 0, &err), 0);
             gx_do_nlist_deref(names);
             return elements_at(values(), 1);
         }},
    };
    db::RecordPtr three = db::make_record("vlan_group");
    db::set_array(*three, "vlans", {7, 8, 9});
    db::RecordPtr wide = db::make_record("vlan_group");   // two elements, count 65,538
    db::set_array(*wide, "vlans", {7, 8});
    db::set_int(*wide, "num_vlans", 65538);
    struct Case {
        const char* what;
        const db::Record* rec;
        std::vector<uint32_t> reads;   // what the count's reads answer in turn, then the stored count
        size_t elements;
    };
    for (const Case& c : {Case{"count 65,538: its low 16 bits", wide.get(), {}, 2},
                          Case{"0x10001 read: one element", three.get(), {0x10001, 0x10001}, 1},
                          Case{"shrinks to 1 after the first", three.get(), {3, 1}, 1},
                          Case{"grows from 1 to 3 after the first", three.get(), {1}, 3},
                          Case{"stored count", three.get(), {}, 3}})
        for (const auto& [family, elements] : families) {
            SCOPED_TRACE(std::string(c.what) + ", " + family);
            err = 0;
            db::bound_script(c.reads);
            EXPECT_EQ(elements(*c.rec), c.elements);
            EXPECT_EQ(err, 0u);
        }
    db::bound_script({});
}

// The count's second read fails: it answers nothing, so the loop ends after one element
// and the array still goes out.
TEST_F(Vlist, AFailedCountReadEndsTheArray) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_array(*rec, "vlans", {1, 2, 3});
    // Accessor calls of the array: the count, then per element the element and the count.
    fresh();
    const long before = plat::fault_calls("accessor");
    ASSERT_GT(all("vlan_group", rec.get()), 0);
    const long ahead = plat::fault_calls("accessor") - before - (1 + 2 * 3);   // the fields before it
    const long second_count = ahead + 3;
    fresh();
    plat::fault_fail_nth("accessor", second_count);
    ASSERT_GT(all("vlan_group", rec.get()), 0);
    EXPECT_EQ(std::get<plat::ValueList>(values().back().v).size(), 1u);
    EXPECT_EQ(err, 5u);
}

TEST_F(Vlist, ArrayFailuresTraceAndAnswerNegative) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_array(*rec, "vlans", {1, 2});
    db::set_state(*rec, "vlans", 2);
    struct Case {
        const char* point;
        long all_nth;   // an element's value comes after the name's in to_vlist_all
        std::string all_trace;
        std::vector<std::string> select_traces;
    };
    for (const Case& c :
         {Case{"gx_do_vlist_new", 1, "vlan_group to_vlist_all gx_do_vlist_new failed",
               {"vlan_group to_vlist gx_do_vlist_new failed"}},
          Case{"gx_do_vlist_add_array", 1, "vlan_group to_vlist_all gx_do_vlist_add_array failed", {}},
          Case{"gx_do_vlist_add_value", 2, "vlan_group to_vlist_all u_int16_to_vlist for vlan_group_vlans failed",
               {"vlan_group to_vlist u_int16_to_vlist for vlan_group_vlans failed"}}}) {
        SCOPED_TRACE(c.point);
        Failed f = failing(c.point, c.all_nth, [&] { return all("vlan_group", rec.get()); });
        EXPECT_LT(f.result, 0);
        EXPECT_EQ(f.traces.back(), c.all_trace);
        EXPECT_EQ(f.level, k_error_level);
        f = failing(c.point, 1, [&] { return select("vlan_group", rec.get(), "vlans"); });
        EXPECT_LT(f.result, 0);
        EXPECT_EQ(f.traces, c.select_traces);
        EXPECT_EQ(plat::live_objects().vlist, 1);   // only the test's own list is left
    }
    // The null of an unset array fails: traced by to_vlist_all only.
    db::set_state(*rec, "vlans", 0);
    Failed f = failing("gx_do_vlist_add_null", 1, [&] { return all("vlan_group", rec.get(), 1); });
    EXPECT_LT(f.result, 0);
    EXPECT_EQ(f.traces.back(), "vlan_group to_vlist_all failed for vlan_group_vlans");
    f = failing("gx_do_vlist_add_null", 1, [&] { return select("vlan_group", rec.get(), "vlans", 1); });
    EXPECT_LT(f.result, 0);
    EXPECT_TRUE(f.traces.empty());
}

// ---------------------------------------------------------------- sequences

TEST_F(Vlist, SequencesWithoutElementsAreEmptyArrays) {
    db::RecordPtr node = db::make_record("om_node");
    ASSERT_GE(all("om_node", node.get()), 0);
    const plat::ValueList v = values();
    ASSERT_EQ(v.size(), expect().record("om_node").columns);
    EXPECT_TRUE(std::get<plat::ValueList>(v[3].v).empty());   // cl
    EXPECT_TRUE(std::get<plat::ValueList>(v[4].v).empty());   // pl
    // A selector on a sequence answers 0, with the array in the list.
    fresh();
    EXPECT_EQ(select("om_node", node.get(), "cl"), 0);
    ASSERT_EQ(values().size(), 1u);
    EXPECT_TRUE(std::get<plat::ValueList>(values()[0].v).empty());
    // Unset: one null, and still 0 from the selector.
    db::set_state(*node, "cl", 0);
    fresh();
    EXPECT_EQ(select("om_node", node.get(), "cl", 1), 0);
    EXPECT_TRUE(is_null(values().at(0)));
}

TEST_F(Vlist, SequenceFailuresTraceAndAnswerMinusOne) {
    db::RecordPtr node = db::make_record("layer_head");
    struct Case {
        const char* point;
        long nth;
        std::string all_trace, select_trace;
        bool number;
    };
    for (const Case& c : {Case{"gx_do_vlist_new", 1, "layer_head to_vlist_all: gx_do_xxx_new failed",
                               "layer_head to_vlist: gx_do_xxx_new failed", false},
                          Case{"gx_do_nlist_new", 1, "layer_head to_vlist_all: gx_do_xxx_new failed",
                               "layer_head to_vlist: gx_do_xxx_new failed", false},
                          Case{"gx_do_vlist_new", 2, "layer_head to_vlist_all: gx_do_xxx_new failed",
                               "layer_head to_vlist: gx_do_xxx_new failed", false},
                          Case{"gx_do_vlist_add_array", 1, "layer_head to_vlist_all: gx_do_vlist_add_array failed: -1",
                               "layer_head to_vlist: gx_do_vlist_add_array failed: -1", true}}) {
        SCOPED_TRACE(std::string(c.point) + " " + std::to_string(c.nth));
        fresh();
        const long objects = plat::live_objects().total();
        Failed f = failing(c.point, c.nth, [&] { return all("layer_head", node.get()); });
        EXPECT_EQ(f.result, -1);
        EXPECT_EQ(f.traces.back(), c.all_trace);
        EXPECT_EQ(f.level, k_error_level);
        f = failing(c.point, c.nth, [&] { return select("layer_head", node.get(), "dwnld_marker"); });
        EXPECT_EQ(f.result, -1);
        EXPECT_EQ(f.traces, std::vector<std::string>{c.select_trace});
        EXPECT_EQ(plat::live_objects().total(), objects);   // what was made is released
    }
    db::set_state(*node, "layerl", 0);
    const Failed f = failing("gx_do_vlist_add_null", 1, [&] { return select("layer_head", node.get(), "layerl", 1); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces, std::vector<std::string>{"layer_head to_vlist: gx_do_vlist_add_null failed for layer_head_layerl"});
}

TEST_F(Vlist, SequenceElementsArePairedNameValueLists) {
    // The elements render through the paired-name family. Fail loudly while it is missing.
    for (const char* element : {"om_node_oid", "om_node", "ack_node"})
        ASSERT_NE(internal(std::string(element) + "_to_nlist_vlist_all"), nullptr)
            << element << "_to_nlist_vlist_all is not in the library: sequence elements cannot render";
    db::RecordPtr node = db::make_record("om_node");
    db::set_int(db::append(*node, "cl"), "cid", 7);
    db::set_int(db::append(*node, "cl"), "cid", 8);
    ASSERT_GT(all("om_node", node.get()), 0);
    const plat::ValueList cl = std::get<plat::ValueList>(values().at(3).v);
    ASSERT_EQ(cl.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const auto& pairs = std::get<plat::NameValueList>(cl[i].v);
        ASSERT_FALSE(pairs.empty());
        EXPECT_EQ(pairs[0].name, "cid");
        EXPECT_EQ(std::get<uint64_t>(pairs[0].value.v), 7u + i);
    }
    fresh();
    EXPECT_EQ(select("om_node", node.get(), "cl"), 0);
    EXPECT_EQ(std::get<plat::ValueList>(values().at(0).v).size(), 2u);
    // No nvlist for an element.
    Failed f = failing("gx_do_nvlist_new", 1, [&] { return all("om_node", node.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces.back(), "om_node to_vlist_all: gx_do_nvlist_new failed");
    f = failing("gx_do_nvlist_new", 1, [&] { return select("om_node", node.get(), "cl"); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces.back(), "om_node to_vlist: gx_do_nvlist_new failed");
}

TEST_F(Vlist, SequenceElementFailureAndUnsetSequenceNull) {
    // Values added before cl's element: those of the node's first fields, counted on a node
    // without elements. The next one is the element's first.
    db::RecordPtr node = db::make_record("om_node");
    long before = plat::fault_calls("gx_do_vlist_add_value");
    ASSERT_GT(all("om_node", node.get()), 0);
    const long ahead = plat::fault_calls("gx_do_vlist_add_value") - before;
    db::set_int(db::append(*node, "cl"), "cid", 3);
    fresh();
    const long objects = plat::live_objects().total();
    Failed f = failing("gx_do_vlist_add_value", ahead + 1, [&] { return all("om_node", node.get()); });
    EXPECT_LT(f.result, 0);
    EXPECT_EQ(f.traces.back(), "om_node to_vlist_all: om_node_oidto_nlist_vlist_all failed for om_node_cl");
    EXPECT_EQ(plat::live_objects().total(), objects);
    f = failing("gx_do_vlist_add_value", 1, [&] { return select("om_node", node.get(), "cl"); });
    EXPECT_LT(f.result, 0);
    EXPECT_EQ(f.traces.back(), "om_node to_vlist: om_node_oidto_nlist_vlist_all failed for om_node_cl");
    // An unset sequence whose null fails.
    db::set_state(*node, "pl", 0);
    f = failing("gx_do_vlist_add_null", 1, [&] { return all("om_node", node.get(), 1); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces.back(), "om_node to_vlist_all: gx_do_vlist_add_null failed for om_node_pl");
    EXPECT_EQ(f.level, k_error_level);
}

TEST_F(Vlist, SequenceElementWithListsOutOfStepAborts) {
    // ack_node copies its nested record's values up with gx_do_vlist_add_all; one that silently
    // takes nothing leaves the element's names and values of unequal length.
    db::RecordPtr head = db::make_record("ack_timer_head");
    db::append(*head, "layerl");
    for (bool whole : {true, false}) {
        EXPECT_DEATH(
            {
                fatal_traces_to_stderr();
                plat::fault_fail_nth("gx_do_vlist_add_all", 1);
                whole ? all("ack_timer_head", head.get()) : select("ack_timer_head", head.get(), "layerl");
            },
            "\\[ack_timer_head to_ nlist_vlist_all rendering error layerl [0-9]+ [0-9]+\\]");
    }
}

// ---------------------------------------------------------------- selectors

TEST_F(Vlist, SelectorsWalkTheDottedName) {
    db::RecordPtr rec = db::make_record("ntp_source_eol");
    db::set_int(*rec, "compound_0.ntp_source_if.handle", 9);
    EXPECT_GT(select("ntp_source_eol", rec.get(), "singleton_id"), 0);
    EXPECT_EQ(values().size(), 1u);
    fresh();
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "compound_0"), -1);   // a name may not stop at a record
    EXPECT_TRUE(values().empty());
    EXPECT_GT(select("ntp_source_eol", rec.get(), "compound_0.ntp_source_if.handle"), 0);
    EXPECT_EQ(std::get<uint64_t>(values().at(0).v), 9u);
    fresh();
    EXPECT_GT(select("ntp_source_eol", rec.get(), "compound_0..ntp_source_if.handle.rest"), 0);
    EXPECT_EQ(values().size(), 1u);
    fresh();
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "compound_0.nonsense"), 0);
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "descriminator"), 0);   // not a union
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "Singleton_id"), 0);   // exact names only
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "singleton"), 0);
    EXPECT_TRUE(values().empty());
}

TEST_F(Vlist, SelectorRefusesBadCalls) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    auto sel = internal_fn<select_fn>("ntp_maxdist_eol_to_vlist");
    char rest[] = "";
    char* save = rest;
    EXPECT_EQ(sel(nullptr, 0, std::string(256, 'a').c_str(), &save, rec.get(), list, 0, &err), 0);
    EXPECT_EQ(sel(nullptr, 0, std::string(257, 'a').c_str(), &save, rec.get(), list, 0, &err), -1);
    EXPECT_EQ(sel(nullptr, 0, nullptr, &save, rec.get(), list, 0, &err), -1);
    EXPECT_EQ(sel(nullptr, 0, "singleton_id", &save, rec.get(), nullptr, 0, &err), -1);
    char* none = nullptr;
    EXPECT_EQ(sel(nullptr, 0, "singleton_id", &none, rec.get(), list, 0, &err), -1);
    EXPECT_TRUE(values().empty());
    EXPECT_GT(sel(nullptr, 0, "singleton_id", &save, rec.get(), list, 0, &err), 0);
    // A leaf that matches while the word is set counts as no match: refused before that here.
    err = 5;
    EXPECT_EQ(sel(nullptr, 0, "singleton_id", &save, rec.get(), list, 0, &err), -1);
    // to_vlist_all refuses the same way, and a missing object too.
    err = 0;
    EXPECT_EQ(all("ntp_maxdist_eol", nullptr), -1);
    EXPECT_EQ(vlist_row("ntp_maxdist_eol")(nullptr, 0, rec.get(), nullptr, 0, &err), -1);
    EXPECT_EQ(values().size(), 1u);
}

TEST_F(Vlist, SelectorTracesNothingForALeafFailure) {
    db::RecordPtr rec = db::make_record("ntp_maxdist_eol");
    Failed f = failing("gx_do_vlist_add_value", 1,
                       [&] { return select("ntp_maxdist_eol", rec.get(), "compound_0.ntp_mdist_value_1"); });
    EXPECT_EQ(f.result, -1);
    EXPECT_TRUE(f.traces.empty());
    f = failing("gx_do_vlist_add_value", 1, [&] { return all("ntp_maxdist_eol", rec.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces,
              (std::vector<std::string>{"ntp_maxdist_eol to_vlist_all u_int32_to_vlist for ntp_maxdist_eol_singleton_id failed"}));
    f = failing("gx_do_vlist_add_value", 2, [&] { return all("ntp_maxdist_eol", rec.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces,
              (std::vector<std::string>{
                  "ntp_maxdistance_cp to_vlist_all int32_to_vlist for ntp_maxdistance_cp_ntp_mdist_value_1 failed",
                  "ntp_maxdist_eol to_vlist_all ntp_maxdistance_cp_to_vlist for ntp_maxdist_eol_compound_0 failed"}));
}

// ---------------------------------------------------------------- null runs

TEST_F(Vlist, NullRunsFailWithTheFieldAndTypeGluedInTheirTrace) {
    // ntp_peer_cp with arm 2 selected: arm 1 (ntp_peer_cp_0_cp) goes as a null run, and fails.
    const std::string arm_type(db::type_info("ntp_peer_cp")->field("compound_66")->type);
    const std::string arm_leaf(db::type_info(arm_type)->fields.at(0).name);
    db::RecordPtr rec = db::make_record("ntp_peer_cp");
    db::set_int(*rec, "descriminator", 2);
    const Failed f = failing("gx_do_vlist_add_null", 1, [&] { return all("ntp_peer_cp", rec.get()); });
    EXPECT_EQ(f.result, -1);
    EXPECT_EQ(f.traces,
              (std::vector<std::string>{arm_type + " to_vlist_all: int32 set null failed for " + arm_leaf + "for " + arm_type,
                                        "ntp_peer_cp to_vlist_all: " + arm_type + " set null failed for compound_66for ntp_peer_cp"}));
    EXPECT_EQ(values().size(), 1u);   // the discriminator went out first
    // Refusals, and a set word between two fields ends the run with the latest result.
    fresh();
    EXPECT_EQ(internal_fn<null_vlist_fn>(arm_type + "_to_null_vlist")(nullptr, 0, nullptr, &err), -1);
    err = 5;
    EXPECT_EQ(null_run(arm_type), -1);
    EXPECT_TRUE(values().empty());
}

TEST_F(Vlist, ObjTypeExtensionGroupsGiveOneNullPerValue) {
    ASSERT_FALSE(expect().groups.empty());
    for (const Group& g : expect().groups) {
        SCOPED_TRACE(g.name);
        fresh();
        ASSERT_EQ(null_run(g.name), static_cast<int32_t>(g.values.size()));
        const plat::ValueList v = values();
        ASSERT_EQ(v.size(), g.values.size());
        for (const plat::Value& x : v) EXPECT_TRUE(is_null(x));
    }
    // A failing null names the value, with no leaf word.
    const Group& g = expect().groups.back();
    const Failed f = failing("gx_do_vlist_add_null", g.values.size(), [&] { return null_run(g.name); });
    EXPECT_EQ(f.result, -1);
    const std::string& last = g.values.back();
    EXPECT_EQ(f.traces, std::vector<std::string>{last + " to_vlist_all:  set null failed for " + last + "for " + last});
}

// ---------------------------------------------------------------- enumerations and flag sets

TEST_F(Vlist, EnumerationsRenderTheirNamesGatedByExtensionLevel) {
    db::RecordPtr node = db::make_record("om_node");
    const void* h = db::handle(*node, "obj_type");
    auto obj_type = internal_fn<enum_vlist_fn>("obj_type_to_vlist");
    const db::TypeInfo* t = db::type_info("obj_type");
    // The first value of each level above 0, read with an instance variant one below and at it.
    std::map<int, uint32_t> first_of;
    for (uint32_t i = 0; i < t->value_levels.size(); ++i)
        if (t->value_levels[i] != 0 && !first_of.count(t->value_levels[i])) first_of[t->value_levels[i]] = i;
    ASSERT_FALSE(first_of.empty());
    for (auto [level, value] : first_of) {
        SCOPED_TRACE(level);
        db::set_int(*node, "obj_type", value);
        for (int32_t variant : {level - 1, level}) {
            db::set_value_variant(*node, "obj_type", variant);
            fresh();
            ASSERT_GT(obj_type(nullptr, 0, h, list, 0, 1, &err), 0);
            ASSERT_EQ(values().size(), 1u);
            if (variant < level)
                EXPECT_TRUE(is_null(values()[0]));
            else
                EXPECT_EQ(std::get<plat::EnumText>(values()[0].v).text, t->values[value]);
        }
    }
    // Past the last value: -1, nothing added, no trace. A pending word or no list: -1.
    db::set_int(*node, "obj_type", t->values.size());
    fresh();
    plat::TraceCapture traces;
    EXPECT_EQ(obj_type(nullptr, 0, h, list, 0, 1, &err), -1);
    EXPECT_TRUE(values().empty());
    EXPECT_TRUE(traces.records().empty());
    db::set_int(*node, "obj_type", 0);
    EXPECT_EQ(obj_type(nullptr, 0, h, nullptr, 0, 1, &err), -1);
    err = 5;
    EXPECT_EQ(obj_type(nullptr, 0, h, list, 0, 1, &err), -1);
    // The row form: with_state is not looked at, is_default 0 and present 1.
    db::RecordPtr u = db::make_record("ntp_peer_cp");
    db::set_int(*u, "descriminator", 22);
    fresh();
    ASSERT_GT(vlist_row("zan_cfg_union")(nullptr, 0, db::handle(*u, "descriminator"), list, 1, &err), 0);
    EXPECT_EQ(std::get<plat::EnumText>(values().at(0).v).text, "ZAN_CFG_21");
    EXPECT_FALSE(values()[0].is_default);
}

TEST_F(Vlist, FlagSetsGiveOneValueListOfTheirSetBits) {
    db::RecordPtr fields = db::make_record("db_fields");
    const void* h = db::handle(*fields, "flags");
    auto db_flags = internal_fn<enum_vlist_fn>("db_flags_to_vlist");
    ASSERT_GT(db_flags(nullptr, 0, h, list, 0, 1, &err), 0);
    EXPECT_TRUE(std::get<plat::ValueList>(values().at(0).v).empty());   // an empty list, not a null
    db::set_flags(*fields, "flags", {"IS_DB_FLAG_NONE", "IS_PENDING_DELETE"});
    fresh();
    ASSERT_GT(vlist_row("db_flags")(nullptr, 0, h, list, 1, &err), 0);
    const plat::ValueList bits = std::get<plat::ValueList>(values().at(0).v);
    ASSERT_EQ(bits.size(), 2u);
    EXPECT_EQ(std::get<plat::EnumText>(bits[0].v).text, "IS_DB_FLAG_NONE");
    EXPECT_EQ(std::get<plat::EnumText>(bits[1].v).text, "IS_PENDING_DELETE");
    // A bit that cannot be read is left out and its failure stays with it.
    fresh();
    plat::fault_fail_nth("accessor", 1);
    ASSERT_GT(db_flags(nullptr, 0, h, list, 0, 1, &err), 0);
    EXPECT_EQ(std::get<plat::ValueList>(values().at(0).v).size(), 1u);
    EXPECT_EQ(err, 0u);
    fresh();
    plat::fault_fail_nth("gx_do_vlist_new", 1);
    EXPECT_EQ(db_flags(nullptr, 0, h, list, 0, 1, &err), 10002);
    EXPECT_TRUE(values().empty());
    err = 5;
    EXPECT_EQ(db_flags(nullptr, 0, h, list, 0, 1, &err), -1);
    EXPECT_EQ(plat::live_objects().vlist, 1);
}

// ---------------------------------------------------------------- boundaries

// An extension renders from a variant equal to its level on: only a variant below it gives
// the "as null" line (the selector: its refusal of the extension's attribute). Every record
// with extensions, empty ones included, in every family that renders records.
TEST_F(Vlist, AnExtensionRendersAtAVariantEqualToItsLevelInEveryFamily) {
    using full_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void*, gx_do_nlist*, gx_do_vlist*, int32_t, uint32_t*);
    // Lines of one call that hold `text`.
    auto lines = [](const std::string& text, const std::function<void()>& call) {
        plat::TraceCapture traces;
        call();
        int n = 0;
        for (const std::string& s : texts(traces)) n += s.find(text) != std::string::npos;
        return n;
    };
    std::set<std::string> types_seen;
    int checked = 0;
    for (const db::TypeInfo* t : db::types()) {
        if (t->category != db::Category::record || t->base) continue;
        const std::string type(t->name);
        db::RecordPtr rec = db::make_record(type);
        auto props = [&] {
            gx_do_properties* p = plat::properties_new();
            type_row(type)(nullptr, 0, "", p, rec.get(), 0, &err);
            plat::properties_deref(p);
        };
        std::map<int, std::string> first_field;   // level: its first attribute, if any
        for (const db::FieldInfo& f : t->fields)
            if (f.role == db::FieldRole::attribute && f.level != 0 && !first_field.count(f.level))
                first_field[f.level] = std::string(f.name);
        for (int level = 1; level <= 3; ++level) {
            const std::string as_null = " version < " + std::to_string(level) + " Rendering extension ";
            db::set_variant(*rec, 0);
            err = 0;
            if (lines(as_null, props) == 0) continue;   // no extension of this level
            types_seen.insert(type);
            for (int32_t variant : {level - 1, level}) {
                SCOPED_TRACE(type + " level " + std::to_string(level) + " variant " + std::to_string(variant));
                db::set_variant(*rec, variant);
                const int want = variant < level ? 1 : 0;
                err = 0;
                EXPECT_EQ(lines(as_null, props), want) << "to_properties";
                fresh();
                EXPECT_EQ(lines(as_null, [&] { all(type, rec.get()); }), want) << "to_vlist_all";
                fresh();
                gx_do_nlist* names = gx_do_nlist_new();
                EXPECT_EQ(lines(as_null, [&] {
                              internal_fn<full_fn>(type + "_to_nlist_vlist_all")(nullptr, 0, rec.get(), names, list,
                                                                                 0, &err);
                          }),
                          want)
                    << "to_nlist_vlist_all";
                gx_do_nlist_deref(names);
                if (first_field.count(level)) {
                    fresh();
                    const std::string refused = " version < " + std::to_string(level) + ", cannot render value";
                    EXPECT_EQ(lines(refused, [&] { select(type, rec.get(), first_field[level]); }), want) << "selector";
                }
                ++checked;
            }
        }
    }
    EXPECT_TRUE(types_seen.count("ci_ip_helpaddr_eol"));
    EXPECT_GE(types_seen.size(), 5u);
    EXPECT_GE(checked, 10);
}

// A value listed by two extension groups of an enumeration is known from the lower level:
// OBJ_DHCP_DECAP (levels 1 and 16) renders its text at variant 1, in the value-list and the
// name-value-list forms.
TEST_F(Vlist, AnEnumerationValueOfTwoGroupsIsGatedByTheLowerLevel) {
    using enum_nvlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char*, gx_do_nvlist*, int32_t, int32_t,
                                       const void*, uint32_t*);
    db::RecordPtr node = db::make_record("om_node");
    db::set_enum(*node, "obj_type", "OBJ_DHCP_DECAP");
    const void* h = db::handle(*node, "obj_type");
    for (int32_t variant : {0, 1, 15, 16}) {
        SCOPED_TRACE(variant);
        db::set_value_variant(*node, "obj_type", variant);
        fresh();
        ASSERT_GT(internal_fn<enum_vlist_fn>("obj_type_to_vlist")(nullptr, 0, h, list, 0, 1, &err), 0);
        gx_do_nvlist* nv = gx_do_nvlist_new();
        ASSERT_GT(internal_fn<enum_nvlist_fn>("obj_type_to_nvlist")(nullptr, 0, "attr", nv, 0, 1, h, &err), 0);
        const plat::NameValueList items = plat::nvlist_items(nv);
        gx_do_nvlist_deref(nv);
        if (variant == 0) {
            EXPECT_TRUE(is_null(values().at(0)));
            EXPECT_TRUE(is_null(items.at(0).value));
        } else {
            EXPECT_EQ(std::get<plat::EnumText>(values().at(0).v).text, "OBJ_DHCP_DECAP");
            EXPECT_EQ(std::get<plat::EnumText>(items.at(0).value.v).text, "OBJ_DHCP_DECAP");
        }
    }
}

// A union whose schema gives it a default: its discriminator is at default exactly when
// its value is 1, in the rendering to properties and to a value list alike.
TEST_F(Vlist, ADiscriminatorWithADefaultIsAtDefaultAtValueOne) {
    const std::string type = "access_list_ipsimple1_b_cp";
    db::RecordPtr rec = db::make_record(type);
    for (int64_t value : {0, 1, 2}) {
        SCOPED_TRACE(value);
        db::set_int(*rec, "descriminator", value);
        gx_do_properties* props = plat::properties_new();
        ASSERT_EQ(type_row(type)(nullptr, 0, "", props, rec.get(), 0, &err), 0);
        EXPECT_EQ(plat::properties_get(props, "descriminator")->is_default, value == 1);
        plat::properties_deref(props);
        fresh();
        ASSERT_GT(all(type, rec.get()), 0);
        EXPECT_EQ(values().at(0).is_default, value == 1);
    }
}

// The selector's limits hold at a nested level too: a token of 257 characters is refused, one
// of 256 is only unknown; an error word left by the nested record's accessor makes the next
// level refuse.
TEST_F(Vlist, NestedSelectorsRefuseLongTokensAndAPendingWord) {
    db::RecordPtr rec = db::make_record("ntp_source_eol");
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "compound_0." + std::string(257, 't')), -1);
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "compound_0." + std::string(256, 't')), 0);
    EXPECT_TRUE(values().empty());
    ASSERT_GT(select("ntp_source_eol", rec.get(), "compound_0.ntp_source_if.handle"), 0);
    fresh();
    plat::fault_fail_nth("accessor", 1);   // compound_0's handle
    EXPECT_EQ(select("ntp_source_eol", rec.get(), "compound_0.ntp_source_if.handle"), -1);
    EXPECT_EQ(err, 5u);
    EXPECT_TRUE(values().empty());
}

// Without state no state flag is read: of vlan_group with three elements only the name, the
// count and per element the element and the count again (8 reads), in both renderings.
TEST_F(Vlist, WithoutStateNoStateFlagIsRead) {
    db::RecordPtr rec = db::make_record("vlan_group");
    db::set_array(*rec, "vlans", {1, 2, 3});
    gx_do_properties* props = plat::properties_new();
    long before = plat::fault_calls("accessor");
    ASSERT_EQ(type_row("vlan_group")(nullptr, 0, "", props, rec.get(), 0, &err), 0);
    EXPECT_EQ(plat::fault_calls("accessor") - before, 8) << "to_properties";
    plat::properties_deref(props);
    before = plat::fault_calls("accessor");
    ASSERT_GT(all("vlan_group", rec.get()), 0);
    EXPECT_EQ(plat::fault_calls("accessor") - before, 8) << "to_vlist_all";
}
