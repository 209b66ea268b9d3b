// The configuration loader: JSON text to rows of a fresh store. Every fault ends the load
// with one line naming the place as a path into the document.
#include <algorithm>
#include <cstdio>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <unordered_set>
#include <sstream>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "rfc7951.hpp"
#include "zan/config.hpp"

namespace zan::config {
namespace {

using json = nlohmann::ordered_json;
using db::FieldInfo;
using db::FieldKind;
using db::FieldRole;
using db::TableInfo;
using db::TypeInfo;
using db::Word;

// A place in the document: member names and array indexes from the top, as a fault names it.
using Steps = std::vector<std::variant<std::string, size_t>>;

// The same while loading: the last step and the place it is taken in, made on the stack as
// the loader descends (names held by the document or by the loader's callers), and spelled
// out as Steps only for a fault. The place of a step must outlive it.
struct Place {
    const Place* up = nullptr;                            // nullptr: taken at the top level
    std::optional<std::variant<std::string_view, size_t>> step;   // none: the top level itself
};

Place operator+(const Place& p, std::variant<std::string_view, size_t> s) { return Place{p.step ? &p : nullptr, s}; }

Steps spelled(const Place& place) {
    Steps out;
    for (const Place* p = &place; p && p->step; p = p->up) {
        if (const size_t* i = std::get_if<size_t>(&*p->step)) out.emplace_back(*i);
        else out.emplace_back(std::string(std::get<std::string_view>(*p->step)));
    }
    std::reverse(out.begin(), out.end());
    return out;
}

// Table names and "children" stand bare, every other member name quoted:
//   tbl_ci_vrf_eol[1].children.tbl_ci_vrf_afi_mode_eol[0]."vrf_af_afi"
std::string place_text(const Steps& place) {
    std::string out;
    for (const auto& s : place) {
        if (const size_t* i = std::get_if<size_t>(&s)) {
            out += '[' + std::to_string(*i) + ']';
            continue;
        }
        const std::string& name = std::get<std::string>(s);
        if (!out.empty()) out += '.';
        if (name == "children" || name.starts_with("tbl_"))
            out += name;
        else
            out += '"' + name + '"';
    }
    return out.empty() ? "top level" : out;
}

// One line: control characters of quoted input become blanks.
// A message stays one line whatever the file holds: control characters (a table name may
// hold a newline through a JSON escape) are written as \xHH.
std::string one_line(std::string_view s) {
    std::string out;
    for (const char c : s) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(c));
            out += hex;
        } else {
            out += c;
        }
    }
    return out;
}

struct Fault {
    Steps place;
    std::string what;
};

[[noreturn]] void fault(const Place& place, std::string what) { throw Fault{spelled(place), std::move(what)}; }

std::string got(const json& v) {
    if (v.is_string()) return "string \"" + one_line(v.get<std::string>()) + "\"";
    if (v.is_number_float()) return "number " + v.dump();
    if (v.is_number()) return "integer " + v.dump();
    if (v.is_boolean()) return v.get<bool>() ? "true" : "false";
    return std::string(v.type_name());
}

// Range of the integer words (and of a count) as signed 64-bit bounds; u_int64 above
// INT64_MAX is handled by its caller.
struct Range {
    int64_t lo, hi;
};
Range range_of(Word w) {
    switch (w) {
        case Word::u_int8: return {0, 0xff};
        case Word::u_int16: return {0, 0xffff};
        case Word::int16: return {INT16_MIN, INT16_MAX};
        case Word::u_int32: return {0, 0xffffffffll};
        case Word::int32: return {INT32_MIN, INT32_MAX};
        default: return {0, std::numeric_limits<int64_t>::max()};
    }
}

std::string names_of(const TypeInfo& t) {
    std::string out;
    for (size_t i = 0; i < t.values.size() && i < 12; ++i) out += (i ? ", " : "") + std::string(t.values[i]);
    if (t.values.size() > 12) out += ", ...";
    return out;
}

class Streamer;

class Loader {
public:
    explicit Loader(db::Store& store) : store_(store) {}

    void document(const json& doc) {
        if (!doc.is_object()) fault({}, "expected an object of tables, got " + got(doc));
        for (const auto& [name, rows] : doc.items()) {
            const Place at = Place{} + name;
            if (name == "@default_variant") {
                set_default_variant(rows, at);
                continue;
            }
            if (name == "@records") {
                records(rows, at);
                continue;
            }
            table_rows(top_table(name, at), rows, nullptr, at);
        }
    }

    std::optional<int32_t> default_variant;   // "@default_variant" at the top level

private:
    friend class Streamer;

