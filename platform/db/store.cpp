// Record instances and rows, their C++ interface by field path, typed key objects and the
// stored key forms.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>

#include <sys/mman.h>

#include "core.hpp"
#include "store.hpp"

namespace zan::db {
namespace {

[[noreturn]] void fault(const Record& r, std::string_view path, const std::string& why) {
    throw Error(std::string(r.type->name) + ": '" + std::string(path) + "': " + why);
}

// Where a path ends: a field of a record (and its slot), or a sequence element.
struct Place {
    Record* rec = nullptr;
    const FieldInfo* field = nullptr;
    Slot* slot = nullptr;            // nullptr for a bound field: its slot is `bound_of`
    Slot* bound_of = nullptr;        // the array slot whose count or length a bound field is
    Record* element = nullptr;       // "seq[i]" as last name
};

std::atomic<uint64_t> g_key_epoch{0};

// Where a path ends. With `make`, the nested records on the way are made (the place is to be
// written); without, a record not made is walked through its blank (the place is read).
Place resolve(Record& top, std::string_view path, bool make) {
    if (path.empty()) fault(top, path, "empty path");
    // A write into a top record may change a row's key.
    if (make && !top.parent) touch_keys();
    Record* rec = &top;
    std::string_view rest = path;
    while (true) {
        size_t dot = rest.find('.');
        std::string_view part = rest.substr(0, dot);
        bool last = dot == std::string_view::npos;
        std::optional<size_t> index;
        if (size_t b = part.find('['); b != std::string_view::npos) {
            if (part.back() != ']') fault(top, path, "bad index in '" + std::string(part) + "'");
            size_t v = 0;
            auto digits = part.substr(b + 1, part.size() - b - 2);
            auto [p, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), v);
            if (ec != std::errc() || p != digits.data() + digits.size() || digits.empty())
                fault(top, path, "bad index in '" + std::string(part) + "'");
            index = v;
            part = part.substr(0, b);
        }
        const FieldInfo* f = rec->type->field(part);
        if (!f || f->role == FieldRole::link)
            fault(top, path, "no field '" + std::string(part) + "' in " + std::string(rec->type->name));
        Place at;
        at.rec = rec;
        at.field = f;
        if (f->role == FieldRole::bound) {
            if (!last || index) fault(top, path, "'" + std::string(part) + "' is a count, not a record");
            for (uint16_t i = 0; i < rec->desc->count; ++i)
                if (rec->desc->fields[i].bound_name && part == rec->desc->fields[i].bound_name)
                    at.bound_of = make ? &make_slot(*rec, i) : const_cast<Slot*>(&slot_at(*rec, i));
            return at;
        }
        at.slot = make ? &make_slot(*rec, f->id - 1) : const_cast<Slot*>(&slot_at(*rec, f->id - 1));
        if (index) {
            if (f->kind != FieldKind::sequence) fault(top, path, "'" + std::string(part) + "' is not a sequence");
            if (*index >= at.slot->sequence.size())
                fault(top, path, "sequence '" + std::string(part) + "' has " + std::to_string(at.slot->sequence.size()) +
                                     " elements");
            Record* el = at.slot->sequence[*index].get();
            if (last) {
                at.element = el;
                return at;
            }
            rec = el;
        } else if (last) {
            return at;
        } else {
            if (f->kind != FieldKind::nested) fault(top, path, "'" + std::string(part) + "' holds no record");
            rec = make ? &make_nested(*rec, f->id - 1) : const_cast<Record*>(&nested_at(*rec, f->id - 1));
        }
        rest = rest.substr(dot + 1);
    }
}

Place leaf_place(Record& r, std::string_view path, bool make = true) {
    Place at = resolve(r, path, make);
    if (at.element) fault(r, path, "names a sequence element, not a value");
    return at;
}

bool fits(Word w, int64_t v) {
    switch (w) {
        case Word::u_int8: return v >= 0 && v <= 0xff;
        case Word::u_int16: return v >= 0 && v <= 0xffff;
        case Word::int16: return v >= INT16_MIN && v <= INT16_MAX;
        case Word::u_int32: case Word::enum_value: case Word::flag_bits: return v >= 0 && v <= 0xffffffffll;
        case Word::int32: return v >= INT32_MIN && v <= INT32_MAX;
        case Word::u_int64: return v >= 0;
        case Word::rsl_boolean: return v == 0 || v == 1;
        default: return false;
    }
}

void store_num(Cell& c, uint64_t v) {
    switch (c.word) {
        case Word::u_int8: c.num.u8 = uint8_t(v); break;
        case Word::u_int16: c.num.u16 = uint16_t(v); break;
        case Word::int16: c.num.i16 = int16_t(v); break;
        case Word::int32: c.num.i32 = int32_t(v); break;
        case Word::u_int64: c.num.u64 = v; break;
        case Word::ip_address:
        case Word::rsl_mac_addr: break;   // no number: the address shares its place
        default: c.num.u32 = uint32_t(v); break;
    }
}

int64_t load_num(const Cell& c) {
    switch (c.word) {
        case Word::u_int8: return c.num.u8;
        case Word::u_int16: return c.num.u16;
        case Word::int16: return c.num.i16;
        case Word::int32: return c.num.i32;
        case Word::u_int64: return int64_t(c.num.u64);
        default: return c.num.u32;
    }
}

Cell& value_cell(Record& r, std::string_view path, const Place& at) {
    if (!at.slot) fault(r, path, "is a count, not a value");
    auto k = at.field->kind;
    if (k == FieldKind::nested || k == FieldKind::sequence || k == FieldKind::fixed_array ||
        k == FieldKind::counted_array)
        fault(r, path, "holds no single value");
    return at.slot->cell;
}

void put_le(std::vector<uint8_t>& out, uint64_t v, int bytes) {
    const size_t at = out.size();
    out.resize(at + size_t(bytes));
    for (int i = 0; i < bytes; ++i) out[at + size_t(i)] = uint8_t(v >> (8 * i));
}

std::optional<int64_t> parse_int(std::string_view s) {
    int64_t v = 0;
    bool neg = !s.empty() && s[0] == '-';
    std::string_view d = neg ? s.substr(1) : s;
    int base = 10;
    if (d.size() > 2 && d[0] == '0' && (d[1] == 'x' || d[1] == 'X')) {
        base = 16;
        d.remove_prefix(2);
    }
    uint64_t u = 0;
    auto [p, ec] = std::from_chars(d.data(), d.data() + d.size(), u, base);
    if (d.empty() || ec != std::errc() || p != d.data() + d.size()) return std::nullopt;
    if (neg) {
        if (u > uint64_t(INT64_MAX) + 1) return std::nullopt;
        v = int64_t(0 - u);
    } else {
        v = int64_t(u);
    }
    return v;
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

// "[a, b]", "a,b", "a|b" or "" as a list of trimmed items.
std::vector<std::string_view> items(std::string_view s) {
    s = trim(s);
    if (s.size() >= 2 && s.front() == '[' && s.back() == ']') s = trim(s.substr(1, s.size() - 2));
    std::vector<std::string_view> out;
    while (!s.empty()) {
        size_t p = s.find_first_of(",|");
        out.push_back(trim(s.substr(0, p)));
        if (p == std::string_view::npos) break;
        s.remove_prefix(p + 1);
    }
    return out;
}

Cell* new_typed(Word w) {
    auto* c = new Cell;
    c->word = w;
    c->clear_value(w);
    counters().typed.fetch_add(1, std::memory_order_relaxed);
    return c;
}

}  // namespace

Counters& counters() {
    static Counters c;
    return c;
}

// ---------------------------------------------------------------- records

void Arena::grow(size_t bytes) {
    if (block_ < (size_t(256) << 10)) block_ *= 2;   // up to 256 kB: little left unused at the end
    const size_t n = std::max(block_, bytes);
    blocks_.emplace_back(new char[n]);
    next_ = blocks_.back().get();
    left_ = n;
    // A large block is filled soon: its pages are mapped in one call rather than one fault
    // each (dear on a virtual machine). Without the call (older kernels) they fault as usual.
    if (n >= (size_t(256) << 10)) {
        const uintptr_t page = 4096, at = reinterpret_cast<uintptr_t>(next_);
        const uintptr_t from = (at + page - 1) & ~(page - 1), to = (at + n) & ~(page - 1);
        if (to > from) madvise(reinterpret_cast<void*>(from), to - from, MADV_POPULATE_WRITE);
    }
}

size_t Record::bytes(const desc::RecordDesc& d) { return sizeof(Record) + d.count * sizeof(Entry); }

namespace {

void* take(Arena* arena, size_t bytes) { return arena ? arena->take(bytes) : ::operator new(bytes); }

// A slot of field i of r, as an unwritten field reads.
Slot* new_slot(Record& r, size_t i) {
    const desc::FieldDesc& f = r.desc->fields[i];
    Slot* s = new (take(r.arena, sizeof(Slot))) Slot(f.kind);
    s->cell.owner = &r;
    s->cell.word = f.kind == FieldKind::nested || f.kind == FieldKind::sequence ? Word::none : f.word;
    s->cell.clear_value(s->cell.word);
    if (f.kind == FieldKind::nested) s->cell.magic = k_hollow;   // no value
    if (f.kind == FieldKind::fixed_array) {
        s->elements.resize(f.bound);
        for (Cell& c : s->elements) {
            c.word = f.word;
            c.clear_value(f.word);
            c.owner = &r;
        }
    }
    return s;
}

}  // namespace

Record::Record(const TypeInfo& t, const desc::RecordDesc& d, const Record* p, Arena* a, bool is_blank)
    : variant(registry().latest_variant), inner_variant(variant), blank(is_blank), count(d.count), type(&t), desc(&d),
      parent(p), arena(a) {
    if (!blank) counters().records.fetch_add(1, std::memory_order_relaxed);
    Entry* e = entries();
    for (uint16_t i = 0; i < d.count; ++i) {
        Entry* at = new (e + i) Entry;
        at->index = i;
        at->magic = d.fields[i].kind == FieldKind::nested ? k_hollow : k_value;
        // The elements of a fixed array are handed out one by one: they are there from the start.
        if (blank || d.fields[i].kind == FieldKind::fixed_array) at->slot = new_slot(*this, i);
    }
}

Record::~Record() {
    magic = 0;
    if (!blank) counters().records.fetch_sub(1, std::memory_order_relaxed);
    Entry* e = entries();
    for (uint16_t i = 0; i < count; ++i) {
        Slot* s = e[i].slot;
        if (!s) continue;
        if (arena) s->~Slot();
        else delete s;
    }
}

void RecordDeleter::operator()(Record* r) const {
    if (!r) return;
    if (r->key_record) {
        r->~Record();
        __tallow_free(r);
        return;
    }
    const bool heap = !r->arena;
    r->~Record();
    if (heap) ::operator delete(r);
}

RecordPtr new_record(const TypeInfo& t, const Record* parent, Arena* arena) {
    if (t.category != Category::record) throw Error(std::string(t.name) + " is not a record type");
    const desc::RecordDesc& d = *registry().desc_by_type.at(&t);
    return RecordPtr(new (take(arena, Record::bytes(d))) Record(t, d, parent, arena));
}

namespace {

// The blanks of the latest variant by record type (the table never changes once made, only
// its cells are filled), and those of other variants under a lock.
struct Blanks {
    std::unordered_map<const TypeInfo*, std::atomic<const Record*>> latest;
    std::mutex lock;
    std::map<std::pair<const TypeInfo*, int32_t>, const Record*> others;

