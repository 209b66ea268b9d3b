// The 23 exported dispatchers of the engine's front end, in the order the segment loop asks
// them: for tests that drive the chain themselves, as an engine may.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "zan/engine.hpp"

using exported_dispatcher = int32_t (*)(rsl_ctx_t, rsl_ctx_id_t, uint64_t, gx_do_uri_segment*, gx_do_nlist*,
                                        gx_do_nlist*, arbor_params_t*, uint64_t, uint32_t, const void**, uint32_t);

inline const std::vector<exported_dispatcher>& exported_chain(const zan::engine::Engine& engine) {
    static const std::vector<exported_dispatcher> chain = [&] {
        static constexpr const char* names[] = {
            "ROOT",
            "inst_tbl_cfg_ip_dhcp_pool_eol",
            "inst_tbl_ipv6_acl",
            "inst_tbl_mdns_sl_in",
            "inst_tbl_mdns_sl_out",
            "inst_tbl_cfg_mdns_service_definition_eol",
            "inst_tbl_mdns_sp",
            "inst_tbl_mdns_flex_profile",
            "inst_tbl_mdns_gateway",
            "inst_tbl_threat_visibility",
            "inst_tbl_flow_exporter",
            "inst_tbl_conf_ip_nacl_mode_ext_number",
            "inst_tbl_conf_ip_nacl_ext_mode_eol",
            "inst_tbl_uidb_act_interface",
            "inst_tbl_cfg_crypto_ca_trust_point_eol",
            "inst_tbl_cfg_crypto_ca_cert_chain_eol",
            "inst_tbl_flow_record",
            "inst_tbl_flow_monitor",
            "inst_tbl_conf_mac_nacl_mode_eol",
            "inst_tbl_ci_vrf_eol",
            "inst_tbl_ci_vrf_afi_mode_eol",
            "inst_tbl_cfg_vlan_eol",
            "inst_tbl_cfg_classmap",
        };
        void* lib = dlopen(engine.library_path().c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (lib == nullptr) {
            std::fprintf(stderr, "%s is not loaded\n", engine.library_path().c_str());
            std::abort();
        }
        std::vector<exported_dispatcher> out;
        for (const char* d : names) {
            const std::string name = std::string("fe_zan_config_db_zan_config_db_context_") + d + "_path_query_dispatch";
            void* p = dlsym(lib, name.c_str());
            if (p == nullptr) {
                std::fprintf(stderr, "the library exports no %s\n", name.c_str());
                std::abort();
            }
            out.push_back(reinterpret_cast<exported_dispatcher>(p));
        }
        return out;
    }();
    return chain;
}
