// The frame as an engine meets it: registration, the five arrays, the two lookups, and
// what the library file exports. (The top dispatcher is test_resolve's.)
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "harness.hpp"
#include "zan/database.hpp"

using namespace fe_test;

namespace {

// A name of the process (the platform's database), not of the front end.
const void* process_symbol(const std::string& name) {
    const void* p = dlsym(RTLD_DEFAULT, name.c_str());
    EXPECT_NE(p, nullptr) << "the platform has no " << name;
    return p;
}

std::string type_symbol(const TypeRow& t) {
    const char* prefix = t.category == "enum" ? "enum_" : t.category == "flags" ? "flag_" : "type_";
    return prefix + t.name + "_name";
}

}  // namespace

TEST(Registration, HandsOverTheFrameInTwoCallsUnderOneContextName) {
    ASSERT_EQ(init(), 0);   // the second call's answer (the platform's 0)
    const auto& r = registered();
    EXPECT_EQ(r.fe_vector_calls, 1);
    EXPECT_EQ(r.gx_vector_calls, 1);
    EXPECT_EQ(r.context, ZAN_CONTEXT_NAME);
    ASSERT_NE(r.context_ptr, nullptr);
    EXPECT_EQ(r.context_ptr, r.gx_context_ptr) << "both calls must pass the same string";
    // The context string is the library's own constant.
    Dl_info name_in{}, init_in{};
    ASSERT_NE(dladdr(r.context_ptr, &name_in), 0);
    ASSERT_NE(dladdr(symbol(ZAN_FE_INIT_SYMBOL), &init_in), 0);
    EXPECT_EQ(name_in.dli_fbase, init_in.dli_fbase);

    EXPECT_EQ(reinterpret_cast<void*>(r.dispatch),
              symbol("fe_zan_config_db_zan_config_db_context_path_query_dispatch"));
    EXPECT_EQ(reinterpret_cast<void*>(r.table_lookup), symbol("zan_config_db_table_lookup"));
    EXPECT_EQ(reinterpret_cast<void*>(r.type_lookup), symbol("zan_config_db_type_lookup"));
    EXPECT_EQ(reinterpret_cast<void*>(r.type_mrst_lookup), reinterpret_cast<void*>(&zan_config_db_type_dispatch_type_mrst_lookup));
    EXPECT_EQ(reinterpret_cast<void*>(r.table_mrst_lookup), reinterpret_cast<void*>(&zan_config_db_table_mrst_lookup));
    EXPECT_EQ(r.type_dispatch_type_lut, process_symbol("zan_config_db_type_dispatch_type_lut"));
    EXPECT_EQ(r.type_field_lut, symbol("zan_config_db_field_dispatch_type_field_lut"));

    EXPECT_EQ(r.gx_dispatch, symbol("zan_config_db_fe_gx_dispatch_vft"));
    EXPECT_EQ(r.gx_type_dispatch, symbol("zan_config_db_fe_gx_type_dispatch_vft"));
    EXPECT_EQ(r.gx_reserved, nullptr);
    EXPECT_EQ(r.type_gx_lut, symbol("zan_config_db_type_gx_lut"));
}

TEST(Registration, ASecondInitRegistersAgainAndAnswersTheSecondCall) {
    ASSERT_EQ(init(), 0);
    auto fe_init = fn<zan_fe_init_fn>(ZAN_FE_INIT_SYMBOL);
    EXPECT_EQ(fe_init(), 0);
    EXPECT_EQ(registered().fe_vector_calls, 2);
    EXPECT_EQ(registered().gx_vector_calls, 2);

    // A failing second registration is the initialiser's answer; the first's is not looked at.
    zan::plat::fault_fail_nth("arbor_register_fe_gx_vectors", 1);
    EXPECT_EQ(fe_init(), -1);
    zan::plat::fault_clear_all();
    EXPECT_EQ(registered().fe_vector_calls, 3);
}

