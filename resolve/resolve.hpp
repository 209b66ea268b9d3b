// Path and query resolution: the descriptors the generated code fills from the catalogue,
// and the templates that the generated entry points hand them to.
//
// One unit of trace messages serves the whole family ("path and query traversal"). Every
// call site owns one message, and the descriptors carry the index of the first message of
// their function; a template adds the fixed offsets below. Allocation sites work the same
// way: a descriptor carries its first site tag number, and the tag handed to the
// allocator is the unit's base OR'd with the site number.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "fe_internal.hpp"

namespace zan::fe::resolve {

inline constexpr uint32_t k_site_base = 0x1862F400u;
inline constexpr uint32_t site_tag(uint32_t site) { return k_site_base | site; }

// Messages of the top dispatcher: the first two of the unit.
enum : uint32_t { k_msg_processing_seg = 0, k_msg_no_valid_path = 1 };

// ------------------------------------------------------------------ path traversers
enum class Shape : uint8_t {
    root,     // no parent: no identities
    child,    // identities of the parent row and the link field
    nolink,   // in a parent's chain, but behaves as a root table
};

// Message offsets of a path traverser, in code order. A root (or nolink) traverser has
// the first three and then jumps to set_failed_root and pdc_store_root.
enum : uint32_t {
    k_p_pd_add = 0,
    k_p_found,
    k_p_create_failed,
    k_p_no_from_table,      // child only
    k_p_id_failed,          // child only
    k_p_id2_failed,         // child only
    k_p_set_failed_child,
    k_p_pdc_store_child,
};
inline constexpr uint32_t k_p_set_failed_root = 3, k_p_pdc_store_root = 4;
inline constexpr uint32_t k_p_messages_root = 5, k_p_messages_child = 8;
inline constexpr uint32_t k_p_sites_root = 1, k_p_sites_child = 5;

struct PathDesc {
    const char* segment;            // compared exactly; added to pd_list on "*"
    uint32_t segment_len;           // its length: the compare covers the terminator
    const char* label;              // P_<table>, for traces
    const char* marker;             // stored in pdc_list on success
    const uint8_t* pq_luid;         // 16 bytes, this traverser's own
    const uint8_t* table_luid;      // table_tbl_<table>_luid
    const zan_field_vft* vft;       // tbl_<table>_table_field_vft: stored in the slot cell
    // Child only.
    const char* parent_row;         // row field the from-table's vector is asked for
    const uint8_t* parent_luid;     // table_tbl_<parent>_luid
    const char* link_field;         // child link field of the parent's row type
    zan_get_field_fn link_info;     // zan_<parent row>_get_field_info
    uint32_t msg;                   // first message
    uint16_t site;                  // first site number
    Shape shape;
};

// The two ways past the compare, out of line: a match, and the listing of candidates.
int32_t path_take(const PathDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nlist* pdc_list,
                  arbor_params_t* params, const void** table_vft_slot, const zan_field_vft* from);
void path_list(const PathDesc& d, gx_do_nlist* pd_list);

// Whether strncmp(a, b, n) == 0 (n >= 1), `b` being the known text. The first K characters
// are compared inline (with a constant `b` they are compares against immediates, and most
// misses end at the first or second), the rest by strncmp: names of one level share long
// prefixes, which a byte loop would walk slower than the library does.
template <uint32_t K = 4>
[[gnu::always_inline]] inline bool same_bounded(const char* a, const char* b, uint32_t n) {
#pragma GCC unroll 16
    for (uint32_t k = 0; k < K && k < n; ++k) {
        if (__builtin_expect(a[k] != b[k], 1)) return false;   // most texts differ early
        if (b[k] == '\0') return true;
    }
    return n <= K || std::strncmp(a + K, b + K, n - K) == 0;
}

// The path traverser: does this segment name my table? Inline in every generated entry
// point, so that a miss costs the name fetch and one bounded compare (and one more against
// "*" when candidates are being collected) and nothing else; nothing is allocated before a
// match.
[[gnu::always_inline]] inline int32_t path_traverse(const PathDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id,
                                                    gx_do_uri_segment* segment, gx_do_nlist* pd_list,
                                                    gx_do_nlist* pdc_list, arbor_params_t* params,
                                                    const void** table_vft_slot) {
    // Tables below a parent read the cell on every call, matched or not.
    const zan_field_vft* from =
        d.shape == Shape::root
            ? nullptr
            : static_cast<const zan_field_vft*>(*static_cast<const void* const volatile*>(table_vft_slot));
    const char* name = gx_do_uri_segment_get_name(segment);
    if (name == nullptr) [[unlikely]]
        return k_pq_not_here;
    if (!same_bounded(name, d.segment, d.segment_len + 1)) {
        // Listing: every table of the level adds its name, so the chain must run on. Kept
        // off the straight line, so that a miss falls through to the next traverser.
        if (__builtin_expect(name[0] == '*', 0)) {
            if (pd_list != nullptr && name[1] == '\0') path_list(d, pd_list);
        }
        return k_pq_not_here;
    }
    return path_take(d, ctx, id, name, pdc_list, params, table_vft_slot, from);
}

// ------------------------------------------------------------------ query traversers
// Message offsets shared by both query templates (the first seven), then those of each.
// Both the key-less last segment and a key list that yields nothing end at the one
// k_q_no_keys site.
enum : uint32_t {
    k_q_expecting_keys = 0,
    k_q_no_keys,
    k_q_empty_list,
    k_q_list_len,
    k_q_names_failed,
    k_q_values_failed,
    // one key
    k_q1_pd_add = 6,
    k_q1_processing,
    k_q1_no_field,
    k_q1_create_failed,
    k_q1_set_failed,
    k_q1_rsl_error,
    k_q1_messages,
    // compound: then one "unsupported type" per field, then the final error
    k_qc_positions_failed = 6,
    k_qc_processing,
    k_qc_no_field,
    k_qc_unsupported,
};
inline constexpr uint32_t k_qc_fixed_messages = 10;   // plus one per field
inline constexpr uint32_t k_q1_sites = 3, k_qc_fixed_sites = 6;

struct QueryDesc {
    const char* key_name;           // compared with the first key's name
    const char* key_field;          // "key <table>_<key>"
    const uint8_t* table_luid;
    zan_get_field_fn get_field;     // tbl_<table>_get_field
    uint32_t msg;
    uint16_t site;
};

int32_t query_traverse(const QueryDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_nvlist* keys,
                       gx_do_nlist* pd_list, arbor_params_t* params, uint32_t request_kind, uint32_t more_segments);

// Key record operations of a compound key, imported from the database library.
using key_create_fn = void* (*)(rsl_ctx_t, rsl_ctx_id_t);
using key_set_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, void* rec, const void* obj, uint32_t* err);
using key_len_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, const void* rec);
using key_marshal_fn = uint32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint8_t* buf, const void* rec, uint32_t len,
                                    uint32_t* err);