    Blanks() {
        for (const auto& [t, d] : registry().desc_by_type) latest[t].store(nullptr, std::memory_order_relaxed);
    }
    static const Record* make(const TypeInfo& t, int32_t variant) {
        const desc::RecordDesc& d = *registry().desc_by_type.at(&t);
        const size_t n = Record::bytes(d);
        auto* r = new (::operator new(n + d.count * sizeof(std::atomic<const Record*>))) Record(t, d, nullptr, nullptr, true);
        r->variant = r->inner_variant = variant;
        r->twin.store(r, std::memory_order_relaxed);
        for (uint16_t i = 0; i < d.count; ++i) new (r->inner_blanks() + i) std::atomic<const Record*>(nullptr);
        return r;
    }
};

Blanks& blanks() {
    static Blanks* b = new Blanks;   // never freed: handles to blanks live as long as the process
    return *b;
}

}  // namespace

const Record& blank_record(const TypeInfo& t, int32_t variant) {
    Blanks& b = blanks();
    if (variant == registry().latest_variant) {
        if (auto it = b.latest.find(&t); it != b.latest.end()) {
            if (const Record* r = it->second.load(std::memory_order_acquire)) return *r;
            std::lock_guard<std::mutex> hold(b.lock);
            if (const Record* r = it->second.load(std::memory_order_relaxed)) return *r;
            const Record* r = Blanks::make(t, variant);
            it->second.store(r, std::memory_order_release);
            return *r;
        }
    }
    std::lock_guard<std::mutex> hold(b.lock);
    const Record*& r = b.others[{&t, variant}];
    if (!r) r = Blanks::make(t, variant);
    return *r;
}

const Slot& slot_at(const Record& r, size_t i) {
    if (const Slot* s = r.entries()[i].slot) return *s;
    // Two readers may both look a blank up; they find the same one.
    const Record* blank = r.twin.load(std::memory_order_acquire);
    if (!blank || blank->variant != r.variant) {
        if (r.variant == r.inner_variant) {
            blank = &blank_record(*r.type, r.inner_variant);
            r.twin.store(blank, std::memory_order_release);
        } else {
            blank = &blank_record(*r.type, r.variant);
        }
    }
    return *blank->entries()[i].slot;
}

Slot& make_slot(Record& r, size_t i) {
    if (r.blank) throw Error(std::string(r.type->name) + ": a blank record is never written");
    Entry& e = r.entries()[i];
    if (!e.slot) e.slot = new_slot(r, i);
    return *e.slot;
}

const Record& nested_at(const Record& r, size_t i) {
    if (const Slot* s = r.entries()[i].slot; s && s->nested) return *s->nested;
    // Two readers may both look a blank up; they find the same one.
    const Record* twin = r.twin.load(std::memory_order_acquire);
    if (!twin) {
        twin = &blank_record(*r.type, r.inner_variant);
        r.twin.store(twin, std::memory_order_release);
    }
    std::atomic<const Record*>& cell = twin->inner_blanks()[i];
    const Record* blank = cell.load(std::memory_order_acquire);
    if (!blank) {
        blank = &blank_record(*r.type->fields[i].target, twin->inner_variant);
        cell.store(blank, std::memory_order_release);
    }
    return *blank;
}

const void* nested_handle(const Record& r, size_t i) {
    const Entry& e = r.entries()[i];
    if (e.slot && e.slot->nested) return e.slot->nested.get();
    return &e;
}

const Record* record_at(const void* handle) {
    if (!handle) return nullptr;
    const uint32_t magic = *static_cast<const uint32_t*>(handle);
    if (magic == Record::k_magic) return static_cast<const Record*>(handle);
    if (magic != k_hollow) return nullptr;
    const auto* e = static_cast<const Entry*>(handle);
    return &nested_at(Record::holder_of(*e), e->index);
}

Record& make_nested(Record& r, size_t i) {
    if (r.blank) throw Error(std::string(r.type->name) + ": a blank record is never written");
    Slot& s = make_slot(r, i);
    if (!s.nested) {
        s.nested = new_record(*r.type->fields[i].target, &r, r.arena);
        s.nested->variant = s.nested->inner_variant = r.inner_variant;
    }
    return *s.nested;
}

uint64_t key_epoch() { return g_key_epoch.load(std::memory_order_acquire); }
void touch_keys() { g_key_epoch.fetch_add(1, std::memory_order_acq_rel); }

RecordPtr make_record(std::string_view type) {
    const TypeInfo* t = type_info(type);
    if (!t) throw Error("unknown type " + std::string(type));
    return new_record(*t, nullptr);
}

const TypeInfo& type_of(const Record& r) { return *r.type; }

Record& nested(Record& r, std::string_view path) {
    Place at = resolve(r, path, true);
    if (at.element) return *at.element;
    if (!at.slot || at.field->kind != FieldKind::nested) fault(r, path, "holds no record");
    return make_nested(*at.rec, at.field->id - 1);
}

const Record& nested(const Record& r, std::string_view path) {
    Place at = resolve(const_cast<Record&>(r), path, false);
    if (at.element) return *at.element;
    if (!at.slot || at.field->kind != FieldKind::nested) fault(r, path, "holds no record");
    return nested_at(*at.rec, at.field->id - 1);
}

const void* handle(const Record& r, std::string_view path) {
    Place at = resolve(const_cast<Record&>(r), path, false);
    if (at.element) return at.element;
    if (!at.slot) fault(r, path, "is a count and has no handle");
    if (at.field->kind == FieldKind::nested) return nested_handle(*at.rec, at.field->id - 1);
    return &at.rec->entries()[at.field->id - 1];
}

void set_int(Record& r, std::string_view path, int64_t v) {
    Place at = leaf_place(r, path);
    if (!at.slot) {
        if (v < 0 || v > 0xffffffffll) fault(r, path, "count out of range");
        at.bound_of->count = uint32_t(v);
        return;
    }
    Cell& c = value_cell(r, path, at);
    if (!fits(c.word, v)) fault(r, path, std::to_string(v) + " does not fit " + std::string(word_name(c.word)));
    store_num(c, uint64_t(v));
}

void set_u64(Record& r, std::string_view path, uint64_t v) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::u_int64) {
        if (v > uint64_t(INT64_MAX)) fault(r, path, "value does not fit " + std::string(word_name(c.word)));
        set_int(r, path, int64_t(v));
        return;
    }
    c.num.u64 = v;
}

