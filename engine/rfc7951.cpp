#include "zan/rfc7951.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace zan::engine::rfc7951 {
namespace {

using db::FieldInfo;
using db::FieldKind;
using db::TableInfo;
using db::TypeInfo;
using plat::Value;

// A JSON value under construction: members keep the order they were added in.
struct Member;
struct Node {
    enum Kind { object, array, scalar } kind = object;
    std::string text;                              // a scalar, already encoded
    std::vector<Member> members;
    std::vector<Node> items;

    Node& member(const std::string& name, Kind k);
    bool empty() const;
};
struct Member {
    std::string first;
    Node second;
};

Node& Node::member(const std::string& name, Kind k) {
    for (auto& [n, v] : members)
        if (n == name) return v;
    members.push_back(Member{name, Node{}});
    members.back().second.kind = k;
    return members.back().second;
}
bool Node::empty() const { return kind == object ? members.empty() : kind == array ? items.empty() : false; }


void print(std::string& out, const Node& n, int depth) {
    const std::string pad(2 * depth + 2, ' ');
    const std::string close(2 * depth, ' ');
    switch (n.kind) {
    case Node::scalar: out += n.text; return;
    case Node::array: {
        const bool flat = !n.items.empty() && n.items.front().kind == Node::scalar;
        if (n.items.empty()) {
            out += "[]";
            return;
        }
        out += '[';
        for (size_t i = 0; i < n.items.size(); ++i) {
            out += i ? "," : "";
            if (flat) {
                out += i ? " " : "";
            } else {
                out += '\n' + pad;
            }
            print(out, n.items[i], depth + 1);
        }
        out += flat ? "]" : "\n" + close + "]";
        return;
    }
    case Node::object:
        if (n.members.empty()) {
            out += "{}";
            return;
        }
        out += '{';
        for (size_t i = 0; i < n.members.size(); ++i) {
            out += i ? ",\n" : "\n";
            out += pad;
            append_json_string(out, n.members[i].first);
            out += ": ";
            print(out, n.members[i].second, depth + 1);
        }
        out += '\n' + close + '}';
        return;
    }
}

Node scalar(std::string text) {
    Node n;
    n.kind = Node::scalar;
    n.text = std::move(text);
    return n;
}

Node string_node(std::string_view s) {
    std::string t;
    append_json_string(t, s);
    return scalar(std::move(t));
}

[[noreturn]] void fail(const std::string& what) { throw Error("rfc7951: " + what); }

// The enumerator or flag names of an integer value.
std::string enum_name(const TypeInfo& t, uint64_t v, const std::string& where) {
    if (v >= t.values.size()) fail(where + ": " + std::to_string(v) + " is no value of " + std::string(t.name));
    return std::string(t.values[v]);
}

std::string bit_names(const TypeInfo& t, uint64_t bits, const std::string& where) {
    std::string out;
    for (size_t b = 0; b < 64; ++b) {
        if (!(bits >> b & 1)) continue;
        if (b >= t.values.size()) fail(where + ": bit " + std::to_string(b) + " is no flag of " + std::string(t.name));
        if (!out.empty()) out += ' ';
        out += t.values[b];
    }
    return out;
}

std::optional<uint64_t> integer_of(const Value& v) {
    if (const auto* i = std::get_if<int64_t>(&v.v)) return uint64_t(*i);
    if (const auto* u = std::get_if<uint64_t>(&v.v)) return *u;
    if (const auto* b = std::get_if<bool>(&v.v)) return *b ? 1 : 0;
    return std::nullopt;
}

// A value in the encoding of its field's YANG type.
Node encode(const FieldInfo& f, const Value& v, const std::string& where) {
    if (f.kind == FieldKind::enumeration) {
        if (const auto* e = std::get_if<plat::EnumText>(&v.v)) return string_node(e->text);
        if (const auto* s = std::get_if<std::string>(&v.v)) return string_node(*s);
        if (auto n = integer_of(v)) return string_node(enum_name(*f.target, *n, where));
    } else if (f.kind == FieldKind::flags) {
        if (auto n = integer_of(v)) return string_node(bit_names(*f.target, *n, where));
        if (const auto* list = std::get_if<plat::ValueList>(&v.v)) {
            std::string names;
            for (const Value& x : *list) {
                const auto* e = std::get_if<plat::EnumText>(&x.v);
                const auto* s = std::get_if<std::string>(&x.v);
                if (!e && !s) fail(where + ": a flag that is no name");
                names += (names.empty() ? "" : " ") + (e ? e->text : *s);
            }
            return string_node(names);
        }
    } else if (f.kind == FieldKind::fixed_array || f.kind == FieldKind::counted_array) {
        if (const auto* list = std::get_if<plat::ValueList>(&v.v)) {
            Node a;
            a.kind = Node::array;
            for (const Value& x : *list) {
                auto n = integer_of(x);
                if (!n) fail(where + ": an array element that is no integer");
                a.items.push_back(scalar(std::to_string(*n)));
            }
            return a;
        }
    } else if (f.kind == FieldKind::chars) {
        if (const auto* s = std::get_if<std::string>(&v.v)) return string_node(*s);
    } else if (f.kind == FieldKind::leaf) {
        switch (f.word) {
        case db::Word::rsl_boolean:
            if (auto n = integer_of(v)) return scalar(*n ? "true" : "false");
            break;
        case db::Word::rsl_vstring:
            if (const auto* s = std::get_if<std::string>(&v.v)) return string_node(*s);
            break;
        case db::Word::ip_address:
            if (const auto* ip = std::get_if<plat::Ip>(&v.v)) return string_node(plat::format_ip(*ip));
            if (const auto* s = std::get_if<std::string>(&v.v)) return string_node(*s);
            break;
        case db::Word::rsl_mac_addr:
            if (const auto* mac = std::get_if<plat::Mac>(&v.v)) return string_node(plat::format_mac(*mac));
            if (const auto* s = std::get_if<std::string>(&v.v)) return string_node(*s);
            break;
        case db::Word::u_int64:
            if (auto n = integer_of(v)) return string_node(std::to_string(*n));
            break;
        default:
            if (const auto* i = std::get_if<int64_t>(&v.v)) return scalar(std::to_string(*i));
            if (const auto* u = std::get_if<uint64_t>(&v.v)) return scalar(std::to_string(*u));
            break;
        }
    }
    fail(where + ": value " + plat::to_text(v) + " does not fit its " + std::string(db::word_name(f.word)) + " leaf");
}

// The field a dotted attribute name ends in, and the containers on the way.
const FieldInfo& field_of(const TableInfo& table, const std::string& name, std::vector<std::string>* containers) {
    const TypeInfo* t = nullptr;
    const std::string first = name.substr(0, name.find('.'));
    for (const TypeInfo* r : table.rows)
        if (r->field(first)) {
            t = r;
            break;
        }
    size_t start = 0;
    while (t) {
        const size_t dot = name.find('.', start);
        const std::string part = name.substr(start, dot == std::string::npos ? std::string::npos : dot - start);
        const FieldInfo* f = t->field(part);
        if (!f || f->role != db::FieldRole::attribute) break;
        if (dot == std::string::npos) {
            if (f->kind == FieldKind::nested || f->kind == FieldKind::sequence) break;
            return *f;
        }
        if (f->kind != FieldKind::nested) break;
        containers->push_back(part);
        t = f->target;
        start = dot + 1;
    }
    fail(std::string(table.name) + ": attribute \"" + name + "\" has no leaf in the module");
}

// Writes the document entry by entry: an entry's attributes are made a tree of their own
// (the containers of the dotted names) and written, then its child lists as they are
// reached, so that what is held at a time is one row's attributes and the lists on the path
// down to it. `rows_` nullptr: every row of the store is printed, rendered when reached.
class Printer {
public:
    Printer(const db::Store& store, const Rendered* rows, const RenderFn& render, std::string& out,
            const std::function<void()>& row_done)
        : store_(store), rows_(rows), render_(render), out_(out), row_done_(row_done) {
        if (rows_) {
            // Every row given, and each of its ancestors, is visited; nothing else is. They
            // are grouped by table and parent, each group in the order the rows were added:
            // the order the store lists the rows under a parent in, without asking it.
            for (const auto& [row, items] : *rows_) {
                check_self_levels(*row);
                for (const db::Row* r = row; r && visit_.insert(r).second;) {
                    const db::Row* up = db::parent_of(*r);
                    groups_[Group{&db::table_of(*r), up}].push_back(r);
                    r = up;
                }
            }
            for (auto& [g, members] : groups_)
                std::sort(members.begin(), members.end(), [](const db::Row* a, const db::Row* b) {
                    return db::Store::order_of(*a) < db::Store::order_of(*b);
                });
        } else {
            for (const TableInfo* t : db::tables())
                for (const db::Row* row : store_.rows(*t)) check_self_levels(*row);
        }
    }

