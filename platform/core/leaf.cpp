// Leaf conversions: one value into a properties object or a value list. The rules they
// share are in zan/leaf.h.
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

int32_t set(const char* name, gx_do_properties* props, Value&& v) {
    if (!name) return k_einval;
    return zan::plat::properties_set(props, name, std::move(v));
}

int32_t full(std::string_view leaf, const char* name, gx_do_properties* props, int32_t is_default, int32_t present,
             const void* handle, uint32_t* err) {
    if (word_set(err)) return 0;
    if (!present) return set(name, props, null_value(leaf, is_default));
    auto v = read(handle, leaf, err);
    if (!v) return 0;
    v->is_default = is_default != 0;
    return set(name, props, std::move(*v));
}

// Row form of a library type without a full form: whatever value the handle holds, under
// the type's name.
int32_t perf_any(std::string_view type, const char* prefix, gx_do_properties* props, const void* handle,
                 uint32_t* err) {
    if (word_set(err)) return 0;
    auto v = read(handle, {}, err);
    if (!v) return 0;
    v->leaf = type;
    v->is_default = false;
    return set(prefix, props, std::move(*v));
}

int32_t to_vlist(std::string_view leaf, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                 const void* handle, uint32_t* err) {
    if (word_set(err)) return -1;
    if (!present) return zan::plat::vlist_add(vlist, null_value(leaf, is_default));
    auto v = read(handle, leaf, err);
    if (!v) return -1;
    v->is_default = is_default != 0;
    return zan::plat::vlist_add(vlist, std::move(*v));
}

int32_t to_nvlist(std::string_view leaf, const char* name, gx_do_nvlist* nvlist, int32_t is_default,
                  int32_t present, const void* handle, uint32_t* err) {
    if (word_set(err)) return -1;
    if (!name) return -1;
    if (!present) return zan::plat::nvlist_add(nvlist, name, null_value(leaf, is_default));
    auto v = read(handle, leaf, err);
    if (!v) return -1;
    v->is_default = is_default != 0;
    return zan::plat::nvlist_add(nvlist, name, std::move(*v));
}

int32_t all_to_vlist(std::string_view type, const void* handle, gx_do_vlist* vlist, uint32_t* err) {
    if (word_set(err) || !vlist) return -1;
    auto v = read(handle, {}, err);
    if (!v) return -1;
    v->leaf = type;
    v->is_default = false;
    return zan::plat::vlist_add(vlist, std::move(*v));
}

// The vlist form of given_to_properties.
template <class Arg, class Make>
int32_t given_to_vlist(std::string_view leaf, gx_do_vlist* vlist, int32_t is_default, int32_t present, Arg* arg,
                       uint32_t* err, Make make) {
    if (word_set(err)) return -1;
    Value v = null_value(leaf, is_default);
    if (present) {
        if (!arg) {
            raise(err, k_einval);
            return -1;
        }
        v.v = make(arg);
    }
    return zan::plat::vlist_add(vlist, std::move(v));
}

// A leaf whose value comes as a pointer rather than a handle: NULL while present is EINVAL.
template <class Arg, class Make>
int32_t given_to_properties(std::string_view leaf, const char* name, gx_do_properties* props, int32_t is_default,
                            int32_t present, Arg* arg, uint32_t* err, Make make) {
    if (word_set(err)) return 0;
    Value v = null_value(leaf, is_default);
    if (present) {
        if (!arg) {
            raise(err, k_einval);
            return 0;
        }
        v.v = make(arg);
    }
    return set(name, props, std::move(v));
}

}  // namespace

extern "C" {

#define LEAF_FULL(leaf)                                                                                     \
    int32_t leaf##_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props,        \
                                 int32_t is_default, int32_t present, const void* value, uint32_t* err) {    \
        return full(#leaf, name, props, is_default, present, value, err);                                   \
    }
LEAF_FULL(int32)
LEAF_FULL(u_int32)
LEAF_FULL(rsl_vstring)
LEAF_FULL(ip_address)
LEAF_FULL(rsl_mac_addr)
LEAF_FULL(u_int8)
LEAF_FULL(u_int64)
LEAF_FULL(u_int16)
LEAF_FULL(rsl_boolean)
LEAF_FULL(int16)
#undef LEAF_FULL

int32_t var_string_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props,
                                 int32_t is_default, int32_t present, const char* chars, uint32_t* err) {
    return given_to_properties("var_string", name, props, is_default, present, chars, err,
                               [](const char* c) { return std::string(c); });
}

