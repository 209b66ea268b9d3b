// The engine's data objects: paths, name lists, value lists, name-value lists, property
// maps and string buffers. Objects are reference counted; an object is used by one thread
// at a time, so the counts are plain integers. Only the live-object tallies are global.
#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include "core.hpp"

using zan::plat::NamedValue;
using zan::plat::NameValueList;
using zan::plat::Value;
using zan::plat::ValueList;
using namespace zan::plat::detail;

// The texts of a name list, each written once with its terminator into blocks that do not
// move while the list lives: a name handed out stays valid until the list is cleared or
// released. Clearing keeps the blocks for the next names.
class NameTexts {
public:
    NameTexts() = default;
    NameTexts(const NameTexts&) = delete;
    NameTexts& operator=(const NameTexts&) = delete;
    ~NameTexts() {
        for (Block* b = spill_; b;) {
            Block* next = b->next;
            ::operator delete(b);
            b = next;
        }
    }

    // A copy of the n characters at text, terminated.
    const char* keep(const char* text, size_t n) {
        if (n >= left_) [[unlikely]]
            next_block(n + 1);
        char* at = room_;
        std::memcpy(at, text, n);
        at[n] = '\0';
        room_ += n + 1;
        left_ -= n + 1;
        return at;
    }

    // Takes back the room of a text that was the last one kept (a name removed from the end).
    void forget(const char* text, size_t n) {
        if (text + n + 1 == room_) {
            room_ -= n + 1;
            left_ += n + 1;
        }
    }

    void clear() {
        room_ = first_;
        left_ = sizeof first_;
        current_ = nullptr;
    }

    // Bytes held beside the object itself.
    size_t spilled() const { return spilled_; }

private:
    struct Block {
        Block* next;
        size_t size;
        char* data() { return reinterpret_cast<char*>(this + 1); }
    };

    // Moves to the next kept block that can hold `need` bytes, or makes one.
    [[gnu::noinline]] void next_block(size_t need) {
        Block** link = current_ ? &current_->next : &spill_;
        while (*link && (*link)->size < need) link = &(*link)->next;
        if (!*link) {
            const size_t size = std::max(need, spilled_ < 2048 ? size_t(2048) : spilled_);
            auto* b = static_cast<Block*>(::operator new(sizeof(Block) + size));
            b->next = nullptr;
            b->size = size;
            *link = b;
            spilled_ += size;
        }
        current_ = *link;
        room_ = current_->data();
        left_ = current_->size;
    }

    char* room_ = first_;
    size_t left_ = sizeof first_;
    Block* current_ = nullptr;   // the spill block being filled; NULL while in first_
    Block* spill_ = nullptr;     // spill blocks in the order they are filled
    size_t spilled_ = 0;
    char first_[512];            // left unset: only the kept part is ever read
};

// An entry of a name list. Engines may hand in names that carry no text at all; the
// front end has to stop at such a name, so the list can hold one (text NULL).
struct NameEntry {
    const char* text;
    uint32_t len;
    bool has_text() const { return text != nullptr; }
    const char* c_str() const { return text; }
    std::string_view view() const { return text ? std::string_view(text, len) : std::string_view(); }
};

struct gx_do_nlist {
    int32_t refs = 1;
    std::vector<NameEntry> names;
    NameTexts texts;
};

struct gx_do_vlist {
    int32_t refs = 1;
    ValueList values;
};

struct gx_do_nvlist {
    int32_t refs = 1;
    NameValueList items;
    std::optional<int32_t> len;   // set by a test: the length to answer
};

// A string buffer: the text and its terminator, in the object while it fits.
struct gx_do_strbuf {
    int32_t refs = 1;
    uint32_t len = 0;
    uint32_t cap = sizeof inline_;   // bytes at data, the terminator included
    char* data = inline_;
    char inline_[240] = {};

    gx_do_strbuf() = default;
    gx_do_strbuf(const gx_do_strbuf&) = delete;
    gx_do_strbuf& operator=(const gx_do_strbuf&) = delete;
    ~gx_do_strbuf() {
        if (data != inline_) delete[] data;
    }

    void clear() {
        len = 0;
        data[0] = '\0';
    }

