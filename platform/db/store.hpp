// Inside of the record store: record instances, rows, and the catalogue registry that the
// accessors, the field lookups and database.hpp share.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "desc.hpp"
#include "zan/database.hpp"

namespace zan::db {

// Memory of one store: taken in blocks, handed out in order, given back all at once when the
// store goes. What is built in it is destroyed by its owner; its memory stays until then.
class Arena {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    void* take(size_t bytes) {
        bytes = (bytes + k_align - 1) & ~(k_align - 1);
        if (bytes > left_) grow(bytes);
        void* p = next_;
        next_ += bytes;
        left_ -= bytes;
        return p;
    }

private:
    static constexpr size_t k_align = 16;
    void grow(size_t bytes);
    std::vector<std::unique_ptr<char[]>> blocks_;
    char* next_ = nullptr;
    size_t left_ = 0;
    size_t block_ = 4096;
};

// A vector made on its first change: one pointer while empty, as most of a record's arrays
// and sequences stay.
template <class T>
class Lazy {
public:
    using iterator = typename std::vector<T>::iterator;
    using const_iterator = typename std::vector<T>::const_iterator;
    size_t size() const { return v_ ? v_->size() : 0; }
    bool empty() const { return !v_ || v_->empty(); }
    T& operator[](size_t i) { return (*v_)[i]; }
    const T& operator[](size_t i) const { return (*v_)[i]; }
    T& front() { return v_->front(); }
    const T& front() const { return v_->front(); }
    T& back() { return v_->back(); }
    iterator begin() { return v_ ? v_->begin() : iterator{}; }
    iterator end() { return v_ ? v_->end() : iterator{}; }
    const_iterator begin() const { return v_ ? v_->cbegin() : const_iterator{}; }
    const_iterator end() const { return v_ ? v_->cend() : const_iterator{}; }
    void resize(size_t n) { made().resize(n); }
    void assign(size_t n, const T& v) { made().assign(n, v); }
    void push_back(T&& v) { made().push_back(std::move(v)); }

private:
    std::unique_ptr<std::vector<T>> v_;
    std::vector<T>& made() {
        if (!v_) v_ = std::make_unique<std::vector<T>>();
        return *v_;
    }
};

// The storage of one field of a record instance, made on the first write into the field.
// `cell` holds a leaf, enumeration or flag value, the characters of a character array, and
// the state flag of every kind of field.
// What else it holds is by the field's kind: only the member of that kind is there.
struct Slot {
    Cell cell;
    uint32_t count = 0;              // count of a counted array, length of a character array
    FieldKind kind;
    union {
        RecordPtr nested;            // nested record (union arms included), owned; made on the first
                                     // write into it, until then the blank of its type stands for it
        Lazy<Cell> elements;         // fixed and counted arrays
        Lazy<RecordPtr> sequence;    // sequence elements, owned
    };

    explicit Slot(FieldKind k) : kind(k) {
        if (has_elements()) new (&elements) Lazy<Cell>();
        else if (kind == FieldKind::sequence) new (&sequence) Lazy<RecordPtr>();
        else new (&nested) RecordPtr();   // also of the kinds without any: stays empty
    }
    ~Slot() {
        if (has_elements()) std::destroy_at(&elements);
        else if (kind == FieldKind::sequence) std::destroy_at(&sequence);
        else std::destroy_at(&nested);
    }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;
    bool has_elements() const { return kind == FieldKind::fixed_array || kind == FieldKind::counted_array; }
};

// A field of a record instance: its slot once written. Until then the blank record of the
// holder's type and variant answers for it. An entry is the handle <t>_<f>_get yields for
// its field, and stays so however the field is written: of a value (k_value, read through
// cell_of), and of a nested record while that is not made (k_hollow).
constexpr uint32_t k_hollow = 0x7a686f6cu;
constexpr uint32_t k_value = 0x7a76616cu;
struct Entry {
    uint32_t magic = 0;
    uint32_t index = 0;              // of the field in its record
    Slot* slot = nullptr;
};

// A record instance, followed in memory by one Entry per field of its type.
class Record {
public:
    static constexpr uint32_t k_magic = 0x7a726563u;
    uint32_t magic = k_magic;
    int32_t variant = 0;
    int32_t inner_variant = 0;       // variant of the nested records not made yet
    bool key_record = false;         // made by <k>_create: memory from the platform allocator
    bool blank = false;              // shared stand-in of the nested records not made (blank_record)
    uint16_t count = 0;              // fields, entries
    uint32_t seq_index = 0;          // place in the parent's sequence
    const TypeInfo* type = nullptr;
    const desc::RecordDesc* desc = nullptr;
    const Record* parent = nullptr;  // record that holds this one
    Arena* arena = nullptr;          // of the store it is part of; nullptr: the heap
    // The blank of its type and inner variant, found once (itself for a blank). It answers for
    // the fields not written while the variant is the inner one (else the blank of the variant
    // is looked up). A blank's blanks of its nested fields follow its entries, found on first
    // use: a record not made costs no lookup.
    mutable std::atomic<const Record*> twin{nullptr};