    void write() {
        out_ += '{';
        const size_t members = lists(nullptr, nullptr, 0, std::string(k_module) + ":", 0);
        out_ += members ? "\n}\n" : "}\n";
        if (row_done_) row_done_();
    }

private:
    struct Group {
        const TableInfo* table;
        const db::Row* parent;
        bool operator==(const Group&) const = default;
    };
    struct GroupHash {
        size_t operator()(const Group& g) const {
            return std::hash<const void*>{}(g.table) * 31 + std::hash<const void*>{}(g.parent);
        }
    };

    const db::Store& store_;
    const Rendered* rows_;
    const RenderFn& render_;
    std::string& out_;
    const std::function<void()>& row_done_;
    std::unordered_set<const db::Row*> visit_;
    std::unordered_map<Group, std::vector<const db::Row*>, GroupHash> groups_;

    // A table that is its own parent stands in the module k_self_levels deep at most.
    static void check_self_levels(const db::Row& row) {
        int links = 0;
        for (const db::Row* r = &row; const db::Row* up = db::parent_of(*r); r = up) {
            links = db::table_of(*up).table == db::table_of(*r).table ? links + 1 : 0;
            if (links >= k_self_levels)
                fail(std::string(db::table_of(*r).table->name) + " rows nest more than " +
                     std::to_string(k_self_levels) + " levels deep, the levels the module unrolls");
        }
    }