void set_text(Record& r, std::string_view path, std::string_view text) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (at.field->kind == FieldKind::chars) {
        if (at.field->bound && text.size() > at.field->bound)
            fault(r, path, "more than " + std::to_string(at.field->bound) + " characters");
        c.text = text;
        at.slot->count = uint32_t(text.size());
        return;
    }
    if (c.word != Word::rsl_vstring) fault(r, path, "is no text but " + std::string(word_name(c.word)));
    c.text = text;
}

void set_ip(Record& r, std::string_view path, const plat::Ip& ip) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::ip_address) fault(r, path, "is no ip_address but " + std::string(word_name(c.word)));
    c.ip = ip;
}

void set_ip(Record& r, std::string_view path, std::string_view text) {
    auto ip = plat::parse_ip(text);
    if (!ip) fault(r, path, "'" + std::string(text) + "' is no IP address");
    set_ip(r, path, *ip);
}

void set_mac(Record& r, std::string_view path, const plat::Mac& mac) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::rsl_mac_addr) fault(r, path, "is no rsl_mac_addr but " + std::string(word_name(c.word)));
    c.mac = mac;
}

void set_bool(Record& r, std::string_view path, bool v) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::rsl_boolean) fault(r, path, "is no rsl_boolean but " + std::string(word_name(c.word)));
    c.num.u32 = v ? 1 : 0;
}

