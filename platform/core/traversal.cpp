// Traversal objects, the request that collects them, column lists, registration and the
// error store of the record-schema library.
//
// Setters and the error word: an operation that finds *err already non-zero does nothing
// at all, neither its set nor a change of the word. A batch of sets therefore stops taking
// effect at its first failure, and above all arbor_params_t_set_last never takes over a
// traversal while an error is pending, so that the caller, who destroys the traversal on
// any pending error, never frees one that the request holds. An err of NULL is allowed and
// means that nobody is told. Failures of the operations themselves: EINVAL (22) for bad
// arguments or a LUID length other than 16, ENOMEM (12) when no memory could be had, EIO
// (5) for an injected fault.
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "core.hpp"

using zan::plat::ArborId;
using namespace zan::plat::detail;

struct arbor_id {
    ArborId v;
};

struct arbor_traverse {
    uint32_t pq = 0;
    bool pq_set = false;
    bool has_pq_luid = false;
    bool has_key_luid = false;
    bool has_key_field_id = false;
    bool has_key_data = false;
    uint8_t pq_luid[ZAN_LUID_LEN] = {};
    uint8_t key_luid[ZAN_LUID_LEN] = {};
    uint32_t key_field_id = 0;
    arbor_id deref_table;
    arbor_id* id_vec[2] = {};            // own copies
    std::vector<uint8_t> key_data;
    arbor_params_t* owner = nullptr;     // the request that took it over
};

struct arbor_params_t {
    std::vector<arbor_traverse*> traversals;
};

// Columns as added: each name copied once into the list's arena. The readable form with
// owned strings is made only when someone asks for it.
struct arbor_ntlist {
    struct Entry {
        std::string_view name;
        uint32_t code;
    };
    // A table has seven columns on average and the largest 395: the first names fit in the
    // object, which stays small enough for the allocator's per-thread cache; more grow.
    std::vector<Entry> entries;
    zan::plat::detail::NameArena<512> names;
    std::vector<zan::plat::NtEntry> view;   // what ntlist_entries last answered
};

namespace {

inline bool pending(const uint32_t* err) { return err && *err; }

inline void fail(uint32_t* err, uint32_t code) {
    if (err && !*err) *err = code;
}

void free_id(arbor_id* id) {
    if (!id) return;
    id->~arbor_id();
    __tallow_free(id);
}

void destroy_traverse(arbor_traverse* t) {
    for (arbor_id*& id : t->id_vec) free_id(id);
    t->~arbor_traverse();
    __tallow_free(t);
    count(c_live_traversals, -1);
}

bool luid_ok(const uint8_t* luid, uint32_t len, uint32_t* err) {
    if (luid && len == ZAN_LUID_LEN) return true;
    fail(err, EINVAL);
    return false;
}

thread_local std::optional<zan::plat::StoredError> t_stored_err;

struct Registrations {
    std::mutex m;
    std::map<std::string, std::unique_ptr<zan::plat::Registration>, std::less<>> by_context;
};

Registrations& registrations() {
    static Registrations* r = new Registrations;
    return *r;
}

// Called with the lock held.
zan::plat::Registration& registration_for(Registrations& r, const char* context) {
    auto it = r.by_context.find(std::string_view(context));
    if (it == r.by_context.end()) {
        auto reg = std::make_unique<zan::plat::Registration>();
        reg->context = context;
        it = r.by_context.emplace(reg->context, std::move(reg)).first;
    }
    return *it->second;
}

// Makes a traversal object in tagged memory, unless its fault point fires.
template <class T>
T* create_tagged(FaultPoint point, const char* type_name) {
    if (hit(point)) {
        tallow_set_callsite_tag(0);   // the pending tag is spent either way
        return nullptr;
    }
    void* mem = tagged_alloc(sizeof(T), type_name);
    if (!mem) return nullptr;
    count(c_live_traversals);
    return new (mem) T;
}

}  // namespace

