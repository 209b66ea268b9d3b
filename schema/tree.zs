# The table tree: one dispatcher per line, in the order the top dispatcher asks them,
# each with its chain of positions in exact order. A parent line names the parent
# table; its children link to it through fields named <parent row>_child_<child row>
# (link=child) or <parent row>_<child row> (link=plain), unless a position overrides it.

domain tree

dispatcher ROOT: \
    tbl_cfg_ip_dhcp_relay_bootp_ignore_eol \
    tbl_cfg_ip_dhcp_relay_info_policy_eol \
    tbl_cfg_ip_dhcp_relay_info_option_vpn_eol \
    tbl_cfg_ip_dhcp_relay_info_trust_all_eol \
    tbl_cfg_ip_dhcp_relay_info_option_override_eol \
    tbl_cfg_ip_dhcp_compat_option_serv_override_eol \
    tbl_cfg_ip_dhcp_compat_option_link_selection_eol \
    tbl_cfg_ip_dhcp_relay_over_gi_ls_eol \
    tbl_cfg_ip_dhcp_relay_info_check_eol \
    tbl_cfg_ip_dhcp_relay_info_option_eol \
    tbl_access_list_ipsimple1_b_cp_cp \
    tbl_conf_ip_nacl_mode_ext_number \
    tbl_conf_ip_nacl_ext_mode_eol \
    tbl_ntp_source_eol \
    tbl_ntp_maxdist_eol \
    tbl_ntp_allow_eol \
    tbl_ntp_peer_eol \
    tbl_ntp_refclock_gps_eol \
    tbl_ntp_clkper_eol \
    tbl_ntp_panic_eol \
    tbl_ntp_passive_eol \
    tbl_ntp_trusted_key_eol \
    tbl_ntp_authenticate_eol \
    tbl_ntp_broadcastdelay_eol \
    tbl_ntp_update_calendar_eol \
    tbl_ntp_mindisp_eol \
    tbl_ntp_logging_eol \
    tbl_ntp_auth_key_eol \
    tbl_ntp_access_eol \
    tbl_ntp_master_eol \
    tbl_ntp_orphan_eol \
    tbl_cfg_ip_dhcp_snooping_glean_eol \
    tbl_cfg_ip_dhcp_snooping_info_opt_fmt_eol \
    tbl_cfg_ip_dhcp_snooping_database_eol \
    tbl_cfg_ip_dhcp_snooping_verify_address_eol \
    tbl_cfg_ip_dhcp_snooping_wireless_bootp_enable_eol \
    tbl_cfg_ip_dhcp_snooping_vlan_eol \
    tbl_cfg_ip_dhcp_snooping_info_opt_eol \
    tbl_cfg_ip_dhcp_snooping_verify_giaddr_eol \
    tbl_cfg_ip_dhcp_snooping_info_opt_allow_untrusted_eol \
    tbl_cfg_ip_dhcp_snooping_eol \
    tbl_hostname \
    tbl_uidb_act_interface \
    tbl_cfg_crypto_ca_trust_point_eol \
    tbl_cfg_crypto_ca_cert_chain_eol \
    tbl_cl_username_eol \
    tbl_flow_exporter \
    tbl_vlan_group \
    tbl_flow_record_eol \
    tbl_flow_monitor \
    tbl_conf_mac_nacl_mode_eol \
    tbl_cip_igmp_snoop_querier_tcn_query_intvl_eols \
    tbl_cip_igmp_snoop_global_last_mbr_query_count_eol \
    tbl_cip_igmp_snoop_robust_eol \
    tbl_cip_igmp_snoop_tcn_query_solicit_eol \
    tbl_cip_igmp_snoop_querier_eol \
    tbl_cip_igmp_snoop_check_rtr_alert_eol \
    tbl_cip_igmp_snoop_check_ttl_eol \
    tbl_cip_igmp_snoop_querier_ver_eols \
    tbl_cip_igmp_snoop_src_age_eols \
    tbl_cip_igmp_snoop_eol \
    tbl_cip_igmp_snoop_tcn_flood_query_count_eol \
    tbl_cip_igmp_snoop_querier_mrt_eols \
    tbl_cip_igmp_snoop_report_suppress_eol \
    tbl_cip_igmp_snoop_etrack_limit_eol \
    tbl_cip_igmp_snoop_querier_query_intvl_eols \
    tbl_cip_igmp_snoop_src_only_eols \
    tbl_cip_igmp_snoop_querier_addr_eols \
    tbl_cip_igmp_snoop_querier_tcn_query_count_eols \
    tbl_cip_igmp_snoop_global_last_mbr_query_intvl_eol \
    tbl_cip_igmp_snoop_querier_timer_expiry_eols \
    tbl_cipv6_mld_snoop_querier_eol \
    tbl_cipv6_mld_snoop_report_suppress_eol \
    tbl_cipv6_mld_snoop_robust_eol \
    tbl_cipv6_mld_snoop_check_ttl_eol \
    tbl_cipv6_mld_snoop_querier_tcn_query_intvl_eols \
    tbl_cipv6_mld_snoop_eol \
    tbl_cipv6_mld_snoop_querier_timer_expiry_eols \
    tbl_cipv6_mld_snoop_querier_mrt_eols \
    tbl_cipv6_mld_snoop_querier_addr_eols \
    tbl_cipv6_mld_snoop_llq_count_eol \
    tbl_cipv6_mld_snoop_tcn_flood_query_count_eol \
    tbl_cipv6_mld_snoop_src_only_eols \
    tbl_cipv6_mld_snoop_querier_query_intvl_eols \
    tbl_cipv6_mld_snoop_llq_interv_eol \
    tbl_cipv6_mld_snoop_querier_tcn_query_count_eols \
    tbl_cipv6_mld_snoop_etrack_limit_eol \
    tbl_threat_visibility \
    tbl_cipv6_mld_snoop_querier_ver_eols \
    tbl_cipv6_mld_snoop_src_age_eols \
    tbl_cipv6_mld_snoop_tcn_query_solicit_eol \
    tbl_ci_vrf_eol \
    tbl_cfg_http_client_proxy_eol \
    tbl_ip_dhcp_svr \
    tbl_cfg_classmap \
    tbl_ip_nameserver_eol \
    tbl_cfg_mdns_service_definition_eol \
    tbl_mdns_sl_in \
    tbl_mdns_sl_out \
    tbl_mdns_sp \
    tbl_mdns_flex_profile \
    tbl_mdns_bridge \
    tbl_mdns_gateway \
    tbl_ipv6_acl \
    tbl_cfg_ip_dhcp_pool_eol \
    tbl_cfg_veil_global \
    tbl_cfg_veil_parameter_map
