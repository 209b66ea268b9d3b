// Rendering to value lists: the whole-type renderings (<type>_to_vlist_all, and the null runs
// <type>_to_null_vlist of the types that can stand in an unselected arm), the attribute
// selectors (<type>_to_vlist), and the value-list forms of enumerations and flag sets. The
// generated code hands the constant descriptors below to the templates of
// render/to_vlist_all.cpp.
#pragma once

#include <cstdint>

#include "to_properties.hpp"

namespace zan::fe::vlist {

// The generated descriptors' namespace reaches these through its using-directive.
using fe::Default;
using fe::Enum;
using fe::Flags;
using fe::k_no_msg;

// Shapes of the functions a descriptor refers to.
using all_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_vlist* vlist, int32_t with_state,
                           uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, uint32_t* err);
using select_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* token, char** save_ptr, const void* obj,
                              gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
// A sequence element rendered as parallel name and value lists.
using pairs_fn = nlist::type_fn;

enum class Kind : uint8_t {
    leaf,           // get, state; vconv
    typed,          // enumeration or flag-set leaf: get, state; tconv
    discriminator,  // get, state; tconv = zan_cfg_union_to_vlist
    nested,         // get; nested, nested_null, select
    arm,            // get; value = the discriminator; arm number; nested, nested_null, select
    fixed_array,    // element get and state, whole state; vconv per element; bound in arm
    counted_array,  // the same with the count read through value
    chars,          // chars get, state; value = length field (none: the fixed 10-byte read)
    sequence,       // get.one = first, next, state.one = whole state; pairs
};

struct Field {
    const char* name;             // the field's name as a selector token compares it
    FieldCore<Kind> core;         // core.vconv: leaves and array elements; core.msg: failure of the
                                  // field in to_vlist_all; core.msg_null: in to_null_vlist, and an
                                  // arm's null in to_vlist_all
    typed_fn tconv;               // enumeration, flag set, discriminator
    all_fn nested;                // nested record or arm type
    null_fn nested_null;          // its null run
    select_fn select;             // its selector
    pairs_fn pairs;               // sequence element
    uint32_t msg_sel;             // selector: failed array or sequence element; extension: "rendering null for this"
    uint32_t msg_state_null;      // repeated fields: the null of an unset field failed (to_vlist_all)
    uint32_t msg_sel_state_null;  // sequences: the same in the selector
    uint32_t msg_fatal;           // sequences: names and values of an element differ (to_vlist_all)
    uint32_t msg_sel_fatal;       // the same in the selector
};

struct Extension {
    ExtensionCore<Field> core;
    uint32_t msg_sel;             // debug "version < k, cannot render value for attr in extension ..."
};

struct Type {
    TypeCore<Field, Extension> core;  // core.msg_variant: to_vlist_all's
    uint32_t msg_sel_variant;     // fatal "<type> Received variant %d < base version %d" in the selector
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
static_assert(k_plain_data<Field, Extension, Type>);

int32_t render_all(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* vlist,
                   int32_t with_state, uint32_t* err);
int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* vlist, uint32_t* err);
int32_t select(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* token, char** save_ptr, const void* obj,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err);

// An enumeration (only the values the handle's variant reaches) and a flag set.
int32_t render_enum(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                    int32_t is_default, int32_t present, uint32_t* err);

int32_t render_flags(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* handle, gx_do_vlist* vlist,
                     int32_t is_default, int32_t present, uint32_t* err);

}  // namespace zan::fe::vlist

namespace zan::gen {
// The unit's message table.
extern const char* const to_vlist_formats[];
extern const uint32_t k_to_vlist_format_count;
extern const lt_unit k_to_vlist_unit;   // constant data: no code runs for it at load
}  // namespace zan::gen
