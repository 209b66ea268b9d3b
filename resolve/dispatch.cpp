// The dispatcher's out-of-line steps: a marker found by the scan, and the query step after a
// path traverser took the segment. The scan and the chain are inline (resolve.hpp).
#include <cstring>

#include "resolve.hpp"
#include "trace.hpp"

namespace zan::fe::resolve {

void gate_take(const DispatchDesc& d, gx_do_nlist* pdc_list, int32_t index) {
    trace(d.msg, LT_LEVEL_DEBUG, d.marker);
    gx_do_nlist_remove(pdc_list, index);
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