class Arrays : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(init(), 0);
        tables = static_cast<const zan_gx_table_row*>(registered().gx_dispatch);
        table_vfts = static_cast<const zan_table_vft_row*>(symbol("zan_config_db_table_dispatch_fe_table_vft"));
        type_fields = static_cast<const zan_type_field_row*>(registered().type_field_lut);
        type_vlist = static_cast<const zan_gx_type_vlist_row*>(registered().gx_type_dispatch);
        type_props = static_cast<const zan_gx_type_props_row*>(registered().type_gx_lut);
    }
    const zan_gx_table_row* tables = nullptr;
    const zan_table_vft_row* table_vfts = nullptr;
    const zan_type_field_row* type_fields = nullptr;
    const zan_gx_type_vlist_row* type_vlist = nullptr;
    const zan_gx_type_props_row* type_props = nullptr;
};

TEST_F(Arrays, HaveTheRowCountsOfTheCatalogueAndTheExportedSizes) {
    ASSERT_EQ(expect().tables.size(), size_t(ZAN_TABLE_ROWS));
    ASSERT_EQ(expect().types.size(), size_t(ZAN_TYPE_ROWS));
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    std::map<std::string, uint64_t> sizes;
    for (const ElfSymbol& s : elf.dynsym) sizes[s.name] = s.size;
    EXPECT_EQ(sizes["zan_config_db_table_dispatch_fe_table_vft"], ZAN_TABLE_ROWS * sizeof(zan_table_vft_row));
    EXPECT_EQ(sizes["zan_config_db_fe_gx_dispatch_vft"], ZAN_TABLE_ROWS * sizeof(zan_gx_table_row));
    EXPECT_EQ(sizes["zan_config_db_field_dispatch_type_field_lut"], ZAN_TYPE_ROWS * sizeof(zan_type_field_row));
    EXPECT_EQ(sizes["zan_config_db_fe_gx_type_dispatch_vft"], ZAN_TYPE_ROWS * sizeof(zan_gx_type_vlist_row));
    EXPECT_EQ(sizes["zan_config_db_type_gx_lut"], ZAN_TYPE_ROWS * sizeof(zan_gx_type_props_row));
}

TEST_F(Arrays, TableRowsHoldTheDatabaseNamesInItsNumbering) {
    int named = 0;
    for (const TableRow& t : expect().tables) {
        SCOPED_TRACE(t.row);
        const zan_gx_table_row& g = tables[t.row];
        EXPECT_EQ(g.kind, uint32_t(ZAN_KIND_TABLE));
        EXPECT_EQ(g.to_properties == nullptr, t.name.empty());
        if (t.name.empty()) {
            EXPECT_EQ(g.to_vlist, nullptr);
            EXPECT_EQ(g.to_nvlist, nullptr);
            EXPECT_EQ(g.table_name, nullptr);
            EXPECT_EQ(g.columns_to_ntlist, nullptr);
            EXPECT_EQ(table_vfts[t.row].vft, nullptr);
            continue;
        }
        ++named;
        EXPECT_EQ(static_cast<const void*>(g.table_name), process_symbol("table_" + t.name + "_name"));
        EXPECT_STREQ(g.table_name, t.name.c_str());
        EXPECT_EQ(table_vfts[t.row].vft, process_symbol(t.name + "_table_field_vft"));
        // The value operations are the table's own, which the library keeps to itself.
        EXPECT_EQ(reinterpret_cast<void*>(g.to_vlist), internal(t.name + "_to_vlist"));
        EXPECT_EQ(reinterpret_cast<void*>(g.to_nvlist), internal(t.name + "_to_nvlist"));
        EXPECT_NE(g.to_vlist, nullptr);
        EXPECT_NE(g.to_nvlist, nullptr);
        EXPECT_EQ(reinterpret_cast<void*>(g.columns_to_ntlist), symbol((t.name + "_table_columns_to_ntlist").c_str()));
        EXPECT_EQ(zan_config_db_table_mrst_lookup(t.name.c_str()), t.row) << t.name;
    }
    // Which rows are empty and the names of the first ones are the catalogue's figures:
    // Numbering.TableRowsRoundTripWithTwoEmptyRows (tests/database).
    EXPECT_EQ(named, 329);
}

