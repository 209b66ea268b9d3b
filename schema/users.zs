# Local users and SNMP contexts.
domain users

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_cl_username_eol segment=username key=user_name:rsl_vstring columns=103 pq=1c21bab6a386dd7e16b5835a89cbec60
table tbl_ci_snmp_context_string_eol segment=ci_snmp_context_string key=singleton columns=2 pq=79ee7436be390c28d11e1407532625a9
table tbl_ci_snmp_context_com_eol segment=ci_snmp_context_com key=singleton columns=25 pq=fd60a80e2681bb977b4a65d24d5417f2
table tbl_ci_snmp_context_user_eol segment=ci_snmp_context_user key=singleton columns=88 pq=fb16d68d393db2244678c50db8e48533

# Records, parents before what they nest, attributes in schema order.
record cl_username_eol: user_name rsl_vstring; compound_0. -> cl_username_nvgens_cp
record cl_username_nvgens_cp: descriminator enum; arm compound_81. -> cl_username_nvgens_cp_0_cp; arm compound_3. -> cl_username_name_cp
record cl_username_nvgens_cp_0_cp: lawful_intercept int32
record cl_username_name_cp: compound_6. -> cl_username_options_cp; common_criteria_policy int32; compound_8. -> cl_username_cc_name_val_cp; autocommand int32; command_to_be_automatically_issued_after_the_user_logs_in rsl_vstring; compound_11. -> cl_username_password1_cp_cp
record cl_username_options_cp: callback_dialstring int32; dial_string rsl_vstring; user_maxlinks int32; user_maxlinks_limit_for_inbound_links int32; view int32; view_name rsl_vstring; compound_57. -> cl_username_aaa_cp; callback_rotary int32; rotary_group_number int32; access_class int32; compound_61. -> cl_username_access_num_b_cp; privilege int32; user_privilege_level int32; callback_line int32; tty_line_number int32; compound_67. -> cl_username_mac_cp; token int32; nopassword int32; noescape int32; nohangup int32; nocallback_verify int32; dnis int32
record cl_username_aaa_cp: aaa int32; aaa_attribute_list_name rsl_vstring
record cl_username_access_num_b_cp: descriminator enum; arm compound_107. -> cl_username_access_num_b_cp_0_cp; arm compound_108. -> cl_username_access_num_b_cp_1_cp
record cl_username_access_num_b_cp_0_cp: expanded_access_class_number int32
record cl_username_access_num_b_cp_1_cp: access_class_number int32
record cl_username_mac_cp: mac int32; descriminator enum; arm compound_70. -> cl_username_aaa_cp; arm compound_101. -> cl_username_mac_cp_1_cp
record cl_username_mac_cp_1_cp: token int32
record cl_username_cc_name_val_cp: name_of_policy rsl_vstring; descriminator enum; arm compound_13. -> cl_username_secret_cp; arm compound_14. -> cl_username_password_cp; arm compound_15. -> cl_username_algo_cp
record cl_username_secret_cp: username_secret int32; descriminator enum; arm compound_82. -> cl_username_secret_cp_0_cp; arm compound_83. -> cl_username_secret_cp_1_cp; arm compound_84. -> cl_username_secret_cp_2_cp
record cl_username_secret_cp_0_cp: the_unencrypted_user_secret rsl_vstring; compound_21. -> cl_username_secret_enctype0_cp
record cl_username_secret_enctype0_cp: descriminator enum; arm compound_98. -> cl_username_secret_enctype0_cp_0_cp; arm compound_99. -> cl_username_secret_enctype0_cp_1_cp
record cl_username_secret_enctype0_cp_0_cp: cl_username_secret_enctype0_48 int32
record cl_username_secret_enctype0_cp_1_cp: encryption_types_not_explicitly_specified int32
record cl_username_secret_cp_1_cp: the_unencrypted_user_secret rsl_vstring
record cl_username_secret_cp_2_cp: the_hidden_user_secret_string rsl_vstring; compound_24. -> cl_username_secret_enctype5_cp
record cl_username_secret_enctype5_cp: descriminator enum; arm compound_94. -> cl_username_secret_enctype5_cp_0_cp; arm compound_95. -> cl_username_secret_enctype5_cp_1_cp; arm compound_96. -> cl_username_secret_enctype5_cp_2_cp; arm compound_97. -> cl_username_secret_enctype5_cp_3_cp
record cl_username_secret_enctype5_cp_0_cp: cl_username_secret_enctype5_44 int32
record cl_username_secret_enctype5_cp_1_cp: cl_username_secret_enctype4_45 int32
record cl_username_secret_enctype5_cp_2_cp: cl_username_secret_enctype9_46 int32
record cl_username_secret_enctype5_cp_3_cp: cl_username_secret_enctype8_47 int32
record cl_username_password_cp: password int32; descriminator enum; arm compound_85. -> cl_username_password_cp_0_cp; arm compound_86. -> cl_username_password_cp_1_cp; arm compound_87. -> cl_username_password_cp_2_cp
record cl_username_password_cp_0_cp: the_unencrypted_user_password rsl_vstring; compound_27. -> cl_username_password_enctype0_cp
record cl_username_password_enctype0_cp: descriminator enum; arm compound_92. -> cl_username_password_enctype0_cp_0_cp; arm compound_93. -> cl_username_password_enctype0_cp_1_cp
record cl_username_password_enctype0_cp_0_cp: password_encryption_type_unencrypted int32
record cl_username_password_enctype0_cp_1_cp: encryption_types_not_explicitly_specified int32
record cl_username_password_cp_1_cp: the_unencrypted_user_password rsl_vstring
record cl_username_password_cp_2_cp: the_hidden_user_password_string rsl_vstring; password_encryption_type_hidden int32
record cl_username_algo_cp: compound_32. -> cl_username_algo_sha256_cp; compound_33. -> cl_username_algo_secret_cp
record cl_username_algo_sha256_cp: descriminator enum; arm compound_89. -> cl_username_algo_sha256_cp_0_cp; arm compound_90. -> cl_username_algo_sha256_cp_1_cp; arm compound_91. -> cl_username_algo_sha256_cp_2_cp
record cl_username_algo_sha256_cp_0_cp: sha256 int32
record cl_username_algo_sha256_cp_1_cp: md5 int32
record cl_username_algo_sha256_cp_2_cp: scrypt int32
record cl_username_algo_secret_cp: algo_secret int32; descriminator enum; arm compound_88. -> cl_username_algo_secret_cp_0_cp; arm compound_36. -> cl_username_algo_secret_interactive_cp
record cl_username_algo_secret_cp_0_cp: the_unencrypted_secret_for_the_user rsl_vstring
record cl_username_algo_secret_interactive_cp: interactive int32; the_unencrypted_secret_for_the_user rsl_vstring
record cl_username_password1_cp_cp: compound_16. -> cl_username_password1_cp; descriminator enum; arm compound_17. -> cl_username_secret_cp; arm compound_18. -> cl_username_password_cp; arm compound_19. -> cl_username_algo_cp
record cl_username_password1_cp: descriminator enum; arm holder. -> placeholder; arm compound_100. -> cl_username_password1_cp_1_cp
record cl_username_password1_cp_1_cp: one_time int32
record ci_snmp_context_string_eol: singleton_id u_int32; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ci_snmp_context_com_eol: singleton_id u_int32; compound_0. -> ci_snmp_context_set_ctx_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record ci_snmp_context_set_ctx_cp: ci_snmp_context_set_ctx int32; context_name rsl_vstring; community int32; compound_7. -> ci_snmp_context_com_str_cp
record ci_snmp_context_com_str_cp: snmp_community_string rsl_vstring; compound_9. -> ci_snmp_context_com_test_cp
record ci_snmp_context_com_test_cp: compound_10. -> ci_snmp_context_com_list_b_cp; compound_11. -> ci_snmp_context_com_list_ipv6_cp; compound_12. -> ci_snmp_context_com_ro_cp_cp
record ci_snmp_context_com_list_b_cp: descriminator enum; arm compound_25. -> ci_snmp_context_com_list_b_cp_0_cp; arm compound_26. -> ci_snmp_context_com_list_b_cp_1_cp; arm compound_27. -> ci_snmp_context_com_list_b_cp_2_cp
record ci_snmp_context_com_list_b_cp_0_cp: ex_ip_acl_com_string int32
record ci_snmp_context_com_list_b_cp_1_cp: std_ip_acl_com_string int32
record ci_snmp_context_com_list_b_cp_2_cp: acl_name rsl_vstring
record ci_snmp_context_com_list_ipv6_cp: compound_16. -> ci_snmp_context_com_snacl_ipv6_cp
record ci_snmp_context_com_snacl_ipv6_cp: ipv6_acl_name rsl_vstring; compound_18. -> ci_snmp_context_com_list_b_cp
record ci_snmp_context_com_ro_cp_cp: access_mode int32; compound_14. -> ci_snmp_context_com_list_ipv6_cp; compound_15. -> ci_snmp_context_com_list_b_cp
record ci_snmp_context_user_eol: singleton_id u_int32; ci_snmp_context_set_ctx int32; context_name rsl_vstring; name_of_the_user rsl_vstring; sec_level_cmpd. -> sec_level_cp; parent_details_2. -> ci_vrf_afi_mode_parent_details
record sec_level_cp: sec_level int32; descriminator enum; arm encrypt. -> ci_snmp_context_user_encrypted_cp; arm auth. -> ci_snmp_context_user_auth_cp; arm access. -> ci_snmp_context_user_access_cp; arm credential. -> ci_snmp_context_user_cred_cp; arm stub. -> placeholder
record ci_snmp_context_user_encrypted_cp: encrypted int32; descriminator enum; arm compound_487. -> ci_snmp_context_user_auth_cp; arm compound_488. -> ci_snmp_context_user_access_cp; arm stub. -> placeholder
record ci_snmp_context_user_auth_cp: auth_algorithm int32; compound_485. -> ci_snmp_context_user_auth_password_cp
record ci_snmp_context_user_auth_password_cp: usr_auth_passwd rsl_vstring; descriminator enum; arm compound_481. -> ci_snmp_context_user_priv_cp; arm compound_482. -> ci_snmp_context_user_access_cp
record ci_snmp_context_user_priv_cp: sec_level_val int32; priv_opts int32; passwd_compound. -> ci_snmp_context_user_priv_password_cp
record ci_snmp_context_user_priv_password_cp: usr_privacy_passwd rsl_vstring; descriminator enum; arm compound_474. -> ci_snmp_context_user_access_cp; arm stub. -> placeholder
record ci_snmp_context_user_access_cp: descriminator enum; arm compound_466. -> ci_snmp_context_user_nacl_cp; arm compound_501. -> ci_snmp_context_user_snacl_ipv6_cp
record ci_snmp_context_user_nacl_cp: descriminator enum; arm compound_499. -> ci_snmp_context_user_nacl_cp_0_cp; arm compound_500. -> ci_snmp_context_user_nacl_cp_1_cp
record ci_snmp_context_user_nacl_cp_0_cp: acl_name rsl_vstring
record ci_snmp_context_user_nacl_cp_1_cp: std_ip_acl int32
record ci_snmp_context_user_snacl_ipv6_cp: ipv6_acl_name rsl_vstring; descriminator enum; arm compound_465. -> ci_snmp_context_user_nacl_cp; arm stub. -> placeholder
record ci_snmp_context_user_cred_cp: credential int32
