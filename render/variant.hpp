// The variant rule every rendering family applies before its first field: a record instance
// (or an enumeration value's handle) reports the variant it was written with; a negative
// one is a broken invariant, written as a fatal trace before the process aborts.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "traversal.h"

namespace zan::fe {

// A record: "<type> Received variant %d < base version %d", with the variant and 0.
inline int8_t record_variant(const lt_unit* unit, uint32_t msg, const void* obj) {
    const auto variant = static_cast<int8_t>(rsl_get_instance_variant(obj, 1, 0));
    if (variant < 0) {
        __LTf_44(unit, msg, g_arbor_fe_trace_module_id, LT_LEVEL_FATAL,
                 static_cast<uint32_t>(static_cast<int32_t>(variant)), 0);
        std::abort();
    }
    return variant;
}

// obj_type and zan_cfg_union: "<enum> Recieved variant %d < base version 0", the variant alone.
inline int8_t value_variant(const lt_unit* unit, uint32_t msg, const void* handle) {
    const auto variant = static_cast<int8_t>(rsl_get_instance_variant(handle, 1, 0));
    if (variant < 0) {
        __LTf_4(unit, msg, g_arbor_fe_trace_module_id, LT_LEVEL_FATAL,
                static_cast<uint32_t>(static_cast<int32_t>(variant)));
        std::abort();
    }
    return variant;
}

}  // namespace zan::fe
