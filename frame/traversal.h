/* Traversal objects, allocator, trace and record-schema operations, as the front end
 * uses them. Like data_objects.h, everything here is imported by name.
 *
 * Conventions: rsl_ctx is the engine's opaque 64-bit context and rsl_ctx_id its 32-bit
 * companion; both are passed on unchanged. err refers to the caller's 32-bit error word:
 * 0 means no error, and no operation here clears a word that is already set.
 */
#ifndef ZAN_FRAME_TRAVERSAL_H
#define ZAN_FRAME_TRAVERSAL_H

#include <stddef.h>
#include <stdint.h>

#include "data_objects.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef void* rsl_ctx_t;
typedef uint32_t rsl_ctx_id_t;

enum { ZAN_LUID_LEN = 16 };

typedef struct arbor_traverse arbor_traverse;
typedef struct arbor_id arbor_id;
typedef struct arbor_params_t arbor_params_t;

/* ------------------------------------------------------------------ traversal objects */
arbor_traverse* arbor_traverse_create(rsl_ctx_t ctx, rsl_ctx_id_t id);
void arbor_traverse_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t);
arbor_id* arbor_traverse_deref_table_get(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t* err);
void arbor_traverse_pq_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t pq, uint32_t* err);
void arbor_traverse_pq_luid_set_mem(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, const uint8_t* luid,
                                    uint32_t len, uint32_t* err);
void arbor_traverse_arbor_id_vec_set(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t index,
                                     const arbor_id* aid, uint32_t* err);
void arbor_traverse_key_luid_set_mem(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, const uint8_t* luid,
                                     uint32_t len, uint32_t* err);
void arbor_traverse_key_field_id_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t field_id,
                                           uint32_t* err);
void arbor_traverse_key_data_set_mem(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, const void* data,
                                     uint32_t len, uint32_t* err);

arbor_id* arbor_id_create(rsl_ctx_t ctx, rsl_ctx_id_t id);
void arbor_id_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_id* aid);
void arbor_id_type_luid_set_mem(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_id* aid, const uint8_t* luid, uint32_t len,
                                uint32_t* err);
void arbor_id_field_id_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_id* aid, uint32_t field_id, uint32_t* err);

/* Makes the traversal the last of the request and takes it over. */
void arbor_params_t_set_last(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_params_t* params, arbor_traverse* t,
                             uint32_t* err);

/* Key value to stored form, in fresh memory the caller frees with __tallow_free. */
void arbor_fe_gx_rsltype_get_data(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, uint32_t value_flag,
                                  gx_do_value* value, const uint8_t* field_luid, void** data, uint32_t* len,
                                  uint32_t* err);
/* Key value to a typed object (rsl_vstring, ip_address, int32) that the caller destroys. */
void* arbor_fe_gx_rsltype_get_rsl_obj(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, uint32_t value_flag,
                                      gx_do_value* value, const uint8_t* type_luid, uint32_t* err);

/* ------------------------------------------------------------------ registration */
typedef int32_t (*zan_path_query_dispatch_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri* uri,
                                              gx_do_nlist* pd_list, gx_do_nlist* pdc_list,
                                              arbor_params_t* params, uint64_t reserved, uint32_t request_kind,
                                              const void** table_vft_slot);
typedef const void* (*zan_name_lookup_fn)(const char* name);
typedef int32_t (*zan_mrst_lookup_fn)(const char* name);

int32_t arbor_register_fe_vectors(const char* context, zan_path_query_dispatch_fn dispatch,
                                  zan_name_lookup_fn table_lookup, zan_name_lookup_fn type_lookup,
                                  zan_mrst_lookup_fn type_mrst_lookup, zan_mrst_lookup_fn table_mrst_lookup,
                                  const void* type_dispatch_type_lut, const void* type_field_lut);
int32_t arbor_register_fe_gx_vectors(const char* context, const void* gx_dispatch_vft,
                                     const void* gx_type_dispatch_vft, const void* reserved,
                                     const void* type_gx_lut);

/* Pairs the names with the values, in order, into the name-value list. */
void arbor_nvlist_from_nlist_vlist(gx_do_nvlist* nvlist, gx_do_nlist* nlist, gx_do_vlist* vlist);

/* Column lists: the engine copies the name. Reports through err. */
typedef struct arbor_ntlist arbor_ntlist;
void arbor_fe_ntlist_add(arbor_ntlist* list, const char* name, uint32_t type_code, uint32_t* err);

/* ------------------------------------------------------------------ record-schema library */
int32_t rsl_get_instance_variant(const void* obj, int32_t a, int32_t b);
void rsl_store_err(rsl_ctx_t ctx, uint32_t error_number);
void rsl_vstring_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, void* obj);
void int32_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, void* obj);
void ip_address_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, void* obj);

/* ------------------------------------------------------------------ allocator */
void* __tallow_malloc(uint32_t site, uint64_t* type_cell, const char* type_name, uint64_t* pool_cell,
                      const char* pool_name, size_t size);
char* __tallow_strdup(uint32_t site, uint64_t* type_cell, const char* type_name, uint64_t* pool_cell,
                      const char* pool_name, const char* text);
void __tallow_free(void* p);
void tallow_set_callsite_tag(uint32_t site);

/* ------------------------------------------------------------------ compact trace */
/* A source unit's message table: one format per call site, in code order. */
typedef struct lt_unit {
    const char* name;
    uint32_t count;
    const char* const* formats;
} lt_unit;

enum {
    LT_LEVEL_FATAL = 0,
    LT_LEVEL_ERROR = 0x3000000,
    LT_LEVEL_END = 0x6000000,
    LT_LEVEL_DEBUG = 0x7000000,
};

extern uint16_t g_arbor_fe_trace_module_id;

void __LTf_0(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level);
void __LTf_1(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a);
void __LTf_4(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, uint32_t a);
void __LTf_11(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, const char* b);
void __LTf_14(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, uint32_t b);
void __LTf_15(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, size_t b);
void __LTf_44(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, uint32_t a, uint32_t b);

/* ------------------------------------------------------------------ bounded strings */
/* Appends within a buffer of size bytes (always terminated). */
void __strcat_to_buf(size_t size, char* dest, const char* src);
/* Safe-string append: refuses (and leaves dest empty) when src does not fit in room. */
int32_t strcat_s(char* dest, size_t room, const char* src);

/* ------------------------------------------------------------------ database library */
/* Field lookup by name: the field id and a reference to its 16-byte identifier. */
typedef void (*zan_get_field_fn)(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, uint32_t* field_id,
                                 const uint8_t** luid, uint32_t* err);

/* A table's or a type's field vector. The front end calls get_field only. */
typedef struct zan_field_vft {
    const char* name;
    const uint8_t* luid;
    zan_get_field_fn get_field;
} zan_field_vft;

int32_t zan_config_db_table_mrst_lookup(const char* name);
int32_t zan_config_db_type_dispatch_type_mrst_lookup(const char* name);
int32_t zan_config_defaults_default_get_variant(rsl_ctx_t ctx);

/* The database's own type table, handed to the engine as it stands. */
struct zan_db_type_lut;
extern const struct zan_db_type_lut zan_config_db_type_dispatch_type_lut;

#ifdef __cplusplus
}
#endif

#endif