using key_destroy_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, void* rec);
using typed_destroy_fn = void (*)(rsl_ctx_t, rsl_ctx_id_t, void* obj);

struct KeyPart {
    const char* name;               // key name searched for in the segment's keys
    const uint8_t* type_luid;       // type_<word>_luid: what the value is converted to
    key_set_fn set;                 // <k>_<f>_set
    typed_destroy_fn destroy;       // releases the converted object
};

struct CompoundDesc {
    QueryDesc q;
    const KeyPart* parts;           // in search order
    uint32_t nparts;
    key_create_fn create;
    key_len_fn len;
    key_marshal_fn marshal;
    key_destroy_fn destroy;
};

int32_t compound_traverse(const CompoundDesc& d, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx,
                          gx_do_nvlist* keys, gx_do_nlist* pd_list, arbor_params_t* params, uint32_t request_kind,
                          uint32_t more_segments);

// ------------------------------------------------------------------ dispatchers
using query_fn = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_nvlist*, gx_do_nlist*, arbor_params_t*, uint32_t,
                             uint32_t);

// What a dispatcher needs after a path traverser took the segment.
struct ChainEntry {
    query_fn query;                 // the same table's query traverser
    const char* label;              // P_<table>, in the not-found trace
};

// Messages of a dispatcher: the marker match, then two per chain entry (not found, failed).
struct DispatchDesc {
    const char* marker;
    uint32_t marker_len;
    const ChainEntry* chain;
    uint32_t count;
    uint32_t msg;
};

// A marker found by the scan: traced and taken out of pdc_list.
void gate_take(const DispatchDesc& d, gx_do_nlist* pdc_list, int32_t index);

// The marker scan: takes every occurrence of the dispatcher's marker out of pdc_list and
// answers the list the chain may fill: pd_list, or nullptr when the marker was not there
// (always pd_list when there is no pdc_list). Inline in each dispatcher, with the marker's
// first twelve characters compared as immediates (markers share "inst_tbl_").
[[gnu::always_inline]] inline gx_do_nlist* scan_markers(const DispatchDesc& d, gx_do_nlist* pd_list,
                                                        gx_do_nlist* pdc_list) {
    if (pdc_list == nullptr) return pd_list;
    bool found = false;
    int32_t index = 0;
    for (gx_do_name* name = gx_do_nlist_get_name(pdc_list, 0); name != nullptr;
         name = gx_do_nlist_get_name(pdc_list, index)) {
        const char* text = gx_do_name_get_strname(name);
        if (text == nullptr) break;
        if (same_bounded<12>(text, d.marker, d.marker_len + 1)) {
            gate_take(d, pdc_list, index);   // the next name moves into its place
            found = true;
        } else {
            ++index;
        }
    }
    return found ? pd_list : nullptr;
}