int32_t enum_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                           int32_t present, const char* text, uint32_t* err) {
    return given_to_properties("enum", name, props, is_default, present, text, err,
                               [](const char* t) { return zan::plat::EnumText{t}; });
}

int32_t bits_to_properties(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_properties* props, int32_t is_default,
                           int32_t present, gx_do_vlist* names, uint32_t* err) {
    return given_to_properties("bits", name, props, is_default, present, names, err,
                               [](gx_do_vlist* n) { return zan::plat::vlist_values(n); });
}

#define PERF_VIA(type)                                                                                        \
    int32_t type##_to_properties_perf(rsl_ctx_t ctx, rsl_ctx_id_t id, const char* prefix, gx_do_properties* props, \
                                      const void* handle, int32_t, uint32_t* err) {                           \
        return type##_to_properties(ctx, id, prefix, props, 0, 1, handle, err);                               \
    }
#define PERF_ANY(type)                                                                                        \
    int32_t type##_to_properties_perf(rsl_ctx_t, rsl_ctx_id_t, const char* prefix, gx_do_properties* props,   \
                                      const void* handle, int32_t, uint32_t* err) {                           \
        return perf_any(#type, prefix, props, handle, err);                                                   \
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

#define LEAF_VLIST(leaf)                                                                                  \
    int32_t leaf##_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present, \
                            const void* value, uint32_t* err) {                                             \
        return to_vlist(#leaf, vlist, is_default, present, value, err);                                     \
    }                                                                                                       \
    int32_t leaf##_to_nvlist(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_nvlist* nvlist,               \
                             int32_t is_default, int32_t present, const void* value, uint32_t* err) {       \
        return to_nvlist(#leaf, name, nvlist, is_default, present, value, err);                             \
    }
LEAF_VLIST(int32)
LEAF_VLIST(u_int32)
LEAF_VLIST(rsl_vstring)
LEAF_VLIST(ip_address)
LEAF_VLIST(rsl_mac_addr)
LEAF_VLIST(u_int8)
LEAF_VLIST(u_int64)
LEAF_VLIST(u_int16)
LEAF_VLIST(rsl_boolean)
LEAF_VLIST(int16)
#undef LEAF_VLIST

int32_t var_string_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                            const char* chars, uint32_t* err) {
    return given_to_vlist("var_string", vlist, is_default, present, chars, err,
                          [](const char* c) { return std::string(c); });
}

int32_t bits_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                      gx_do_vlist* names, uint32_t* err) {
    return given_to_vlist("bits", vlist, is_default, present, names, err,
                          [](gx_do_vlist* n) { return zan::plat::vlist_values(n); });
}

int32_t enum_to_nvlist(rsl_ctx_t, rsl_ctx_id_t, const char* name, gx_do_nvlist* nvlist, int32_t is_default,
                       int32_t present, const char* text, uint32_t* err) {
    if (word_set(err)) return -1;
    if (!name) return -1;
    Value v = null_value("enum", is_default);
    if (present) {
        if (!text) {
            raise(err, k_einval);
            return -1;
        }
        v.v = zan::plat::EnumText{text};
    }
    return zan::plat::nvlist_add(nvlist, name, std::move(v));
}

// Whole-value forms of the library's base types: the value the handle holds, one entry,
// under the type's own word. with_state is ignored.
#define BASE_ALL(type)                                                                                      \
    int32_t type##_to_vlist_all(rsl_ctx_t, rsl_ctx_id_t, const void* obj, gx_do_vlist* vlist, int32_t,      \
                                uint32_t* err) {                                                            \
        return all_to_vlist(#type, obj, vlist, err);                                                        \
    }
ZAN_BASE_TYPES(BASE_ALL)
BASE_ALL(rsl_boolean)
#undef BASE_ALL

int32_t enum_to_vlist(rsl_ctx_t, rsl_ctx_id_t, gx_do_vlist* vlist, int32_t is_default, int32_t present,
                      const char* text, uint32_t* err) {
    if (word_set(err)) return -1;
    Value v = null_value("enum", is_default);
    if (present) {
        if (!text) {
            raise(err, k_einval);
            return -1;
        }
        v.v = zan::plat::EnumText{text};
    }
    return zan::plat::vlist_add(vlist, std::move(v));
}

}  // extern "C"
