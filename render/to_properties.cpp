// Rendering to properties: one template for the record and union types, one for their null
// renderings, one each for enumerations, flag sets and a table's slot 2. Every attribute is
// named by the dotted path of field texts from the top record down to it.
#include "to_properties.hpp"
#include "variant.hpp"

#include <cstdlib>
#include <cstring>
#include <span>

namespace zan::fe::props {
namespace {

constexpr size_t k_name_max = 256;
// A name buffer starts empty: it is only ever read up to its terminator (every append writes
// one, every cut back to the prefix writes one), so its first byte is all that clearing it
// has to set.
constexpr size_t k_buffer_size = k_name_max + 1;

// Appends a field text behind the prefix. The buffer ends at len whenever a field is named:
// the prefix was copied there, or a byte store cut the previous name back to it. So the
// text goes straight to len, with its terminator, cut to the room that is left as a bounded
// append would cut it (the room was checked before every field but an unchecked first one).
// The copy is in 16-byte moves, the last one overlapping, since a string move's start-up
// cost would outweigh texts of a few dozen characters.
inline void append_text(char* buffer, size_t len, const char* text, size_t n) {
    if (n > k_name_max - len) n = k_name_max - len;
    char* to = buffer + len;
    if (n >= 16) {
        for (size_t i = 0; i + 16 < n; i += 16) std::memcpy(to + i, text + i, 16);
        std::memcpy(to + n - 16, text + n - 16, 16);
    } else if (n >= 8) {
        std::memcpy(to, text, 8);
        std::memcpy(to + n - 8, text + n - 8, 8);
    } else if (n >= 4) {
        std::memcpy(to, text, 4);
        std::memcpy(to + n - 4, text + n - 4, 4);
    } else if (n > 0) {
        to[0] = text[0];
        to[n / 2] = text[n / 2];
        to[n - 1] = text[n - 1];
    }
    to[n] = 0;
}
constexpr int32_t k_fail = 3;
constexpr int32_t k_no_memory = 10002;

constinit const lt_unit& k_unit = gen::k_to_properties_unit;

void trace(uint32_t msg, uint32_t level) {
    if (msg != k_no_msg) __LTf_0(&k_unit, msg, g_arbor_fe_trace_module_id, level);
}

// A leaf or the discriminator: default comparison, state flag, handle, conversion.
int32_t leaf(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
             const void* obj, int32_t with_state, int8_t default_variant, uint32_t* err) {
    const LeafState st = leaf_state(f.core, ctx, id, obj, with_state, default_variant, err);
    const void* handle = f.core.get.one(ctx, id, obj, err);
    return f.conv(ctx, id, name, props, st.is_default, st.present, handle, err);
}

// A fixed or counted array: one attribute holding the list of its elements.
int32_t array(const Type& t, const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name,
              gx_do_properties* props, const void* obj, int32_t with_state, uint32_t* err) {
    const bool counted = f.core.kind == Kind::counted_array;
    if (with_state != 0 && !present_in(f.core.whole_state(ctx, id, obj, err))) {
        if (gx_do_properties_set_null(props, name) < 0) {
            trace(f.msg_array_null, LT_LEVEL_ERROR);
            return k_fail;
        }
        return 0;
    }
    gx_do_vlist* list = gx_do_vlist_new();
    if (list == nullptr) {
        trace(t.msg_vlist_new, LT_LEVEL_ERROR);
        return counted ? k_no_memory : k_fail;
    }
    const auto element = f.core.get.element;
    const auto element_state = f.core.state.element;
    uint32_t bound = array_bound(f.core, ctx, id, obj, err);
    for (uint32_t i = 0; i < bound; ++i) {
        if (*err == 0) {
            const int32_t present = with_state != 0 ? present_in(element_state(ctx, id, obj, i, err)) : 1;
            const void* handle = element(ctx, id, obj, i, err);
            if (f.core.vconv(ctx, id, list, 0, present, handle, err) < 0) {
                gx_do_vlist_deref(list);
                trace(f.core.msg, LT_LEVEL_ERROR);
                return k_fail;
            }
        }
        if (counted) bound = array_bound(f.core, ctx, id, obj, err);
    }
    const int32_t status = gx_do_properties_set_array(props, name, list);
    gx_do_vlist_deref(list);
    if (status != 0) trace(t.msg_set_array, LT_LEVEL_ERROR);
    return status;
}

// A sequence: one attribute holding an array of name-value lists, one per element.
int32_t sequence(const Field& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                 const void* obj, int32_t with_state, uint32_t* err) {
    const uint32_t msg_new = f.msg_seq, msg_nvlist = f.msg_seq + 1, msg_length = f.msg_seq + 2,
                   msg_set_array = f.msg_seq + 3;
    if (with_state != 0 && !present_in(f.core.state.one(ctx, id, obj, err))) {
        if (gx_do_properties_set_null(props, name) < 0) {
            trace(f.msg_array_null, LT_LEVEL_ERROR);
            return k_fail;
        }
        return 0;
    }
    nlist::SequenceLists lists;
    if (!lists.made()) {
        trace(msg_new, LT_LEVEL_ERROR);
        return k_no_memory;
    }
    int32_t failed = 0;
    const nlist::Sequence s{f.core.get.one, f.core.next, f.element, &k_unit, msg_length};
    switch (nlist::sequence_elements(s, ctx, id, obj, lists, with_state, err, &failed)) {
    case nlist::SeqStep::no_nvlist: trace(msg_nvlist, LT_LEVEL_ERROR); return k_no_memory;
    case nlist::SeqStep::element_failed: trace(f.core.msg, LT_LEVEL_ERROR); return k_fail;
    case nlist::SeqStep::done: break;
    }
    lists.release_element_lists();
    const int32_t status = gx_do_properties_set_array(props, name, lists.result);
    if (status != 0)
        __LTf_4(&k_unit, msg_set_array, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, static_cast<uint32_t>(status));
    return status;
}

// The fields of a record or of one of its extensions, in schema order, each named behind
// the prefix of length len already in buffer.
int32_t fields(const Type& t, const Field* fs, uint32_t count, rsl_ctx_t ctx, rsl_ctx_id_t id, char* buffer,
               size_t len, gx_do_properties* props, const void* obj, int32_t with_state, int8_t default_variant,
               uint32_t* err) {
    for (const Field& f : std::span(fs, count)) {
        // Repeated fields have no check of the error word before them.
        const bool is_array =
            f.core.kind == Kind::fixed_array || f.core.kind == Kind::counted_array || f.core.kind == Kind::sequence;
        if (f.core.kind == Kind::arm) {
            // Read afresh per arm, before the error word is looked at.
            const uint32_t selected = f.core.value(ctx, id, obj, err);
            if (*err != 0) continue;
            if (k_name_max - len < f.len) return k_fail;
            append_text(buffer, len, f.text, f.len);
            int32_t status;
            if (selected == f.core.arm) {
                status = f.nested(ctx, id, buffer, props, f.core.get.one(ctx, id, obj, err),
                                  with_state, err);
                if (status != 0) trace(f.core.msg, LT_LEVEL_ERROR);
            } else {
                status = f.nested_null(nullptr, 0, buffer, props, err);
                if (status != 0) trace(f.core.msg_null, LT_LEVEL_ERROR);
            }
            if (status != 0) return status;
            buffer[len] = 0;
            continue;
        }
        if (f.core.kind == Kind::chars) {
            // The characters are fetched before the room check.
            if (*err != 0) continue;
            const LeafState st = leaf_state(f.core, ctx, id, obj, with_state, default_variant, err);
            bool no_room = false;
            const int32_t status = with_chars(f.core, ctx, id, obj, err, [&](const char* chars) {
                if (k_name_max - len < f.len) {
                    no_room = true;
                    return k_fail;
                }
                append_text(buffer, len, f.text, f.len);
                return var_string_to_properties(ctx, id, buffer, props, st.is_default, st.present, chars, err);
            });
            if (no_room) return k_fail;
            if (status != 0) {
                trace(f.core.msg, LT_LEVEL_ERROR);
                return status;
            }
            buffer[len] = 0;
            continue;
        }
        if (!is_array && *err != 0) continue;
        if (k_name_max - len < f.len) return k_fail;
        append_text(buffer, len, f.text, f.len);
        int32_t status;
        switch (f.core.kind) {
        case Kind::nested:
            status = f.nested(ctx, id, buffer, props, f.core.get.one(ctx, id, obj, err), with_state,
                              err);
            break;
        case Kind::fixed_array:
        case Kind::counted_array: status = array(t, f, ctx, id, buffer, props, obj, with_state, err); break;
        case Kind::sequence: status = sequence(f, ctx, id, buffer, props, obj, with_state, err); break;
        default: status = leaf(f, ctx, id, buffer, props, obj, with_state, default_variant, err); break;
        }
        if (status != 0) {
            if (!is_array) trace(f.core.msg, LT_LEVEL_ERROR);
            return status;
        }
        buffer[len] = 0;
    }
    return 0;
}

// Renders the extensions of level above the variant as nulls under the incoming prefix.
int32_t extensions(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, char* buffer, size_t len,
                   gx_do_properties* props, const void* obj, int32_t with_state, int8_t variant,
                   int8_t default_variant, uint32_t* err) {
    for (uint32_t k = 1; k <= t.core.levels; ++k) {
        const Extension& x = t.core.extensions[k - 1];
        if (variant >= static_cast<int32_t>(k)) {
            const int32_t status =
                fields(t, x.core.fields, x.core.count, ctx, id, buffer, len, props, obj, with_state, default_variant,
                       err);
            if (status != 0) return status;
            continue;
        }
        __LTf_0(&k_unit, x.core.msg_null, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG);
        int32_t status = 0;
        if (x.null != nullptr) {
            status = x.null(nullptr, 0, prefix, props, err);   // as every null rendering is called
        } else {
            // No attributes: only the prefix is checked.
            char scratch[k_buffer_size];
            std::memset(scratch, 0, sizeof scratch);
            if (*err == 0 && std::strlen(prefix) > k_name_max) status = k_fail;
        }
        if (status != 0) {
            __LTf_4(&k_unit, x.core.msg_error, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG,
                    static_cast<uint32_t>(status));
            return status;
        }
    }
    return 0;
}

}  // namespace

int32_t render(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
               const void* obj, int32_t with_state, uint32_t* err) {
    char buffer[k_buffer_size];
    buffer[0] = '\0';
    const auto default_variant = static_cast<int8_t>(zan_config_defaults_default_get_variant(ctx));
    if (*err != 0) return 0;
    const size_t prefix_len = std::strlen(prefix);
    if (prefix_len > k_name_max) {
        __LTf_15(&k_unit, t.msg_name_long, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, prefix, k_name_max);
        return k_fail;
    }
    __strcat_to_buf(k_buffer_size, buffer, prefix);
    const size_t len = prefix_len;   // the whole prefix fitted

    const int8_t variant = t.core.reads_variant ? record_variant(&k_unit, t.core.msg_variant, obj) : 0;

    const int32_t status = fields(t, t.core.fields, t.core.count, ctx, id, buffer, len, props, obj, with_state,
                                  default_variant, err);
    if (status != 0) return status;
    return t.core.levels != 0 ? extensions(t, ctx, id, prefix, buffer, len, props, obj, with_state, variant,
                                      default_variant, err)
                         : 0;
}

int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
                    uint32_t* err) {
    char buffer[k_buffer_size];
    buffer[0] = '\0';
    // The lenient form (an extension's) takes a null prefix, and then names the first field
    // without a room check; the strict one traces its null arguments.
    if (t.lenient ? props == nullptr || err == nullptr : prefix == nullptr || err == nullptr) {
        if (!t.lenient) trace(t.msg_null_args, LT_LEVEL_ERROR);
        return k_fail;
    }
    if (*err != 0) return 0;
    size_t len = 0;
    bool check_first = true;
    if (prefix == nullptr) {
        if (t.core.count == 0) return 0;
        check_first = false;
    } else {
        len = std::strlen(prefix);
        if (len > k_name_max) return k_fail;
        __strcat_to_buf(k_buffer_size, buffer, prefix);
    }
    (void)ctx;
    (void)id;
    bool first = true;
    for (const Field& f : std::span(t.core.fields, t.core.count)) {
        if (*err != 0) return 0;
        if ((check_first || !first) && k_name_max - len < f.len) return k_fail;
        first = false;
        append_text(buffer, len, f.text, f.len);
        const int32_t status = f.core.kind == Kind::nested || f.core.kind == Kind::arm
                                   ? f.nested_null(nullptr, 0, buffer, props, err)
                                   : gx_do_properties_set_null(props, buffer);
        if (status != 0) {
            trace(f.core.msg_null, LT_LEVEL_ERROR);
            return status;
        }
        buffer[len] = 0;
    }
    return 0;
}

