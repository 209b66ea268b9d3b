# Base types of the record-schema library, the enumerations and flag sets, the records
# that several domains share, the system's own object records, and the type-slot order.
domain base

# Leaf words of the records and the type code each column of that word carries.
leaf u_int8 code=0
leaf u_int16 code=2
leaf int16 code=3
leaf u_int32 code=4
leaf int32 code=5
leaf u_int64 code=6
leaf rsl_vstring code=8
leaf rsl_boolean code=9
leaf rsl_mac_addr code=15
leaf ip_address code=101
leaf enum code=103
leaf array code=106
leaf flags code=109

# Named base types rendered by a library row function <name>_to_properties_perf.
# kind is the class in the property vector; the value-list vector treats them as 1.
library calendar_time kind=2
library dcx_bytestr kind=2
library ip_address kind=2
library ip_prefix kind=2
library ipv4_addr kind=2
library ipv4_maddr kind=2
library ipv6_addr kind=2
library ipv6_maddr kind=2
library rsl_aes_password_vstring kind=2
library rsl_aes_vstring kind=2
library rsl_mac_addr kind=2
library rsl_password_vstring kind=2
library rsl_phys_addr kind=2
library rsl_username_vstring kind=2
library rsl_vstring kind=2
library timestamp kind=2
library char kind=4
library counter64 kind=4
library double kind=4
library float kind=4
library int16 kind=4
library int32 kind=4
library int64 kind=4
library int8 kind=4
library u_int16 kind=4
library u_int32 kind=4
library u_int64 kind=4
library u_int8 kind=4

# Enumerations, values from 0 in the order given. rsl_boolean is the library's own and
# has a library row function; obj_type stands in object_model.zs.
enum rsl_boolean: library
enum pak_direction: INGRESS_DIRECTION EGRESS_DIRECTION BOTH_DIRECTION
enum addr_type: ADDRESS_NONE IPV4_ADDRESS IPV6_ADDRESS IPV4_ADDRESS_MCAST IPV6_ADDRESS_MCAST
enum cfg_action: DCX_CFG_ACTION_NONE DCX_CFG_ACTION_ADD DCX_CFG_ACTION_MODIFY DCX_CFG_ACTION_DELETE DCX_CFG_ACTION_MAX
enum ip_proto: IP_PROTO_ILLEGAL IP_PROTO_TCP IP_PROTO_UDP IP_PROTO_ESP IP_PROTO_ICMP
enum stat_direction: DIR_INGRESS DIR_EGRESS
enum dcx_position: POSITION_HEAD POSITION_BEFORE POSITION_TAIL POSITION_REPLACE POSITION_UNKNOWN
enum upd_action: RSL_UPD_ACTION_NONE RSL_UPD_ACTION_CREATE RSL_UPD_ACTION_MODIFY RSL_UPD_ACTION_DELETE
enum aom_obj_action: RSL_AOM_ACTION_NONE RSL_AOM_ACTION_CREATE RSL_AOM_ACTION_DELETE RSL_AOM_ACTION_MODIFY RSL_AOM_ACTION_MAX
enum object_status: RSL_AOM_STATUS_INIT RSL_AOM_STATUS_NEEDS_UPDATE RSL_AOM_STATUS_NEEDS_ACK RSL_AOM_STATUS_DONE RSL_AOM_STATUS_INIT_ERROR RSL_AOM_STATUS_UPDATE_ERROR RSL_AOM_STATUS_MAX
enum batch_state: RSL_AOM_BATCH_STATE_PENDING_ISSUE_BEGIN RSL_AOM_BATCH_STATE_PENDING_ACK_BEGIN RSL_AOM_BATCH_STATE_PENDING_ISSUE_END RSL_AOM_BATCH_STATE_PENDING_ACK_END RSL_AOM_BATCH_STATE_MAX
enum layer_flag: ACTIVE_LAYER DELETE_LAYER
enum zan_cfg_union: ZAN_CFG_NONE ZAN_CFG_0 ZAN_CFG_1 ZAN_CFG_2 ZAN_CFG_3 ZAN_CFG_4 ZAN_CFG_5 ZAN_CFG_6 ZAN_CFG_7 ZAN_CFG_8 ZAN_CFG_9 ZAN_CFG_10 ZAN_CFG_11 ZAN_CFG_12 ZAN_CFG_13 ZAN_CFG_14 ZAN_CFG_15 ZAN_CFG_16 ZAN_CFG_17 ZAN_CFG_18 ZAN_CFG_19 ZAN_CFG_20 ZAN_CFG_21

