// The path traverser's match: one path traversal into params, the table's vector into the
// slot cell and its marker into pdc_list. The compare before it is inline (resolve.hpp).
#include <cstring>

#include "resolve.hpp"
#include "trace.hpp"

namespace zan::fe::resolve {

namespace {

// A new arbor_id holding a LUID and a field id, stored at `index` of the traversal's
// identity vector and released again (the vector keeps a copy). False: none could be made.
bool add_identity(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t index, const uint8_t* luid,
                  uint32_t field_id, uint32_t create_site, uint32_t* err) {
    tallow_set_callsite_tag(site_tag(create_site));
    arbor_id* aid = arbor_id_create(ctx, id);
    if (aid == nullptr) return false;
    arbor_id_type_luid_set_mem(ctx, id, aid, luid, ZAN_LUID_LEN, err);
    arbor_id_field_id_set_value(ctx, id, aid, field_id, err);
    tallow_set_callsite_tag(site_tag(create_site + 1));
    arbor_traverse_arbor_id_vec_set(ctx, id, t, index, aid, err);
    arbor_id_destroy(ctx, id, aid);
    return true;
}

}  // namespace

void path_list(const PathDesc& d, gx_do_nlist* pd_list) {
    trace(d.msg + k_p_pd_add, LT_LEVEL_DEBUG, d.label, d.segment);
    gx_do_nlist_add_string(pd_list, d.segment);
}

int32_t path_take(const PathDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nlist* pdc_list,
                  arbor_params_t* params, const void** table_vft_slot, const zan_field_vft* from) {
    const bool child = d.shape == Shape::child;
    uint32_t err = 0;
    trace(d.msg + k_p_found, LT_LEVEL_DEBUG, name);

    tallow_set_callsite_tag(site_tag(d.site));
    arbor_traverse* t = arbor_traverse_create(ctx, id);
    if (t == nullptr) {
        trace(d.msg + k_p_create_failed, LT_LEVEL_ERROR);
        return k_pq_error;
    }
    uint8_t pq_luid[ZAN_LUID_LEN];
    std::memcpy(pq_luid, d.pq_luid, sizeof pq_luid);
    arbor_traverse_pq_luid_set_mem(ctx, id, t, pq_luid, ZAN_LUID_LEN, &err);
    arbor_traverse_pq_set_value(ctx, id, t, 0, &err);
    arbor_id* deref = arbor_traverse_deref_table_get(ctx, id, t, &err);
    if (deref != nullptr) arbor_id_type_luid_set_mem(ctx, id, deref, d.table_luid, ZAN_LUID_LEN, &err);

    // Every failure after the creation: traced, the traversal dropped, an error returned.
    auto fail = [&](uint32_t msg) {
        trace(d.msg + msg, LT_LEVEL_ERROR);
        arbor_traverse_destroy(ctx, id, t);
        return k_pq_error;
    };
    if (child) {
        if (from == nullptr) return fail(k_p_no_from_table);
        uint32_t row_field_id = 0;
        const uint8_t* row_luid = nullptr;
        from->get_field(ctx, id, d.parent_row, &row_field_id, &row_luid, &err);
        if (!add_identity(ctx, id, t, 0, d.parent_luid, row_field_id, d.site + 1, &err)) return fail(k_p_id_failed);
        // Only the link field's id is used: the identity's LUID is the row field's.
        uint32_t link_field_id = 0;
        const uint8_t* link_luid = nullptr;
        d.link_info(ctx, id, d.link_field, &link_field_id, &link_luid, &err);
        if (row_luid != nullptr && !add_identity(ctx, id, t, 1, row_luid, link_field_id, d.site + 3, &err)) {
            return fail(k_p_id2_failed);
        }
    }

    arbor_params_t_set_last(ctx, id, params, t, &err);
    // The first error of any step since the creation shows here.
    if (err != 0) {
        trace(d.msg + (child ? k_p_set_failed_child : k_p_set_failed_root), LT_LEVEL_ERROR, err);
        arbor_traverse_destroy(ctx, id, t);
        return k_pq_error;
    }
    *table_vft_slot = d.vft;
    if (pdc_list != nullptr) {
        trace(d.msg + (child ? k_p_pdc_store_child : k_p_pdc_store_root), LT_LEVEL_DEBUG, d.label, d.marker);
        gx_do_nlist_add_string(pdc_list, d.marker);
    }
    return k_pq_taken;
}

}  // namespace zan::fe::resolve