    // `text` may lie in the buffer itself: it is read before the old storage is freed.
    void append(const char* text, size_t n) {
        if (len + n >= cap) [[unlikely]]
            return append_growing(text, n);
        std::memmove(data + len, text, n);
        len += uint32_t(n);
        data[len] = '\0';
    }

private:
    [[gnu::noinline, gnu::cold]] void append_growing(const char* text, size_t n) {
        size_t want = size_t(cap) * 2;
        while (want <= len + n) want *= 2;
        char* bigger = new char[want];
        std::memcpy(bigger, data, len);
        std::memcpy(bigger + len, text, n);
        if (data != inline_) delete[] data;
        data = bigger;
        cap = uint32_t(want);
        len += uint32_t(n);
        data[len] = '\0';
    }
};

struct gx_do_uri_segment {
    std::string name;
    gx_do_nvlist* keys = nullptr;   // one reference held by the segment; NULL: no key list
};

struct gx_do_uri {
    int32_t refs = 1;
    std::vector<gx_do_uri_segment> segments;   // fixed once built: segment pointers stay valid
    std::string text;
    std::optional<int32_t> count;   // set by a test: the count to answer
};

// Properties keep their items in insertion order. Past a handful of items a hash index
// (open addressing over item numbers) finds a name, so a row of hundreds of attributes
// costs no quadratic scan. Names are copied once into the object's arena.
struct gx_do_properties {
    struct Item {
        // The value, or none for a null.
        template <class... V>
        Item(std::string_view n, uint32_t h, V&&... v) : name(n), hash(h), value(std::forward<V>(v)...) {}
        std::string_view name;
        uint32_t hash;
        Value value;
    };

    // Items in blocks of 64 that never move: a row of hundreds of attributes grows the
    // store without moving (and so copying) the items already set.
    class Store {
    public:
        static constexpr size_t k_block = 64;
        Store() = default;
        Store(const Store&) = delete;
        Store& operator=(const Store&) = delete;
        ~Store() {
            for (size_t i = 0; i < size_; ++i) (*this)[i].~Item();
            for (Item* b : blocks_) ::operator delete(b);
        }
        size_t size() const { return size_; }
        Item& operator[](size_t i) { return blocks_[i / k_block][i % k_block]; }
        const Item& operator[](size_t i) const { return blocks_[i / k_block][i % k_block]; }
        template <class... A>
        void emplace_back(A&&... a) {
            if (size_ == blocks_.size() * k_block) [[unlikely]]
                blocks_.push_back(static_cast<Item*>(::operator new(sizeof(Item) * k_block)));
            new (&(*this)[size_]) Item(std::forward<A>(a)...);
            ++size_;
        }

    private:
        std::vector<Item*> blocks_;
        size_t size_ = 0;
    };

    int32_t refs = 1;
    Store items;
    std::vector<uint32_t> slots;    // item number + 1, 0 free; empty while items are few
    NameArena<4096> names;

    static constexpr size_t k_linear = 12;

    // Names of one object run to a hundred characters and share long prefixes: the hash
    // takes the length, the first eight bytes and the last sixteen, in a fixed number of
    // steps. Names it confuses are told apart by the full compare in find().
    static uint32_t hash(std::string_view s) {
        const char* p = s.data();
        const size_t n = s.size();
        uint64_t a = 0, b = 0, c = 0;
        if (n >= 16) {
            std::memcpy(&a, p, 8);
            std::memcpy(&b, p + n - 16, 8);
            std::memcpy(&c, p + n - 8, 8);
        } else if (n >= 8) {
            std::memcpy(&a, p, 8);
            std::memcpy(&c, p + n - 8, 8);
        } else {
            for (size_t i = 0; i < n; ++i) a = a << 8 | static_cast<unsigned char>(p[i]);
        }
        uint64_t h = (a ^ 0x9e3779b97f4a7c15ull ^ n) * 0xff51afd7ed558ccdull;
        h = (h ^ (h >> 29) ^ b) * 0xc4ceb9fe1a85ec53ull;
        h = (h ^ (h >> 32) ^ c) * 0xff51afd7ed558ccdull;
        return uint32_t(h ^ (h >> 32));
    }

    [[gnu::always_inline]] long find(std::string_view name, uint32_t h) const {
        if (slots.empty()) {
            for (size_t i = 0; i < items.size(); ++i)
                if (items[i].hash == h && items[i].name == name) return long(i);
            return -1;
        }
        size_t mask = slots.size() - 1;
        for (size_t p = h & mask;; p = (p + 1) & mask) {
            uint32_t s = slots[p];
            if (!s) return -1;
            if (items[s - 1].hash == h && items[s - 1].name == name) return long(s - 1);
        }
    }