dispatcher tbl_cfg_ip_dhcp_pool_eol link=child: \
    tbl_dhcp_pool_network
dispatcher tbl_ipv6_acl link=child: \
    tbl_ipv6_ace
dispatcher tbl_mdns_sl_in link=child: \
    tbl_insl_ser_type
dispatcher tbl_mdns_sl_out link=child: \
    tbl_outsl_ser_type
dispatcher tbl_cfg_mdns_service_definition_eol link=child: \
    tbl_mdns_ser_def_description_eol \
    tbl_mdns_ser_def_ser_type_eol
dispatcher tbl_mdns_sp link=child: \
    tbl_mdns_sp_sl_in \
    tbl_mdns_sp_sl_out \
    tbl_mdns_sp_location
dispatcher tbl_mdns_flex_profile link=child: \
    tbl_mdns_wired_vlans \
    tbl_mdns_stats_upd_timer \
    tbl_mdns_cache_upd_timer
dispatcher tbl_mdns_gateway link=child: \
    tbl_mdns_gw_rl \
    tbl_mdns_gw_aq \
    tbl_mdns_gw_transport \
    tbl_mdns_gw_mdns_ap_sp \
    tbl_mdns_gw_sdg_ip \
    tbl_mdns_gw_mode \
    tbl_mdns_gw_any_query \
    tbl_mdns_gw_local_cache \
    tbl_mdns_gw_annce_count \
    tbl_mdns_gw_annce_timer \
    tbl_mdns_gw_src_intf \
    tbl_mdns_gw_query_count \
    tbl_mdns_gw_query_timer
dispatcher tbl_threat_visibility link=child: \
    tbl_threat_visibility_ip_export \
    tbl_threat_visibility_inactive_timeout \
    tbl_threat_visibility_acl
dispatcher tbl_flow_exporter link=child: \
    tbl_flow_exporter_options
dispatcher tbl_conf_ip_nacl_mode_ext_number link=plain: \
    tbl_conf_ip_nacl_ext_eol_final
dispatcher tbl_conf_ip_nacl_ext_mode_eol link=child: \
    tbl_conf_ip_nacl_ext_eol_final_b
