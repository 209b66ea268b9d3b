# VRF definitions, address families, route targets and the multicast distribution tree.
domain vrf

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_ci_vrf_eol segment=vrf key=vrf_key_vrf_name:rsl_vstring columns=2 pq=8f39aaa5729ad53c7891da33e83a9d40
table tbl_ci_vrf_mode_rt_eol_b entrance=tbl_ci_vrf_mode_rt_eol segment=vrf_afi_rt link=ci_vrf_afi_mode_eol_child_ci_vrf_mode_rt_eol pq=e5a9f6b1a29709bfadf438f7b27c1c74
table tbl_ci_context_eol segment=ci_context key=singleton columns=4 pq=f1a38d3268340c65d27cb2382bedda16
table tbl_vrf_mode_export_map_eol segment=vrf_mode_export_map key=singleton columns=15 pq=d00f7b11205fe2f708c1d781b972e776
table tbl_vrf_mode_import_map_eol segment=vrf_mode_import_map key=singleton columns=10 pq=b21b1c2e1f61a1bcacb70dd842762334
table tbl_ct_replicate_policy_eol segment=ct_replicate_policy key=singleton columns=3 pq=3ceb08318744ee926d9336c0f9c4b930
table tbl_ct_replicate_eol segment=ct_replicate key=singleton columns=93 pq=b338afd6b776a56829ca4bb956e78ec7
table tbl_vrf_mode_prot_lcl_pfxs_eol segment=vrf_mode_prot_lcl_pfxs key=singleton columns=3 pq=ea44bd0d405eb3114b68dba7a2bb831d
table tbl_vrf_mode_ias_eol segment=vrf_mode_ias key=singleton columns=11 pq=670c1cd355555e3184be37c1dfe6c55b
table tbl_vrf_mode_nexthop_eols segment=vrf_mode_nexthop key=singleton columns=13 pq=6f877ca98a42827ff0d379d72f8cbeb2
table tbl_vrf_mode_max_pfx_eol segment=vrf_mode_max_pfx key=singleton columns=8 pq=adff32f535dd8954a7f8022a4eedef2a
table tbl_vrf_af_mdt_partitioned_mldp_eol segment=vrf_af_mdt_partitioned_mldp key=singleton columns=4 pq=396dfa336763df9c0484f9d69de18a44
table tbl_vrf_af_mdt_threshold_eol segment=vrf_af_mdt_threshold key=singleton columns=5 pq=7f11ee19d49dca71e615dc020b7ef25e
table tbl_vrf_af_mdt_bgp_ad_mode_eol segment=vrf_af_mdt_bgp_ad_mode key=singleton columns=16 pq=0f66fa84183439be391363081216b6dc
table tbl_vrf_af_mdt_default_ir_eol segment=vrf_af_mdt_default_ir key=singleton columns=4 pq=76dca866649b38090780b8cf55034265
table tbl_vrf_af_mdt_mtu_eol segment=vrf_af_mdt_mtu key=singleton columns=4 pq=7c77833f338fcaabf1c8046a3c6dd345
table tbl_vrf_af_mdt_mldp_p2mp_eol segment=vrf_af_mdt_mldp_p2mp key=singleton columns=4 pq=e4631b553fde05b4a886904732dce811
table tbl_vrf_af_mdt_data_eol segment=vrf_af_mdt_data key=singleton columns=59 pq=c86308a3429b6def559c11d466f6d437
table tbl_vrf_af_mdt_overlay_eol segment=vrf_af_mdt_overlay key=singleton columns=5 pq=05c8d825458992894e692bf19b26be74
table tbl_vrf_af_mdt_strict_rpf_eol segment=vrf_af_mdt_strict_rpf key=singleton columns=4 pq=cf6f4db354971bda513b7c4fd711cad0
table tbl_vrf_af_mdt_data_log_eol segment=vrf_af_mdt_data_log key=singleton columns=4 pq=52c78612cc65010936ec730b5ab4e22f
table tbl_vrf_af_mdt_bgp_ad_role_eol segment=vrf_af_mdt_bgp_ad_role key=singleton columns=4 pq=265aad9d9891befeff2ea35374d7a291
table tbl_vrf_af_mdt_pref_eol segment=vrf_af_mdt_pref key=singleton columns=8 pq=ce3bdd3e61eaad365c6419b18d885add
table tbl_vrf_af_mdt_overlay_bgp_shared_delay_eol segment=vrf_af_mdt_overlay_bgp_shared_delay key=singleton columns=3 pq=0b2f5280909af79295cb93899543cba6
table tbl_vrf_af_mdt_overlay_bgp_source_delay_eol segment=vrf_af_mdt_overlay_bgp_source_delay key=singleton columns=3 pq=a38462746892d473b766ca85187904c8
table tbl_vrf_af_mdt_list_eol segment=vrf_af_mdt_list key=singleton columns=38 pq=f63fcde5157a1268b05f1dfa80c64aa5
table tbl_vrf_af_mdt_mode_eol segment=vrf_af_mdt_mode key=singleton columns=5 pq=e002031c1e81f5e120ba87065065c310
table tbl_vrf_af_mdt_eol segment=vrf_af_mdt key=singleton columns=4 pq=81bd940d5331a905301ac8795595e972
table tbl_vrf_af_mdt_partitioned_ir_eol segment=vrf_af_mdt_partitioned_ir key=singleton columns=4 pq=6b29507f90f6fc3a816f116c9967c0f4
table tbl_vrf_af_mdt_direct_eol segment=vrf_af_mdt_direct key=singleton columns=3 pq=3ecdfb0717cf7c93c0c0b85b5155063a
table tbl_vrf_af_mdt_mldp_eol segment=vrf_af_mdt_mldp key=singleton columns=5 pq=3152826b0672a2d5b54fcf6efc92ec14
table tbl_ci_vrf_mode_rd_eol segment=vrf_rd key=singleton columns=5 pq=0e902d8c874bf832499b9335aca14f21
table tbl_ci_vrf_mode_ipv4_mt_eol segment=vrf_ipv4_mt key=singleton columns=3 pq=454d4360175de63cc6908d21ad17cc63
table tbl_ci_vrf_mode_descr_eol segment=vrf_descr key=singleton columns=3 pq=9c6976ca6ebebbaa3717e83bf2429704
table tbl_ci_vrf_afi_mode_eol segment=vrf_afi key=vrf_af_afi:u_int32 columns=3 pq=93eb7dfcc9095e2cfbf44c52c408bb20
table tbl_ci_vrf_mode_vpnid_eol segment=vrf_vpnid key=singleton columns=4 pq=e47480cd1c4da0c781178585ee15665f
table tbl_ci_vrf_mode_rt_eol segment=vrf_rt key=vrf_mode_rt_key:rsl_vstring columns=7 pq=e4b48ab163450b681e992e70aae3d6f1
table tbl_ci_vrf_mode_ipv6_mt_eol segment=vrf_ipv6_mt key=singleton columns=3 pq=a67e30edee4a3a476ee7d26bd214f9ae