    void set_default_variant(const json& v, const Place& at) {
        if (!v.is_number_integer()) fault(at, "expected an integer, got " + got(v));
        if (v.is_number_unsigned() ? v.get<uint64_t>() > uint64_t(std::numeric_limits<int32_t>::max())
                                   : v.get<int64_t>() < std::numeric_limits<int32_t>::min())
            fault(at, v.dump() + " is out of range for a variant");
        default_variant = static_cast<int32_t>(v.get<int64_t>());
    }

    // The position of a table named at the top level.
    const TableInfo& top_table(std::string_view name, const Place& at) const {
        const TableInfo* pos = db::table_info(name);
        if (!pos || !name.starts_with("tbl_")) fault(at, "unknown table");
        const TableInfo* top = nullptr;
        for (const TableInfo* p : db::positions())
            if (p->table == pos->table && (!p->parent || p->parent->table == p->table)) top = p;
        if (!top) fault(at, std::string(pos->table->name) + " is no top-level table; its rows go under \"children\" of a " +
                                parents_of(*pos->table) + " row");
        return *top;
    }

    // The position of a table named under "children" of a row of `table`.
    const TableInfo& child_table(const TableInfo& table, std::string_view name, const Place& at) const {
        const TableInfo* child = db::table_info(name);
        if (!child || !name.starts_with("tbl_")) fault(at, "unknown table");
        const TableInfo* under = nullptr;
        for (const TableInfo* p : db::positions())
            if (p->table == child->table && p->parent && p->parent->table == &table) under = p;
        if (!under) {
            std::string parents = parents_of(*child->table);
            fault(at, std::string(child->table->name) + " is no child of " + std::string(table.name) +
                          (parents.empty() ? "; its rows stand at the top level" : "; its parent is " + parents));
        }
        return *under;
    }

    static void set_row_variant(const TableInfo& table, db::Row& row, const json& value, const Place& at) {
        if (!value.is_number_integer() || value.get<int64_t>() < INT32_MIN || value.get<int64_t>() > INT32_MAX)
            fault(at, "expected a 32-bit integer, got " + got(value));
        for (size_t r = 0; r < table.rows.size(); ++r)
            if (db::Record* rec = db::row_record(row, r)) db::set_variant(*rec, int32_t(value.get<int64_t>()), true);
    }

    void set_states(const TableInfo& table, db::Row& row, const json& state, const Place& at) {
        for (const auto& [name, flag] : state.items()) {
            const Place states = at + "@state";
            const Place fat = states + name;
            auto [rec, field] = row_attribute(table, row, name, fat);
            if (!flag.is_number_integer() || flag.get<int64_t>() < 0 || flag.get<int64_t>() > 255)
                fault(fat, "expected a state flag 0 to 255, got " + got(flag));
            db::set_state(*rec, name, uint8_t(flag.get<int64_t>()));
        }
    }

    db::Store& store_;
    // Rows added so far, by a hash of their table, parent and key: open addressing over a
    // flat array, so that the check of a row touches one slot and not a node of its own
    // somewhere in the heap; the stored key of another row is made only when the hashes meet.
    struct Seen {
        uint64_t hash = 0;
        const db::Row* row = nullptr;
    };
    std::vector<Seen> seen_;
    size_t seen_count_ = 0;

    static uint64_t key_hash(const TableInfo& table, const db::Row* parent, const std::vector<uint8_t>& key) {
        uint64_t h = std::hash<std::string_view>{}(
            std::string_view(reinterpret_cast<const char*>(key.data()), key.size()));
        h ^= reinterpret_cast<uintptr_t>(&table) * 0x9e3779b97f4a7c15ull;
        h ^= (reinterpret_cast<uintptr_t>(parent) + 0x632be59bd9b4e019ull) * 0xc2b2ae3d27d4eb4full;
        return h ^ (h >> 29);
    }

    // Adds the row unless a row of the same table under the same parent has its key.
    bool first_with_key(const TableInfo& table, const db::Row& row, const db::Row* parent,
                        const std::vector<uint8_t>& key) {
        if (2 * (seen_count_ + 1) > seen_.size()) {
            std::vector<Seen> grown(std::max<size_t>(64, 2 * seen_.size()));
            const size_t mask = grown.size() - 1;
            for (const Seen& s : seen_) {
                if (!s.row) continue;
                size_t i = s.hash & mask;
                while (grown[i].row) i = (i + 1) & mask;
                grown[i] = s;
            }
            seen_.swap(grown);
        }
        const uint64_t h = key_hash(table, parent, key);
        const size_t mask = seen_.size() - 1;
        size_t i = h & mask;
        for (; seen_[i].row; i = (i + 1) & mask) {
            const db::Row& other = *seen_[i].row;
            if (seen_[i].hash == h && &db::table_of(other) == &table && db::parent_of(other) == parent &&
                db::row_key(other) == key)
                return false;
        }
        seen_[i] = Seen{h, &row};
        ++seen_count_;
        return true;
    }