int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                    int32_t is_default, int32_t present, const void* value, uint32_t* err) {
    if (*err != 0) return 0;
    if (e.reads_variant) (void)value_variant(&k_unit, e.msg_variant, value);
    const uint32_t n = e.value(ctx, id, value, err);
    if (n >= e.count) return k_fail;
    return enum_to_properties(ctx, id, name, props, is_default, present, e.names[n], err);
}

int32_t render_flags(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                     int32_t is_default, int32_t present, const void* value, uint32_t* err) {
    if (*err != 0) return 0;
    gx_do_vlist* list = gx_do_vlist_new();
    if (list == nullptr) return k_no_memory;
    add_set_bits(f, ctx, id, value, list, err);
    const int32_t status = bits_to_properties(ctx, id, name, props, is_default, present, list, err);
    gx_do_vlist_deref(list);
    return status;
}

int32_t render_table(const Top* tops, uint32_t count, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_properties* props,
                     const void* row, int32_t with_state, uint32_t* err) {
    if (*err != 0) return k_fail;
    for (uint32_t i = 0; i < count; ++i) {
        if (i != 0 && *err != 0) return 0;  // a record rendered, the next one not
        const int32_t status = tops[i].render(ctx, id, "", props, tops[i].get(ctx, id, row), with_state, err);
        if (status != 0) return status;
    }
    return 0;
}

}  // namespace zan::fe::props
