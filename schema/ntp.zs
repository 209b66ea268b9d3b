# NTP service: source, peers and servers, keys, access groups, master and orphan modes.
domain ntp

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_ntp_source_eol segment=U_tbl_ntp_source_eol key=singleton columns=2 pq=f6fadfa7e5c15b629362da5cc13da58a
table tbl_ntp_maxdist_eol segment=U_tbl_ntp_maxdist_eol key=singleton columns=2 pq=2c63888f28f004817e6ddce7a7ace732
table tbl_ntp_allow_eol segment=U_tbl_ntp_allow_eol key=singleton columns=6 pq=8a119b9e16bc17328f7b7676d015b0dc
table tbl_ntp_peer_eol segment=ntp_peer_server key=peer_server_key:rsl_vstring columns=37 pq=bc67ba94637d6efa609e467ada679f81
table tbl_ntp_refclock_gps_eol segment=U_tbl_ntp_refclock_gps_eol key=singleton columns=1 pq=fab36728a78beb7e0787c0de2f960063
table tbl_ntp_clkper_eol segment=U_tbl_ntp_clkper_eol key=singleton columns=2 pq=a712755f6cace4d519d5269512e74f7b
table tbl_ntp_panic_eol segment=U_tbl_ntp_panic_eol key=singleton columns=1 pq=ac8efe121c5989f1ba2dde83458bfed0
table tbl_ntp_passive_eol segment=U_tbl_ntp_passive_eol key=singleton columns=1 pq=5796a670482c590e0d9782bfcdc83011
table tbl_ntp_trusted_key_eol segment=ntp_trusted_key key=ntp_trusted_key_start:int32 columns=2 pq=0b80a25553a12945a93258ef7777682c
table tbl_ntp_authenticate_eol segment=U_tbl_ntp_authenticate_eol key=singleton columns=1 pq=45ac16b9c20dbc210f8a7abff2e91ac7
table tbl_ntp_broadcastdelay_eol segment=U_tbl_ntp_broadcastdelay_eol key=singleton columns=2 pq=dd2ee150d2840277789c1af40ce8fcc9
table tbl_ntp_update_calendar_eol segment=U_tbl_ntp_update_calendar_eol key=singleton columns=1 pq=3c3ae353fb14628e90b401a6c1cc0aff
table tbl_ntp_mindisp_eol segment=U_tbl_ntp_mindisp_eol key=singleton columns=2 pq=b9c8b9ffe46ed627d419c7723226db94
table tbl_ntp_logging_eol segment=U_tbl_ntp_logging_eol key=singleton columns=1 pq=bbeeb6361d33bc6d96f0da847a2a3b87
table tbl_ntp_auth_key_eol segment=ntp_auth_key key=ntp_auth_key_num:int32 columns=4 pq=68e58909ccb2b416525a56c9a30f4300
table tbl_ntp_access_eol segment=U_tbl_ntp_access_eol key=singleton columns=24 pq=ff53a46f5ead703a84c4b877678537a3
table tbl_ntp_master_eol segment=U_tbl_ntp_master_eol key=singleton columns=3 pq=e179f773a6e0f3c09514b7dde2ad0478
table tbl_ntp_orphan_eol segment=U_tbl_ntp_orphan_eol key=singleton columns=2 pq=0c28cec1b94722af64b936976b4b76b0

