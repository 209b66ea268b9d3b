// Value operations of a table row. Nothing here renders by itself: the row's records are
// fetched and handed to their own to_vlist_all or attribute selector.
#include "table_ops.hpp"

#include <cstring>

#include "fe_internal.hpp"

namespace zan::fe::rows {
namespace {

constexpr uint32_t k_enomem = 12;

// The whole row: every record in turn; a failing or erring record ends the row.
int32_t whole(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* row, gx_do_vlist* vlist,
              int32_t with_state, uint32_t* err) {
    int32_t result = -1;
    for (uint32_t i = 0; i < t.count; ++i) {
        if (i != 0 && (result < 0 || *err != 0)) return result;
        result = t.tops[i].all(ctx, id, t.tops[i].field(ctx, id, row), vlist, with_state, err);
    }
    return result;
}

// One name below the row's top: the first record's selector, then, where there is a
// second record and the first did not add the value, the second's with the same token.
int32_t select(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* token, char** save, const void* row,
               gx_do_vlist* vlist, int32_t with_state, uint32_t* err) {
    int32_t result = t.tops[0].select(ctx, id, token, save, t.tops[0].field(ctx, id, row), vlist, with_state, err);
    for (uint32_t i = 1; i < t.count && result < 1 && *err == 0; ++i)
        result = t.tops[i].select(ctx, id, token, save, t.tops[i].field(ctx, id, row), vlist, with_state, err);
    return result;
}

}  // namespace

int32_t to_vlist(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_uri* uri, gx_do_nlist* names,
                 const void* row, gx_do_vlist* vlist, int32_t with_state, uint32_t* err) {
    if (names == nullptr || uri == nullptr || vlist == nullptr || err == nullptr) return -1;
    if (*err != 0) return 0;   // nothing added; not a success of the fetch
    const int32_t len = gx_do_nlist_get_len(names);
    if (len == 0) {
        if (*err != 0) return -1;
        return whole(t, ctx, id, row, vlist, with_state, err);
    }
    if (len < 1) return -1;

    // Only the last name's outcome counts: earlier failures and unknown names leave the
    // list shorter than the names, nothing more.
    int32_t result = -1;
    char* save = nullptr;
    char* copy = nullptr;
    for (int32_t i = 0; i < gx_do_nlist_get_len(names); ++i) {
        gx_do_name* name = gx_do_nlist_get_name(names, i);
        __tallow_free(copy);
        copy = __tallow_strdup(t.site, &__TY_tinfot_ptr_BYTE, __TY_tinfon_BYTE, &__TY_tinfot_ptr_default,
                               __TY_tinfon_default, gx_do_name_get_strname(name));
        if (copy == nullptr) {
            *err = k_enomem;
            return -1;
        }
        if (std::strcmp(copy, GX_DO_NAME_URI) == 0) {
            result = gx_do_vlist_add_mr_uri(vlist, uri);
            if (result < 0) {
                __tallow_free(copy);
                return result;
            }
            continue;
        }
        const char* token = strtok_r(copy, ".", &save);
        if (*err == 0) result = select(t, ctx, id, token != nullptr ? token : copy, &save, row, vlist, with_state, err);
    }
    __tallow_free(copy);
    return result == 0 ? -1 : result;
}

int32_t to_vlist_all(const Table& t, rsl_ctx_t ctx, rsl_ctx_id_t id, gx_do_uri* uri, const void* row,
                     gx_do_vlist* vlist, int32_t with_state, uint32_t* err) {
    if (uri == nullptr || vlist == nullptr || *err != 0) return -1;
    return whole(t, ctx, id, row, vlist, with_state, err);
}

}  // namespace zan::fe::rows