    [[gnu::always_inline]] void place(uint32_t i) {
        size_t mask = slots.size() - 1;
        size_t p = items[i].hash & mask;
        while (slots[p]) p = (p + 1) & mask;
        slots[p] = i + 1;
    }

    [[gnu::noinline]] void reindex() {
        size_t n = 64;
        while (n < items.size() * 4) n *= 2;
        slots.assign(n, 0);
        for (uint32_t i = 0; i < items.size(); ++i) place(i);
    }

    // After an item was added at the end.
    [[gnu::always_inline]] void index_last() {
        if (slots.empty() ? items.size() > k_linear : items.size() * 2 > slots.size())
            reindex();
        else if (!slots.empty())
            place(uint32_t(items.size() - 1));
    }

    // A name set again keeps its place in the order and takes the new value; `v` is the
    // value, or nothing for a null (built in place, with no value moved).
    template <class... V>
    void set(std::string_view name, V&&... v) {
        const uint32_t h = hash(name);
        const long i = find(name, h);
        if (i >= 0) {
            items[size_t(i)].value = Value(std::forward<V>(v)...);
            return;
        }
        items.emplace_back(names.keep(name), h, std::forward<V>(v)...);
        index_last();
    }
};

namespace {

// Iterator state as written into the caller's record.
enum IterKind : uint32_t { it_none = 0, it_nlist = 0x6e6c, it_nvlist = 0x6e76 };
struct IterState {
    const void* list;
    uint32_t pos;
    uint32_t kind;
};
static_assert(sizeof(IterState) <= sizeof(gx_do_iter::state), "iterator state must fit the record");

int32_t iter_start(const void* list, IterKind kind, gx_do_iter* it) {
    if (!it) return -1;
    IterState st{nullptr, 0, it_none};
    // The fixed initial content: 1, -1, then 24 zero bytes; any other record is refused.
    static constexpr uint8_t k_zero[sizeof it->state] = {};
    bool prepared = it->first == 1 && it->second == -1 && std::memcmp(it->state, k_zero, sizeof k_zero) == 0;
    if (prepared && list) st = IterState{list, 0, kind};
    std::memcpy(it->state, &st, sizeof st);
    return prepared ? 0 : -1;
}

template <class List>
bool iter_peek(gx_do_iter* it, IterKind kind, IterState& st, const List*& list) {
    if (!it) return false;
    std::memcpy(&st, it->state, sizeof st);
    if (st.kind != kind || !st.list) return false;
    list = static_cast<const List*>(st.list);
    return true;
}

// Answers the element under the iterator and steps past it; NULL at the end or when the
// iterator was not started on a list of this kind.
template <class Out, class List, class Elems>
Out* iter_next(gx_do_iter* it, IterKind kind, Elems List::*elems) {
    IterState st;
    const List* l;
    if (!iter_peek(it, kind, st, l) || st.pos >= (l->*elems).size()) return nullptr;
    auto* out = reinterpret_cast<Out*>(const_cast<typename Elems::value_type*>(&(l->*elems)[st.pos]));
    ++st.pos;
    std::memcpy(it->state, &st, sizeof st);
    return out;
}

template <class T>
void release(T* obj, Counter live) {
    if (!obj || --obj->refs > 0) return;
    delete obj;
    count(live, -1);
}

// Spare objects of the kinds a rendering makes and drops by the hundred (a nested record
// takes a name list, a value list and a string buffer, and releases them when its names
// and values are copied up). A released one keeps its storage on this thread and is
// handed out by the next `new` of its kind, emptied, instead of going back to the
// allocator. Objects whose storage grew large are freed as before.
// The sanitizer builds keep none, so that a use after release still shows.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZAN_SPARES_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ZAN_SPARES_SANITIZED)
constexpr unsigned k_spares = 0;
#else
constexpr unsigned k_spares = 8;
#endif

template <class T>
struct Spares {
    static constexpr unsigned k_max = k_spares == 0 ? 1 : k_spares;
    T* items[k_max];
    unsigned n;
    bool closed;   // the thread is ending: nothing is kept any more
};

// Whether an emptied object's storage is small enough to keep.
bool keepable(const gx_do_nlist& l) { return l.names.capacity() <= 64 && l.texts.spilled() <= 4096; }
bool keepable(const gx_do_vlist& l) { return l.values.capacity() <= 64; }
bool keepable(const gx_do_nvlist& l) { return l.items.capacity() <= 16; }
bool keepable(const gx_do_strbuf& b) { return b.cap <= 512; }

void empty(gx_do_nlist& l) {
    l.names.clear();
    l.texts.clear();
}
void empty(gx_do_vlist& l) { l.values.clear(); }
void empty(gx_do_nvlist& l) {
    l.items.clear();
    l.len.reset();
}
void empty(gx_do_strbuf& b) { b.clear(); }

constinit thread_local Spares<gx_do_nlist> t_spare_nlist __attribute__((tls_model("initial-exec"))) = {};
constinit thread_local Spares<gx_do_vlist> t_spare_vlist __attribute__((tls_model("initial-exec"))) = {};
constinit thread_local Spares<gx_do_nvlist> t_spare_nvlist __attribute__((tls_model("initial-exec"))) = {};
constinit thread_local Spares<gx_do_strbuf> t_spare_strbuf __attribute__((tls_model("initial-exec"))) = {};
constinit thread_local bool t_spares_registered __attribute__((tls_model("initial-exec"))) = false;

template <class T>
void drain(Spares<T>& s) {
    while (s.n) delete s.items[--s.n];
    s.closed = true;
}

// Frees this thread's spares when it ends; objects released after that are freed at once.
struct SparesDrain {
    ~SparesDrain() {
        drain(t_spare_nlist);
        drain(t_spare_vlist);
        drain(t_spare_nvlist);
        drain(t_spare_strbuf);
    }
};

[[gnu::noinline]] void register_spares() {
    static thread_local SparesDrain drain_at_exit;
    (void)&drain_at_exit;
    t_spares_registered = true;
}

template <class T>
T* make_spared(Spares<T>& spares, FaultPoint point, Counter live) {
    if (hit(point)) return nullptr;
    T* obj;
    if (spares.n) {
        obj = spares.items[--spares.n];
    } else {
        obj = new (std::nothrow) T;
        if (!obj) return nullptr;
    }
    count(live);
    return obj;
}

template <class T>
void release_spared(Spares<T>& spares, T* obj, Counter live) {
    if (!obj || --obj->refs > 0) return;
    count(live, -1);
    if (k_spares != 0 && spares.n < Spares<T>::k_max && !spares.closed) {
        empty(*obj);
        if (keepable(*obj)) {
            if (!t_spares_registered) [[unlikely]]
                register_spares();
            if (!spares.closed) {
                obj->refs = 1;
                spares.items[spares.n++] = obj;
                return;
            }
        }
    }
    delete obj;
}

int32_t as_count(size_t n) { return int32_t(n); }

// Makes room for one more element away from the adder's own path.
template <class V>
[[gnu::noinline, gnu::cold]] void grow(V& v) {
    v.reserve(v.size() * 2 + 8);
}

}  // namespace