    static std::string parents_of(const TableInfo& table) {
        std::string out;
        for (const TableInfo* p : db::positions())
            if (p->table == &table && p->parent) out += (out.empty() ? "" : " or ") + std::string(p->parent->table->name);
        return out;
    }

    // "@records": records that stand in no table, by type, each an object of attributes
    // named relative to the record.
    void records(const json& types, const Place& at) {
        if (!types.is_object()) fault(at, "expected an object of record types, got " + got(types));
        for (const auto& [type, list] : types.items()) {
            const Place tat = at + type;
            const TypeInfo* t = db::type_info(type);
            if (!t || t->category != db::Category::record) fault(tat, "unknown record type");
            if (!list.is_array()) fault(tat, "expected an array of records, got " + got(list));
            for (size_t i = 0; i < list.size(); ++i) {
                const Place rat = tat + i;
                if (!list[i].is_object()) fault(rat, "expected a record object, got " + got(list[i]));
                db::Record& rec = store_.add_record(type);
                for (const auto& [name, value] : list[i].items())
                    set_value(rec, name, attribute(*t, name, rat + name), value, rat + name);
            }
        }
    }

    void table_rows(const TableInfo& pos, const json& rows, const db::Row* parent, const Place& at) {
        if (!rows.is_array()) fault(at, "expected an array of rows, got " + got(rows));
        for (size_t i = 0; i < rows.size(); ++i) row(pos, rows[i], parent, at + i);
    }

    void row(const TableInfo& pos, const json& obj, const db::Row* parent, const Place& at) {
        if (!obj.is_object()) fault(at, "expected a row object, got " + got(obj));
        const TableInfo& table = *pos.table;
        db::Row& row = store_.add(table.name, parent);
        std::vector<std::string_view> given;   // attribute names, held by the document
        const json* children = nullptr;
        const json* state = nullptr;
        for (const auto& [name, value] : obj.items()) {
            if (name == "children") {
                if (!value.is_object()) fault(at + name, "expected an object of child tables, got " + got(value));
                children = &value;
            } else if (name == "@state") {
                if (!value.is_object()) fault(at + name, "expected an object of state flags, got " + got(value));
                state = &value;
            } else if (name == "@variant") {
                set_row_variant(table, row, value, at + name);
            } else {
                auto [rec, field] = row_attribute(table, row, name, at + name);
                set_value(*rec, name, *field, value, at + name);
                given.push_back(name);
            }
        }
        if (state) set_states(table, row, *state, at);
        check_key(table, row, parent, given, at);
        if (children) {
            for (const auto& [name, rows] : children->items()) {
                const Place under_children = at + "children";
                const Place cat = under_children + name;
                table_rows(child_table(table, name, cat), rows, &row, cat);
            }
        }
    }

    // The record of the row and the field that a dotted attribute name ends in.
    std::pair<db::Record*, const FieldInfo*> row_attribute(const TableInfo& table, db::Row& row, const std::string& name,
                                                           const Place& at) {
        const std::string_view first = std::string_view(name).substr(0, name.find('.'));
        for (size_t r = 0; r < table.rows.size(); ++r) {
            if (!table.rows[r]->field(first)) continue;
            db::Record* rec = db::row_record(row, r);
            return {rec, &attribute(*table.rows[r], name, at)};
        }
        // Unknown at the top: say so against the (first) row type.
        return {db::row_record(row, 0), &attribute(*table.rows[0], name, at)};
    }

    // Resolves a dotted attribute name within a record type: every part but the last names
    // a nested record, the last a value (leaf, enumeration, flag set, array, characters) or
    // a sequence.
    static const FieldInfo& attribute(const TypeInfo& top, const std::string& name, const Place& at) {
        const TypeInfo* t = &top;
        size_t start = 0;
        while (true) {
            size_t dot = name.find('.', start);
            const std::string_view part_view =
                std::string_view(name).substr(start, dot == std::string::npos ? std::string::npos : dot - start);
            const FieldInfo* f = t->field(part_view);
            if (f && f->role != FieldRole::link && f->role != FieldRole::bound &&
                (dot == std::string::npos) == (f->kind != FieldKind::nested)) {
                if (dot == std::string::npos) return *f;
                t = f->target;
                start = dot + 1;
                continue;
            }
            // A fault: spelled out with the part's own text.
            const std::string part(part_view);
            bool last = dot == std::string::npos;
            if (part.empty()) {
                if (last) fault(at, "unknown attribute: \"" + name.substr(0, start) + "\" names a record, not a value");
                fault(at, "unknown attribute: empty name part");
            }
            if (!f || f->role == FieldRole::link)
                fault(at, "unknown attribute: no field '" + part + "' in " + std::string(t->name));
            if (f->role == FieldRole::bound)
                fault(at, "'" + part + "' is the count or length of an array of " + std::string(t->name) +
                              " and follows from it");
            if (last) {
                if (f->kind == FieldKind::nested)
                    fault(at, "'" + part + "' holds a record; name its attributes as \"" + name + ".<attribute>\"");
                return *f;
            }
            if (f->kind != FieldKind::nested) fault(at, "unknown attribute: '" + part + "' of " + std::string(t->name) + " holds no record");
            t = f->target;
            start = dot + 1;
        }
    }

