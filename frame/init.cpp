// The front door: registration with the engine and the two name lookups.
#include "fe_internal.hpp"

namespace {

// One string, so that both registration calls hand over the same pointer.
constexpr char k_context[] = ZAN_CONTEXT_NAME;

}  // namespace

extern "C" ZAN_FE_EXPORT int32_t zan_config_db_data_model_fe_init(void) {
    // The first call's answer is not looked at; the second one's is ours.
    (void)arbor_register_fe_vectors(k_context, fe_zan_config_db_zan_config_db_context_path_query_dispatch,
                                    zan_config_db_table_lookup, zan_config_db_type_lookup,
                                    zan_config_db_type_dispatch_type_mrst_lookup, zan_config_db_table_mrst_lookup,
                                    &zan_config_db_type_dispatch_type_lut, zan_config_db_field_dispatch_type_field_lut);
    return arbor_register_fe_gx_vectors(k_context, zan_config_db_fe_gx_dispatch_vft,
                                        zan_config_db_fe_gx_type_dispatch_vft, nullptr, zan_config_db_type_gx_lut);
}

// The database numbers the rows; a negative number means it does not know the name. The
// number is trusted otherwise: rows and numbering come from the same catalogue.
extern "C" ZAN_FE_EXPORT const void* zan_config_db_table_lookup(const char* name) {
    const int32_t row = zan_config_db_table_mrst_lookup(name);
    if (row < 0) return nullptr;
    return zan_config_db_table_dispatch_fe_table_vft[static_cast<int64_t>(row)].vft;
}

extern "C" ZAN_FE_EXPORT const void* zan_config_db_type_lookup(const char* name) {
    const int32_t row = zan_config_db_type_dispatch_type_mrst_lookup(name);
    if (row < 0) return nullptr;
    return zan_config_db_field_dispatch_type_field_lut[static_cast<int64_t>(row)].vft;
}
