#include "answer.hpp"

#include <cstring>
#include <ctime>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <unordered_set>

#include "zan/rfc7951.hpp"

namespace zan::restconf {
namespace {

using db::Row;
using db::TableInfo;
using plat::NamedValue;

constexpr std::string_view k_library_version = "2016-06-21";
constexpr std::string_view k_json = "application/yang-data+json";

// A request that fails: the error it is answered with.
struct Failure {
    int status;
    std::string type, tag, path, message;
};

using engine::rfc7951::key_names;

// The positions a list stands at: at the top, or below a row of `parent`.
const std::vector<const TableInfo*>& lists_below(const TableInfo* parent) {
    return engine::rfc7951::lists_below(parent ? parent->table : nullptr);
}

// A leaf addressed as the resource: /<list>=<keys>/.../<list>=<keys>/<leaf>, containers on
// the way as segments of their own.
struct Leaf {
    size_t entry;             // segments naming the entry
    const TableInfo* table;   // the entry's table
    std::string attribute;    // the containers and the leaf, joined by '.'
};

std::optional<Leaf> leaf_of(const Request& req) {
    const TableInfo* at = nullptr;
    for (size_t i = 0; i < req.path.size(); ++i) {
        const Segment& s = req.path[i];
        const TableInfo* pos = nullptr;
        for (const TableInfo* p : lists_below(at))
            if (p->segment == s.name) pos = p;
        if (pos && s.keys) {
            at = pos;
            continue;
        }
        if (pos || !at) return std::nullopt;
        Leaf leaf{i, at, ""};
        for (; i < req.path.size(); ++i) {
            if (req.path[i].keys || !req.path[i].module.empty()) return std::nullopt;
            leaf.attribute += (leaf.attribute.empty() ? "" : ".") + req.path[i].name;
        }
        return leaf;
    }
    return std::nullopt;
}

// The data path as written, up to and with segment n (from 1).
std::string written_path(const Request& req, size_t n) {
    std::string out;
    for (size_t i = 0; i < n && i < req.path.size(); ++i) out += "/" + req.path[i].text;
    return out;
}

// The RESTCONF segments as the engine's: each list's key values named in the list's key order.
std::vector<plat::UriSegment> engine_segments(const Request& req, const Module& module) {
    std::vector<plat::UriSegment> out;
    const TableInfo* at = nullptr;
    bool known = true;
    for (size_t i = 0; i < req.path.size(); ++i) {
        const Segment& s = req.path[i];
        const std::string where = "segment " + std::to_string(i + 1) + " '" + s.text + "'";
        if (!s.module.empty() && s.module != module.name)
            throw Failure{404, "protocol", "invalid-value", written_path(req, i + 1),
                          where + ": the server has no module '" + s.module + "'"};
        if (!s.keys && i + 1 < req.path.size())
            throw Failure{400, "protocol", "invalid-value", written_path(req, i + 1),
                          where + ": an entry of a list names its keys (" + s.name + "=...)"};
        const TableInfo* pos = nullptr;
        if (known)
            for (const TableInfo* p : lists_below(at))
                if (p->segment == s.name) pos = p;
        known = pos != nullptr;
        plat::UriSegment seg{s.name, std::nullopt};
        if (s.keys && pos) {
            const auto names = key_names(*pos->table);
            if (names.size() != s.keys->size()) {
                std::string list;
                for (const auto& n : names) list += (list.empty() ? "" : ",") + n;
                throw Failure{400, "protocol", "invalid-value", written_path(req, i + 1),
                              where + ": list '" + s.name + "' has " + std::to_string(names.size()) + " key(s) (" +
                                  list + "), " + std::to_string(s.keys->size()) + " given"};
            }
            seg.keys.emplace();
            for (size_t k = 0; k < names.size(); ++k) seg.keys->emplace_back(names[k], (*s.keys)[k]);
        } else if (s.keys) {
            // A name no list has here: the dispatcher says where the path stops.
            seg.keys.emplace();
            for (const auto& v : *s.keys) seg.keys->emplace_back("key", v);
        }
        out.push_back(std::move(seg));
        at = pos;
    }
    return out;
}

const engine::TableRow& table_row(const Context& ctx, const Row& row,
                                  std::unordered_map<const TableInfo*, engine::TableRow>& cache) {
    const TableInfo* t = db::table_of(row).table;
    auto it = cache.find(t);
    if (it != cache.end()) return it->second;
    const auto found = ctx.engine.find_table(db::table_of(row).name);
    if (!found || found->gx->to_properties == nullptr || found->gx->to_vlist == nullptr)
        throw Failure{500, "application", "operation-failed", "",
                      "table " + std::string(db::table_of(row).name) + " has no rendering registered"};
    return cache.emplace(t, *found).first->second;
}

std::string row_text(const Row& row) {
    std::string out;
    for (const auto& s : engine::row_segments(row)) {
        out += "/" + s.name;
        if (s.keys)
            for (const auto& [k, v] : *s.keys) out += "[" + k + "=" + v + "]";
    }
    return out;
}

class Renderer {
public:
    explicit Renderer(const Context& ctx) : ctx_(ctx) {}

