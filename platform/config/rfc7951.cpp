#include "rfc7951.hpp"

#include <algorithm>

#include "zan/database.hpp"

namespace zan::config::rfc7951 {
namespace {

using db::FieldInfo;
using db::FieldKind;
using db::TableInfo;
using db::TypeInfo;

constexpr std::string_view k_module = "zan-config";

[[noreturn]] void fault(const std::string& place, std::string what) { throw Fault{place, std::move(what)}; }

std::string kind_of(const json& v) {
    if (v.is_string()) return "string \"" + v.get<std::string>() + "\"";
    if (v.is_number()) return "number " + v.dump();
    if (v.is_boolean()) return v.dump();
    return v.type_name();
}

bool is_top(const TableInfo& p) { return !p.parent || p.parent->table == p.table; }

const TableInfo* top_position(std::string_view segment) {
    for (const TableInfo* p : db::positions())
        if (is_top(*p) && p->segment == segment) return p;
    return nullptr;
}

const TableInfo* child_position(const TableInfo& parent_table, std::string_view segment) {
    for (const TableInfo* p : db::positions())
        if (p->parent && p->parent->table == &parent_table && p->segment == segment) return p;
    return nullptr;
}

const TableInfo* top_of_table(std::string_view table) {
    for (const TableInfo* p : db::positions())
        if (is_top(*p) && p->table->name == table) return p;
    return nullptr;
}

const TableInfo* child_of_table(const TableInfo& parent_table, std::string_view table) {
    for (const TableInfo* p : db::positions())
        if (p->parent && p->parent->table == &parent_table && p->table->name == table) return p;
    return nullptr;
}

// A member name without the module's own prefix; another module's names are refused.
std::string local_name(const std::string& name, const std::string& place) {
    const size_t colon = name.find(':');
    if (colon == std::string::npos) return name;
    if (name.compare(0, colon, k_module) != 0)
        fault(place, "\"" + name + "\" belongs to module " + name.substr(0, colon) + ", not " + std::string(k_module));
    return name.substr(colon + 1);
}

class Reader {
public:
    json document(const json& doc) {
        json out = json::object();
        for (const auto& [name, value] : doc.items()) {
            const size_t colon = name.find(':');
            if (colon == std::string::npos)
                fault(name, "a top-level name must be module-qualified (\"" + std::string(k_module) + ":" + name + "\")");
            const std::string place = name;
            const std::string local = local_name(name, place);
            const TableInfo* pos = top_position(local);
            if (!pos) fault(place, "no top-level list " + local + " in " + std::string(k_module));
            out[std::string(pos->table->name)] = entries(*pos, value, place);
        }
        return out;
    }

private:
    json entries(const TableInfo& pos, const json& list, const std::string& place) {
        if (!list.is_array()) fault(place, "expected an array of list entries, got " + kind_of(list));
        json rows = json::array();
        for (size_t i = 0; i < list.size(); ++i) rows.push_back(entry(pos, list[i], place + "[" + std::to_string(i) + "]"));
        return rows;
    }

    json entry(const TableInfo& pos, const json& obj, const std::string& place) {
        if (!obj.is_object()) fault(place, "expected a list entry object, got " + kind_of(obj));
        const TableInfo& table = *pos.table;
        json row = json::object();
        json children = json::object();
        for (const auto& [member, value] : obj.items()) {
            const std::string at = place + "/" + member;
            const std::string name = local_name(member, at);
            if (const TableInfo* child = child_position(table, name)) {
                children[std::string(child->table->name)] = entries(*child, value, at);
                continue;
            }
            const TypeInfo* rec = nullptr;
            for (const TypeInfo* r : table.rows)
                if (r->field(name)) {
                    rec = r;
                    break;
                }
            if (!rec) fault(at, "no leaf, container or list " + name + " in the entries of " + std::string(pos.segment));
            member_of(row, *rec, name, "", value, at);
        }
        for (const TypeInfo* r : table.rows) check_arms(*r, obj, place);
        if (!children.empty()) row["children"] = std::move(children);
        return row;
    }

    // One member of a record: a container flattened into dotted names, or a leaf.
    void member_of(json& row, const TypeInfo& rec, const std::string& name, const std::string& prefix, const json& v,
                   const std::string& at) {
        const FieldInfo* f = rec.field(name);
        if (!f || f->role != db::FieldRole::attribute || f->kind == FieldKind::sequence)
            fault(at, "no leaf or container " + name + " in record " + std::string(rec.name));
        if (f->kind == FieldKind::nested) {
            if (!v.is_object()) fault(at, "expected a container object, got " + kind_of(v));
            container(row, *f->target, prefix + name + ".", v, at);
            return;
        }
        row[prefix + name] = leaf(*f, v, at);
    }