dispatcher tbl_uidb_act_interface link=plain: \
    tbl_ci_ip_stickyarp_dis_eol \
    tbl_ci_ip_dbcast_eol \
    tbl_ci_ip_idgrp_in_eol \
    tbl_ci_ip_mtu_eol \
    tbl_ci_ip_addr_sec_eol \
    tbl_ci_ip_idgrp_out_eol \
    tbl_ci_ip_probe_eol \
    tbl_ci_ip_secur_ml_eol \
    tbl_ci_ip_unreach_eol \
    tbl_ci_ip_secur_strip_eol \
    tbl_ci_ip_redirects_eol \
    tbl_ci_ip_helpaddr_eol \
    tbl_ci_ip_inforeply_eol \
    tbl_ip_helpaddr \
    tbl_mdns_int_svc_policy \
    tbl_cfg_dgrd_dev_tr_logging_eols \
    tbl_cfg_dev_trk_bt_setlog_eol \
    tbl_cfg_dev_trk_bt_def_eol \
    tbl_ci_ip_bcaddr_eol \
    tbl_ci_ip_secur_disable_eol \
    tbl_ci_ip_secur_add_eol \
    tbl_ci_ip_proxyarp_eol \
    tbl_ci_ip_addr_eol \
    tbl_ci_ip_helpaddr_global_eol \
    tbl_ci_ip_unnum_eol \
    tbl_ci_ip_secur_cipso_eol \
    tbl_ci_ip_maskreply_eol \
    tbl_ci_ip_secur_first_eol \
    tbl_ci_ip_rarp_eol \
    tbl_ci_ip_secur_resallow_eol \
    tbl_ci_ip_secur_iauth_eol \
    tbl_ci_ip_localproxyarp_eol \
    tbl_ci_ip_helpaddr_vrf_eol \
    tbl_ci_ip_secur_exignore_eol \
    tbl_ci_ip_secur_ilabel_eol \
    tbl_ci_ip_secur_exallow_eol \
    tbl_ci_ip_secur_ded_eol \
    tbl_ci_ip_acct_eol \
    tbl_ci_ip_secur_eso_eol \
    tbl_ci_ipv6_mtu_eol \
    tbl_ci_ipv6_unnum_eols \
    tbl_ci_ipv6_address_eol \
    tbl_ci_ipv6_enable_eol \
    tbl_ci_ipv6_address_link_eol \
    tbl_ci_ipv6_address_automatic_eol \
    tbl_cfg_int_dhcp_relay_info_check_reply_eol \
    tbl_cfg_int_dhcp_relay_info_option_subid_eol \
    tbl_cfg_int_dhcp_relay_source_idb_eol \
    tbl_cfg_int_dhcp_relay_info_option_insert_eol \
    tbl_cfg_int_dhcp_relay_info_option_override_eol \
    tbl_cfg_int_dhcp_relay_trust_eol \
    tbl_cfg_int_dhcp_relay_info_policy_action_eol \
    tbl_cfg_int_dhcp_relay_info_option_vpnid_eol