extern "C" {

const char* GX_DO_NAME_URI = "__uri__";

// ------------------------------------------------------------------ paths
int32_t gx_do_uri_get_segment_count(gx_do_uri* uri) {
    if (!uri) return 0;
    return uri->count ? *uri->count : as_count(uri->segments.size());
}

gx_do_uri_segment* gx_do_uri_get_segment(gx_do_uri* uri, int32_t index) {
    if (!uri || index < 0 || size_t(index) >= uri->segments.size()) return nullptr;
    return &uri->segments[size_t(index)];
}

const char* gx_do_uri_segment_get_name(gx_do_uri_segment* segment) {
    return segment ? segment->name.c_str() : nullptr;
}

gx_do_nvlist* gx_do_uri_segment_get_keys(gx_do_uri_segment* segment) { return segment ? segment->keys : nullptr; }

// ------------------------------------------------------------------ names
// A name is an entry of its list; the list's strings stand behind the references.
const char* gx_do_name_get_strname(gx_do_name* name) {
    const auto* e = reinterpret_cast<const NameEntry*>(name);
    return e && e->has_text() ? e->c_str() : nullptr;
}

gx_do_nlist* gx_do_nlist_new(void) {
    gx_do_nlist* l = make_spared(t_spare_nlist, fp_nlist_new, c_live_nlist);
    if (l) l->names.reserve(8);
    return l;
}

void gx_do_nlist_deref(gx_do_nlist* list) { release_spared(t_spare_nlist, list, c_live_nlist); }

void gx_do_nlist_clear(gx_do_nlist* list) {
    if (!list) return;
    list->names.clear();
    list->texts.clear();
}

int32_t gx_do_nlist_add_string(gx_do_nlist* list, const char* text) {
    if (!list || !text || hit(fp_nlist_add_string)) return 0;
    const size_t n = std::strlen(text);
    const NameEntry e{list->texts.keep(text, n), uint32_t(n)};
    if (list->names.size() == list->names.capacity()) [[unlikely]]
        grow(list->names);
    list->names.push_back(e);
    return 1;
}

int32_t gx_do_nlist_get_len(gx_do_nlist* list) { return list ? as_count(list->names.size()) : 0; }

gx_do_name* gx_do_nlist_get_name(gx_do_nlist* list, int32_t index) {
    if (!list || index < 0 || size_t(index) >= list->names.size()) return nullptr;
    return reinterpret_cast<gx_do_name*>(&list->names[size_t(index)]);
}

int32_t gx_do_nlist_remove(gx_do_nlist* list, int32_t index) {
    if (!list || index < 0 || size_t(index) >= list->names.size()) return -1;
    const NameEntry gone = list->names[size_t(index)];
    list->names.erase(list->names.begin() + index);
    // A list that names are added to and removed from for long does not grow its texts: the
    // last text is taken back, and all of them when the list is empty.
    if (list->names.empty())
        list->texts.clear();
    else if (gone.text)
        list->texts.forget(gone.text, gone.len);
    return 0;
}

int32_t gx_do_nlist_iter(gx_do_nlist* list, gx_do_iter* it) { return iter_start(list, it_nlist, it); }

int32_t gx_do_nlist_has_next(gx_do_iter* it) {
    IterState st;
    const gx_do_nlist* l;
    return iter_peek(it, it_nlist, st, l) && st.pos < l->names.size();
}

gx_do_name* gx_do_nlist_get_next(gx_do_iter* it) {
    return iter_next<gx_do_name>(it, it_nlist, &gx_do_nlist::names);
}

// ------------------------------------------------------------------ values
gx_do_vlist* gx_do_vlist_new(void) {
    gx_do_vlist* l = make_spared(t_spare_vlist, fp_vlist_new, c_live_vlist);
    if (l) l->values.reserve(8);
    return l;
}

void gx_do_vlist_deref(gx_do_vlist* list) { release_spared(t_spare_vlist, list, c_live_vlist); }

void gx_do_vlist_clear(gx_do_vlist* list) {
    if (list) list->values.clear();
}

int32_t gx_do_vlist_get_len(gx_do_vlist* list) { return list ? as_count(list->values.size()) : 0; }

// Adders answer the new length of the list: positive on success.
int32_t gx_do_vlist_add_null(gx_do_vlist* list) {
    if (!list || hit(fp_vlist_add_null)) return -1;
    list->values.emplace_back();
    return as_count(list->values.size());
}

int32_t gx_do_vlist_add_all(gx_do_vlist* dest, gx_do_vlist* src) {
    if (!dest || !src || hit(fp_vlist_add_all)) return -1;
    const size_t n = src->values.size();
    const size_t at = dest->values.size();
    dest->values.resize(at + n);   // nulls, the common case: nothing more to copy for them
    for (size_t i = 0; i < n; ++i)   // by index: dest may be src
        if (src->values[i].v.index() != 0) dest->values[at + i] = src->values[i];
    return as_count(dest->values.size());
}

int32_t gx_do_vlist_add_array(gx_do_vlist* dest, gx_do_vlist* list) {
    if (!dest || !list || hit(fp_vlist_add_array)) return -1;
    Value v;
    v.v = list->values;   // a copy: the caller may release or clear its list right after
    dest->values.push_back(std::move(v));
    return as_count(dest->values.size());
}

int32_t gx_do_vlist_add_sequence(gx_do_vlist* dest, gx_do_nvlist* list) {
    if (!dest || !list || hit(fp_vlist_add_sequence)) return -1;
    Value v;
    v.v = list->items;
    dest->values.push_back(std::move(v));
    return as_count(dest->values.size());
}

int32_t gx_do_vlist_add_mr_uri(gx_do_vlist* list, gx_do_uri* uri) {
    if (!list || !uri || hit(fp_vlist_add_mr_uri)) return -1;
    Value v;
    v.v = zan::plat::Uri{uri->text};
    list->values.push_back(std::move(v));
    const int64_t scripted = g_mr_uri_answer.load(std::memory_order_relaxed);
    return scripted != k_no_answer ? int32_t(scripted) : as_count(list->values.size());
}

// ------------------------------------------------------------------ name-value lists
gx_do_nvlist* gx_do_nvlist_new(void) {
    gx_do_nvlist* l = make_spared(t_spare_nvlist, fp_nvlist_new, c_live_nvlist);
    if (l) l->items.reserve(4);
    return l;
}

void gx_do_nvlist_deref(gx_do_nvlist* list) { release_spared(t_spare_nvlist, list, c_live_nvlist); }

int32_t gx_do_nvlist_get_len(gx_do_nvlist* list) {
    if (!list) return 0;
    return list->len ? *list->len : as_count(list->items.size());
}

int32_t gx_do_nvlist_add_null(gx_do_nvlist* list, const char* name) {
    if (!list || !name || hit(fp_nvlist_add_null)) return -1;
    list->items.push_back(NamedValue{name, Value{}});
    return as_count(list->items.size());
}

int32_t gx_do_nvlist_iter(gx_do_nvlist* list, gx_do_iter* it) { return iter_start(list, it_nvlist, it); }

int32_t gx_do_nvlist_has_next(gx_do_iter* it) {
    IterState st;
    const gx_do_nvlist* l;
    return iter_peek(it, it_nvlist, st, l) && st.pos < l->items.size();
}

gx_do_nvlist_item* gx_do_nvlist_get_next(gx_do_iter* it) {
    return iter_next<gx_do_nvlist_item>(it, it_nvlist, &gx_do_nvlist::items);
}

const char* gx_do_nvlist_item_get_name(gx_do_nvlist_item* item) {
    return item ? reinterpret_cast<NamedValue*>(item)->name.c_str() : nullptr;
}

gx_do_value* gx_do_nvlist_item_get_value(gx_do_nvlist_item* item) {
    return item ? reinterpret_cast<gx_do_value*>(&reinterpret_cast<NamedValue*>(item)->value) : nullptr;
}

// ------------------------------------------------------------------ properties
int32_t gx_do_properties_set_null(gx_do_properties* props, const char* name) {
    if (!props || !name || hit(fp_properties_set_null)) return -1;
    props->set(name);
    return 0;
}

int32_t gx_do_properties_set_array(gx_do_properties* props, const char* name, gx_do_vlist* list) {
    if (!props || !name || !list || hit(fp_properties_set_array)) return -1;
    Value v;
    v.v = list->values;   // a copy: the caller releases its list right after
    props->set(name, std::move(v));
    return 0;
}

// Pairs names and values in order; a longer list's surplus is left out.
void arbor_nvlist_from_nlist_vlist(gx_do_nvlist* nvlist, gx_do_nlist* nlist, gx_do_vlist* vlist) {
    if (!nvlist || !nlist || !vlist) return;
    size_t n = std::min(nlist->names.size(), vlist->values.size());
    nvlist->items.reserve(nvlist->items.size() + n);
    for (size_t i = 0; i < n; ++i) nvlist->items.push_back(NamedValue{std::string(nlist->names[i].view()), vlist->values[i]});
}

// ------------------------------------------------------------------ string buffers
gx_do_strbuf* gx_do_strbuf_new(void) {
    gx_do_strbuf* b = make_spared(t_spare_strbuf, fp_strbuf_new, c_live_strbuf);
    return b;
}

void gx_do_strbuf_deref(gx_do_strbuf* buf) { release_spared(t_spare_strbuf, buf, c_live_strbuf); }

void gx_do_strbuf_clear(gx_do_strbuf* buf) {
    if (buf) buf->clear();
}

int32_t gx_do_strbuf_add_string(gx_do_strbuf* buf, const char* text) {
    if (!buf || !text || hit(fp_strbuf_add_string)) return -1;
    buf->append(text, std::strlen(text));
    return 0;
}

const char* gx_do_strbuf_to_string(gx_do_strbuf* buf) { return buf ? buf->data : nullptr; }

}  // extern "C"

