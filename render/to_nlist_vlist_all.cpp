// Paired name and value rendering. A record appends, for each attribute in schema order, its
// value to `vlist` and then its name to `nlist`. A nested record is rendered into lists of
// its own, whose names come back up behind the field's prefix and whose values are copied
// over; so a name is the dotted path relative to the record that was asked for.
#include "to_nlist_vlist_all.hpp"
#include "variant.hpp"

#include <cstdlib>
#include <cstring>
#include <span>

namespace zan::fe::nlist {
namespace {

constinit const lt_unit& k_unit = gen::k_to_nlist_vlist_all_unit;

void trace(uint32_t msg, uint32_t level = LT_LEVEL_ERROR) {
    if (msg != k_no_msg) __LTf_0(&k_unit, msg, g_arbor_fe_trace_module_id, level);
}

void trace_number(uint32_t msg, int32_t n) {
    __LTf_4(&k_unit, msg, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, static_cast<uint32_t>(n));
}

[[noreturn]] void out_of_step(const lt_unit* unit, uint32_t msg, uint32_t names, uint32_t values) {
    __LTf_44(unit, msg, g_arbor_fe_trace_module_id, LT_LEVEL_FATAL, names, values);
    std::abort();
}

// The three objects a nested rendering owns, released on every way out.
struct Scratch {
    gx_do_nlist* names = nullptr;
    gx_do_vlist* values = nullptr;
    gx_do_strbuf* text = nullptr;
    ~Scratch() {
        if (names) gx_do_nlist_deref(names);
        if (values) gx_do_vlist_deref(values);
        if (text) gx_do_strbuf_deref(text);
    }
};

// A nested record or arm rendered into fresh lists (its full form when `null` is false,
// else its null rendering), the names joined behind the field's prefix.
int32_t nested(const Field& f, bool null, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err, uint32_t msg_failed) {
    Scratch s;
    s.names = gx_do_nlist_new();
    if (s.names) s.values = gx_do_vlist_new();
    if (s.values) s.text = gx_do_strbuf_new();
    if (s.text == nullptr) return -1;
    const int32_t result =
        null ? f.nested_null(ctx, id, s.names, s.values, err)
             : f.nested(ctx, id, f.core.get.one(ctx, id, obj, err), s.names, s.values, with_state, err);
    if (result < 0) {
        trace(msg_failed);
        return result;
    }
    const auto n = static_cast<uint32_t>(gx_do_nlist_get_len(s.names));
    const auto v = static_cast<uint32_t>(gx_do_vlist_get_len(s.values));
    if (n != v) out_of_step(&k_unit, f.msg_length, n, v);
    gx_do_iter it;
    gx_do_iter_prepare(&it);
    gx_do_nlist_iter(s.names, &it);
    while (gx_do_nlist_has_next(&it)) {
        gx_do_strbuf_clear(s.text);
        gx_do_strbuf_add_string(s.text, f.prefix);
        gx_do_strbuf_add_string(s.text, gx_do_name_get_strname(gx_do_nlist_get_next(&it)));
        if (gx_do_nlist_add_string(nlist, gx_do_strbuf_to_string(s.text)) == 0) return -1;
    }
    (void)gx_do_vlist_add_all(vlist, s.values);
    return result;
}


// A leaf, enumeration, flag set, discriminator or character array: its value.
int32_t leaf_value(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, const void* obj,
                   int32_t with_state, int8_t default_variant, uint32_t* err) {
    const LeafState st = leaf_state(f.core, ctx, id, obj, with_state, default_variant, err);
    if (f.core.kind == Kind::chars)
        return with_chars(f.core, ctx, id, obj, err, [&](const char* chars) {
            return var_string_to_vlist(ctx, id, vlist, st.is_default, st.present, chars, err);
        });
    const void* handle = f.core.get.one(ctx, id, obj, err);
    return f.core.kind == Kind::enumeration ? f.econv(ctx, id, handle, vlist, st.is_default, st.present, err)
                                            : f.core.vconv(ctx, id, vlist, st.is_default, st.present, handle, err);
}

// A fixed or counted array: one value, the array of its elements.
int32_t array(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, const void* obj,
              int32_t with_state, uint32_t* err) {
    const uint32_t msg_new = f.msg_more, msg_add = f.msg_more + 1, msg_null = f.msg_more + 2;
    if (with_state != 0 && !present_in(f.core.whole_state(ctx, id, obj, err))) {
        const int32_t r = gx_do_vlist_add_null(vlist);
        if (r < 0) trace(msg_null);
        return r;
    }
    gx_do_vlist* list = gx_do_vlist_new();
    if (list == nullptr) {
        trace(msg_new);
        return -1;
    }
    const bool counted = f.core.kind == Kind::counted_array;
    uint32_t bound = array_bound(f.core, ctx, id, obj, err);
    for (uint32_t i = 0; i < bound; ++i) {
        if (*err == 0) {
            const int32_t present = with_state != 0 ? present_in(f.core.state.element(ctx, id, obj, i, err)) : 1;
            const void* handle = f.core.get.element(ctx, id, obj, i, err);
            const int32_t r = f.core.vconv(ctx, id, list, 0, present, handle, err);
            if (r < 0) {
                trace(f.core.msg);
                gx_do_vlist_deref(list);
                return r;
            }
        }
        if (counted) bound = array_bound(f.core, ctx, id, obj, err);
    }
    const int32_t r = gx_do_vlist_add_array(vlist, list);
    if (r < 0) trace(msg_add);
    gx_do_vlist_deref(list);
    return r;
}

// A sequence: one value, the array of its elements' name-value lists.
int32_t sequence(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, const void* obj,
                 int32_t with_state, uint32_t* err) {
    const uint32_t msg_new = f.msg_more, msg_nvlist = f.msg_more + 1, msg_add = f.msg_more + 2,
                   msg_null = f.msg_more + 3;
    if (with_state != 0 && !present_in(f.core.state.one(ctx, id, obj, err))) {
        const int32_t r = gx_do_vlist_add_null(vlist);
        if (r < 0) trace(msg_null);
        return r;
    }
    SequenceLists lists;
    if (!lists.made()) {
        trace(msg_new);
        return -1;
    }
    int32_t failed = 0;
    const Sequence s{f.core.get.one, f.core.next, f.nested, &k_unit, f.msg_length};
    switch (sequence_elements(s, ctx, id, obj, lists, with_state, err, &failed)) {
    case SeqStep::no_nvlist: trace(msg_nvlist); return -1;
    case SeqStep::element_failed: trace(f.core.msg); return failed;
    case SeqStep::done: break;
    }
    lists.release_element_lists();
    const int32_t r = gx_do_vlist_add_array(vlist, lists.result);
    if (r < 0) __LTf_4(&k_unit, msg_add, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, static_cast<uint32_t>(r));
    return r;
}

// The fields of a record or of one of its extensions; *result is the last value's result.
int32_t fields(std::span<const Field> fs, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
               gx_do_vlist* vlist, int32_t with_state, int8_t default_variant, uint32_t* err, int32_t* result) {
    for (const Field& f : fs) {
        int32_t r;
        switch (f.core.kind) {
        case Kind::nested:
            // Called with the error word set too: it answers -1, and that is traced here.
            r = nested(f, false, ctx, id, obj, nlist, vlist, with_state, err, f.core.msg);
            if (r < 0) return r;
            *result = r;
            continue;
        case Kind::arm: {
            const uint32_t selected = f.core.value(ctx, id, obj, err);   // afresh for each arm
            if (selected == f.core.arm)
                r = nested(f, false, ctx, id, obj, nlist, vlist, with_state, err, f.core.msg);
            else if (*err == 0)
                r = nested(f, true, ctx, id, obj, nlist, vlist, with_state, err, f.core.msg_null);
            else
                continue;
            if (r < 0) return r;
            *result = r;
            continue;
        }
        case Kind::fixed_array:
        case Kind::counted_array: r = array(f, ctx, id, vlist, obj, with_state, err); break;
        case Kind::sequence: r = sequence(f, ctx, id, vlist, obj, with_state, err); break;
        default:
            if (*err != 0) continue;
            r = leaf_value(f, ctx, id, vlist, obj, with_state, default_variant, err);
            if (r < 0) {
                trace(f.core.msg);
                return r;
            }
            break;
        }
        if (r < 0) return r;
        *result = r;
        // The value stands in vlist already: a failure here leaves the lists out of step,
        // and the caller gets a failure.
        if (gx_do_nlist_add_string(nlist, f.name) == 0) return -1;
    }
    return 0;
}

// Levels above the variant give a null and the name for each attribute.
int32_t extensions(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
                   gx_do_vlist* vlist, int32_t with_state, int8_t variant, int8_t default_variant, uint32_t* err,
                   int32_t* result) {
    for (uint32_t k = 1; k <= t.levels; ++k) {
        const Extension& x = t.extensions[k - 1];
        if (variant >= static_cast<int32_t>(k)) {
            const int32_t r = fields({x.fields, x.count}, ctx, id, obj, nlist, vlist, with_state, default_variant,
                                     err, result);
            if (r < 0) return r;
            continue;
        }
        trace(x.msg_null, LT_LEVEL_DEBUG);
        if (*err != 0) {
            trace_number(x.msg_error, -1);
            return -1;
        }
        if (x.count == 0) {
            *result = 0;
            continue;
        }
        for (const Field& f : std::span(x.fields, x.count)) {
            const int32_t r = gx_do_vlist_add_null(vlist);
            if (r < 0) {
                trace_number(x.msg_error, r);
                return r;
            }
            *result = r;
            if (gx_do_nlist_add_string(nlist, f.name) == 0) return -1;
        }
    }
    return 0;
}

}  // namespace

int32_t render(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err) {
    const auto default_variant = static_cast<int8_t>(zan_config_defaults_default_get_variant(ctx));
    if (*err != 0 || obj == nullptr || nlist == nullptr || vlist == nullptr) return -1;
    const int8_t variant = t.reads_variant ? record_variant(&k_unit, t.msg_variant, obj) : 0;
    int32_t result = 0;
    const int32_t r = fields({t.fields, t.count}, ctx, id, obj, nlist, vlist, with_state, default_variant, err,
                             &result);
    if (r < 0) return r;
    if (t.levels != 0) {
        const int32_t x = extensions(t, ctx, id, obj, nlist, vlist, with_state, variant, default_variant, err,
                                     &result);
        if (x < 0) return x;
    }
    return result;
}

int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_nlist* nlist, gx_do_vlist* vlist,
                    uint32_t* err) {
    if (nlist == nullptr || vlist == nullptr || err == nullptr || *err != 0) return -1;
    int32_t result = 0;
    for (const Field& f : std::span(t.fields, t.count)) {
        if (f.core.kind == Kind::nested || f.core.kind == Kind::arm) {
            const int32_t r = nested(f, true, ctx, id, nullptr, nlist, vlist, 0, err, f.core.msg_null);
            if (r < 0) return r;
            result = r;
            continue;
        }
        const int32_t r = gx_do_vlist_add_null(vlist);
        if (r < 0) {
            trace(f.core.msg_null);
            return r;
        }
        result = r;
        if (gx_do_nlist_add_string(nlist, f.name) == 0) {
            trace(f.msg_null_name);
            return -1;
        }
    }
    return result;
}