    // Bytes of a record of d with its entries.
    static size_t bytes(const desc::RecordDesc& d);
    // To be built in bytes(d) of memory, the entries after it; a blank has every slot made.
    Record(const TypeInfo& t, const desc::RecordDesc& d, const Record* parent, Arena* arena, bool blank = false);
    ~Record();
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    Entry* entries() { return reinterpret_cast<Entry*>(this + 1); }
    const Entry* entries() const { return reinterpret_cast<const Entry*>(this + 1); }
    std::atomic<const Record*>* inner_blanks() const {   // a blank's only
        return reinterpret_cast<std::atomic<const Record*>*>(const_cast<Entry*>(entries() + count));
    }
    static const Record& holder_of(const Entry& e) {
        return *reinterpret_cast<const Record*>(reinterpret_cast<const char*>(&e - e.index) - sizeof(Record));
    }
    size_t index_of(const desc::FieldDesc& f) const { return size_t(&f - desc->fields); }
    bool owns(const desc::FieldDesc& f) const {
        auto p = reinterpret_cast<uintptr_t>(&f), b = reinterpret_cast<uintptr_t>(desc->fields);
        return p >= b && p < b + desc->count * sizeof(desc::FieldDesc);
    }
};
static_assert(sizeof(Record) % alignof(Entry) == 0);

// The slot of field i of r as it reads: the one written, or its blank's.
const Slot& slot_at(const Record& r, size_t i);
// The slot of field i of r, made if it was not.
Slot& make_slot(Record& r, size_t i);

class Row {
public:
    static constexpr uint32_t k_magic = 0x7a726f77u;
    uint32_t magic = k_magic;
    const TableInfo* table = nullptr;    // the table (never a second entrance)
    RecordPtr records[2];
    const Row* parent = nullptr;
    size_t seq = 0;                      // place among the rows of its table in its store

    explicit Row(const TableInfo& t, Arena* arena = nullptr);
    ~Row();
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;
};

// Makes a record of a record type. Its nested records are made when something is written
// into them; until then the blank of their type and variant answers for them.
RecordPtr new_record(const TypeInfo& t, const Record* parent, Arena* arena = nullptr);

// The record that stands for every nested record of type t not made yet: every value zero or
// empty, every state flag 2, every nested record again a blank, the given variant. Made on
// first use, never changed, never freed, not counted among the live records.
const Record& blank_record(const TypeInfo& t, int32_t variant);
// The nested record of field i of r: the one made, or the blank that stands for it.
const Record& nested_at(const Record& r, size_t i);
// What <t>_<f>_get yields for nested field i of r: the record once made; until then the
// address of the field's entry, which carries k_hollow. Either stays valid and stands for
// the same nested record as long as r lives, however it is written later (record_at).
const void* nested_handle(const Record& r, size_t i);
// The record a handle stands for (nullptr if it is none): a record, or the slot of a nested
// field not made yet (its entry), answered by the blank of its type and its holder's inner variant.
const Record* record_at(const void* handle);
// The nested record of field i of r, made if it was not.
Record& make_nested(Record& r, size_t i);

// Changes whenever a write may have changed which rows a keyed lookup finds (a value of a
// row's top record, a row added, dropped or moved): the stores' key indexes are rebuilt
// after it changes.
uint64_t key_epoch();
void touch_keys();

// Live counters (relaxed atomics: they are only summed for tests).
struct Counters {
    std::atomic<long> records{0}, rows{0}, typed{0}, key_records{0}, bad_handles{0}, bad_releases{0}, key_compares{0};
};
Counters& counters();

// The calls key_calls() reports, and the answer of a count read under bound_script().
KeyCalls& key_calls_of_thread();
uint32_t scripted_bound(uint32_t stored);

// Error word: set only when clear.
inline void fail(uint32_t* err, uint32_t code) {
    if (err && *err == 0) *err = code;
}

struct Luid {
    uint64_t hi = 0, lo = 0;
    bool operator==(const Luid&) const = default;
};
struct LuidHash {
    size_t operator()(const Luid& l) const { return size_t(l.hi ^ (l.lo * 0x9e3779b97f4a7c15ull)); }
};
Luid luid_key(const uint8_t* bytes);

struct Registry {
    std::vector<std::unique_ptr<TypeInfo>> type_store;
    std::vector<std::unique_ptr<TableInfo>> table_store;
    std::vector<std::unique_ptr<uint8_t[]>> luid_store;   // field identifiers, 16 bytes each
    std::vector<std::unique_ptr<std::string>> text_store;  // texts the catalogue has no symbol for

    std::vector<const TypeInfo*> types;            // named, slot order
    std::vector<const TypeInfo*> slots;            // all slots, nullptr when empty
    std::vector<const TableInfo*> positions;       // traverser order
    std::vector<const TableInfo*> tables;          // row order
    std::vector<const TableInfo*> rows;            // all rows, nullptr when empty

    std::unordered_map<std::string_view, const TypeInfo*> type_by_name;
    std::unordered_map<std::string_view, const TableInfo*> position_by_name;
    std::unordered_map<std::string_view, int32_t> slot_by_name;   // named and unused slots
    std::unordered_map<std::string_view, int32_t> row_by_name;    // named and unused rows
    std::unordered_map<const desc::RecordDesc*, const TypeInfo*> type_by_desc;
    std::unordered_map<const TypeInfo*, const desc::RecordDesc*> desc_by_type;
    std::unordered_map<const desc::TableDesc*, const TableInfo*> position_by_desc;
    std::unordered_map<Luid, LuidTarget, LuidHash> by_luid;
    std::unordered_map<Luid, const TableInfo*, LuidHash> by_pq;
    int32_t latest_variant = 0;
};
const Registry& registry();

}  // namespace zan::db