extern "C" {

// ------------------------------------------------------------------ traversal objects
arbor_traverse* arbor_traverse_create(rsl_ctx_t, rsl_ctx_id_t) {
    return create_tagged<arbor_traverse>(fp_traverse_create, "arbor_traverse");
}

void arbor_traverse_destroy(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t) {
    if (!t) return;
    if (t->owner) std::erase(t->owner->traversals, t);   // never leave the request a dangling entry
    destroy_traverse(t);
}

arbor_id* arbor_traverse_deref_table_get(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, uint32_t* err) {
    if (!t) {
        fail(err, EINVAL);
        return nullptr;
    }
    if (hit(fp_deref_table_get)) {
        fail(err, EIO);
        return nullptr;
    }
    return &t->deref_table;
}

void arbor_traverse_pq_set_value(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, uint32_t pq, uint32_t* err) {
    if (pending(err)) return;
    if (!t) return fail(err, EINVAL);
    if (hit(fp_pq_set)) return fail(err, EIO);
    t->pq = pq;
    t->pq_set = true;
}

void arbor_traverse_pq_luid_set_mem(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, const uint8_t* luid, uint32_t len,
                                    uint32_t* err) {
    if (pending(err)) return;
    if (!t) return fail(err, EINVAL);
    if (!luid_ok(luid, len, err)) return;
    if (hit(fp_pq_luid_set)) return fail(err, EIO);
    std::memcpy(t->pq_luid, luid, ZAN_LUID_LEN);
    t->has_pq_luid = true;
}

void arbor_traverse_arbor_id_vec_set(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, uint32_t index,
                                     const arbor_id* aid, uint32_t* err) {
    if (pending(err)) return;
    if (!t || !aid || index > 1) return fail(err, EINVAL);
    if (hit(fp_id_vec_set)) {
        take_pending_tag();   // spent either way
        return fail(err, EIO);
    }
    void* mem = tagged_alloc(sizeof(arbor_id), "arbor_id");
    if (!mem) return fail(err, ENOMEM);
    free_id(t->id_vec[index]);
    t->id_vec[index] = new (mem) arbor_id(*aid);
}

void arbor_traverse_key_luid_set_mem(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, const uint8_t* luid,
                                     uint32_t len, uint32_t* err) {
    if (pending(err)) return;
    if (!t) return fail(err, EINVAL);
    if (!luid_ok(luid, len, err)) return;
    std::memcpy(t->key_luid, luid, ZAN_LUID_LEN);
    t->has_key_luid = true;
}

void arbor_traverse_key_field_id_set_value(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, uint32_t field_id,
                                           uint32_t* err) {
    if (pending(err)) return;
    if (!t) return fail(err, EINVAL);
    t->key_field_id = field_id;
    t->has_key_field_id = true;
}

void arbor_traverse_key_data_set_mem(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse* t, const void* data, uint32_t len,
                                     uint32_t* err) {
    if (pending(err)) return;
    if (!t || (!data && len)) return fail(err, EINVAL);
    auto* bytes = static_cast<const uint8_t*>(data);
    t->key_data.assign(bytes, bytes + len);
    t->has_key_data = true;
}

arbor_id* arbor_id_create(rsl_ctx_t, rsl_ctx_id_t) { return create_tagged<arbor_id>(fp_id_create, "arbor_id"); }

void arbor_id_destroy(rsl_ctx_t, rsl_ctx_id_t, arbor_id* aid) {
    if (!aid) return;
    free_id(aid);
    count(c_live_traversals, -1);
}

void arbor_id_type_luid_set_mem(rsl_ctx_t, rsl_ctx_id_t, arbor_id* aid, const uint8_t* luid, uint32_t len,
                                uint32_t* err) {
    if (pending(err)) return;
    if (!aid) return fail(err, EINVAL);
    if (!luid_ok(luid, len, err)) return;
    if (hit(fp_id_luid_set)) return fail(err, EIO);
    std::memcpy(aid->v.type_luid, luid, ZAN_LUID_LEN);
    aid->v.luid_set = true;
}

void arbor_id_field_id_set_value(rsl_ctx_t, rsl_ctx_id_t, arbor_id* aid, uint32_t field_id, uint32_t* err) {
    if (pending(err)) return;
    if (!aid) return fail(err, EINVAL);
    if (hit(fp_id_field_set)) return fail(err, EIO);
    aid->v.field_id = field_id;
    aid->v.field_set = true;
}

void arbor_params_t_set_last(rsl_ctx_t, rsl_ctx_id_t, arbor_params_t* params, arbor_traverse* t, uint32_t* err) {
    if (pending(err)) return;
    if (!params || !t || t->owner) return fail(err, EINVAL);
    if (hit(fp_params_set_last)) return fail(err, EIO);
    params->traversals.push_back(t);
    t->owner = params;
}

// ------------------------------------------------------------------ registration
int32_t arbor_register_fe_vectors(const char* context, zan_path_query_dispatch_fn dispatch,
                                  zan_name_lookup_fn table_lookup, zan_name_lookup_fn type_lookup,
                                  zan_mrst_lookup_fn type_mrst_lookup, zan_mrst_lookup_fn table_mrst_lookup,
                                  const void* type_dispatch_type_lut, const void* type_field_lut) {
    if (!context) return -1;
    Registrations& r = registrations();
    std::lock_guard lock(r.m);
    zan::plat::Registration& reg = registration_for(r, context);
    reg.context_ptr = context;
    reg.dispatch = dispatch;
    reg.table_lookup = table_lookup;
    reg.type_lookup = type_lookup;
    reg.type_mrst_lookup = type_mrst_lookup;
    reg.table_mrst_lookup = table_mrst_lookup;
    reg.type_dispatch_type_lut = type_dispatch_type_lut;
    reg.type_field_lut = type_field_lut;
    ++reg.fe_vector_calls;
    return 0;
}

int32_t arbor_register_fe_gx_vectors(const char* context, const void* gx_dispatch_vft,
                                     const void* gx_type_dispatch_vft, const void* reserved,
                                     const void* type_gx_lut) {
    if (!context) return -1;
    Registrations& r = registrations();
    std::lock_guard lock(r.m);
    zan::plat::Registration& reg = registration_for(r, context);
    ++reg.gx_vector_calls;
    if (hit(fp_register_gx_vectors)) return -1;
    reg.gx_context_ptr = context;
    reg.gx_dispatch = gx_dispatch_vft;
    reg.gx_type_dispatch = gx_type_dispatch_vft;
    reg.gx_reserved = reserved;
    reg.type_gx_lut = type_gx_lut;
    return 0;
}

// ------------------------------------------------------------------ column lists
void arbor_fe_ntlist_add(arbor_ntlist* list, const char* name, uint32_t type_code, uint32_t* err) {
    if (pending(err)) return count(c_ntlist_add_pending);
    if (!list || !name) return fail(err, EINVAL);
    if (hit(fp_ntlist_add)) return fail(err, EIO);
    list->entries.push_back(arbor_ntlist::Entry{list->names.keep(name), type_code});
}

// ------------------------------------------------------------------ record-schema library
void rsl_store_err(rsl_ctx_t ctx, uint32_t error_number) { t_stored_err = zan::plat::StoredError{ctx, error_number}; }

}  // extern "C"

