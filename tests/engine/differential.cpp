// The recorder of differential.hpp: the interposed platform calls, the two ways of running a
// request, and the comparison of what they left.
#include "differential.hpp"
#include "exported_chain.hpp"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <map>

namespace diff {
// ---------------------------------------------------------------- the recorder
namespace detail {

struct Recorder {
    bool on = false;
    std::vector<std::string>* events = nullptr;
    gx_do_nlist *pd = nullptr, *pdc = nullptr;
    arbor_params_t* params = nullptr;
    std::map<const void*, std::string> objects;   // created objects by order of creation
    int created = 0;
};
inline Recorder& recorder() {
    static Recorder r;
    return r;
}

template <class F>
F next(const char* name) {
    void* p = dlsym(RTLD_NEXT, name);
    if (p == nullptr) {
        std::fprintf(stderr, "differential: the platform has no %s\n", name);
        std::abort();
    }
    return reinterpret_cast<F>(p);
}

inline std::string hex(const void* data, uint32_t len) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    if (data == nullptr) return "(null)";
    for (uint32_t k = 0; k < len; ++k) {
        const uint8_t b = static_cast<const uint8_t*>(data)[k];
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

inline std::string object(const void* p) {
    if (p == nullptr) return "null";
    Recorder& r = recorder();
    if (p == r.pd) return "pd";
    if (p == r.pdc) return "pdc";
    if (p == r.params) return "params";
    auto it = r.objects.find(p);
    return it == r.objects.end() ? "other" : it->second;
}

inline void created(const void* p, const char* kind) {
    Recorder& r = recorder();
    if (p != nullptr) r.objects[p] = std::string(kind) + "#" + std::to_string(++r.created);
}

inline std::string err_of(const uint32_t* err) { return err == nullptr ? "-" : std::to_string(*err); }

inline void record(std::string event) {
    Recorder& r = recorder();
    if (r.on) r.events->push_back(std::move(event));
}

}  // namespace detail
}  // namespace diff

// ---------------------------------------------------------------- interposed platform calls
extern "C" {

int32_t gx_do_nlist_add_string(gx_do_nlist* list, const char* text) {
    static const auto f = diff::detail::next<int32_t (*)(gx_do_nlist*, const char*)>("gx_do_nlist_add_string");
    const int32_t rc = f(list, text);
    diff::detail::record("nlist_add_string " + diff::detail::object(list) + " " + (text ? text : "(null)") +
                         " -> " + std::to_string(rc != 0));
    return rc;
}

int32_t gx_do_nlist_remove(gx_do_nlist* list, int32_t index) {
    static const auto f = diff::detail::next<int32_t (*)(gx_do_nlist*, int32_t)>("gx_do_nlist_remove");
    const int32_t rc = f(list, index);
    diff::detail::record("nlist_remove " + diff::detail::object(list) + " " + std::to_string(index) + " -> " +
                         std::to_string(rc));
    return rc;
}

void tallow_set_callsite_tag(uint32_t site) {
    static const auto f = diff::detail::next<void (*)(uint32_t)>("tallow_set_callsite_tag");
    f(site);
    diff::detail::record("callsite_tag " + std::to_string(site));
}

arbor_traverse* arbor_traverse_create(rsl_ctx_t ctx, rsl_ctx_id_t id) {
    static const auto f = diff::detail::next<arbor_traverse* (*)(rsl_ctx_t, rsl_ctx_id_t)>("arbor_traverse_create");
    arbor_traverse* t = f(ctx, id);
    diff::detail::created(t, "traverse");
    diff::detail::record("traverse_create -> " + diff::detail::object(t));
    return t;
}

void arbor_traverse_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t) {
    static const auto f =
        diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*)>("arbor_traverse_destroy");
    diff::detail::record("traverse_destroy " + diff::detail::object(t));
    f(ctx, id, t);
}

arbor_id* arbor_traverse_deref_table_get(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t* err) {
    static const auto f = diff::detail::next<arbor_id* (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*, uint32_t*)>(
        "arbor_traverse_deref_table_get");
    arbor_id* d = f(ctx, id, t, err);
    // A read; only names the identity for the setters that follow.
    if (d != nullptr) diff::detail::recorder().objects[d] = "deref(" + diff::detail::object(t) + ")";
    return d;
}

void arbor_traverse_pq_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t pq, uint32_t* err) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*, uint32_t, uint32_t*)>(
        "arbor_traverse_pq_set_value");
    f(ctx, id, t, pq, err);
    diff::detail::record("pq_set " + diff::detail::object(t) + " " + std::to_string(pq) + " err " +
                         diff::detail::err_of(err));
}