TEST_F(Arrays, TypeRowsHoldNamesAndKindsByCategoryInSlotOrder) {
    std::map<std::pair<uint32_t, uint32_t>, int> census;   // (property kind, value-list kind) -> rows
    for (const TypeRow& t : expect().types) {
        SCOPED_TRACE(t.row);
        const auto& p = type_props[t.row];
        const auto& v = type_vlist[t.row];
        EXPECT_EQ(p.kind, t.kind_props) << t.name;
        EXPECT_EQ(v.kind, t.kind_vlist) << t.name;
        EXPECT_EQ(p.to_properties == nullptr, t.name.empty()) << t.name;
        if (t.category == "library" || t.name == "rsl_boolean") {
            EXPECT_EQ(reinterpret_cast<void*>(p.to_properties), process_symbol(t.name + "_to_properties_perf"))
                << t.name;
        }
        EXPECT_EQ(v.to_vlist_all == nullptr, t.name.empty()) << t.name;
        ++census[{p.kind, v.kind}];
        if (t.name.empty()) {
            EXPECT_EQ(p.name, nullptr);
            EXPECT_EQ(v.name, nullptr);
            EXPECT_EQ(type_fields[t.row].vft, nullptr);
            continue;
        }
        const void* name = process_symbol(type_symbol(t));
        EXPECT_EQ(static_cast<const void*>(p.name), name);
        EXPECT_EQ(static_cast<const void*>(v.name), name);
        EXPECT_STREQ(p.name, t.name.c_str());
        EXPECT_EQ(type_fields[t.row].vft, process_symbol("zan_" + t.name + "_field_vft"));
        EXPECT_EQ(zan_config_db_type_dispatch_type_mrst_lookup(t.name.c_str()), t.row) << t.name;
    }
    // The classes of the type rows: records 985, wide base types 43, scalars 12, enums 14,
    // flag sets 4, and 71 empty rows, which count as class 1.
    using Census = std::map<std::pair<uint32_t, uint32_t>, int>;
    EXPECT_EQ(census, (Census{{{1, 1}, 985 + 71}, {{2, 1}, 43}, {{4, 1}, 12}, {{3, 3}, 14}, {{4, 4}, 4}}));
    // Where the empty rows lie and the first and last names are the catalogue's figures:
    // Numbering.TypeSlotsRoundTripAndMatchTheTypeTable (tests/database) and the reader's
    // ProductCatalogue.test_type_slots (tests/gen).
}

TEST_F(Arrays, AreReadOnlyData) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    for (const char* name : {"zan_config_db_table_dispatch_fe_table_vft", "zan_config_db_fe_gx_dispatch_vft",
                             "zan_config_db_field_dispatch_type_field_lut", "zan_config_db_fe_gx_type_dispatch_vft",
                             "zan_config_db_type_gx_lut"}) {
        auto it = std::find_if(elf.dynsym.begin(), elf.dynsym.end(), [&](const ElfSymbol& s) { return s.name == name; });
        ASSERT_NE(it, elf.dynsym.end()) << name;
        EXPECT_EQ(it->section, ".data.rel.ro") << name;
        EXPECT_EQ(it->type, unsigned(STT_OBJECT)) << name;
    }
}

