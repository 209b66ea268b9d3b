// resolve and ls: a path through the registered dispatcher, what it left behind, and the
// rows the engine finds with it.
#include <charconv>

#include "commands.hpp"
#include "configuration.hpp"
#include "path.hpp"

namespace zanfe {

using zan::engine::Request;
using zan::engine::Response;

const zan::db::Store& Session::rows() {
    if (!store) {
        std::optional<int32_t> variant;
        store = load_configuration(db, &variant);
        // Renderings compare against defaults only as the file's default variant allows.
        if (variant) zan::db::set_default_variant(engine.context(), *variant);
    }
    return *store;
}

namespace {

std::string hex(const uint8_t* bytes, size_t n) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(2 * n);
    for (size_t i = 0; i < n; ++i) {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}
std::string hex(const std::vector<uint8_t>& bytes) { return bytes.empty() ? "-" : hex(bytes.data(), bytes.size()); }

// What an identifier names: a table, a type, or a field as type.field.
std::string luid_name(const uint8_t* luid) {
    const auto t = zan::db::find_luid(luid);
    if (t.table) return std::string(t.table->name);
    if (t.field) return std::string(t.field->owner ? t.field->owner->name : "?") + "." + std::string(t.field->name);
    if (t.type) return std::string(t.type->name);
    return "?";
}

std::string list_text(const std::optional<std::vector<std::string>>& list) {
    if (!list) return "absent";
    if (list->empty()) return "empty";
    std::string out;
    for (const auto& n : *list) {
        if (!out.empty()) out += ' ';
        out += n;
    }
    return out;
}

std::string key_text(const std::vector<std::pair<std::string, std::string>>& parts) {
    PathSegment s;
    s.keys = parts;
    return format_segment(s);   // "[name=value]..."
}

std::string row_text(const zan::db::Row& row) {
    std::string out = std::string(zan::db::table_of(row).name) + key_text(zan::engine::row_key_parts(row));
    bool first = true;
    for (const zan::db::Row* p = zan::db::parent_of(row); p; p = zan::db::parent_of(*p)) {
        out += first ? " under " : ", ";
        first = false;
        out += std::string(zan::db::table_of(*p).name) + key_text(zan::engine::row_key_parts(*p));
        if (p == zan::db::parent_of(*p)) break;
    }
    return out;
}

std::vector<PathSegment> parse_argument(const Invocation& inv) {
    if (inv.args.size() != 1)
        throw ToolError("'" + inv.command + "' takes one PATH (got " + std::to_string(inv.args.size()) + ")", k_exit_usage);
    try {
        return parse_path(inv.args[0]);
    } catch (const PathError& e) {
        throw ToolError("path '" + inv.args[0] + "': " + e.what(), k_exit_usage);
    }
}

Request request_of(const std::vector<PathSegment>& segments) {
    Request req;
    for (const auto& s : segments) req.segments.push_back({s.name, s.keys});
    return req;
}

[[noreturn]] void not_resolved(const Invocation& inv, const std::vector<PathSegment>& segments, const Response& r) {
    const auto stop = zan::engine::stop_of(r, segments.size());
    std::string msg = "path '" + inv.args[0] + "' does not resolve: code " + std::to_string(r.code);
    if (stop && stop->segment >= 1 && stop->segment <= segments.size())
        msg += " at segment " + std::to_string(stop->segment) + " '" + segments[stop->segment - 1].text +
               "': " + stop->reason;
    throw ToolError(msg);
}

uint32_t kind_option(const Invocation& inv) {
    for (const auto& [name, value] : inv.options) {
        if (name != "--kind") continue;
        uint32_t kind = 0;
        auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), kind);
        if (ec != std::errc{} || end != value.data() + value.size() || value.empty())
            throw ToolError("--kind wants a number, not '" + value + "'", k_exit_usage);
        return kind;
    }
    return zan::engine::k_kind_read;
}

}  // namespace

