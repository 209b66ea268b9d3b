// Rendering to properties: the leaf conversions the family imports, and the descriptors the
// generated code hands to the templates of render/to_properties.cpp.
#pragma once

#include <cstdint>

#include "traversal.h"

#include "leaf_conversions.h"
#include "to_nlist_vlist_all.hpp"

namespace zan::fe::props {

// Shapes of the functions a descriptor refers to.
using type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props, const void* obj,
                            int32_t with_state, uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props, uint32_t* err);
using leaf_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                            int32_t present, const void* value, uint32_t* err);
using vlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* list, int32_t is_default, int32_t present,
                             const void* value, uint32_t* err);
using get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using value_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using element_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using element_state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using chars_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, char* buf, uint32_t size, uint32_t* err);
using is_default_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* value, const char* text, uint32_t* err);

enum class Kind : uint8_t {
    leaf,           // get, state; conv
    nested,         // get; nested / nested_null
    discriminator,  // get, state; conv = zan_cfg_union_to_properties
    arm,            // get; nested / nested_null; arm number
    fixed_array,    // element, element_state, whole state; vconv; bound
    counted_array,  // the same with the count read through count
    chars,          // chars, length (null: the fixed 10-byte read), state
    sequence,       // first (get.one), next, state; element: the element's paired rendering
};

using Default = nlist::Default;

// Message number meaning "this failure writes no trace".
inline constexpr uint32_t k_no_msg = UINT32_MAX;

struct Field {
    const char* text;             // field text as it joins the name: nested ones end in '.'
    uint16_t len;                 // its length
    Kind kind;
    Default dflt;
    uint32_t arm;                 // arm number of a union arm; array bound of a fixed array
    union {
        get_fn one;
        element_fn element;       // fixed and counted arrays
        chars_fn chars;           // character arrays
    } get;
    union {
        state_fn one;
        element_state_fn element; // fixed and counted arrays: per element
    } state;
    state_fn whole_state;         // arrays: the whole array's state flag
    value_fn value;               // default comparison, discriminator, count or character length
    leaf_fn conv;                 // leaf conversion (full form); character arrays: none
    vlist_fn vconv;               // array element conversion
    type_fn nested;               // nested record or arm type
    null_fn nested_null;          // its null rendering
    uint32_t msg;                 // failure trace of the field; k_no_msg: none
    uint32_t msg_null;            // failure trace of the field in a null rendering (arm: of its null rendering)
    uint32_t msg_array_null;      // arrays and sequences: gx_do_properties_set_null failed
    nlist::next_fn next;          // sequences: <type>_<field>_get_next
    nlist::type_fn element;       // sequences: <element>_to_nlist_vlist_all
    uint32_t msg_seq;             // sequences: xxx_new, nvlist_new, the fatal length line and
                                  // set_array failed, in this order
};

struct Extension {
    const Field* fields;          // rendered when the variant reaches the level
    uint32_t count;
    null_fn null;                 // the extension's lenient null rendering; null: it has no attributes
    uint32_t msg_null;            // debug "version < k Rendering extension ... as null.."
    uint32_t msg_error;           // debug "error(%d) in rendering extension ..."
};

struct Type {
    const Field* fields;          // schema order, discriminator and arms included
    uint32_t count;
    const Extension* extensions;  // levels 1, 2, 3 in order
    uint32_t levels;
    bool reads_variant;           // false for the schema library's own base records
    bool lenient;                 // the null rendering is the lenient form
    uint32_t msg_name_long;       // debug "name (%s) length greater than buffer size %zu"
    uint32_t msg_variant;         // fatal "<type> Received variant %d < base version %d"
    uint32_t msg_null_args;       // null rendering: "<type> to_properties null argument(s)"
    uint32_t msg_vlist_new;       // arrays: "<type> to_properties: gx_do_vlist_new failed"
    uint32_t msg_set_array;       // arrays: "<type> to_properties: gx_do_properties_set_array failed"
};

// <type>_to_properties, <type>_to_null_properties and the table's slot 2.
int32_t render(const Type& type, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
               const void* obj, int32_t with_state, uint32_t* err);
int32_t render_null(const Type& type, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
                    uint32_t* err);

// An enumeration: its values' texts, indexed by value.
struct Enum {
    const char* const* names;
    uint32_t count;
    value_fn value;               // <enum>_get_value
    bool reads_variant;           // obj_type, zan_cfg_union
    uint32_t msg_variant;         // fatal "<enum> Recieved variant %d < base version 0"
};
int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                    int32_t is_default, int32_t present, const void* value, uint32_t* err);

using bit_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t bit, uint32_t* err);
struct Flags {
    const char* const* names;     // bit 0 first
    uint32_t count;
    bit_fn bit;                   // <flags>_get_value
};
int32_t render_flags(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                     int32_t is_default, int32_t present, const void* value, uint32_t* err);

// Slot 2 of a table row: the row's top records, in order.
using row_get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* row);
struct Top {
    row_get_fn get;
    type_fn render;
};
int32_t render_table(const Top* tops, uint32_t count, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_properties* props,
                     const void* row, int32_t with_state, uint32_t* err);

}  // namespace zan::fe::props

namespace zan::gen {
// The unit's message table.
extern const char* const to_properties_formats[];
extern const uint32_t k_to_properties_format_count;
}  // namespace zan::gen