dispatcher tbl_cfg_crypto_ca_trust_point_eol link=plain: \
    tbl_cfg_crypto_ca_trust_point_enroll_term_eol \
    tbl_cfg_crypto_ca_trust_point_retry_count_eol \
    tbl_cfg_crypto_ca_trust_point_query_url_eol \
    tbl_cfg_crypto_ca_trust_point_host_name_eol \
    tbl_cfg_crypto_ca_trust_point_ip_ext_eol \
    tbl_cfg_crypto_ca_trust_point_prompt_password_eol \
    tbl_cfg_crypto_ca_trust_point_prompt_all_eol \
    tbl_cfg_crypto_ca_trust_point_root_cep_url_eol \
    tbl_cfg_crypto_ca_trust_point_chain_store_eol \
    tbl_cfg_crypto_ca_trust_point_mode_ra_eol \
    tbl_cfg_crypto_ca_trust_point_ip_address_eolnone \
    tbl_cfg_crypto_ca_trust_point_author_config_eol \
    tbl_cfg_crypto_ca_trust_point_host_name_eolnone \
    tbl_cfg_crypto_ca_trust_point_prompt_ip_address_eol \
    tbl_cfg_crypto_ca_trust_point_query_cert_eol \
    tbl_cfg_crypto_ca_trust_point_usage_ike_eol \
    tbl_cfg_crypto_ca_trust_point_exit_eol \
    tbl_cfg_crypto_ca_trust_point_mac_address_eolnone \
    tbl_cfg_crypto_ca_trust_point_serial_number_eolnone \
    tbl_cfg_crypto_ca_trust_point_subject_alt_name_eol \
    tbl_cfg_crypto_ca_trust_point_storage_eol \
    tbl_cfg_crypto_ca_trust_point_eku_request_eol \
    tbl_cfg_crypto_ca_trust_point_match_cert_eol \
    tbl_cfg_crypto_ca_trust_point_validate_stop_eol \
    tbl_cfg_crypto_ca_trust_point_enroll_url_eol \
    tbl_cfg_crypto_ca_trust_point_usage_ssl_client_eol \
    tbl_cfg_crypto_ca_trust_point_mac_address_eol \
    tbl_cfg_crypto_ca_trust_point_prompt_usage_eol \
    tbl_cfg_crypto_ca_trust_point_retry_period_eol \
    tbl_cfg_crypto_ca_trust_point_enroll_proxy_eol \
    tbl_cfg_crypto_ca_trust_point_root_tftp_eol \
    tbl_cfg_crypto_ca_trust_point_fingerprint_eol \
    tbl_cfg_crypto_ca_trust_point_prompt_subject_name_eol \
    tbl_cfg_crypto_ca_trust_point_prompt_serial_number_eol \
    tbl_cfg_crypto_ca_trust_point_show_eol \
    tbl_cfg_crypto_ca_trust_point_serial_number_eol \
    tbl_cfg_crypto_ca_trust_point_allow_ignore_eol \
    tbl_cfg_crypto_ca_trust_point_validate_continue_eol \
    tbl_cfg_crypto_ca_trust_point_crl_url_eol \
    tbl_cfg_crypto_ca_trust_point_hash_eol \
    tbl_cfg_crypto_ca_trust_point_primary_eol \
    tbl_cfg_crypto_ca_trust_point_http_proxy_eol \
    tbl_cfg_crypto_ca_trust_point_authoru2_config_eol \
    tbl_cfg_crypto_ca_trust_point_ip_address_eol \
    tbl_cfg_crypto_ca_trust_point_enroll_pkcs12_eol \
    tbl_cfg_crypto_ca_trust_point_enroll_self_signed_eol \
    tbl_cfg_crypto_ca_trust_point_regen_eol \
    tbl_cfg_crypto_ca_trust_point_subjectname_eol \
    tbl_cfg_crypto_ca_trust_point_source_int_eol \
    tbl_cfg_crypto_ca_trust_point_authoru_config_eol \
    tbl_cfg_crypto_ca_trust_point_eckeypair_eol \
    tbl_cfg_crypto_ca_trust_point_usage_ssl_server_eol \
    tbl_cfg_crypto_ca_trust_point_enroll_prof_eol \
    tbl_cfg_crypto_ca_trust_point_crl_cache_eol \
    tbl_cfg_crypto_ca_trust_point_rsakeypair_eol \
    tbl_cfg_crypto_ca_trust_point_authoru_appl_eol \
    tbl_cfg_crypto_ca_trust_point_usage_bpi_eol \
    tbl_cfg_crypto_ca_trust_point_password_eol \
    tbl_cfg_crypto_ca_trust_point_eku_validate_eol \
    tbl_cfg_crypto_ca_trust_point_auto_eol \
    tbl_cfg_crypto_ca_trust_point_ocsp_nonce_eol \
    tbl_cfg_crypto_ca_trust_point_root_proxy_eol \
    tbl_cfg_crypto_ca_trust_point_vrf_label_eol \
    tbl_cfg_crypto_ca_trust_point_auto_regen_eol \
    tbl_cfg_crypto_ca_trust_point_ocsp_url_eol
dispatcher tbl_cfg_crypto_ca_cert_chain_eol link=plain: \
    tbl_cfg_crypto_cert_ca_eol \
    tbl_cfg_crypto_cert_ra_general_eol \
    tbl_cfg_crypto_cert_self_signed_eol \
    tbl_cfg_crypto_cert_ra_sign_eol \
    tbl_cfg_crypto_cert_ra_encrypt_query_eol \
    tbl_cfg_crypto_cert_ra_sign_query_eol \
    tbl_cfg_crypto_cert_ra_encrypt_eol \
    tbl_cfg_crypto_cert_ca_exit_eol \
    tbl_cfg_crypto_cert_nonca_query_eol \
    tbl_cfg_crypto_cert_roll_eol \
    tbl_cfg_crypto_cert_nonca_eol \
    tbl_cfg_crypto_cert_ca_roll_eol \
    tbl_cfg_crypto_cert_ca_query_eol \
    tbl_cfg_crypto_cert_crl_eol
