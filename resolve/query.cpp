// The query traverser templates: the key a segment carries, turned into a query traversal
// (pq 1, the key field's LUID and id, the key in stored form). The one-key template
// compares the first key only; the compound template finds each part of its key record
// by name, in any order, converts the parts to typed objects and marshals the record.
#include <cstring>

#include "resolve.hpp"
#include "trace.hpp"

namespace zan::fe::resolve {

namespace {

// Request kinds, as bare numbers: those that need no query on the last segment, those
// whose key values are converted with the value flag, and those that need no key on the
// last segment. The masks are only consulted within their bound, so no shift reaches 32.
constexpr uint32_t k_kind_no_query_a = 6, k_kind_no_query_b = 13;
constexpr uint32_t k_value_flag_mask = 0x1028, k_value_flag_max = 12;
constexpr uint32_t k_no_key_mask = 0x21C21, k_no_key_max = 17;

uint32_t value_flag(uint32_t kind) {
    return kind <= k_value_flag_max && ((k_value_flag_mask >> kind) & 1u) ? 1 : 0;
}
bool needs_no_key(uint32_t kind) { return kind <= k_no_key_max && ((k_no_key_mask >> kind) & 1u) != 0; }

bool same(const char* a, const char* b) { return a != nullptr && std::strcmp(a, b) == 0; }

// The key names and values of a segment, in list order; the texts stay the list's.
struct KeyArrays {
    const char** names = nullptr;
    gx_do_value** values = nullptr;
    int32_t* positions = nullptr;   // compound keys only
    int32_t read = 0;
    // The positions, then the values, then the names.
    void release() {
        __tallow_free(positions);
        __tallow_free(values);
        __tallow_free(names);
        positions = nullptr;
        values = nullptr;
        names = nullptr;
    }
    ~KeyArrays() { release(); }
};

// What the first steps of both templates decide before any memory is taken: answered
// (`code` holds the answer), no keys where keys are needed, or go on with `len` keys.
enum class Start { go_on, done, no_keys };

// Steps shared by both templates up to the length of the key list: the kinds that need no
// query, the missing key list, the empty one.
Start begin(const QueryDesc& d, gx_do_nvlist* keys, uint32_t kind, uint32_t more, int32_t* len, int32_t* code) {
    if ((kind == k_kind_no_query_a || kind == k_kind_no_query_b) && more == 0) {
        *code = k_pq_taken;
        return Start::done;
    }
    if (keys == nullptr) {
        if (more != 0) {
            trace(d.msg + k_q_expecting_keys, LT_LEVEL_ERROR);
            *code = k_pq_fail;
        } else if (needs_no_key(kind)) {
            *code = k_pq_taken;
        } else {
            return Start::no_keys;   // traced by open_query
        }
        return Start::done;
    }
    *len = gx_do_nvlist_get_len(keys);
    if (*len == 0) {   // only 0: a negative length goes on
        trace(d.msg + k_q_empty_list, LT_LEVEL_DEBUG);
        *code = k_pq_fail;
        return Start::done;
    }
    trace(d.msg + k_q_list_len, LT_LEVEL_DEBUG, static_cast<uint32_t>(*len));
    return Start::go_on;
}

void trace_no_keys(const QueryDesc& d) {
    trace(d.msg + k_q_no_keys, LT_LEVEL_ERROR);
}

// The two pointer arrays, len (sign-extended) entries each. False: out of memory, traced.
bool alloc_arrays(const QueryDesc& d, int32_t len, KeyArrays& a) {
    const size_t size = static_cast<size_t>(static_cast<int64_t>(len)) * sizeof(void*);
    a.names = static_cast<const char**>(__tallow_malloc(site_tag(d.site), &__TY_tinfot_ptr_BYTE_PTR,
                                                        __TY_tinfon_BYTE_PTR, &__TY_tinfot_ptr_default,
                                                        __TY_tinfon_default, size));
    if (a.names == nullptr) {
        trace(d.msg + k_q_names_failed, LT_LEVEL_ERROR);
        return false;
    }
    a.values = static_cast<gx_do_value**>(__tallow_malloc(site_tag(d.site + 1), &__TY_tinfot_ptr_gx_do_value_PTR,
                                                          __TY_tinfon_gx_do_value_PTR, &__TY_tinfot_ptr_default,
                                                          __TY_tinfon_default, size));
    if (a.values == nullptr) {
        trace(d.msg + k_q_values_failed, LT_LEVEL_ERROR);
        return false;
    }
    return true;
}

// The start both templates share: the early answers and the two key arrays. False: the
// call is answered and `code` holds the answer.
bool open_query(const QueryDesc& d, gx_do_nvlist* keys, uint32_t kind, uint32_t more, KeyArrays& a,
                int32_t* len, int32_t* code) {
    switch (begin(d, keys, kind, more, len, code)) {
        case Start::done:
            return false;
        case Start::no_keys:
            trace_no_keys(d);
            *code = k_pq_fail;
            return false;
        case Start::go_on:
            break;
    }
    if (alloc_arrays(d, *len, a)) return true;
    *code = k_pq_error;
    return false;
}

// Reads up to len items of the key list. False: the list yields nothing.
bool read_keys(gx_do_nvlist* keys, int32_t len, KeyArrays& a) {
    gx_do_iter it;
    gx_do_iter_prepare(&it);
    gx_do_nvlist_iter(keys, &it);
    if (len < 1 || !gx_do_nvlist_has_next(&it)) return false;
    do {
        gx_do_nvlist_item* item = gx_do_nvlist_get_next(&it);
        a.names[a.read] = gx_do_nvlist_item_get_name(item);
        a.values[a.read] = gx_do_nvlist_item_get_value(item);
        ++a.read;
    } while (a.read < len && gx_do_nvlist_has_next(&it));
    return true;
}

// Looks up the key field. False: it has no LUID, traced.
bool key_field(const QueryDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, uint32_t no_field_msg, uint32_t* field_id,
               const uint8_t** luid, uint32_t* err) {
    d.get_field(ctx, id, d.key_field, field_id, luid, err);
    if (*luid != nullptr) return true;
    trace(d.msg + no_field_msg, LT_LEVEL_ERROR);
    return false;
}

void store_key(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, const uint8_t* luid, uint32_t field_id,
               const void* data, uint32_t len, uint32_t* err) {
    arbor_traverse_key_luid_set_mem(ctx, id, t, luid, ZAN_LUID_LEN, err);
    arbor_traverse_key_field_id_set_value(ctx, id, t, field_id, err);
    arbor_traverse_key_data_set_mem(ctx, id, t, data, len, err);
}

}  // namespace

int32_t query_traverse(const QueryDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_nvlist* keys,
                       gx_do_nlist* pd_list, arbor_params_t* params, uint32_t request_kind, uint32_t more_segments) {
    uint32_t err = 0;
    int32_t len = 0, code = k_pq_fail;
    KeyArrays a;
    if (!open_query(d, keys, request_kind, more_segments, a, &len, &code)) return code;
    const uint32_t flag = value_flag(request_kind);
    if (!read_keys(keys, len, a)) {
        trace_no_keys(d);
        return k_pq_fail;
    }
    if (!same(a.names[0], d.key_name)) {
        if (pd_list != nullptr && same(a.names[0], "*")) {
            trace(d.msg + k_q1_pd_add, LT_LEVEL_DEBUG, d.key_name);
            gx_do_nlist_add_string(pd_list, d.key_name);
        }
        return k_pq_not_here;
    }
    trace(d.msg + k_q1_processing, LT_LEVEL_DEBUG, d.key_name);
    uint32_t field_id = 0;
    const uint8_t* field_luid = nullptr;
    if (!key_field(d, ctx, id, k_q1_no_field, &field_id, &field_luid, &err)) return k_pq_fail;

    tallow_set_callsite_tag(site_tag(d.site + 2));
    arbor_traverse* t = arbor_traverse_create(ctx, id);
    if (t == nullptr) {
        trace(d.msg + k_q1_create_failed, LT_LEVEL_ERROR);
        return k_pq_fail;
    }
    arbor_id* deref = arbor_traverse_deref_table_get(ctx, id, t, &err);
    if (deref != nullptr) arbor_id_type_luid_set_mem(ctx, id, deref, d.table_luid, ZAN_LUID_LEN, &err);
    arbor_params_t_set_last(ctx, id, params, t, &err);
    if (err != 0) {
        trace(d.msg + k_q1_set_failed, LT_LEVEL_ERROR, err);
        arbor_traverse_destroy(ctx, id, t);
        return k_pq_fail;
    }
    // From here on the traversal is the request's, whatever happens.
    void* data = nullptr;
    uint32_t data_len = 0;
    arbor_fe_gx_rsltype_get_data(ctx, id, gx_ctx, flag, a.values[0], field_luid, &data, &data_len, &err);
    store_key(ctx, id, t, field_luid, field_id, data, data_len, &err);
    __tallow_free(data);
    arbor_traverse_pq_set_value(ctx, id, t, 1, &err);
    if (err != 0) {
        trace(d.msg + k_q1_rsl_error, LT_LEVEL_ERROR, err);
        return k_pq_error;
    }
    return k_pq_taken;
}

int32_t compound_traverse(const CompoundDesc& c, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx,
                          gx_do_nvlist* keys, gx_do_nlist* /*pd_list: never listed*/, arbor_params_t* params,
                          uint32_t request_kind, uint32_t more_segments) {
    const QueryDesc& d = c.q;
    uint32_t err = 0;
    int32_t len = 0, code = k_pq_fail;
    KeyArrays a;
    if (!open_query(d, keys, request_kind, more_segments, a, &len, &code)) return code;
    const uint32_t flag = value_flag(request_kind);
    a.positions = static_cast<int32_t*>(__tallow_malloc(
        site_tag(d.site + 2), &__TY_tinfot_ptr_int32, __TY_tinfon_int32, &__TY_tinfot_ptr_default,
        __TY_tinfon_default, static_cast<size_t>(static_cast<int64_t>(len)) * sizeof(int32_t)));
    if (a.positions == nullptr) {
        a.release();   // the two arrays go before the trace
        trace(d.msg + k_qc_positions_failed, LT_LEVEL_ERROR);
        return k_pq_error;
    }
    if (!read_keys(keys, len, a)) {
        trace_no_keys(d);
        return k_pq_fail;
    }
    // Every part by name, first occurrence; one missing part and the key is not this table's.
    for (uint32_t f = 0; f < c.nparts; ++f) {
        int32_t at = 0;
        while (at < a.read && !same(a.names[at], c.parts[f].name)) ++at;
        if (at == a.read) return k_pq_not_here;
        a.positions[f] = at;
    }
    trace(d.msg + k_qc_processing, LT_LEVEL_DEBUG);
    uint32_t field_id = 0;
    const uint8_t* field_luid = nullptr;
    if (!key_field(d, ctx, id, k_qc_no_field, &field_id, &field_luid, &err)) return k_pq_fail;

    tallow_set_callsite_tag(site_tag(d.site + 3));
    arbor_traverse* t = arbor_traverse_create(ctx, id);
    if (t == nullptr) return k_pq_fail;
    arbor_id* deref = arbor_traverse_deref_table_get(ctx, id, t, &err);
    if (deref != nullptr) arbor_id_type_luid_set_mem(ctx, id, deref, d.table_luid, ZAN_LUID_LEN, &err);
    arbor_params_t_set_last(ctx, id, params, t, &err);
    if (err != 0) return k_pq_fail;   // the traversal is left as it is

    tallow_set_callsite_tag(site_tag(d.site + 4));
    void* rec = c.create(ctx, id);
    if (rec == nullptr) return k_pq_fail;
    for (uint32_t f = 0; f < c.nparts; ++f) {
        const KeyPart& p = c.parts[f];
        void* obj = arbor_fe_gx_rsltype_get_rsl_obj(ctx, id, gx_ctx, flag, a.values[a.positions[f]], p.type_luid,
                                                    &err);
        // Tested before the setting: an error of the previous part's setter shows here.
        if (err != 0) {
            trace(d.msg + k_qc_unsupported + f, LT_LEVEL_ERROR);
            if (obj != nullptr) p.destroy(ctx, id, obj);
            c.destroy(ctx, id, rec);
            return k_pq_fail;
        }
        tallow_set_callsite_tag(site_tag(d.site + 5 + f));
        p.set(ctx, id, rec, obj, &err);
        if (obj != nullptr) p.destroy(ctx, id, obj);
    }
    uint32_t key_len = c.len(ctx, id, rec);
    auto* buf = static_cast<uint8_t*>(__tallow_malloc(site_tag(d.site + 5 + c.nparts), &__TY_tinfot_ptr_BYTE,
                                                      __TY_tinfon_BYTE, &__TY_tinfot_ptr_default, __TY_tinfon_default,
                                                      key_len));
    if (buf == nullptr) {
        c.destroy(ctx, id, rec);
        return k_pq_fail;
    }
    key_len = c.marshal(ctx, id, buf, rec, key_len, &err);
    c.destroy(ctx, id, rec);
    store_key(ctx, id, t, field_luid, field_id, buf, key_len, &err);
    __tallow_free(buf);
    arbor_traverse_pq_set_value(ctx, id, t, 1, &err);
    if (err != 0) {
        trace(d.msg + k_qc_unsupported + c.nparts, LT_LEVEL_ERROR, err);
        return k_pq_error;
    }
    return k_pq_taken;
}

}  // namespace zan::fe::resolve