// ------------------------------------------------------------------ C++ side
namespace zan::plat {

namespace {

void append_uri_text(std::string& out, const UriSegment& s) {
    out += '/';
    out += s.name;
    if (!s.keys) return;
    out += '[';
    bool first = true;
    for (const auto& [k, v] : *s.keys) {
        if (!first) out += ',';
        first = false;
        out += k;
        out += '=';
        out += v;
    }
    out += ']';
}

}  // namespace

gx_do_uri* uri_new(const std::vector<UriSegment>& segments) {
    auto* uri = new gx_do_uri;
    count(c_live_uri);
    uri->segments.resize(segments.size() + 1);
    for (size_t i = 0; i < segments.size(); ++i) {
        const UriSegment& s = segments[i];
        gx_do_uri_segment& seg = uri->segments[i + 1];
        seg.name = s.name;
        append_uri_text(uri->text, s);
        if (!s.keys) continue;
        seg.keys = new gx_do_nvlist;
        count(c_live_nvlist);
        seg.keys->items.reserve(s.keys->size());
        for (const auto& [k, v] : *s.keys) {
            Value val;
            val.v = v;
            seg.keys->items.push_back(NamedValue{k, std::move(val)});
        }
    }
    if (uri->text.empty()) uri->text.push_back('/');
    return uri;
}

void uri_deref(gx_do_uri* uri) {
    if (!uri || --uri->refs > 0) return;
    for (gx_do_uri_segment& seg : uri->segments) release(seg.keys, c_live_nvlist);
    delete uri;
    count(c_live_uri, -1);
}

std::string uri_text(gx_do_uri* uri) { return uri ? uri->text : std::string(); }

void uri_set_text(gx_do_uri* uri, std::string_view text) {
    if (uri) uri->text = text;
}

void uri_set_count(gx_do_uri* uri, std::optional<int32_t> count) {
    if (uri) uri->count = count;
}

void nvlist_set_len(gx_do_nvlist* list, std::optional<int32_t> len) {
    if (list) list->len = len;
}

gx_do_properties* properties_new() {
    auto* p = new gx_do_properties;
    count(c_live_properties);
    return p;
}

void properties_deref(gx_do_properties* props) { release(props, c_live_properties); }

std::vector<NamedValue> properties_items(gx_do_properties* props) {
    std::vector<NamedValue> out;
    if (!props) return out;
    out.reserve(props->items.size());
    for (size_t i = 0; i < props->items.size(); ++i)
        out.push_back(NamedValue{std::string(props->items[i].name), props->items[i].value});
    return out;
}

const Value* properties_get(gx_do_properties* props, std::string_view name) {
    if (!props) return nullptr;
    long i = props->find(name, gx_do_properties::hash(name));
    return i < 0 ? nullptr : &props->items[size_t(i)].value;
}

int32_t properties_set(gx_do_properties* props, std::string_view name, Value&& v) {
    if (!props) return -1;
    if (hit(fp_properties_set_value)) return g_value_add_answer.load(std::memory_order_relaxed);
    props->set(name, std::move(v));
    return 0;
}

std::vector<std::string> nlist_names(gx_do_nlist* list) {
    std::vector<std::string> out;
    if (list)
        for (const auto& e : list->names) out.push_back(std::string(e.view()));
    return out;
}

void nlist_add_textless(gx_do_nlist* list) {
    if (list) list->names.push_back(NameEntry{nullptr, 0});
}

ValueList vlist_values(gx_do_vlist* list) { return list ? list->values : ValueList{}; }

NameValueList nvlist_items(gx_do_nvlist* list) { return list ? list->items : NameValueList{}; }

int32_t vlist_add(gx_do_vlist* list, Value v) {
    if (!list) return -1;
    if (hit(fp_vlist_add_value)) return g_value_add_answer.load(std::memory_order_relaxed);
    list->values.push_back(std::move(v));
    return as_count(list->values.size());
}

int32_t nvlist_add(gx_do_nvlist* list, std::string_view name, Value v) {
    if (!list) return -1;
    if (hit(fp_nvlist_add_value)) return g_value_add_answer.load(std::memory_order_relaxed);
    list->items.push_back(NamedValue{std::string(name), std::move(v)});
    return as_count(list->items.size());
}

const Value* value_get(const gx_do_value* value) { return reinterpret_cast<const Value*>(value); }

ObjectCounts live_objects() {
    ObjectCounts c;
    c.uri = counter_sum(c_live_uri);
    c.nlist = counter_sum(c_live_nlist);
    c.vlist = counter_sum(c_live_vlist);
    c.nvlist = counter_sum(c_live_nvlist);
    c.properties = counter_sum(c_live_properties);
    c.strbuf = counter_sum(c_live_strbuf);
    return c;
}

}  // namespace zan::plat
