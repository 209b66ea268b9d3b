# Access lists: simple and extended IPv4, IPv6 and MAC lists with their entries.
domain acl

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_access_list_ipsimple1_b_cp_cp segment=U_tbl_access_list_ipsimple1_b_cp_cp key=singleton columns=64 pq=a398d022d4351df48322905089933837
table tbl_conf_ip_nacl_mode_ext_number segment=acl_extended_number key=acl_number:int32 columns=1 pq=4c8b1eb44f1eaccf4372a2a784a67245
table tbl_conf_ip_nacl_ext_mode_eol segment=acl_extended_named key=conf_ip_nacl_ext_name_1:rsl_vstring columns=3 pq=ac9130f4547c17d30e3a655f20731ab2
table tbl_conf_mac_nacl_mode_eol segment=mac_named_acl key=access_list_name:rsl_vstring columns=1 pq=ca3ab343ac333b687e9bf77c6519a9d5
table tbl_ipv6_acl segment=ipv6_acl key=ipv6_acl_name:rsl_vstring columns=1 pq=03c472ca4495f8b438d889d2b47a5c1d
table tbl_conf_ip_nacl_ext_eol_final_b entrance=tbl_conf_ip_nacl_ext_eol_final segment=ace_named link=conf_ip_nacl_ext_mode_eol_conf_ip_nacl_ext_eol_final pq=77dde229df88ae4d6c2386e5cc86ba64
table tbl_conf_ip_nacl_ext_eol_final segment=ace_numbered key=acl_entry_number:u_int32 columns=110 pq=c3dd75f6808578e6ec925f09a227f039
table tbl_conf_mac_nacl_eol segment=mac_ace key=mac_ace_entry_number:u_int32 columns=395 pq=bb262a934ce15c61aa0336d98b8c82f1
table tbl_ipv6_ace segment=ipv6_ace key=sequence_number:int32 columns=51 pq=b183256ea16ec121307a6fc42fd7b23a

