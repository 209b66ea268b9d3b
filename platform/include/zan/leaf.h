/* Leaf conversions of the reference platform: the functions at the bottom of every
 * rendering that put one value into a properties object or a value list.
 *
 * Common rules of the full forms (<leaf>_to_properties):
 *   - An error word already set on entry: return 0 and touch nothing (props untouched,
 *     the word kept). The conversions never clear a set error word.
 *   - present 0: `name` is set to null, carrying the is_default mark; the value handle is
 *     not read (it may be NULL).
 *   - present 1: the handle is read. A handle that is no value, or a value of another
 *     leaf word, sets the error word to EINVAL (22) and returns 0 with props untouched.
 *   - The value is set under `name` with the conversion's leaf word ("int32", "enum",
 *     "bits", "var_string", ...) and the is_default mark (any non-zero is_default counts).
 *   - A failing properties set returns its status (-1); name NULL returns 22.
 *
 * Row forms (<type>_to_properties_perf): the attribute is `prefix`, is_default 0, present 1;
 * with_state is ignored. Types with a full form go through it; the others set the value
 * the handle holds under their type name as leaf word.
 *
 * Element conversions (*_to_vlist, *_to_nvlist): append exactly one value (null for
 * present 0) and answer the list's new length, or append nothing and answer -1: when the
 * append fails, when the error word is set on entry, or when the handle is no value of the
 * element's word (error word EINVAL). The renderers rely on it: a value added means a
 * positive answer.
 *
 * Default comparisons (*_is_default): 1 if the value equals the default given as text,
 * else 0; a handle that is no value sets EINVAL and answers 0; a set error word answers 0.
 */
#pragma once

#include <stdint.h>

#include "data_objects.h"
#include "traversal.h"
#include "leaf_conversions.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Full forms, element conversions and default comparisons: leaf_conversions.h. */

#define ZAN_LEAF_PERF(type)                                                                             \
    int32_t type##_to_properties_perf(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props, \
                                      const void* handle, int32_t with_state, uint32_t* err)

/* library kind-2 rows */
ZAN_LEAF_PERF(calendar_time);
ZAN_LEAF_PERF(dcx_bytestr);
ZAN_LEAF_PERF(ip_address);
ZAN_LEAF_PERF(ip_prefix);
ZAN_LEAF_PERF(ipv4_addr);
ZAN_LEAF_PERF(ipv4_maddr);
ZAN_LEAF_PERF(ipv6_addr);
ZAN_LEAF_PERF(ipv6_maddr);
ZAN_LEAF_PERF(rsl_aes_password_vstring);
ZAN_LEAF_PERF(rsl_aes_vstring);
ZAN_LEAF_PERF(rsl_mac_addr);
ZAN_LEAF_PERF(rsl_password_vstring);
ZAN_LEAF_PERF(rsl_phys_addr);
ZAN_LEAF_PERF(rsl_username_vstring);
ZAN_LEAF_PERF(rsl_vstring);
ZAN_LEAF_PERF(timestamp);
/* the library enumeration row */
ZAN_LEAF_PERF(rsl_boolean);
/* scalars */
ZAN_LEAF_PERF(char);
ZAN_LEAF_PERF(counter64);
ZAN_LEAF_PERF(double);
ZAN_LEAF_PERF(float);
ZAN_LEAF_PERF(int16);
ZAN_LEAF_PERF(int32);
ZAN_LEAF_PERF(int64);
ZAN_LEAF_PERF(int8);
ZAN_LEAF_PERF(u_int16);
ZAN_LEAF_PERF(u_int32);
ZAN_LEAF_PERF(u_int64);
ZAN_LEAF_PERF(u_int8);
#undef ZAN_LEAF_PERF

#ifdef __cplusplus
}
#endif