    static int64_t integer(const json& v, Range r, const std::string& word, const Place& at) {
        if (!v.is_number_integer()) fault(at, "expected an integer, got " + got(v));
        if (v.is_number_unsigned() && v.get<uint64_t>() > uint64_t(std::numeric_limits<int64_t>::max()))
            fault(at, v.dump() + " is out of range for " + word);
        int64_t n = v.get<int64_t>();
        if (n < r.lo || n > r.hi) fault(at, v.dump() + " is out of range for " + word);
        return n;
    }

    static std::string text(const json& v, const Place& at) {
        if (!v.is_string()) fault(at, "expected a string, got " + got(v));
        return v.get<std::string>();
    }

    static void set_value(db::Record& rec, const std::string& path, const FieldInfo& f, const json& v, const Place& at) {
        switch (f.kind) {
            case FieldKind::enumeration: {
                const TypeInfo& e = *f.target;
                if (v.is_string()) {
                    auto n = e.value_of(v.get<std::string>());
                    if (!n) fault(at, got(v) + " is no value of " + std::string(e.name) + " (" + names_of(e) + ")");
                    return db::set_int(rec, path, *n);
                }
                int64_t n = integer(v, {0, 0xffffffffll}, std::string(e.name), at);
                if (size_t(n) >= e.values.size())
                    fault(at, v.dump() + " is no value of " + std::string(e.name) + " (0 to " +
                                  std::to_string(e.values.size() - 1) + ")");
                return db::set_int(rec, path, n);
            }
            case FieldKind::flags: {
                const TypeInfo& e = *f.target;
                if (v.is_number_integer()) {
                    int64_t n = integer(v, {0, e.values.size() >= 32 ? 0xffffffffll : (1ll << e.values.size()) - 1},
                                        std::string(e.name), at);
                    return db::set_int(rec, path, n);
                }
                if (!v.is_array()) fault(at, "expected an array of flag names, got " + got(v));
                std::vector<std::string> bits;
                for (size_t i = 0; i < v.size(); ++i) {
                    std::string b = text(v[i], at + i);
                    if (!e.value_of(b)) fault(at + i, "\"" + b + "\" is no flag of " + std::string(e.name) + " (" + names_of(e) + ")");
                    bits.push_back(std::move(b));
                }
                return db::set_flags(rec, path, std::vector<std::string_view>(bits.begin(), bits.end()));
            }
            case FieldKind::fixed_array:
            case FieldKind::counted_array: {
                if (!v.is_array()) fault(at, "expected an array, got " + got(v));
                if (f.kind == FieldKind::fixed_array && v.size() > f.bound)
                    fault(at, std::to_string(v.size()) + " elements, at most " + std::to_string(f.bound) + " fit");
                std::vector<uint64_t> elements;
                for (size_t i = 0; i < v.size(); ++i) {
                    Word w = f.word;
                    int64_t n = integer(v[i], range_of(w), std::string(db::word_name(w)), at + i);
                    if (n < 0) fault(at + i, "negative array elements are not kept");
                    elements.push_back(uint64_t(n));
                }
                return db::set_array(rec, path, elements);
            }
            case FieldKind::chars: {
                std::string s = text(v, at);
                if (f.bound && s.size() > f.bound)
                    fault(at, std::to_string(s.size()) + " characters, at most " + std::to_string(f.bound) + " fit");
                return db::set_text(rec, path, s);
            }
            case FieldKind::sequence: {
                if (!v.is_array()) fault(at, "expected an array of elements, got " + got(v));
                for (size_t i = 0; i < v.size(); ++i) {
                    const Place eat = at + i;
                    if (!v[i].is_object()) fault(eat, "expected an element object, got " + got(v[i]));
                    db::Record& el = db::append(rec, path);
                    for (const auto& [name, value] : v[i].items()) {
                        const FieldInfo& ef = attribute(*f.target, name, eat + name);
                        set_value(el, name, ef, value, eat + name);
                    }
                }
                return;
            }
            case FieldKind::nested: fault(at, "holds a record");   // attribute() refuses it first
            case FieldKind::leaf: break;
        }
        switch (f.word) {
            case Word::rsl_vstring: return db::set_text(rec, path, text(v, at));
            case Word::ip_address: {
                std::string s = text(v, at);
                auto ip = plat::parse_ip(s);
                if (!ip) fault(at, "\"" + one_line(s) + "\" is no IPv4 or IPv6 address");
                return db::set_ip(rec, path, *ip);
            }
            case Word::rsl_mac_addr: {
                std::string s = text(v, at);
                auto mac = plat::parse_mac(s);
                if (!mac) fault(at, "\"" + one_line(s) + "\" is no MAC address");
                return db::set_mac(rec, path, *mac);
            }
            case Word::rsl_boolean:
                if (!v.is_boolean()) fault(at, "expected true or false, got " + got(v));
                return db::set_bool(rec, path, v.get<bool>());
            case Word::u_int64:
                if (v.is_number_unsigned()) return db::set_u64(rec, path, v.get<uint64_t>());
                return db::set_int(rec, path, integer(v, range_of(f.word), "u_int64", at));
            default: {
                std::string word(db::word_name(f.word));
                return db::set_int(rec, path, integer(v, range_of(f.word), word, at));
            }
        }
    }

