# Flow monitoring: exporters, records and monitors.
domain flow

# Positions: path segment, key, column count (checked), path-query identifier.
table tbl_flow_exporter segment=flow_exporter key=flow_exporter_name:rsl_vstring columns=1 pq=b0245b8e9ec79476d655a621b8388898
table tbl_flow_record_eol segment=flow_record key=flow_record_name:rsl_vstring columns=2 marker=inst_tbl_flow_record pq=e68e313ad984d361fc21c01b2ce1d99a
table tbl_flow_monitor segment=flow_monitor key=flow_monitor_name:rsl_vstring columns=1 pq=3cde55b493de332fa7f49956350affb8
table tbl_flow_exporter_options segment=flow_export_options key=flow_export_option_key:int32 columns=26 pq=6802969e38c9e5f02f4231682e6afdcf
table tbl_flowmon_cache_timeout_rate_limit_eol segment=flowmon_cache_timeout_rate_limit key=singleton columns=3 pq=4be275b61ba90e588b42abb4ca7256af
table tbl_flowmon_rec_name_eol segment=flowmon_record_name key=singleton columns=3 pq=18f0492465fa5ac590fc18ff0a0346c0
table tbl_flowmon_cache_type_eol segment=flowmon_cache_type key=singleton columns=7 pq=b1ceb22a8b202bf17ac43b093f404cb5
table tbl_flowmon_cache_timeout_synch_eol segment=flowmon_cache_timeout_synchronized key=singleton columns=5 pq=bd2613ea3507399512799362e8c274b2
table tbl_flowmon_cache_timeout_inact_eol segment=flowmon_cache_timeout_inactive key=singleton columns=3 pq=e0219956c6c6cfe7e45dec579d7d99e5
table tbl_flowmon_cache_timeout_fast_eol segment=flowmon_cache_timeout_fast key=singleton columns=10 pq=12f4cc750913f097765694169f52b3fd
table tbl_flowmon_stats_packet_protocol_eol segment=flowmon_stats_packet_protocol key=singleton columns=2 pq=547bffb16fc9c4ffc18ed6baedd0d73b
table tbl_flowmon_desc_eol segment=flowmon_description key=singleton columns=3 pq=a130927853c2af7567a337bf22931c93
table tbl_flowmon_cache_timeout_upd_eol segment=flowmon_cache_timeout_update key=singleton columns=3 pq=60247394ec98e74d44ef50e26b097c2a
table tbl_flowmon_cache_timeout_act_eol segment=flowmon_cache_timeout_active key=singleton columns=3 pq=020eca1cd47b6d70ff8321e4d624c2f7
table tbl_flowmon_exp_eol segment=flowmon_exporter key=singleton columns=3 pq=98c5144b32afad2ee8f53748851b40e3
table tbl_flow_monitor_exporter segment=flow_monitor_exporters key=flow_monitor_exporter_name:rsl_vstring columns=2 pq=0633c9a18bb9c206a6dfe63c6b7df0a1
table tbl_flowmon_stats_packet_size_eol segment=flowmon_stats_packet_size key=singleton columns=2 pq=a34b6c2188cdaa10f44f8bac02cae0c8
table tbl_flowmon_cache_entries_eol segment=flowmon_cache_entries key=singleton columns=3 pq=ea470e3cd4f7f64177cf2138aaae0dbd
table tbl_flowmon_cache_timeout_event_transaction_end_eol segment=flowmon_cache_timeout_event_transaction_end key=singleton columns=2 pq=baac842d718b5096d34b6a0dde8b7210
table tbl_flowrec_desc_eol segment=flow_record_description key=singleton columns=3 pq=6899e11eaeefa9a07293f3844726792c
table tbl_flowrec_fields_eol segment=flow_record_fields key=flowrec_fields:rsl_vstring columns=40 pq=36b205497df1bca00302cca9bace792b

