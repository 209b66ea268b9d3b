// Leaf conversions: one value into a properties object, a value list or a name-value list.
// The rules they share are in zan/leaf.h.
#include "zan/leaf.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "zan/database.hpp"
#include "zan/platform.hpp"

namespace {

using zan::plat::Value;

constexpr uint32_t k_einval = EINVAL;

bool word_set(const uint32_t* err) { return err && *err != 0; }

void raise(uint32_t* err, uint32_t code) {
    if (err && *err == 0) *err = code;
}

Value null_value(std::string_view leaf, int32_t is_default) {
    Value v;
    v.leaf = leaf;
    v.is_default = is_default != 0;
    return v;
}

// The handle's value, if it is one of `leaf` (or of any word when `leaf` is empty).
std::optional<Value> read(const void* handle, std::string_view leaf, uint32_t* err) {
    auto v = zan::db::value_of(handle);
    if (!v || (!leaf.empty() && v->leaf != leaf)) {
        raise(err, k_einval);
        return std::nullopt;
    }
    return v;
}

// Where a conversion writes its one value, and what it answers when it writes none. A
// properties object takes the name when the value is written (a missing one is EINVAL
// there); a name-value list refuses a missing name before anything is read.
struct ToProperties {
    static constexpr int32_t k_none = 0;
    const char* name;
    gx_do_properties* props;
    bool ready() const { return true; }
    int32_t add(Value&& v) const {
        if (!name) return k_einval;
        return zan::plat::properties_set(props, name, std::move(v));
    }
};

struct ToVlist {
    static constexpr int32_t k_none = -1;
    gx_do_vlist* vlist;
    bool ready() const { return true; }
    int32_t add(Value&& v) const { return zan::plat::vlist_add(vlist, std::move(v)); }
};

struct ToNvlist {
    static constexpr int32_t k_none = -1;
    const char* name;
    gx_do_nvlist* nvlist;
    bool ready() const { return name != nullptr; }
    int32_t add(Value&& v) const { return zan::plat::nvlist_add(nvlist, name, std::move(v)); }
};

// A leaf from its handle: a null where not present, else the handle's value of that leaf.
template <class Target>
int32_t from_handle(Target to, std::string_view leaf, int32_t is_default, int32_t present, const void* handle,
                    uint32_t* err) {
    if (word_set(err) || !to.ready()) return Target::k_none;
    if (!present) return to.add(null_value(leaf, is_default));
    auto v = read(handle, leaf, err);
    if (!v) return Target::k_none;
    v->is_default = is_default != 0;
    return to.add(std::move(*v));
}

// A leaf whose value comes as a pointer rather than a handle: NULL while present is EINVAL.
template <class Target, class Arg, class Make>
int32_t given(Target to, std::string_view leaf, int32_t is_default, int32_t present, Arg* arg, uint32_t* err,
              Make make) {
    if (word_set(err) || !to.ready()) return Target::k_none;
    Value v = null_value(leaf, is_default);
    if (present) {
        if (!arg) {
            raise(err, k_einval);
            return Target::k_none;
        }
        v.v = make(arg);
    }
    return to.add(std::move(v));
}

// A library type's whole value: whatever value the handle holds, under the type's name.
template <class Target>
int32_t whole(Target to, std::string_view type, const void* handle, uint32_t* err) {
    if (word_set(err) || !to.ready()) return Target::k_none;
    auto v = read(handle, {}, err);
    if (!v) return Target::k_none;
    v->leaf = type;
    v->is_default = false;
    return to.add(std::move(*v));
}

auto text_of(const char* t) { return std::string(t); }
auto enum_text(const char* t) { return zan::plat::EnumText{t}; }
auto bit_names(gx_do_vlist* n) { return zan::plat::vlist_values(n); }

}  // namespace

extern "C" {

// The leaves with a conversion of their own into each target, reading the value's handle.
#define LEAF_FORMS(leaf)                                                                                      \
    int32_t leaf##_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props,          \
                                 int32_t is_default, int32_t present, const void* value, uint32_t* err) {     \
        return from_handle(ToProperties{name, props}, #leaf, is_default, present, value, err);                \
    }                                                                                                         \
    int32_t leaf##_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present, \
                            const void* value, uint32_t* err) {                                               \
        return from_handle(ToVlist{vlist}, #leaf, is_default, present, value, err);                           \
    }                                                                                                         \
    int32_t leaf##_to_nvlist(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_nvlist* nvlist,                 \
                             int32_t is_default, int32_t present, const void* value, uint32_t* err) {         \
        return from_handle(ToNvlist{name, nvlist}, #leaf, is_default, present, value, err);                   \
    }
LEAF_FORMS(int32)
LEAF_FORMS(u_int32)
LEAF_FORMS(rsl_vstring)
LEAF_FORMS(ip_address)
LEAF_FORMS(rsl_mac_addr)
LEAF_FORMS(u_int8)
LEAF_FORMS(u_int64)
LEAF_FORMS(u_int16)
LEAF_FORMS(rsl_boolean)
LEAF_FORMS(int16)
#undef LEAF_FORMS

int32_t var_string_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props,
                                 int32_t is_default, int32_t present, const char* chars, uint32_t* err) {
    return given(ToProperties{name, props}, "var_string", is_default, present, chars, err, text_of);
}

