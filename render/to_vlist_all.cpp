// Rendering to value lists. A record renders as a flat run of values with no names: the same
// number of values in the same order whatever its union arms and state flags say, an
// unselected arm being filled with as many nulls as it has leaves. A selector renders the one
// attribute a dotted name asks for, walking the name token by token with strtok_r.
// Results: zero or more is success (the result of the last value added), negative failure.
#include "to_vlist_all.hpp"
#include "variant.hpp"

#include "to_nlist_vlist_all.hpp"

#include <cstdlib>
#include <cstring>
#include <span>

namespace zan::fe::vlist {
namespace {

constexpr size_t k_token_max = 256;
constexpr int32_t k_refused = -1;
constexpr int32_t k_no_memory = 10002;

constinit const lt_unit& k_unit = gen::k_to_vlist_unit;

void trace(uint32_t msg, uint32_t level) {
    if (msg != k_no_msg) __LTf_0(&k_unit, msg, g_arbor_fe_trace_module_id, level);
}

void trace_number(uint32_t msg, uint32_t level, int32_t number) {
    if (msg != k_no_msg) __LTf_4(&k_unit, msg, g_arbor_fe_trace_module_id, level, static_cast<uint32_t>(number));
}

// A negative instance variant is a broken invariant, not a status.
int8_t checked_variant(const Type& t, const void* obj, uint32_t msg) {
    return t.core.reads_variant ? record_variant(&k_unit, msg, obj) : 0;
}

// One leaf, enumeration, flag set, discriminator or character array: the default comparison,
// the state flag (only with with_state), the value, the conversion. Its result as it came.
int32_t leaf(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* vlist,
             int32_t with_state, int8_t default_variant, uint32_t* err) {
    const LeafState st = leaf_state(f.core, ctx, id, obj, with_state, default_variant, err);
    switch (f.core.kind) {
    case Kind::chars:
        return with_chars(f.core, ctx, id, obj, err, [&](const char* chars) {
            return var_string_to_vlist(ctx, id, vlist, st.is_default, st.present, chars, err);
        });
    case Kind::leaf:
        return f.core.vconv(ctx, id, vlist, st.is_default, st.present, f.core.get.one(ctx, id, obj, err), err);
    default: return f.tconv(ctx, id, f.core.get.one(ctx, id, obj, err), vlist, st.is_default, st.present, err);
    }
}

// A fixed or counted array, as one array value; its state flag may null it as a whole. The
// result of a null stands apart (first of the pair), that of the array value second.
struct ArrayMsgs {
    uint32_t vlist_new, element, add_array;
};
int32_t array(const Field& f, const ArrayMsgs& m, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj,
              gx_do_vlist* vlist, int32_t with_state, uint32_t* err, bool* nulled) {
    const bool counted = f.core.kind == Kind::counted_array;
    *nulled = false;
    if (with_state != 0 && !present_in(f.core.whole_state(ctx, id, obj, err))) {
        *nulled = true;
        return gx_do_vlist_add_null(vlist);
    }
    gx_do_vlist* list = gx_do_vlist_new();
    if (list == nullptr) {
        trace(m.vlist_new, LT_LEVEL_ERROR);
        return k_refused;
    }
    uint32_t bound = array_bound(f.core, ctx, id, obj, err);
    for (uint32_t i = 0; i < bound; ++i) {
        if (*err == 0) {
            const int32_t present = with_state != 0 ? present_in(f.core.state.element(ctx, id, obj, i, err)) : 1;
            const int32_t r = f.core.vconv(ctx, id, list, 0, present, f.core.get.element(ctx, id, obj, i, err), err);
            if (r < 0) {
                trace(m.element, LT_LEVEL_ERROR);
                gx_do_vlist_deref(list);
                return r;
            }
        }
        if (counted) bound = array_bound(f.core, ctx, id, obj, err);  // the count as it stands after each element
    }
    const int32_t r = gx_do_vlist_add_array(vlist, list);
    gx_do_vlist_deref(list);
    if (r < 0) trace(m.add_array, LT_LEVEL_ERROR);
    return r;
}

// A sequence of records, as one array value of name-value lists, one per element (walked as
// every family walks them). With with_state and an unset flag, one null instead (*nulled).
struct SeqMsgs {
    uint32_t state_null, xxx_new, nvlist_new, element, fatal, add_array;
};
int32_t sequence(const Field& f, const SeqMsgs& m, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj,
                 gx_do_vlist* vlist, int32_t with_state, uint32_t* err, bool* nulled) {
    *nulled = false;
    if (with_state != 0 && !present_in(f.core.state.one(ctx, id, obj, err))) {
        *nulled = true;
        const int32_t r = gx_do_vlist_add_null(vlist);
        if (r < 0) trace(m.state_null, LT_LEVEL_ERROR);
        return r;
    }
    nlist::SequenceLists lists;
    if (!lists.made()) {
        trace(m.xxx_new, LT_LEVEL_ERROR);
        return k_refused;
    }
    int32_t failed = 0;
    switch (nlist::sequence_elements({f.core.get.one, f.core.next, f.pairs, &k_unit, m.fatal}, ctx, id, obj, lists,
                                     with_state, err, &failed)) {
    case nlist::SeqStep::done: break;
    case nlist::SeqStep::no_nvlist: trace(m.nvlist_new, LT_LEVEL_ERROR); return k_refused;
    case nlist::SeqStep::element_failed: trace(m.element, LT_LEVEL_ERROR); return failed;
    }
    lists.release_element_lists();
    const int32_t r = gx_do_vlist_add_array(vlist, lists.result);
    if (r < 0) trace_number(m.add_array, LT_LEVEL_ERROR, r);
    return r;
}

// The fields of a record, or of one of its extensions, appended to vlist. Answers the result
// of the last value added (result on entry if none), or a failure.
int32_t all_fields(const Type& t, std::span<const Field> fields, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj,
                   gx_do_vlist* vlist, int32_t with_state, int8_t default_variant, int32_t result, uint32_t* err) {
    for (const Field& f : fields) {
        int32_t r;
        switch (f.core.kind) {
        case Kind::nested:
            // Called with the error word set too: it answers -1, and every level traces.
            r = f.nested(ctx, id, f.core.get.one(ctx, id, obj, err), vlist, with_state, err);
            if (r < 0) {
                trace(f.core.msg, LT_LEVEL_ERROR);
                return r;
            }
            break;
        case Kind::arm:
            if (f.core.value(ctx, id, obj, err) == f.core.arm) {
                r = f.nested(ctx, id, f.core.get.one(ctx, id, obj, err), vlist, with_state, err);
                if (r < 0) {
                    trace(f.core.msg, LT_LEVEL_ERROR);
                    return r;
                }
            } else {
                if (*err != 0) continue;
                r = f.nested_null(ctx, id, vlist, err);
                if (r < 0) {
                    trace(f.core.msg_null, LT_LEVEL_ERROR);
                    return r;
                }
            }
            break;
        case Kind::fixed_array:
        case Kind::counted_array: {
            bool nulled;
            r = array(f, {t.msg_vlist_new, f.core.msg, t.msg_add_array}, ctx, id, obj, vlist, with_state, err, &nulled);
            if (nulled) {
                if (r < 0) {
                    trace(f.msg_state_null, LT_LEVEL_ERROR);
                    return r;
                }
                continue;  // a null in place of the array leaves the result as it was
            }
            if (r < 0) return r;
            break;
        }
        case Kind::sequence: {
            bool nulled;
            r = sequence(f, {f.msg_state_null, t.msg_xxx_new, t.msg_nvlist_new, f.core.msg, f.msg_fatal,
                             t.msg_seq_add_array},
                         ctx, id, obj, vlist, with_state, err, &nulled);
            if (r < 0) return r;
            if (nulled) continue;
            break;
        }
        default:
            if (*err != 0) continue;  // a set error word leaves the leaf out
            r = leaf(f, ctx, id, obj, vlist, with_state, default_variant, err);
            if (r < 0) {
                trace(f.core.msg, LT_LEVEL_ERROR);
                return r;
            }
            break;
        }
        result = r;
    }
    return result;
}

}  // namespace

int32_t render_all(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* vlist,
                   int32_t with_state, uint32_t* err) {
    const auto default_variant = static_cast<int8_t>(zan_config_defaults_default_get_variant(ctx));
    if (*err != 0 || obj == nullptr || vlist == nullptr) return k_refused;
    const int8_t variant = checked_variant(t, obj, t.core.msg_variant);
    int32_t result = all_fields(t, std::span(t.core.fields, t.core.count), ctx, id, obj, vlist, with_state,
                                default_variant, 0, err);
    if (result < 0) return result;
    for (uint32_t k = 1; k <= t.core.levels; ++k) {
        const Extension& x = t.core.extensions[k - 1];
        if (variant >= static_cast<int32_t>(k)) {
            result = all_fields(t, std::span(x.core.fields, x.core.count), ctx, id, obj, vlist, with_state,
                                default_variant, result, err);
            if (result < 0) return result;
            continue;
        }
        trace(x.core.msg_null, LT_LEVEL_DEBUG);
        int32_t r = k_refused;
        if (*err == 0) {
            r = 0;  // an extension without attributes adds nothing
            for (uint32_t i = 0; i < x.core.count && r >= 0; ++i) r = gx_do_vlist_add_null(vlist);
        }
        if (r < 0) {
            trace_number(x.core.msg_error, LT_LEVEL_DEBUG, r);
            return r;
        }
        result = r;
    }
    return result;
}

int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, uint32_t* err) {
    if (vlist == nullptr || *err != 0) return k_refused;
    int32_t result = 0;
    auto run = [&](std::span<const Field> fields) {
        for (const Field& f : fields) {
            if (*err != 0) return true;  // set between two fields: ends with the latest result
            const int32_t r = f.core.kind == Kind::nested || f.core.kind == Kind::arm
                                  ? f.nested_null(ctx, id, vlist, err)
                                  : gx_do_vlist_add_null(vlist);
            if (r < 0) {
                trace(f.core.msg_null, LT_LEVEL_ERROR);
                result = r;
                return true;
            }
            result = r;
        }
        return false;
    };
    if (run(std::span(t.core.fields, t.core.count))) return result;
    for (uint32_t k = 0; k < t.core.levels; ++k)
        if (run(std::span(t.core.extensions[k].core.fields, t.core.extensions[k].core.count))) return result;
    return result;
}