#define DIFF_SET_MEM(fn, obj_t)                                                                                    \
    void fn(rsl_ctx_t ctx, rsl_ctx_id_t id, obj_t* o, const uint8_t* data, uint32_t len, uint32_t* err) {         \
        static const auto f =                                                                                      \
            diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, obj_t*, const uint8_t*, uint32_t, uint32_t*)>(#fn); \
        f(ctx, id, o, data, len, err);                                                                             \
        diff::detail::record(std::string(#fn " ") + diff::detail::object(o) + " " + diff::detail::hex(data, len) + \
                             " err " + diff::detail::err_of(err));                                                 \
    }
DIFF_SET_MEM(arbor_traverse_pq_luid_set_mem, arbor_traverse)
DIFF_SET_MEM(arbor_traverse_key_luid_set_mem, arbor_traverse)
DIFF_SET_MEM(arbor_id_type_luid_set_mem, arbor_id)
#undef DIFF_SET_MEM

void arbor_traverse_key_data_set_mem(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, const void* data, uint32_t len,
                                     uint32_t* err) {
    static const auto f =
        diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*, const void*, uint32_t, uint32_t*)>(
            "arbor_traverse_key_data_set_mem");
    f(ctx, id, t, data, len, err);
    diff::detail::record("key_data_set " + diff::detail::object(t) + " " + diff::detail::hex(data, len) + " err " +
                         diff::detail::err_of(err));
}

void arbor_traverse_key_field_id_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t field_id,
                                           uint32_t* err) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*, uint32_t, uint32_t*)>(
        "arbor_traverse_key_field_id_set_value");
    f(ctx, id, t, field_id, err);
    diff::detail::record("key_field_id_set " + diff::detail::object(t) + " " + std::to_string(field_id) + " err " +
                         diff::detail::err_of(err));
}

void arbor_traverse_arbor_id_vec_set(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_traverse* t, uint32_t index,
                                     const arbor_id* aid, uint32_t* err) {
    static const auto f =
        diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_traverse*, uint32_t, const arbor_id*, uint32_t*)>(
            "arbor_traverse_arbor_id_vec_set");
    f(ctx, id, t, index, aid, err);
    diff::detail::record("id_vec_set " + diff::detail::object(t) + " " + std::to_string(index) + " " +
                         diff::detail::object(aid) + " err " + diff::detail::err_of(err));
}

arbor_id* arbor_id_create(rsl_ctx_t ctx, rsl_ctx_id_t id) {
    static const auto f = diff::detail::next<arbor_id* (*)(rsl_ctx_t, rsl_ctx_id_t)>("arbor_id_create");
    arbor_id* a = f(ctx, id);
    diff::detail::created(a, "id");
    diff::detail::record("id_create -> " + diff::detail::object(a));
    return a;
}

void arbor_id_destroy(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_id* aid) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_id*)>("arbor_id_destroy");
    diff::detail::record("id_destroy " + diff::detail::object(aid));
    f(ctx, id, aid);
}

void arbor_id_field_id_set_value(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_id* aid, uint32_t field_id, uint32_t* err) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_id*, uint32_t, uint32_t*)>(
        "arbor_id_field_id_set_value");
    f(ctx, id, aid, field_id, err);
    diff::detail::record("id_field_id_set " + diff::detail::object(aid) + " " + std::to_string(field_id) + " err " +
                         diff::detail::err_of(err));
}

void arbor_params_t_set_last(rsl_ctx_t ctx, rsl_ctx_id_t id, arbor_params_t* params, arbor_traverse* t,
                             uint32_t* err) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, arbor_params_t*, arbor_traverse*,
                                                      uint32_t*)>("arbor_params_t_set_last");
    f(ctx, id, params, t, err);
    diff::detail::record("params_set_last " + diff::detail::object(params) + " " + diff::detail::object(t) +
                         " err " + diff::detail::err_of(err));
}

void arbor_fe_gx_rsltype_get_data(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, uint32_t value_flag,
                                  gx_do_value* value, const uint8_t* field_luid, void** data, uint32_t* len,
                                  uint32_t* err) {
    static const auto f = diff::detail::next<void (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, uint32_t, gx_do_value*,
                                                      const uint8_t*, void**, uint32_t*, uint32_t*)>(
        "arbor_fe_gx_rsltype_get_data");
    f(ctx, id, gx_ctx, value_flag, value, field_luid, data, len, err);
    diff::detail::record("rsltype_get_data " + std::to_string(gx_ctx) + " " + std::to_string(value_flag) + " " +
                         diff::detail::hex(field_luid, 16) + " -> " +
                         (data && *data && len ? diff::detail::hex(*data, *len) : "(none)") + " err " +
                         diff::detail::err_of(err));
}