    // Every row names its key, and no two rows of a table under the same parent share it.
    static std::vector<std::string_view> key_names(const TableInfo& table) {
        std::vector<std::string_view> names;
        if (table.key_kind == db::KeyKind::compound)
            for (const FieldInfo* p : table.key_parts) names.emplace_back(p->name);
        else
            names.emplace_back(table.key_name);
        return names;
    }

    static void has_key_attributes(const std::vector<std::string_view>& names, const std::vector<std::string_view>& given,
                                   const Place& at) {
        for (const std::string_view n : names)
            if (std::find(given.begin(), given.end(), n) == given.end())
                fault(at, "row has no key attribute \"" + std::string(n) + "\"");
    }

    void check_key(const TableInfo& table, const db::Row& row, const db::Row* parent,
                   const std::vector<std::string_view>& given,
                   const Place& at) {
        const std::vector<std::string_view> names = key_names(table);
        has_key_attributes(names, given, at);
        if (!first_with_key(table, row, parent, db::row_key(row))) {
            std::string key;
            const db::Record* rec = nullptr;
            for (size_t r = 0; r < table.rows.size(); ++r)
                if (table.rows[r] == table.key_type) rec = db::row_record(row, r);
            for (const std::string_view n : names)
                key += (key.empty() ? "" : ", ") + std::string(n) + " " +
                       plat::to_text(*db::value_of(db::handle(*rec, n)));
            fault(at, "duplicate key: another " + std::string(table.name) + " row " +
                          (parent ? "under the same parent " : "at the top level ") + "has " + one_line(key));
        }
    }
};

// The members of the open arrays and objects, as the SAX events name them: refuses a member
// name repeated within one object (which the tree would silently collapse), naming its place.
// Frames are kept when they close and reused by the next one at their depth, with their
// strings' storage: a row's object costs no allocation here. An object's first names are
// compared one by one; beyond a few, a set takes over.
class Members {
public:
    void open(bool array) {
        if (depth_ == frames_.size()) frames_.emplace_back();
        Frame& f = frames_[depth_++];
        f.array = array;
        f.index = 0;
        if (f.count > k_few) f.many.clear();
        f.count = 0;
    }
    void key(const std::string& k) {
        Frame& f = frames_[depth_ - 1];
        if (f.count < k_few) {
            for (size_t i = 0; i < f.count; ++i)
                if (f.keys[i] == k) throw Fault{place(k), "member repeated in the same object"};
            if (f.keys.size() == f.count) f.keys.emplace_back();
            f.keys[f.count].assign(k);
        } else {
            if (f.count == k_few) f.many.insert(f.keys.begin(), f.keys.begin() + k_few);
            if (!f.many.insert(k).second) throw Fault{place(k), "member repeated in the same object"};
            if (f.keys.size() == k_few) f.keys.emplace_back();
            f.keys[k_few].assign(k);
        }
        ++f.count;
    }
    void value() {
        if (depth_ && frames_[depth_ - 1].array) ++frames_[depth_ - 1].index;
    }
    void closed() {
        --depth_;
        value();
    }

private:
    static constexpr size_t k_few = 16;
    struct Frame {
        bool array = false;
        size_t index = 0;                  // of an array: the elements closed so far
        size_t count = 0;                  // of an object: its members so far
        std::vector<std::string> keys;     // its first k_few names, then its last
        std::unordered_set<std::string> many;
    };
    std::vector<Frame> frames_;
    size_t depth_ = 0;

    const std::string& last_key(const Frame& f) const { return f.keys[f.count <= k_few ? f.count - 1 : k_few]; }
    Steps place(const std::string& last) const {
        Steps p;
        for (size_t d = 0; d < depth_; ++d) {
            const Frame& f = frames_[d];
            if (f.array) p.push_back(f.index);
            else if (d + 1 != depth_) p.push_back(last_key(f));
        }
        p.push_back(last);
        return p;
    }
};