SequenceLists::~SequenceLists() {
    if (result) gx_do_vlist_deref(result);
    release_element_lists();
}

void SequenceLists::release_element_lists() {
    if (names) gx_do_nlist_deref(names);
    if (values) gx_do_vlist_deref(values);
    names = nullptr;
    values = nullptr;
}

SeqStep sequence_elements(const Sequence& s, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, SequenceLists& lists,
                          int32_t with_state, uint32_t* err, int32_t* failed) {
    const void* element = s.first(ctx, id, obj, err);
    while (element != nullptr && *err == 0) {
        gx_do_nvlist* item = gx_do_nvlist_new();
        if (item == nullptr) return SeqStep::no_nvlist;
        const int32_t r = s.element(ctx, id, element, lists.names, lists.values, with_state, err);
        if (r < 0) {
            gx_do_nvlist_deref(item);
            *failed = r;
            return SeqStep::element_failed;
        }
        const auto n = static_cast<uint32_t>(gx_do_nlist_get_len(lists.names));
        const auto v = static_cast<uint32_t>(gx_do_vlist_get_len(lists.values));
        if (n != v) out_of_step(s.unit, s.msg_length, n, v);
        arbor_nvlist_from_nlist_vlist(item, lists.names, lists.values);
        (void)gx_do_vlist_add_sequence(lists.result, item);
        gx_do_nlist_clear(lists.names);
        gx_do_vlist_clear(lists.values);
        gx_do_nvlist_deref(item);
        element = s.next(ctx, id, obj, element, err);
    }
    return SeqStep::done;
}

}  // namespace zan::fe::nlist
