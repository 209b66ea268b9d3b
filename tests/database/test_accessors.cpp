// The record accessors: every field of every record type is written through the store's
// C++ interface and read back through its generated C accessor.
#include <cstring>

#include "db_test.hpp"

using namespace zan::db;
using namespace dbt;
using zan::plat::Ip;
using zan::plat::Value;

namespace {

// A value for each field that no other field of the record shares.
int64_t sample(Word w, uint32_t id) {
    switch (w) {
        case Word::u_int8: return 100 + id;
        case Word::u_int16: return 60000 - id;
        case Word::int16: return -1000 - int64_t(id);
        case Word::u_int32: return 3000000000ll + id;
        case Word::int32: return -2000000 - int64_t(id);
        case Word::u_int64: return 0x500000000ll + id;
        case Word::rsl_boolean: return 1;
        default: return id;
    }
}

Ip sample_ip(uint32_t id) {
    Ip ip;
    ip.family = id % 2 ? 6 : 4;
    for (int i = 0; i < 16; ++i) ip.bytes[i] = uint8_t(id + i);
    return ip;
}

std::string sample_text(const TypeInfo& t, const FieldInfo& f) { return std::string(t.name) + "." + std::string(f.name); }

// Writes a sample into every attribute of a record.
void fill(Record& r) {
    const TypeInfo& t = type_of(r);
    for (const FieldInfo& f : t.fields) {
        if (f.role != FieldRole::attribute) continue;
        std::string n(f.name);
        switch (f.kind) {
            case FieldKind::leaf:
                if (f.word == Word::rsl_vstring) set_text(r, n, sample_text(t, f));
                else if (f.word == Word::ip_address) set_ip(r, n, sample_ip(f.id));
                else if (f.word == Word::rsl_mac_addr) set_mac(r, n, {{1, 2, 3, 4, 5, uint8_t(f.id)}});
                else if (f.word == Word::u_int64) set_u64(r, n, uint64_t(sample(f.word, f.id)));
                else set_int(r, n, sample(f.word, f.id));
                break;
            case FieldKind::enumeration: set_int(r, n, f.id % 3); break;
            case FieldKind::flags: set_int(r, n, 0b101); break;
            case FieldKind::fixed_array:
            case FieldKind::counted_array: set_array(r, n, {f.id, 7, 255}); break;
            case FieldKind::chars: set_text(r, n, std::string("c") + std::to_string(f.id)); break;
            case FieldKind::sequence: append(r, n), append(r, n); break;
            case FieldKind::nested: break;
        }
        set_state(r, n, uint8_t(f.id % 4));
    }
}

uint32_t low32(int64_t v) { return uint32_t(uint64_t(v)); }

int g_checked = 0;   // fields read back

// Reads every attribute back through the C accessors.
void check(const Record& r) {
    const TypeInfo& t = type_of(r);
    for (const FieldInfo& f : t.fields) {
        if (f.role != FieldRole::attribute) continue;
        std::string p = std::string(t.name) + "_" + std::string(f.name);
        SCOPED_TRACE(p);
        ++g_checked;
        uint32_t err = 0;
        switch (f.kind) {
            case FieldKind::leaf:
            case FieldKind::enumeration:
            case FieldKind::flags: {
                const void* h = fn<GetFn>(p + "_get")(k_ctx, k_id, &r, &err);
                ASSERT_EQ(h, handle(r, f.name));
                std::optional<Value> v = value_of(h);
                ASSERT_TRUE(v.has_value());
                if (f.word == Word::rsl_vstring) { EXPECT_EQ(std::get<std::string>(v->v), sample_text(t, f)); }
                if (f.word == Word::ip_address) { EXPECT_EQ(std::get<Ip>(v->v), sample_ip(f.id)); }
                if (f.word == Word::rsl_mac_addr) { EXPECT_EQ(std::get<zan::plat::Mac>(v->v).bytes[5], f.id); }
                if (is_integer(f.word) || f.word == Word::rsl_boolean) {
                    EXPECT_EQ(v->leaf, word_name(f.word));
                    EXPECT_EQ(fn<ValueFn>(p + "_get_value")(k_ctx, k_id, &r, &err), low32(sample(f.word, f.id)));
                }
                if (f.kind == FieldKind::enumeration) {
                    EXPECT_EQ(fn<ValueFn>(p + "_get_value")(k_ctx, k_id, &r, &err), f.id % 3);
                    EXPECT_EQ(fn<ValueFn>(std::string(f.type) + "_get_value")(k_ctx, k_id, h, &err), f.id % 3);
                }
                if (f.kind == FieldKind::flags) {
                    auto bit = fn<FlagFn>(std::string(f.type) + "_get_value");
                    EXPECT_EQ(bit(k_ctx, k_id, h, 0, &err), 1u);
                    EXPECT_EQ(bit(k_ctx, k_id, h, 1, &err), 0u);
                    EXPECT_EQ(bit(k_ctx, k_id, h, 2, &err), 1u);
                    EXPECT_EQ(bit(k_ctx, k_id, h, 40, &err), 0u);
                }
                EXPECT_EQ(fn<StateFn>(p + "_state_flag_get")(k_ctx, k_id, &r, &err), f.id % 4);
                break;
            }
            case FieldKind::nested: {
                const void* h = fn<GetFn>(p + "_get")(k_ctx, k_id, &r, &err);
                ASSERT_EQ(h, &nested(r, f.name));
                EXPECT_EQ(&type_of(*static_cast<const Record*>(h)), f.target);
                check(*static_cast<const Record*>(h));
                break;
            }
            case FieldKind::fixed_array:
            case FieldKind::counted_array: {
                auto get = fn<ElementFn>(p + "_get");
                EXPECT_EQ(std::get<uint64_t>(value_of(get(k_ctx, k_id, &r, 0, &err))->v), f.id);
                EXPECT_EQ(std::get<uint64_t>(value_of(get(k_ctx, k_id, &r, 2, &err))->v), 255u);
                EXPECT_EQ(fn<StateFn>(p + "_state_flag_whole_get")(k_ctx, k_id, &r, &err), f.id % 4);
                EXPECT_EQ(fn<ElementStateFn>(p + "_state_flag_get")(k_ctx, k_id, &r, 1, &err), 2u);
                if (f.kind == FieldKind::counted_array) {
                    EXPECT_EQ(fn<ValueFn>(std::string(t.name) + "_" + std::string(f.bound_field) + "_get_value")(
                                  k_ctx, k_id, &r, &err),
                              3u);
                }
                uint32_t range = 0;
                EXPECT_EQ(get(k_ctx, k_id, &r, f.kind == FieldKind::fixed_array ? f.bound : 3, &range), nullptr);
                EXPECT_EQ(range, 34u);
                break;
            }
            case FieldKind::chars: {
                std::string want = "c" + std::to_string(f.id);
                char buf[32];
                std::memset(buf, 'x', sizeof buf);
                fn<CharsFn>(p + "_get")(k_ctx, k_id, &r, buf, sizeof buf, &err);
                EXPECT_STREQ(buf, want.c_str());
                fn<CharsFn>(p + "_get")(k_ctx, k_id, &r, buf, 2, &err);   // room for one character
                EXPECT_STREQ(buf, want.substr(0, 1).c_str());
                if (!f.bound_field.empty()) {
                    EXPECT_EQ(fn<ValueFn>(std::string(t.name) + "_" + std::string(f.bound_field) + "_get_value")(
                                  k_ctx, k_id, &r, &err),
                              want.size());
                }
                break;
            }
            case FieldKind::sequence: {
                const void* a = fn<GetFn>(p + "_get_first")(k_ctx, k_id, &r, &err);
                auto next = fn<NextFn>(p + "_get_next");
                const void* b = next(k_ctx, k_id, &r, a, &err);
                EXPECT_EQ(a, &nested(r, std::string(f.name) + "[0]"));
                EXPECT_EQ(b, &nested(r, std::string(f.name) + "[1]"));
                EXPECT_EQ(next(k_ctx, k_id, &r, b, &err), nullptr);
                EXPECT_EQ(fn<StateFn>(p + "_state_flag_get")(k_ctx, k_id, &r, &err), f.id % 4);
                break;
            }
        }
        EXPECT_EQ(err, 0u);
    }
}

// Fills a record and everything nested in it.
void fill_all(Record& r) {
    fill(r);
    for (const FieldInfo& f : type_of(r).fields)
        if (f.kind == FieldKind::nested) fill_all(nested(r, f.name));
}

}  // namespace

