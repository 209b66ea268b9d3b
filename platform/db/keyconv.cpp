// Key value conversion: a path key's value to the stored form of a key field
// (arbor_fe_gx_rsltype_get_data) or to a typed object for a compound key's part
// (arbor_fe_gx_rsltype_get_rsl_obj). A value that does not convert sets EINVAL and yields
// nothing; an error word that is already set is left as it is and nothing is made.
#include <cstring>
#include <string>

#include "core.hpp"
#include "store.hpp"

namespace zan::db {
namespace {

constexpr uint32_t k_einval = 22;
constexpr uint32_t k_enomem = 12;

// The key value as text in the form key_bytes and make_typed read. Values that come typed
// (an engine may hand numbers or addresses) are written out; lists, nulls and the like
// are no key value.
struct KeyTextOf {
    std::optional<std::string> operator()(const std::string& s) const { return s; }
    std::optional<std::string> operator()(int64_t n) const { return std::to_string(n); }
    std::optional<std::string> operator()(uint64_t n) const { return std::to_string(n); }
    std::optional<std::string> operator()(bool b) const { return b ? "true" : "false"; }
    std::optional<std::string> operator()(const plat::Ip& ip) const { return plat::format_ip(ip); }
    std::optional<std::string> operator()(const plat::Mac& mac) const { return plat::format_mac(mac); }
    template <class Other>
    std::optional<std::string> operator()(const Other&) const {
        return std::nullopt;
    }
};

std::optional<std::string> key_text(const gx_do_value* value) {
    const plat::Value* v = plat::value_get(value);
    if (!v) return std::nullopt;
    return std::visit(KeyTextOf{}, v->v);
}

thread_local KeyCalls t_key_calls;
thread_local std::vector<uint32_t> t_bound_script;
thread_local size_t t_bound_next = 0;

}  // namespace

KeyCalls& key_calls_of_thread() { return t_key_calls; }
const KeyCalls& key_calls() { return t_key_calls; }
void key_calls_clear() { t_key_calls = KeyCalls{}; }

void bound_script(std::vector<uint32_t> answers) {
    t_bound_script = std::move(answers);
    t_bound_next = 0;
}

uint32_t scripted_bound(uint32_t stored) {
    return t_bound_next < t_bound_script.size() ? t_bound_script[t_bound_next++] : stored;
}

}  // namespace zan::db

extern "C" {

void arbor_fe_gx_rsltype_get_data(rsl_ctx_t, rsl_ctx_id_t, uint64_t, uint32_t flag, gx_do_value* value,
                                  const uint8_t* field_luid, void** data, uint32_t* len, uint32_t* err) {
    using namespace zan::db;
    t_key_calls.data_flags.push_back(flag);
    if (data) *data = nullptr;
    if (len) *len = 0;
    if (!data || !len || (err && *err)) return fail(err, k_einval);
    Word w = field_luid ? word_of_luid(field_luid) : Word::none;
    auto text = w == Word::none ? std::nullopt : key_text(value);
    auto bytes = text ? key_bytes(w, *text) : std::nullopt;
    if (!bytes) return fail(err, k_einval);
    // An empty text key still gets memory of its own, so that data is NULL only on failure.
    void* mem = zan::plat::detail::tagged_alloc(bytes->empty() ? 1 : bytes->size(), "BYTE");
    if (!mem) return fail(err, k_enomem);
    if (!bytes->empty()) std::memcpy(mem, bytes->data(), bytes->size());
    *data = mem;
    *len = uint32_t(bytes->size());
}

void* arbor_fe_gx_rsltype_get_rsl_obj(rsl_ctx_t, rsl_ctx_id_t, uint64_t, uint32_t flag, gx_do_value* value,
                                      const uint8_t* type_luid, uint32_t* err) {
    using namespace zan::db;
    t_key_calls.obj_flags.push_back(flag);
    if (err && *err) return nullptr;
    Word w = type_luid ? word_of_luid(type_luid) : Word::none;
    auto text = w == Word::none ? std::nullopt : key_text(value);
    void* obj = text ? make_typed(w, *text) : nullptr;
    if (!obj) fail(err, k_einval);
    return obj;
}

}  // extern "C"
