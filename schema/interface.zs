# Interface table with its IPv4 and IPv6 settings.
domain interface

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_uidb_act_interface segment=U_tbl_uidb_act_interface key=uidb_key_field:u_int32 columns=24 pq=2389ea61f99cb86d6f923752a9ba323d
table tbl_ci_ip_stickyarp_dis_eol segment=U_tbl_ci_ip_stickyarp_dis_eol key=singleton columns=3 pq=3aa3b80a42cdbf88c748b5fb6be400ca
table tbl_ci_ip_dbcast_eol segment=U_tbl_ci_ip_dbcast_eol key=singleton columns=5 pq=0e184a6ecc01f3c169d27a4064a9d9e2
table tbl_ci_ip_idgrp_in_eol segment=U_tbl_ci_ip_idgrp_in_eol key=singleton columns=9 pq=c8e6c223c176c6e21d0ff7fd60bc3961
table tbl_ci_ip_mtu_eol segment=U_tbl_ci_ip_mtu_eol key=singleton columns=3 pq=5a9d8212cd7095d814bf45919db5431b
table tbl_ci_ip_addr_sec_eol segment=U_tbl_ci_ip_addr_sec_eol key=singleton columns=7 pq=63d5a5b51e6a21488e2841cfae08e756
table tbl_ci_ip_idgrp_out_eol segment=U_tbl_ci_ip_idgrp_out_eol key=singleton columns=9 link=uidb_act_interface_ip_idgrp_out_eol pq=672542f7a5d9489be6c639fa273f360a
table tbl_ci_ip_probe_eol segment=U_tbl_ci_ip_probe_eol key=singleton columns=2 pq=28845acb5e18be018d90ec86b2e71036
table tbl_ci_ip_secur_ml_eol segment=U_tbl_ci_ip_secur_ml_eol key=singleton columns=5 pq=e95ef86c5620ca7c8b90744192c4d439
table tbl_ci_ip_unreach_eol segment=U_tbl_ci_ip_unreach_eol key=singleton columns=2 pq=e66b4898ebd6528192111fe388df10aa
table tbl_ci_ip_secur_strip_eol segment=U_tbl_ci_ip_secur_strip_eol key=singleton columns=2 pq=abd0ed3f7e1029ee5a38629fda7f3ae8
table tbl_ci_ip_redirects_eol segment=U_tbl_ci_ip_redirects_eol key=singleton columns=2 pq=7e550720bcda22d94a004fb6f865c093
table tbl_ci_ip_helpaddr_eol segment=U_tbl_ci_ip_helpaddr_eol key=singleton columns=4 pq=708ac839dfa37c1848875902a3ff08c7
table tbl_ci_ip_inforeply_eol segment=U_tbl_ci_ip_inforeply_eol key=singleton columns=2 pq=08004c842ed73f09ca2b9be81524f643
table tbl_ip_helpaddr segment=U_tbl_ip_helpaddr key=ip_helpaddr_addr:ip_address columns=3 pq=4a81b3b27663404f19634e5e0d33f58b
table tbl_ci_ip_bcaddr_eol segment=U_tbl_ci_ip_bcaddr_eol key=singleton columns=3 pq=a6708189493e656be7bb5fa0d809403a
table tbl_ci_ip_secur_disable_eol segment=U_tbl_ci_ip_secur_disable_eol key=singleton columns=2 pq=1075f4b4b495a0740c02f7930fdb6832
table tbl_ci_ip_secur_add_eol segment=U_tbl_ci_ip_secur_add_eol key=singleton columns=2 pq=1af63c7261a9dde796d8132e630db4c3
table tbl_ci_ip_proxyarp_eol segment=U_tbl_ci_ip_proxyarp_eol key=singleton columns=2 pq=07aa4b1444d7144e104cc5750e95adb3
table tbl_ci_ip_addr_eol segment=U_tbl_ci_ip_addr_eol key=singleton columns=32 pq=c1008b536cff2e9ace82d11ab53c47a4
table tbl_ci_ip_helpaddr_global_eol segment=U_tbl_ci_ip_helpaddr_global_eol key=singleton columns=3 pq=46ce981ccd284da6367b748ee115e633
table tbl_ci_ip_unnum_eol segment=U_tbl_ci_ip_unnum_eol key=singleton columns=4 pq=cbfa2ada49b25f90ea02c6c592451c3f
table tbl_ci_ip_secur_cipso_eol segment=U_tbl_ci_ip_secur_cipso_eol key=singleton columns=2 pq=9df9cd2b510f5f4d49ad5fdba88fcb8a
table tbl_ci_ip_maskreply_eol segment=U_tbl_ci_ip_maskreply_eol key=singleton columns=2 pq=21c871c4d7d2ff7d4e58f41178d93986
table tbl_ci_ip_secur_first_eol segment=U_tbl_ci_ip_secur_first_eol key=singleton columns=2 pq=51740940d4ef2ab6af30f08bc7ec7dee
table tbl_ci_ip_rarp_eol segment=U_tbl_ci_ip_rarp_eol key=singleton columns=3 pq=626513a2d6598c7318f3b53df1e13df1
table tbl_ci_ip_secur_resallow_eol segment=U_tbl_ci_ip_secur_resallow_eol key=singleton columns=2 pq=f55df3fc9b16512e925308363e3c1bce
table tbl_ci_ip_secur_iauth_eol segment=U_tbl_ci_ip_secur_iauth_eol key=singleton columns=2 pq=98648841d5687ecc12ee2a7ea2869a4f
table tbl_ci_ip_localproxyarp_eol segment=U_tbl_ci_ip_localproxyarp_eol key=singleton columns=2 pq=9ea6a4e4e3ffa9781f0c23d4abc8a524
table tbl_ci_ip_helpaddr_vrf_eol segment=U_tbl_ci_ip_helpaddr_vrf_eol key=singleton columns=4 pq=d695af0b8b255427c173093d33b9a72b
table tbl_ci_ip_secur_exignore_eol segment=U_tbl_ci_ip_secur_exignore_eol key=singleton columns=2 pq=a1f09f549e1c2c575c84cce8caacacbd
table tbl_ci_ip_secur_ilabel_eol segment=U_tbl_ci_ip_secur_ilabel_eol key=singleton columns=5 pq=4d2ce3ed159ee2d1c2ac9fb828edb566
table tbl_ci_ip_secur_exallow_eol segment=U_tbl_ci_ip_secur_exallow_eol key=singleton columns=2 pq=23233c9ee9cc8c819270d664d5cfff79
table tbl_ci_ip_secur_ded_eol segment=U_tbl_ci_ip_secur_ded_eol key=singleton columns=5 pq=b4ea88224c48fbd4de2479da828ab1ad
table tbl_ci_ip_acct_eol segment=U_tbl_ci_ip_acct_eol key=singleton columns=14 pq=ecbefbf62b51473fcc63e9705b3f061d
table tbl_ci_ip_secur_eso_eol segment=U_tbl_ci_ip_secur_eso_eol key=singleton columns=9 pq=4ca1a77308a1f5310bc519c504ef87a8
table tbl_ci_ipv6_mtu_eol segment=U_tbl_ci_ipv6_mtu_eol key=singleton columns=3 pq=c1dbf6b76004cb137d30c6ee9b9d5902
table tbl_ci_ipv6_unnum_eols segment=U_tbl_ci_ipv6_unnum_eols key=singleton columns=3 pq=9070d1a81a40bd8e77d284d8f36007dd
table tbl_ci_ipv6_address_eol segment=U_tbl_ci_ipv6_address_eol key=singleton columns=18 pq=daba7d94341609370b8cb015007887cb
table tbl_ci_ipv6_enable_eol segment=U_tbl_ci_ipv6_enable_eol key=singleton columns=2 pq=6eab333f747921d00b9550d8ebf4c085
table tbl_ci_ipv6_address_link_eol segment=U_tbl_ci_ipv6_address_link_eol key=singleton columns=4 pq=ed47fb48c9c5879e6392e22d073a65a3
table tbl_ci_ipv6_address_automatic_eol segment=U_tbl_ci_ipv6_address_automatic_eol key=singleton columns=3 pq=0a0300c47b3bfda821887ac43eeb98a5