void set_enum(Record& r, std::string_view path, std::string_view enumerator) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::enum_value) fault(r, path, "is no enumeration");
    auto v = at.field->target->value_of(enumerator);
    if (!v) fault(r, path, "'" + std::string(enumerator) + "' is no value of " + std::string(at.field->type));
    c.num.u32 = *v;
}

void set_flags(Record& r, std::string_view path, const std::vector<std::string_view>& bits) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    if (c.word != Word::flag_bits) fault(r, path, "is no flag set");
    uint32_t v = 0;
    for (std::string_view b : bits) {
        auto i = at.field->target->value_of(b);
        if (!i) fault(r, path, "'" + std::string(b) + "' is no bit of " + std::string(at.field->type));
        v |= 1u << *i;
    }
    c.num.u32 = v;
}

void set_array(Record& r, std::string_view path, const std::vector<uint64_t>& elements) {
    Place at = leaf_place(r, path);
    auto k = at.field ? at.field->kind : FieldKind::leaf;
    if (!at.slot || (k != FieldKind::fixed_array && k != FieldKind::counted_array)) fault(r, path, "is no array");
    if (k == FieldKind::fixed_array && elements.size() > at.field->bound)
        fault(r, path, "more than " + std::to_string(at.field->bound) + " elements");
    for (uint64_t v : elements)
        if (v > uint64_t(INT64_MAX) || !fits(at.field->word, int64_t(v)))
            fault(r, path, std::to_string(v) + " does not fit " + std::string(word_name(at.field->word)));
    if (k == FieldKind::counted_array) {
        at.slot->elements.assign(elements.size(), Cell{});
        for (Cell& c : at.slot->elements) {
            c.word = at.field->word;
            c.clear_value(c.word);
            c.owner = at.rec;
        }
        at.slot->count = uint32_t(elements.size());
    }
    for (size_t i = 0; i < at.slot->elements.size(); ++i) store_num(at.slot->elements[i], i < elements.size() ? elements[i] : 0);
}

Record& append(Record& r, std::string_view path) {
    Place at = leaf_place(r, path);
    if (!at.slot || at.field->kind != FieldKind::sequence) fault(r, path, "is no sequence");
    at.slot->sequence.push_back(new_record(*at.field->target, at.rec, at.rec->arena));
    Record& el = *at.slot->sequence.back();
    el.seq_index = uint32_t(at.slot->sequence.size() - 1);
    return el;
}