// Builds the document through the library's SAX interface (its tree builder behind it), with
// comments allowed, refusing repeated members. The tree builder with a callback instead
// rescans every array it fills, which makes a long array cost the square of its length.
class Reader {
public:
    explicit Reader(json& doc) : dom_(doc, true) {}

    bool null() { return value(dom_.null()); }
    bool boolean(bool v) { return value(dom_.boolean(v)); }
    bool number_integer(json::number_integer_t v) { return value(dom_.number_integer(v)); }
    bool number_unsigned(json::number_unsigned_t v) { return value(dom_.number_unsigned(v)); }
    bool number_float(json::number_float_t v, const json::string_t& text) { return value(dom_.number_float(v, text)); }
    bool string(json::string_t& v) { return value(dom_.string(v)); }
    bool binary(json::binary_t& v) { return value(dom_.binary(v)); }
    bool start_object(size_t n) {
        members_.open(false);
        return dom_.start_object(n);
    }
    bool start_array(size_t n) {
        members_.open(true);
        return dom_.start_array(n);
    }
    bool key(json::string_t& k) {
        members_.key(k);
        return dom_.key(k);
    }
    bool end_object() { return closed(dom_.end_object()); }
    bool end_array() { return closed(dom_.end_array()); }
    // Throws the library's exception as its own type (parse_error with its byte offset).
    template <class Exception>
    bool parse_error(size_t position, const std::string& token, const Exception& e) {
        return dom_.parse_error(position, token, e);
    }

private:
    nlohmann::detail::json_sax_dom_parser<json> dom_;
    Members members_;

    bool value(bool ok) {
        members_.value();
        return ok;
    }
    bool closed(bool ok) {
        members_.closed();
        return ok;
    }
};

// What the rows loader leaves to the document loader: anything it does not load, a fault
// of any kind (the document loader names it), and instance data.
struct Unstreamed {};

// Loads the rows straight from the SAX events, without a tree of the document: a row is
// added when its object opens, each attribute set when its value closes (values that are
// arrays or objects are built as small trees of their own), its state flags and key checked
// when it closes. The rows, their order and every value come out as the document loader
// makes them. It does not name faults: at the first one it stops (Unstreamed), and the
// caller loads the text again through the document, which names it.
class Streamer {
public:
    explicit Streamer(Loader& loader) : loader_(loader) {}

    bool null() { return scalar(json(nullptr)); }
    bool boolean(bool v) { return scalar(json(v)); }
    bool number_integer(json::number_integer_t v) { return scalar(json(v)); }
    bool number_unsigned(json::number_unsigned_t v) { return scalar(json(v)); }
    bool number_float(json::number_float_t v, const json::string_t& text) {
        if (capturing()) return forward(tree_->number_float(v, text));
        return scalar(json(v));
    }
    bool string(json::string_t& v) {
        if (capturing()) return forward(tree_->string(v));
        return scalar(json(std::move(v)));
    }
    bool binary(json::binary_t&) { throw Unstreamed{}; }

    bool start_object(size_t n) {
        members_.open(false);
        if (capturing()) return open(tree_->start_object(n));
        if (depth_ == 0) {
            push(Level::at_top);
            return true;
        }
        Level& l = top();
        switch (l.kind) {
            case Level::at_top:
                if (l.key == "@records" || l.key == "@default_variant") return capture(n, false);
                throw Unstreamed{};   // a table's rows are an array
            case Level::rows: {
                const TableInfo& pos = *l.pos;
                const db::Row* parent = l.parent;
                db::Row& row = loader_.store_.add(pos.table->name, parent);
                Level& r = push(Level::row_object);
                r.pos = &pos;
                r.parent = parent;
                r.row = &row;
                r.given = 0;
                r.state = json();
                return true;
            }
            case Level::row_object:
                if (l.key == "children") {
                    db::Row* row = l.row;
                    push(Level::children).row = row;
                    return true;
                }
                return capture(n, false);
            case Level::children: throw Unstreamed{};
        }
        return true;
    }

    bool start_array(size_t n) {
        members_.open(true);
        if (capturing()) return open(tree_->start_array(n));
        if (depth_ == 0) throw Unstreamed{};
        Level& l = top();
        switch (l.kind) {
            case Level::at_top: {
                if (l.key == "@records" || l.key == "@default_variant") return capture(n, true);
                const TableInfo& pos = loader_.top_table(l.key, {});
                Level& r = push(Level::rows);
                r.pos = &pos;
                r.parent = nullptr;
                return true;
            }
            case Level::children: {
                const TableInfo& pos = loader_.child_table(db::table_of(*l.row), l.key, {});
                db::Row* parent = l.row;
                Level& r = push(Level::rows);
                r.pos = &pos;
                r.parent = parent;
                return true;
            }
            case Level::row_object:
                if (l.key == "children" || l.key == "@state") throw Unstreamed{};
                return capture(n, true);
            case Level::rows: throw Unstreamed{};
        }
        return true;
    }