namespace zan::plat {

arbor_params_t* params_new() {
    auto* p = new arbor_params_t;
    p->traversals.reserve(8);
    return p;
}

void params_free(arbor_params_t* params) {
    if (!params) return;
    for (arbor_traverse* t : params->traversals) destroy_traverse(t);
    delete params;
}

std::vector<TraversalView> params_traversals(arbor_params_t* params) {
    std::vector<TraversalView> out;
    if (!params) return out;
    out.reserve(params->traversals.size());
    for (const arbor_traverse* t : params->traversals) {
        TraversalView& v = out.emplace_back();   // built in place
        v.pq = t->pq;
        v.pq_set = t->pq_set;
        if (t->has_pq_luid) std::memcpy(v.pq_luid.emplace().data(), t->pq_luid, ZAN_LUID_LEN);
        v.deref_table = t->deref_table.v;
        for (int i = 0; i < 2; ++i)
            if (t->id_vec[i]) v.id_vec[i] = t->id_vec[i]->v;
        if (t->has_key_luid) std::memcpy(v.key_luid.emplace().data(), t->key_luid, ZAN_LUID_LEN);
        if (t->has_key_field_id) v.key_field_id = t->key_field_id;
        if (t->has_key_data) v.key_data = t->key_data;
    }
    return out;
}

long live_traversals() { return counter_sum(c_live_traversals); }

arbor_ntlist* ntlist_new() {
    auto* l = new arbor_ntlist;
    l->entries.reserve(16);
    return l;
}

void ntlist_free(arbor_ntlist* list) { delete list; }

const std::vector<NtEntry>& ntlist_entries(arbor_ntlist* list) {
    static const std::vector<NtEntry> none;
    if (!list) return none;
    list->view.clear();
    list->view.reserve(list->entries.size());
    for (const auto& e : list->entries) list->view.push_back(NtEntry{std::string(e.name), e.code});
    return list->view;
}

size_t ntlist_len(arbor_ntlist* list) { return list ? list->entries.size() : 0; }

const Registration* registration(std::string_view context) {
    Registrations& r = registrations();
    std::lock_guard lock(r.m);
    auto it = r.by_context.find(context);
    return it == r.by_context.end() ? nullptr : it->second.get();
}

void registration_reset() {
    Registrations& r = registrations();
    std::lock_guard lock(r.m);
    r.by_context.clear();
}

std::optional<StoredError> rsl_stored_error() { return t_stored_err; }

void rsl_stored_error_clear() { t_stored_err.reset(); }

}  // namespace zan::plat