# Records, parents before what they nest, attributes in schema order.
record uidb_act_interface: configure_interface_0 rsl_boolean; uidb_key_field u_int32; descriminator enum; arm compound_21. -> uidb_act_interface_0_cp; arm compound_22. -> uidb_act_interface_1_cp
extension uidb_act_interface 1 v166_uidb_act_interface_ext:
extension uidb_act_interface 2 v167_uidb_act_interface_ext:
extension uidb_act_interface 3 v1612_uidb_act_interface_ext:
record uidb_act_interface_0_cp: config_interface_no_new_creation_1 -> if_handle
record uidb_act_interface_1_cp: compound_5. -> cfg_int_nvgens_cp; cfg_int_unset_flag_4 int32; config_interface_int_3 -> if_handle; config_interface_int_set_int_flag_2 int32
record cfg_int_nvgens_cp: compound_6. -> cfg_int_vt_type_cp; compound_7. -> cfg_int_vlan_type_cp; compound_8. -> cfg_int_subif_multi_cp
record cfg_int_vt_type_cp: compound_11. -> cfg_int_subif_multi_cp; compound_12. -> cfg_int_vt_vpn_cp
record cfg_int_subif_multi_cp: descriminator enum; arm compound_28. -> cfg_int_subif_multi_cp_0_cp; arm compound_29. -> cfg_int_subif_multi_cp_1_cp
record cfg_int_subif_multi_cp_0_cp: cfg_int_subif_multi_19 int32
record cfg_int_subif_multi_cp_1_cp: cfg_int_subif_p2p_20 int32
record cfg_int_vt_vpn_cp: descriminator enum; arm compound_24. -> cfg_int_vt_vpn_cp_0_cp; arm compound_25. -> cfg_int_vt_vpn_cp_1_cp; arm compound_26. -> cfg_int_vt_vpn_cp_2_cp; arm compound_27. -> cfg_int_vt_vpn_cp_3_cp
record cfg_int_vt_vpn_cp_0_cp: cfg_int_vt_vpn_15 int32
record cfg_int_vt_vpn_cp_1_cp: cfg_int_vt_serial_16 int32
record cfg_int_vt_vpn_cp_2_cp: cfg_int_vt_ether_17 int32
record cfg_int_vt_vpn_cp_3_cp: cfg_int_vt_tunnel_18 int32
record cfg_int_vlan_type_cp: descriminator enum; arm compound_23. -> cfg_int_vlan_type_cp_0_cp; arm compound_10. -> cfg_int_vlan_tr_cp
record cfg_int_vlan_type_cp_0_cp: cfg_int_vlan_ether_9 int32
record cfg_int_vlan_tr_cp: cfg_int_vlan_tr_13 int32; compound_14. -> cfg_int_subif_multi_cp
record ci_ip_stickyarp_dis_eol: singleton_id u_int32; compound_0. -> ci_ip_stickyarp_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_stickyarp_nvgen_cp: ci_ip_stickyarp_dis_1 int32
record ci_ip_dbcast_eol: singleton_id u_int32; compound_0. -> ci_ip_dbcast_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_dbcast_nvgen_cp: compound_1. -> ci_ip_dbcast_no_cp
record ci_ip_dbcast_no_cp: compound_2. -> ci_ip_dbcast_list_b_cp
record ci_ip_dbcast_list_b_cp: descriminator enum; arm compound_5. -> ci_ip_dbcast_list_b_cp_0_cp; arm compound_6. -> ci_ip_dbcast_list_b_cp_1_cp
record ci_ip_dbcast_list_b_cp_0_cp: ci_ip_dbcast_list_b_3 int32
record ci_ip_dbcast_list_b_cp_1_cp: ci_ip_dbcast_list_4 int32
record ci_ip_idgrp_in_eol: singleton_id u_int32; compound_0. -> ci_ip_idgrp_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_idgrp_nvgen_cp: descriminator enum; arm compound_6. -> ci_ip_idgrp_nvgen_cp_0_cp; arm compound_7. -> ci_ip_idgrp_nvgen_cp_1_cp; arm compound_8. -> ci_ip_idgrp_nvgen_cp_2_cp; arm holder. -> placeholder
record ci_ip_idgrp_nvgen_cp_0_cp: compound_1. -> ci_ip_idgrp_grp_cp
record ci_ip_idgrp_grp_cp: descriminator enum; arm compound_9. -> ci_ip_idgrp_grp_cp_0_cp; arm compound_10. -> ci_ip_idgrp_grp_cp_1_cp
record ci_ip_idgrp_grp_cp_0_cp: ci_ip_idgrp_grp_4 int32
record ci_ip_idgrp_grp_cp_1_cp: ci_ip_idgrp_grp_b_5 int32
record ci_ip_idgrp_nvgen_cp_1_cp: ci_ip_idgrp_grpname_2 rsl_vstring
record ci_ip_idgrp_nvgen_cp_2_cp: ci_ip_idgrp_grpname2_3 rsl_vstring
record ci_ip_mtu_eol: singleton_id u_int32; compound_0. -> ci_ip_mtu_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_mtu_nvgen_cp: ci_ip_mtu_size_1 int32
record ci_ip_addr_sec_eol: singleton_id u_int32; ci_ip_get_addr_0 ip_address; compound_1. -> ci_ip_get_mask_cp; uidb_act_interface_key u_int32
record ci_ip_get_mask_cp: ci_ip_get_mask_2 ip_address; compound_3. -> ci_ip_vrf_cp; compound_4. -> ci_ip_secondary_cp
record ci_ip_vrf_cp: ci_ip_vrf_name_7 rsl_vstring
record ci_ip_secondary_cp: ci_ip_secondary_5 int32; compound_6. -> ci_ip_vrf_cp
record ci_ip_idgrp_out_eol: singleton_id u_int32; compound_0. -> ci_ip_idgrp_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_probe_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_ml_eol: singleton_id u_int32; descriminator enum; arm compound_10. -> ci_ip_secur_ml_eol_0_cp; arm compound_11. -> ci_ip_secur_ml_eol_1_cp; uidb_act_interface_key u_int32
record ci_ip_secur_ml_eol_0_cp: ci_ip_secur_auth_visible_0 int32
record ci_ip_secur_ml_eol_1_cp: ci_ip_secur_auth_hidden_1 int32
record ci_ip_unreach_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_strip_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_redirects_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_helpaddr_eol: singleton_id u_int32; compound_0. -> ci_ip_helpaddr_nvgen_cp; uidb_act_interface_key u_int32
extension ci_ip_helpaddr_eol 1 v166_ci_ip_helpaddr_eol_ext: ci_ip_helpaddr_vrf_name rsl_vstring
record ci_ip_helpaddr_nvgen_cp: ci_ip_helpaddr_addr_1 ip_address
record ci_ip_inforeply_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ip_helpaddr: ip_helpaddr_addr ip_address; uidb_act_interface_key u_int32; ci_ip_helpaddr_vrf_name rsl_vstring
record ci_ip_bcaddr_eol: singleton_id u_int32; compound_0. -> ci_ip_bcaddr_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_bcaddr_nvgen_cp: ci_ip_bcaddr_get_1 ip_address
record ci_ip_secur_disable_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_add_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_proxyarp_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_addr_eol: singleton_id u_int32; descriminator enum; arm compound_31. -> ci_ip_addr_eol_0_cp; arm compound_1. -> ci_ip_address_nvgen_cp; arm compound_2. -> ci_ip_negotiated_cp; arm compound_32. -> ci_ip_addr_eol_3_cp; uidb_act_interface_key u_int32
record ci_ip_addr_eol_0_cp: ci_ip_negotiated_tunnel_0 int32
record ci_ip_address_nvgen_cp: descriminator enum; arm compound_33. -> ci_ip_address_nvgen_cp_0_cp; arm compound_34. -> ci_ip_address_nvgen_cp_1_cp; arm compound_35. -> ci_ip_address_nvgen_cp_2_cp
record ci_ip_address_nvgen_cp_0_cp: ci_ip_pool_name_6 rsl_vstring; ci_ip_dhcp_pool_5 int32
record ci_ip_address_nvgen_cp_1_cp: ci_ip_no_exit_7 int32
record ci_ip_address_nvgen_cp_2_cp: compound_9. -> ci_ip_get_mask_0_cp; ci_ip_get_addr_8 ip_address
record ci_ip_get_mask_0_cp: ci_ip_get_mask_10 ip_address; compound_11. -> ci_ip_secondary_0_cp; compound_12. -> ci_ip_alt_cp
record ci_ip_secondary_0_cp: ci_ip_secondary_13 int32; compound_14. -> ci_ip_alt_cp
record ci_ip_alt_cp: ci_ip_alt_15 int32; compound_16. -> ci_ip_alt_2_cp
record ci_ip_alt_2_cp: descriminator enum; arm compound_36. -> ci_ip_alt_2_cp_0_cp; arm compound_37. -> ci_ip_alt_2_cp_1_cp
record ci_ip_alt_2_cp_0_cp: ci_ip_alt_no_exit_17 int32
record ci_ip_alt_2_cp_1_cp: compound_19. -> ci_ip_get_alt_mask_cp; ci_ip_get_alt_addr_18 ip_address
record ci_ip_get_alt_mask_cp: ci_ip_get_alt_mask_27 ip_address; ci_ip_alt_secondary_28 int32
record ci_ip_negotiated_cp: ci_ip_negotiated_29 int32; ci_ip_negotiated_prev_30 int32
record ci_ip_addr_eol_3_cp: compound_4. -> ci_ip_addr_dhcp_nvgen_cp; ci_ip_dhcp_3 int32
record ci_ip_addr_dhcp_nvgen_cp: compound_20. -> ci_ip_dhcp_host_cp; ci_ip_dhcp_clientid_21 int32; compound_22. -> ci_ip_dhcp_clid_if_cp
record ci_ip_dhcp_host_cp: ci_ip_dhcp_host_25 int32; ci_ip_dhcp_host_name_26 rsl_vstring
record ci_ip_dhcp_clid_if_cp: ci_ip_dhcp_clid_if_23 -> if_handle; compound_24. -> ci_ip_dhcp_host_cp
record ci_ip_helpaddr_global_eol: singleton_id u_int32; ci_ip_helpaddr_global_addr_0 ip_address; uidb_act_interface_key u_int32
record ci_ip_unnum_eol: singleton_id u_int32; compound_0. -> ci_ip_unnumnvgen_cp; uidb_act_interface_key u_int32
record ci_ip_unnumnvgen_cp: compound_1. -> ci_ip_unnum_int_cp
record ci_ip_unnum_int_cp: ci_ip_unnum_int_2 -> if_handle; ci_ip_unnum_poll_3 int32
record ci_ip_secur_cipso_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_maskreply_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_first_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_rarp_eol: singleton_id u_int32; compound_0. -> ci_ip_rarp_nvgen_cp; uidb_act_interface_key u_int32
record ci_ip_rarp_nvgen_cp: ci_ip_rarp_addr_1 ip_address
record ci_ip_secur_resallow_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_iauth_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_localproxyarp_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_helpaddr_vrf_eol: singleton_id u_int32; ci_ip_helpaddr_vrf_0 rsl_vstring; ci_ip_helpaddr_vrf_addr_1 ip_address; uidb_act_interface_key u_int32
record ci_ip_secur_exignore_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_ilabel_eol: singleton_id u_int32; descriminator enum; arm compound_10. -> ci_ip_secur_ilabel_eol_0_cp; arm compound_11. -> ci_ip_secur_ilabel_eol_1_cp; uidb_act_interface_key u_int32
record ci_ip_secur_ilabel_eol_0_cp: ci_ip_secur_auth_visible_0 int32
record ci_ip_secur_ilabel_eol_1_cp: ci_ip_secur_auth_hidden_1 int32
record ci_ip_secur_exallow_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ip_secur_ded_eol: singleton_id u_int32; descriminator enum; arm compound_10. -> ci_ip_secur_ded_eol_0_cp; arm compound_11. -> ci_ip_secur_ded_eol_1_cp; uidb_act_interface_key u_int32
record ci_ip_secur_ded_eol_0_cp: ci_ip_secur_auth_visible_0 int32
record ci_ip_secur_ded_eol_1_cp: ci_ip_secur_auth_hidden_1 int32
record ci_ip_acct_eol: singleton_id u_int32; compound_0. -> ci_ip_acct_opak_cp; ci_ip_acct_prec_1 int32; compound_2. -> ci_ip_acct_prec_input_cp; ci_ip_acct_mac_3 int32; compound_4. -> ci_ip_acct_mac_input_cp; uidb_act_interface_key u_int32
record ci_ip_acct_opak_cp: descriminator enum; arm compound_12. -> ci_ip_acct_opak_cp_0_cp; arm compound_13. -> ci_ip_acct_opak_cp_1_cp; arm compound_14. -> ci_ip_acct_opak_cp_2_cp
record ci_ip_acct_opak_cp_0_cp: ci_ip_acct_opak_5 int32
record ci_ip_acct_opak_cp_1_cp: ci_ip_acct_violation_6 int32
record ci_ip_acct_opak_cp_2_cp: ci_ip_acct_noparm_7 int32
record ci_ip_acct_prec_input_cp: descriminator enum; arm compound_15. -> ci_ip_acct_prec_input_cp_0_cp; arm compound_16. -> ci_ip_acct_prec_input_cp_1_cp
record ci_ip_acct_prec_input_cp_0_cp: ci_ip_acct_prec_input_8 int32
record ci_ip_acct_prec_input_cp_1_cp: ci_ip_acct_prec_output_9 int32
record ci_ip_acct_mac_input_cp: descriminator enum; arm compound_17. -> ci_ip_acct_mac_input_cp_0_cp; arm compound_18. -> ci_ip_acct_mac_input_cp_1_cp
record ci_ip_acct_mac_input_cp_0_cp: ci_ip_acct_mac_input_10 int32
record ci_ip_acct_mac_input_cp_1_cp: ci_ip_acct_mac_output_11 int32
record ci_ip_secur_eso_eol: singleton_id u_int32; compound_0. -> ci_ip_secur_eso_max_cp; compound_1. -> ci_ip_secur_source_cp; uidb_act_interface_key u_int32
record ci_ip_secur_eso_max_cp: descriminator enum; arm compound_8. -> ci_ip_secur_eso_max_cp_0_cp; arm compound_9. -> ci_ip_secur_eso_max_cp_1_cp; arm compound_10. -> ci_ip_secur_eso_max_cp_2_cp
record ci_ip_secur_eso_max_cp_0_cp: ci_ip_secur_eso_max_5 int32
record ci_ip_secur_eso_max_cp_1_cp: ci_ip_secur_eso_min_6 int32
record ci_ip_secur_eso_max_cp_2_cp: ci_ip_secur_aeso_7 int32
record ci_ip_secur_source_cp: ci_ip_secur_source_2 int32; ci_ip_secur_compart_3 rsl_vstring; ci_ip_secur_compart_4 int32
record ci_ipv6_mtu_eol: singleton_id u_int32; compound_0. -> ci_ipv6_mtu_nvgen_cp; uidb_act_interface_key u_int32
record ci_ipv6_mtu_nvgen_cp: ci_ipv6_mtu_size_1 int32
record ci_ipv6_unnum_eols: singleton_id u_int32; compound_0. -> ci_ipv6_unnum_nvgen_cp; uidb_act_interface_key u_int32
record ci_ipv6_unnum_nvgen_cp: ci_ipv6_unnum_idb_1 -> if_handle
record ci_ipv6_address_eol: singleton_id u_int32; compound_0. -> ci_ipv6_address_nvgen_cp; uidb_act_interface_key u_int32
record ci_ipv6_address_nvgen_cp: descriminator enum; arm compound_15. -> ci_ipv6_address_nvgen_cp_0_cp; arm compound_16. -> ci_ipv6_address_nvgen_cp_1_cp; arm compound_5. -> ci_ipv6_address_prefix_cp
record ci_ipv6_address_nvgen_cp_0_cp: ci_ipv6_address_noset_1 int32
record ci_ipv6_address_nvgen_cp_1_cp: compound_4. -> T_ci_ipv6_address_prefix_cp; E_ci_ipv6_address_prefix_3 int32; S_ci_ipv6_address_prefix_2 rsl_vstring
record T_ci_ipv6_address_prefix_cp: T_ci_ipv6_address_prefix_6 ip_address; T_ci_ipv6_address_prefix_7 int32; compound_8. -> ci_ipv6_address_cga_cp
record ci_ipv6_address_cga_cp: descriminator enum; arm compound_17. -> ci_ipv6_address_cga_cp_0_cp; arm compound_18. -> ci_ipv6_address_cga_cp_1_cp; arm compound_19. -> ci_ipv6_address_cga_cp_2_cp
record ci_ipv6_address_cga_cp_0_cp: ci_ipv6_address_cga_12 int32
record ci_ipv6_address_cga_cp_1_cp: ci_ipv6_address_eui_13 int32
record ci_ipv6_address_cga_cp_2_cp: ci_ipv6_address_anycast_14 int32
record ci_ipv6_address_prefix_cp: ci_ipv6_address_prefix_9 ip_address; ci_ipv6_address_prefix_10 int32; compound_11. -> ci_ipv6_address_cga_cp
record ci_ipv6_enable_eol: singleton_id u_int32; uidb_act_interface_key u_int32
record ci_ipv6_address_link_eol: singleton_id u_int32; ci_ipv6_address_link_addr_0 ip_address; compound_1. -> ci_ipv6_address_link_cp; uidb_act_interface_key u_int32
record ci_ipv6_address_link_cp: ci_ipv6_address_ll_cga_2 int32
record ci_ipv6_address_automatic_eol: singleton_id u_int32; compound_0. -> ci_ipv6_address_automatic_cp; uidb_act_interface_key u_int32
record ci_ipv6_address_automatic_cp: ci_ipv6_address_automatic_default_1 int32