    // The rows of a position under `parent` that are printed: all of them, or the visited ones.
    void rows_of(const TableInfo& pos, const db::Row* parent, std::vector<const db::Row*>& into) const {
        if (!rows_) {
            for (const db::Row* row : store_.rows_under(*pos.table, parent)) into.push_back(row);
        } else if (const auto g = groups_.find(Group{pos.table->table, parent}); g != groups_.end()) {
            into.insert(into.end(), g->second.begin(), g->second.end());
        }
    }

    // The lists below `parent` (nullptr: the top level) as members of the object being
    // written at `depth`, after the `members` already written in it: positions of the same
    // name make one list, placed where the first of them that has rows stands. Answers the
    // members written in all.
    size_t lists(const TableInfo* table, const db::Row* parent, int depth, const std::string& qualifier,
                 size_t members) {
        const auto& in = lists_below(table);
        const std::string pad(2 * depth + 2, ' ');
        const std::string item_pad(2 * depth + 4, ' ');
        std::vector<std::string_view> written;
        for (const TableInfo* first : in) {
            if (std::find(written.begin(), written.end(), first->segment) != written.end()) continue;
            std::vector<const db::Row*> entries;
            for (const TableInfo* p : in)
                if (p->segment == first->segment) rows_of(*p, parent, entries);
            if (entries.empty()) continue;
            written.push_back(first->segment);
            out_ += members++ ? ",\n" : "\n";
            out_ += pad;
            append_json_string(out_, qualifier + std::string(first->segment));
            out_ += ": [";
            for (size_t i = 0; i < entries.size(); ++i) {
                out_ += i ? ",\n" : "\n";
                out_ += item_pad;
                entry(*entries[i], depth + 2);
            }
            out_ += '\n' + std::string(2 * depth + 2, ' ') + ']';
        }
        return members;
    }

