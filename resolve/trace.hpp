// Trace calls of the path and query traversal unit: the unit and the module id are
// always the same, so a call site names only its message, level and arguments.
#pragma once

#include "resolve.hpp"

namespace zan::fe::resolve {

inline void trace(uint32_t msg, uint32_t level) {
    __LTf_0(&zan::gen::k_resolve_unit, msg, g_arbor_fe_trace_module_id, level);
}
inline void trace(uint32_t msg, uint32_t level, const char* a) {
    __LTf_1(&zan::gen::k_resolve_unit, msg, g_arbor_fe_trace_module_id, level, a);
}
inline void trace(uint32_t msg, uint32_t level, const char* a, const char* b) {
    __LTf_11(&zan::gen::k_resolve_unit, msg, g_arbor_fe_trace_module_id, level, a, b);
}
inline void trace(uint32_t msg, uint32_t level, uint32_t a) {
    __LTf_4(&zan::gen::k_resolve_unit, msg, g_arbor_fe_trace_module_id, level, a);
}

}  // namespace zan::fe::resolve
