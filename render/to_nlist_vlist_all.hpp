// Paired name and value rendering: one record into a name list and a value list, entry for
// entry, with the names relative to the record. Sequence fields of any family render their
// elements this way and pair the two lists into one name-value list per element.
#pragma once

#include <cstdint>

#include "descriptor.hpp"

namespace zan::fe::nlist {

using type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_nlist* nlist, gx_do_vlist* vlist,
                            int32_t with_state, uint32_t* err);
using null_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_nlist* nlist, gx_do_vlist* vlist, uint32_t* err);
// The generated descriptors' namespace reaches these through its using-directive.
using fe::Default;
using fe::k_no_msg;

enum class Kind : uint8_t {
    leaf,           // get, state; vconv
    enumeration,    // get, state; econv (the discriminator too)
    chars,          // chars, length (null: the fixed 10-byte read), state
    nested,         // get; nested / nested_null
    arm,            // get; nested / nested_null; arm number; value = the discriminator
    fixed_array,    // element, element state, whole state; vconv; bound in arm
    counted_array,  // the same with the count read through value
    sequence,       // first, next, state; nested = the element's rendering
};

struct Field {
    const char* name;             // the entry's name: the field name, no dot
    const char* prefix;           // nested fields and arms: the name and a dot
    FieldCore<Kind> core;         // core.vconv: leaves and array elements; core.msg: conversion, nested
                                  // record, arm or element failed; core.msg_null: arm not selected
                                  // failed, in a null rendering set null / nested failed
    typed_fn econv;               // enumerations, flag sets, the discriminator
    type_fn nested;               // nested record, arm type, sequence element
    null_fn nested_null;          // its null rendering
    uint32_t msg_null_name;       // in a null rendering: add nlist failed
    uint32_t msg_length;          // fatal: the nested lists out of step
    uint32_t msg_more;            // arrays: vlist_new, add_array, null of an unset array;
                                  // sequences: xxx_new, nvlist_new, add_array, null of an unset one
};

using Extension = ExtensionCore<Field>;
// A null rendering's fields: the extensions' too.
using Type = TypeCore<Field, Extension>;
static_assert(k_plain_data<Field, Extension, Type>);

// <type>_to_nlist_vlist_all and <type>_to_null_nlist_vlist.
int32_t render(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_nlist* nlist,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
int32_t render_null(const Type& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_nlist* nlist, gx_do_vlist* vlist,
                    uint32_t* err);

// The three lists of a sequence field: the array's list, then the name list and value list
// that every element is rendered into in turn. Made in this order, released with the object.
struct SequenceLists {
    gx_do_vlist* result = gx_do_vlist_new();
    gx_do_nlist* names = result ? gx_do_nlist_new() : nullptr;
    gx_do_vlist* values = names ? gx_do_vlist_new() : nullptr;
    SequenceLists() = default;
    SequenceLists(const SequenceLists&) = delete;
    SequenceLists& operator=(const SequenceLists&) = delete;
    ~SequenceLists();
    bool made() const { return values != nullptr; }
    void release_element_lists();   // once the walk is over, before the array is handed on
};

// The elements of a sequence field, as every family renders them: each element into the
// reused name and value lists, paired into a fresh name-value list and appended to the
// array's list. The element's name-value list is released on every way out.
enum class SeqStep { done, no_nvlist, element_failed };
struct Sequence {
    get_fn first;
    next_fn next;
    type_fn element;
    const lt_unit* unit;          // of the caller's family, for the fatal trace
    uint32_t msg_length;          // fatal "<type> to_ nlist_vlist_all rendering error <field> %u %u"
};
// On element_failed *failed holds the element's result.
SeqStep sequence_elements(const Sequence& s, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, SequenceLists& lists,
                          int32_t with_state, uint32_t* err, int32_t* failed);

}  // namespace zan::fe::nlist

namespace zan::gen {
extern const char* const to_nlist_vlist_all_formats[];
extern const uint32_t k_to_nlist_vlist_all_format_count;
extern const lt_unit k_to_nlist_vlist_all_unit;   // constant data: no code runs for it at load
}  // namespace zan::gen
