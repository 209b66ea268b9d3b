/* Data objects of the engine, as the front end uses them.
 *
 * These are imported: the front-end library declares them and links against nothing;
 * whoever loads it (the real engine, or our reference platform) provides the symbols.
 * All objects are opaque and reference counted; a _new gives the caller one reference
 * and _deref gives it back. Text results stay owned by the object they came from.
 */
#ifndef ZAN_FRAME_DATA_OBJECTS_H
#define ZAN_FRAME_DATA_OBJECTS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct gx_do_uri gx_do_uri;
typedef struct gx_do_uri_segment gx_do_uri_segment;
typedef struct gx_do_name gx_do_name;
typedef struct gx_do_nlist gx_do_nlist;
typedef struct gx_do_vlist gx_do_vlist;
typedef struct gx_do_nvlist gx_do_nvlist;
typedef struct gx_do_nvlist_item gx_do_nvlist_item;
typedef struct gx_do_value gx_do_value;
typedef struct gx_do_properties gx_do_properties;
typedef struct gx_do_strbuf gx_do_strbuf;

/* Caller-owned record of a walk over a list. Before the walk the caller fills it with
 * the fixed initial content: bytes 0-3 the 32-bit value 1, bytes 4-7 the value -1, the
 * rest zero (gx_do_iter_prepare does exactly that). */
typedef struct gx_do_iter {
    int32_t first;
    int32_t second;
    uint8_t state[24];
} gx_do_iter;

static inline void gx_do_iter_prepare(gx_do_iter* it) {
    it->first = 1;
    it->second = -1;
    for (size_t i = 0; i < sizeof it->state; ++i) it->state[i] = 0;
}

/* The text of the reserved attribute name that asks for a row's path. */
extern const char* GX_DO_NAME_URI;

/* Paths. Segment 0 is counted but never examined by the front end. */
int32_t gx_do_uri_get_segment_count(gx_do_uri* uri);
gx_do_uri_segment* gx_do_uri_get_segment(gx_do_uri* uri, int32_t index);
const char* gx_do_uri_segment_get_name(gx_do_uri_segment* segment);
gx_do_nvlist* gx_do_uri_segment_get_keys(gx_do_uri_segment* segment); /* NULL: no keys */

/* Names. */
const char* gx_do_name_get_strname(gx_do_name* name);
gx_do_nlist* gx_do_nlist_new(void);
void gx_do_nlist_deref(gx_do_nlist* list);
void gx_do_nlist_clear(gx_do_nlist* list);
int32_t gx_do_nlist_add_string(gx_do_nlist* list, const char* text); /* non-zero: success */
int32_t gx_do_nlist_get_len(gx_do_nlist* list);
gx_do_name* gx_do_nlist_get_name(gx_do_nlist* list, int32_t index); /* NULL beyond the end */
int32_t gx_do_nlist_remove(gx_do_nlist* list, int32_t index);
int32_t gx_do_nlist_iter(gx_do_nlist* list, gx_do_iter* it);
int32_t gx_do_nlist_has_next(gx_do_iter* it);
gx_do_name* gx_do_nlist_get_next(gx_do_iter* it);

/* Values. Adders answer negative on failure. */
gx_do_vlist* gx_do_vlist_new(void);
void gx_do_vlist_deref(gx_do_vlist* list);
void gx_do_vlist_clear(gx_do_vlist* list);
int32_t gx_do_vlist_get_len(gx_do_vlist* list);
int32_t gx_do_vlist_add_null(gx_do_vlist* list);
int32_t gx_do_vlist_add_all(gx_do_vlist* dest, gx_do_vlist* src);
int32_t gx_do_vlist_add_array(gx_do_vlist* dest, gx_do_vlist* list);
int32_t gx_do_vlist_add_sequence(gx_do_vlist* dest, gx_do_nvlist* list);
int32_t gx_do_vlist_add_mr_uri(gx_do_vlist* list, gx_do_uri* uri);

/* Name-value lists. */
gx_do_nvlist* gx_do_nvlist_new(void);
void gx_do_nvlist_deref(gx_do_nvlist* list);
int32_t gx_do_nvlist_get_len(gx_do_nvlist* list);
int32_t gx_do_nvlist_add_null(gx_do_nvlist* list, const char* name);
int32_t gx_do_nvlist_iter(gx_do_nvlist* list, gx_do_iter* it);
int32_t gx_do_nvlist_has_next(gx_do_iter* it);
gx_do_nvlist_item* gx_do_nvlist_get_next(gx_do_iter* it);
const char* gx_do_nvlist_item_get_name(gx_do_nvlist_item* item);
gx_do_value* gx_do_nvlist_item_get_value(gx_do_nvlist_item* item);

/* Properties: a map from attribute name to value, in insertion order. */
int32_t gx_do_properties_set_null(gx_do_properties* props, const char* name);
int32_t gx_do_properties_set_array(gx_do_properties* props, const char* name, gx_do_vlist* list);

/* String buffers. */
gx_do_strbuf* gx_do_strbuf_new(void);
void gx_do_strbuf_deref(gx_do_strbuf* buf);
void gx_do_strbuf_clear(gx_do_strbuf* buf);
int32_t gx_do_strbuf_add_string(gx_do_strbuf* buf, const char* text);
const char* gx_do_strbuf_to_string(gx_do_strbuf* buf);

#ifdef __cplusplus
}
#endif

#endif