# Records, parents before what they nest, attributes in schema order.
record flow_exporter: flow_exporter_name rsl_vstring
record flow_record_eol: flow_record_name rsl_vstring; flow_record_type int32
record flow_monitor: flow_monitor_name rsl_vstring
extension flow_monitor 1 v16_10_flow_monitor:
record flow_exporter_options: flow_export_option_key int32; opts. -> flowexp_opts; parent_details. -> flowexp_parent_details
record flowexp_opts: descriminator enum; arm output_feat. -> flowexp_output_features; arm destination. -> flowexp_destination; arm timeopts. -> flowexp_timeopts; arm transport. -> flowexp_transport; arm ttl. -> flowexp_ttl; arm mtu. -> flowexp_mtu; arm dscp. -> flowexp_dscp; arm source. -> flowexp_source; arm description. -> flowexp_description
record flowexp_output_features: output_features int32
record flowexp_destination: destination int32; details. -> flowexp_dest_details
record flowexp_dest_details: dest_addr. -> flowexp_dest_addr; vrf_label rsl_vstring
record flowexp_dest_addr: descriminator enum; arm dest_ipv4. -> flowexp_dest_ipv4; arm dest_ipv6. -> flowexp_dest_ipv6
record flowexp_dest_ipv4: destination_ipv4_address ip_address
record flowexp_dest_ipv6: destination_ipv6_address ip_address
record flowexp_timeopts: timeopts. -> flowexp_data_time
record flowexp_data_time: timeout int32; value_given_in_seconds int32
record flowexp_transport: transport int32; udp int32; port_value int32
record flowexp_ttl: ttl int32; ttl_value int32
record flowexp_mtu: mtu int32; mtu_value int32
record flowexp_dscp: dscp int32; differentiated_services_codepoint_value int32
record flowexp_source: source int32; src_opts. -> flowexp_source_opts
record flowexp_source_opts: descriminator enum; arm name. -> flowexp_source_name; arm ifnum. -> flowexp_source_ifnum
record flowexp_source_name: interface_by_name rsl_vstring
record flowexp_source_ifnum: interface -> if_handle
record flowexp_description: description int32; flow_exporter_description rsl_vstring
record flowexp_parent_details: parent_key_flow_exporter rsl_vstring
record flowmon_cache_timeout_rate_limit_eol: singleton_id u_int32; maximum_number_of_entries_to_age_each_second int32; parent_details. -> flowmon_parent_details
record flowmon_parent_details: parent_key_flow_monitor rsl_vstring
record flowmon_rec_name_eol: singleton_id u_int32; flowmon_rec_name rsl_vstring; parent_details. -> flowmon_parent_details
record flowmon_cache_type_eol: singleton_id u_int32; cache_type. -> flowmon_cache_type; parent_details. -> flowmon_parent_details
record flowmon_cache_type: descriminator enum; arm immediate_cp. -> flowmon_cache_type_immediate; arm synchronized_cp. -> flowmon_cache_type_synchronized; arm normal_cp. -> flowmon_cache_type_normal; arm permanent_cp. -> flowmon_cache_type_permanent
record flowmon_cache_type_immediate: immediate int32
record flowmon_cache_type_synchronized: synchronized int32
record flowmon_cache_type_normal: normal int32
record flowmon_cache_type_permanent: permanent int32
record flowmon_cache_timeout_synch_eol: singleton_id u_int32; synchronized_cache_cp. -> flowmon_cache_timeout_synch_num_cp; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_synch_num_cp: synchronized_cache_timeout_in_seconds int32; export_spread_cp. -> flowmon_cache_timeout_synch_export_spread_cp
record flowmon_cache_timeout_synch_export_spread_cp: export_spread int32; the_interval_to_spread_exporting int32
record flowmon_cache_timeout_inact_eol: singleton_id u_int32; timeout_inactive_cp. -> flowmon_cache_timeout_inactive_cp; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_inactive_cp: inactive_timeout_in_seconds int32
record flowmon_cache_timeout_fast_eol: singleton_id u_int32; timeout_fast_cp. -> flowmon_cache_timeout_fast_noprefix_cp; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_fast_noprefix_cp: fast_threshold_cp. -> flowmon_cache_timeout_fast_threshold1_num_set_cp; fast_aging_thresold_packet_count int32; fast_time_set_cp. -> flowmon_cache_timeout_fast_time1_num_set_cp; fast_timeout_in_seconds int32
record flowmon_cache_timeout_fast_threshold1_num_set_cp: threshold_set int32; timer_set int32; fast_timeout_in_seconds int32
record flowmon_cache_timeout_fast_time1_num_set_cp: timer_set int32; threshold_set int32; fast_aging_thresold_packet_count int32
record flowmon_stats_packet_protocol_eol: singleton_id u_int32; parent_details. -> flowmon_parent_details
record flowmon_desc_eol: singleton_id u_int32; flow_monitor_description rsl_vstring; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_upd_eol: singleton_id u_int32; timeout_update_cp. -> flowmon_cache_timeout_update_cp; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_update_cp: permanent_cache_update_timeout_in_seconds int32
record flowmon_cache_timeout_act_eol: singleton_id u_int32; active_timeout_in_seconds int32; parent_details. -> flowmon_parent_details
record flowmon_exp_eol: singleton_id u_int32; flowmon_exp_name rsl_vstring; parent_details. -> flowmon_parent_details
record flow_monitor_exporter: flow_monitor_exporter_name rsl_vstring; parent_details. -> flowmon_parent_details
record flowmon_stats_packet_size_eol: singleton_id u_int32; parent_details. -> flowmon_parent_details
record flowmon_cache_entries_eol: singleton_id u_int32; maximum_number_of_entries int32; parent_details. -> flowmon_parent_details
record flowmon_cache_timeout_event_transaction_end_eol: singleton_id u_int32; parent_details. -> flowmon_parent_details
record flowrec_desc_eol: singleton_id u_int32; flow_record_description rsl_vstring; parent_details. -> flowrec_parent_details
record flowrec_parent_details: parent_key_flow_record rsl_vstring
record flowrec_fields_eol: flowrec_fields rsl_vstring; descriminator enum; arm collect_cp. -> flowrec_fields_collect_kw_cp; arm match_cp. -> flowrec_fields_match_kw_cp; parent_details. -> flowrec_parent_details
record flowrec_fields_collect_kw_cp: collect int32; collect_engine_cp. -> flowrec_fields_collect_engine_cp; flowrec_fields_params_fwd_status_default_mask_11 int32; account_on_resolution_kw_5_cp. -> flowrec_fields_account_on_resolution_kw_cp; flowrec_fields_params_tcp_flags int32; flowrec_fields_params_tcp_flags_all_8 int32; flowrec_fields_params_range_end_default_7 int32; min_mask_v4_cp. -> flowrec_fields_params_min_mask_v4_cp; range_cp. -> flowrec_fields_params_range_kw_cp; min_mask_v6_cp. -> flowrec_fields_params_min_mask_v6_cp; chunk_size_kw_cp. -> flowrec_fields_params_chunk_size_kw_cp
record flowrec_fields_collect_engine_cp: flowrec_fields_collect_engine rsl_vstring
record flowrec_fields_account_on_resolution_kw_cp: flowrec_fields_account_on_resolution_set_68 int32
record flowrec_fields_params_min_mask_v4_cp: min_mask_v4_num_cp. -> flowrec_fields_params_min_mask_v4_num_cp
record flowrec_fields_params_min_mask_v4_num_cp: specify_optional_minimum_mask int32; account_on_resolution_kw_4_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_range_kw_cp: range_end_cp. -> flowrec_fields_params_range_end_cp
record flowrec_fields_params_range_end_cp: end_of_the_range int32; account_on_resolution_kw_3_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_min_mask_v6_cp: min_mask_v6_num_cp. -> flowrec_fields_params_min_mask_v6_num_cp
record flowrec_fields_params_min_mask_v6_num_cp: specify_optional_minimum_mask int32; account_on_resolution_kw_2_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_chunk_size_kw_cp: chunk_size_cp. -> flowrec_fields_params_chunk_size_cp
record flowrec_fields_params_chunk_size_cp: number_of_bytes_to_capture int32; account_on_resolution_kw_0_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_match_kw_cp: match int32; status_default_mask_cp. -> flowrec_fields_params_fwd_status_default_mask_cp; tcp_flags_cp. -> flowrec_fields_params_tcp_flags_cp; match_engine_cp. -> flowrec_fields_match_engine_cp; min_mask_v4_cp. -> flowrec_fields_params_min_mask_v4_cp; tcp_flags_all_cp. -> flowrec_fields_params_tcp_flags_all_cp; range_cp. -> flowrec_fields_params_range_kw_cp; min_mask_v6_cp. -> flowrec_fields_params_min_mask_v6_cp; range_end_cp. -> flowrec_fields_params_range_end_default_cp; chunk_size_kw_cp. -> flowrec_fields_params_chunk_size_kw_cp; account_on_resolution_kw_9_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_fwd_status_default_mask_cp: flowrec_fields_params_fwd_status_default_mask_63 int32; status_reason_cp. -> flowrec_fields_params_fwd_status_reason_cp; account_on_resolution_kw_8_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_fwd_status_reason_cp: flowrec_fields_params_fwd_status_reason_66 int32; account_on_resolution_kw_7_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_tcp_flags_cp: flowrec_fields_params_tcp_flags int32; account_on_resolution_kw_6cp. -> flowrec_fields_account_on_resolution_kw_cp; flowrec_fields_params_tcp_flags_all_61 int32
record flowrec_fields_match_engine_cp: flowrec_fields_match_engine rsl_vstring
record flowrec_fields_params_tcp_flags_all_cp: flowrec_fields_params_tcp_flags_all_58 int32; account_on_resolution_kw_5_cp. -> flowrec_fields_account_on_resolution_kw_cp
record flowrec_fields_params_range_end_default_cp: flowrec_fields_params_range_end_default_50 int32; account_on_resolution_kw_1_cp. -> flowrec_fields_account_on_resolution_kw_cp