TEST(Lookups, ForwardToTheDatabaseNumbering) {
    ASSERT_EQ(init(), 0);
    const auto& r = registered();
    auto table_vfts = static_cast<const zan_table_vft_row*>(symbol("zan_config_db_table_dispatch_fe_table_vft"));
    auto type_fields = static_cast<const zan_type_field_row*>(r.type_field_lut);

    // Row 0 is a row like any other: only a negative number means not found.
    ASSERT_EQ(zan_config_db_table_mrst_lookup("tbl_cfg_crypto_ca_trust_point_primary_eol"), 0);
    EXPECT_EQ(r.table_lookup("tbl_cfg_crypto_ca_trust_point_primary_eol"), table_vfts[0].vft);
    EXPECT_NE(table_vfts[0].vft, nullptr);
    ASSERT_EQ(zan_config_db_type_dispatch_type_mrst_lookup("T_ci_ipv6_address_prefix_cp"), 0);
    EXPECT_EQ(r.type_lookup("T_ci_ipv6_address_prefix_cp"), type_fields[0].vft);
    EXPECT_NE(type_fields[0].vft, nullptr);

    EXPECT_EQ(r.table_lookup("tbl_ntp_peer_eol"), process_symbol("tbl_ntp_peer_eol_table_field_vft"));
    EXPECT_EQ(r.type_lookup("vrf_info"), process_symbol("zan_vrf_info_field_vft"));
    EXPECT_EQ(r.type_lookup("zan_cfg_union"), process_symbol("zan_zan_cfg_union_field_vft"));

    for (const char* unknown : {"", "tbl_no_such_table", "tbl_ntp_peer", "ntp_peer_eol"})
        EXPECT_EQ(r.table_lookup(unknown), nullptr) << unknown;
    for (const char* unknown : {"", "no_such_type", "tbl_ntp_peer_eol", "type_vrf_info_name"})
        EXPECT_EQ(r.type_lookup(unknown), nullptr) << unknown;
    // Second entrances have no row of their own.
    EXPECT_EQ(r.table_lookup("tbl_conf_ip_nacl_ext_eol_final_b"), nullptr);
    EXPECT_EQ(r.table_lookup("tbl_ci_vrf_mode_rt_eol_b"), nullptr);
}

TEST(Lookups, ANameOfAnEmptyRowGivesNull) {
    ASSERT_EQ(init(), 0);
    const auto& r = registered();
    // The database keeps names for the rows this context does not use.
    for (int row : {15, 269}) {
        const std::string name = zan::db::unused_table_name(row);
        ASSERT_EQ(zan_config_db_table_mrst_lookup(name.c_str()), row) << name;
        EXPECT_EQ(r.table_lookup(name.c_str()), nullptr) << name;
    }
    for (int slot : {26, 411, 1009}) {
        const std::string name = zan::db::unused_type_name(slot);
        ASSERT_EQ(zan_config_db_type_dispatch_type_mrst_lookup(name.c_str()), slot) << name;
        EXPECT_EQ(r.type_lookup(name.c_str()), nullptr) << name;
    }
}

TEST(LibraryFile, ExportsExactlyTheInterface) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    std::set<std::string> exported;
    for (const ElfSymbol& s : elf.dynsym)
        if (!s.section.empty()) exported.insert(s.name);
    const std::set<std::string> wanted(expect().exports.begin(), expect().exports.end());
    ASSERT_EQ(wanted.size(), 9u + 662u + 23u + 1012u + 329u);
    std::vector<std::string> extra, missing;
    std::set_difference(exported.begin(), exported.end(), wanted.begin(), wanted.end(), std::back_inserter(extra));
    std::set_difference(wanted.begin(), wanted.end(), exported.begin(), exported.end(), std::back_inserter(missing));
    EXPECT_EQ(extra, std::vector<std::string>{}) << "exported beyond the interface";
    EXPECT_EQ(missing, std::vector<std::string>{}) << "not exported";
    for (const ElfSymbol& s : elf.dynsym) {
        if (!s.section.empty()) {
            EXPECT_EQ(s.bind, unsigned(STB_GLOBAL)) << s.name;
        }
    }
}

