// Reference platform: the services the front-end library imports by name, plus this C++
// interface through which the reference engine, the tool and the tests create, inspect and
// break those services. Nothing in the front-end library includes this header.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "data_objects.h"
#include "traversal.h"

namespace zan::plat {

// ---------------------------------------------------------------- values
struct Ip {
    int family = 4;                 // 4 or 6
    uint8_t bytes[16] = {};
    bool operator==(const Ip&) const = default;
};
struct Mac {
    uint8_t bytes[6] = {};
    bool operator==(const Mac&) const = default;
};
struct EnumText {                   // an enumerator's or flag's name
    std::string text;
    bool operator==(const EnumText&) const = default;
};
struct Value;
using ValueList = std::vector<Value>;
struct NamedValue;
using NameValueList = std::vector<NamedValue>;
struct Null {
    bool operator==(const Null&) const = default;
};
struct Uri {                        // a row's path, as gx_do_vlist_add_mr_uri adds it
    std::string text;
    bool operator==(const Uri&) const = default;
};

// One value of a list or a property. Integers keep their width and signedness.
struct Value {
    std::variant<Null, int64_t, uint64_t, bool, std::string, Ip, Mac, EnumText, ValueList, NameValueList, Uri> v;
    // Leaf word that added it: "int32", "u_int8", "rsl_vstring", ... Always static text (a
    // word of the catalogue or a literal), so a value copies no string for it.
    std::string_view leaf;
    bool is_default = false;
    bool operator==(const Value&) const = default;
};
struct NamedValue {
    std::string name;
    Value value;
    bool operator==(const NamedValue&) const = default;
};

std::string to_text(const Value& v);          // one-line readable form
std::optional<Ip> parse_ip(std::string_view text);
std::optional<Mac> parse_mac(std::string_view text);
std::string format_ip(const Ip& ip);
std::string format_mac(const Mac& mac);       // "aa:bb:cc:dd:ee:ff"

// ---------------------------------------------------------------- data objects
// Builders and readers for the engine and tests. Objects from these functions carry one
// reference, released with the matching gx_do_*_deref.
struct UriSegment {
    std::string name;
    std::optional<std::vector<std::pair<std::string, std::string>>> keys;  // nullopt: no key list
};
// Segment 0 (named "") is added in front. The path's text, which gx_do_vlist_add_mr_uri
// adds as a Uri value, reads "/name[key=value,...]/name..." unless set otherwise.
gx_do_uri* uri_new(const std::vector<UriSegment>& segments);
void uri_deref(gx_do_uri* uri);
std::string uri_text(gx_do_uri* uri);
void uri_set_text(gx_do_uri* uri, std::string_view text);
// What gx_do_uri_get_segment_count answers for this path, whatever segments it holds (an
// engine may hand in a count of 0); nullopt: the number of segments again.
void uri_set_count(gx_do_uri* uri, std::optional<int32_t> count);
// What gx_do_nvlist_get_len answers for this list (a negative length, say); its items stay
// as they are. nullopt: the number of items again.
void nvlist_set_len(gx_do_nvlist* list, std::optional<int32_t> len);

gx_do_properties* properties_new();
void properties_deref(gx_do_properties* props);
std::vector<NamedValue> properties_items(gx_do_properties* props);   // in insertion order
const Value* properties_get(gx_do_properties* props, std::string_view name);   // nullptr: not set

// Appends a name that carries no text (gx_do_name_get_strname gives NULL for it), as some
// engines hand in; nlist_names shows it as an empty string.
void nlist_add_textless(gx_do_nlist* list);
std::vector<std::string> nlist_names(gx_do_nlist* list);
ValueList vlist_values(gx_do_vlist* list);
NameValueList nvlist_items(gx_do_nvlist* list);

// Adding values, for the leaf conversions. Each is a fault point of its own
// ("gx_do_vlist_add_value", "gx_do_nvlist_add_value", "gx_do_properties_set_value").
int32_t vlist_add(gx_do_vlist* list, Value v);                          // new length; -1 on failure
int32_t nvlist_add(gx_do_nvlist* list, std::string_view name, Value v);  // new length; -1 on failure
int32_t properties_set(gx_do_properties* props, std::string_view name, Value&& v);   // 0; -1 on failure
// The value behind a gx_do_value reference (a key's value, an nvlist item's value). Key
// values of a uri_new path are std::string values with an empty leaf word.
const Value* value_get(const gx_do_value* value);

// Live objects per family (for leak checks): uri, nlist, vlist, nvlist, properties, strbuf.
struct ObjectCounts {
    long uri = 0, nlist = 0, vlist = 0, nvlist = 0, properties = 0, strbuf = 0;
    long total() const { return uri + nlist + vlist + nvlist + properties + strbuf; }
};
ObjectCounts live_objects();

// ---------------------------------------------------------------- traversal objects
struct ArborId {
    uint8_t type_luid[16] = {};
    uint32_t field_id = 0;
    bool luid_set = false;
    bool field_set = false;
};
struct TraversalView {
    uint32_t pq = 0;
    bool pq_set = false;
    std::optional<std::array<uint8_t, ZAN_LUID_LEN>> pq_luid;
    ArborId deref_table;
    std::optional<ArborId> id_vec[2];
    std::optional<std::array<uint8_t, ZAN_LUID_LEN>> key_luid;
    std::optional<uint32_t> key_field_id;
    std::optional<std::vector<uint8_t>> key_data;
};
// Traversal setters that find *err already set do nothing (no set, no change of the word);
// arbor_params_t_set_last in particular never takes a traversal over then. Traversals and
// identities are accounted by the allocator under the pending call-site tag, with the
// type names "arbor_traverse" and "arbor_id".
arbor_params_t* params_new();
void params_free(arbor_params_t* params);                // destroys the traversals it holds
std::vector<TraversalView> params_traversals(arbor_params_t* params);
long live_traversals();                                  // traversals and identities not yet destroyed

arbor_ntlist* ntlist_new();
void ntlist_free(arbor_ntlist* list);
struct NtEntry {
    std::string name;
    uint32_t code;
};
// The columns so far, as owned strings; the answer stays valid until the next call or
// ntlist_free.
const std::vector<NtEntry>& ntlist_entries(arbor_ntlist* list);
size_t ntlist_len(arbor_ntlist* list);   // columns so far, nothing copied

// What rsl_store_err last stored on the calling thread.
struct StoredError {
    rsl_ctx_t ctx;
    uint32_t number;
};
std::optional<StoredError> rsl_stored_error();
void rsl_stored_error_clear();

// What the two registration calls handed over, per context name.
struct Registration {
    std::string context;
    const char* context_ptr = nullptr;        // pointer identity of the name, both calls
    zan_path_query_dispatch_fn dispatch = nullptr;
    zan_name_lookup_fn table_lookup = nullptr;
    zan_name_lookup_fn type_lookup = nullptr;
    zan_mrst_lookup_fn type_mrst_lookup = nullptr;
    zan_mrst_lookup_fn table_mrst_lookup = nullptr;
    const void* type_dispatch_type_lut = nullptr;
    const void* type_field_lut = nullptr;
    const char* gx_context_ptr = nullptr;
    const void* gx_dispatch = nullptr;
    const void* gx_type_dispatch = nullptr;
    const void* gx_reserved = nullptr;
    const void* type_gx_lut = nullptr;
    int fe_vector_calls = 0;
    int gx_vector_calls = 0;
};
const Registration* registration(std::string_view context);   // nullptr if never registered
void registration_reset();                                    // invalidates what registration() gave

// ---------------------------------------------------------------- allocator
struct AllocSite {
    uint32_t tag;
    std::string type_name;
    long live;        // allocations not yet freed
    long total;       // allocations made
};
long alloc_live();                        // live allocations, all sites
std::vector<AllocSite> alloc_sites();
void alloc_fail_nth(long n);              // the n-th attempt from now fails (1 = the next); 0 clears
void alloc_fail_site(std::optional<uint32_t> tag);   // every allocation of this site tag fails
long alloc_count();                       // allocations attempted since start, failed ones too

// One call of the allocator's C interface, as the caller made it: the arguments of
// __tallow_malloc and __tallow_strdup (all five besides the size or text), or the block of
// __tallow_free.
struct AllocCall {
    enum Kind : uint8_t { malloc, strdup, free } kind;
    uint32_t tag = 0;
    const uint64_t* type_cell = nullptr;
    const char* type_name = nullptr;
    const uint64_t* pool_cell = nullptr;
    const char* pool_name = nullptr;
    const void* block = nullptr;           // given or freed; nullptr: the attempt failed
    size_t size = 0;                       // bytes asked of __tallow_malloc
};
using AllocWatch = std::function<void(const AllocCall&)>;
// While a watch is set, every call of the three is handed to it on the calling thread, the
// platform's own frees of traversal objects included.
void alloc_set_watch(AllocWatch watch);
void alloc_clear_watch();

// ---------------------------------------------------------------- trace
struct TraceRecord {
    std::string unit;        // message table's name
    uint32_t index;
    uint32_t level;
    std::string text;        // the format with its arguments filled in
    uint16_t module = 0;     // the module id the call passed
};
using TraceSink = std::function<void(const TraceRecord&)>;
// While a sink is set, every trace call is formatted and handed to it (on the calling
// thread); with none set a trace call does nothing but return.
void trace_set_sink(TraceSink sink);
void trace_clear_sink();

// Collects the trace records of its lifetime (for tests); on destruction it puts back
// the sink that was set before it.
class TraceCapture {
public:
    TraceCapture();
    ~TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    std::vector<TraceRecord> records() const;
    void clear();

private:
    struct Impl;
    Impl* impl_;
};

// ---------------------------------------------------------------- fault injection
// Named fault points: every gx_do_*_new ("gx_do_vlist_new", ...), every add/set operation
// of the data objects ("gx_do_vlist_add_null", "gx_do_properties_set_null", ...),
// "arbor_fe_ntlist_add", "arbor_traverse_create", "arbor_id_create",
// "arbor_params_t_set_last", "arbor_register_fe_gx_vectors", the traversal and identity
// setters ("arbor_traverse_pq_luid_set_mem", "arbor_traverse_pq_set_value",
// "arbor_id_type_luid_set_mem", "arbor_id_field_id_set_value",
// "arbor_traverse_arbor_id_vec_set"), "arbor_traverse_deref_table_get", and the database
// accessors ("accessor"). A failing _new or create gives NULL, a failing add/set answers its
// failure value, a failing set_last, setter, deref_table_get, accessor or ntlist add sets the
// error word (to EIO, 5) and yields nothing (deref_table_get: NULL), a failing registration
// answers -1. Other names may be armed and hit too.
void fault_fail_nth(std::string_view point, long n);   // n-th call from now (1 = next); 0 clears
void fault_fail_always(std::string_view point, bool on);
void fault_clear_all();                                // the allocator's injection and the answer below too
// What a failing value add ("gx_do_vlist_add_value", "gx_do_nvlist_add_value",
// "gx_do_properties_set_value") answers: -1 unless set otherwise.
void fault_set_value_add_answer(int32_t answer);
// gx_do_vlist_add_mr_uri appends the path as always but answers this number instead of the
// new length (0, say, which no real adder gives for a success). nullopt, or fault_clear_all,
// puts the length back.
void mr_uri_set_answer(std::optional<int32_t> answer);
// Calls of arbor_fe_ntlist_add that found the error word already set, since start.
long ntlist_add_calls_with_error();
long fault_calls(std::string_view point);              // calls seen at this point since start
std::span<const std::string_view> fault_points();      // the names the platform's operations hit
// Called by the platform's own operations at each fault point: counts the call and
// answers true when this call is to fail. Cheap when no fault is armed.
bool fault_hit(std::string_view point);

}  // namespace zan::plat
