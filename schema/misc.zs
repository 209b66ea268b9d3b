# Tables of no larger domain: hostname, VLANs, class maps, threat visibility, HTTP proxy, name servers, DNS security, device tracking.
domain misc

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_hostname segment=U_tbl_hostname key=singleton columns=4 pq=6cfec697e60c734be21fe4ef79a11253
table tbl_vlan_group segment=vlan_group key=vlan_group_name:rsl_vstring columns=2 pq=d2f92d8c76b84a583cf2a552b1857065
table tbl_threat_visibility segment=threat_visibility key=singleton columns=1 pq=d97ad7081f36bdd9e3473bd29cb0a2cf
table tbl_cfg_http_client_proxy_eol segment=cfg_http_client_proxy_eol key=singleton columns=3 pq=6d293c5dad109b1f541f30a4dbbf4d29
table tbl_cfg_classmap segment=classmap key=classmap_name:rsl_vstring columns=2 pq=a7c477f1fb1c1acd42fb8e22329cb6d3
table tbl_ip_nameserver_eol segment=ip_nameserver_eol key=singleton columns=7 pq=6ce85da1bc1e79ad874eca7a8a2e11a3
table tbl_cfg_veil_global segment=cfg_veil_global key=singleton columns=7 pq=5747218a0ddab6e1d69fc34b456a0d5f
table tbl_cfg_veil_parameter_map segment=cfg_veil_parameter_map key=name:rsl_vstring columns=2 pq=9764b243b22296b7c6440011cecfc47f
table tbl_match_proto_clause segment=match_protocol key=protocol_id:int32 columns=4 link=cfg_classmap_classmap_match_clause pq=91a5e5da38e3f913e359fbb2b0ab6b3a
table tbl_cfg_vlan_name_eol segment=cfg_vlan_name_eol key=singleton columns=3 pq=ef09376d3f86e977cd2b44610be494a4
table tbl_cfg_vlan_eol segment=cfg_vlan_eol key=vlan_num:rsl_vstring columns=2 link=none pq=f72b0c802bd961d9ca1f8053c840a8ad
table tbl_threat_visibility_ip_export segment=tv_ip_export key=threat_visibility_ip_export_key{export_address:ip_address,valid_port_number:int32,vrf_name:rsl_vstring} rows=threat_visibility_ip_export_key,threat_visibility_ip_export columns=4 pq=b4d6e53d5a531696f06ce019cef506c1
table tbl_threat_visibility_inactive_timeout segment=tv_inactive_timeout key=singleton columns=3 pq=da49c4cda14dc49db624907eb5462c3c
table tbl_threat_visibility_acl segment=tv_whitelist_acl key=singleton columns=5 pq=985ba66e97c9b851931f885d64205af2
table tbl_cfg_dgrd_dev_tr_logging_eols segment=U_tbl_cfg_dgrd_dev_tr_logging_eols key=singleton columns=2 link=none pq=fad3110dbaf7f0cc7637b83ab13d4ead
table tbl_cfg_dev_trk_bt_setlog_eol segment=U_tbl_cfg_dev_trk_bt_setlog_eol key=singleton columns=2 link=none pq=90c592b68351fdf7649b92596b1c2735
table tbl_cfg_dev_trk_bt_def_eol segment=U_tbl_cfg_dev_trk_bt_def_eol key=singleton columns=7 link=none pq=c945c1a9130ef0191d1f0d240991824d

# Records, parents before what they nest, attributes in schema order.
record hostname: singleton_id u_int32; compound_0. -> hostname_name_cp
record hostname_name_cp: hostname_name_2 rsl_vstring; sys_hostname_alt_3 int32; compound_4. -> hostname_alt_1_cp
record hostname_alt_1_cp: hostname_name_alt_1 rsl_vstring
record vlan_group: vlan_group_name rsl_vstring; vlans array u_int16[num_vlans:16]
record threat_visibility: singleton_id u_int32
record cfg_http_client_proxy_eol: singleton_id u_int32; http_proxy_name rsl_vstring default="0.0.0.0"; http_proxy_port int16 default=0
record cfg_classmap: classmap_name rsl_vstring; match_type int32
record ip_nameserver_eol: singleton_id u_int32; nameserver_ip1 ip_address; nameserver_ip2 ip_address; nameserver_ip3 ip_address; nameserver_ip4 ip_address; nameserver_ip5 ip_address; nameserver_ip6 ip_address
record cfg_veil_global: singleton_id u_int32; ipv4_primary_ip ip_address; ipv4_secondary_ip ip_address; ipv6_primary_ip ip_address; ipv6_secondary_ip ip_address; udp_timeout u_int32; dnscrypt u_int32
record cfg_veil_parameter_map: name rsl_vstring; profile_id u_int32
record match_proto_clause: protocol_id int32; submatch_type int32; protocol_name rsl_vstring; parent_classmap_name rsl_vstring
record cfg_vlan_name_eol: singleton_id u_int32; vlan_name rsl_vstring; parent_key_vlan_num rsl_vstring
record cfg_vlan_eol: vlan_num rsl_vstring; vlan_list_plain int32
record threat_visibility_ip_export_key: export_address ip_address; valid_port_number int32; vrf_name rsl_vstring
record threat_visibility_ip_export: tv_ip_export_parent_table_key u_int32
record threat_visibility_inactive_timeout: singleton_id u_int32; inactive_timeout_in_seconds int32; tv_timeout_parent_table_key u_int32
record threat_visibility_acl: singleton_id u_int32; descriminator enum; arm acl_number. -> threat_visibility_acl_number; arm acl_name. -> threat_visibility_acl_name; tvi_acl_parent_table_key u_int32
record threat_visibility_acl_number: access_list_number int32
record threat_visibility_acl_name: named_acl rsl_vstring
record cfg_dgrd_dev_tr_logging_eols: singleton_id u_int32; dev_tr_logging_option u_int32
record cfg_dev_trk_bt_setlog_eol: singleton_id u_int32; bt_log_set rsl_boolean
record cfg_dev_trk_bt_def_eol: singleton_id u_int32; dev_tr_bt_stale u_int32; dev_tr_bt_stale_valid u_int32; dev_tr_bt_reachable u_int32; dev_tr_bt_reachable_valid u_int32; dev_tr_bt_downtime u_int32; dev_tr_bt_downtime_valid u_int32
