// get and dump: rows reached through the registered dispatcher and rendered by the table's
// registered to_properties, attribute by attribute in the order the front end delivers.
#include <cstring>

#include "commands.hpp"
#include "path.hpp"
#include "zan/rfc7951.hpp"

namespace zanfe {

using zan::engine::Request;
using zan::engine::Response;
using zan::plat::NamedValue;
using zan::plat::Value;

namespace {

struct RenderedRow {
    std::string path;
    std::vector<NamedValue> items;
};

}  // namespace

// The row's own path in tool syntax: the engine's segments, written as the tool writes them.
std::string row_path(const zan::db::Row& row) {
    std::string out;
    for (const zan::plat::UriSegment& step : zan::engine::row_segments(row)) {
        PathSegment s;
        s.name = step.name;
        s.keys = step.keys;
        out += '/';
        out += format_segment(s);
    }
    return out;
}

namespace {

zan_tbl_to_properties_fn renderer_of(const Session& s, const zan::db::Row& row) {
    const std::string_view name = zan::db::table_of(row).name;
    const auto t = s.engine.find_table(name);
    if (!t) throw ToolError("table " + std::string(name) + " has no row in the registered table arrays");
    if (t->gx->to_properties == nullptr)
        throw ToolError("table " + std::string(name) +
                        ": the front end registered no to_properties for it, so its rows cannot be rendered");
    return t->gx->to_properties;
}

RenderedRow render(const Session& s, const zan::db::Row& row, bool with_state) {
    const zan_tbl_to_properties_fn fn = renderer_of(s, row);
    RenderedRow out;
    out.path = row_path(row);
    gx_do_properties* props = zan::plat::properties_new();
    if (props == nullptr) throw ToolError("no properties object for " + out.path);
    uint32_t err = 0;
    const int32_t status = fn(zan::engine::Engine::context(), 0, &row, props, with_state ? 1 : 0, &err);
    out.items = zan::plat::properties_items(props);
    zan::plat::properties_deref(props);
    if (status != 0 || err != 0)
        throw ToolError("rendering " + out.path + " failed: status " + std::to_string(status) + ", error " +
                        std::to_string(err) + (err ? std::string(" (") + std::strerror(int(err)) + ")" : ""));
    return out;
}

}  // namespace

void append_json_value(std::string& out, const Value& v) {
    struct Visit {
        std::string& out;
        void operator()(const zan::plat::Null&) { out += "null"; }
        void operator()(int64_t x) { out += std::to_string(x); }
        void operator()(uint64_t x) { out += std::to_string(x); }
        void operator()(bool x) { out += x ? "true" : "false"; }
        void operator()(const std::string& x) { append_json_string(out, x); }
        void operator()(const zan::plat::Ip& x) { append_json_string(out, zan::plat::format_ip(x)); }
        void operator()(const zan::plat::Mac& x) { append_json_string(out, zan::plat::format_mac(x)); }
        void operator()(const zan::plat::EnumText& x) { append_json_string(out, x.text); }
        void operator()(const zan::plat::Uri& x) { append_json_string(out, x.text); }
        void operator()(const zan::plat::ValueList& xs) {
            out += '[';
            for (size_t i = 0; i < xs.size(); ++i) {
                if (i) out += ", ";
                append_json_value(out, xs[i]);
            }
            out += ']';
        }
        void operator()(const zan::plat::NameValueList& xs) {
            out += '{';
            for (size_t i = 0; i < xs.size(); ++i) {
                if (i) out += ", ";
                append_json_string(out, xs[i].name);
                out += ": ";
                append_json_value(out, xs[i].value);
            }
            out += '}';
        }
    };
    std::visit(Visit{out}, v.v);
}

namespace {

// --format: only rfc7951, which takes the place of the other output forms.
bool rfc7951_format(const Invocation& inv) {
    const std::string* format = nullptr;
    for (const auto& [name, value] : inv.options)
        if (name == "--format") format = &value;
    if (!format) return false;
    if (*format != "rfc7951")
        throw ToolError("unknown --format '" + *format + "' (the one format is rfc7951)", k_exit_usage);
    for (const char* other : {"--json", "--with-state", "--attrs", "--values"})
        if (inv.has(other)) throw ToolError(std::string(other) + " does not go with --format rfc7951", k_exit_usage);
    return true;
}

// Instance data of the module zan-config; the rows above the printed ones give their keys.
std::string rfc7951_document(const Session& s, const zan::db::Store& store, const std::vector<RenderedRow>& rows,
                             const std::vector<const zan::db::Row*>& found) {
    zan::engine::rfc7951::Rendered given;
    for (size_t i = 0; i < rows.size(); ++i) given.emplace(found[i], rows[i].items);
    try {
        return zan::engine::rfc7951::document(
            store, given, [&](const zan::db::Row& row) { return render(s, row, false).items; });
    } catch (const zan::engine::rfc7951::Error& e) {
        throw ToolError(e.what());
    }
}

bool present(const Value& v) { return !std::holds_alternative<zan::plat::Null>(v.v); }

void append_json_row(std::string& out, const RenderedRow& row, bool with_state, const char* indent) {
    out += '{';
    for (size_t i = 0; i < row.items.size(); ++i) {
        out += i ? ",\n" : "\n";
        out += indent;
        out += "  ";
        append_json_string(out, row.items[i].name);
        out += ": ";
        const Value& v = row.items[i].value;
        if (with_state) {
            out += "{\"value\": ";
            append_json_value(out, v);
            out += std::string(", \"is_default\": ") + (v.is_default ? "true" : "false") +
                   ", \"present\": " + (present(v) ? "true" : "false") + "}";
        } else {
            append_json_value(out, v);
        }
    }
    out += row.items.empty() ? "}" : std::string("\n") + indent + "}";
}

void append_text_row(std::string& out, const RenderedRow& row, bool with_state) {
    for (const auto& item : row.items) {
        out += item.name + " = " + zan::plat::to_text(item.value);
        if (with_state)
            out += std::string("\t[default ") + (item.value.is_default ? "1" : "0") + ", present " +
                   (present(item.value) ? "1" : "0") + "]";
        out += '\n';
    }
}

}  // namespace

std::vector<const zan::db::Row*> rows_at(Session& s, const std::string& text, bool* one_row) {
    std::vector<PathSegment> segments;
    try {
        segments = parse_path(text);
    } catch (const PathError& e) {
        throw ToolError("path '" + text + "': " + e.what(), k_exit_usage);
    }
    *one_row = segments.back().keys.has_value() && !segments.back().keys->empty();
    Request req;
    for (const auto& seg : segments) req.segments.push_back({seg.name, seg.keys});
    req.kind = *one_row ? zan::engine::k_kind_read_row : zan::engine::k_kind_read;
    const Response r = s.engine.request(req);
    if (r.code != 1) {
        std::string msg = "path '" + text + "' does not resolve: code " + std::to_string(r.code);
        if (const auto stop = zan::engine::stop_of(r, segments.size());
            stop && stop->segment >= 1 && stop->segment <= segments.size())
            msg += " at segment " + std::to_string(stop->segment) + " '" + segments[stop->segment - 1].text +
                   "': " + stop->reason;
        throw ToolError(msg);
    }
    const auto w = zan::engine::walk(s.rows(), r.traversals);
    if (w.error) throw ToolError("path '" + text + "': the walk failed: " + *w.error);
    if (*one_row && w.rows.empty()) throw ToolError("path '" + text + "': no such row in the configuration");
    return w.rows;
}

void cmd_get(Session& s, const Invocation& inv) {
    if (inv.args.size() != 1)
        throw ToolError("'get' takes one PATH (got " + std::to_string(inv.args.size()) + ")", k_exit_usage);
    const bool yang = rfc7951_format(inv);
    if (inv.has("--attrs") || inv.has("--values")) return get_values(s, inv);
    bool one_row = false;
    const std::vector<const zan::db::Row*> found = rows_at(s, inv.args[0], &one_row);
    const bool with_state = inv.has("--with-state");
    std::vector<RenderedRow> rows;
    for (const auto* row : found) rows.push_back(render(s, *row, with_state));
    if (yang) {
        s.out += rfc7951_document(s, s.rows(), rows, found);
        return;
    }

    if (inv.has("--json")) {
        if (one_row) {
            append_json_row(s.out, rows.front(), with_state, "");
            s.out += '\n';
            return;
        }
        s.out += '[';
        for (size_t i = 0; i < rows.size(); ++i) {
            s.out += i ? ",\n  " : "\n  ";
            append_json_row(s.out, rows[i], with_state, "  ");
        }
        s.out += rows.empty() ? "]\n" : "\n]\n";
        return;
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        if (!one_row) s.out += (i ? "\n# " : "# ") + rows[i].path + "\n";
        append_text_row(s.out, rows[i], with_state);
    }
}

// Rows are rendered, printed and let go one at a time, so that a dump holds one row's
// rendering whatever the size of the configuration.
void cmd_dump(Session& s, const Invocation& inv) {
    if (!inv.args.empty())
        throw ToolError("'dump' takes no arguments (got '" + inv.args.front() + "')", k_exit_usage);
    const bool yang = rfc7951_format(inv);
    const zan::db::Store& store = s.rows();
    // Each row is reached again through the dispatcher by its own path, then rendered.
    const auto reached = [&](const zan::db::Row& row) {
        const std::string path = row_path(row);
        std::vector<PathSegment> segments;
        try {
            segments = parse_path(path);
        } catch (const PathError& e) {
            throw ToolError("row path '" + path + "': " + e.what());
        }
        Request req;
        for (const auto& seg : segments) req.segments.push_back({seg.name, seg.keys});
        req.kind = zan::engine::k_kind_read_row;
        const Response r = s.engine.request(req);
        if (r.code != 1) throw ToolError("row path '" + path + "' does not resolve: code " + std::to_string(r.code));
        const auto w = zan::engine::walk(store, r.traversals);
        if (w.error || w.rows.size() != 1 || w.rows.front() != &row)
            throw ToolError("row path '" + path + "' does not lead back to its row");
        return render(s, row, false);
    };
    if (yang) {
        try {
            zan::engine::rfc7951::document_of_all(
                store, [&](const zan::db::Row& row) { return reached(row).items; }, s.out, [&] { s.pass_on(); });
        } catch (const zan::engine::rfc7951::Error& e) {
            throw ToolError(e.what());
        }
        return;
    }
    const bool json = inv.has("--json");
    if (json) s.out += '{';
    size_t printed = 0;
    for (const auto* table : zan::db::tables()) {
        for (const zan::db::Row* row : store.rows(*table)) {
            const RenderedRow rendered = reached(*row);
            if (json) {
                s.out += printed ? ",\n  " : "\n  ";
                append_json_string(s.out, rendered.path);
                s.out += ": ";
                append_json_row(s.out, rendered, false, "  ");
            } else {
                s.out += (printed ? "\n# " : "# ") + rendered.path + "\n";
                append_text_row(s.out, rendered, false);
            }
            ++printed;
            s.pass_on();
        }
    }
    if (json) s.out += printed ? "\n}\n" : "}\n";
}

}  // namespace zanfe
