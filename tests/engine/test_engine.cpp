// The reference engine against the real front-end library: loading, what registration
// handed over, the table arrays and column descriptions reached through them. (The columns
// of every table, their codes and words, are the tool's tests', ToolColumns, which go
// through Engine::columns and type_code_word.)
#include <gtest/gtest.h>

#include <string>

#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "shared_engine.hpp"

namespace {

using zan::engine::Engine;

TEST(EngineLoad, RegistersBothVectorSetsForTheContext) {
    ASSERT_TRUE(engine().loaded());
    const auto& reg = engine().registration();
    EXPECT_EQ(reg.context, "zan_config_db_context");
    EXPECT_GE(reg.fe_vector_calls, 1);
    EXPECT_GE(reg.gx_vector_calls, 1);
    EXPECT_EQ(reg.context_ptr, reg.gx_context_ptr);
    EXPECT_NE(reg.dispatch, nullptr);
    EXPECT_NE(reg.table_lookup, nullptr);
    EXPECT_NE(reg.type_lookup, nullptr);
    EXPECT_NE(reg.type_field_lut, nullptr);
    EXPECT_EQ(reg.gx_reserved, nullptr);
    EXPECT_EQ(engine().dispatcher(), reg.dispatch);
}

TEST(EngineLoad, FailuresAnswerOneLineNamingTheCause) {
    Engine e;
    auto err = e.load("/nonexistent/libzanfe.so");
    ASSERT_TRUE(err);
    EXPECT_NE(err->find("/nonexistent/libzanfe.so"), std::string::npos) << *err;
    EXPECT_EQ(err->find('\n'), std::string::npos);
    EXPECT_FALSE(e.loaded());
    EXPECT_TRUE(e.table_rows().empty());
    EXPECT_FALSE(e.find_table("tbl_ntp_peer_eol"));

    err = e.load(ZAN_PLATFORM_LIBRARY);
    ASSERT_TRUE(err);
    EXPECT_NE(err->find("zan_config_db_data_model_fe_init"), std::string::npos) << *err;
    EXPECT_FALSE(e.loaded());

    ASSERT_TRUE(engine().loaded());
    err = engine().load(Engine::default_library_path());
    ASSERT_TRUE(err) << "a second load into the same engine";
}

TEST(EngineLoad, FailedRegistrationIsALoadFailure) {
    ASSERT_TRUE(engine().loaded());   // the library is in the process already; init runs again
    zan::plat::fault_fail_nth("arbor_register_fe_gx_vectors", 1);
    Engine e;
    auto err = e.load(Engine::default_library_path());
    zan::plat::fault_clear_all();
    ASSERT_TRUE(err);
    EXPECT_NE(err->find("-1"), std::string::npos) << *err;
    EXPECT_FALSE(e.loaded());
}

TEST(EngineLoad, LibraryPathComesFromTheEnvironmentFirst) {
    const std::string built = Engine::default_library_path();
    setenv("ZANFE_LIBRARY", "/elsewhere/libzanfe.so", 1);
    EXPECT_EQ(Engine::default_library_path(), "/elsewhere/libzanfe.so");
    unsetenv("ZANFE_LIBRARY");
    EXPECT_EQ(Engine::default_library_path(), built);
}

// Row numbers and names of all 331 rows: ToolTables.ListsEveryRowWithPathAndKey, which
// lists them through table_rows().
TEST(EngineTables, RowsReadTheRegisteredArrays) {
    const auto rows = engine().table_rows();
    ASSERT_EQ(rows.size(), 331u);
    for (const auto& r : rows) {
        EXPECT_EQ(r.kind(), 5u) << "row " << r.row;
        EXPECT_EQ(r.vft == nullptr, r.empty()) << "row " << r.row;
        EXPECT_EQ(r.gx->columns_to_ntlist == nullptr, r.empty()) << "row " << r.row;
    }
}

TEST(EngineTables, FindByNameRoundTripsThroughTheRegisteredNumbering) {
    for (const auto& r : engine().table_rows()) {
        if (r.empty()) continue;
        auto found = engine().find_table(r.name());
        ASSERT_TRUE(found) << r.name();
        EXPECT_EQ(found->row, r.row);
        EXPECT_EQ(found->gx, r.gx);
    }
    for (const char* name : {"tbl_nope", "", "tbl_ci_vrf_mode_rt_eol_b", "tbl_conf_ip_nacl_ext_eol_final_b",
                             "tbl_ntp_peer_eo", "tbl_ntp_peer_eol_"})
        EXPECT_FALSE(engine().find_table(name)) << name;
    EXPECT_TRUE(engine().table_row(-1).empty());
    EXPECT_TRUE(engine().table_row(331).empty());
}

TEST(EngineTypes, FindByNameRoundTripsAndRefusesOtherNames) {
    size_t named = 0;
    std::string some;
    for (int i = 0; i < ZAN_TYPE_ROWS; ++i) {
        const auto r = engine().type_row(i);
        ASSERT_EQ(r.row, i);
        if (r.empty()) continue;
        ++named;
        some = std::string(r.name());
        auto found = engine().find_type(r.name());
        ASSERT_TRUE(found) << r.name();
        EXPECT_EQ(found->row, i);
        EXPECT_EQ(found->props, r.props);
        EXPECT_EQ(found->vlist, r.vlist);
        EXPECT_EQ(found->vft, r.vft);
    }
    ASSERT_GT(named, 0u);
    for (const std::string& name : {std::string("zan_nope"), std::string(), some + "_", some.substr(0, some.size() - 1)})
        EXPECT_FALSE(engine().find_type(name)) << name;
    EXPECT_TRUE(engine().type_row(-1).empty());
    EXPECT_TRUE(engine().type_row(ZAN_TYPE_ROWS).empty());
}

TEST(EngineColumns, EmptyRowAndFailingListAreReportedNotHidden) {
    auto empty = engine().columns(engine().table_row(15));
    EXPECT_EQ(empty.status, -1);
    EXPECT_TRUE(empty.columns.empty());

    auto peer = engine().find_table("tbl_ntp_peer_eol");
    ASSERT_TRUE(peer);
    zan::plat::fault_fail_nth("arbor_fe_ntlist_add", 3);
    auto res = engine().columns(*peer);
    zan::plat::fault_clear_all();
    EXPECT_EQ(res.status, -1);
    EXPECT_EQ(res.err, 5u);
    EXPECT_EQ(res.columns.size(), 2u) << "what was added before the failure stays";
    EXPECT_FALSE(res.ok());
}

}  // namespace