void set_from_text(Record& r, std::string_view path, std::string_view text) {
    Place at = leaf_place(r, path);
    auto number = [&](std::string_view s) {
        auto v = parse_int(trim(s));
        if (!v) fault(r, path, "'" + std::string(s) + "' is no number");
        return *v;
    };
    if (!at.slot) return set_int(r, path, number(text));
    switch (at.field->kind) {
        case FieldKind::fixed_array:
        case FieldKind::counted_array: {
            std::vector<uint64_t> v;
            for (auto item : items(text)) {
                int64_t n = number(item);
                if (n < 0) fault(r, path, "negative element");
                v.push_back(uint64_t(n));
            }
            return set_array(r, path, v);
        }
        case FieldKind::chars: return set_text(r, path, text);
        case FieldKind::enumeration:
            if (auto v = at.field->target->value_of(trim(text))) return set_int(r, path, *v);
            return set_int(r, path, number(text));
        case FieldKind::flags: {
            std::vector<std::string_view> bits = items(text);
            return set_flags(r, path, bits);
        }
        case FieldKind::nested:
        case FieldKind::sequence: fault(r, path, "holds records, not a value");
        case FieldKind::leaf: break;
    }
    switch (at.slot->cell.word) {
        case Word::rsl_vstring: return set_text(r, path, text);
        case Word::ip_address: return set_ip(r, path, trim(text));
        case Word::rsl_mac_addr: {
            auto mac = plat::parse_mac(trim(text));
            if (!mac) fault(r, path, "'" + std::string(text) + "' is no MAC address");
            return set_mac(r, path, *mac);
        }
        case Word::rsl_boolean: {
            std::string_view t = trim(text);
            if (t == "true" || t == "1") return set_bool(r, path, true);
            if (t == "false" || t == "0") return set_bool(r, path, false);
            fault(r, path, "'" + std::string(text) + "' is no boolean");
        }
        case Word::u_int64: {
            std::string_view t = trim(text);
            uint64_t u = 0;
            auto [p, ec] = std::from_chars(t.data(), t.data() + t.size(), u);
            if (!t.empty() && ec == std::errc() && p == t.data() + t.size()) return set_u64(r, path, u);
            return set_int(r, path, number(text));
        }
        default: return set_int(r, path, number(text));
    }
}

int64_t get_int(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    if (!at.slot) return at.bound_of->count;
    const Cell& c = value_cell(const_cast<Record&>(r), path, at);
    if (!is_integer(c.word) && c.word != Word::enum_value && c.word != Word::flag_bits && c.word != Word::rsl_boolean)
        fault(r, path, "is no number but " + std::string(word_name(c.word)));
    return load_num(c);
}

uint64_t get_u64(const Record& r, std::string_view path) { return uint64_t(get_int(r, path)); }

std::string get_text(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    const Cell& c = value_cell(const_cast<Record&>(r), path, at);
    if (c.word != Word::rsl_vstring && c.word != Word::character) fault(r, path, "is no text");
    return c.text;
}

plat::Ip get_ip(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    const Cell& c = value_cell(const_cast<Record&>(r), path, at);
    if (c.word != Word::ip_address) fault(r, path, "is no ip_address");
    return c.ip;
}

plat::Mac get_mac(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    const Cell& c = value_cell(const_cast<Record&>(r), path, at);
    if (c.word != Word::rsl_mac_addr) fault(r, path, "is no rsl_mac_addr");
    return c.mac;
}

std::vector<uint64_t> get_array(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    if (!at.slot || (at.field->kind != FieldKind::fixed_array && at.field->kind != FieldKind::counted_array))
        fault(r, path, "is no array");
    std::vector<uint64_t> out;
    for (const Cell& c : at.slot->elements) out.push_back(uint64_t(load_num(c)));
    return out;
}

size_t sequence_size(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    if (!at.slot || at.field->kind != FieldKind::sequence) fault(r, path, "is no sequence");
    return at.slot->sequence.size();
}

void set_state(Record& r, std::string_view path, uint8_t flag) {
    Place at = leaf_place(r, path);
    if (!at.slot) fault(r, path, "is a count and has no state");
    at.slot->cell.state = flag;
}

void set_element_state(Record& r, std::string_view path, size_t index, uint8_t flag) {
    Place at = leaf_place(r, path);
    if (!at.slot || !at.slot->has_elements() || index >= at.slot->elements.size()) fault(r, path, "has no element " + std::to_string(index));
    at.slot->elements[index].state = flag;
}

uint8_t get_state(const Record& r, std::string_view path) {
    Place at = leaf_place(const_cast<Record&>(r), path, false);
    if (!at.slot) fault(r, path, "is a count and has no state");
    return at.slot->cell.state;
}

void set_variant(Record& r, int32_t variant, bool with_nested) {
    if (r.blank) throw Error(std::string(r.type->name) + ": a blank record is never written");
    r.variant = variant;
    if (!with_nested) return;
    r.inner_variant = variant;
    r.twin.store(nullptr, std::memory_order_relaxed);
    for (uint16_t i = 0; i < r.count; ++i) {
        Slot* s = r.entries()[i].slot;
        if (!s) continue;
        if (s->kind == FieldKind::nested && s->nested) set_variant(*s->nested, variant, true);
        if (s->kind == FieldKind::sequence)
            for (auto& el : s->sequence) set_variant(*el, variant, true);
    }
}

int32_t get_variant(const Record& r) { return r.variant; }

void set_value_variant(Record& r, std::string_view path, int32_t variant) {
    Place at = leaf_place(r, path);
    Cell& c = value_cell(r, path, at);
    c.own_variant = true;
    c.variant = variant;
}

// ---------------------------------------------------------------- values

const Cell* cell_of(const void* handle) {
    if (!handle) return nullptr;
    const uint32_t magic = *static_cast<const uint32_t*>(handle);
    if (magic == k_value) {
        const auto* e = static_cast<const Entry*>(handle);
        return &slot_at(Record::holder_of(*e), e->index).cell;
    }
    return magic == Cell::k_magic ? static_cast<const Cell*>(handle) : nullptr;
}

