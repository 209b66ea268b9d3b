// Paired name and value rendering: one record into a name list and a value list, entry for
// entry, with the names relative to the record. Sequence fields of any family render their
// elements this way and pair the two lists into one name-value list per element.
#pragma once

#include <cstdint>

#include "traversal.h"

#include "leaf_conversions.h"

namespace zan::fe::nlist {

using type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_nlist* nlist, gx_do_vlist* vlist,
                            int32_t with_state, uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_nlist* nlist, gx_do_vlist* vlist, uint32_t* err);
// <leaf>_to_vlist: the list before the booleans, the value after them.
using leaf_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* list, int32_t is_default, int32_t present,
                            const void* value, uint32_t* err);
// <enum>_to_vlist and <flags>_to_vlist: the handle first.
using enum_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* handle, gx_do_vlist* list, int32_t is_default,
                            int32_t present, uint32_t* err);
using get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using value_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using element_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using element_state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using chars_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, char* buf, uint32_t size, uint32_t* err);
using next_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, const void* element, uint32_t* err);

enum class Kind : uint8_t {
    leaf,           // get, state; conv
    enumeration,    // get, state; econv (the discriminator too)
    chars,          // chars, length (null: the fixed 10-byte read), state
    nested,         // get; nested / nested_null
    arm,            // get; nested / nested_null; arm number; value = the discriminator
    fixed_array,    // element, element state, whole state; conv; bound in arm
    counted_array,  // the same with the count read through value
    sequence,       // first, next, state; nested = the element's rendering
};

enum class Default : uint8_t {
    none,
    arm_one,        // the discriminator is 1
    zero,           // the integer value is 0
    zero16,         // the low 16 bits of the integer value are 0
    ip_address,     // ip_address_is_default(value, "0.0.0.0")
    rsl_vstring,    // rsl_vstring_is_default(value, "0.0.0.0")
};

// Whether a value equals its schema default (the comparison of a field that has one).
int32_t is_default_value(Default d, value_fn value, get_fn get, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj,
                         uint32_t* err);

inline constexpr uint32_t k_no_msg = UINT32_MAX;

struct Field {
    const char* name;             // the entry's name: the field name, no dot
    const char* prefix;           // nested fields and arms: the name and a dot
    Kind kind;
    Default dflt;
    uint32_t arm;                 // arm number; bound of a fixed array
    union {
        get_fn one;
        element_fn element;       // fixed and counted arrays
        chars_fn chars;           // character arrays
        get_fn first;             // sequences: <type>_<field>_get_first
    } get;
    union {
        state_fn one;
        element_state_fn element; // arrays: per element
    } state;
    state_fn whole_state;         // fixed and counted arrays: the whole array's flag
    next_fn next;                 // sequences
    value_fn value;               // default comparison, discriminator, count or character length
    leaf_fn conv;                 // leaves and array elements
    enum_fn econv;                // enumerations, flag sets, the discriminator
    type_fn nested;               // nested record, arm type, sequence element
    null_fn nested_null;          // its null rendering
    uint32_t msg;                 // conversion, nested record, arm or element failed
    uint32_t msg_null;            // arm not selected failed; in a null rendering: set null / nested failed
    uint32_t msg_null_name;       // in a null rendering: add nlist failed
    uint32_t msg_length;          // fatal: the nested lists out of step
    uint32_t msg_more;            // arrays: vlist_new, add_array, null of an unset array;
                                  // sequences: xxx_new, nvlist_new, add_array, null of an unset one
};

struct Extension {
    const Field* fields;
    uint32_t count;
    uint32_t msg_null;            // debug "version < k Rendering extension ... as null.."
    uint32_t msg_error;           // debug "error(%d) in rendering extension ..."
};

struct Type {
    const Field* fields;          // schema order; a null rendering's: the extensions' too
    uint32_t count;
    const Extension* extensions;  // levels 1, 2, 3 in order
    uint32_t levels;
    bool reads_variant;           // false for the schema library's own base records, whose
                                  // extensions are therefore always null
    uint32_t msg_variant;         // fatal "<type> Received variant %d < base version %d"
};

// <type>_to_nlist_vlist_all and <type>_to_null_nlist_vlist.
int32_t render(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_nlist* nlist, gx_do_vlist* vlist,
                    uint32_t* err);

// The elements of a sequence field, as every family renders them: each element into the
// reused `names` and `values`, paired into a fresh name-value list and appended to `result`.
enum class SeqStep { done, no_nvlist, element_failed };
struct Sequence {
    get_fn first;
    next_fn next;
    type_fn element;
    const lt_unit* unit;          // of the caller's family, for the fatal trace
    uint32_t msg_length;          // fatal "<type> to_ nlist_vlist_all rendering error <field> %u %u"
};
// On element_failed *failed holds the element's result. The element's name-value list is
// released on every way out; the three lists stay the caller's.
SeqStep sequence_elements(const Sequence& s, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* result,
                          gx_do_nlist* names, gx_do_vlist* values, int32_t with_state, uint32_t* err,
                          int32_t* failed);

}  // namespace zan::fe::nlist

namespace zan::gen {
extern const char* const to_nlist_vlist_all_formats[];
extern const uint32_t k_to_nlist_vlist_all_format_count;
}  // namespace zan::gen