    // The row's attributes through its table's to_properties, less what the asker may not see.
    std::vector<NamedValue> properties(const Row& row) {
        const auto& t = table_row(ctx_, row, tables_);
        gx_do_properties* props = plat::properties_new();
        if (props == nullptr) throw Failure{500, "application", "operation-failed", "", "no properties object"};
        uint32_t err = 0;
        const int32_t status = t.gx->to_properties(engine::Engine::context(), 0, &row, props, 0, &err);
        auto items = plat::properties_items(props);
        plat::properties_deref(props);
        if (status != 0 || err != 0)
            throw Failure{500, "application", "operation-failed", "",
                          "rendering " + row_text(row) + " failed: status " + std::to_string(status) + ", error " +
                              std::to_string(err)};
        return hide(row, std::move(items));
    }

    // The named attributes through the table's to_vlist, the list's keys first.
    std::vector<NamedValue> fields(const Row& row, const std::vector<std::string>& wanted) {
        const auto& t = table_row(ctx_, row, tables_);
        std::vector<std::string> names = key_names(*db::table_of(row).table);
        for (const auto& w : wanted)
            if (std::find(names.begin(), names.end(), w) == names.end()) names.push_back(w);
        gx_do_nlist* nlist = gx_do_nlist_new();
        gx_do_vlist* vlist = gx_do_vlist_new();
        gx_do_uri* uri = plat::uri_new(engine::row_segments(row));
        bool added = nlist && vlist && uri;
        for (const auto& n : names) added = added && gx_do_nlist_add_string(nlist, n.c_str()) != 0;
        uint32_t err = 0;
        const int32_t result =
            added ? t.gx->to_vlist(engine::Engine::context(), 0, uri, nlist, &row, vlist, 0, &err) : -1;
        plat::ValueList values = vlist ? plat::vlist_values(vlist) : plat::ValueList{};
        gx_do_nlist_deref(nlist);
        gx_do_vlist_deref(vlist);
        plat::uri_deref(uri);
        if (result < 0 || err != 0 || values.size() != names.size())
            throw Failure{400, "protocol", "invalid-value", "",
                          "fields: not every name is an attribute of " + std::string(db::table_of(row).name) +
                              " (to_vlist: result " + std::to_string(result) + ", error " + std::to_string(err) + ")"};
        std::vector<NamedValue> out;
        for (size_t i = 0; i < names.size(); ++i) out.push_back(NamedValue{names[i], values[i]});
        return hide(row, std::move(out));
    }

private:
    const Context& ctx_;
    std::unordered_map<const TableInfo*, engine::TableRow> tables_;