int32_t select(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* token, char** save_ptr, const void* obj,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err) {
    const auto default_variant = static_cast<int8_t>(zan_config_defaults_default_get_variant(ctx));
    if (token == nullptr || *err != 0 || vlist == nullptr || *save_ptr == nullptr ||
        std::strlen(token) > k_token_max)
        return k_refused;
    const int8_t variant = checked_variant(t, obj, t.msg_sel_variant);

    auto enter = [&](const Field& f) {
        const char* next = strtok_r(nullptr, ".", save_ptr);
        return f.select(ctx, id, next, save_ptr, f.core.get.one(ctx, id, obj, err), vlist, with_state, err);
    };
    for (const Field& f : std::span(t.core.fields, t.core.count)) {
        if (std::strcmp(token, f.name) != 0) continue;
        switch (f.core.kind) {
        case Kind::nested: return enter(f);
        case Kind::arm:
            // An unselected arm stands as one null, whatever the rest of the name says.
            if (f.core.value(ctx, id, obj, err) == f.core.arm) return enter(f);
            return gx_do_vlist_add_null(vlist);
        case Kind::fixed_array:
        case Kind::counted_array: {
            bool nulled;
            return array(f, {t.msg_sel_vlist_new, f.msg_sel, k_no_msg}, ctx, id, obj, vlist, with_state, err,
                         &nulled);
        }
        case Kind::sequence: {
            // On success the answer is 0, as for a name this type does not know.
            bool nulled;
            const int32_t r = sequence(f, {f.msg_sel_state_null, t.msg_sel_xxx_new, t.msg_sel_nvlist_new, f.msg_sel,
                                           f.msg_sel_fatal, t.msg_sel_seq_add_array},
                                       ctx, id, obj, vlist, with_state, err, &nulled);
            return r < 0 ? r : 0;
        }
        default:
            if (*err != 0) continue;  // counts as not matched
            return leaf(f, ctx, id, obj, vlist, with_state, default_variant, err);
        }
    }
    for (uint32_t k = 1; k <= t.core.levels; ++k) {
        const Extension& x = t.core.extensions[k - 1];
        const std::span<const Field> fields(x.core.fields, x.core.count);
        if (variant < static_cast<int32_t>(k)) {
            trace(x.msg_sel, LT_LEVEL_DEBUG);
            for (const Field& f : fields) {
                if (std::strcmp(token, f.name) != 0) continue;
                trace(f.msg_sel, LT_LEVEL_DEBUG);
                return gx_do_vlist_add_null(vlist);
            }
            continue;
        }
        for (const Field& f : fields)
            if (*err == 0 && std::strcmp(token, f.name) == 0)
                return leaf(f, ctx, id, obj, vlist, with_state, default_variant, err);
    }
    return 0;
}

int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                    int32_t is_default, int32_t present, uint32_t* err) {
    if (vlist == nullptr || *err != 0) return k_refused;
    const int8_t variant = e.reads_variant ? value_variant(&k_unit, e.msg_variant, handle) : 0;
    const uint32_t n = e.value(ctx, id, handle, err);
    if (n >= e.count) return k_refused;
    // A value of an extension level above the instance's variant is not known to it.
    if (e.levels != nullptr && e.levels[n] > variant) return gx_do_vlist_add_null(vlist);
    return enum_to_vlist(ctx, id, vlist, is_default, present, e.names[n], err);
}

int32_t render_flags(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                     int32_t is_default, int32_t present, uint32_t* err) {
    if (*err != 0) return k_refused;
    gx_do_vlist* names = gx_do_vlist_new();
    if (names == nullptr) return k_no_memory;
    add_set_bits(f, ctx, id, handle, names, err);
    const int32_t r = bits_to_vlist(ctx, id, vlist, is_default, present, names, err);
    gx_do_vlist_deref(names);
    return r;
}

}  // namespace zan::fe::vlist
