// What the descriptors of the rendering families have in common: the shapes of the accessors
// a field is read through and of the value-list conversions, the default comparison, the
// cores every family's Field, Extension and Type embed, and the descriptors of enumerations
// and flag sets.
// Descriptors are constant plain data the generator writes.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "traversal.h"

#include "leaf_conversions.h"

namespace zan::fe {

using get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using value_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t* err);
using element_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using element_state_fn = uint8_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t i, uint32_t* err);
using chars_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, char* buf, uint32_t size, uint32_t* err);
using next_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, const void* element, uint32_t* err);
using bit_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, uint32_t bit, uint32_t* err);
// <leaf>_to_vlist: the list before the two booleans, the value after them.
using vlist_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* list, int32_t is_default, int32_t present,
                             const void* value, uint32_t* err);
// <enum>_to_vlist and <flags>_to_vlist of this library: the handle first.
using typed_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* handle, gx_do_vlist* list, int32_t is_default,
                             int32_t present, uint32_t* err);

// How a leaf's value is compared with its schema default.
enum class Default : uint8_t {
    none,
    arm_one,        // the discriminator is 1
    zero,           // the integer value is 0
    zero16,         // the low 16 bits of the integer value are 0
    ip_address,     // ip_address_is_default(value, "0.0.0.0")
    rsl_vstring,    // rsl_vstring_is_default(value, "0.0.0.0")
};

// Message number meaning "this failure writes no trace".
inline constexpr uint32_t k_no_msg = UINT32_MAX;

// The members of a field descriptor that read the field, the same in every family; Kind is
// the family's own list of the shapes it renders.
template <class Kind>
struct FieldCore {
    Kind kind;
    Default dflt;
    uint32_t arm;                 // arm number of a union arm; bound of a fixed array; mask of
                                  // a counted array's count
    union {
        get_fn one;               // leaves, nested records, arms; sequences: the first element
        element_fn element;       // fixed and counted arrays
        chars_fn chars;           // character arrays
    } get;
    union {
        state_fn one;             // leaves, character arrays; sequences: the whole sequence's flag
        element_state_fn element; // fixed and counted arrays: per element
    } state;
    state_fn whole_state;         // fixed and counted arrays: the whole array's flag
    value_fn value;               // default comparison, discriminator, count or character length
    next_fn next;                 // sequences: the element after the one given
    vlist_fn vconv;               // array elements, and leaves where the family renders value lists
    uint32_t msg;                 // failure of the field; k_no_msg: no trace
    uint32_t msg_null;            // failure of the field in a null rendering (an arm: of its null rendering)
};

// The members of an extension group's descriptor every family shares.
template <class Field>
struct ExtensionCore {
    const Field* fields;          // rendered when the variant reaches the level
    uint32_t count;
    uint32_t msg_null;            // debug "version < k Rendering extension ... as null.."
    uint32_t msg_error;           // debug "error(%d) in rendering extension ..."
};

// The members of a record or union type's descriptor every family shares.
template <class Field, class Extension>
struct TypeCore {
    const Field* fields;          // declaration order, discriminator and arms included
    uint32_t count;
    const Extension* extensions;  // levels 1, 2, 3 in order
    uint32_t levels;
    bool reads_variant;           // false for the schema library's own base records, whose
                                  // extensions are therefore always null
    uint32_t msg_variant;         // fatal "<type> Received variant %d < base version %d"
};

// An enumeration: its values' texts indexed by value and, where a family renders only the
// values the instance's variant reaches, the extension level of each (0 for a base value).
struct Enum {
    const char* const* names;
    const uint8_t* levels;        // null: no value is gated
    uint32_t count;
    value_fn value;               // <enum>_get_value
    bool reads_variant;           // obj_type, zan_cfg_union
    uint32_t msg_variant;         // fatal "<enum> Recieved variant %d < base version 0"
};

struct Flags {
    const char* const* names;     // bit 0 first
    uint32_t count;
    bit_fn bit;                   // <flags>_get_value
};