std::optional<plat::Value> value_of(const void* handle) {
    const Cell* c = cell_of(handle);
    if (!c) return std::nullopt;
    plat::Value v;
    v.leaf = word_name(c->word);
    switch (c->word) {
        case Word::u_int8:
        case Word::u_int16:
        case Word::u_int32:
        case Word::u_int64:
        case Word::enum_value:
        case Word::flag_bits: v.v = uint64_t(c->word == Word::u_int64 ? c->num.u64 : uint64_t(load_num(*c))); break;
        case Word::int16:
        case Word::int32: v.v = load_num(*c); break;
        case Word::rsl_boolean: v.v = c->num.u32 != 0; break;
        case Word::rsl_vstring:
        case Word::character: v.v = c->text; break;
        case Word::ip_address: v.v = c->ip; break;
        case Word::rsl_mac_addr: v.v = c->mac; break;
        case Word::none: return std::nullopt;
    }
    return v;
}

int32_t instance_variant(const void* handle) {
    if (!handle) return 0;
    uint32_t magic = *static_cast<const uint32_t*>(handle);
    if (magic == Record::k_magic || magic == k_hollow) return record_at(handle)->variant;
    if (magic == k_value) {   // a field's value: its own variant if it was given one, else its record's
        const auto* e = static_cast<const Entry*>(handle);
        const Record& holder = Record::holder_of(*e);
        const Slot* s = holder.entries()[e->index].slot;
        return s && s->cell.own_variant ? s->cell.variant : holder.variant;
    }
    if (magic == Cell::k_magic) {
        auto* c = static_cast<const Cell*>(handle);
        if (c->own_variant || !c->owner) return c->variant;
        return c->owner->variant;
    }
    return 0;
}

void* make_typed(Word w, std::string_view text) {
    switch (w) {
        case Word::rsl_vstring: return make_typed_vstring(text);
        case Word::ip_address: {   // read as key_bytes reads it, blanks around it trimmed
            auto ip = plat::parse_ip(trim(text));
            return ip ? make_typed_ip(*ip) : nullptr;
        }
        case Word::u_int8:
        case Word::u_int16:
        case Word::int16:
        case Word::u_int32:
        case Word::int32: {
            auto v = parse_int(trim(text));
            if (!v || !fits(w, *v)) return nullptr;
            Cell* c = new_typed(w);
            store_num(*c, uint64_t(*v));
            return c;
        }
        default: return nullptr;
    }
}

void* make_typed_vstring(std::string_view text) {
    Cell* c = new_typed(Word::rsl_vstring);
    c->text = text;
    return c;
}

void* make_typed_ip(const plat::Ip& ip) {
    Cell* c = new_typed(Word::ip_address);
    c->ip = ip;
    return c;
}

void* make_typed_int32(int32_t v) {
    Cell* c = new_typed(Word::int32);
    c->num.i32 = v;
    return c;
}

