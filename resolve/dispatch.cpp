// The dispatcher's two out-of-line steps: the marker scan that gates pd_list, and the query
// step after a path traverser took the segment. The chain itself is inline (resolve.hpp).
#include <cstring>

#include "resolve.hpp"
#include "trace.hpp"

namespace zan::fe::resolve {

// Always open when there is no pdc_list, else only if the marker was there.
gx_do_nlist* open_gate(const DispatchDesc& d, gx_do_nlist* pd_list, gx_do_nlist* pdc_list) {
    if (pdc_list == nullptr) return pd_list;
    bool found = false;
    int32_t index = 0;
    for (gx_do_name* name = gx_do_nlist_get_name(pdc_list, 0); name != nullptr;
         name = gx_do_nlist_get_name(pdc_list, index)) {
        const char* text = gx_do_name_get_strname(name);
        if (text == nullptr) break;
        // Markers share the prefix "inst_tbl_": the library compare, without an inline start.
        if (std::strncmp(text, d.marker, d.marker_len + 1) == 0) {
            trace(d.msg, LT_LEVEL_DEBUG, d.marker);
            gx_do_nlist_remove(pdc_list, index);   // the next name moves into its place
            found = true;
        } else {
            ++index;
        }
    }
    return found ? pd_list : nullptr;
}

int32_t query_after(const DispatchDesc& d, uint32_t at, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx,
                    gx_do_uri_segment* segment, gx_do_nlist* gated, arbor_params_t* params, uint32_t request_kind,
                    uint32_t more_segments) {
    const ChainEntry& e = d.chain[at];
    const int32_t query =
        e.query(ctx, id, gx_ctx, gx_do_uri_segment_get_keys(segment), gated, params, request_kind, more_segments);
    if (query == k_pq_taken) return query;
    const uint32_t msg = d.msg + 1 + 2 * at;
    if (query == k_pq_not_here)
        trace(msg, LT_LEVEL_ERROR, e.label);
    else
        trace(msg + 1, LT_LEVEL_ERROR);
    return query;
}

}  // namespace zan::fe::resolve
