// Requests through the registered dispatcher and the walk of what they leave in params,
// over every position of the catalogue: each resolves to the row whose keys its path
// carries, in a store built here from the catalogue and in the built-in configuration.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "shared_engine.hpp"

namespace {

namespace db = zan::db;
using zan::engine::Engine;
using zan::engine::Request;
using zan::engine::Response;
using zan::plat::UriSegment;

using Keys = std::vector<std::pair<std::string, std::string>>;

// ---------------------------------------------------------------- a store from the catalogue

// Key text of the n-th row: distinct for every row, in the form key conversion reads.
std::string key_text(db::Word w, int n) {
    switch (w) {
    case db::Word::rsl_vstring: return "k" + std::to_string(n);
    case db::Word::ip_address: return "10.0." + std::to_string(n / 256) + "." + std::to_string(n % 256);
    default: return std::to_string(n);
    }
}

void set_keys(db::Row& row, int n) {
    const db::TableInfo& t = db::table_of(row);
    db::Record* rec = nullptr;
    for (size_t i = 0; i < t.rows.size() && i < 2; ++i)
        if (t.rows[i] == t.key_type) rec = db::row_record(row, i);
    ASSERT_NE(rec, nullptr) << t.name;
    if (t.key_kind == db::KeyKind::compound) {
        for (const auto* part : t.key_parts) db::set_from_text(*rec, part->name, key_text(part->word, n));
    } else {
        db::set_from_text(*rec, t.key_name, key_text(t.key_word == db::Word::none ? db::Word::u_int32 : t.key_word, n));
    }
}

// Two rows per position under the parent position's first row: the one a test aims at and
// a sibling with other keys.
struct CatalogueStore {
    db::Store store;
    std::map<const db::TableInfo*, const db::Row*> aimed;
    int next_key = 1;

