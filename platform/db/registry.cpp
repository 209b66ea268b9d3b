// The catalogue as the store knows it: type and table infos built once from the generated
// descriptors, the two name numberings, identifiers, and the field lookups of the vectors.
#include <bit>
#include <cstring>
#include <mutex>
#include <shared_mutex>

#include "core.hpp"
#include "shim.hpp"
#include "store.hpp"

namespace zan::db {
namespace {

using desc::FieldDesc;
using desc::RecordDesc;
using desc::TableDesc;

constexpr std::string_view k_word_names[] = {"none",        "u_int8",      "u_int16",      "int16",      "u_int32",
                                             "int32",       "u_int64",     "rsl_vstring",  "rsl_boolean", "rsl_mac_addr",
                                             "ip_address",  "enum",        "flags",        "char"};
static_assert(std::size(k_word_names) == size_t(Word::character) + 1);

uint64_t fnv1a(std::string_view s, uint64_t h) {
    for (unsigned char c : s) h = (h ^ c) * 0x100000001b3ull;
    return h;
}
uint64_t mix(uint64_t x) {   // splitmix64 finaliser
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ull;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebull;
    return x ^ (x >> 31);
}

std::vector<std::string_view> split(std::string_view s, char sep) {
    std::vector<std::string_view> out;
    while (!s.empty()) {
        size_t p = s.find(sep);
        out.push_back(s.substr(0, p));
        if (p == std::string_view::npos) break;
        s.remove_prefix(p + 1);
    }
    return out;
}

int hex(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

class Builder {
public:
    Registry r;

    void build(const desc::CatalogueDesc& cat) {
        r.latest_variant = cat.latest_variant;
        for (uint32_t d = 0; d < cat.domain_count; ++d)
            for (uint32_t i = 0; i < cat.domains[d]->record_count; ++i) add_record(*cat.domains[d], cat.domains[d]->records[i]);
        for (uint32_t i = 0; i < cat.type_count; ++i) add_type(cat.types[i]);
        for (auto& t : r.type_store)
            for (auto& f : t->fields)
                if (!f.type.empty()) f.target = find_type(f.type);
        number_slots(*cat.slots);
        for (uint32_t d = 0; d < cat.domain_count; ++d)
            for (uint32_t i = 0; i < cat.domains[d]->table_count; ++i) add_position(*cat.domains[d], cat.domains[d]->tables[i]);
        link_positions();
        number_rows(cat);
        for (const TypeInfo* t : r.types) {
            target(t->luid).type = t;
            for (const FieldInfo& f : t->fields) {
                LuidTarget& x = target(f.luid);
                x.type = t;
                x.field = &f;
            }
        }
        for (const TableInfo* t : r.tables) target(t->luid).table = t;
    }

private:
    LuidTarget& target(const uint8_t* luid) {
        auto [it, fresh] = r.by_luid.try_emplace(luid_key(luid));
        if (!fresh) throw Error("identifier given twice in the catalogue");
        return it->second;
    }

    const uint8_t* field_luid(std::string_view type, std::string_view field) {
        std::string text = "field:" + std::string(type) + "." + std::string(field);
        uint64_t a = mix(fnv1a(text, 0xcbf29ce484222325ull)), b = mix(fnv1a(text, 0x6c62272e07bb0142ull) ^ a);
        auto bytes = std::make_unique<uint8_t[]>(16);
        for (int i = 0; i < 8; ++i) {
            bytes[size_t(i)] = uint8_t(a >> (56 - 8 * i));
            bytes[size_t(8 + i)] = uint8_t(b >> (56 - 8 * i));
        }
        r.luid_store.push_back(std::move(bytes));
        return r.luid_store.back().get();
    }

    std::string_view keep(std::string text) {
        r.text_store.push_back(std::make_unique<std::string>(std::move(text)));
        return *r.text_store.back();
    }

    const TypeInfo* find_type(std::string_view name) const {
        auto it = r.type_by_name.find(name);
        if (it == r.type_by_name.end()) throw Error("catalogue names unknown type " + std::string(name));
        return it->second;
    }

    void add_record(const desc::DomainDesc& d, const RecordDesc& rd) {
        auto t = std::make_unique<TypeInfo>();
        t->name = rd.name;
        t->category = Category::record;
        t->base = rd.base != 0;
        t->kind = t->base ? 2 : 1;
        t->domain = d.name;
        t->luid = rd.luid;
        t->vft = rd.vft;
        uint32_t id = 1;
        for (uint16_t i = 0; i < rd.count; ++i) {
            const FieldDesc& fd = rd.fields[i];
            FieldInfo f;
            f.name = fd.name;
            f.id = id++;
            f.kind = fd.kind;
            f.word = fd.word;
            f.type = fd.type ? fd.type : "";
            f.arm = fd.arm;
            f.level = fd.level;
            f.bound = fd.bound;
            f.bound_field = fd.bound_name ? fd.bound_name : "";
            t->fields.push_back(f);
        }
        for (uint16_t i = 0; i < rd.count; ++i) {
            const FieldDesc& fd = rd.fields[i];
            if (!fd.bound_name || t->field(fd.bound_name)) continue;
            FieldInfo f;
            f.name = fd.bound_name;
            f.id = id++;
            f.role = FieldRole::bound;
            f.word = Word::u_int32;
            t->fields.push_back(f);
        }
        if (rd.links)
            for (std::string_view link : split(rd.links, ' ')) {
                FieldInfo f;
                f.name = link;
                f.id = id++;
                f.role = FieldRole::link;
                f.word = Word::u_int32;
                t->fields.push_back(f);
            }
        for (FieldInfo& f : t->fields) {
            f.owner = t.get();
            f.luid = field_luid(t->name, f.name);
        }
        if (!r.type_by_name.emplace(t->name, t.get()).second)
            throw Error("type " + std::string(t->name) + " defined twice");
        r.type_by_desc[&rd] = t.get();
        r.desc_by_type[t.get()] = &rd;
        r.type_store.push_back(std::move(t));
    }

    void add_type(const desc::TypeDesc& td) {
        auto t = std::make_unique<TypeInfo>();
        t->name = td.name;
        t->category = td.category;
        t->kind = td.kind;
        t->luid = td.luid;
        t->vft = td.vft;
        for (uint16_t i = 0; i < td.value_count; ++i) {
            t->values.push_back(td.values[i]);
            t->value_levels.push_back(td.levels ? td.levels[i] : 0);
        }
        if (!r.type_by_name.emplace(t->name, t.get()).second)
            throw Error("type " + std::string(t->name) + " defined twice");
        r.type_store.push_back(std::move(t));
    }

    void number_slots(const zan_db_type_lut& lut) {
        r.slots.assign(lut.count, nullptr);
        for (uint32_t i = 0; i < lut.count; ++i) {
            if (!lut.rows[i].name) {
                r.slot_by_name[keep(unused_type_name(int(i)))] = int32_t(i);
                continue;
            }
            auto* t = const_cast<TypeInfo*>(find_type(lut.rows[i].name));
            t->slot = int(i);
            r.slots[i] = t;
            r.types.push_back(t);
            r.slot_by_name[t->name] = int32_t(i);
        }
    }

    void add_position(const desc::DomainDesc& d, const TableDesc& td) {
        auto t = std::make_unique<TableInfo>();
        t->name = td.name;
        t->segment = td.segment;
        t->domain = d.name;
        t->second_entrance = td.entrance != nullptr;
        for (int i = 0; i < 16; ++i) t->pq[i] = uint8_t(hex(td.pq[2 * i]) << 4 | hex(td.pq[2 * i + 1]));
        t->link_field = td.link ? td.link : "";
        if (!r.position_by_name.emplace(t->name, t.get()).second)
            throw Error("position " + std::string(t->name) + " defined twice");
        r.position_by_desc[&td] = t.get();
        r.by_pq[luid_key(t->pq)] = t.get();
        descs_.push_back(&td);
        r.table_store.push_back(std::move(t));
    }

    void link_positions() {
        std::vector<TableInfo*> order(descs_.size());
        for (size_t i = 0; i < descs_.size(); ++i) {
            const TableDesc& td = *descs_[i];
            TableInfo& t = *r.table_store[i];
            if (td.order >= order.size() || order[td.order]) throw Error("traverser order broken at " + std::string(t.name));
            order[td.order] = &t;
            if (td.parent) {
                t.parent = r.position_by_name.at(td.parent);
                const_cast<TableInfo*>(t.parent)->children.push_back(&t);
            }
        }
        for (size_t i = 0; i < descs_.size(); ++i) {
            const TableDesc& td = *descs_[i];
            TableInfo& t = *r.table_store[i];
            const TableDesc& own = td.entrance ? *table_desc(td.entrance) : td;
            t.table = td.entrance ? r.position_by_name.at(td.entrance) : &t;
            t.luid = own.luid;
            t.vft = own.vft;
            for (std::string_view row : split(own.rows, ',')) t.rows.push_back(find_type(row));
            t.key_kind = own.key_shape == desc::key_compound ? KeyKind::compound
                         : own.key_shape == desc::key_single ? KeyKind::single
                                                              : KeyKind::singleton;
            t.key_name = own.key;
            t.key_word = own.key_word;
            if (t.key_kind == KeyKind::compound) {
                t.key_type = find_type(own.key);
                for (std::string_view part : split(own.key_parts, ',')) t.key_parts.push_back(t.key_type->field(part));
                t.key_field = "key " + std::string(own.key);
                for (size_t n = 0; n < t.rows.size(); ++n)
                    if (t.rows[n] == t.key_type) t.key_field_id = uint32_t(n + 1);
                t.key_luid = t.key_type->luid;
            } else {
                t.key_type = t.rows[0];
                t.key_field = "key " + std::string(t.rows[0]->name) + "_" + std::string(own.key);
                const FieldInfo* f = t.key_type->field(own.key);
                t.key_field_id = f->id;
                t.key_luid = f->luid;
            }
            // A position that is its own parent (tbl_cfg_vlan_eol) ends the walk up.
            for (const TableInfo* p = &t; p; p = p->parent == p ? nullptr : p->parent) {
                if (t.path.size() > descs_.size()) throw Error("table tree has a cycle at " + std::string(t.name));
                t.path.insert(t.path.begin(), p->segment);
            }
        }
        r.positions.assign(order.begin(), order.end());
    }

    const TableDesc* table_desc(std::string_view name) const {
        for (const TableDesc* d : descs_)
            if (name == d->name) return d;
        throw Error("second entrance of unknown table " + std::string(name));
    }

    void number_rows(const desc::CatalogueDesc& cat) {
        r.rows.assign(cat.table_row_count, nullptr);
        for (uint32_t i = 0; i < cat.table_row_count; ++i) {
            if (!cat.table_rows[i]) {
                r.row_by_name[keep(unused_table_name(int(i)))] = int32_t(i);
                continue;
            }
            auto* t = const_cast<TableInfo*>(r.position_by_name.at(cat.table_rows[i]));
            t->row = int(i);
            r.rows[i] = t;
            r.tables.push_back(t);
            r.row_by_name[t->name] = int32_t(i);
        }
    }

    std::vector<const TableDesc*> descs_;
};

const TableInfo* position_of(const TableDesc& t) { return registry().position_by_desc.at(&t); }

void answer(const FieldInfo& f, uint32_t* id, const uint8_t** luid) {
    if (id) *id = f.id;
    if (luid) *luid = f.luid;
}

bool lookup_fails(uint32_t* err) {
    if (!plat::detail::hit(plat::detail::fp_get_field)) return false;
    fail(err, 5);
    return true;
}

struct DefaultVariants {
    std::shared_mutex m;
    std::unordered_map<rsl_ctx_t, int32_t> by_ctx;
};
DefaultVariants& default_variants() {
    static DefaultVariants d;
    return d;
}

}  // namespace

const Registry& registry() {
    static const Registry r = [] {
        Builder b;
        b.build(gen::k_catalogue);
        return std::move(b.r);
    }();
    return r;
}

// The two halves read as big-endian numbers.
Luid luid_key(const uint8_t* b) {
    uint64_t hi, lo;
    std::memcpy(&hi, b, 8);
    std::memcpy(&lo, b + 8, 8);
    if constexpr (std::endian::native == std::endian::little) {
        hi = __builtin_bswap64(hi);
        lo = __builtin_bswap64(lo);
    }
    return Luid{hi, lo};
}

std::string_view word_name(Word w) {
    size_t i = size_t(w);
    return i < std::size(k_word_names) ? k_word_names[i] : "?";
}

std::optional<Word> word_from_name(std::string_view name) {
    for (size_t i = 0; i < std::size(k_word_names); ++i)
        if (k_word_names[i] == name) return Word(i);
    return std::nullopt;
}

bool is_integer(Word w) {
    switch (w) {
        case Word::u_int8:
        case Word::u_int16:
        case Word::int16:
        case Word::u_int32:
        case Word::int32:
        case Word::u_int64:
            return true;
        default:
            return false;
    }
}

const FieldInfo* TypeInfo::field(std::string_view n) const {
    for (const FieldInfo& f : fields)
        if (f.name == n) return &f;
    return nullptr;
}

bool TypeInfo::is_union() const { return field("descriminator") != nullptr; }

std::optional<uint32_t> TypeInfo::value_of(std::string_view enumerator) const {
    for (size_t i = 0; i < values.size(); ++i)
        if (values[i] == enumerator) return uint32_t(i);
    return std::nullopt;
}

const TableInfo* table_info(std::string_view position) {
    auto& m = registry().position_by_name;
    auto it = m.find(position);
    return it == m.end() ? nullptr : it->second;
}

const TypeInfo* type_info(std::string_view name) {
    auto& m = registry().type_by_name;
    auto it = m.find(name);
    return it == m.end() ? nullptr : it->second;
}

std::span<const TableInfo* const> positions() { return registry().positions; }
std::span<const TableInfo* const> tables() { return registry().tables; }
std::span<const TypeInfo* const> types() { return registry().types; }
int table_row_count() { return int(registry().rows.size()); }
int type_slot_count() { return int(registry().slots.size()); }

const TableInfo* table_at(int row) {
    auto& v = registry().rows;
    return row >= 0 && size_t(row) < v.size() ? v[size_t(row)] : nullptr;
}

const TypeInfo* type_at(int slot) {
    auto& v = registry().slots;
    return slot >= 0 && size_t(slot) < v.size() ? v[size_t(slot)] : nullptr;
}

std::string unused_table_name(int row) { return "tbl_zan_unused_row_" + std::to_string(row); }
std::string unused_type_name(int slot) { return "zan_unused_type_" + std::to_string(slot); }
int32_t latest_variant() { return registry().latest_variant; }

LuidTarget find_luid(const uint8_t* luid) {
    if (!luid) return {};
    auto& m = registry().by_luid;
    auto it = m.find(luid_key(luid));
    return it == m.end() ? LuidTarget{} : it->second;
}

const TableInfo* position_by_pq(const uint8_t* pq) {
    if (!pq) return nullptr;
    auto& m = registry().by_pq;
    auto it = m.find(luid_key(pq));
    return it == m.end() ? nullptr : it->second;
}

Word word_of_luid(const uint8_t* luid) {
    LuidTarget t = find_luid(luid);
    if (t.field) return t.field->word;
    if (t.type && t.type->category == Category::library) return word_from_name(t.type->name).value_or(Word::none);
    return Word::none;
}

void set_default_variant(rsl_ctx_t ctx, int32_t variant) {
    auto& d = default_variants();
    std::unique_lock lock(d.m);
    d.by_ctx[ctx] = variant;
}

void clear_default_variants() {
    auto& d = default_variants();
    std::unique_lock lock(d.m);
    d.by_ctx.clear();
}

namespace acc {

void type_get_field(const RecordDesc& rd, const char* name, uint32_t* id, const uint8_t** luid, uint32_t* err) {
    if (lookup_fails(err) || !name) return;
    const TypeInfo* t = registry().type_by_desc.at(&rd);
    if (const FieldInfo* f = t->field(name)) answer(*f, id, luid);
}

void no_fields(rsl_ctx_t, rsl_ctx_id_t, const char*, uint32_t*, const uint8_t**, uint32_t* err) { lookup_fails(err); }

void table_get_field(const TableDesc& td, const char* name, uint32_t* id, const uint8_t** luid, uint32_t* err) {
    if (lookup_fails(err) || !name) return;
    const TableInfo* t = position_of(td);
    for (size_t i = 0; i < t->rows.size(); ++i)
        if (t->rows[i]->name == name) {
            if (id) *id = uint32_t(i + 1);
            if (luid) *luid = t->rows[i]->luid;
            return;
        }
    if (t->key_field == name) {
        if (id) *id = t->key_field_id;
        if (luid) *luid = t->key_luid;
    }
}

}  // namespace acc
}  // namespace zan::db

using zan::db::registry;

extern "C" {

int32_t zan_config_db_table_mrst_lookup(const char* name) {
    if (!name) return -1;
    auto& m = registry().row_by_name;
    auto it = m.find(name);
    return it == m.end() ? -1 : it->second;
}

int32_t zan_config_db_type_dispatch_type_mrst_lookup(const char* name) {
    if (!name) return -1;
    auto& m = registry().slot_by_name;
    auto it = m.find(name);
    return it == m.end() ? -1 : it->second;
}

int32_t zan_config_defaults_default_get_variant(rsl_ctx_t ctx) {
    auto& d = zan::db::default_variants();
    std::shared_lock lock(d.m);
    auto it = d.by_ctx.find(ctx);
    return it == d.by_ctx.end() ? 0 : it->second;
}

}
