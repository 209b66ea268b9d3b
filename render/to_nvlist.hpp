// Key rendering to name-value lists: a table row's key (one entry, or one per part of a
// compound key) and the name-value form of the enumerations. The generated code hands
// constant descriptors to the templates of render/to_nvlist.cpp.
#pragma once

#include <cstdint>

#include "descriptor.hpp"

namespace zan::fe::nvlist {

// The generated descriptors' namespace reaches these through its using-directive.
using fe::Enum;

using leaf_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_nvlist* nvlist, int32_t is_default,
                            int32_t present, const void* value, uint32_t* err);
using row_get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* row);
using key_type_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* key_name, gx_do_nvlist* nvlist,
                                const void* key_obj, uint32_t* err);

// One part of a compound key: its name in the list, its accessor, its conversion and the
// trace written when the conversion fails.
struct KeyPart {
    const char* name;
    get_fn get;
    leaf_fn conv;
    uint32_t msg;
};

struct KeyType {
    const KeyPart* parts;     // in declaration order
    uint32_t count;
};

// <key type>_to_nvlist.
int32_t key_type(const KeyType& k, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* key_name, gx_do_nvlist* nvlist,
                 const void* key_obj, uint32_t* err);

// A table's key: either one leaf of the row's record, or the key type of a compound key.
struct TableKey {
    row_get_fn field;         // tbl_<table>_<field>_get_field of the field holding the key
    const char* name;         // the key's name: the leaf's, or the key field's (for traces)
    get_fn get;               // <type>_<key>_get; null with a key type
    leaf_fn conv;             // the leaf's conversion; null with a key type
    key_type_fn compound;     // <key type>_to_nvlist; null for a single leaf
};
static_assert(k_plain_data<KeyPart, KeyType, TableKey>);

// tbl_<table>_to_nvlist.
int32_t table_key(const TableKey& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* row, gx_do_nvlist* nvlist,
                  uint32_t* err);

// <enum>_to_nvlist: only the values the handle's variant reaches.
int32_t enumeration(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nvlist* nvlist,
                    int32_t is_default, int32_t present, const void* handle, uint32_t* err);

}  // namespace zan::fe::nvlist

namespace zan::gen {
// The unit's message table.
extern const char* const to_nvlist_formats[];
extern const uint32_t k_to_nvlist_format_count;
extern const lt_unit k_to_nvlist_unit;   // constant data: no code runs for it at load
}  // namespace zan::gen