TEST(LibraryFile, NeedsNoLibraryOfOurs) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    for (const std::string& n : elf.needed) EXPECT_EQ(n.find("zan"), std::string::npos) << n;
    // The platform's names stay undefined until load.
    bool imports_registration = false;
    for (const ElfSymbol& s : elf.dynsym)
        if (s.name == "arbor_register_fe_vectors") imports_registration = s.section.empty();
    EXPECT_TRUE(imports_registration);
}

// No heap function and no C++ library function that may allocate (strings, vectors).
TEST(LibraryFile, TakesNoMemoryBehindTheAllocatorsBack) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    const std::set<std::string> heap = {"malloc", "calloc", "realloc", "free", "strdup", "strndup",
                                        "posix_memalign", "aligned_alloc", "_Znwm", "_Znam", "_ZnwmRKSt9nothrow_t",
                                        "_ZnamRKSt9nothrow_t", "_ZnwmSt11align_val_t", "_ZdlPv", "_ZdaPv", "_ZdlPvm"};
    for (const ElfSymbol& s : elf.dynsym) {
        EXPECT_EQ(heap.count(s.name), 0u) << s.name;
        for (const char* prefix : {"_ZNSt7__cxx11", "_ZNSs", "_ZNSt6vector"}) EXPECT_NE(s.name.rfind(prefix, 0), 0u) << s.name;
    }
}

TEST(LibraryFile, HoldsTheAllocatorTypeNamesInside) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    const std::map<std::string, std::string> names = {{"__TY_tinfon_BYTE", "BYTE"},
                                                      {"__TY_tinfon_BYTE_PTR", "BYTE*"},
                                                      {"__TY_tinfon_gx_do_value_PTR", "gx_do_value*"},
                                                      {"__TY_tinfon_int32", "int32"},
                                                      {"__TY_tinfon_default", "default"}};
    std::set<std::string> seen;
    for (const ElfSymbol& s : elf.symtab) {
        if (names.count(s.name)) {
            seen.insert(s.name);
            EXPECT_EQ(s.type, unsigned(STT_OBJECT)) << s.name;
            EXPECT_EQ(elf.bytes_at(s.value, s.size), names.at(s.name) + '\0') << s.name;
        }
        if (s.name.rfind("__TY_tinfot_ptr_", 0) == 0) {
            seen.insert(s.name);
            EXPECT_EQ(s.type, unsigned(STT_TLS)) << s.name;      // one cell per thread
            EXPECT_EQ(s.size, 8u) << s.name;
            EXPECT_EQ(s.section, ".tbss") << s.name;             // starts at zero
        }
    }
    EXPECT_EQ(seen.size(), 10u);
    for (const ElfSymbol& s : elf.dynsym) EXPECT_NE(s.name.rfind("__TY_", 0), 0u) << s.name << " is exported";
}

// The path-query LUIDs stand as one read-only block, row n the n-th traverser's.
TEST(LibraryFile, HoldsThePathQueryLuidsInOneReadOnlyBlockInTraverserOrder) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    std::vector<const ElfSymbol*> blocks;
    for (const ElfSymbol& s : elf.symtab)
        if (s.name.find("k_pq_luids") != std::string::npos) blocks.push_back(&s);
    ASSERT_EQ(blocks.size(), 1u);
    const auto positions = zan::db::positions();
    ASSERT_EQ(blocks[0]->size, positions.size() * 16);
    EXPECT_EQ(blocks[0]->section, ".rodata");
    std::string want;
    for (const zan::db::TableInfo* p : positions) want.append(reinterpret_cast<const char*>(p->pq), 16);
    EXPECT_EQ(elf.bytes_at(blocks[0]->value, blocks[0]->size), want);
}

// Nothing runs at load: every constant (the trace units' descriptors among them) is data
// the loader maps, not written by a constructor.
TEST(LibraryFile, RunsNoConstructorAtLoad) {
    Elf elf = read_elf(ZAN_FE_LIBRARY);
    for (const ElfSymbol& s : elf.symtab) EXPECT_EQ(s.name.rfind("_GLOBAL__sub_I", 0), std::string::npos) << s.name;
}
