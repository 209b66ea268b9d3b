// Where a stored row stands in the tree, and the path that leads to it.
#include "zan/engine.hpp"

namespace zan::engine {

const zan::db::TableInfo* position_of(const zan::db::Row& row) {
    const zan::db::TableInfo* table = &zan::db::table_of(row);
    if (table->table) table = table->table;
    const zan::db::Row* parent = zan::db::parent_of(row);
    const zan::db::TableInfo* parent_pos = (parent && parent != &row) ? position_of(*parent) : nullptr;
    for (const auto* p : zan::db::positions())
        if ((p->table ? p->table : p) == table && p->parent == parent_pos) return p;
    return table;
}

std::vector<zan::plat::UriSegment> row_segments(const zan::db::Row& row) {
    std::vector<const zan::db::Row*> chain;
    for (const zan::db::Row* r = &row; r; r = zan::db::parent_of(*r)) {
        chain.insert(chain.begin(), r);
        if (zan::db::parent_of(*r) == r) break;
    }
    const zan::db::TableInfo* pos = position_of(row);
    const size_t n = pos->path.size();
    std::vector<zan::plat::UriSegment> out(n);
    // The last chain.size() segments belong to the chain's rows.
    for (size_t i = 0; i < n; ++i) {
        out[i].name = std::string(pos->path[i]);
        const size_t from_end = n - i;
        if (from_end <= chain.size()) out[i].keys = row_key_parts(*chain[chain.size() - from_end]);
    }
    return out;
}

}  // namespace zan::engine