    std::vector<NamedValue> hide(const Row& row, std::vector<NamedValue> items) {
        if (!ctx_.hidden) return items;
        const TableInfo& t = *db::table_of(row).table;
        std::erase_if(items, [&](const NamedValue& v) { return ctx_.hidden(t, v.name); });
        return items;
    }
};

// Rows below `row` down to `levels` levels (each level one step of nesting).
void descendants(const db::Store& store, const Row& row, uint32_t levels, std::vector<const Row*>* out) {
    if (levels == 0) return;
    for (const TableInfo* p : lists_below(db::table_of(row).table)) {
        for (const Row* child : store.rows_under(*p->table, &row)) {
            if (child == &row) continue;
            out->push_back(child);
            descendants(store, *child, levels - 1, out);
        }
    }
}

// The rows a data path names, through the dispatcher; 404 when it does not resolve.
std::vector<const Row*> target_rows(const Context& ctx, const Request& req) {
    const auto segments = engine_segments(req, ctx.module);
    engine::Request er;
    er.segments = segments;
    const bool keyed = req.path.back().keys.has_value();
    er.kind = keyed ? engine::k_kind_read_row : engine::k_kind_read;
    const engine::Response r = ctx.engine.request(er);
    const std::string path = written_path(req, req.path.size());
    if (r.code != 1) {
        std::string msg = "path '" + path + "' does not resolve: code " + std::to_string(r.code);
        size_t at = req.path.size();
        if (const auto stop = engine::stop_of(r, segments.size());
            stop && stop->segment >= 1 && stop->segment <= segments.size()) {
            msg += " at segment " + std::to_string(stop->segment) + " '" + req.path[stop->segment - 1].text +
                   "': " + stop->reason;
            at = stop->segment;
        }
        throw Failure{404, "protocol", "invalid-value", written_path(req, at), msg};
    }
    const auto w = engine::walk(*ctx.data.store, r.traversals);
    if (w.error) throw Failure{500, "application", "operation-failed", path, "the walk failed: " + *w.error};
    if (keyed && w.rows.empty())
        throw Failure{404, "protocol", "invalid-value", path, "path '" + path + "': no such entry"};
    return w.rows;
}

// A leaf of an entry. Read access is the attribute's: a secret leaf asked for by one who may
// not see it is refused (403) rather than answered empty, as a node left out of a reply
// whose target is that node would leave nothing to answer with.
std::string leaf_document(const Context& ctx, const Request& req, const Leaf& leaf) {
    const std::string path = written_path(req, req.path.size());
    if (ctx.hidden && ctx.hidden(*leaf.table, leaf.attribute))
        throw Failure{403, "application", "access-denied", path,
                      "'" + leaf.attribute + "' of " + std::string(leaf.table->name) + " is not readable by this user"};
    Request entry = req;
    entry.path.resize(leaf.entry);
    const std::vector<const Row*> rows = target_rows(ctx, entry);
    if (req.query.fields) throw Failure{400, "protocol", "invalid-value", path, "fields: a leaf has no fields"};
    if (req.query.content == Content::nonconfig) return "{}\n";
    Renderer render(ctx);
    std::vector<NamedValue> values;
    try {
        values = render.fields(*rows.front(), {leaf.attribute});
    } catch (const Failure&) {
        // No such attribute: the path is a path of lists, which the dispatcher answers.
        target_rows(ctx, req);
        throw Failure{404, "protocol", "invalid-value", written_path(req, leaf.entry + 1),
                      "path '" + path + "' does not resolve at segment " + std::to_string(leaf.entry + 1) + " '" +
                          req.path[leaf.entry].text + "': " + std::string(leaf.table->name) + " has no attribute '" +
                          leaf.attribute + "'"};
    }
    const auto v = std::find_if(values.begin(), values.end(), [&](const NamedValue& x) { return x.name == leaf.attribute; });
    if (v == values.end() || std::holds_alternative<plat::Null>(v->value.v))
        throw Failure{404, "protocol", "invalid-value", path, "path '" + path + "': the entry has no '" +
                                                                  leaf.attribute + "'"};
    try {
        return engine::rfc7951::leaf_document(*leaf.table, *v);
    } catch (const engine::rfc7951::Error& e) {
        throw Failure{404, "protocol", "invalid-value", path, e.what()};
    }
}

std::string data_document(const Context& ctx, const Request& req) {
    const db::Store& store = *ctx.data.store;
    const Query& q = req.query;
    if (q.content == Content::nonconfig) return "{}\n";   // every node here is configuration
    std::vector<const Row*> targets;
    std::vector<const Row*> rows;
    const uint32_t below = q.depth ? *q.depth - 1 : UINT32_MAX;
    if (req.path.empty()) {
        if (q.fields) throw Failure{400, "protocol", "invalid-value", "", "fields: name a list to select from"};
        // The datastore: its top lists are level 1.
        for (const TableInfo* p : lists_below(nullptr))
            for (const Row* row : store.rows_under(*p->table, nullptr)) {
                rows.push_back(row);
                descendants(store, *row, q.depth ? *q.depth - 1 : UINT32_MAX, &rows);
            }
    } else {
        if (const auto leaf = leaf_of(req)) return leaf_document(ctx, req, *leaf);
        targets = target_rows(ctx, req);
        for (const Row* row : targets) {
            rows.push_back(row);
            if (!q.fields) descendants(store, *row, below, &rows);
        }
    }
    struct Turn {
        Turns* turns = nullptr;
        ~Turn() {
            if (turns) turns->give();
        }
    } turn;
    if (ctx.turns && rows.size() > k_rows_without_turn) {
        if (!ctx.turns->take())
            throw Failure{503, "transport", "resource-denied", "",
                          "the server is busy: no turn came in the time a request may wait"};
        turn.turns = ctx.turns;
    }
    Renderer render(ctx);
    engine::rfc7951::Rendered given;
    for (const Row* row : rows) {
        const bool target = q.fields && std::find(targets.begin(), targets.end(), row) != targets.end();
        given.emplace(row, target ? render.fields(*row, *q.fields) : render.properties(*row));
    }
    try {
        return engine::rfc7951::document(store, given, [&](const Row& row) { return render.properties(row); });
    } catch (const engine::rfc7951::Error& e) {
        throw Failure{500, "application", "operation-failed", "", e.what()};
    }
}

std::string library_document(const Context& ctx) {
    std::string out = "{\n  \"ietf-yang-library:modules-state\": {\n    \"module-set-id\": ";
    zan::engine::append_json_string(out, ctx.module.name + "@" + ctx.module.revision);
    out += ",\n    \"module\": [\n      {\n        \"name\": ";
    zan::engine::append_json_string(out, ctx.module.name);
    out += ",\n        \"revision\": ";
    zan::engine::append_json_string(out, ctx.module.revision);
    out += ",\n        \"schema\": ";
    zan::engine::append_json_string(out, ctx.base + "/restconf/modules/" + ctx.module.name);
    out += ",\n        \"namespace\": ";
    zan::engine::append_json_string(out, ctx.module.ns);
    out += ",\n        \"conformance-type\": \"implement\"\n      }\n    ]\n  }\n}\n";
    return out;
}

Answer ok(std::string type, std::string body) {
    Answer a;
    a.content_type = std::move(type);
    a.body = std::move(body);
    return a;
}

}  // namespace

Module read_module(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read the YANG module " + file + ": " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    Module m;
    m.text = text.str();
    std::smatch match;
    if (std::regex_search(m.text, match, std::regex(R"(^\s*module\s+([A-Za-z_][\w.-]*))"))) m.name = match[1];
    if (std::regex_search(m.text, match, std::regex(R"(\bnamespace\s+"([^"]+)\")"))) m.ns = match[1];
    if (std::regex_search(m.text, match, std::regex(R"(\brevision\s+"?(\d{4}-\d{2}-\d{2}))"))) m.revision = match[1];
    if (m.name.empty() || m.ns.empty() || m.revision.empty())
        throw std::runtime_error("the YANG module " + file + " has no module name, namespace or revision");
    return m;
}

std::string errors_document(std::string_view type, std::string_view tag, std::string_view path,
                            std::string_view message) {
    std::string out = "{\n  \"ietf-restconf:errors\": {\n    \"error\": [\n      {\n        \"error-type\": ";
    zan::engine::append_json_string(out, type);
    out += ",\n        \"error-tag\": ";
    zan::engine::append_json_string(out, tag);
    if (!path.empty()) {
        out += ",\n        \"error-path\": ";
        zan::engine::append_json_string(out, path);
    }
    out += ",\n        \"error-message\": ";
    zan::engine::append_json_string(out, message);
    out += "\n      }\n    ]\n  }\n}\n";
    return out;
}

Answer error_answer(int status, std::string_view type, std::string_view tag, std::string_view path,
                    std::string_view message) {
    Answer a = ok(std::string(k_json), errors_document(type, tag, path, message));
    a.status = status;
    return a;
}

std::string http_date(std::chrono::system_clock::time_point t) {
    const std::time_t secs = std::chrono::system_clock::to_time_t(t);
    std::tm tm{};
    gmtime_r(&secs, &tm);
    char buf[64];
    std::strftime(buf, sizeof buf, "%a, %d %b %Y %H:%M:%S GMT", &tm);
    return buf;
}

Answer answer(const Context& ctx, const Request& req) {
    if (req.method == Method::write)
        return error_answer(405, "protocol", "operation-not-supported", "",
                            "this datastore is read-only here: GET, HEAD and OPTIONS only");
    Answer a;
    try {
        switch (req.target) {
        case Target::host_meta:
            a = ok("application/xrd+xml",
                   "<XRD xmlns='http://docs.oasis-open.org/ns/xri/xrd-1.0'>\n"
                   "  <Link rel='restconf' href='/restconf'/>\n</XRD>\n");
            break;
        case Target::api_root:
            a = ok(std::string(k_json), "{\n  \"ietf-restconf:restconf\": {\n    \"data\": {},\n"
                                        "    \"operations\": {},\n    \"yang-library-version\": \"" +
                                            std::string(k_library_version) + "\"\n  }\n}\n");
            break;
        case Target::library_version:
            a = ok(std::string(k_json),
                   "{\n  \"ietf-restconf:yang-library-version\": \"" + std::string(k_library_version) + "\"\n}\n");
            break;
        case Target::yang_library: a = ok(std::string(k_json), library_document(ctx)); break;
        case Target::module:
            if (req.module != ctx.module.name)
                return error_answer(404, "protocol", "invalid-value", "", "no module '" + req.module + "' here");
            a = ok("application/yang", ctx.module.text);
            break;
        case Target::data:
            a = ok(std::string(k_json), data_document(ctx, req));
            a.headers.emplace_back("ETag", ctx.data.etag);
            a.headers.emplace_back("Last-Modified", http_date(ctx.data.modified));
            break;
        }
    } catch (const Failure& f) {
        Answer e = error_answer(f.status, f.type, f.tag, f.path, f.message);
        if (f.status == 503) e.headers.emplace_back("Retry-After", "1");
        return e;
    }
    if (req.method == Method::options) {
        Answer o;
        o.status = 200;
        o.content_type = a.content_type;
        o.headers.emplace_back("Allow", "GET, HEAD, OPTIONS");
        return o;
    }
    return a;
}

}  // namespace zan::restconf