    // One list entry, an object at `depth`: its attributes, then its child lists.
    void entry(const db::Row& row, int depth) {
        const TableInfo& table = *db::table_of(row).table;
        size_t members = 0;
        {
            Node obj;
            if (!rows_) {
                attributes(obj, table, render_(row), nullptr);
            } else if (const auto given = rows_->find(&row); given != rows_->end()) {
                attributes(obj, table, given->second, nullptr);
            } else {
                const std::vector<std::string> keys = key_names(table);
                attributes(obj, table, render_(row), &keys);
            }
            const std::string pad(2 * depth + 2, ' ');
            out_ += '{';
            for (; members < obj.members.size(); ++members) {
                out_ += members ? ",\n" : "\n";
                out_ += pad;
                append_json_string(out_, obj.members[members].first);
                out_ += ": ";
                print(out_, obj.members[members].second, depth + 1);
            }
        }
        if (row_done_) row_done_();
        members = lists(&table, &row, depth, "", members);
        out_ += members ? '\n' + std::string(2 * depth, ' ') + '}' : std::string("}");
    }

    static void attributes(Node& obj, const TableInfo& table, const std::vector<plat::NamedValue>& items,
                           const std::vector<std::string>* only) {
        for (const plat::NamedValue& item : items) {
            if (only && std::find(only->begin(), only->end(), item.name) == only->end()) continue;
            if (std::holds_alternative<plat::Null>(item.value.v)) continue;
            std::vector<std::string> containers;
            const FieldInfo& f = field_of(table, item.name, &containers);
            Node* at = &obj;
            for (const std::string& c : containers) at = &at->member(c, Node::object);
            const std::string leaf = item.name.substr(item.name.rfind('.') + 1);
            at->members.push_back(Member{leaf, encode(f, item.value, std::string(table.name) + " \"" + item.name + "\"")});
        }
        prune(obj);
    }

    // Containers that hold nothing (the unselected arms) are left out.
    static void prune(Node& n) {
        for (auto& [name, m] : n.members)
            if (m.kind == Node::object) prune(m);
        std::erase_if(n.members, [](const auto& m) { return m.second.kind == Node::object && m.second.empty(); });
    }
};

}  // namespace

std::vector<std::string> key_names(const TableInfo& t) {
    std::vector<std::string> out;
    if (t.key_kind == db::KeyKind::compound)
        for (const FieldInfo* p : t.key_parts) out.emplace_back(p->name);
    else
        out.emplace_back(t.key_name);
    return out;
}

const std::vector<const TableInfo*>& lists_below(const TableInfo* table) {
    static const auto by_parent = [] {
        std::unordered_map<const TableInfo*, std::vector<const TableInfo*>> m;
        for (const TableInfo* p : db::positions()) {
            if (!p->parent || p->parent->table == p->table) m[nullptr].push_back(p);
            if (p->parent) m[p->parent->table].push_back(p);
        }
        return m;
    }();
    static const std::vector<const TableInfo*> none;
    const auto it = by_parent.find(table);
    return it == by_parent.end() ? none : it->second;
}

std::string document(const db::Store& store, const Rendered& rows, const RenderFn& render_ancestor) {
    std::string out;
    Printer(store, &rows, render_ancestor, out, nullptr).write();
    return out;
}

void document_of_all(const db::Store& store, const RenderFn& render, std::string& out,
                     const std::function<void()>& row_done) {
    Printer(store, nullptr, render, out, row_done).write();
}

std::string leaf_document(const db::TableInfo& table, const plat::NamedValue& item) {
    std::vector<std::string> containers;
    const FieldInfo& f = field_of(table, item.name, &containers);
    Node top;
    const std::string leaf = item.name.substr(item.name.rfind('.') + 1);
    top.members.push_back(
        Member{std::string(k_module) + ":" + leaf, encode(f, item.value, std::string(table.name) + " \"" + item.name + "\"")});
    std::string out;
    print(out, top, 0);
    return out + "\n";
}

}  // namespace zan::engine::rfc7951

namespace zan::engine {

void append_json_string(std::string& out, std::string_view text) {
    out += '"';
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        default:
            if (c < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
                out += buf;
            } else {
                out += ch;
            }
        }
    }
    out += '"';
}

}  // namespace zan::engine