# Records, parents before what they nest, attributes in schema order.
record ci_vrf_eol: vrf_key_vrf_name rsl_vstring; ci_vrf_set_afi int32
record ci_vrf_mode_rt_eol: vrf_mode_rt_key rsl_vstring; compound_25. -> ci_vrf_mode_rt_set_opt_cp; parent_details_1. -> ci_vrf_parent_details; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ci_vrf_mode_rt_set_opt_cp: vrf_mode_rt_options int32; target_vpn_extended_community_1 int32; target_vpn_extended_community_2 int32; target_vpn_extended_community_3 int32
record ci_vrf_parent_details: parent_key_vrf_name rsl_vstring
record ci_context_eol: singleton_id u_int32; ci_snmp_context_set_ctx int32; snmp_context_name rsl_vstring; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_export_map_eol: singleton_id u_int32; compound_0. -> vrf_mode_export_default_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_export_default_cp: bgp_af_max int32; descriminator enum; arm compound_16. -> vrf_mode_export_default_cp_0_cp; arm compound_17. -> vrf_mode_export_default_cp_1_cp; arm compound_6. -> vrf_mode_export_map_kw_cp
record vrf_mode_export_default_cp_0_cp: compound_3. -> vrf_mode_export_max_cp_cp; ipv4_cast int32
record vrf_mode_export_max_cp_cp: compound_7. -> vrf_mode_export_max_cp; compound_8. -> vrf_mode_export_map_kw_cp
record vrf_mode_export_max_cp: descriminator enum; arm compound_18. -> vrf_mode_export_max_cp_0_cp; arm compound_19. -> vrf_mode_export_max_cp_1_cp
record vrf_mode_export_max_cp_0_cp: upper_limit_no_hog_mem int32
record vrf_mode_export_max_cp_1_cp: bgp_gblexport_maxroutes int32
record vrf_mode_export_map_kw_cp: route_map_name rsl_vstring
record vrf_mode_export_default_cp_1_cp: compound_5. -> vrf_mode_export_max_cp_cp; ipv6_cast int32
record vrf_mode_import_map_eol: singleton_id u_int32; compound_0. -> vrf_mode_import_default_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_import_default_cp: bgp_af_max int32; descriminator enum; arm compound_11. -> vrf_mode_import_default_cp_0_cp; arm compound_5. -> vrf_mode_import_map_kw_cp
record vrf_mode_import_default_cp_0_cp: compound_4. -> vrf_mode_import_map_kw_cp; compound_3. -> vrf_mode_import_max_cp; ipv4_cast int32
record vrf_mode_import_map_kw_cp: route_map_name rsl_vstring
record vrf_mode_import_max_cp: descriminator enum; arm compound_12. -> vrf_mode_import_max_cp_0_cp; arm compound_13. -> vrf_mode_import_max_cp_1_cp
record vrf_mode_import_max_cp_0_cp: upper_limit_no_hog_mem int32
record vrf_mode_import_max_cp_1_cp: bgp_afimport_maxroutes int32
record ct_replicate_policy_eol: singleton_id u_int32; destination int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ct_replicate_eol: singleton_id u_int32; from int32; compound_1. -> ct_replicate_vrf_def_not_specified_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ct_replicate_vrf_def_not_specified_cp: false_0 int32; descriminator enum; arm compound_3. -> ct_replicate_kw_af_multicast_cp; arm compound_32. -> ct_replicate_vrf_def_not_specified_cp_1_cp; arm compound_5. -> ct_replicate_kw_af_unicast_cp
record ct_replicate_kw_af_multicast_cp: multicast int32; descriminator enum; arm compound_10. -> ct_replicate_topo_base_def_cp; arm compound_11. -> ct_replicate_topo_kw_cp
record ct_replicate_topo_base_def_cp: true_4 int32; compound_17. -> ct_replicate_what_all_cp_cp
record ct_replicate_what_all_cp_cp: compound_20. -> ct_replicate_what_all_cp; route_map int32; true_3 int32; pointer_to_route_map_entries rsl_vstring
record ct_replicate_what_all_cp: descriminator enum; arm compound_33. -> ct_replicate_what_all_cp_0_cp; arm compound_34. -> ct_replicate_router_name_cp
record ct_replicate_what_all_cp_0_cp: all int32
record ct_replicate_router_name_cp: router_name rsl_vstring
record ct_replicate_topo_kw_cp: compound_18. -> ct_replicate_base_kw_cp; compound_19. -> ct_replicate_what_all_cp_cp
record ct_replicate_base_kw_cp: descriminator enum; arm compound_37. -> ct_replicate_base_kw_cp_0_cp; arm compound_38. -> ct_replicate_base_kw_cp_1_cp
record ct_replicate_base_kw_cp_0_cp: base int32
record ct_replicate_base_kw_cp_1_cp: routing_topology_instance_name rsl_vstring
record ct_replicate_vrf_def_not_specified_cp_1_cp: compound_4. -> ct_replicate_vrf_global_kw_cp_cp
record ct_replicate_vrf_global_kw_cp_cp: compound_6. -> ct_replicate_vrf_global_kw_cp; descriminator enum; arm compound_7. -> ct_replicate_kw_af_multicast_cp; arm compound_8. -> ct_replicate_kw_af_unicast_cp
record ct_replicate_vrf_global_kw_cp: descriminator enum; arm compound_39. -> ct_replicate_vrf_global_kw_cp_0_cp; arm compound_40. -> ct_replicate_vrf_global_kw_cp_1_cp
record ct_replicate_vrf_global_kw_cp_0_cp: global int32
record ct_replicate_vrf_global_kw_cp_1_cp: source_vrf_name rsl_vstring
record ct_replicate_kw_af_unicast_cp: unicast int32; descriminator enum; arm compound_13. -> ct_replicate_what_all_cp_cp; arm compound_14. -> ct_replicate_topo_base_def_cp; arm compound_15. -> ct_replicate_topo_kw_cp
record vrf_mode_prot_lcl_pfxs_eol: singleton_id u_int32; prot_lcl_pfxs_enable u_int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_ias_eol: singleton_id u_int32; compound_0. -> cfg_ias_nvgen_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record cfg_ias_nvgen_cp: compound_1. -> vrf_mode_ias_nh_cp; compound_2. -> vrf_mode_ias_csc_cp
record vrf_mode_ias_nh_cp: next_hop int32; ipv6_address ip_address; ip_address ip_address; global int32
record vrf_mode_ias_csc_cp: csc int32; compound_4. -> vrf_mode_ias_nh_cp
record vrf_mode_nexthop_eols: singleton_id u_int32; compound_0. -> vrf_mode_nexthop_noprefix_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_nexthop_noprefix_cp: descriminator enum; arm compound_2. -> vrf_mode_nexthop_intf_syn_ch_cp; arm compound_3. -> vrf_mode_nexthop_ipv4mapped_cp_cp; arm compound_12. -> vrf_mode_loopback_idb_cp
record vrf_mode_nexthop_intf_syn_ch_cp: iftype_loopback -> if_handle; loopback_interface_number int32
record vrf_mode_nexthop_ipv4mapped_cp_cp: compound_5. -> vrf_mode_nexthop_ipv4mapped_cp; descriminator enum; arm compound_6. -> vrf_mode_nexthop_intf_syn_ch_cp; arm compound_13. -> vrf_mode_loopback_idb_cp
record vrf_mode_nexthop_ipv4mapped_cp: descriminator enum; arm compound_14. -> vrf_mode_nexthop_ipv4mapped_cp_0_cp; arm compound_15. -> vrf_mode_nexthop_ipv4mapped_cp_1_cp
record vrf_mode_nexthop_ipv4mapped_cp_0_cp: ipv4 int32
record vrf_mode_nexthop_ipv4mapped_cp_1_cp: ipv6 int32
record vrf_mode_loopback_idb_cp: iftype_loopback -> if_handle
record vrf_mode_max_pfx_eol: singleton_id u_int32; compound_1. -> vrf_mode_max_pfx_limit_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_mode_max_pfx_limit_cp: maximum_number_of_routes_allowed int32; descriminator enum; arm compound_8. -> vrf_mode_max_pfx_limit_cp_0_cp; arm compound_4. -> vrf_mode_max_pfx_warn_cp
record vrf_mode_max_pfx_limit_cp_0_cp: warning_only int32
record vrf_mode_max_pfx_warn_cp: threshold_val_from_warning int32; reinstall int32; threshold_val_reinstall_routes int32
record vrf_af_mdt_partitioned_mldp_eol: ipver int32; singleton_id u_int32; p2mp_mp2mp int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_threshold_eol: ipver int32; singleton_id u_int32; vrf_af_mdt_data_init int32; traffic_rate_in_kilobits_per_second int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_bgp_ad_mode_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_bgp_ad_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_bgp_ad_cp: descriminator enum; arm compound_2. -> vrf_af_mdt_bgp_ad_pim_cp; arm compound_3. -> vrf_af_mdt_bgp_ad_ir_cp_cp
record vrf_af_mdt_bgp_ad_pim_cp: pim_3 int32; mdt_hello_enable int32; pim_tlv_announce int32
record vrf_af_mdt_bgp_ad_ir_cp_cp: compound_7. -> vrf_af_mdt_bgp_ad_ir_cp; mdt_hello_enable int32; pim_tlv_announce int32; compound_10. -> vrf_af_mdt_bgp_ad_lsm_interas_cp
record vrf_af_mdt_bgp_ad_ir_cp: descriminator enum; arm compound_18. -> vrf_af_mdt_bgp_ad_ir_cp_0_cp; arm compound_19. -> vrf_af_mdt_bgp_ad_ir_cp_1_cp
record vrf_af_mdt_bgp_ad_ir_cp_0_cp: ingress_replication_1 int32
record vrf_af_mdt_bgp_ad_ir_cp_1_cp: mldp_4 int32
record vrf_af_mdt_bgp_ad_lsm_interas_cp: inter_as int32; mdt_hello_enable int32; compound_13. -> vrf_af_mdt_bgp_ad_tlv_cp
record vrf_af_mdt_bgp_ad_tlv_cp: pim_tlv_announce int32; mdt_hello_enable int32
record vrf_af_mdt_default_ir_eol: ipver int32; singleton_id u_int32; ingress_replication_2 int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_mtu_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_mtu_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_mtu_cp: mtu_value int32
record vrf_af_mdt_mldp_p2mp_eol: ipver int32; singleton_id u_int32; p2mp int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_data_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_data_init_a_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_data_init_a_cp: vrf_af_mdt_data_init int32; compound_3. -> vrf_af_mdt_list_acl_num_0_cp; ip_multicast_group_address ip_address; compound_5. -> vrf_af_mdt_data_hash_bits_0_cp; mldp_3 int32; compound_7. -> vrf_af_mdt_data_mldp_nr_cp; ingress_replication_3 int32; compound_9. -> vrf_af_mdt_data_ir_nr_init_a_cp; traffic_rate_in_kilobits_per_second int32
record vrf_af_mdt_list_acl_num_0_cp: descriminator enum; arm compound_43. -> vrf_af_mdt_list_acl_num_0_cp_0_cp; arm compound_44. -> vrf_af_mdt_list_acl_num_0_cp_1_cp; arm compound_45. -> vrf_af_mdt_list_acl_num_0_cp_2_cp
record vrf_af_mdt_list_acl_num_0_cp_0_cp: acl_number_1 int32
record vrf_af_mdt_list_acl_num_0_cp_1_cp: ip_named_extended_acl rsl_vstring
record vrf_af_mdt_list_acl_num_0_cp_2_cp: acl_number_2 int32
record vrf_af_mdt_data_hash_bits_0_cp: wildcard_bits ip_address; compound_12. -> vrf_af_mdt_data_scope_cp; immediate_switch int32; compound_14. -> vrf_af_mdt_list_0_cp; compound_15. -> vrf_af_mdt_threshold_num2_0_cp
record vrf_af_mdt_data_scope_cp: scope int32; compound_37. -> vrf_af_mdt_data_scope_nr_cp
record vrf_af_mdt_data_scope_nr_cp: scope_of_data_mdt int32; immediate_switch int32
record vrf_af_mdt_list_0_cp: compound_20. -> vrf_af_mdt_list_acl_num_0_cp
record vrf_af_mdt_threshold_num2_0_cp: traffic_rate_in_kilobits_per_second int32; compound_17. -> vrf_af_mdt_list_0_cp; compound_18. -> vrf_af_mdt_data_scope_cp; immediate_switch int32
record vrf_af_mdt_data_mldp_nr_cp: number_of_data_mdts int32; compound_30. -> vrf_af_mdt_data_scope_cp; immediate_switch int32; compound_32. -> vrf_af_mdt_list_acl_num_0_cp
record vrf_af_mdt_data_ir_nr_init_a_cp: vrf_af_mdt_data_ir_nr_init int32; immediate_switch int32; compound_23. -> vrf_af_mdt_list_acl_num_cp_cp; compound_24. -> vrf_af_mdt_data_ir_nr_cp
record vrf_af_mdt_list_acl_num_cp_cp: compound_33. -> vrf_af_mdt_list_acl_num_0_cp; immediate_switch int32; compound_35. -> vrf_af_mdt_data_scope_cp
record vrf_af_mdt_data_ir_nr_cp: number_of_data_mdts int32; compound_26. -> vrf_af_mdt_list_acl_num_cp_cp; immediate_switch int32
record vrf_af_mdt_overlay_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_overlay_use_bgp_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_overlay_use_bgp_cp: use_bgp int32; spt_only int32
record vrf_af_mdt_strict_rpf_eol: ipver int32; singleton_id u_int32; interface int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_data_log_eol: ipver int32; singleton_id u_int32; true_2 int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_bgp_ad_role_eol: ipver int32; singleton_id u_int32; receiver_site int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_pref_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_pref_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_pref_cp: descriminator enum; arm compound_2. -> vrf_af_mdt_pref_1_mldp_cp; arm compound_3. -> vrf_af_mdt_pref_1_pim_cp
record vrf_af_mdt_pref_1_mldp_cp: mldp_1 int32; pim_2 int32
record vrf_af_mdt_pref_1_pim_cp: pim_1 int32; mldp_2 int32
record vrf_af_mdt_overlay_bgp_shared_delay_eol: singleton_id u_int32; delay_shared int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_overlay_bgp_source_delay_eol: singleton_id u_int32; delay_source int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_list_eol: ipver int32; singleton_id u_int32; compound_1. -> vrf_af_mdt_data_init_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_data_init_cp: vrf_af_mdt_data_init int32; descriminator enum; arm compound_25. -> vrf_af_mdt_data_init_cp_0_cp; arm compound_26. -> vrf_af_mdt_data_init_cp_1_cp; arm compound_27. -> vrf_af_mdt_data_init_cp_2_cp; arm compound_28. -> vrf_af_mdt_data_init_cp_3_cp
record vrf_af_mdt_data_init_cp_0_cp: compound_3. -> vrf_af_mdt_list_acl_num_1_cp
record vrf_af_mdt_list_acl_num_1_cp: descriminator enum; arm compound_30. -> vrf_af_mdt_list_acl_num_1_cp_0_cp; arm compound_31. -> vrf_af_mdt_list_acl_num_1_cp_1_cp; arm compound_32. -> vrf_af_mdt_list_acl_num_1_cp_2_cp
record vrf_af_mdt_list_acl_num_1_cp_0_cp: acl_number_1 int32
record vrf_af_mdt_list_acl_num_1_cp_1_cp: ip_named_extended_acl rsl_vstring
record vrf_af_mdt_list_acl_num_1_cp_2_cp: acl_number_2 int32
record vrf_af_mdt_data_init_cp_1_cp: compound_5. -> vrf_af_mdt_data_ir_nr_init_cp; ingress_replication_3 int32
record vrf_af_mdt_data_ir_nr_init_cp: vrf_af_mdt_data_ir_nr_init int32; descriminator enum; arm compound_29. -> vrf_af_mdt_data_ir_nr_init_cp_0_cp; arm compound_14. -> vrf_af_mdt_data_list4_cp
record vrf_af_mdt_data_ir_nr_init_cp_0_cp: compound_13. -> vrf_af_mdt_data_list4_cp; number_of_data_mdts int32
record vrf_af_mdt_data_list4_cp: compound_15. -> vrf_af_mdt_list_acl_num_1_cp
record vrf_af_mdt_data_init_cp_2_cp: compound_8. -> vrf_af_mdt_list_acl_num_1_cp; number_of_data_mdts int32; mldp_3 int32
record vrf_af_mdt_data_init_cp_3_cp: compound_10. -> vrf_af_mdt_data_hash_bits_1_cp; ip_multicast_group_address ip_address
record vrf_af_mdt_data_hash_bits_1_cp: wildcard_bits ip_address; compound_17. -> vrf_af_mdt_list_1_cp; compound_18. -> vrf_af_mdt_threshold_num2_1_cp
record vrf_af_mdt_list_1_cp: compound_21. -> vrf_af_mdt_list_acl_num_1_cp
record vrf_af_mdt_threshold_num2_1_cp: traffic_rate_in_kilobits_per_second int32; compound_20. -> vrf_af_mdt_list_1_cp
record vrf_af_mdt_mode_eol: ipver int32; singleton_id u_int32; gre int32; true_1 int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_eol: ipver int32; singleton_id u_int32; ip_multicast_group_address ip_address; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_partitioned_ir_eol: ipver int32; singleton_id u_int32; ingress_replication_4 int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_direct_eol: ipver int32; singleton_id u_int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record vrf_af_mdt_mldp_eol: ipver int32; mp2mp_lsp_root_address ip_address; mvpn_mldp_profile_rosen_mp2mp int32; singleton_id u_int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ci_vrf_mode_rd_eol: singleton_id u_int32; vpn_route_distinguisher_1 int32; vpn_route_distinguisher_2 int32; vpn_route_distinguisher_3 int32; parent_details_1. -> ci_vrf_parent_details
record ci_vrf_mode_ipv4_mt_eol: singleton_id u_int32; ci_vrf_mode_ipv4_mt_set int32; parent_details_1. -> ci_vrf_parent_details
record ci_vrf_mode_descr_eol: singleton_id u_int32; description rsl_vstring; parent_details_1. -> ci_vrf_parent_details
record ci_vrf_afi_mode_eol: vrf_af_afi u_int32; leave_subcommand int32; parent_details_1. -> ci_vrf_parent_details
record ci_vrf_mode_vpnid_eol: singleton_id u_int32; oui int32; vpn_index int32; parent_details_1. -> ci_vrf_parent_details
record ci_vrf_mode_ipv6_mt_eol: singleton_id u_int32; ci_vrf_mode_ipv6_mt_set int32; parent_details_1. -> ci_vrf_parent_details