# Flag sets, bits from bit 0.
flags channel_state: CHANNEL_STATE_CONNECTED CHANNEL_STATE_NEED_FLUSH CHANNEL_STATE_BACK_PRESSURED CHANNEL_STATE_READ_SELECT CHANNEL_STATE_WRITE_SELECT
flags om_node_flags: OM_NODE_FLAG_REMOVE OM_NODE_FLAG_CHILDLESS_DELETE OM_NODE_FLAG_ACK_REQ OM_NODE_FLAG_ACK_REQ_FREE
flags db_flags: IS_DB_FLAG_NONE IS_PENDING_DELETE
flags layer_scratch: OM_LAYER_EOM

# Type slots: all named types in byte order of their bare names, with the empty rows of
# the database's type namespace kept where that namespace has them. The namespace numbers
# a few library types out of byte order; "order after" pins them behind the named type.
slots empty: 26 411-428 576 675-685 687-689 716 794-806 809-817 863-865 902 987-989 995 998 1003-1006 1009
order after int8: counter64
order after mac_nacl: double dcx_bytestr zan_cfg_union
order after stat_direction: rsl_aes_password_vstring rsl_aes_vstring rsl_binidx rsl_boolean rsl_luid rsl_mac_addr rsl_password_vstring rsl_phys_addr rsl_table_oid rsl_username_vstring rsl_vstring

# Records that several domains use.
base record if_handle: handle u_int32
record placeholder: dummy int32
record ci_vrf_afi_mode_parent_details: parent_key_vrf_af_afi u_int32

# The system's own object records, reached by no table; "base record" marks the records
# the schema library owns (they read no instance variant).
base record ack_node: dwnld_bl u_int32; resp_bl u_int32; last_dwnld_timestamp u_int64; om_node -> om_node_oid
base record ack_timer_head: layerl array seq ack_node
base record acl_handle: name array chars[name_len]
base record acl_index: index u_int32
base record addr_length: length u_int32
base record consumer: cid u_int8; app_id u_int16
base record db_fields: flags flags db_flags
base record en_address: addr array u_int8[6]
base record if_name: name array chars[name_len]
base record layer_head: lkey -> layer_key; dwnld_marker array seq om_node_oid; layerl array seq om_node; scratch flags layer_scratch
base record layer_key: flag enum layer_flag; layer_idx u_int8; sub_layer_idx u_int8
base record dcx_handle_name: name array chars[name_len]
base record obj_id: index u_int32
base record om_node: obj_type enum obj_type; context u_int64; attr_flag flags om_node_flags; cl array seq om_node_oid; pl array seq om_node_oid
base record om_node_oid: cid u_int8
extension om_node_oid 1 v163_om_node_oid_ext:
base record rg_info_new: rg_id u_int32; name -> rg_name
base record rg_name: str array chars[len]
base record route: addr ip_address; table_id u_int32
base record route_map_name: str array chars[len]
base record stat_counters: byte_cnt u_int64; pkt_cnt u_int64
base record rsl_binidx: val u_int32; seq_num u_int32
base record rsl_luid: data array u_int8[16]
base record rsl_table_oid: oid_id array u_int8[16]; oid_src array u_int8[16]
base record time_second: time array chars[10]
base record vrf_info: table_id u_int32; vrf_id u_int16; name -> vrf_name
base record vrf_name: str array chars[len]