    bool key(json::string_t& k) {
        members_.key(k);
        if (capturing()) return tree_->key(k);
        Level& l = top();
        if (l.kind == Level::at_top && k.find(':') != std::string::npos) throw Unstreamed{};   // instance data
        l.key.assign(k);
        return true;
    }

    bool end_object() {
        if (capturing()) return close(tree_->end_object());
        members_.closed();
        Level& l = top();
        if (l.kind == Level::row_object) {
            const TableInfo& table = *l.pos->table;
            if (!l.state.is_null()) loader_.set_states(table, *l.row, l.state, {});
            given_.assign(l.names.begin(), l.names.begin() + long(l.given));
            if (l.pos->table != keys_of_) {
                keys_of_ = l.pos->table;
                key_names_ = Loader::key_names(table);
            }
            Loader::has_key_attributes(key_names_, given_, {});
            keys_.push_back(Keyed{Loader::key_hash(table, l.parent, db::row_key(*l.row)), l.row});
        }
        --depth_;
        return true;
    }

    bool end_array() {
        if (capturing()) return close(tree_->end_array());
        members_.closed();
        --depth_;
        return true;
    }

    template <class Exception>
    bool parse_error(size_t, const std::string&, const Exception&) {
        throw Unstreamed{};
    }

    // Whether no two rows of a table under the same parent share a key: the rows' key
    // hashes are sorted once the text is read, and rows compared only where hashes meet
    // (the document loader checks each row as it comes, in a table of all rows so far,
    // which at many rows is a cache miss a row).
    bool keys_unique() {
        std::sort(keys_.begin(), keys_.end(), [](const Keyed& a, const Keyed& b) { return a.hash < b.hash; });
        for (size_t i = 0; i < keys_.size(); ++i)
            for (size_t j = i + 1; j < keys_.size() && keys_[j].hash == keys_[i].hash; ++j) {
                const db::Row& a = *keys_[i].row;
                const db::Row& b = *keys_[j].row;
                if (&db::table_of(a) == &db::table_of(b) && db::parent_of(a) == db::parent_of(b) &&
                    db::row_key(a) == db::row_key(b))
                    return false;
            }
        return true;
    }

private:
    // An open object or array that rows are loaded from.
    struct Level {
        enum Kind { at_top, rows, row_object, children } kind = at_top;
        std::string key;                   // of an object: its member open now
        const TableInfo* pos = nullptr;    // rows, row: the table's position
        const db::Row* parent = nullptr;   // rows, row: the parent row
        db::Row* row = nullptr;            // row, children
        std::vector<std::string> names;    // row: its attribute names given so far (storage reused)
        size_t given = 0;
        json state;                        // row: its "@state", set when it closes
    };
    Loader& loader_;
    Members members_;
    // Levels are kept when they close and reused by the next one at their depth.
    std::vector<Level> levels_;
    size_t depth_ = 0;
    std::vector<std::string_view> given_;
    const TableInfo* keys_of_ = nullptr;   // the table key_names_ names the key of
    std::vector<std::string_view> key_names_;
    struct Keyed {
        uint64_t hash;
        const db::Row* row;
    };
    std::vector<Keyed> keys_;
    // A value of an array or object under construction, and the depth it is at.
    json captured_;
    std::optional<nlohmann::detail::json_sax_dom_parser<json>> tree_;
    size_t capture_depth_ = 0;

    bool capturing() const { return capture_depth_ > 0; }

    Level& top() { return levels_[depth_ - 1]; }
    Level& push(Level::Kind kind) {
        if (depth_ == levels_.size()) levels_.emplace_back();
        Level& l = levels_[depth_++];
        l.kind = kind;
        return l;
    }

    bool capture(size_t n, bool array) {
        captured_ = json();
        tree_.emplace(captured_, true);
        capture_depth_ = 1;
        return array ? tree_->start_array(n) : tree_->start_object(n);
    }
    bool open(bool ok) {
        ++capture_depth_;
        return ok;
    }
    bool forward(bool ok) {
        members_.value();
        return ok;
    }
    bool close(bool ok) {
        members_.closed();
        if (--capture_depth_ == 0) {
            tree_.reset();
            json v = std::move(captured_);
            value(v);
        }
        return ok;
    }