# Records, parents before what they nest, attributes in schema order.
record access_list_ipsimple1_b_cp_cp: singleton_id u_int32; compound_1. -> access_list_ipsimple1_b_cp; compound_2. -> alist_simple_noprefix_cp
record access_list_ipsimple1_b_cp: descriminator enum default=1; arm compound_27. -> access_list_ipsimple1_b_cp_cp_cp; arm compound_28. -> access_list_ipsimple1_a_cp_cp_cp
record access_list_ipsimple1_b_cp_cp_cp: access_list_ipsimple1_b_33 int32 default=0
record access_list_ipsimple1_a_cp_cp_cp: access_list_ipsimple1_a_34 int32
record alist_simple_noprefix_cp: descriminator enum default=1; arm compound_3. -> alist_simple_descr_cp; arm compound_4. -> alist_simple_seqno_cp_cp_cp; arm compound_5. -> alist_simple_permit_cp_cp; arm compound_6. -> alist_simple_permit_cp_cp
record alist_simple_descr_cp: alist_simple_descr_23 int32 default=0; alist_simple_descr_txt_24 rsl_vstring
record alist_simple_seqno_cp_cp_cp: alist_simple_seqno_36 int32
record alist_simple_permit_cp_cp: compound_7. -> alist_simple_permit_cp; descriminator enum default=1; arm compound_8. -> alist_simple_any_cp; arm compound_9. -> alist_simple_hostaddr_cp; arm compound_10. -> alist_simple_1_cp
record alist_simple_permit_cp: descriminator enum default=1; arm compound_29. -> alist_simple_permit_cp_cp_cp; arm compound_30. -> alist_simple_deny_cp_cp_cp
record alist_simple_permit_cp_cp_cp: alist_simple_permit_31 int32 default=0
record alist_simple_deny_cp_cp_cp: alist_simple_deny_32 int32
record alist_simple_any_cp: alist_simple_any_11 ip_address default="0.0.0.0"; compound_12. -> alist_simple_log_cp
record alist_simple_log_cp: alist_simple_log_20 int32; descriminator enum default=1; arm compound_21. -> alist_simple_iplog_md5hash_cp_cp_cp; arm compound_22. -> alist_simple_iplog_func_cp
record alist_simple_iplog_md5hash_cp_cp_cp: alist_simple_iplog_md5hash_35 int32 default=0
record alist_simple_iplog_func_cp: alist_simple_iplog_cookie_25 rsl_vstring; alist_simple_iplog_cookie_present_26 int32
record alist_simple_hostaddr_cp: alist_simple_hostaddr_13 ip_address; compound_14. -> alist_simple_log_cp
record alist_simple_1_cp: alist_simple_1_15 ip_address; compound_16. -> alist_simple_2_cp; compound_17. -> alist_simple_log_cp
record alist_simple_2_cp: alist_simple_2_18 ip_address; compound_19. -> alist_simple_log_cp
record conf_ip_nacl_mode_ext_number: acl_number int32
record conf_ip_nacl_ext_mode_eol: conf_ip_nacl_ext_name_1 rsl_vstring; conf_ip_nacl_set_ext_name_0 int32; compound_2. -> conf_ip_nacl_ext_mode_force_set_cp
record conf_ip_nacl_ext_mode_force_set_cp: conf_ip_nacl_ext_mode_force_4 int32
record conf_mac_nacl_mode_eol: access_list_name rsl_vstring
record ipv6_acl: ipv6_acl_name rsl_vstring
record conf_ip_nacl_ext_eol_final: acl_entry_number u_int32; ace_cmd rsl_vstring; compound_1. -> conf_ip_nacl_ext_no_cp; parent_key_acl_number int32; parent_key_conf_ip_nacl_ext_name_1 rsl_vstring
record conf_ip_nacl_ext_no_cp: descriminator enum; arm compound_3. -> conf_ip_nacl_ext_seq_num_cp; arm compound_4. -> conf_ip_nacl_ext_desc_cp; arm compound_6. -> conf_ip_nacl_ext_permit_cp_cp
record conf_ip_nacl_ext_seq_num_cp: conf_ip_nacl_ext_seq_num_7 int32; compound_11. -> conf_ip_nacl_ext_permit_cp_cp
record conf_ip_nacl_ext_permit_cp_cp: compound_19. -> conf_ip_nacl_ext_permit_cp; compound_303. -> conf_ip_nacl_ext_permit_cp_cp_0_cp
record conf_ip_nacl_ext_permit_cp: descriminator enum default=1; arm compound_450. -> conf_ip_nacl_ext_permit_cp_0_cp; arm compound_451. -> conf_ip_nacl_ext_permit_cp_1_cp
record conf_ip_nacl_ext_permit_cp_0_cp: conf_ip_nacl_ext_permit_289 int32 default=0
record conf_ip_nacl_ext_permit_cp_1_cp: conf_ip_nacl_ext_deny_290 int32
record conf_ip_nacl_ext_permit_cp_cp_0_cp: compound_20. -> conf_ip_nacl_ext_esp_cp; compound_21. -> conf_ip_nacl_ext_srcaddr_cp; compound_33. -> conf_ip_nacl_ext_dstaddr_cp; compound_34. -> extended_acl_options
record conf_ip_nacl_ext_esp_cp: descriminator enum default=1; arm compound_434. -> conf_ip_nacl_ext_esp_cp_0_cp; arm compound_435. -> conf_ip_nacl_ext_esp_cp_1_cp; arm compound_436. -> conf_ip_nacl_ext_esp_cp_2_cp; arm compound_437. -> conf_ip_nacl_ext_esp_cp_3_cp; arm compound_438. -> conf_ip_nacl_ext_esp_cp_4_cp; arm compound_439. -> conf_ip_nacl_ext_esp_cp_5_cp; arm compound_440. -> conf_ip_nacl_ext_esp_cp_6_cp; arm compound_441. -> conf_ip_nacl_ext_esp_cp_7_cp; arm compound_442. -> conf_ip_nacl_ext_esp_cp_8_cp; arm compound_443. -> conf_ip_nacl_ext_esp_cp_9_cp; arm compound_444. -> conf_ip_nacl_ext_esp_cp_10_cp; arm compound_445. -> conf_ip_nacl_ext_esp_cp_11_cp; arm compound_446. -> conf_ip_nacl_ext_esp_cp_12_cp; arm compound_447. -> conf_ip_nacl_ext_esp_cp_13_cp; arm compound_448. -> conf_ip_nacl_ext_esp_cp_14_cp; arm compound_449. -> conf_ip_nacl_ext_esp_cp_15_cp
record conf_ip_nacl_ext_esp_cp_0_cp: conf_ip_nacl_ext_esp_273 int32 default=0
record conf_ip_nacl_ext_esp_cp_1_cp: conf_ip_nacl_ext_eigrp_274 int32
record conf_ip_nacl_ext_esp_cp_2_cp: conf_ip_nacl_ext_ahp_275 int32
record conf_ip_nacl_ext_esp_cp_3_cp: conf_ip_nacl_ext_pim_276 int32
record conf_ip_nacl_ext_esp_cp_4_cp: conf_ip_nacl_ext_pcp_277 int32
record conf_ip_nacl_ext_esp_cp_5_cp: conf_ip_nacl_ext_ipinip_278 int32
record conf_ip_nacl_ext_esp_cp_6_cp: conf_ip_nacl_ext_icmp_279 int32
record conf_ip_nacl_ext_esp_cp_7_cp: conf_ip_nacl_ext_protonum_280 int32
record conf_ip_nacl_ext_esp_cp_8_cp: conf_ip_nacl_ext_udp_281 int32
record conf_ip_nacl_ext_esp_cp_9_cp: conf_ip_nacl_ext_dvmrp_282 int32
record conf_ip_nacl_ext_esp_cp_10_cp: conf_ip_nacl_ext_nos_283 int32
record conf_ip_nacl_ext_esp_cp_11_cp: conf_ip_nacl_ext_igmp_284 int32
record conf_ip_nacl_ext_esp_cp_12_cp: conf_ip_nacl_ext_ospf_285 int32
record conf_ip_nacl_ext_esp_cp_13_cp: conf_ip_nacl_ext_gre_286 int32
record conf_ip_nacl_ext_esp_cp_14_cp: conf_ip_nacl_ext_tcp_287 int32
record conf_ip_nacl_ext_esp_cp_15_cp: conf_ip_nacl_ext_ip_288 int32
record conf_ip_nacl_ext_srcaddr_cp: descriminator enum; arm compound_305. -> conf_ip_nacl_ext_srcaddr_cp_0_cp; arm compound_29. -> conf_ip_nacl_ext_srcaddr_cp_1_cp; arm src_host_addr. -> conf_ip_nacl_ext_srcaddr_cp_2_cp; src_port_cmp. -> conf_ip_nacl_ext_src_port_arg_cp
record conf_ip_nacl_ext_srcaddr_cp_0_cp: conf_ip_nacl_ext_srcaddr_address_25 ip_address; conf_ip_nacl_ext_srcaddr_wildcard_31 ip_address
record conf_ip_nacl_ext_srcaddr_cp_1_cp: conf_ip_nacl_ext_srcany_272 ip_address
record conf_ip_nacl_ext_srcaddr_cp_2_cp: conf_ip_nacl_ext_srcaddr_address_26 ip_address
record conf_ip_nacl_ext_src_port_arg_cp: operator. -> conf_ip_nacl_ext_src_oper_cp; src_ports array u_int32[num_src_ports]
record conf_ip_nacl_ext_src_oper_cp: descriminator enum; arm compound_455. -> conf_ip_nacl_ext_srceq_cp_0_cp; arm compound_456. -> conf_ip_nacl_ext_srceq_cp_1_cp; arm compound_457. -> conf_ip_nacl_ext_srceq_cp_2_cp; arm compound_458. -> conf_ip_nacl_ext_srceq_cp_3_cp; arm compound_459. -> conf_ip_nacl_ext_srceq_cp_4_cp; arm compound_460. -> conf_ip_nacl_ext_srceq_cp_5_cp
record conf_ip_nacl_ext_srceq_cp_0_cp: conf_ip_nacl_ext_srceq_294 int32
record conf_ip_nacl_ext_srceq_cp_1_cp: conf_ip_nacl_ext_srcgt_295 int32
record conf_ip_nacl_ext_srceq_cp_2_cp: conf_ip_nacl_ext_srclt_296 int32
record conf_ip_nacl_ext_srceq_cp_3_cp: conf_ip_nacl_ext_srcneq_297 int32
record conf_ip_nacl_ext_srceq_cp_4_cp: conf_ip_nacl_ext_srcrange_115 int32
record conf_ip_nacl_ext_srceq_cp_5_cp: conf_ip_nacl_ext_srceq_none int32
record conf_ip_nacl_ext_dstaddr_cp: descriminator enum; arm compound_313. -> conf_ip_nacl_ext_dstaddr_cp_1_cp; arm compound_314. -> conf_ip_nacl_ext_dstaddr_cp_2_cp; arm compound_315. -> conf_ip_nacl_ext_dstaddr_cp_3_cp; compound_84. -> conf_ip_nacl_ext_dst_port_arg_cp
record conf_ip_nacl_ext_dstaddr_cp_1_cp: conf_ip_nacl_ext_dstany_270 ip_address
record conf_ip_nacl_ext_dstaddr_cp_2_cp: conf_ip_nacl_ext_dstaddr_address_82 ip_address; conf_ip_nacl_ext_dstaddr_wildcard_83 ip_address
record conf_ip_nacl_ext_dstaddr_cp_3_cp: conf_ip_nacl_ext_dsthostaddr_80 ip_address
record conf_ip_nacl_ext_dst_port_arg_cp: operator. -> conf_ip_nacl_ext_dst_oper_cp; dst_ports array u_int32[num_dst_ports]
record conf_ip_nacl_ext_dst_oper_cp: descriminator enum; arm compound_455. -> conf_ip_nacl_ext_dsteq_cp_0_cp; arm compound_456. -> conf_ip_nacl_ext_dsteq_cp_1_cp; arm compound_457. -> conf_ip_nacl_ext_dsteq_cp_2_cp; arm compound_458. -> conf_ip_nacl_ext_dsteq_cp_3_cp; arm compound_459. -> conf_ip_nacl_ext_dsteq_cp_4_cp; arm compound_460. -> conf_ip_nacl_ext_dsteq_cp_5_cp
record conf_ip_nacl_ext_dsteq_cp_0_cp: conf_ip_nacl_ext_dsteq_294 int32
record conf_ip_nacl_ext_dsteq_cp_1_cp: conf_ip_nacl_ext_dstgt_295 int32
record conf_ip_nacl_ext_dsteq_cp_2_cp: conf_ip_nacl_ext_dstlt_296 int32
record conf_ip_nacl_ext_dsteq_cp_3_cp: conf_ip_nacl_ext_dstneq_297 int32
record conf_ip_nacl_ext_dsteq_cp_4_cp: conf_ip_nacl_ext_dstrange_115 int32
record conf_ip_nacl_ext_dsteq_cp_5_cp: conf_ip_nacl_ext_dsteq_none int32
record extended_acl_options: options int32; dscp int32; dscp_value int32; precedence int32; precedence_value int32
record conf_ip_nacl_ext_desc_cp: conf_ip_nacl_ext_desc_149 int32; conf_ip_nacl_ext_descr_txt_151 rsl_vstring
record conf_mac_nacl_eol: mac_ace_entry_number u_int32; mac_ace_cmd rsl_vstring; mac_ace. -> mac_nacl; parent_details. -> mac_nacl_parent_details
record mac_nacl: descriminator enum; arm mac_statistics_hw. -> mac_statistics; arm action_cp. -> conf_mac_nacl_permitdeny_cp
record mac_statistics: statistics int32
record conf_mac_nacl_permitdeny_cp: action int32; descriminator enum; arm any_src_address. -> mac_nacl_src_any_cp; arm prefix_mask_src_address. -> conf_mac_nacl_prefix_mask_cp; arm host_src_address. -> conf_mac_nacl_srchostaddr_cp
record mac_nacl_src_any_cp: src_any int32; descriminator enum; arm dst_any. -> conf_mac_nacl_dstany_cp; arm dst_prefix_mask. -> conf_mac_nacl_dst_cp; arm dst_host. -> conf_mac_nacl_dsthost_cp
record conf_mac_nacl_dstany_cp: dst_any int32; options. -> config_mac_nacl_options_cp
record config_mac_nacl_options_cp: cos_cp. -> conf_mac_nacl_cos_cp; ethertype_cp. -> conf_mac_nacl_ethertype_cp
record conf_mac_nacl_cos_cp: cos int32; an_arbitrary_cos int32
record conf_mac_nacl_ethertype_cp: descriminator enum; arm protocol_family. -> conf_mac_nacl_protocol_family_cp; arm ethertype_hex. -> conf_mac_nacl_ethertype_hex_cp_cp; arm listed_ether. -> conf_mac_nacl_listed_ether_type_cp; arm lsap. -> conf_mac_nacl_lsap_cp
record conf_mac_nacl_protocol_family_cp: protocol_family int32; protocol_family_ipv4_cp. -> conf_mac_nacl_protocol_family_ipv4_cp
record conf_mac_nacl_protocol_family_ipv4_cp: descriminator enum; arm protocol_family_rarp_ipv4_cp. -> conf_mac_nacl_protocol_family_rarp_ipv4_cp; arm protocol_family_decnet_cp. -> conf_mac_nacl_protocol_family_decnet_cp; arm protocol_family_ipv6_cp. -> conf_mac_nacl_protocol_family_ipv6_cp; arm protocol_family_ipx_cp. -> conf_mac_nacl_protocol_family_ipx_cp; arm protocol_family_arp_non_ipv4_cp. -> conf_mac_nacl_protocol_family_arp_non_ipv4_cp; arm protocol_family_appletalk_cp. -> conf_mac_nacl_protocol_family_appletalk_cp; arm protocol_family_vines_cp. -> conf_mac_nacl_protocol_family_vines_cp; arm protocol_family_rarp_non_ipv4_cp. -> conf_mac_nacl_protocol_family_rarp_non_ipv4_cp; arm protocol_family_xns_cp. -> conf_mac_nacl_protocol_family_xns_cp
record conf_mac_nacl_protocol_family_rarp_ipv4_cp: rarp_ipv4 int32
record conf_mac_nacl_protocol_family_decnet_cp: decnet int32
record conf_mac_nacl_protocol_family_ipv6_cp: ipv6 int32
record conf_mac_nacl_protocol_family_ipx_cp: ipx int32
record conf_mac_nacl_protocol_family_arp_non_ipv4_cp: arp_non_ipv4 int32
record conf_mac_nacl_protocol_family_appletalk_cp: appletalk int32
record conf_mac_nacl_protocol_family_vines_cp: vines int32
record conf_mac_nacl_protocol_family_rarp_non_ipv4_cp: rarp_non_ipv4 int32
record conf_mac_nacl_protocol_family_xns_cp: xns int32
record conf_mac_nacl_ethertype_hex_cp_cp: an_arbitrary_ethertype_in_decimal_or_hex int32; ethertype_hex_mask. -> conf_mac_nacl_ethertype_hex_mask_cp
record conf_mac_nacl_ethertype_hex_mask_cp: mac_nacl_option_any_ethertype int32; ethertype_mask_in_decimal_or_hex int32
record conf_mac_nacl_listed_ether_type_cp: mac_nacl_option_listed_ethertype int32; descriminator enum; arm ethertype_appletalk_cp. -> conf_mac_nacl_ethertype_appletalk_cp; arm ethertype_appletalk_arp_cp. -> conf_mac_nacl_ethertype_appletalk_arp_cp; arm ethertype_decnet_iv_cp. -> conf_mac_nacl_ethertype_decnet_iv_cp; arm ethertype_mop_dump_cp. -> conf_mac_nacl_ethertype_mop_dump_cp; arm ethertype_mop_console_cp. -> conf_mac_nacl_ethertype_mop_console_cp; arm ethertype_lat_cp. -> conf_mac_nacl_ethertype_lat_cp; arm ethertype_diagnostic_cp. -> conf_mac_nacl_ethertype_diagnostic_cp; arm ethertype_lavc_sca_cp. -> conf_mac_nacl_ethertype_lavc_sca_cp; arm ethertype_dec_amber_cp. -> conf_mac_nacl_ethertype_dec_amber_cp; arm ethertype_dec_mumps_cp. -> conf_mac_nacl_ethertype_dec_mumps_cp; arm ethertype_dec_spanning_tree_cp. -> conf_mac_nacl_ethertype_dec_spanning_tree_cp; arm ethertype_dec_dsm_cp. -> conf_mac_nacl_ethertype_dec_dsm_cp; arm ethertype_dec_netbios_cp. -> conf_mac_nacl_ethertype_dec_netbios_cp; arm ethertype_dec_msdos_cp. -> conf_mac_nacl_ethertype_dec_msdos_cp; arm ethertype_vines_ip_cp. -> conf_mac_nacl_ethertype_vines_ip_cp; arm ethertype_vines_echo_cp. -> conf_mac_nacl_ethertype_vines_echo_cp; arm ethertype_xns_idp_cp. -> conf_mac_nacl_ethertype_xns_idp_cp; arm ethertype_e6000_cp. -> conf_mac_nacl_ethertype_e6000_cp; arm ethertype_e8042_cp. -> conf_mac_nacl_ethertype_e8042_cp
record conf_mac_nacl_ethertype_appletalk_cp: appletalk int32
record conf_mac_nacl_ethertype_appletalk_arp_cp: aarp int32
record conf_mac_nacl_ethertype_decnet_iv_cp: decnet_iv int32
record conf_mac_nacl_ethertype_mop_dump_cp: mop_dump int32
record conf_mac_nacl_ethertype_mop_console_cp: mop_console int32
record conf_mac_nacl_ethertype_lat_cp: lat int32
record conf_mac_nacl_ethertype_diagnostic_cp: diagnostic int32
record conf_mac_nacl_ethertype_lavc_sca_cp: lavc_sca int32
record conf_mac_nacl_ethertype_dec_amber_cp: amber int32
record conf_mac_nacl_ethertype_dec_mumps_cp: mumps int32
record conf_mac_nacl_ethertype_dec_spanning_tree_cp: dec_spanning int32
record conf_mac_nacl_ethertype_dec_dsm_cp: dsm int32
record conf_mac_nacl_ethertype_dec_netbios_cp: netbios int32
record conf_mac_nacl_ethertype_dec_msdos_cp: msdos int32
record conf_mac_nacl_ethertype_vines_ip_cp: vines_ip int32
record conf_mac_nacl_ethertype_vines_echo_cp: vines_echo int32
record conf_mac_nacl_ethertype_xns_idp_cp: xns_idp int32
record conf_mac_nacl_ethertype_e6000_cp: etype_6000 int32
record conf_mac_nacl_ethertype_e8042_cp: etype_8042 int32
record conf_mac_nacl_lsap_cp: lsap int32; an_arbitrary_lsap_in_decimal_hex_or_octal int32; lsap_mask_in_decimal_hex_or_octal int32
record conf_mac_nacl_dst_cp: destination_mac_address rsl_mac_addr; destination_mac_address_mask rsl_mac_addr; options. -> config_mac_nacl_options_cp
record conf_mac_nacl_dsthost_cp: destination_mac_address rsl_mac_addr; options. -> config_mac_nacl_options_cp
record conf_mac_nacl_prefix_mask_cp: source_mac_address rsl_mac_addr; src_mask. -> conf_mac_nacl_srcmask_cp
record conf_mac_nacl_srcmask_cp: source_mac_address_mask rsl_mac_addr; descriminator enum; arm dst_any. -> conf_mac_nacl_dstany_cp; arm dst_prefix_mask. -> conf_mac_nacl_dst_cp; arm dst_host. -> conf_mac_nacl_dsthost_cp
record conf_mac_nacl_srchostaddr_cp: source_mac_address rsl_mac_addr; descriminator enum; arm dst_any. -> conf_mac_nacl_dstany_cp; arm dst_prefix_mask. -> conf_mac_nacl_dst_cp; arm dst_host. -> conf_mac_nacl_dsthost_cp
record mac_nacl_parent_details: parent_key_conf_mac_nacl_mode_eol rsl_vstring
record ipv6_ace: ipv6_ace_cmd rsl_vstring; sequence_number int32; action int32; protocol int32; src_address. -> ipv6_ace_src; dst_address. -> ipv6_ace_dst; sports. -> ipv6_src_ports; dports. -> ipv6_dst_ports; dscp_values. -> ipv6_dscp; parent_key_acl_name rsl_vstring
record ipv6_ace_src: descriminator enum; arm wildcard_src. -> ipv6_ace_src_wildcard; arm prefix_src. -> ipv6_ace_src_prefix; arm host_src. -> ipv6_ace_src_host; arm any_src. -> ipv6_ace_src_any
record ipv6_ace_src_wildcard: src_wildcard_set int32; wildcard_src_addr ip_address; wildcard_src_bits ip_address
record ipv6_ace_src_prefix: src_prefix_mask int32; src_prefix ip_address
record ipv6_ace_src_host: host_src int32; host_src_addr ip_address
record ipv6_ace_src_any: any_src int32
record ipv6_ace_dst: descriminator enum; arm wildcard_dst. -> ipv6_ace_dst_wildcard; arm prefix_dst. -> ipv6_ace_dst_prefix; arm host_dst. -> ipv6_ace_dst_host; arm any_dst. -> ipv6_ace_dst_any
record ipv6_ace_dst_wildcard: dst_wildcard_set int32; wildcard_dst_addr ip_address; wildcard_dst_bits ip_address
record ipv6_ace_dst_prefix: dst_prefix_mask int32; dst_prefix ip_address
record ipv6_ace_dst_host: host_dst int32; host_dst_addr ip_address
record ipv6_ace_dst_any: any_dst int32
record ipv6_src_ports: src_ports_present int32; descriminator enum; arm src_range. -> ipv6_src_port_range; arm src_eq. -> ipv6_src_port_equal; arm src_neq. -> ipv6_src_port_not_equal; arm src_lt. -> ipv6_src_port_less_than; arm src_gt. -> ipv6_src_port_greater_than
record ipv6_src_port_range: src_range_port_type int32; src_port_range_start int32; src_port_range_end int32
record ipv6_src_port_equal: src_eq_port_type int32; src_equal_ports array u_int32[num_ports]
record ipv6_src_port_not_equal: src_neq_port_type int32; src_not_equal_ports array u_int32[num_ports]
record ipv6_src_port_less_than: src_lt_port_type int32; src_less_than_port int32
record ipv6_src_port_greater_than: src_gt_port_type int32; src_greater_than_port int32
record ipv6_dst_ports: dst_ports_present int32; descriminator enum; arm dst_range. -> ipv6_dst_port_range; arm dst_eq. -> ipv6_dst_port_equal; arm dst_neq. -> ipv6_dst_port_not_equal; arm dst_lt. -> ipv6_dst_port_less_than; arm dst_gt. -> ipv6_dst_port_greater_than
record ipv6_dst_port_range: dst_range_port_type int32; dst_port_range_start int32; dst_port_range_end int32
record ipv6_dst_port_equal: dst_eq_port_type int32; dst_equal_ports array u_int32[num_ports]
record ipv6_dst_port_not_equal: dst_neq_port_type int32; dst_not_equal_ports array u_int32[num_ports]
record ipv6_dst_port_less_than: dst_lt_port_type int32; dst_less_than_port int32
record ipv6_dst_port_greater_than: dst_gt_port_type int32; dst_greater_than_port int32
record ipv6_dscp: v6_dscp_set int32; v6_dscp_value int32
