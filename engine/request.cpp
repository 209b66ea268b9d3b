// Requests through the registered dispatcher, and the walk of their traversals over the
// rows of a store.
#include <algorithm>
#include <cstring>

#include "zan/engine.hpp"

namespace zan::engine {

namespace {

// The engine's own context handed to the front end, which only passes it on.
int g_request_context;

std::vector<std::string> names_and_release(gx_do_nlist* list) {
    std::vector<std::string> names = zan::plat::nlist_names(list);
    gx_do_nlist_deref(list);
    return names;
}

bool same_luid(const uint8_t* a, const uint8_t* b) { return a && b && std::memcmp(a, b, ZAN_LUID_LEN) == 0; }

std::string value_text(const zan::plat::Value& v) {
    struct Visit {
        std::string operator()(const std::string& s) const { return s; }
        std::string operator()(int64_t n) const { return std::to_string(n); }
        std::string operator()(uint64_t n) const { return std::to_string(n); }
        std::string operator()(bool b) const { return b ? "true" : "false"; }
        std::string operator()(const zan::plat::Ip& ip) const { return zan::plat::format_ip(ip); }
        std::string operator()(const zan::plat::Mac& mac) const { return zan::plat::format_mac(mac); }
        std::string operator()(const zan::plat::EnumText& e) const { return e.text; }
        std::string operator()(const zan::plat::Null&) const { return "null"; }
        std::string operator()(const zan::plat::ValueList&) const { return "?"; }
        std::string operator()(const zan::plat::NameValueList&) const { return "?"; }
        std::string operator()(const zan::plat::Uri& u) const { return u.text; }
    };
    return std::visit(Visit{}, v.v);
}

}  // namespace

size_t Response::path_steps() const {
    return static_cast<size_t>(std::count_if(traversals.begin(), traversals.end(),
                                             [](const zan::plat::TraversalView& t) { return t.pq_set && t.pq == 0; }));
}

rsl_ctx_t Engine::context() { return &g_request_context; }

Response Engine::request(const Request& req) const {
    Response out;
    if (!loaded()) return out;
    gx_do_uri* uri = zan::plat::uri_new(req.segments);
    gx_do_nlist* pd = req.with_pd_list ? gx_do_nlist_new() : nullptr;
    gx_do_nlist* pdc = req.with_pdc_list ? gx_do_nlist_new() : nullptr;
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;
    out.code = reg_->dispatch(&g_request_context, 0, req.gx_ctx, uri, pd, pdc, params, 0, req.kind, &slot);
    out.traversals = zan::plat::params_traversals(params);
    out.slot = slot;
    if (pd) out.pd_list = names_and_release(pd);
    if (pdc) out.pdc_list = names_and_release(pdc);
    zan::plat::params_free(params);
    zan::plat::uri_deref(uri);
    return out;
}

std::optional<Stop> stop_of(const Response& r, size_t segment_count) {
    if (r.code == 1) return std::nullopt;
    const size_t paths = r.path_steps();
    const zan::plat::TraversalView* last = r.traversals.empty() ? nullptr : &r.traversals.back();
    Stop s;
    if (last && last->pq_set && last->pq == 0) {
        // The segment's table was found; its key was not.
        s.segment = paths;
        s.reason = r.code == 3   ? "its table does not know this key"
                   : r.code == 0 ? "its key is missing or cannot be used, or its query step could not be made"
                                 : "its key could not be resolved";
    } else if (last && !last->key_luid) {
        // A query step appended before its key could be stored (a failed one carries neither
        // key nor pq): the key's value failed.
        s.segment = paths;
        s.reason = r.code == 5 ? "its key value does not convert to the key's stored form"
                               : "its key value cannot be used";
    } else {
        s.segment = std::min(paths + 1, std::max<size_t>(segment_count, 1));
        s.reason = r.code == 3   ? "no table takes this segment here"
                   : r.code == 5 ? "its traversal could not be built (parent missing, or out of memory)"
                                 : "it could not be resolved";
    }
    return s;
}

const zan::db::TableInfo* table_of_vector(const void* vft) {
    if (vft == nullptr) return nullptr;
    for (const zan::db::TableInfo* t : zan::db::tables())
        if (t->vft == vft) return t;
    return nullptr;
}

namespace {

// Traversal i + 1 when it is a well-formed query step of `table`: the path step i and it
// are then answered together by the store's key index.
const zan::plat::TraversalView* query_after(const std::vector<zan::plat::TraversalView>& traversals, size_t i,
                                            const zan::db::TableInfo& table) {
    if (i + 1 >= traversals.size()) return nullptr;
    const auto& q = traversals[i + 1];
    if (!q.pq_set || q.pq != 1 || !q.deref_table.luid_set) return nullptr;
    const zan::db::TableInfo* t = zan::db::find_luid(q.deref_table.type_luid).table;
    return t && t->table == table.table ? &q : nullptr;
}

// Rows gathered parent by parent, back in the order the store added them.
void in_store_order(std::vector<const zan::db::Row*>& rows, size_t parents) {
    if (parents > 1)
        std::sort(rows.begin(), rows.end(), [](const zan::db::Row* a, const zan::db::Row* b) {
            return zan::db::Store::order_of(*a) < zan::db::Store::order_of(*b);
        });
}

}  // namespace

Walk walk(const zan::db::Store& store, const std::vector<zan::plat::TraversalView>& traversals) {
    static const std::vector<uint8_t> no_key;
    Walk w;
    bool started = false;
    for (size_t i = 0; i < traversals.size(); ++i) {
        const auto& t = traversals[i];
        auto stop = [&](const char* why) {
            w.error = "traversal " + std::to_string(i + 1) + ": " + why;
            w.rows.clear();
            return w;
        };
        const zan::db::TableInfo* table = zan::db::find_luid(t.deref_table.type_luid).table;
        if (!t.pq_set) return stop("pq is not set");
        if (table == nullptr || !t.deref_table.luid_set) return stop("deref_table names no table");
        if (t.pq == 1) {
            if (!started || table->table != w.table->table) return stop("query step without a path step of its table");
            const std::vector<uint8_t>& key = t.key_data ? *t.key_data : no_key;
            std::erase_if(w.rows, [&](const zan::db::Row* row) { return zan::db::row_key(*row) != key; });
            continue;
        }
        // Path step, with the query step after it when there is one: the store's indexes
        // give the rows under each parent, or those with the key, without a scan.
        const zan::plat::TraversalView* query = query_after(traversals, i, *table);
        const std::vector<uint8_t>* key = query ? (query->key_data ? &*query->key_data : &no_key) : nullptr;
        std::vector<const zan::db::Row*> next;
        const auto& parent_id = t.id_vec[0];
        if (parent_id && parent_id->luid_set) {
            if (!started || !same_luid(parent_id->type_luid, w.table->luid))
                return stop("parent table is not the table of the step before");
            auto under = [&](const zan::db::Row* parent) {
                return key ? store.with_key_under(*table, parent, *key) : store.children(*table, parent);
            };
            if (w.rows.size() == 1) {
                next = under(w.rows.front());   // one parent, the common case: its rows as they come
            } else {
                for (const zan::db::Row* parent : w.rows) {
                    const auto rows = under(parent);
                    next.insert(next.end(), rows.begin(), rows.end());
                }
                in_store_order(next, w.rows.size());
            }
        } else if (key) {
            // A table without a parent link: its rows with the key, under any parent.
            next = store.with_key(*table, *key);
        } else {
            const auto rows = store.rows(*table);
            next.assign(rows.begin(), rows.end());
        }
        w.rows = std::move(next);
        w.table = table->table;
        const zan::db::TableInfo* pos = t.pq_luid ? zan::db::position_by_pq(t.pq_luid->data()) : nullptr;
        w.position = pos ? pos : table;
        started = true;
        if (query) ++i;   // its query step is answered
    }
    return w;
}

std::vector<std::pair<std::string, std::string>> row_key_parts(const zan::db::Row& row) {
    std::vector<std::pair<std::string, std::string>> out;
    const zan::db::TableInfo& t = zan::db::table_of(row);
    const zan::db::Record* rec = nullptr;
    for (size_t i = 0; i < t.rows.size() && i < 2; ++i)
        if (t.rows[i] == t.key_type) rec = zan::db::row_record(row, i);
    auto part = [&](std::string_view name) {
        std::string text = "?";
        if (rec) {
            try {
                if (auto v = zan::db::value_of(zan::db::handle(*rec, name))) text = value_text(*v);
            } catch (const zan::db::Error&) {
            }
        }
        out.emplace_back(std::string(name), std::move(text));
    };
    if (t.key_kind == zan::db::KeyKind::compound)
        for (const auto* f : t.key_parts) part(f->name);
    else
        part(t.key_name);
    return out;
}

}  // namespace zan::engine
