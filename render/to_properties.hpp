// Rendering to properties: the leaf conversions the family imports, and the descriptors the
// generated code hands to the templates of render/to_properties.cpp.
#pragma once

#include <cstdint>

#include "descriptor.hpp"
#include "to_nlist_vlist_all.hpp"

namespace zan::fe::props {

// Shapes of the functions a descriptor refers to.
using type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props, const void* obj,
                            int32_t with_state, uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props, uint32_t* err);
using leaf_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                            int32_t present, const void* value, uint32_t* err);
using is_default_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* value, const char* text, uint32_t* err);

// The generated descriptors' namespace reaches these through its using-directive.
using fe::Default;
using fe::Enum;
using fe::Flags;
using fe::k_no_msg;

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

struct Field {
    const char* text;             // field text as it joins the name: nested ones end in '.'
    FieldCore<Kind> core;         // core.vconv: array elements
    leaf_fn conv;                 // leaf conversion (full form); character arrays: none
    type_fn nested;               // nested record or arm type
    null_fn nested_null;          // its null rendering
    nlist::type_fn element;       // sequences: <element>_to_nlist_vlist_all
    uint32_t msg_array_null;      // arrays and sequences: gx_do_properties_set_null failed
    uint32_t msg_seq;             // sequences: xxx_new, nvlist_new, the fatal length line and
                                  // set_array failed, in this order
    uint16_t len;                 // length of text
};

struct Extension {
    ExtensionCore<Field> core;
    null_fn null;                 // the extension's lenient null rendering; null: it has no attributes
};

struct Type {
    TypeCore<Field, Extension> core;
    bool lenient;                 // the null rendering is the lenient form
    uint32_t msg_name_long;       // debug "name (%s) length greater than buffer size %zu"
    uint32_t msg_null_args;       // null rendering: "<type> to_properties null argument(s)"
    uint32_t msg_vlist_new;       // arrays: "<type> to_properties: gx_do_vlist_new failed"
    uint32_t msg_set_array;       // arrays: "<type> to_properties: gx_do_properties_set_array failed"
};
static_assert(k_plain_data<Field, Extension, Type>);

// <type>_to_properties, <type>_to_null_properties and the table's slot 2.
int32_t render(const Type& type, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
               const void* obj, int32_t with_state, uint32_t* err);
int32_t render_null(const Type& type, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props,
                    uint32_t* err);

// An enumeration (its levels are not looked at: every value renders) and a flag set.
int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                    int32_t is_default, int32_t present, const void* value, uint32_t* err);

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
extern const lt_unit k_to_properties_unit;   // constant data: no code runs for it at load
}  // namespace zan::gen
