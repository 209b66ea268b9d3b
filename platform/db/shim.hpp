// The hand-written accessor templates and the macros through which generated code defines
// the database names: each named function is one line that hands its descriptor to the
// template. Only generated files include this header.
#pragma once

#include <cstdint>

#include "desc.hpp"
#include "traversal.h"

namespace zan::db::acc {

using desc::FieldDesc;
using desc::RecordDesc;
using desc::TableDesc;

// Fields of a record.
const void* get(const FieldDesc& f, const void* obj, uint32_t* err);
uint8_t state(const FieldDesc& f, const void* obj, uint32_t* err);
uint32_t value(const FieldDesc& f, const void* obj, uint32_t* err);
const void* element(const FieldDesc& f, const void* obj, uint32_t i, uint32_t* err);
uint8_t element_state(const FieldDesc& f, const void* obj, uint32_t i, uint32_t* err);
uint32_t bound_value(const FieldDesc& f, const void* obj, uint32_t* err);
void chars(const FieldDesc& f, const void* obj, char* buf, uint32_t size, uint32_t* err);
const void* first(const FieldDesc& f, const void* obj, uint32_t* err);
const void* next(const FieldDesc& f, const void* obj, const void* elem, uint32_t* err);

// Values of enumerations and flag sets.
uint32_t enum_value(const void* handle, uint32_t* err);
uint32_t flag_value(const void* handle, uint32_t bit, uint32_t* err);

// Field lookups of the vectors.
void type_get_field(const RecordDesc& r, const char* name, uint32_t* id, const uint8_t** luid, uint32_t* err);
void no_fields(rsl_ctx_t ctx, rsl_ctx_id_t cid, const char* name, uint32_t* id, const uint8_t** luid, uint32_t* err);
void table_get_field(const TableDesc& t, const char* name, uint32_t* id, const uint8_t** luid, uint32_t* err);
const void* row_record(const TableDesc& t, unsigned index, const void* row);

// Key records of compound keys.
void* key_create(const RecordDesc& r);
void key_set(const FieldDesc& f, void* rec, const void* obj, uint32_t* err);
uint32_t key_len(const RecordDesc& r, const void* rec);
uint32_t key_marshal(const RecordDesc& r, uint8_t* buf, const void* rec, uint32_t len, uint32_t* err);
void key_destroy(const RecordDesc& r, void* rec);

}  // namespace zan::db::acc

// 16 identifier bytes from two 64-bit halves, high byte first.
#define ZDB_B_(v, s) static_cast<uint8_t>((v##ULL) >> (s))
#define ZDB_LUID(h, l)                                                                                   \
    {ZDB_B_(h, 56), ZDB_B_(h, 48), ZDB_B_(h, 40), ZDB_B_(h, 32), ZDB_B_(h, 24), ZDB_B_(h, 16), ZDB_B_(h, 8), \
     ZDB_B_(h, 0),  ZDB_B_(l, 56), ZDB_B_(l, 48), ZDB_B_(l, 40), ZDB_B_(l, 32), ZDB_B_(l, 24), ZDB_B_(l, 16), \
     ZDB_B_(l, 8),  ZDB_B_(l, 0)}

#define ZDB_CTX_ rsl_ctx_t, rsl_ctx_id_t
#define ZDB_GF_ARGS_ const char *n, uint32_t *fid, const uint8_t **l, uint32_t *e

// Descriptor of record type T whose fields start at F[S]; and the symbols of table tbl_X.
#define ZDB_R(T, S, N, B, L) {type_##T##_name, type_##T##_luid, &zan_##T##_field_vft, F + S, N, B, 0, L}
#define ZDB_T(X) table_tbl_##X##_name, table_tbl_##X##_luid, &tbl_##X##_table_field_vft

// A record type: name, identifier, field vector with its lookup (record R[i]).
#define ZDB_RECORD(T, I, H, L)                                                                        \
    extern "C" const char type_##T##_name[] = #T;                                                     \
    extern "C" const uint8_t type_##T##_luid[16] = ZDB_LUID(H, L);                                     \
    static void gf_##T(ZDB_CTX_, ZDB_GF_ARGS_) { zan::db::acc::type_get_field(R[I], n, fid, l, e); }  \
    extern "C" const zan_field_vft zan_##T##_field_vft = {type_##T##_name, type_##T##_luid, gf_##T};
// The named lookup of a parent row type.
#define ZDB_FIELD_INFO(T, I) \
    extern "C" void zan_##T##_get_field_info(ZDB_CTX_, ZDB_GF_ARGS_) { zan::db::acc::type_get_field(R[I], n, fid, l, e); }

// A library type, enumeration or flag set: name (with its prefix P), identifier, vector.
#define ZDB_TYPE(P, T, H, L)                                          \
    extern "C" const char P##_##T##_name[] = #T;                      \
    extern "C" const uint8_t type_##T##_luid[16] = ZDB_LUID(H, L);     \
    extern "C" const zan_field_vft zan_##T##_field_vft = {P##_##T##_name, type_##T##_luid, zan::db::acc::no_fields};
#define ZDB_ENUM_VALUE(T) \
    extern "C" uint32_t T##_get_value(ZDB_CTX_, const void* h, uint32_t* e) { return zan::db::acc::enum_value(h, e); }
