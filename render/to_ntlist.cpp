// Column description (to_ntlist): one template for the 1,012 record types, one for the
// tables. The walk is static: every attribute of every union arm is listed.
#include "to_ntlist.hpp"

#include <cstring>

#include "fe_catalogue.hpp"

namespace zan::fe::ntlist {
namespace {

// A full column name holds at most k_name_max characters and its terminator.
constexpr size_t k_name_max = 256;
constexpr size_t k_buffer_size = k_name_max + 1;
constexpr uint32_t k_enospc = 28;

constexpr lt_unit k_unit{"to_ntlist", gen::k_ntlist_formats, gen::ntlist_formats};

}  // namespace

int32_t type_columns(const Type& type, arbor_ntlist* list, const char* prefix, uint32_t* err) {
    // The name buffer starts empty, before anything else is looked at. It is only ever read up to its terminator (every append
    // writes one, every cut back to the prefix writes one), so its first byte is all that
    // clearing it has to set.
    char buffer[k_buffer_size];
    buffer[0] = '\0';

    if (list == nullptr || prefix == nullptr || err == nullptr) {
        __LTf_0(&k_unit, type.msg + k_msg_null_args, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR);
        return -1;
    }
    if (*err != 0) {
        __LTf_0(&k_unit, type.msg + k_msg_prior_error, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR);
        return -1;
    }
    const int32_t n = static_cast<int32_t>(std::strlen(prefix));
    if (n >= static_cast<int32_t>(k_name_max)) {
        *err = k_enospc;
        __LTf_15(&k_unit, type.msg + k_msg_no_space, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, prefix, k_name_max);
        return -1;
    }
    strcat_s(buffer, k_buffer_size, prefix);
    char* const tail = buffer + n;
    const size_t room = k_buffer_size - static_cast<size_t>(n);

    // No early exit: a failure shows in the error word, which is read once at the end.
    // Names that do not fit are refused by strcat_s, and the walk goes on regardless.
    for (const Attr& a : std::span(type.attrs, type.count)) {
        strcat_s(tail, room, type.pool + a.text);
        if (a.nested != nullptr)
            a.nested(list, buffer, err);
        else
            arbor_fe_ntlist_add(list, buffer, a.code, err);
        buffer[n] = 0;
    }

    const uint32_t e = *err;
    if (e == 0) return 0;
    __LTf_1(&k_unit, type.msg + k_msg_failed, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR,
            std::strerror(static_cast<int>(e)));
    return -1;
}

int32_t table_columns(std::span<const zan_type_to_ntlist_fn> rows, arbor_ntlist* list, uint32_t* err) {
    if (*err != 0) return -1;
    // Key record first where a table has one: its answer is dropped, and a failure there
    // shows as the next call's prior error.
    for (const zan_type_to_ntlist_fn row : rows.first(rows.size() - 1)) (void)row(list, "", err);
    return rows.back()(list, "", err);
}

}  // namespace zan::fe::ntlist