using Accessors = StoreTest;

TEST_F(Accessors, EveryFieldOfEveryRecordReadsBackWhatTheStoreHolds) {
    int records = 0;
    for (const TypeInfo* t : types()) {
        if (t->category != Category::record) continue;
        SCOPED_TRACE(std::string(t->name));
        RecordPtr r = make_record(t->name);
        fill_all(*r);
        check(*r);
        ++records;
        if (HasFatalFailure()) return;
    }
    EXPECT_EQ(records, 1012);
    EXPECT_GE(g_checked, 2319);   // every field once, nested ones again under each user
}

TEST_F(Accessors, FreshRecordsHoldZerosAndStateTwo) {
    RecordPtr r = make_record("ntp_peer_v6addr_cp_0_cp");
    uint32_t err = 0;
    const void* h = fn<GetFn>("ntp_peer_v6addr_cp_0_cp_ntp_peer_v6addr_47_get")(k_ctx, k_id, r.get(), &err);
    EXPECT_EQ(std::get<std::string>(value_of(h)->v), "");
    EXPECT_EQ(fn<ValueFn>("ntp_peer_v6addr_cp_0_cp_ntp_peer_v6addr_46_get_value")(k_ctx, k_id, r.get(), &err), 0u);
    EXPECT_EQ(fn<StateFn>("ntp_peer_v6addr_cp_0_cp_ntp_peer_v6addr_state_flag_get")(k_ctx, k_id, r.get(), &err), 2u);
    RecordPtr v = make_record("vlan_group");
    EXPECT_EQ(fn<ValueFn>("vlan_group_num_vlans_get_value")(k_ctx, k_id, v.get(), &err), 0u);
    EXPECT_EQ(err, 0u);
}

