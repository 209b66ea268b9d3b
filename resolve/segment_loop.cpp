// The top dispatcher: walks the segments of a path and offers each to the chain of
// dispatchers.
//
// The chain asks every traverser in turn, each fetching the segment's name and comparing
// it with its own text; all of that is reading, and the 331 texts are all different. So
// the loop fetches the name once, looks its position up in the generated table of texts
// and goes straight to that traverser, doing on the way only what the chain does with an
// effect: the marker scans of the dispatchers in front of it and of its own, in chain
// order, and after a query that did not know the key, the scans of those behind it. A scan
// whose marker is not in pdc_list changes nothing, so the list is read once to learn which
// markers are there. A listing ("*") runs the chain itself (zan::fe::offer_segment), since
// every table of the level adds its name.
#include "resolve.hpp"
#include "trace.hpp"

namespace {

using namespace zan::fe::resolve;

constexpr char k_root_marker[] = "ROOT";

// The dispatchers whose marker pdc_list holds, one bit per place in the chain: the names
// a scan would see, in order up to the first one without text (where every scan stops).
uint32_t markers_in(gx_do_nlist* pdc_list) {
    uint32_t present = 0;
    for (int32_t index = 0;; ++index) {
        gx_do_name* name = gx_do_nlist_get_name(pdc_list, index);
        if (name == nullptr) return present;
        const char* text = gx_do_name_get_strname(name);
        if (text == nullptr) return present;
        const int32_t place = find_marker(text);
        if (place >= 0) present |= 1u << place;
    }
}

// The scan of one dispatcher, out of line: run only when its marker is in the list.
[[gnu::noinline]] gx_do_nlist* scan(uint32_t place, gx_do_nlist* pd_list, gx_do_nlist* pdc_list) {
    return scan_markers(*k_dispatchers[place], pd_list, pdc_list);
}

// The scans of the dispatchers at places [from, to) that have an effect.
void scan_range(uint32_t present, uint32_t from, uint32_t to, gx_do_nlist* pd_list, gx_do_nlist* pdc_list) {
    for (uint32_t k = from; k < to; ++k)
        if (present & (1u << k)) scan(k, pd_list, pdc_list);
}

// The chain for a segment whose name is not "*": what the dispatchers do with an effect, in
// their order, and the one traverser that takes the name (none for NULL or a name no
// position has).
int32_t offer_direct(const char* name, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri_segment* segment,
                     gx_do_nlist* pd_list, gx_do_nlist* pdc_list, arbor_params_t* params, uint32_t request_kind,
                     const void** table_vft_slot, uint32_t more_segments) {
    const SegmentPlace* place = name != nullptr ? find_segment(name) : nullptr;
    const uint32_t present = pdc_list != nullptr ? markers_in(pdc_list) : 0;
    if (place == nullptr) {
        scan_range(present, 0, k_dispatcher_count, pd_list, pdc_list);
        return zan::fe::k_pq_not_here;
    }
    const uint32_t own = place->dispatcher;
    scan_range(present, 0, own, pd_list, pdc_list);
    gx_do_nlist* gated = pdc_list == nullptr           ? pd_list
                         : present & (1u << own) ? scan(own, pd_list, pdc_list)
                                                 : nullptr;
    const PathDesc& path = *place->path;
    const zan_field_vft* from =
        path.shape == Shape::root ? nullptr : static_cast<const zan_field_vft*>(*table_vft_slot);
    int32_t code = path_take(path, ctx, id, name, pdc_list, params, table_vft_slot, from);
    if (code == zan::fe::k_pq_taken)
        code = query_after(*k_dispatchers[own], place->at, ctx, id, gx_ctx, segment, gated, params, request_kind,
                           more_segments);
    if (code != zan::fe::k_pq_not_here) return code;
    // The query did not know the key: the dispatchers behind still scan, and the list now
    // holds the marker the traverser stored.
    if (pdc_list != nullptr) scan_range(markers_in(pdc_list), own + 1, k_dispatcher_count, pd_list, pdc_list);
    return code;
}

}  // namespace

extern "C" ZAN_FE_EXPORT int32_t fe_zan_config_db_zan_config_db_context_path_query_dispatch(
    rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri* uri, gx_do_nlist* pd_list, gx_do_nlist* pdc_list,
    arbor_params_t* params, uint64_t /*reserved: neither read nor passed on*/, uint32_t request_kind,
    const void** table_vft_slot) {
    const int32_t count = gx_do_uri_get_segment_count(uri);
    // Segment 0 is never looked at; segment 1 is offered whatever the count says.
    for (int32_t i = 1;; ++i) {
        gx_do_uri_segment* segment = gx_do_uri_get_segment(uri, i);
        trace(k_msg_processing_seg, LT_LEVEL_DEBUG, static_cast<uint32_t>(i));
        const uint32_t more = i + 1 < count ? 1 : 0;
        // Only a one-segment path entitles the root tables to list candidates.
        if (!more && i == 1 && pd_list != nullptr && pdc_list != nullptr)
            gx_do_nlist_add_string(pdc_list, k_root_marker);
        const char* name = gx_do_uri_segment_get_name(segment);
        const int32_t code =
            name != nullptr && name[0] == '*' && name[1] == '\0'
                ? zan::fe::offer_segment(ctx, id, gx_ctx, segment, pd_list, pdc_list, params, request_kind,
                                         table_vft_slot, more)
                : offer_direct(name, ctx, id, gx_ctx, segment, pd_list, pdc_list, params, request_kind,
                               table_vft_slot, more);
        if (code == zan::fe::k_pq_not_here) {
            trace(k_msg_no_valid_path, LT_LEVEL_END);
            return code;
        }
        if (code != zan::fe::k_pq_taken || !more) return code;
    }
}