void* arbor_fe_gx_rsltype_get_rsl_obj(rsl_ctx_t ctx, rsl_ctx_id_t id, uint64_t gx_ctx, uint32_t value_flag,
                                      gx_do_value* value, const uint8_t* type_luid, uint32_t* err) {
    static const auto f = diff::detail::next<void* (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, uint32_t, gx_do_value*,
                                                       const uint8_t*, uint32_t*)>("arbor_fe_gx_rsltype_get_rsl_obj");
    void* o = f(ctx, id, gx_ctx, value_flag, value, type_luid, err);
    diff::detail::record("rsltype_get_rsl_obj " + std::to_string(gx_ctx) + " " + std::to_string(value_flag) + " " +
                         diff::detail::hex(type_luid, 16) + " -> " + (o ? "object" : "null") + " err " +
                         diff::detail::err_of(err));
    return o;
}

}  // extern "C"

namespace diff {
namespace {

constexpr uint64_t k_gx_ctx = 0x5eed;
const std::string k_unit = "path and query traversal";

std::string trace_event(const std::string& unit, uint32_t index, uint32_t level, const std::string& text) {
    char head[64];
    std::snprintf(head, sizeof head, " #%u level %#x: ", index, level);
    return "trace " + unit + head + text;
}

// The segment loop, step by step, asking the exported dispatchers; its own two traces are
// written into the recording as the library's unit writes them (the message table's texts
// carry their indent and a written "\n").
int32_t through_chain(const zan::engine::Engine& engine, gx_do_uri* uri, gx_do_nlist* pd, gx_do_nlist* pdc,
                      arbor_params_t* params, uint32_t kind, const void** slot) {
    const int32_t count = gx_do_uri_get_segment_count(uri);
    for (int32_t i = 1;; ++i) {
        gx_do_uri_segment* segment = gx_do_uri_get_segment(uri, i);
        detail::record(trace_event(k_unit, 0, 0x7000000, " Processing seg " + std::to_string(i) + "\\n"));
        const uint32_t more = i + 1 < count ? 1 : 0;
        if (!more && i == 1 && pd != nullptr && pdc != nullptr) gx_do_nlist_add_string(pdc, "ROOT");
        int32_t code = 3;
        for (exported_dispatcher d : exported_chain(engine)) {
            code = d(zan::engine::Engine::context(), 0, k_gx_ctx, segment, pd, pdc, params, 0, kind, slot, more);
            if (code != 3) break;
        }
        if (code == 3) {
            detail::record(trace_event(
                k_unit, 1, 0x6000000, " zan_config_db zan_config_db_context path_query_dispatch : No valid path found\\n"));
            return code;
        }
        if (code != 1 || !more) return code;
    }
}

std::string id_text(const zan::plat::ArborId& a) {
    return (a.luid_set ? detail::hex(a.type_luid, 16) : "-") + "/" + (a.field_set ? std::to_string(a.field_id) : "-");
}

std::string traversal_text(const zan::plat::TraversalView& t) {
    std::string s = "pq " + (t.pq_set ? std::to_string(t.pq) : "-");
    s += " pq_luid " + (t.pq_luid ? detail::hex(t.pq_luid->data(), 16) : "-");
    s += " deref " + id_text(t.deref_table);
    for (int k = 0; k < 2; ++k) s += " id" + std::to_string(k) + " " + (t.id_vec[k] ? id_text(*t.id_vec[k]) : "-");
    s += " key_luid " + (t.key_luid ? detail::hex(t.key_luid->data(), 16) : "-");
    s += " key_field " + (t.key_field_id ? std::to_string(*t.key_field_id) : "-");
    s += " key_data " + (t.key_data ? detail::hex(t.key_data->data(), static_cast<uint32_t>(t.key_data->size())) : "-");
    return s;
}

gx_do_nlist* list_of(bool given, const std::vector<std::optional<std::string>>& names) {
    if (!given) return nullptr;
    gx_do_nlist* list = gx_do_nlist_new();
    for (const auto& n : names) {
        if (n)
            gx_do_nlist_add_string(list, n->c_str());
        else
            zan::plat::nlist_add_textless(list);
    }
    return list;
}

// Calls seen at each fault point, and the allocator's attempts and live blocks (which site
// each allocation is for shows in the recorded call-site tags).
struct Counts {
    std::vector<long> points;
    long allocs = 0, live = 0;
    static Counts now() {
        Counts c;
        for (std::string_view p : zan::plat::fault_points()) c.points.push_back(zan::plat::fault_calls(p));
        c.allocs = zan::plat::alloc_count();
        c.live = zan::plat::alloc_live();
        return c;
    }
    std::vector<std::string> since(const Counts& before) const {
        std::vector<std::string> out;
        const auto names = zan::plat::fault_points();
        for (size_t k = 0; k < points.size(); ++k)
            if (points[k] != before.points[k])
                out.push_back(std::string(names[k]) + " +" + std::to_string(points[k] - before.points[k]));
        if (allocs != before.allocs || live != before.live)
            out.push_back("alloc attempts +" + std::to_string(allocs - before.allocs) + " live +" +
                          std::to_string(live - before.live));
        return out;
    }
};

}  // namespace

Recording run(const zan::engine::Engine& engine, const Case& c, Through through) {
    Recording out;
    gx_do_uri* uri = zan::plat::uri_new(c.path);
    gx_do_nlist* pd = list_of(c.with_pd, c.pd_names);
    gx_do_nlist* pdc = list_of(c.with_pdc, c.pdc_names);
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = c.slot;

    detail::Recorder& r = detail::recorder();
    r.events = &out.events;
    r.pd = pd;
    r.pdc = pdc;
    r.params = params;
    r.objects.clear();
    r.created = 0;
    const Counts before = Counts::now();
    zan::plat::trace_set_sink([](const zan::plat::TraceRecord& t) {
        detail::record(trace_event(t.unit, t.index, t.level, t.text));
    });
    if (c.fault && c.fault->first == "allocation")
        zan::plat::alloc_fail_nth(c.fault->second);
    else if (c.fault)
        zan::plat::fault_fail_nth(c.fault->first, c.fault->second);
    r.on = true;
    if (through == Through::top_dispatcher)
        out.code = engine.registration().dispatch(zan::engine::Engine::context(), 0, k_gx_ctx, uri, pd, pdc, params, 0,
                                                  c.kind, &slot);
    else
        out.code = through_chain(engine, uri, pd, pdc, params, c.kind, &slot);
    r.on = false;
    zan::plat::fault_clear_all();
    zan::plat::trace_clear_sink();
    out.counts = Counts::now().since(before);

    if (pd) out.pd = zan::plat::nlist_names(pd);
    if (pdc) out.pdc = zan::plat::nlist_names(pdc);
    for (const zan::plat::TraversalView& t : zan::plat::params_traversals(params))
        out.params.push_back(traversal_text(t));
    out.slot = slot;
    zan::plat::params_free(params);
    if (pd) gx_do_nlist_deref(pd);
    if (pdc) gx_do_nlist_deref(pdc);
    zan::plat::uri_deref(uri);
    r.pd = r.pdc = nullptr;
    r.params = nullptr;
    return out;
}

namespace {
std::string lines(const std::optional<std::vector<std::string>>& v) {
    if (!v) return "(absent)";
    std::string s = "[";
    for (const auto& x : *v) s += x + ", ";
    return s + "]";
}
}  // namespace

std::string describe(const Recording& r) {
    std::string s = "code " + std::to_string(r.code) + "\n";
    for (const auto& e : r.events) s += "  " + e + "\n";
    s += "pd " + lines(r.pd) + "\npdc " + lines(r.pdc) + "\n";
    for (const auto& t : r.params) s += "params " + t + "\n";
    char slot[32];
    std::snprintf(slot, sizeof slot, "%p", r.slot);
    s += std::string("slot ") + slot + "\n";
    for (const auto& c : r.counts) s += "count " + c + "\n";
    return s;
}

std::string first_difference(const Recording& a, const Recording& b) {
    if (a == b) return "";
    if (a.code != b.code) return "code " + std::to_string(a.code) + " against " + std::to_string(b.code);
    for (size_t k = 0; k < std::min(a.events.size(), b.events.size()); ++k)
        if (a.events[k] != b.events[k]) return "event " + std::to_string(k) + ": " + a.events[k] + " against " + b.events[k];
    if (a.events.size() != b.events.size())
        return std::to_string(a.events.size()) + " events against " + std::to_string(b.events.size());
    if (a.pd != b.pd) return "pd " + lines(a.pd) + " against " + lines(b.pd);
    if (a.pdc != b.pdc) return "pdc " + lines(a.pdc) + " against " + lines(b.pdc);
    if (a.params != b.params) return "params differ";
    if (a.slot != b.slot) return "slot cells differ";
    return "counts differ";
}

}  // namespace diff