TEST_F(Accessors, ACountBelowTheStoredElementsBoundsNothingButTheCount) {
    RecordPtr r = make_record("vlan_group");
    set_array(*r, "vlans", {10, 20, 30});
    set_int(*r, "num_vlans", 1);
    set_element_state(*r, "vlans", 2, 0);
    uint32_t err = 0;
    EXPECT_EQ(fn<ValueFn>("vlan_group_num_vlans_get_value")(k_ctx, k_id, r.get(), &err), 1u);
    EXPECT_EQ(value_of(fn<ElementFn>("vlan_group_vlans_get")(k_ctx, k_id, r.get(), 2, &err))->leaf, "u_int16");
    EXPECT_EQ(fn<ElementStateFn>("vlan_group_vlans_state_flag_get")(k_ctx, k_id, r.get(), 2, &err), 0u);
    EXPECT_EQ(err, 0u);
}

TEST_F(Accessors, AHandleOfAnotherTypeIsRefused) {
    RecordPtr a = make_record("ntp_maxdist_eol");
    RecordPtr b = make_record("ntp_source_eol");
    auto get = fn<GetFn>("ntp_maxdist_eol_singleton_id_get");
    uint32_t err = 0;
    EXPECT_NE(get(k_ctx, k_id, a.get(), &err), nullptr);
    EXPECT_EQ(get(k_ctx, k_id, b.get(), &err), nullptr);
    EXPECT_EQ(err, 22u);
    err = 0;
    EXPECT_EQ(get(k_ctx, k_id, nullptr, &err), nullptr);
    EXPECT_EQ(err, 22u);
    err = 0;
    const void* value = get(k_ctx, k_id, a.get(), &err);
    EXPECT_EQ(get(k_ctx, k_id, value, &err), nullptr);   // a value is no record
    EXPECT_EQ(fn<ValueFn>("zan_cfg_union_get_value")(k_ctx, k_id, value, &err), 0u);   // nor an enumeration
    EXPECT_EQ(bad_handles_since(), 4);
    RecordPtr seq = make_record("om_node");
    Record& first = append(*seq, "cl");
    RecordPtr other = make_record("om_node_oid");
    err = 0;
    EXPECT_EQ(fn<NextFn>("om_node_cl_get_next")(k_ctx, k_id, seq.get(), other.get(), &err), nullptr);
    EXPECT_EQ(err, 22u);
    err = 0;
    EXPECT_EQ(fn<NextFn>("om_node_pl_get_next")(k_ctx, k_id, seq.get(), &first, &err), nullptr);   // cl's, not pl's
    EXPECT_EQ(err, 22u);
}