    void container(json& row, const TypeInfo& rec, const std::string& prefix, const json& obj, const std::string& place) {
        for (const auto& [member, value] : obj.items()) {
            const std::string at = place + "/" + member;
            member_of(row, rec, local_name(member, at), prefix, value, at);
        }
        check_arms(rec, obj, place);
    }

    // Data in an arm that the discriminator does not select would be kept but never shown:
    // an arm given asks for the descriminator that selects it. `obj` holds the members of
    // the union `rec` (and maybe others', at the level of a row).
    static void check_arms(const TypeInfo& rec, const json& obj, const std::string& place) {
        if (!rec.is_union()) return;
        const json* d = nullptr;
        for (const auto& [member, value] : obj.items())
            if (member.substr(member.find(':') + 1) == "descriminator") d = &value;
        for (const auto& [member, value] : obj.items()) {
            const FieldInfo* f = rec.field(member.substr(member.find(':') + 1));
            if (!f || !f->arm) continue;
            const std::string at = place + "/" + member;
            if (!d) fault(at, "arm " + std::string(f->name) + " given, but no descriminator selects it");
            const std::string need = "ZAN_CFG_" + std::to_string(f->arm - 1);
            if (*d != json(need))
                fault(at, "data in arm " + std::string(f->name) + ", which descriminator " + kind_of(*d) +
                              " does not select (it needs " + need + ")");
        }
    }

    // A leaf's value in the loader's form.
    static json leaf(const FieldInfo& f, const json& v, const std::string& at) {
        switch (f.kind) {
        case FieldKind::enumeration:
            if (!v.is_string()) fault(at, "expected an enumerator name, got " + kind_of(v));
            return v;
        case FieldKind::flags: {
            if (!v.is_string()) fault(at, "expected the names of the set bits as one string, got " + kind_of(v));
            json names = json::array();
            const std::string s = v.get<std::string>();
            for (size_t i = 0; i < s.size();) {
                const size_t blank = s.find(' ', i);
                const size_t end = blank == std::string::npos ? s.size() : blank;
                if (end > i) names.push_back(s.substr(i, end - i));
                i = end + 1;
            }
            return names;
        }
        case FieldKind::fixed_array:
        case FieldKind::counted_array:
            if (!v.is_array()) fault(at, "expected a leaf-list array, got " + kind_of(v));
            return v;
        default: break;
        }
        if (f.kind == FieldKind::leaf && f.word == db::Word::u_int64) {
            // RFC 7951 writes 64-bit integers as strings.
            if (!v.is_string()) fault(at, "expected a 64-bit integer as a string, got " + kind_of(v));
            const std::string s = v.get<std::string>();
            if (s.empty() || s.size() > 20 || !std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; }))
                fault(at, "\"" + s + "\" is no u_int64");
            unsigned long long n = 0;
            for (const char c : s) {
                if (n > (~0ull - uint64_t(c - '0')) / 10) fault(at, "\"" + s + "\" is out of range for u_int64");
                n = n * 10 + uint64_t(c - '0');
            }
            return json(uint64_t(n));
        }
        return v;
    }
};

}  // namespace

bool is_instance_data(const json& doc) {
    if (!doc.is_object()) return false;
    return std::any_of(doc.items().begin(), doc.items().end(),
                       [](const auto& m) { return m.key().find(':') != std::string::npos; });
}

json to_tables(const json& doc) { return Reader().document(doc); }

std::string place_text(std::span<const Step> place) {
    std::string out;
    const TableInfo* table = nullptr;   // table of the rows the place stands in
    bool children = false;
    for (const Step& s : place) {
        if (const size_t* i = std::get_if<size_t>(&s)) {
            out += "[" + std::to_string(*i) + "]";
            continue;
        }
        const std::string& name = std::get<std::string>(s);
        if (name == "children") {
            children = true;
            continue;
        }
        const TableInfo* pos = nullptr;
        if (!table) pos = top_of_table(name);
        else if (children) pos = child_of_table(*table, name);
        children = false;
        if (pos) {
            out += table ? "/" + std::string(pos->segment) : std::string(k_module) + ":" + std::string(pos->segment);
            table = pos->table;
            continue;
        }
        std::string path = name;
        std::replace(path.begin(), path.end(), '.', '/');
        out += (out.empty() ? "" : "/") + path;
    }
    return out.empty() ? "top level" : out;
}

}  // namespace zan::config::rfc7951
