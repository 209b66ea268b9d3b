/* What an engine sees of the front-end library: the initialiser it calls by name, and the
 * layout of the rows of the five arrays that the initialiser registers.
 *
 * The engine reaches everything else through what registration hands over; this header
 * only gives those rows and operations their shapes.
 */
#ifndef ZAN_FRAME_ZAN_FE_H
#define ZAN_FRAME_ZAN_FE_H

#include <stdint.h>

#include "data_objects.h"
#include "traversal.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ZAN_CONTEXT_NAME "zan_config_db_context"
#define ZAN_FE_INIT_SYMBOL "zan_config_db_data_model_fe_init"

enum {
    ZAN_TABLE_ROWS = 331,
    ZAN_TYPE_ROWS = 1129,
    ZAN_KIND_RECORD = 1,
    ZAN_KIND_BASE = 2,
    ZAN_KIND_ENUM = 3,
    ZAN_KIND_FLAGS = 4,
    ZAN_KIND_TABLE = 5,
};

typedef int32_t (*zan_fe_init_fn)(void);

/* Operations of a table row (zan_config_db_fe_gx_dispatch_vft). */
typedef int32_t (*zan_tbl_to_properties_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* row, gx_do_properties* props,
                                            int32_t with_state, uint32_t* err);
typedef int32_t (*zan_tbl_to_vlist_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_uri* uri, gx_do_nlist* names,
                                       const void* row, gx_do_vlist* vlist, int32_t with_state, uint32_t* err);
typedef int32_t (*zan_tbl_to_nvlist_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* row, gx_do_nvlist* nvlist,
                                        uint32_t* err);
typedef int32_t (*zan_columns_to_ntlist_fn)(arbor_ntlist* list, uint32_t* err);

/* Operations of a type row. */
typedef int32_t (*zan_type_to_properties_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix,
                                             gx_do_properties* props, const void* obj, int32_t with_state,
                                             uint32_t* err);
typedef int32_t (*zan_type_to_vlist_all_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* vlist,
                                            int32_t with_state, uint32_t* err);
typedef int32_t (*zan_type_to_ntlist_fn)(arbor_ntlist* list, const char* prefix, uint32_t* err);

/* Row of zan_config_db_table_dispatch_fe_table_vft: the table's field vector. */
typedef struct zan_table_vft_row {
    const zan_field_vft* vft;
} zan_table_vft_row;

/* Row of zan_config_db_fe_gx_dispatch_vft. */
typedef struct zan_gx_table_row {
    const char* table_name;
    uint32_t kind;
    zan_tbl_to_properties_fn to_properties;
    zan_tbl_to_vlist_fn to_vlist;
    zan_tbl_to_nvlist_fn to_nvlist;
    zan_columns_to_ntlist_fn columns_to_ntlist;
} zan_gx_table_row;

/* Row of zan_config_db_field_dispatch_type_field_lut: the type's field vector. */
typedef struct zan_type_field_row {
    const zan_field_vft* vft;
} zan_type_field_row;

/* Row of zan_config_db_fe_gx_type_dispatch_vft. */
typedef struct zan_gx_type_vlist_row {
    const char* name;
    uint32_t kind;
    zan_type_to_vlist_all_fn to_vlist_all;
} zan_gx_type_vlist_row;

/* Row of zan_config_db_type_gx_lut. */
typedef struct zan_gx_type_props_row {
    const char* name;
    uint32_t kind;
    zan_type_to_properties_fn to_properties;
} zan_gx_type_props_row;

int32_t zan_config_db_data_model_fe_init(void);

#ifdef __cplusplus
}
#endif

#endif