TEST_F(Accessors, AnInjectedFaultYieldsNothingWithEioAndKeepsAnEarlierError) {
    RecordPtr r = make_record("ntp_peer_eol");
    set_text(*r, "peer_server_key", "p1");
    auto get = fn<GetFn>("ntp_peer_eol_peer_server_key_get");
    auto nested_get = fn<GetFn>("ntp_peer_eol_compound_0_get");
    uint32_t err = 0;
    zan::plat::fault_fail_nth("accessor", 2);
    EXPECT_NE(get(k_ctx, k_id, r.get(), &err), nullptr);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(nested_get(k_ctx, k_id, r.get(), &err), nullptr);
    EXPECT_EQ(err, 5u);
    err = 0;
    EXPECT_NE(nested_get(k_ctx, k_id, r.get(), &err), nullptr);   // the fault fired once
    zan::plat::fault_fail_always("accessor", true);
    err = 12;
    EXPECT_EQ(get(k_ctx, k_id, r.get(), &err), nullptr);
    EXPECT_EQ(err, 12u);
    err = 0;
    EXPECT_EQ(fn<StateFn>("ntp_peer_eol_peer_server_key_state_flag_get")(k_ctx, k_id, r.get(), &err), 0u);
    EXPECT_EQ(err, 5u);
    zan::plat::fault_fail_always("accessor", false);
    // A set error word does not stop a working accessor.
    err = 9;
    EXPECT_NE(get(k_ctx, k_id, r.get(), &err), nullptr);
    EXPECT_EQ(err, 9u);
}

TEST_F(Accessors, VariantsOfRecordsAndValues) {
    RecordPtr r = make_record("ntp_peer_cp");
    EXPECT_EQ(rsl_get_instance_variant(r.get(), 1, 0), latest_variant());
    uint32_t err = 0;
    const void* disc = fn<GetFn>("ntp_peer_cp_descriminator_get")(k_ctx, k_id, r.get(), &err);
    EXPECT_EQ(rsl_get_instance_variant(disc, 1, 0), latest_variant());
    set_variant(*r, 1);
    EXPECT_EQ(rsl_get_instance_variant(disc, 1, 0), 1);       // a value answers its record's
    const void* arm = fn<GetFn>("ntp_peer_cp_compound_66_get")(k_ctx, k_id, r.get(), &err);
    EXPECT_EQ(rsl_get_instance_variant(arm, 1, 0), latest_variant());   // nested records keep theirs
    set_variant(*r, 0x1ff, true);                              // kept whole: low byte -1
    EXPECT_EQ(rsl_get_instance_variant(arm, 1, 0), 0x1ff);
    set_value_variant(*r, "descriminator", -3);
    EXPECT_EQ(rsl_get_instance_variant(disc, 1, 0), -3);
    EXPECT_EQ(rsl_get_instance_variant(nullptr, 1, 0), 0);

    EXPECT_EQ(zan_config_defaults_default_get_variant(k_ctx), 0);
    set_default_variant(k_ctx, -1);
    EXPECT_EQ(zan_config_defaults_default_get_variant(k_ctx), -1);
    EXPECT_EQ(zan_config_defaults_default_get_variant(nullptr), 0);
}
