// The value operations of a table row: the whole row, or the attributes a name list asks
// for, as a value list. The generated code hands each table's constant descriptor to the
// templates of rows/table_ops.cpp.
#pragma once

#include <cstdint>

#include "traversal.h"

namespace zan::fe::rows {

using row_get_fn = const void* (*)(rsl_ctx_t, rsl_ctx_id_t, const void* row);
// <type>_to_vlist_all: the whole record.
using all_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_vlist* vlist, int32_t with_state,
                           uint32_t* err);
// <type>_to_vlist: the attribute a dotted name asks for, token by token.
using select_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const char* token, char** save_ptr, const void* obj,
                              gx_do_vlist* vlist, int32_t with_state, uint32_t* err);

// One record of a row: how it is fetched and rendered.
struct Top {
    row_get_fn field;         // tbl_<table>_<field>_get_field
    all_fn all;
    select_fn select;
};

// A table: its records in the order they are read (the key record first where there are
// two) and the call site of its name copies.
struct Table {
    const Top* tops;
    uint32_t count;           // 1 or 2
    uint32_t site;
};

// tbl_<table>_to_vlist and tbl_<table>_to_vlist_all.
int32_t to_vlist(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_uri* uri, gx_do_nlist* names,
                 const void* row, gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
int32_t to_vlist_all(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_uri* uri, const void* row,
                     gx_do_vlist* vlist, int32_t with_state, uint32_t* err);

}  // namespace zan::fe::rows