// Descriptors stay constant plain data: the generated tables are brace-initialised aggregates
// the templates read in place.
template <class... T>
inline constexpr bool k_plain_data = ((std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T>) && ...);

static_assert(k_plain_data<Enum, Flags>);

// The names of the bits set in a flag-set value, as enumerators added to `list`. A failed
// bit read stays with that bit.
inline void add_set_bits(const Flags& f, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* value, gx_do_vlist* list,
                         uint32_t* err) {
    for (uint32_t bit = 0; bit < f.count; ++bit) {
        uint32_t local = 0;
        const uint32_t set = f.bit(ctx, id, value, bit, &local);
        if (local == 0 && set != 0) (void)enum_to_vlist(ctx, id, list, 0, 1, f.names[bit], err);
    }
}

// ------------------------------------------------------------------ reading a leaf
// Only the two low bits of a state flag count: bit 0 at default, bit 1 set to a value.
constexpr bool present_in(uint8_t state) { return (state & 3u) != 0; }

// Whether a value equals its schema default (the comparison of a field that has one).
inline int32_t is_default_value(Default d, value_fn value, get_fn get, rsl_ctx_t ctx, rsl_ctx_id_t id,
                                const void* obj, uint32_t* err) {
    switch (d) {
    case Default::none: return 0;
    case Default::arm_one: return value(ctx, id, obj, err) == 1;
    case Default::zero: return value(ctx, id, obj, err) == 0;
    case Default::zero16: return (value(ctx, id, obj, err) & 0xffffu) == 0;
    case Default::ip_address: return ip_address_is_default(ctx, id, get(ctx, id, obj, err), "0.0.0.0", err) != 0;
    case Default::rsl_vstring: return rsl_vstring_is_default(ctx, id, get(ctx, id, obj, err), "0.0.0.0", err) != 0;
    }
    return 0;
}

// What a leaf's conversion is told. is_default comes from the default comparison (none when
// the default variant is negative); only with with_state is the state flag read, and it can
// raise is_default (bit 0) but never lower it; present is its two low bits.
struct LeafState {
    int32_t is_default;
    int32_t present;
};
template <class Kind>
LeafState leaf_state(const FieldCore<Kind>& c, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, int32_t with_state,
                     int8_t default_variant, uint32_t* err) {
    LeafState s{default_variant >= 0 ? is_default_value(c.dflt, c.value, c.get.one, ctx, id, obj, err) : 0, 1};
    if (with_state != 0) {
        const uint8_t state = c.state.one(ctx, id, obj, err);
        if (s.is_default == 0) s.is_default = state & 1u;
        s.present = present_in(state);
    }
    return s;
}

// How many elements an array has now: a fixed array's bound, or the bits of a counted array's
// count that count. Read before the first element and again after each one.
template <class Kind>
uint32_t array_bound(const FieldCore<Kind>& c, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, uint32_t* err) {
    return c.kind == Kind::counted_array ? c.value(ctx, id, obj, err) & c.arm : c.arm;
}

// A character array's text, read as every family reads it: its length (the low 16 bits),
// stack room for that and a terminator, the length again, and the characters within the
// smaller of the two; an array without a length is read as ten characters. `use` is handed
// the text while the room lives.
template <class Kind, class Use>
int32_t with_chars(const FieldCore<Kind>& c, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, uint32_t* err,
                   Use use) {
    if (c.value == nullptr) {
        char chars[10] = {};
        c.get.chars(ctx, id, obj, chars, sizeof chars, err);
        return use(static_cast<const char*>(chars));
    }
    const uint32_t n = c.value(ctx, id, obj, err) & 0xffffu;
    char* chars = static_cast<char*>(__builtin_alloca(n + 1));
    std::memset(chars, 0, n + 1);
    const uint32_t again = c.value(ctx, id, obj, err) & 0xffffu;
    c.get.chars(ctx, id, obj, chars, (again < n ? again : n) + 1, err);
    return use(static_cast<const char*>(chars));
}

}  // namespace zan::fe