dispatcher tbl_flow_record_eol link=child: \
    tbl_flowrec_desc_eol \
    tbl_flowrec_fields_eol
dispatcher tbl_flow_monitor link=child: \
    tbl_flowmon_cache_timeout_rate_limit_eol \
    tbl_flowmon_rec_name_eol \
    tbl_flowmon_cache_type_eol \
    tbl_flowmon_cache_timeout_synch_eol \
    tbl_flowmon_cache_timeout_inact_eol \
    tbl_flowmon_cache_timeout_fast_eol \
    tbl_flowmon_stats_packet_protocol_eol \
    tbl_flowmon_desc_eol \
    tbl_flowmon_cache_timeout_upd_eol \
    tbl_flowmon_cache_timeout_act_eol \
    tbl_flowmon_exp_eol \
    tbl_flow_monitor_exporter \
    tbl_flowmon_stats_packet_size_eol \
    tbl_flowmon_cache_entries_eol \
    tbl_flowmon_cache_timeout_event_transaction_end_eol
dispatcher tbl_conf_mac_nacl_mode_eol link=child: \
    tbl_conf_mac_nacl_eol
dispatcher tbl_ci_vrf_eol link=child: \
    tbl_ci_vrf_mode_rd_eol \
    tbl_ci_vrf_mode_ipv4_mt_eol \
    tbl_ci_vrf_mode_descr_eol \
    tbl_ci_vrf_afi_mode_eol \
    tbl_ci_vrf_mode_vpnid_eol \
    tbl_ci_vrf_mode_rt_eol \
    tbl_ci_vrf_mode_ipv6_mt_eol
dispatcher tbl_ci_vrf_afi_mode_eol link=child: \
    tbl_ci_vrf_mode_rt_eol_b \
    tbl_ci_context_eol \
    tbl_ci_snmp_context_string_eol \
    tbl_ci_snmp_context_com_eol \
    tbl_ci_snmp_context_user_eol \
    tbl_vrf_mode_export_map_eol \
    tbl_vrf_mode_import_map_eol \
    tbl_ct_replicate_policy_eol \
    tbl_ct_replicate_eol \
    tbl_vrf_mode_prot_lcl_pfxs_eol \
    tbl_vrf_mode_ias_eol \
    tbl_vrf_mode_nexthop_eols \
    tbl_vrf_mode_max_pfx_eol \
    tbl_vrf_af_mdt_partitioned_mldp_eol \
    tbl_vrf_af_mdt_threshold_eol \
    tbl_vrf_af_mdt_bgp_ad_mode_eol \
    tbl_vrf_af_mdt_default_ir_eol \
    tbl_vrf_af_mdt_mtu_eol \
    tbl_vrf_af_mdt_mldp_p2mp_eol \
    tbl_vrf_af_mdt_data_eol \
    tbl_vrf_af_mdt_overlay_eol \
    tbl_vrf_af_mdt_strict_rpf_eol \
    tbl_vrf_af_mdt_data_log_eol \
    tbl_vrf_af_mdt_bgp_ad_role_eol \
    tbl_vrf_af_mdt_pref_eol \
    tbl_vrf_af_mdt_overlay_bgp_shared_delay_eol \
    tbl_vrf_af_mdt_overlay_bgp_source_delay_eol \
    tbl_vrf_af_mdt_list_eol \
    tbl_vrf_af_mdt_mode_eol \
    tbl_vrf_af_mdt_eol \
    tbl_vrf_af_mdt_partitioned_ir_eol \
    tbl_vrf_af_mdt_direct_eol \
    tbl_vrf_af_mdt_mldp_eol
dispatcher tbl_cfg_vlan_eol link=child: \
    tbl_cfg_vlan_name_eol \
    tbl_cfg_vlan_eol
dispatcher tbl_cfg_classmap link=child: \
    tbl_match_proto_clause

# Rows of the two table arrays: the numbering of the table lookup. Rows named here come
# first, the empty rows stay empty, and the other tables fill the remaining rows in byte
# order of their names.
table_rows first: tbl_cfg_crypto_ca_trust_point_primary_eol tbl_ci_ipv6_enable_eol tbl_cfg_ip_dhcp_snooping_eol
table_rows empty: 15 269
