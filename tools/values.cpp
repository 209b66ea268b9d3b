// get --attrs, get --values, key and type: a row's values through the table's to_vlist, its
// key through the table's to_nvlist, and a stored instance of a type through the type arrays.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "commands.hpp"
#include "path.hpp"

namespace zanfe {

using zan::plat::NamedValue;
using zan::plat::Value;
using zan::plat::ValueList;

namespace {

std::string outcome(int32_t result, uint32_t err) {
    std::string out = "result " + std::to_string(result) + ", error " + std::to_string(err);
    if (err != 0) out += std::string(" (") + std::strerror(static_cast<int>(err)) + ")";
    return out;
}

// The operation the table's registered row holds in the given slot; fails when it holds none.
template <class Fn>
Fn table_op(const Session& s, const zan::db::Row& row, Fn zan_gx_table_row::*slot, const char* op) {
    const std::string_view name = zan::db::table_of(row).name;
    const auto t = s.engine.find_table(name);
    if (!t) throw ToolError("table " + std::string(name) + " has no row in the registered table arrays");
    if (t->gx->*slot == nullptr)
        throw ToolError("table " + std::string(name) + ": the front end registered no " + op + " for it");
    return t->gx->*slot;
}

std::vector<std::string> split_names(const std::string& text) {
    std::vector<std::string> out;
    size_t from = 0;
    for (;;) {
        const size_t comma = text.find(',', from);
        out.push_back(text.substr(from, comma == std::string::npos ? std::string::npos : comma - from));
        if (comma == std::string::npos) return out;
        from = comma + 1;
    }
}

std::string option_value(const Invocation& inv, std::string_view name) {
    for (const auto& [n, v] : inv.options)
        if (n == name) return v;
    return {};
}

// One row's values, each with the label it lines up with.
struct Labelled {
    std::string path;
    std::vector<std::pair<std::string, Value>> values;
    int32_t result = 0;
};

gx_do_uri* uri_of(const std::string& path) {
    std::vector<PathSegment> segments = parse_path(path);
    std::vector<zan::plat::UriSegment> steps;
    for (const auto& seg : segments) steps.push_back({seg.name, seg.keys});
    return zan::plat::uri_new(steps);
}

// The table's to_vlist on one row with the given names; the values it added, as they came.
ValueList fetch(const Session& s, const zan::db::Row& row, const std::string& path,
                const std::vector<std::string>& names, int32_t* result, uint32_t* err) {
    const zan_tbl_to_vlist_fn to_vlist = table_op(s, row, &zan_gx_table_row::to_vlist, "to_vlist");
    gx_do_nlist* nlist = gx_do_nlist_new();
    gx_do_vlist* vlist = gx_do_vlist_new();
    gx_do_uri* uri = uri_of(path);
    if (nlist == nullptr || vlist == nullptr || uri == nullptr) {
        gx_do_nlist_deref(nlist);
        gx_do_vlist_deref(vlist);
        zan::plat::uri_deref(uri);
        throw ToolError("no data objects for " + path);
    }
    bool added = true;
    for (const auto& n : names) added = added && gx_do_nlist_add_string(nlist, n.c_str()) != 0;
    *err = 0;
    *result = added ? to_vlist(zan::engine::Engine::context(), 0, uri, nlist, &row, vlist, 0, err) : -1;
    ValueList values = zan::plat::vlist_values(vlist);
    gx_do_nlist_deref(nlist);
    gx_do_vlist_deref(vlist);
    zan::plat::uri_deref(uri);
    if (!added) throw ToolError("no room for the attribute names of " + path);
    return values;
}

Labelled values_of(Session& s, const zan::db::Row& row, const std::vector<std::string>* names) {
    Labelled out;
    out.path = row_path(row);
    uint32_t err = 0;
    const ValueList values = fetch(s, row, out.path, names ? *names : std::vector<std::string>{}, &out.result, &err);
    if (out.result < 0 || err != 0)
        throw ToolError("to_vlist of " + out.path + " failed: " + outcome(out.result, err) + ", " +
                        std::to_string(values.size()) + " value(s) delivered");
    std::vector<std::string> labels;
    if (names) {
        labels = *names;
    } else {
        const auto table = s.engine.find_table(zan::db::table_of(row).name);
        const zan::engine::ColumnResult cols = s.engine.columns(*table);
        if (!cols.ok())
            throw ToolError("column description of " + std::string(table->name()) + " failed: " +
                            outcome(cols.status, cols.err));
        for (const auto& c : cols.columns) labels.push_back(c.name);
    }
    if (labels.size() != values.size())
        throw ToolError("to_vlist of " + out.path + " delivered " + std::to_string(values.size()) + " value(s) for " +
                        std::to_string(labels.size()) + (names ? " attribute name(s)" : " column(s)") +
                        (names ? ": a name the row does not have gives no value" : ""));
    for (size_t i = 0; i < values.size(); ++i) out.values.emplace_back(labels[i], values[i]);
    return out;
}

void append_json_pairs(std::string& out, const std::vector<std::pair<std::string, Value>>& items, bool as_list,
                       const char* indent) {
    out += as_list ? '[' : '{';
    for (size_t i = 0; i < items.size(); ++i) {
        out += i ? ",\n" : "\n";
        out += indent;
        out += "  ";
        if (as_list) out += '[';
        append_json_string(out, items[i].first);
        out += as_list ? ", " : ": ";
        append_json_value(out, items[i].second);
        if (as_list) out += ']';
    }
    out += items.empty() ? "" : std::string("\n") + indent;
    out += as_list ? ']' : '}';
}

// Rows one after the other: text blocks headed by their paths when there are several, or
// JSON (one object, or an array of them).
template <class Row, class Text, class Json>
void print_rows(Session& s, const std::vector<Row>& rows, bool one_row, bool json, Text text, Json to_json) {
    if (json) {
        if (one_row) {
            to_json(rows.front(), "");
            s.out += '\n';
            return;
        }
        s.out += '[';
        for (size_t i = 0; i < rows.size(); ++i) {
            s.out += i ? ",\n  " : "\n  ";
            to_json(rows[i], "  ");
        }
        s.out += rows.empty() ? "]\n" : "\n]\n";
        return;
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        if (!one_row) s.out += (i ? "\n# " : "# ") + rows[i].path + "\n";
        text(rows[i]);
    }
}

}  // namespace

void get_values(Session& s, const Invocation& inv) {
    const bool by_name = inv.has("--attrs");
    if (by_name && inv.has("--values")) throw ToolError("'get' takes --attrs or --values, not both", k_exit_usage);
    if (inv.has("--with-state")) throw ToolError("--with-state applies to 'get' without --attrs or --values",
                                                 k_exit_usage);
    const std::vector<std::string> names = by_name ? split_names(option_value(inv, "--attrs")) : std::vector<std::string>{};
    bool one_row = false;
    const auto found = rows_at(s, inv.args[0], &one_row);
    std::vector<Labelled> rows;
    for (const auto* row : found) rows.push_back(values_of(s, *row, by_name ? &names : nullptr));
    const bool json = inv.has("--json");
    print_rows(
        s, rows, one_row, json,
        [&](const Labelled& r) {
            for (const auto& [label, v] : r.values) s.out += label + " = " + zan::plat::to_text(v) + '\n';
            s.out += "result " + std::to_string(r.result) + '\n';
        },
        [&](const Labelled& r, const char* indent) {
            s.out += "{\"path\": ";
            append_json_string(s.out, r.path);
            s.out += ", \"result\": " + std::to_string(r.result) + ", \"values\": ";
            append_json_pairs(s.out, r.values, true, indent);
            s.out += '}';
        });
}

void cmd_key(Session& s, const Invocation& inv) {
    if (inv.args.size() != 1)
        throw ToolError("'key' takes one PATH (got " + std::to_string(inv.args.size()) + ")", k_exit_usage);
    bool one_row = false;
    const auto found = rows_at(s, inv.args[0], &one_row);
    struct KeyRow {
        std::string path;
        std::vector<std::pair<std::string, Value>> entries;
    };
    std::vector<KeyRow> rows;
    for (const auto* row : found) {
        KeyRow k{row_path(*row), {}};
        const zan_tbl_to_nvlist_fn to_nvlist = table_op(s, *row, &zan_gx_table_row::to_nvlist, "to_nvlist");
        gx_do_nvlist* nvlist = gx_do_nvlist_new();
        if (nvlist == nullptr) throw ToolError("no name-value list for " + k.path);
        uint32_t err = 0;
        const int32_t result = to_nvlist(zan::engine::Engine::context(), 0, row, nvlist, &err);
        for (const NamedValue& nv : zan::plat::nvlist_items(nvlist)) k.entries.emplace_back(nv.name, nv.value);
        gx_do_nvlist_deref(nvlist);
        if (result < 0 || err != 0)
            throw ToolError("to_nvlist of " + k.path + " failed: " + outcome(result, err) + ", " +
                            std::to_string(k.entries.size()) + " entr" + (k.entries.size() == 1 ? "y" : "ies") +
                            " delivered");
        rows.push_back(std::move(k));
    }
    print_rows(
        s, rows, one_row, inv.has("--json"),
        [&](const KeyRow& r) {
            for (const auto& [name, v] : r.entries) s.out += name + " = " + zan::plat::to_text(v) + '\n';
        },
        [&](const KeyRow& r, const char* indent) { append_json_pairs(s.out, r.entries, false, indent); });
}

// ---------------------------------------------------------------- type

namespace {

// A stored value of the named type: a record instance, or the handle of a field whose
// enumeration, flag set or leaf word is that type.
struct Instance {
    std::string origin;        // the row's path, or @records.<type>[i] for a record outside tables
    std::string at;            // attribute prefix within it ("" for the top record)
    const void* handle = nullptr;
};

bool field_is(const zan::db::FieldInfo& f, std::string_view type) {
    using zan::db::FieldKind;
    switch (f.kind) {
    case FieldKind::enumeration:
    case FieldKind::flags: return f.type == type;
    case FieldKind::leaf: return zan::db::word_name(f.word) == type;
    default: return false;
    }
}

// Walks a record depth first in attribute order; answers true once the n-th instance is found.
bool find_in(const zan::db::Record& rec, const std::string& origin, const std::string& prefix, std::string_view type,
             long* n, Instance* out) {
    using zan::db::FieldKind;
    if (zan::db::type_of(rec).name == type && --*n == 0) {
        *out = Instance{origin, prefix, &rec};
        return true;
    }
    for (const auto& f : zan::db::type_of(rec).fields) {
        if (f.role != zan::db::FieldRole::attribute) continue;
        const std::string name(f.name);
        if (f.kind == FieldKind::nested) {
            if (find_in(zan::db::nested(rec, name), origin, prefix + name + ".", type, n, out)) return true;
        } else if (f.kind == FieldKind::sequence) {
            for (size_t i = 0, size = zan::db::sequence_size(rec, name); i < size; ++i) {
                const std::string element = name + "[" + std::to_string(i) + "]";
                if (find_in(zan::db::nested(rec, element), origin, prefix + element + ".", type, n, out)) return true;
            }
        } else if (field_is(f, type) && --*n == 0) {
            *out = Instance{origin, prefix + name, zan::db::handle(rec, name)};
            return true;
        }
    }
    return false;
}

long nth_option(const Invocation& inv) {
    if (!inv.has("--nth")) return 1;
    const std::string text = option_value(inv, "--nth");
    long n = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (ec != std::errc{} || end != text.data() + text.size() || n < 1)
        throw ToolError("bad --nth '" + text + "' (want a number from 1)", k_exit_usage);
    return n;
}

}  // namespace

void cmd_type(Session& s, const Invocation& inv) {
    if (inv.args.size() != 1)
        throw ToolError("'type' takes one TYPE (got " + std::to_string(inv.args.size()) + ")", k_exit_usage);
    const std::string& type = inv.args[0];
    const auto row = s.engine.find_type(type);
    if (!row) throw ToolError("unknown type '" + type + "'");
    const long wanted = nth_option(inv);
    long n = wanted;
    Instance at;
    bool found = false;
    // Table rows first, then the records that stand in no table, type by type.
    for (const auto* table : zan::db::tables()) {
        for (const zan::db::Row* r : s.rows().rows(*table)) {
            for (size_t i = 0; !found && i < table->rows.size(); ++i)
                if (const zan::db::Record* rec = zan::db::row_record(*r, i))
                    found = find_in(*rec, row_path(*r), "", type, &n, &at);
            if (found) break;
        }
        if (found) break;
    }
    // Records of the type itself come before those it is nested in.
    std::vector<std::string_view> kept = found ? std::vector<std::string_view>{} : s.rows().record_types();
    std::stable_partition(kept.begin(), kept.end(), [&](std::string_view t) { return t == type; });
    for (const std::string_view t : kept) {
        const auto records = s.rows().records(t);
        for (size_t i = 0; !found && i < records.size(); ++i)
            found = find_in(*records[i], "@records." + std::string(t) + "[" + std::to_string(i) + "]", "", type, &n,
                            &at);
        if (found) break;
    }
    if (!found)
        throw ToolError(wanted == 1 ? "the configuration holds no stored instance of type '" + type + "'"
                                    : "the configuration holds " + std::to_string(wanted - n) +
                                          " stored instance(s) of type '" + type + "', not " + std::to_string(wanted));

    const zan_type_to_properties_fn to_properties = row->props ? row->props->to_properties : nullptr;
    const zan_type_to_vlist_all_fn to_vlist_all = row->vlist ? row->vlist->to_vlist_all : nullptr;
    if (to_properties == nullptr && to_vlist_all == nullptr)
        throw ToolError("type " + type + ": the front end registered neither to_properties nor to_vlist_all for it");
    const std::string where = at.origin + (at.at.empty() ? "" : " at " + at.at);

    std::vector<NamedValue> props;
    int32_t props_result = 0;
    if (to_properties) {
        gx_do_properties* p = zan::plat::properties_new();
        uint32_t err = 0;
        props_result = to_properties(zan::engine::Engine::context(), 0, "", p, at.handle, 0, &err);
        props = zan::plat::properties_items(p);
        zan::plat::properties_deref(p);
        if (props_result != 0 || err != 0)
            throw ToolError("to_properties of " + type + " (" + where + ") failed: " + outcome(props_result, err));
    }
    ValueList values;
    int32_t vlist_result = 0;
    if (to_vlist_all) {
        gx_do_vlist* v = gx_do_vlist_new();
        uint32_t err = 0;
        vlist_result = to_vlist_all(zan::engine::Engine::context(), 0, at.handle, v, 0, &err);
        values = zan::plat::vlist_values(v);
        gx_do_vlist_deref(v);
        if (vlist_result < 0 || err != 0)
            throw ToolError("to_vlist_all of " + type + " (" + where + ") failed: " + outcome(vlist_result, err));
    }

    if (inv.has("--json")) {
        s.out += "{\"type\": ";
        append_json_string(s.out, type);
        s.out += ", \"row\": ";
        append_json_string(s.out, at.origin);
        s.out += ", \"at\": ";
        append_json_string(s.out, at.at);
        s.out += ",\n \"to_properties\": ";
        if (to_properties) {
            s.out += "{\"result\": " + std::to_string(props_result) + ", \"properties\": ";
            std::vector<std::pair<std::string, Value>> items;
            for (const auto& nv : props) items.emplace_back(nv.name, nv.value);
            append_json_pairs(s.out, items, false, " ");
            s.out += '}';
        } else {
            s.out += "null";
        }
        s.out += ",\n \"to_vlist_all\": ";
        if (to_vlist_all) {
            s.out += "{\"result\": " + std::to_string(vlist_result) + ", \"values\": [";
            for (size_t i = 0; i < values.size(); ++i) {
                if (i) s.out += ", ";
                append_json_value(s.out, values[i]);
            }
            s.out += "]}";
        } else {
            s.out += "null";
        }
        s.out += "}\n";
        return;
    }
    s.out += "# " + type + " in " + where + "\n";
    if (to_properties) {
        s.out += "to_properties " + std::to_string(props_result) + "\n";
        for (const auto& nv : props) s.out += "  " + nv.name + " = " + zan::plat::to_text(nv.value) + '\n';
    } else {
        s.out += "to_properties: none registered\n";
    }
    if (to_vlist_all) {
        s.out += "to_vlist_all " + std::to_string(vlist_result) + "\n";
        for (const auto& v : values) s.out += "  " + zan::plat::to_text(v) + '\n';
    } else {
        s.out += "to_vlist_all: none registered\n";
    }
}

}  // namespace zanfe
