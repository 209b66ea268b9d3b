// Rendering to value lists: the whole-type renderings (<type>_to_vlist_all, and the null runs
// <type>_to_null_vlist of the types that can stand in an unselected arm), the attribute
// selectors (<type>_to_vlist), and the value-list forms of enumerations and flag sets. The
// generated code hands the constant descriptors below to the templates of
// render/to_vlist_all.cpp.
#pragma once

#include <cstdint>

#include "to_properties.hpp"

namespace zan::fe::vlist {

using props::chars_fn;
using props::Default;
using props::element_fn;
using props::element_state_fn;
using props::get_fn;
using props::k_no_msg;
using props::state_fn;
using props::value_fn;

// Shapes of the functions a descriptor refers to.
using all_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_vlist* vlist, int32_t with_state,
                           uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, uint32_t* err);
using select_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* token, char** save_ptr, const void* obj,
                              gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
// A leaf of the schema library: the list before the two booleans, the value after them.
using leaf_fn = props::vlist_fn;
// An enumeration or flag set of this library: the handle first.
using typed_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* handle, gx_do_vlist* vlist, int32_t is_default,
                             int32_t present, uint32_t* err);
using next_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, const void* element, uint32_t* err);
// A sequence element rendered as parallel name and value lists.
using pairs_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* element, gx_do_nlist* names, gx_do_vlist* values,
                             int32_t with_state, uint32_t* err);

enum class Kind : uint8_t {
    leaf,           // get, state; conv
    typed,          // enumeration or flag-set leaf: get, state; tconv
    discriminator,  // get, state; tconv = zan_cfg_union_to_vlist
    nested,         // get; nested, nested_null, select
    arm,            // get; value = the discriminator; arm number; nested, nested_null, select
    fixed_array,    // element get and state, whole state; conv per element; bound in arm
    counted_array,  // the same with the count read through value
    chars,          // chars get, state; value = length field (none: the fixed 10-byte read)
    sequence,       // get.one = first, next, state.one = whole state; pairs
};

struct Field {
    const char* name;             // the field's name as a selector token compares it
    Kind kind;
    Default dflt;
    uint32_t arm;                 // arm number of a union arm; bound of a fixed array
    union {
        get_fn one;               // leaves, nested records, arms; sequences: get_first
        element_fn element;       // fixed and counted arrays
        chars_fn chars;           // character arrays
    } get;
    union {
        state_fn one;             // leaves; sequences: the whole sequence's flag
        element_state_fn element; // fixed and counted arrays: per element
    } state;
    state_fn whole_state;         // fixed and counted arrays: the whole array's flag
    value_fn value;               // default comparison, discriminator, count or character length
    next_fn next;                 // sequences
    leaf_fn conv;                 // leaf and array element conversion
    typed_fn tconv;               // enumeration, flag set, discriminator
    all_fn nested;                // nested record or arm type
    null_fn nested_null;          // its null run
    select_fn select;             // its selector
    pairs_fn pairs;               // sequence element
    uint32_t msg;                 // to_vlist_all: failure of the field
    uint32_t msg_null;            // to_null_vlist: failure of the field; arms: to_vlist_all's null of the arm
    uint32_t msg_sel;             // selector: failed array or sequence element; extension: "rendering null for this"
    uint32_t msg_state_null;      // repeated fields: the null of an unset field failed (to_vlist_all)
    uint32_t msg_sel_state_null;  // sequences: the same in the selector
    uint32_t msg_fatal;           // sequences: names and values of an element differ (to_vlist_all)
    uint32_t msg_sel_fatal;       // the same in the selector
};

struct Extension {
    const Field* fields;          // rendered when the variant reaches the level
    uint32_t count;
    uint32_t msg_null;            // debug "version < k Rendering extension ... as null.."
    uint32_t msg_error;           // debug "error(%d) in rendering extension ..."
    uint32_t msg_sel;             // debug "version < k, cannot render value for attr in extension ..."
};

struct Type {
    const Field* fields;          // declaration order, discriminator and arms included
    uint32_t count;
    const Extension* extensions;  // levels 1, 2, 3 in order
    uint32_t levels;
    bool reads_variant;           // false for the schema library's own base records
    uint32_t msg_variant;         // fatal "<type> Received variant %d < base version %d" (to_vlist_all)
    uint32_t msg_sel_variant;     // the same in the selector
    uint32_t msg_vlist_new;       // arrays, to_vlist_all
    uint32_t msg_add_array;       // arrays, to_vlist_all
    uint32_t msg_sel_vlist_new;   // arrays, selector
    uint32_t msg_xxx_new;         // sequences, to_vlist_all: one of the three lists
    uint32_t msg_nvlist_new;      //   the element's nvlist
    uint32_t msg_seq_add_array;   //   "gx_do_vlist_add_array failed: %d"
    uint32_t msg_sel_xxx_new;     // sequences, selector
    uint32_t msg_sel_nvlist_new;
    uint32_t msg_sel_seq_add_array;
};

int32_t render_all(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* vlist,
                   int32_t with_state, uint32_t* err);
int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, uint32_t* err);
int32_t select(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* token, char** save_ptr, const void* obj,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err);

// An enumeration: its values' texts, indexed by value, and the extension level of each
// (null: all at the base level).
struct Enum {
    const char* const* names;
    const uint8_t* levels;
    uint32_t count;
    value_fn value;               // <enum>_get_value
    bool reads_variant;           // obj_type, zan_cfg_union
    uint32_t msg_variant;         // fatal "<enum> Recieved variant %d < base version 0"
};
int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                    int32_t is_default, int32_t present, uint32_t* err);

struct Flags {
    const char* const* names;     // bit 0 first
    uint32_t count;
    props::bit_fn bit;            // <flags>_get_value
};
int32_t render_flags(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                     int32_t is_default, int32_t present, uint32_t* err);

}  // namespace zan::fe::vlist

namespace zan::gen {
// The unit's message table.
extern const char* const to_vlist_formats[];
extern const uint32_t k_to_vlist_format_count;
}  // namespace zan::gen