template <const DispatchDesc& D>
[[gnu::always_inline]] inline gx_do_nlist* open_gate(gx_do_nlist* pd_list, gx_do_nlist* pdc_list) {
    return scan_markers(D, pd_list, pdc_list);
}

// After entry `at` took the segment: its query traverser, and the trace of what it answered
// when that is not success.
int32_t query_after(const DispatchDesc& d, uint32_t at, rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx,
                    gx_do_uri_segment* segment, gx_do_nlist* gated, arbor_params_t* params, uint32_t request_kind,
                    uint32_t more_segments);

// The dispatcher: the marker scan, then the fall-through chain of path traversers in their
// order. The chain is a compile-time list of constant descriptors, so every traverser's
// compare is inlined here with its segment text as immediates: a miss is the name fetch,
// a compare and a branch. The first traverser that answers anything but "not here" ends
// the chain; a match goes on to the same table's query traverser.
template <const DispatchDesc& D, const PathDesc* const* Paths, std::size_t... I>
[[gnu::always_inline]] inline int32_t dispatch(std::index_sequence<I...>, rsl_ctx_t ctx, rsl_ctx_id_t id,
                                               uint64_t gx_ctx, gx_do_uri_segment* segment, gx_do_nlist* pd_list,
                                               gx_do_nlist* pdc_list, arbor_params_t* params, uint32_t request_kind,
                                               const void** table_vft_slot, uint32_t more_segments) {
    static_assert(sizeof...(I) == D.count, "one path traverser per chain entry");
    gx_do_nlist* const gated = open_gate<D>(pd_list, pdc_list);
    int32_t path = k_pq_not_here;
    uint32_t at = 0;
    static_cast<void>(
        (((path = path_traverse(*Paths[I], ctx, id, segment, gated, pdc_list, params, table_vft_slot)) !=
              k_pq_not_here &&
          (at = I, true)) ||
         ...));
    if (path != k_pq_taken) return path;
    return query_after(D, at, ctx, id, gx_ctx, segment, gated, params, request_kind, more_segments);
}

// The segment loop's chain: the dispatchers in their order, as direct calls, until one
// answers anything but "not here".
template <dispatcher_fn... Dispatchers>
inline int32_t offer(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, gx_do_uri_segment* segment,
                     gx_do_nlist* pd_list, gx_do_nlist* pdc_list, arbor_params_t* params, uint32_t request_kind,
                     const void** table_vft_slot, uint32_t more_segments) {
    int32_t code = k_pq_not_here;
    static_cast<void>((((code = Dispatchers(ctx, id, gx_ctx, segment, pd_list, pdc_list, params, 0, request_kind,
                                            table_vft_slot, more_segments)) != k_pq_not_here) ||
                       ...));
    return code;
}

// ------------------------------------------------------------------ direct offer
// The segment loop's way to the one traverser that can take a name (segment_loop.cpp):
// generated tables of the 331 segment texts and of the dispatchers' markers.
struct SegmentPlace {
    const PathDesc* path;
    uint16_t dispatcher;            // the dispatcher's place in the chain, from 0
    uint16_t at;                    // the traverser's place in that dispatcher's chain
};
// The position whose segment text is exactly `name`, or nullptr.
const SegmentPlace* find_segment(const char* name);
// The place in the chain of the dispatcher whose marker is exactly `text`, or -1.
int32_t find_marker(const char* text);
// The dispatchers in chain order (k_dispatcher_count of them, at most 32).
extern const DispatchDesc* const k_dispatchers[];
extern const uint32_t k_dispatcher_count;

// Descriptors are plain constant data, laid out once by the generator.
static_assert(std::is_trivially_copyable_v<PathDesc> && std::is_standard_layout_v<PathDesc>);
static_assert(std::is_trivially_copyable_v<CompoundDesc> && std::is_standard_layout_v<CompoundDesc>);
static_assert(std::is_trivially_copyable_v<DispatchDesc> && std::is_standard_layout_v<DispatchDesc>);
static_assert(k_q1_messages == 12, "one-key query traversers own twelve messages");

}  // namespace zan::fe::resolve

namespace zan::gen {
// The message table of the unit.
extern const lt_unit k_resolve_unit;
}  // namespace zan::gen
