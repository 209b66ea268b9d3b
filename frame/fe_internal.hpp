// Front-end internals shared by the frame, the family templates and the generated code.
// Nothing here is seen by an engine: what leaves the library is marked ZAN_FE_EXPORT and
// listed in the generated linker version script.
#pragma once

#include <cstdint>

#include "zan_fe.h"

// Marks a definition (and every declaration of it) as part of the library's interface.
#define ZAN_FE_EXPORT __attribute__((visibility("default")))

// The five constant arrays, defined by the generated code from the catalogue.
extern "C" {
ZAN_FE_EXPORT extern const zan_table_vft_row zan_config_db_table_dispatch_fe_table_vft[ZAN_TABLE_ROWS];
ZAN_FE_EXPORT extern const zan_gx_table_row zan_config_db_fe_gx_dispatch_vft[ZAN_TABLE_ROWS];
ZAN_FE_EXPORT extern const zan_type_field_row zan_config_db_field_dispatch_type_field_lut[ZAN_TYPE_ROWS];
ZAN_FE_EXPORT extern const zan_gx_type_vlist_row zan_config_db_fe_gx_type_dispatch_vft[ZAN_TYPE_ROWS];
ZAN_FE_EXPORT extern const zan_gx_type_props_row zan_config_db_type_gx_lut[ZAN_TYPE_ROWS];

ZAN_FE_EXPORT int32_t fe_zan_config_db_zan_config_db_context_path_query_dispatch(
    rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri* uri, gx_do_nlist* pd_list, gx_do_nlist* pdc_list,
    arbor_params_t* params, uint64_t reserved, uint32_t request_kind, const void** table_vft_slot);
ZAN_FE_EXPORT const void* zan_config_db_table_lookup(const char* name);
ZAN_FE_EXPORT const void* zan_config_db_type_lookup(const char* name);
}

// Type and pool names handed to the allocator with every allocation, and the per-thread
// cells in which the allocator keeps what it learnt about each of them. Weak, so that every
// module of a process may hold the same names, and hidden: they are nobody's interface.
#define ZAN_FE_TYPE_NAME __attribute__((weak, visibility("hidden"))) extern const char
#define ZAN_FE_TYPE_CELL __attribute__((weak, visibility("hidden"))) extern thread_local uint64_t
extern "C" {
ZAN_FE_TYPE_NAME __TY_tinfon_BYTE[];
ZAN_FE_TYPE_NAME __TY_tinfon_BYTE_PTR[];
ZAN_FE_TYPE_NAME __TY_tinfon_gx_do_value_PTR[];
ZAN_FE_TYPE_NAME __TY_tinfon_int32[];
ZAN_FE_TYPE_NAME __TY_tinfon_default[];
ZAN_FE_TYPE_CELL __TY_tinfot_ptr_BYTE;
ZAN_FE_TYPE_CELL __TY_tinfot_ptr_BYTE_PTR;
ZAN_FE_TYPE_CELL __TY_tinfot_ptr_gx_do_value_PTR;
ZAN_FE_TYPE_CELL __TY_tinfot_ptr_int32;
ZAN_FE_TYPE_CELL __TY_tinfot_ptr_default;
}

namespace zan::fe {

// Answers shared by the segment loop, the dispatchers and the traversers.
enum : int32_t {
    k_pq_fail = 0,       // a needed key is missing or unusable
    k_pq_taken = 1,      // the segment (or key) is this one's
    k_pq_not_here = 3,   // not recognised here: ask the next one
    k_pq_error = 5,      // no memory, or the database reported an error
};

// A dispatcher of the chain: the top dispatcher's arguments with the current segment in
// place of the path, and whether a further segment follows.
using dispatcher_fn = int32_t (*)(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri_segment* segment,
                                  gx_do_nlist* pd_list, gx_do_nlist* pdc_list, arbor_params_t* params,
                                  uint64_t reserved, uint32_t request_kind, const void** table_vft_slot,
                                  uint32_t more_segments);

// Offers one segment to the 23 dispatchers in chain order (generated with the chain, as
// direct calls). Answers the first code other than k_pq_not_here, or
// k_pq_not_here when the chain is exhausted.
int32_t offer_segment(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri_segment* segment,
                      gx_do_nlist* pd_list, gx_do_nlist* pdc_list, arbor_params_t* params, uint32_t request_kind,
                      const void** table_vft_slot, uint32_t more_segments);

}  // namespace zan::fe