void destroy_typed(void* obj) {
    if (!obj) return;
    auto* c = static_cast<Cell*>(obj);
    if (c->magic != Cell::k_magic || c->owner) {
        counters().bad_releases.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    c->magic = 0;
    delete c;
    counters().typed.fetch_sub(1, std::memory_order_relaxed);
}

// ---------------------------------------------------------------- key forms

std::vector<uint8_t> key_bytes(const Cell& c) {
    std::vector<uint8_t> out;
    switch (c.word) {
        case Word::u_int8: put_le(out, c.num.u8, 1); break;
        case Word::u_int16: put_le(out, c.num.u16, 2); break;
        case Word::int16: put_le(out, uint16_t(c.num.i16), 2); break;
        case Word::u_int32:
        case Word::enum_value:
        case Word::flag_bits: put_le(out, c.num.u32, 4); break;
        case Word::int32: put_le(out, uint32_t(c.num.i32), 4); break;
        case Word::u_int64: put_le(out, c.num.u64, 8); break;
        case Word::rsl_boolean: out.push_back(c.num.u32 ? 1 : 0); break;
        case Word::rsl_vstring:
        case Word::character: out.assign(c.text.begin(), c.text.end()); break;
        case Word::ip_address: {
            uint8_t b[17] = {uint8_t(c.ip.family)};
            size_t n = c.ip.family == 6 ? 16 : 4;
            std::memcpy(b + 1, c.ip.bytes, n);
            out.assign(b, b + 1 + n);
            break;
        }
        case Word::rsl_mac_addr: out.assign(c.mac.bytes, c.mac.bytes + 6); break;
        case Word::none: break;
    }
    return out;
}

std::optional<std::vector<uint8_t>> key_bytes(Word w, std::string_view text) {
    Cell c;
    c.word = w;
    switch (w) {
        case Word::rsl_vstring: c.text = text; break;
        case Word::ip_address: {
            auto ip = plat::parse_ip(trim(text));
            if (!ip) return std::nullopt;
            c.ip = *ip;
            break;
        }
        case Word::rsl_mac_addr: {
            auto mac = plat::parse_mac(trim(text));
            if (!mac) return std::nullopt;
            c.mac = *mac;
            break;
        }
        case Word::rsl_boolean: {
            std::string_view t = trim(text);
            if (t != "true" && t != "false" && t != "1" && t != "0") return std::nullopt;
            c.num.u32 = t == "true" || t == "1";
            break;
        }
        default: {
            if (!is_integer(w)) return std::nullopt;
            auto v = parse_int(trim(text));
            if (!v || !fits(w, *v)) return std::nullopt;
            store_num(c, uint64_t(*v));
        }
    }
    return key_bytes(c);
}

std::vector<uint8_t> key_bytes(const Record& key_record) {
    std::vector<uint8_t> out;
    for (uint16_t i = 0; i < key_record.desc->count; ++i) {
        const Cell& c = slot_at(key_record, i).cell;
        if (key_record.desc->fields[i].kind != FieldKind::leaf) continue;
        std::vector<uint8_t> part = key_bytes(c);
        if (c.word == Word::rsl_vstring) put_le(out, part.size(), 4);
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

// ---------------------------------------------------------------- rows

Row::Row(const TableInfo& t, Arena* arena) : table(&t) {
    for (size_t i = 0; i < t.rows.size() && i < 2; ++i) records[i] = new_record(*t.rows[i], nullptr, arena);
    counters().rows.fetch_add(1, std::memory_order_relaxed);
}

Row::~Row() {
    magic = 0;
    counters().rows.fetch_sub(1, std::memory_order_relaxed);
}

void RowDeleter::operator()(Row* r) const { delete r; }

RowPtr make_row(std::string_view table) {
    const TableInfo* t = table_info(table);
    if (!t) throw Error("unknown table " + std::string(table));
    return RowPtr(new Row(*t->table));
}

const TableInfo& table_of(const Row& row) { return *row.table; }

Record* row_record(Row& row, size_t index) { return index < 2 ? row.records[index].get() : nullptr; }
const Record* row_record(const Row& row, size_t index) { return index < 2 ? row.records[index].get() : nullptr; }

void drop_row_record(Row& row, size_t index) {
    if (index < 2) row.records[index].reset();
    touch_keys();
}

void set_parent(Row& row, const Row* parent) {
    row.parent = parent;
    touch_keys();
}
const Row* parent_of(const Row& row) { return row.parent; }

std::vector<uint8_t> row_key(const Row& row) {
    counters().key_compares.fetch_add(1, std::memory_order_relaxed);   // made to be compared
    const TableInfo& t = *row.table;
    for (size_t i = 0; i < t.rows.size() && i < 2; ++i) {
        if (t.rows[i] != t.key_type || !row.records[i]) continue;
        const Record& rec = *row.records[i];
        if (t.key_kind == KeyKind::compound) return key_bytes(rec);
        return key_bytes(slot_at(rec, t.key_field_id - 1).cell);
    }
    return {};
}

namespace {

uint64_t mix(uint64_t h) {
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    return h;
}

uint64_t key_hash(std::span<const uint8_t> key) {
    return mix(std::hash<std::string_view>{}(std::string_view(reinterpret_cast<const char*>(key.data()), key.size())));
}

uint64_t key_hash(const Row* parent, std::span<const uint8_t> key) {
    return mix(key_hash(key) ^ (reinterpret_cast<uintptr_t>(parent) * 0x9e3779b97f4a7c15ull));
}

// Rows by stored key (and parent): open addressing over a flat array of the keys' hashes and
// the first row with the key; the rows that share a key follow each other through `next`, in
// the order they were added. A lookup compares the stored key of the first row of a bucket
// whose hash is the one looked for (row_key counts it): in practice one.
struct KeyIndex {
    struct Bucket {
        uint64_t hash = 0;
        uint32_t first = 0;   // place of the row + 1; 0: empty
    };
    std::vector<Bucket> buckets;
    std::vector<uint32_t> next;   // by place: place + 1 of the next row with the same key, 0: none

    void build(std::span<Row* const> rows, bool with_parent) {
        size_t n = 16;
        while (4 * n < 5 * rows.size()) n *= 2;   // at most four in five buckets taken
        buckets.assign(n, Bucket{});
        next.assign(rows.size(), 0);
        // The keys while building; the index keeps hashes and places only.
        std::vector<std::vector<uint8_t>> keys(rows.size());
        for (size_t i = rows.size(); i-- > 0;) {
            const Row* r = rows[i];
            keys[i] = row_key(*r);
            const uint64_t h = with_parent ? key_hash(r->parent, keys[i]) : key_hash(keys[i]);
            for (size_t b = h & (n - 1);; b = (b + 1) & (n - 1)) {
                Bucket& at = buckets[b];
                if (at.first == 0) {
                    at = Bucket{h, uint32_t(i + 1)};
                    break;
                }
                const size_t f = at.first - 1;
                if (at.hash == h && keys[f] == keys[i] && (!with_parent || rows[f]->parent == r->parent)) {
                    next[i] = at.first;   // rows are taken last to first: this one goes before
                    at.first = uint32_t(i + 1);
                    break;
                }
            }
        }
    }

    std::vector<const Row*> find(std::span<Row* const> rows, const Row* parent, std::span<const uint8_t> key,
                                 bool with_parent) const {
        std::vector<const Row*> out;
        if (buckets.empty()) return out;
        const uint64_t h = with_parent ? key_hash(parent, key) : key_hash(key);
        const size_t n = buckets.size();
        for (size_t b = h & (n - 1); buckets[b].first; b = (b + 1) & (n - 1)) {
            if (buckets[b].hash != h) continue;
            const Row* first = rows[buckets[b].first - 1];
            if (with_parent && first->parent != parent) continue;
            const std::vector<uint8_t> stored = row_key(*first);
            if (!std::equal(stored.begin(), stored.end(), key.begin(), key.end())) continue;
            for (uint32_t at = buckets[b].first; at; at = next[at - 1]) out.push_back(rows[at - 1]);
            break;
        }
        return out;
    }
};

// The indexes of one table's rows: by key, by parent and key, by parent, each made on its
// first use (a table walked only from its parents never needs the first). Each list is in
// the order the rows were added.
enum IndexKind { by_key, by_parent_key, by_parent };
struct TableIndex {
    uint64_t epoch = 0;
    size_t rows = 0;
    bool made[3] = {};
    KeyIndex keys[2];   // by_key, by_parent_key
    std::unordered_map<const Row*, std::vector<const Row*>> children;
};

}  // namespace

struct Store::Impl {
    // Rows and their records live in the arena; it goes last, after every row is destroyed.
    std::unique_ptr<Arena> arena = std::make_unique<Arena>();
    std::unordered_map<const TableInfo*, std::vector<Row*>> by_table;
    std::vector<Row*> rows;
    std::map<std::string_view, std::vector<Record*>> by_type;   // names owned by the TypeInfo
    std::vector<RecordPtr> records;
    // Built by the lookups; readers on several threads share them.
    std::mutex index_lock;
    std::unordered_map<const TableInfo*, TableIndex> indexes;

    ~Impl() { drop_rows(); }
    void drop_rows() {
        for (Row* r : rows) r->~Row();
        rows.clear();
    }

    // The index of a table as the rows stand now; the caller holds index_lock.
    const TableIndex& index(const TableInfo& table, IndexKind kind) {
        TableIndex& x = indexes[table.table];
        auto it = by_table.find(table.table);
        const size_t n = it == by_table.end() ? 0 : it->second.size();
        const uint64_t epoch = key_epoch();
        if (x.epoch != epoch || x.rows != n || epoch == 0) {
            x = TableIndex{};
            x.epoch = epoch;
            x.rows = n;
        }
        if (x.made[kind] || n == 0) return x;
        x.made[kind] = true;
        if (kind == by_parent) {
            for (const Row* r : it->second) x.children[r->parent].push_back(r);
            return x;
        }
        x.keys[kind].build(it->second, kind == by_parent_key);
        return x;
    }
};

Store::Store() : impl_(std::make_unique<Impl>()) {}
Store::~Store() = default;

Row& Store::add(std::string_view table, const Row* parent) {
    const TableInfo* t = table_info(table);
    if (!t) throw Error("unknown table " + std::string(table));
    if (impl_->rows.size() == impl_->rows.capacity()) impl_->rows.reserve(2 * impl_->rows.size() + 16);
    Row& r = *new (impl_->arena->take(sizeof(Row))) Row(*t->table, impl_->arena.get());
    r.parent = parent;
    impl_->rows.push_back(&r);
    std::vector<Row*>& of_table = impl_->by_table[r.table];
    r.seq = of_table.size();
    of_table.push_back(&r);
    touch_keys();
    return r;
}

size_t Store::order_of(const Row& row) { return row.seq; }

std::span<Row* const> Store::rows(const TableInfo& table) const {
    auto it = impl_->by_table.find(table.table);
    if (it == impl_->by_table.end()) return {};
    return it->second;
}

const Row* Store::find(const TableInfo& table, const Row* parent, std::span<const uint8_t> key) const {
    const std::vector<const Row*> found = parent ? with_key_under(table, parent, key) : with_key(table, key);
    return found.empty() ? nullptr : found.front();
}

std::vector<const Row*> Store::rows_under(const TableInfo& table, const Row* parent) const {
    return children(table, parent);
}

std::vector<const Row*> Store::children(const TableInfo& table, const Row* parent) const {
    std::lock_guard<std::mutex> hold(impl_->index_lock);
    const TableIndex& x = impl_->index(table, by_parent);
    auto it = x.children.find(parent);
    return it == x.children.end() ? std::vector<const Row*>{} : it->second;
}

std::vector<const Row*> Store::with_key(const TableInfo& table, std::span<const uint8_t> key) const {
    std::lock_guard<std::mutex> hold(impl_->index_lock);
    return impl_->index(table, by_key).keys[by_key].find(rows(table), nullptr, key, false);
}

std::vector<const Row*> Store::with_key_under(const TableInfo& table, const Row* parent,
                                                  std::span<const uint8_t> key) const {
    std::lock_guard<std::mutex> hold(impl_->index_lock);
    return impl_->index(table, by_parent_key).keys[by_parent_key].find(rows(table), parent, key, true);
}

size_t Store::size() const { return impl_->rows.size(); }

void Store::swap(Store& other) noexcept { impl_.swap(other.impl_); }

Record& Store::add_record(std::string_view type) {
    const TypeInfo* t = type_info(type);
    if (!t || t->category != Category::record) throw Error(std::string(type) + " is no record type");
    RecordPtr rec = make_record(type);
    Record& r = *rec;
    impl_->by_type[r.type->name].push_back(&r);
    impl_->records.push_back(std::move(rec));
    return r;
}

std::span<Record* const> Store::records(std::string_view type) const {
    auto it = impl_->by_type.find(type);
    if (it == impl_->by_type.end()) return {};
    return it->second;
}

std::vector<std::string_view> Store::record_types() const {
    std::vector<std::string_view> out;
    for (const auto& [name, _] : impl_->by_type) out.push_back(name);
    return out;
}

void Store::clear() {
    impl_->indexes.clear();
    impl_->by_table.clear();
    impl_->drop_rows();
    impl_->arena = std::make_unique<Arena>();
    impl_->by_type.clear();
    impl_->records.clear();
}

LiveCounts live_counts() {
    Counters& c = counters();
    LiveCounts l;
    l.records = c.records.load(std::memory_order_relaxed);
    l.rows = c.rows.load(std::memory_order_relaxed);
    l.typed = c.typed.load(std::memory_order_relaxed);
    l.key_records = c.key_records.load(std::memory_order_relaxed);
    l.bad_handles = c.bad_handles.load(std::memory_order_relaxed);
    l.bad_releases = c.bad_releases.load(std::memory_order_relaxed);
    return l;
}

}  // namespace zan::db
