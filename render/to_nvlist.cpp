// Key rendering to name-value lists. A key carries no state: every entry goes in with
// is_default 0 and present 1.
#include "to_nvlist.hpp"
#include "variant.hpp"

#include <cstdlib>
#include <span>

namespace zan::fe::nvlist {
namespace {

constexpr uint32_t k_einval = 22;   // no list to fill
constexpr uint32_t k_efault = 14;   // a key type given nothing to render

constinit const lt_unit& k_unit = gen::k_to_nvlist_unit;

}  // namespace

int32_t key_type(const KeyType& k, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* key_name, gx_do_nvlist* nvlist,
                 const void* key_obj, uint32_t* err) {
    if (err == nullptr) return -1;
    if (nvlist == nullptr || key_name == nullptr || key_obj == nullptr) {
        *err = k_efault;
        rsl_store_err(ctx, k_efault);
        return -1;
    }
    int32_t result = -1;
    for (const KeyPart& p : std::span(k.parts, k.count)) {
        const void* value = p.get(ctx, id, key_obj, err);
        result = p.conv(ctx, id, p.name, nvlist, 0, 1, value, err);
        if (result < 0) {
            __LTf_14(&k_unit, p.msg, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, key_name, *err);
            return -1;
        }
    }
    return result;
}

int32_t table_key(const TableKey& t, rsl_ctx_t ctx, rsl_ctx_id_t id, const void* row, gx_do_nvlist* nvlist,
                  uint32_t* err) {
    if (err == nullptr) return -1;
    if (nvlist == nullptr) {
        *err = k_einval;   // even over an error already pending
        return -1;
    }
    if (*err != 0) return -1;
    const void* field = t.field(ctx, id, row);
    if (t.compound != nullptr) return t.compound(ctx, id, t.name, nvlist, field, err);
    if (field == nullptr) return -1;
    // Whatever the accessor leaves in the error word, the conversion is called.
    const void* value = t.get(ctx, id, field, err);
    return t.conv(ctx, id, t.name, nvlist, 0, 1, value, err);
}

int32_t enumeration(const Enum& e, rsl_ctx_t ctx, rsl_ctx_id_t id, const char* name, gx_do_nvlist* nvlist,
                    int32_t is_default, int32_t present, const void* handle, uint32_t* err) {
    if (err == nullptr || *err != 0 || nvlist == nullptr || name == nullptr || handle == nullptr) return -1;
    const int8_t variant = e.reads_variant ? value_variant(&k_unit, e.msg_variant, handle) : 0;
    const uint32_t n = e.value(ctx, id, handle, err);
    if (n >= e.count) return -1;
    // A value of an extension above the instance's variant: a null under the value's text.
    if (e.levels != nullptr && variant < e.levels[n]) return gx_do_nvlist_add_null(nvlist, e.names[n]);
    return enum_to_nvlist(ctx, id, name, nvlist, is_default, present, e.names[n], err);
}

}  // namespace zan::fe::nvlist