# Records, parents before what they nest, attributes in schema order.
record ntp_source_eol: singleton_id u_int32; compound_0. -> ntp_source_nvgen_cp
record ntp_source_nvgen_cp: ntp_source_if -> if_handle
record ntp_maxdist_eol: singleton_id u_int32; compound_0. -> ntp_maxdistance_cp
record ntp_maxdistance_cp: ntp_mdist_value_1 int32
record ntp_allow_eol: singleton_id u_int32; compound_0. -> ntp_allow_mode_control_cp
record ntp_allow_mode_control_cp: ntp_allow_mode_control_1 int32; descriminator enum default=1; arm compound_8. -> ntp_allow_mode_control_cp_0_cp; arm compound_3. -> ntp_allow_mode_control_def_cp
record ntp_allow_mode_control_cp_0_cp: ntp_allow_mode_private_2 int32 default=0
record ntp_allow_mode_control_def_cp: ntp_allow_mode_control_def int32; compound_5. -> ntp_allow_ctrl_delay_val_cp
record ntp_allow_ctrl_delay_val_cp: ntp_allow_ctrl_delay_def int32
record ntp_peer_eol: peer_server_key rsl_vstring; compound_0. -> ntp_peer_cp_cp
record ntp_peer_cp_cp: peer_or_server. -> ntp_peer_cp; descriminator enum default=1; arm compound_2. -> ntp_peer_v6addr_cp; arm compound_57. -> ntp_peer_cp_cp_1_cp; arm compound_5. -> ntp_peer_resolve_ipv6_cp_cp; compound_12. -> ntp_peer_noprefix_cp
record ntp_peer_cp: descriminator enum default=1; arm compound_66. -> ntp_peer_cp_0_cp; arm compound_67. -> ntp_peer_cp_1_cp
record ntp_peer_cp_0_cp: ntp_peer int32 default=0
record ntp_peer_cp_1_cp: ntp_server int32
record ntp_peer_v6addr_cp: descriminator enum default=1; arm compound_58. -> ntp_peer_v6addr_cp_0_cp; arm compound_59. -> ntp_peer_v6addr_cp_1_cp
record ntp_peer_v6addr_cp_0_cp: ntp_peer_v6addr ip_address; ntp_peer_v6addr_46 int32; ntp_peer_v6addr_47 rsl_vstring
record ntp_peer_v6addr_cp_1_cp: ntp_peer_v4addr ip_address
record ntp_peer_cp_cp_1_cp: compound_4. -> ntp_peer_vrfname_cp; ntp_peer_vrf int32
record ntp_peer_vrfname_cp: ntp_peer_vrfname rsl_vstring; descriminator enum default=1; arm compound_7. -> ntp_peer_resolve_ipv6_cp_cp; arm compound_8. -> ntp_peer_v6addr_cp
record ntp_peer_resolve_ipv6_cp_cp: compound_9. -> ntp_peer_resolve_ipv6_cp; compound_10. -> ntp_peer_host_name_cp
record ntp_peer_resolve_ipv6_cp: descriminator enum default=1; arm compound_64. -> ntp_peer_resolve_ipv6_cp_0_cp; arm compound_65. -> ntp_peer_resolve_ipv6_cp_2_cp
record ntp_peer_resolve_ipv6_cp_0_cp: ntp_peer_resolve_ipv6 int32 default=0
record ntp_peer_resolve_ipv6_cp_2_cp: ntp_peer_resolve_ipv4 int32
record ntp_peer_host_name_cp: ntp_peer_host_name rsl_vstring
record ntp_peer_noprefix_cp: compound_13. -> ntp_peer_iburst_id_cp; compound_14. -> ntp_peer_key_cp; compound_15. -> ntp_peer_source_cp; compound_16. -> ntp_peer_minpoll_num_cp; compound_17. -> ntp_peer_version_value_cp; compound_18. -> ntp_peer_maxpoll_num_cp
record ntp_peer_iburst_id_cp: descriminator enum default=1; arm compound_60. -> ntp_peer_iburst_id_cp_0_cp; arm compound_61. -> ntp_peer_iburst_id_cp_1_cp; arm compound_62. -> ntp_peer_iburst_id_cp_2_cp; arm compound_63. -> ntp_peer_iburst_id_cp_3_cp
record ntp_peer_iburst_id_cp_0_cp: ntp_peer_iburst_id int32 default=0
record ntp_peer_iburst_id_cp_1_cp: ntp_peer_burst_id int32
record ntp_peer_iburst_id_cp_2_cp: ntp_peer_prefer int32
record ntp_peer_iburst_id_cp_3_cp: ntp_peer_normalsync int32
record ntp_peer_key_cp: ntp_peer_key int32; ntp_peer_key_num int32
record ntp_peer_source_cp: ntp_peer_source_if_37 -> if_handle
record ntp_peer_minpoll_num_cp: ntp_peer_minpoll_num int32
record ntp_peer_version_value_cp: ntp_peer_version_value int32
record ntp_peer_maxpoll_num_cp: ntp_peer_maxpoll_num int32
record ntp_refclock_gps_eol: singleton_id u_int32
record ntp_clkper_eol: singleton_id u_int32; compound_0. -> ntp_clkper_nvgen_cp
record ntp_clkper_nvgen_cp: ntp_clkper_value_1 int32
record ntp_panic_eol: singleton_id u_int32
record ntp_passive_eol: singleton_id u_int32
record ntp_trusted_key_eol: ntp_trusted_key_start int32; ntp_trusted_key_end int32
record ntp_authenticate_eol: singleton_id u_int32
record ntp_broadcastdelay_eol: singleton_id u_int32; compound_0. -> ntp_bcastdelay_cp
record ntp_bcastdelay_cp: ntp_bdelay_value_1 int32
record ntp_update_calendar_eol: singleton_id u_int32
record ntp_mindisp_eol: singleton_id u_int32; compound_0. -> ntp_mindispersion_cp
record ntp_mindispersion_cp: ntp_mdisp_value_1 int32
record ntp_logging_eol: singleton_id u_int32
record ntp_auth_key_eol: ntp_auth_key_num int32; md5_key. -> ntp_auth_key_string_cp
record ntp_auth_key_string_cp: authentication_key rsl_vstring; encryption_type int32; key_set int32
record ntp_access_eol: singleton_id u_int32; compound_0. -> ntp_access_nvgen_cp
record ntp_access_nvgen_cp: descriminator enum default=1; arm compound_22. -> ntp_access_nvgen_cp_0_cp; arm compound_3. -> ntp_access_serve_cp_cp
record ntp_access_nvgen_cp_0_cp: compound_2. -> ntp_access_serve_cp; compound_1. -> ntp_access_ipv6_cp
record ntp_access_serve_cp: descriminator enum default=1; arm compound_25. -> ntp_access_serve_cp_0_cp; arm compound_26. -> ntp_access_serve_cp_1_cp; arm compound_27. -> ntp_access_serve_cp_2_cp; arm compound_28. -> ntp_access_serve_cp_3_cp
record ntp_access_serve_cp_0_cp: ntp_access_serve_14 int32 default=0
record ntp_access_serve_cp_1_cp: ntp_access_peer_15 int32
record ntp_access_serve_cp_2_cp: ntp_access_qonly_16 int32
record ntp_access_serve_cp_3_cp: ntp_access_sonly_17 int32
record ntp_access_ipv6_cp: descriminator enum default=1; arm compound_29. -> ntp_access_ipv6_cp_0_cp; arm compound_30. -> ntp_access_ipv6_cp_1_cp
record ntp_access_ipv6_cp_0_cp: ntp_access_ipv6_18 int32 default=0
record ntp_access_ipv6_cp_1_cp: ntp_access_ipv4_19 int32
record ntp_access_serve_cp_cp: compound_4. -> ntp_access_serve_cp; compound_5. -> ntp_access_no_cp
record ntp_access_no_cp: descriminator enum default=1; arm compound_23. -> ntp_access_no_cp_0_cp; arm compound_24. -> ntp_access_no_cp_1_cp
record ntp_access_no_cp_0_cp: compound_7. -> ntp_access_list_set_cp; compound_6. -> ntp_access_list_number_cp
record ntp_access_list_set_cp: ntp_access_list_set_10 int32; ntp_access_kod_id_11 int32
record ntp_access_list_number_cp: descriminator enum default=1; arm compound_31. -> ntp_access_list_number_cp_0_cp; arm compound_32. -> ntp_access_list_number_cp_1_cp
record ntp_access_list_number_cp_0_cp: ntp_access_list_number_20 int32 default=0
record ntp_access_list_number_cp_1_cp: ntp_access_list_b_21 int32
record ntp_access_no_cp_1_cp: compound_9. -> ntp_access_acl_name_str_set_cp; ntp_access_acl_name_str_8 rsl_vstring
record ntp_access_acl_name_str_set_cp: ntp_access_acl_name_str_set_12 int32; ntp_access_kod_id_13 int32
record ntp_master_eol: singleton_id u_int32; compound_0. -> ntp_master_nv_cp
record ntp_master_nv_cp: compound_1. -> ntp_master_set_cp
record ntp_master_set_cp: ntp_master_set_2 int32; ntp_master_stratum_3 int32
record ntp_orphan_eol: singleton_id u_int32; compound_0. -> ntp_orphan_cp
record ntp_orphan_cp: ntp_orphan_value_1 int32
