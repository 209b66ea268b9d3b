// The top dispatcher: walks the segments of a path and offers each to the chain of
// dispatchers (zan::fe::offer_segment, generated with the chain).
#include "resolve.hpp"
#include "trace.hpp"

namespace {
constexpr char k_root_marker[] = "ROOT";
}

extern "C" ZAN_FE_EXPORT int32_t fe_zan_config_db_zan_config_db_context_path_query_dispatch(
    rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri* uri, gx_do_nlist* pd_list, gx_do_nlist* pdc_list,
    arbor_params_t* params, uint64_t /*reserved: neither read nor passed on*/, uint32_t request_kind,
    const void** table_vft_slot) {
    using namespace zan::fe::resolve;
    const int32_t count = gx_do_uri_get_segment_count(uri);
    // Segment 0 is never looked at; segment 1 is offered whatever the count says.
    for (int32_t i = 1;; ++i) {
        gx_do_uri_segment* segment = gx_do_uri_get_segment(uri, i);
        trace(k_msg_processing_seg, LT_LEVEL_DEBUG, static_cast<uint32_t>(i));
        const uint32_t more = i + 1 < count ? 1 : 0;
        // Only a one-segment path entitles the root tables to list candidates.
        if (!more && i == 1 && pd_list != nullptr && pdc_list != nullptr)
            gx_do_nlist_add_string(pdc_list, k_root_marker);
        const int32_t code = zan::fe::offer_segment(ctx, id, gx_ctx, segment, pd_list, pdc_list, params, request_kind,
                                                    table_vft_slot, more);
        if (code == zan::fe::k_pq_not_here) {
            trace(k_msg_no_valid_path, LT_LEVEL_END);
            return code;
        }
        if (code != zan::fe::k_pq_taken || !more) return code;
    }
}
