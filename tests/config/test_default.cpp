// The configuration built into the library: it loads, and it fills every table of the
// catalogue.
#include <gtest/gtest.h>

#include <algorithm>

#include "zan/config.hpp"

using namespace zan::db;
namespace cfg = zan::config;

TEST(DefaultConfiguration, LoadsAndHasARowInEveryTable) {
    cfg::LoadResult r = cfg::load_default();
    ASSERT_TRUE(r) << r.error;
    std::vector<std::string> empty;
    for (const TableInfo* t : tables())
        if (r.store->rows(*t).empty()) empty.emplace_back(t->name);
    EXPECT_TRUE(empty.empty()) << empty.size() << " tables without rows, first " << (empty.empty() ? "" : empty[0]);
    int compound = 0;
    for (const TableInfo* t : tables()) {
        if (t->key_kind != KeyKind::compound) continue;
        ++compound;
        EXPECT_GE(r.store->rows(*t).size(), 2u) << t->name;
    }
    EXPECT_EQ(compound, 2);
}

TEST(DefaultConfiguration, SecondEntrancesAndChildrenHangOnTheirParents) {
    cfg::LoadResult r = cfg::load_default();
    ASSERT_TRUE(r) << r.error;
    // Every row of a child table has a parent of the right table.
    for (const TableInfo* pos : positions()) {
        if (!pos->parent) continue;
        for (const Row* row : r.store->rows(*pos->table)) {
            const Row* parent = parent_of(*row);
            if (!parent) {
                EXPECT_EQ(pos->parent->table, pos->table) << pos->name << " row without a parent";
                continue;
            }
            bool fits = false;
            for (const TableInfo* p : positions())
                fits = fits || (p->table == pos->table && p->parent && p->parent->table == &table_of(*parent));
            EXPECT_TRUE(fits) << pos->name;
        }
    }
    // Route targets under an address family, reached through the second entrance.
    const TableInfo& rt = *table_info("tbl_ci_vrf_mode_rt_eol");
    const TableInfo& afi = *table_info("tbl_ci_vrf_afi_mode_eol");
    int under_afi = 0;
    for (const Row* row : r.store->rows(rt)) under_afi += parent_of(*row) && &table_of(*parent_of(*row)) == &afi;
    EXPECT_GT(under_afi, 0);
}

TEST(DefaultConfiguration, HoldsRecordsWithSequencesOfSeveralElements) {
    cfg::LoadResult r = cfg::load_default();
    ASSERT_TRUE(r) << r.error;
    // Every sequence field of the catalogue has, in some stored record of its type, more
    // than one element, so that a rendering by type shows them all.
    int sequences = 0;
    for (const TypeInfo* t : types()) {
        for (const FieldInfo& f : t->fields) {
            if (f.kind != FieldKind::sequence) continue;
            ++sequences;
            size_t most = 0;
            for (const Record* rec : r.store->records(t->name))
                most = std::max(most, sequence_size(*rec, f.name));
            EXPECT_GE(most, 2u) << t->name << "." << f.name;
        }
    }
    EXPECT_EQ(sequences, 5);
}