    bool scalar(json v) {
        if (capturing()) {
            // The tree builder takes the value as it is.
            members_.value();
            if (v.is_null()) return tree_->null();
            if (v.is_boolean()) return tree_->boolean(v.get<bool>());
            if (v.is_number_unsigned()) return tree_->number_unsigned(v.get<json::number_unsigned_t>());
            return tree_->number_integer(v.get<json::number_integer_t>());
        }
        members_.value();
        if (depth_ == 0) throw Unstreamed{};
        value(v);
        return true;
    }

    // A value closed directly under the level open now.
    void value(const json& v) {
        Level& l = top();
        switch (l.kind) {
            case Level::at_top:
                if (l.key == "@default_variant") return loader_.set_default_variant(v, {});
                if (l.key == "@records") return loader_.records(v, {});
                throw Unstreamed{};
            case Level::row_object: {
                const TableInfo& table = *l.pos->table;
                if (l.key == "children") throw Unstreamed{};
                if (l.key == "@state") {
                    if (!v.is_object()) throw Unstreamed{};
                    l.state = v;
                    return;
                }
                if (l.key == "@variant") return Loader::set_row_variant(table, *l.row, v, {});
                auto [rec, field] = loader_.row_attribute(table, *l.row, l.key, {});
                Loader::set_value(*rec, l.key, *field, v, {});
                if (l.given == l.names.size()) l.names.emplace_back();
                l.names[l.given++].assign(l.key);
                return;
            }
            case Level::rows:
            case Level::children: throw Unstreamed{};
        }
    }
};

// Loads the rows of the text into the store as they are read; false if it left them to the
// document loader.
bool stream(std::string_view text, Loader& loader) {
    Streamer streamer(loader);
    try {
        json::sax_parse(text.begin(), text.end(), &streamer, nlohmann::detail::input_format_t::json, true, true);
        return streamer.keys_unique();
    } catch (...) {
        return false;
    }
}

json parse(std::string_view text) {
    json doc;
    Reader reader(doc);
    json::sax_parse(text.begin(), text.end(), &reader, nlohmann::detail::input_format_t::json, true, true);
    return doc;
}

std::string where_in_text(std::string_view text, size_t byte) {
    size_t line = 1, col = 1;
    for (size_t i = 0; i + 1 < byte && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            col = 1;
        } else {
            ++col;
        }
    }
    return std::to_string(line) + ":" + std::to_string(col);
}

}  // namespace

std::string load_into(db::Store& store, std::string_view text, std::string_view origin,
                      std::optional<int32_t>* default_variant) {
    std::string o(origin);
    db::Store fresh;
    std::optional<int32_t> variant;
    bool yang = false;   // RFC 7951 instance data, loaded as the loader's own document made of it
    {
        Loader loader(fresh);
        if (stream(text, loader)) {
            store.swap(fresh);
            if (default_variant) *default_variant = loader.default_variant;
            return {};
        }
    }
    db::Store().swap(fresh);
    try {
        json doc = parse(text);
        if ((yang = rfc7951::is_instance_data(doc))) doc = rfc7951::to_tables(doc);
        Loader loader(fresh);
        loader.document(doc);
        variant = loader.default_variant;
    } catch (const Fault& f) {
        return one_line(o + ": " + (yang ? rfc7951::place_text(f.place) : place_text(f.place)) + ": " + f.what);
    } catch (const rfc7951::Fault& f) {
        return one_line(o + ": " + f.place + ": " + f.what);
    } catch (const json::parse_error& e) {
        // The library's text reads "[json.exception.parse_error.101] parse error at line
        // 3, column 5: <reason>"; keep the reason and give the place ourselves.
        std::string what = e.what();
        if (size_t c = what.find(": "); c != std::string::npos) what = what.substr(c + 2);
        return one_line(o + ":" + where_in_text(text, e.byte) + ": bad JSON: " + what);
    } catch (const json::exception& e) {
        return one_line(o + ": bad JSON: " + e.what());
    } catch (const std::exception& e) {   // the store's own refusals (db::Error) among them
        return one_line(o + ": " + e.what());
    }
    store.swap(fresh);
    if (default_variant) *default_variant = variant;
    return {};
}

LoadResult load_text(std::string_view text, std::string_view origin) {
    LoadResult r;
    auto store = std::make_unique<db::Store>();
    r.error = load_into(*store, text, origin, &r.default_variant);
    if (r.error.empty()) r.store = std::move(store);
    return r;
}

LoadResult load_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        LoadResult r;
        r.error = path + ": cannot read: " + std::strerror(errno);
        return r;
    }
    std::ostringstream text;
    text << in.rdbuf();
    if (in.bad()) {
        LoadResult r;
        r.error = path + ": cannot read: " + std::strerror(errno);
        return r;
    }
    return load_text(text.str(), path);
}

LoadResult load_default() { return load_text(default_text(), "<default>"); }

}  // namespace zan::config