    const db::Row* row_for(const db::TableInfo* pos) {
        if (auto it = aimed.find(pos); it != aimed.end()) return it->second;
        const db::Row* parent = pos->parent && pos->parent != pos ? row_for(pos->parent) : nullptr;
        db::Row& row = store.add(pos->name, parent);
        set_keys(row, next_key++);
        db::Row& sibling = store.add(pos->name, parent);
        set_keys(sibling, 1000 + next_key++);
        aimed[pos] = &row;
        return &row;
    }
    CatalogueStore() {
        for (const db::TableInfo* p : db::positions()) row_for(p);
    }
};

const CatalogueStore& catalogue_store() {
    static const CatalogueStore* s = new CatalogueStore;
    return *s;
}

// ---------------------------------------------------------------- paths to rows

// The path to a row of a position, keys taken from the row and its ancestors. A position
// without a parent link takes any row of the parent table for its parent segment.
std::optional<std::vector<UriSegment>> path_to(const db::Store& store, const db::Row& target,
                                                const db::TableInfo* pos) {
    std::vector<UriSegment> rev;
    const db::Row* row = &target;
    for (;;) {
        rev.push_back({std::string(pos->segment), zan::engine::row_key_parts(*row)});
        const db::TableInfo* up = pos->parent;
        if (up == nullptr || up == pos) break;
        const db::Row* parent = db::parent_of(*row);
        if (!parent || db::table_of(*parent).name != up->table->name) {
            if (!pos->link_field.empty()) return std::nullopt;
            const auto rows = store.rows(*up);
            if (rows.empty()) return std::nullopt;
            parent = rows.front();
        }
        row = parent;
        pos = up;
    }
    return std::vector<UriSegment>(rev.rbegin(), rev.rend());
}

std::string path_text(const std::vector<UriSegment>& segs) {
    std::string out;
    for (const auto& s : segs) {
        out += "/" + s.name;
        if (s.keys)
            for (const auto& [k, v] : *s.keys) out += "[" + k + "=" + v + "]";
    }
    return out;
}

// A row of the position whose parent chain fits the position's ancestors.
const db::Row* row_of_position(const db::Store& store, const db::TableInfo* pos) {
    for (const db::Row* r : store.rows(*pos))
        if (path_to(store, *r, pos)) {
            const db::Row* parent = db::parent_of(*r);
            const bool fits = pos->link_field.empty() || (parent && db::table_of(*parent).name == pos->parent->table->name);
            if (fits) return r;
        }
    return nullptr;
}

Response resolve(const std::vector<UriSegment>& segs, uint32_t kind = zan::engine::k_kind_read_row) {
    Request req;
    req.segments = segs;
    req.kind = kind;
    return engine().request(req);
}

// Every position resolves to its row: both steps of every segment, the slot names the
// table, and the walk finds that row alone.
void every_position_resolves(const db::Store& store, bool aimed_rows_only) {
    size_t checked = 0;
    for (const db::TableInfo* pos : db::positions()) {
        SCOPED_TRACE(std::string(pos->name));
        const db::Row* target = aimed_rows_only ? catalogue_store().aimed.at(pos) : row_of_position(store, pos);
        if (target == nullptr) {
            ADD_FAILURE() << "no row of " << pos->table->name << " under a row of "
                          << (pos->parent ? pos->parent->table->name : std::string_view("nothing"))
                          << " in the configuration";
            continue;
        }
        const auto segs = path_to(store, *target, pos);
        ASSERT_TRUE(segs);
        SCOPED_TRACE(path_text(*segs));
        const Response r = resolve(*segs);
        ASSERT_EQ(r.code, 1);
        ASSERT_EQ(r.traversals.size(), 2 * segs->size());
        EXPECT_EQ(zan::engine::table_of_vector(r.slot), pos->table);
        const auto w = zan::engine::walk(store, r.traversals);
        ASSERT_FALSE(w.error) << *w.error;
        EXPECT_EQ(w.position, pos);
        ASSERT_EQ(w.rows.size(), 1u);
        EXPECT_EQ(w.rows[0], target);
        ++checked;
    }
    EXPECT_EQ(checked, 331u);
}

TEST(EngineRequest, EveryPositionResolvesToItsRowInACatalogueStore) {
    every_position_resolves(catalogue_store().store, true);
}

TEST(EngineRequest, EveryPositionResolvesToItsRowInTheBuiltInConfiguration) {
    ASSERT_GT(default_store().size(), 0u);
    every_position_resolves(default_store(), false);
}

TEST(EngineRequest, WithoutTheLastKeyAllRowsUnderTheParentAreSelected) {
    const auto& cs = catalogue_store();
    for (const db::TableInfo* pos : db::positions()) {
        SCOPED_TRACE(std::string(pos->name));
        auto segs = *path_to(cs.store, *cs.aimed.at(pos), pos);
        segs.back().keys.reset();
        const Response r = resolve(segs, zan::engine::k_kind_read);
        ASSERT_EQ(r.code, 1);
        EXPECT_EQ(r.traversals.back().pq, 0u);
        const auto w = zan::engine::walk(cs.store, r.traversals);
        ASSERT_FALSE(w.error) << *w.error;
        // Both rows made under the same parent (a table without parent link: all its rows).
        std::set<const db::Row*> want;
        const db::Row* parent = db::parent_of(*cs.aimed.at(pos));
        for (const db::Row* row : cs.store.rows(*pos))
            if (pos->link_field.empty() || db::parent_of(*row) == parent) want.insert(row);
        EXPECT_EQ(std::set<const db::Row*>(w.rows.begin(), w.rows.end()), want);
        // The same path with kind 3 needs the key.
        EXPECT_EQ(resolve(segs, zan::engine::k_kind_read_row).code, 0);
    }
}

TEST(EngineRequest, KeyListingOfEveryPosition) {
    const auto& cs = catalogue_store();
    for (const db::TableInfo* pos : db::positions()) {
        SCOPED_TRACE(std::string(pos->name));
        auto segs = *path_to(cs.store, *cs.aimed.at(pos), pos);
        segs.back().keys = Keys{{"*", ""}};
        const Response r = resolve(segs, zan::engine::k_kind_read);
        EXPECT_EQ(r.code, 3);
        // Compound keys offer no name. A table listed only under itself (tbl_cfg_vlan_eol)
        // is reached as a first segment, where only the root tables may list.
        const bool silent = pos->key_kind == db::KeyKind::compound || pos->parent == pos;
        const auto want = silent ? std::vector<std::string>{} : std::vector<std::string>{std::string(pos->key_name)};
        EXPECT_EQ(r.pd_list, want);
        EXPECT_EQ(zan::engine::stop_of(r, segs.size())->segment, segs.size());
    }
}

TEST(EngineRequest, CompoundKeysInAnyOrderFirstPairCountsMissingPartFails) {
    const auto& cs = catalogue_store();
    for (const char* name : {"tbl_ip_dhcp_svr", "tbl_threat_visibility_ip_export"}) {
        SCOPED_TRACE(name);
        const db::TableInfo* pos = db::table_info(name);
        const db::Row* aimed = cs.aimed.at(pos);
        const auto base = *path_to(cs.store, *aimed, pos);
        const Keys keys = *base.back().keys;
        ASSERT_GE(keys.size(), 2u);
        const db::Row* sibling = nullptr;
        for (const db::Row* r : cs.store.rows(*pos))
            if (r != aimed) sibling = r;
        const Keys other = zan::engine::row_key_parts(*sibling);

        auto find = [&](const Keys& k) -> std::pair<int32_t, std::vector<const db::Row*>> {
            auto segs = base;
            segs.back().keys = k;
            const Response r = resolve(segs);
            if (r.code != 1) return {r.code, {}};
            return {r.code, zan::engine::walk(cs.store, r.traversals).rows};
        };
        const std::vector<const db::Row*> just_aimed{aimed};
        EXPECT_EQ(find(keys), std::make_pair(1, just_aimed));
        EXPECT_EQ(find(Keys(keys.rbegin(), keys.rend())), std::make_pair(1, just_aimed));
        // Pairs repeated: the first of each name counts, whichever row the later ones name.
        Keys repeated;
        for (size_t i = 0; i < keys.size(); ++i) {
            repeated.push_back(keys[i]);
            repeated.push_back(other[i]);
        }
        EXPECT_EQ(find(repeated), std::make_pair(1, just_aimed));
        Keys mixed = keys;
        mixed.back() = other.back();   // parts of two rows name neither
        EXPECT_EQ(find(mixed), std::make_pair(1, std::vector<const db::Row*>{}));
        // Each part left out in turn; extra names do not stand in for it.
        for (size_t i = 0; i < keys.size(); ++i) {
            Keys missing = keys;
            missing.erase(missing.begin() + long(i));
            missing.emplace_back("unrelated", "1");
            EXPECT_EQ(find(missing).first, 3) << "without " << keys[i].first;
        }
        // A value that does not convert.
        Keys bad = keys;
        for (auto& [k, v] : bad)
            if (k == "export_address" || k == "dhcp_server") v = "not-an-address";
        EXPECT_NE(find(bad).first, 1);
    }
}

TEST(EngineRequest, SecondEntrancesReachTheSameTableFromTheirOwnParent) {
    const auto& cs = catalogue_store();
    for (const auto& [entrance, table] : {std::pair{"tbl_ci_vrf_mode_rt_eol_b", "tbl_ci_vrf_mode_rt_eol"},
                                          std::pair{"tbl_conf_ip_nacl_ext_eol_final_b", "tbl_conf_ip_nacl_ext_eol_final"}}) {
        SCOPED_TRACE(entrance);
        const db::TableInfo* b = db::table_info(entrance);
        const db::TableInfo* a = db::table_info(table);
        // The key of the row under the first entrance, on the path of the second: no row.
        auto segs = *path_to(cs.store, *cs.aimed.at(b), b);
        segs.back().keys = zan::engine::row_key_parts(*cs.aimed.at(a));
        const Response r = resolve(segs);
        ASSERT_EQ(r.code, 1);
        EXPECT_EQ(zan::engine::table_of_vector(r.slot), a);
        const auto w = zan::engine::walk(cs.store, r.traversals);
        EXPECT_EQ(w.position, b);
        EXPECT_EQ(w.table, a);
        EXPECT_TRUE(w.rows.empty());
    }
}

TEST(EngineRequest, StopsAndListsAsTheDispatcherLeavesThem) {
    // Unknown second segment: the first segment's traversals stay, the stop names segment 2.
    Response r = resolve({{"vrf", Keys{{"vrf_key_vrf_name", "red"}}}, {"nope", std::nullopt}});
    EXPECT_EQ(r.code, 3);
    EXPECT_EQ(r.traversals.size(), 2u);
    EXPECT_EQ(zan::engine::stop_of(r, 2)->segment, 2u);
    EXPECT_EQ(zan::engine::table_of_vector(r.slot), db::table_info("tbl_ci_vrf_eol"));

    // One segment "*": with both lists the root tables (ToolLs.RootListingIsTheRootChainInOrder),
    // without pdc_list every position (ToolLs.WithoutMarkersEveryTableOffersItsSegment); ROOT
    // is taken out again; without either list nothing is listed.
    Request req;
    req.segments = {{"*", std::nullopt}};
    EXPECT_EQ(engine().request(req).pdc_list, std::vector<std::string>{});
    req.with_pdc_list = false;
    req.with_pd_list = false;
    r = engine().request(req);
    EXPECT_FALSE(r.pd_list);
    EXPECT_FALSE(r.pdc_list);
    EXPECT_EQ(r.code, 3);

    // Nothing of a request outlives it.
    const long traversals = zan::plat::live_traversals();
    const auto objects = zan::plat::live_objects().total();
    resolve({{"vrf", Keys{{"vrf_key_vrf_name", "red"}}}, {"vrf_afi", Keys{{"vrf_af_afi", "1"}}}});
    EXPECT_EQ(zan::plat::live_traversals(), traversals);
    EXPECT_EQ(zan::plat::live_objects().total(), objects);
}

TEST(EngineWalk, TraversalsThatMakeNoWalk) {
    const auto& cs = catalogue_store();
    const Response vrf = resolve({{"vrf", Keys{{"vrf_key_vrf_name", "k1"}}}, {"vrf_afi", Keys{{"vrf_af_afi", "2"}}}});
    ASSERT_EQ(vrf.code, 1);
    // A query step first, or a child step without its parent's step before it.
    auto w = zan::engine::walk(cs.store, {vrf.traversals[1]});
    EXPECT_TRUE(w.error);
    EXPECT_TRUE(w.rows.empty());
    w = zan::engine::walk(cs.store, {vrf.traversals[2], vrf.traversals[3]});
    ASSERT_TRUE(w.error);
    EXPECT_EQ(*w.error, "traversal 1: parent table is not the table of the step before");
    // A child step after a step of another table than its parent's.
    const Response peer = resolve({{"ntp_peer_server", Keys{{"peer_server_key", "10.0.0.1"}}}});
    ASSERT_EQ(peer.code, 1);
    w = zan::engine::walk(cs.store, {peer.traversals[0], peer.traversals[1], vrf.traversals[2], vrf.traversals[3]});
    ASSERT_TRUE(w.error);
    EXPECT_EQ(*w.error, "traversal 3: parent table is not the table of the step before");
    EXPECT_TRUE(w.rows.empty());
    // An identifier that names no table.
    auto broken = vrf.traversals;
    broken[0].deref_table.type_luid[0] ^= 0xff;
    w = zan::engine::walk(cs.store, broken);
    ASSERT_TRUE(w.error);
    EXPECT_EQ(*w.error, "traversal 1: deref_table names no table");
    // A query step whose key failed carries neither key nor pq, and is no step of a walk.
    const Response failed = resolve({{"vrf", Keys{{"vrf_key_vrf_name", "k1"}}}, {"vrf_afi", Keys{{"vrf_af_afi", "x"}}}});
    ASSERT_EQ(failed.code, 5);
    ASSERT_EQ(failed.traversals.size(), 4u);
    EXPECT_EQ(failed.path_steps(), 2u);
    EXPECT_EQ(zan::engine::stop_of(failed, 2)->segment, 2u);
    w = zan::engine::walk(cs.store, failed.traversals);
    ASSERT_TRUE(w.error);
    EXPECT_EQ(*w.error, "traversal 4: pq is not set");
    // Nothing at all selects nothing.
    w = zan::engine::walk(cs.store, {});
    EXPECT_FALSE(w.error);
    EXPECT_TRUE(w.rows.empty());
}

TEST(EngineWalk, AKeyedPathComparesAHandfulOfKeysWhateverTheTableSize) {
    // Thousands of VRFs, each with an address family of the same key: a path to the last
    // one's family, and the family rows under one VRF, come from the store's indexes.
    constexpr int k_vrfs = 3000;
    db::Store store;
    const db::Row* last_afi = nullptr;
    for (int i = 0; i < k_vrfs; ++i) {
        db::Row& vrf = store.add("tbl_ci_vrf_eol");
        db::set_text(*db::row_record(vrf), "vrf_key_vrf_name", "v" + std::to_string(i));
        db::Row& afi = store.add("tbl_ci_vrf_afi_mode_eol", &vrf);
        db::set_int(*db::row_record(afi), "vrf_af_afi", 1);
        last_afi = &afi;
    }
    const std::string last = "v" + std::to_string(k_vrfs - 1);
    struct Case {
        std::vector<UriSegment> segs;
        uint32_t kind;
    } cases[] = {
        {{{"vrf", Keys{{"vrf_key_vrf_name", last}}}, {"vrf_afi", Keys{{"vrf_af_afi", "1"}}}}, zan::engine::k_kind_read_row},
        {{{"vrf", Keys{{"vrf_key_vrf_name", last}}}, {"vrf_afi", std::nullopt}}, zan::engine::k_kind_read},
    };
    for (const Case& c : cases) {
        const Response r = resolve(c.segs, c.kind);
        ASSERT_EQ(r.code, 1);
        ASSERT_EQ(zan::engine::walk(store, r.traversals).rows.size(), 1u);   // the indexes are built
        const long before = db::live_counts().key_compares;
        const auto w = zan::engine::walk(store, r.traversals);
        EXPECT_LE(db::live_counts().key_compares - before, 3);
        ASSERT_FALSE(w.error) << *w.error;
        ASSERT_EQ(w.rows.size(), 1u);
        EXPECT_EQ(w.rows[0], last_afi);
    }
}

}  // namespace
