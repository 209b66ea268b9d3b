/* Leaf conversions of the record-schema library, as the renderers import them: the
 * functions at the bottom of every rendering that put one value into a properties object
 * or a value list. The value handle is opaque; enum_to_properties takes the enumerator's
 * text, bits_to_properties a vlist of names and var_string_to_properties the characters.
 * Full forms answer 0 or a non-zero status; the *_to_vlist forms are negative on failure.
 */
#ifndef ZAN_FRAME_LEAF_CONVERSIONS_H
#define ZAN_FRAME_LEAF_CONVERSIONS_H

#include <stdint.h>

#include "data_objects.h"
#include "traversal.h"

#ifdef __cplusplus
extern "C" {
#endif
#define ZAN_LEAF_CONV(leaf)                                                                            \
    int32_t leaf##_to_properties(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props, \
                                 int32_t is_default, int32_t present, const void* value, uint32_t* err);
ZAN_LEAF_CONV(int32)
ZAN_LEAF_CONV(u_int32)
ZAN_LEAF_CONV(rsl_vstring)
ZAN_LEAF_CONV(ip_address)
ZAN_LEAF_CONV(rsl_mac_addr)
ZAN_LEAF_CONV(u_int8)
ZAN_LEAF_CONV(u_int64)
ZAN_LEAF_CONV(u_int16)
ZAN_LEAF_CONV(rsl_boolean)
ZAN_LEAF_CONV(int16)
#undef ZAN_LEAF_CONV
int32_t var_string_to_properties(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                                 int32_t is_default, int32_t present, const char* chars, uint32_t* err);
int32_t enum_to_properties(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                           int32_t is_default, int32_t present, const char* text, uint32_t* err);
int32_t bits_to_properties(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_properties* props,
                           int32_t is_default, int32_t present, gx_do_vlist* names, uint32_t* err);

/* One value appended to a vlist, or one named entry to an nvlist; negative on failure. */
#define ZAN_VLIST_CONV(leaf)                                                                           \
    int32_t leaf##_to_vlist(rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* list, int32_t is_default,        \
                            int32_t present, const void* value, uint32_t* err);                          \
    int32_t leaf##_to_nvlist(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nvlist* nvlist,      \
                             int32_t is_default, int32_t present, const void* value, uint32_t* err);
ZAN_VLIST_CONV(int32)
ZAN_VLIST_CONV(u_int32)
ZAN_VLIST_CONV(rsl_vstring)
ZAN_VLIST_CONV(ip_address)
ZAN_VLIST_CONV(rsl_mac_addr)
ZAN_VLIST_CONV(u_int8)
ZAN_VLIST_CONV(u_int64)
ZAN_VLIST_CONV(u_int16)
ZAN_VLIST_CONV(rsl_boolean)
ZAN_VLIST_CONV(int16)
#undef ZAN_VLIST_CONV
int32_t var_string_to_vlist(rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* list, int32_t is_default, int32_t present,
                            const char* chars, uint32_t* err);
int32_t enum_to_vlist(rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* list, int32_t is_default, int32_t present,
                      const char* text, uint32_t* err);
int32_t bits_to_vlist(rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_vlist* list, int32_t is_default, int32_t present,
                      gx_do_vlist* names, uint32_t* err);
int32_t enum_to_nvlist(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nvlist* nvlist, int32_t is_default,
                       int32_t present, const char* text, uint32_t* err);

/* The library's base types, as rows of the type vectors render them whole: one value. */
#define ZAN_BASE_TYPES(X)                                                                             \
    X(calendar_time) X(char) X(counter64) X(double) X(float) X(int8) X(int16) X(int32) X(int64)          \
    X(ip_address) X(ip_prefix) X(ipv4_addr) X(ipv4_maddr) X(ipv6_addr) X(ipv6_maddr) X(dcx_bytestr)     \
    X(rsl_aes_password_vstring) X(rsl_aes_vstring) X(rsl_mac_addr) X(rsl_password_vstring)              \
    X(rsl_phys_addr) X(rsl_username_vstring) X(rsl_vstring) X(timestamp) X(u_int8) X(u_int16)           \
    X(u_int32) X(u_int64)
#define ZAN_VLIST_ALL(type)                                                                            \
    int32_t type##_to_vlist_all(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* obj, gx_do_vlist* list,       \
                                int32_t with_state, uint32_t* err);
ZAN_BASE_TYPES(ZAN_VLIST_ALL)
ZAN_VLIST_ALL(rsl_boolean)
#undef ZAN_VLIST_ALL

int32_t ip_address_is_default(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* value, const char* text, uint32_t* err);
int32_t rsl_vstring_is_default(rsl_ctx_t ctx, rsl_ctx_id_t id, const void* value, const char* text, uint32_t* err);

#ifdef __cplusplus
}
#endif

#endif
