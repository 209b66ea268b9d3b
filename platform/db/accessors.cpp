// The accessor templates behind the generated record accessors, the row accessors and the
// key record operations, and the record-schema base operations on handles.
#include <cstring>
#include <new>

#include "core.hpp"
#include "shim.hpp"
#include "store.hpp"

namespace zan::db::acc {
namespace {

namespace detail = zan::plat::detail;

void bad_handle(uint32_t* err) {
    counters().bad_handles.fetch_add(1, std::memory_order_relaxed);
    fail(err, 22);
}

// The record behind `obj` if it is an instance of the record that owns field f.
const Record* record_of(const FieldDesc& f, const void* obj, uint32_t* err) {
    if (detail::hit(detail::fp_accessor)) [[unlikely]] {
        fail(err, 5);
        return nullptr;
    }
    const Record* r = record_at(obj);
    if (!r || !r->owns(f)) [[unlikely]] {
        bad_handle(err);
        return nullptr;
    }
    return r;
}

const Slot* slot_of(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Record* r = record_of(f, obj, err);
    return r ? &slot_at(*r, r->index_of(f)) : nullptr;
}

const Cell* value_handle(const void* handle, Word a, Word b, uint32_t* err) {
    if (detail::hit(detail::fp_accessor)) [[unlikely]] {
        fail(err, 5);
        return nullptr;
    }
    const Cell* c = cell_of(handle);
    if (!c || (c->word != a && c->word != b)) [[unlikely]] {
        bad_handle(err);
        return nullptr;
    }
    return c;
}

Record* key_record_of(const RecordDesc& rd, const void* rec) {
    auto* r = static_cast<Record*>(const_cast<void*>(rec));
    return r && r->magic == Record::k_magic && r->key_record && r->desc == &rd ? r : nullptr;
}

}  // namespace

const void* get(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Record* r = record_of(f, obj, err);
    if (!r) return nullptr;
    const size_t i = r->index_of(f);
    return f.kind == FieldKind::nested ? nested_handle(*r, i) : &r->entries()[i];
}

uint8_t state(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    return s ? s->cell.state : 0;
}

uint32_t value(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    if (!s) return 0;
    const Cell& c = s->cell;
    switch (c.word) {
        case Word::u_int8: return c.num.u8;
        case Word::u_int16: return c.num.u16;
        case Word::int16: return uint32_t(int32_t(c.num.i16));
        case Word::int32: return uint32_t(c.num.i32);
        case Word::u_int64: return uint32_t(c.num.u64);
        default: return c.num.u32;
    }
}

const void* element(const FieldDesc& f, const void* obj, uint32_t i, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    if (!s) return nullptr;
    if (i >= s->elements.size()) {
        fail(err, 34);
        return nullptr;
    }
    return &s->elements[i];
}

uint8_t element_state(const FieldDesc& f, const void* obj, uint32_t i, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    if (!s) return 0;
    if (i >= s->elements.size()) {
        fail(err, 34);
        return 0;
    }
    return s->elements[i].state;
}

uint32_t bound_value(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    return scripted_bound(s ? s->count : 0);
}

void chars(const FieldDesc& f, const void* obj, char* buf, uint32_t size, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    if (!s || !buf || size == 0) return;
    size_t n = std::min<size_t>(s->cell.text.size(), size - 1);
    std::memcpy(buf, s->cell.text.data(), n);
    buf[n] = '\0';
}

const void* first(const FieldDesc& f, const void* obj, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    return s && !s->sequence.empty() ? s->sequence.front().get() : nullptr;
}

const void* next(const FieldDesc& f, const void* obj, const void* elem, uint32_t* err) {
    const Slot* s = slot_of(f, obj, err);
    if (!s) return nullptr;
    auto* e = static_cast<const Record*>(elem);
    if (!e || e->magic != Record::k_magic || e->seq_index >= s->sequence.size() ||
        s->sequence[e->seq_index].get() != e) {
        bad_handle(err);
        return nullptr;
    }
    size_t n = e->seq_index + 1;
    return n < s->sequence.size() ? s->sequence[n].get() : nullptr;
}

uint32_t enum_value(const void* handle, uint32_t* err) {
    const Cell* c = value_handle(handle, Word::enum_value, Word::rsl_boolean, err);
    return c ? c->num.u32 : 0;
}

uint32_t flag_value(const void* handle, uint32_t bit, uint32_t* err) {
    const Cell* c = value_handle(handle, Word::flag_bits, Word::flag_bits, err);
    return c && bit < 32 ? (c->num.u32 >> bit) & 1u : 0;
}

// A row's table info carries the name symbol of the table's descriptor.
const void* row_record(const TableDesc& t, unsigned index, const void* row) {
    auto* r = static_cast<const Row*>(row);
    if (!r || r->magic != Row::k_magic || r->table->name.data() != t.name || index >= 2) {
        counters().bad_handles.fetch_add(1, std::memory_order_relaxed);
        return nullptr;
    }
    return r->records[index].get();
}

void* key_create(const RecordDesc& rd) {
    const TypeInfo& t = *registry().type_by_desc.at(&rd);
    void* mem = detail::tagged_alloc(Record::bytes(rd), rd.name);
    if (!mem) return nullptr;
    auto* r = new (mem) Record(t, rd, nullptr, nullptr);
    r->key_record = true;
    counters().key_records.fetch_add(1, std::memory_order_relaxed);
    return r;
}

void key_set(const FieldDesc& f, void* rec, const void* obj, uint32_t* err) {
    key_calls_of_thread().set_tags.emplace_back(f.name, detail::take_pending_tag());
    if (detail::hit(detail::fp_accessor)) {
        fail(err, 5);
        return;
    }
    auto* r = static_cast<Record*>(rec);
    const Cell* c = cell_of(obj);
    if (!r || r->magic != Record::k_magic || !r->key_record || !r->owns(f) || !c || c->word != f.word) {
        bad_handle(err);
        return;
    }
    Cell& dst = make_slot(*r, r->index_of(f)).cell;
    if (c->word == Word::ip_address) dst.ip = c->ip;
    else if (c->word == Word::rsl_mac_addr) dst.mac = c->mac;
    else dst.num = c->num;
    dst.text = c->text;
}

uint32_t key_len(const RecordDesc& rd, const void* rec) {
    const Record* r = key_record_of(rd, rec);
    return r ? uint32_t(key_bytes(*r).size()) : 0;
}

uint32_t key_marshal(const RecordDesc& rd, uint8_t* buf, const void* rec, uint32_t len, uint32_t* err) {
    if (detail::hit(detail::fp_accessor)) {
        fail(err, 5);
        return 0;
    }
    const Record* r = key_record_of(rd, rec);
    if (!r || !buf) {
        bad_handle(err);
        return 0;
    }
    std::vector<uint8_t> bytes = key_bytes(*r);
    if (bytes.size() > len) {
        fail(err, 28);
        return 0;
    }
    std::memcpy(buf, bytes.data(), bytes.size());
    return uint32_t(bytes.size());
}

void key_destroy(const RecordDesc& rd, void* rec) {
    if (!rec) return;
    Record* r = key_record_of(rd, rec);
    if (!r) {
        counters().bad_releases.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    counters().key_records.fetch_sub(1, std::memory_order_relaxed);
    RecordDeleter{}(r);
}

}  // namespace zan::db::acc

namespace {

// Releases a typed object; a release through another kind's operation still frees it, but
// is counted as misuse.
void release(void* obj, zan::db::Word w) {
    if (!obj) return;
    if (const zan::db::Cell* c = zan::db::cell_of(obj); c && c->word != w)
        zan::db::counters().bad_releases.fetch_add(1, std::memory_order_relaxed);
    zan::db::destroy_typed(obj);
}

}  // namespace

extern "C" {

int32_t rsl_get_instance_variant(const void* obj, int32_t, int32_t) { return zan::db::instance_variant(obj); }

void rsl_vstring_destroy(rsl_ctx_t, rsl_ctx_id_t, void* obj) { release(obj, zan::db::Word::rsl_vstring); }
void int32_destroy(rsl_ctx_t, rsl_ctx_id_t, void* obj) { release(obj, zan::db::Word::int32); }
void ip_address_destroy(rsl_ctx_t, rsl_ctx_id_t, void* obj) { release(obj, zan::db::Word::ip_address); }

}