int32_t enum_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                           int32_t present, const char* text, uint32_t* err) {
    return given(ToProperties{name, props}, "enum", is_default, present, text, err, enum_text);
}

int32_t bits_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                           int32_t present, gx_do_vlist* names, uint32_t* err) {
    return given(ToProperties{name, props}, "bits", is_default, present, names, err, bit_names);
}

#define PERF_VIA(type)                                                                                        \
    int32_t type##_to_properties_perf(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props, \
                                      const void* handle, int32_t, uint32_t* err) {                           \
        return type##_to_properties(ctx, id, prefix, props, 0, 1, handle, err);                               \
    }
#define PERF_ANY(type)                                                                                        \
    int32_t type##_to_properties_perf(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props,   \
                                      const void* handle, int32_t, uint32_t* err) {                           \
        return whole(ToProperties{prefix, props}, #type, handle, err);                                       \
    }
PERF_ANY(calendar_time)
PERF_ANY(dcx_bytestr)
PERF_VIA(ip_address)
PERF_ANY(ip_prefix)
PERF_ANY(ipv4_addr)
PERF_ANY(ipv4_maddr)
PERF_ANY(ipv6_addr)
PERF_ANY(ipv6_maddr)
PERF_ANY(rsl_aes_password_vstring)
PERF_ANY(rsl_aes_vstring)
PERF_VIA(rsl_mac_addr)
PERF_ANY(rsl_password_vstring)
PERF_ANY(rsl_phys_addr)
PERF_ANY(rsl_username_vstring)
PERF_VIA(rsl_vstring)
PERF_ANY(timestamp)
PERF_VIA(rsl_boolean)
PERF_ANY(char)
PERF_ANY(counter64)
PERF_ANY(double)
PERF_ANY(float)
PERF_VIA(int16)
PERF_VIA(int32)
PERF_ANY(int64)
PERF_ANY(int8)
PERF_VIA(u_int16)
PERF_VIA(u_int32)
PERF_VIA(u_int64)
PERF_VIA(u_int8)
#undef PERF_VIA
#undef PERF_ANY

int32_t ip_address_is_default(rsl_ctx_t, rsl_ctx_id_t, const void* handle, const char* text, uint32_t* err) {
    if (word_set(err)) return 0;
    auto v = read(handle, "ip_address", err);
    if (!v || !text) return 0;
    auto want = zan::plat::parse_ip(text);
    return want && std::get<zan::plat::Ip>(v->v) == *want ? 1 : 0;
}

int32_t rsl_vstring_is_default(rsl_ctx_t, rsl_ctx_id_t, const void* handle, const char* text, uint32_t* err) {
    if (word_set(err)) return 0;
    auto v = read(handle, "rsl_vstring", err);
    if (!v || !text) return 0;
    return std::get<std::string>(v->v) == text ? 1 : 0;
}

int32_t var_string_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                            const char* chars, uint32_t* err) {
    return given(ToVlist{vlist}, "var_string", is_default, present, chars, err, text_of);
}

int32_t bits_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                      gx_do_vlist* names, uint32_t* err) {
    return given(ToVlist{vlist}, "bits", is_default, present, names, err, bit_names);
}

int32_t enum_to_nvlist(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_nvlist* nvlist, int32_t is_default,
                       int32_t present, const char* text, uint32_t* err) {
    return given(ToNvlist{name, nvlist}, "enum", is_default, present, text, err, enum_text);
}

// Whole-value forms of the library's base types: the value the handle holds, one entry,
// under the type's own word. with_state is ignored.
#define BASE_ALL(type)                                                                                        \
    int32_t type##_to_vlist_all(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_vlist* vlist, int32_t,        \
                                uint32_t* err) {                                                              \
        return vlist ? whole(ToVlist{vlist}, #type, obj, err) : -1;                                           \
    }
ZAN_BASE_TYPES(BASE_ALL)
BASE_ALL(rsl_boolean)
#undef BASE_ALL

int32_t enum_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                      const char* text, uint32_t* err) {
    return given(ToVlist{vlist}, "enum", is_default, present, text, err, enum_text);
}

}  // extern "C"
