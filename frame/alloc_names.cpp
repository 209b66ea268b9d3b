// The allocator's type and pool names, and their per-thread cells (zero until the
// allocator fills them). Linkage and visibility come with the declarations.
#include "fe_internal.hpp"

extern "C" {
const char __TY_tinfon_BYTE[] = "BYTE";
const char __TY_tinfon_BYTE_PTR[] = "BYTE*";
const char __TY_tinfon_gx_do_value_PTR[] = "gx_do_value*";
const char __TY_tinfon_int32[] = "int32";
const char __TY_tinfon_default[] = "default";  // the one pool in use

thread_local uint64_t __TY_tinfot_ptr_BYTE = 0;
thread_local uint64_t __TY_tinfot_ptr_BYTE_PTR = 0;
thread_local uint64_t __TY_tinfot_ptr_gx_do_value_PTR = 0;
thread_local uint64_t __TY_tinfot_ptr_int32 = 0;
thread_local uint64_t __TY_tinfot_ptr_default = 0;
}
