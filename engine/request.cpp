// Requests through the registered dispatcher, and the walk of their traversals over the
// rows of a store.
#include <algorithm>
#include <cstring>
#include <unordered_set>

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

Walk walk(const zan::db::Store& store, const std::vector<zan::plat::TraversalView>& traversals) {
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
            static const std::vector<uint8_t> no_key;
            const std::vector<uint8_t>& key = t.key_data ? *t.key_data : no_key;
            std::erase_if(w.rows, [&](const zan::db::Row* row) { return zan::db::row_key(*row) != key; });
            continue;
        }
        // Path step.
        std::vector<const zan::db::Row*> next;
        const auto& parent_id = t.id_vec[0];
        if (parent_id && parent_id->luid_set) {
            if (!started || !same_luid(parent_id->type_luid, w.table->luid))
                return stop("parent table is not the table of the step before");
            // Keys narrow a path to one row, or a few: a scan of them beats hashing them.
            const auto is_parent = [&](const zan::db::Row* p) {
                return std::find(w.rows.begin(), w.rows.end(), p) != w.rows.end();
            };
            if (w.rows.size() <= 8) {
                for (const zan::db::Row* row : store.rows(*table))
                    if (is_parent(zan::db::parent_of(*row))) next.push_back(row);
            } else {
                const std::unordered_set<const zan::db::Row*> parents(w.rows.begin(), w.rows.end());
                for (const zan::db::Row* row : store.rows(*table))
                    if (parents.count(zan::db::parent_of(*row))) next.push_back(row);
            }
        } else {
            // A table without a parent link: all its rows.
            const auto rows = store.rows(*table);
            next.assign(rows.begin(), rows.end());
        }
        w.rows = std::move(next);
        w.table = table->table;
        const zan::db::TableInfo* pos = t.pq_luid ? zan::db::position_by_pq(t.pq_luid->data()) : nullptr;
        w.position = pos ? pos : table;
        started = true;
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