#define ZDB_FLAG_VALUE(T)                                                    \
    extern "C" uint32_t T##_get_value(ZDB_CTX_, const void* h, uint32_t b, uint32_t* e) { \
        return zan::db::acc::flag_value(h, b, e);                            \
    }

// Accessors of field F[I], named P = <type>_<field>.
#define ZDB_GET_(P, I) \
    extern "C" const void* P##_get(ZDB_CTX_, const void* o, uint32_t* e) { return zan::db::acc::get(F[I], o, e); }
#define ZDB_STATE_(P, I) \
    extern "C" uint8_t P##_state_flag_get(ZDB_CTX_, const void* o, uint32_t* e) { return zan::db::acc::state(F[I], o, e); }
// leaf of a text, address, flag set or nested record: get, state
#define ZDB_LEAF(P, I) ZDB_GET_(P, I) ZDB_STATE_(P, I)
// integer, boolean or enumeration leaf: get, state, get_value
#define ZDB_NUM(P, I) \
    ZDB_LEAF(P, I)    \
    extern "C" uint32_t P##_get_value(ZDB_CTX_, const void* o, uint32_t* e) { return zan::db::acc::value(F[I], o, e); }
// fixed or counted array: element, element state, whole state
#define ZDB_ARRAY(P, I)                                                                    \
    extern "C" const void* P##_get(ZDB_CTX_, const void* o, uint32_t i, uint32_t* e) {     \
        return zan::db::acc::element(F[I], o, i, e);                                       \
    }                                                                                      \
    extern "C" uint8_t P##_state_flag_get(ZDB_CTX_, const void* o, uint32_t i, uint32_t* e) { \
        return zan::db::acc::element_state(F[I], o, i, e);                                 \
    }                                                                                      \
    extern "C" uint8_t P##_state_flag_whole_get(ZDB_CTX_, const void* o, uint32_t* e) {    \
        return zan::db::acc::state(F[I], o, e);                                            \
    }
// count of a counted array or length of a character array; P = <type>_<bound field>
#define ZDB_BOUND(P, I) \
    extern "C" uint32_t P##_get_value(ZDB_CTX_, const void* o, uint32_t* e) { return zan::db::acc::bound_value(F[I], o, e); }
// character array: the characters into a buffer, state
#define ZDB_CHARS(P, I)                                                                        \
    extern "C" void P##_get(ZDB_CTX_, const void* o, char* b, uint32_t n, uint32_t* e) {       \
        zan::db::acc::chars(F[I], o, b, n, e);                                                 \
    }                                                                                          \
    ZDB_STATE_(P, I)
// sequence of records: first, next, state
#define ZDB_SEQ(P, I)                                                                                           \
    extern "C" const void* P##_get_first(ZDB_CTX_, const void* o, uint32_t* e) { return zan::db::acc::first(F[I], o, e); } \
    extern "C" const void* P##_get_next(ZDB_CTX_, const void* o, const void* x, uint32_t* e) {                  \
        return zan::db::acc::next(F[I], o, x, e);                                                               \
    }                                                                                                           \
    ZDB_STATE_(P, I)

// Key record operations of a compound key (record R[I]) and the setter of its field F[J].
#define ZDB_KEY(K, I)                                                                                      \
    extern "C" void* K##_create(ZDB_CTX_) { return zan::db::acc::key_create(R[I]); }                      \
    extern "C" uint32_t K##_len(ZDB_CTX_, const void* r) { return zan::db::acc::key_len(R[I], r); }       \
    extern "C" uint32_t K##_marshal(ZDB_CTX_, uint8_t* b, const void* r, uint32_t n, uint32_t* e) {       \
        return zan::db::acc::key_marshal(R[I], b, r, n, e);                                               \
    }                                                                                                      \
    extern "C" void K##_destroy(ZDB_CTX_, void* r) { zan::db::acc::key_destroy(R[I], r); }
#define ZDB_KEY_SET(P, J) \
    extern "C" void P##_set(ZDB_CTX_, void* r, const void* x, uint32_t* e) { zan::db::acc::key_set(F[J], r, x, e); }

// A table (position T[I]): name, identifier, field lookup and vector.
#define ZDB_TABLE(X, I, H, L)                                                                                     \
    extern "C" const char table_tbl_##X##_name[] = "tbl_" #X;                                                     \
    extern "C" const uint8_t table_tbl_##X##_luid[16] = ZDB_LUID(H, L);                                            \
    extern "C" void tbl_##X##_get_field(ZDB_CTX_, ZDB_GF_ARGS_) { zan::db::acc::table_get_field(T[I], n, fid, l, e); } \
    extern "C" const zan_field_vft tbl_##X##_table_field_vft = {table_tbl_##X##_name, table_tbl_##X##_luid,          \
                                                                 tbl_##X##_get_field};
// The top record N of a row of table T[I], named after its row type R.
#define ZDB_ROW(X, R, I, N) \
    extern "C" const void* tbl_##X##_##R##_get_field(ZDB_CTX_, const void* row) { return zan::db::acc::row_record(T[I], N, row); }
