// The dispatcher template: the marker scan that gates pd_list, then the fall-through chain
// of path traversers, each match followed by the same table's query traverser.
#include <cstring>

#include "resolve.hpp"
#include "trace.hpp"

namespace zan::fe::resolve {

namespace {

// Takes every occurrence of the marker out of pdc_list. Answers whether pd_list may go
// down the chain: always when there is no pdc_list, else only if the marker was there.
bool open_gate(const DispatchDesc& d, gx_do_nlist* pdc_list) {
    if (pdc_list == nullptr) return true;
    bool found = false;
    int32_t index = 0;
    for (gx_do_name* name = gx_do_nlist_get_name(pdc_list, 0); name != nullptr;
         name = gx_do_nlist_get_name(pdc_list, index)) {
        const char* text = gx_do_name_get_strname(name);
        if (text == nullptr) break;
        if (std::strncmp(text, d.marker, d.marker_len + 1) == 0) {
            trace(d.msg, LT_LEVEL_DEBUG, d.marker);
            gx_do_nlist_remove(pdc_list, index);   // the next name moves into its place
            found = true;
        } else {
            ++index;
        }
    }
    return found;
}

}  // namespace

namespace {

// After a path traverser took the segment: the same table's query traverser, and the trace
// of what it answered when that is not success.
[[gnu::noinline]] int32_t query_after(const DispatchDesc& d, const ChainEntry& e, rsl_ctx_t ctx, rsl_ctx_id_t id,
                                      uint64_t gx_ctx, gx_do_uri_segment* segment, gx_do_nlist* gated,
                                      arbor_params_t* params, uint32_t request_kind, uint32_t more_segments) {
    const int32_t query =
        e.query(ctx, id, gx_ctx, gx_do_uri_segment_get_keys(segment), gated, params, request_kind, more_segments);
    if (query == k_pq_taken) return query;
    const uint32_t msg = d.msg + 1 + 2 * static_cast<uint32_t>(&e - d.chain);
    if (query == k_pq_not_here)
        trace(msg, LT_LEVEL_ERROR, e.label);
    else
        trace(msg + 1, LT_LEVEL_ERROR);
    return query;
}

}  // namespace

int32_t dispatch(const DispatchDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri_segment* segment,
                 gx_do_nlist* pd_list, gx_do_nlist* pdc_list, arbor_params_t* params, uint32_t request_kind,
                 const void** table_vft_slot, uint32_t more_segments) {
    gx_do_nlist* gated = open_gate(d, pdc_list) ? pd_list : nullptr;
    // The loop keeps only what the path traversers take: a miss is one indirect call.
    const ChainEntry* const end = d.chain + d.count;
    for (const ChainEntry* e = d.chain; e != end; ++e) {
        const int32_t path = e->path(ctx, id, segment, gated, pdc_list, params, table_vft_slot);
        if (path == k_pq_not_here) [[likely]]
            continue;
        if (path != k_pq_taken) return path;
        return query_after(d, *e, ctx, id, gx_ctx, segment, gated, params, request_kind, more_segments);
    }
    return k_pq_not_here;
}

}  // namespace zan::fe::resolve