void cmd_resolve(Session& s, const Invocation& inv) {
    const auto segments = parse_argument(inv);
    Request req = request_of(segments);
    req.kind = kind_option(inv);
    const Response r = s.engine.request(req);
    if (r.code != 1) not_resolved(inv, segments, r);

    std::string& o = s.out;
    o += "code " + std::to_string(r.code) + "\n";
    for (size_t i = 0; i < r.traversals.size(); ++i) {
        const auto& t = r.traversals[i];
        o += "traversal " + std::to_string(i + 1) + ": pq=" + std::to_string(t.pq);
        if (t.pq_luid) {
            const auto* pos = zan::db::position_by_pq(t.pq_luid->data());
            o += " pq_luid=" + hex(t.pq_luid->data(), t.pq_luid->size()) + " (" + (pos ? std::string(pos->name) : "?") + ")";
        }
        o += " deref_table=" + hex(t.deref_table.type_luid, 16) + " (" + luid_name(t.deref_table.type_luid) + ")";
        for (int k = 0; k < 2; ++k) {
            if (!t.id_vec[k]) continue;
            o += " arbor_id_vec[" + std::to_string(k) + "]=" + hex(t.id_vec[k]->type_luid, 16) + "/" +
                 std::to_string(t.id_vec[k]->field_id) + " (" + luid_name(t.id_vec[k]->type_luid) + ")";
        }
        if (t.key_luid) o += " key_luid=" + hex(t.key_luid->data(), t.key_luid->size()) + " (" + luid_name(t.key_luid->data()) + ")";
        if (t.key_field_id) o += " key_field_id=" + std::to_string(*t.key_field_id);
        if (t.key_data) o += " key_data=" + hex(*t.key_data);
        o += '\n';
    }
    const auto* slot_table = zan::engine::table_of_vector(r.slot);
    o += "slot " + (r.slot == nullptr ? std::string("empty") : slot_table ? std::string(slot_table->name) : "?") + "\n";
    o += "pd_list " + list_text(r.pd_list) + "\n";
    o += "pdc_list " + list_text(r.pdc_list) + "\n";

    const auto w = zan::engine::walk(s.rows(), r.traversals);
    if (w.error) throw ToolError("path '" + inv.args[0] + "': the walk failed: " + *w.error);
    o += "rows " + std::to_string(w.rows.size()) + "\n";
    for (const auto* row : w.rows) o += "row " + row_text(*row) + "\n";
}

void cmd_ls(Session& s, const Invocation& inv) {
    const auto segments = parse_argument(inv);
    for (size_t i = 0; i + 1 < segments.size(); ++i) {
        const auto& seg = segments[i];
        if (seg.name == "*" || (seg.keys && !seg.keys->empty() && seg.keys->front().first == "*"))
            throw ToolError("path '" + inv.args[0] + "': '*' may only stand in the last segment", k_exit_usage);
    }
    const PathSegment& last = segments.back();
    const bool wild_segment = last.name == "*";
    const bool wild_key = last.keys && !last.keys->empty() && last.keys->front().first == "*";
    if (!wild_segment && !wild_key)
        throw ToolError("path '" + inv.args[0] + "': ls wants '*' or '[*]' in the last segment", k_exit_usage);

    Request req = request_of(segments);
    req.with_pdc_list = !inv.has("--all");
    const Response r = s.engine.request(req);
    const std::vector<std::string> names = r.pd_list.value_or(std::vector<std::string>{});
    if (names.empty()) {
        // An empty listing is an answer only if everything before the wildcard resolved.
        const size_t need = wild_segment ? segments.size() - 1 : segments.size();
        const bool reached = r.code == 3 && r.path_steps() == need &&
                             (wild_key || r.traversals.empty() || r.traversals.back().pq == 1);
        if (!reached) not_resolved(inv, segments, r);
    }
    for (const auto& n : names) s.out += n + "\n";
}

}  // namespace zanfe
