// Traversal objects, requests, column lists and registration.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "leak_check.hpp"

using namespace zan::plat;

namespace {

rsl_ctx_t const ctx = nullptr;

std::array<uint8_t, 16> luid(uint8_t seed) {
    std::array<uint8_t, 16> l{};
    for (uint8_t i = 0; i < 16; ++i) l[i] = uint8_t(seed + i);
    return l;
}

}  // namespace

class Traversal : public LeakChecked {};

TEST_F(Traversal, PathStepAsAChildTraverserBuildsIt) {
    arbor_params_t* params = params_new();
    uint32_t err = 0;
    arbor_traverse* t = arbor_traverse_create(ctx, 0);
    ASSERT_NE(t, nullptr);
    auto pq = luid(0x10), table = luid(0x20), parent = luid(0x30);
    arbor_traverse_pq_luid_set_mem(ctx, 0, t, pq.data(), 16, &err);
    arbor_traverse_pq_set_value(ctx, 0, t, 0, &err);
    arbor_id_type_luid_set_mem(ctx, 0, arbor_traverse_deref_table_get(ctx, 0, t, &err), table.data(), 16, &err);

    arbor_id* id = arbor_id_create(ctx, 0);
    arbor_id_type_luid_set_mem(ctx, 0, id, parent.data(), 16, &err);
    arbor_id_field_id_set_value(ctx, 0, id, 7, &err);
    arbor_traverse_arbor_id_vec_set(ctx, 0, t, 0, id, &err);
    arbor_id_destroy(ctx, 0, id);   // the vector keeps its own copy
    arbor_params_t_set_last(ctx, 0, params, t, &err);
    EXPECT_EQ(err, 0u);

    auto views = params_traversals(params);
    ASSERT_EQ(views.size(), 1u);
    const TraversalView& v = views[0];
    EXPECT_TRUE(v.pq_set);
    EXPECT_EQ(v.pq, 0u);
    EXPECT_EQ(v.pq_luid, pq);
    EXPECT_TRUE(std::equal(table.begin(), table.end(), v.deref_table.type_luid));
    ASSERT_TRUE(v.id_vec[0]);
    EXPECT_TRUE(std::equal(parent.begin(), parent.end(), v.id_vec[0]->type_luid));
    EXPECT_EQ(v.id_vec[0]->field_id, 7u);
    EXPECT_FALSE(v.id_vec[1]);
    EXPECT_FALSE(v.key_luid);
    params_free(params);   // destroys the traversal it took over
}

TEST_F(Traversal, QueryStepCopiesTheKeyData) {
    arbor_params_t* params = params_new();
    uint32_t err = 0;
    arbor_traverse* t = arbor_traverse_create(ctx, 0);
    arbor_params_t_set_last(ctx, 0, params, t, &err);
    auto key = luid(0x40);
    char* data = static_cast<char*>(std::malloc(4));
    std::memcpy(data, "abc", 4);
    arbor_traverse_key_luid_set_mem(ctx, 0, t, key.data(), 16, &err);
    arbor_traverse_key_field_id_set_value(ctx, 0, t, 3, &err);
    arbor_traverse_key_data_set_mem(ctx, 0, t, data, 4, &err);
    std::memset(data, 'X', 4);   // freed by the caller right after
    std::free(data);
    arbor_traverse_pq_set_value(ctx, 0, t, 1, &err);
    EXPECT_EQ(err, 0u);
    TraversalView v = params_traversals(params).at(0);
    EXPECT_EQ(v.pq, 1u);
    EXPECT_EQ(v.key_luid, key);
    EXPECT_EQ(v.key_field_id, 3u);
    EXPECT_EQ(v.key_data, (std::vector<uint8_t>{'a', 'b', 'c', 0}));
    params_free(params);
}

TEST_F(Traversal, SettersNeverClearOrOverwriteAPendingError) {
    arbor_traverse* t = arbor_traverse_create(ctx, 0);
    arbor_id* id = arbor_id_create(ctx, 0);
    auto l = luid(1);
    uint32_t err = 0;
    arbor_traverse_pq_luid_set_mem(ctx, 0, t, l.data(), 15, &err);   // wrong length
    EXPECT_EQ(err, uint32_t(EINVAL));
    err = 2;
    arbor_traverse_pq_set_value(ctx, 0, t, 1, &err);
    arbor_traverse_pq_luid_set_mem(ctx, 0, t, l.data(), 16, &err);
    arbor_traverse_key_luid_set_mem(ctx, 0, t, l.data(), 16, &err);
    arbor_traverse_key_field_id_set_value(ctx, 0, t, 1, &err);
    arbor_traverse_key_data_set_mem(ctx, 0, t, "x", 1, &err);
    arbor_traverse_arbor_id_vec_set(ctx, 0, t, 0, id, &err);
    arbor_traverse_arbor_id_vec_set(ctx, 0, t, 5, id, &err);   // a bad index does not replace the word
    arbor_id_type_luid_set_mem(ctx, 0, id, l.data(), 16, &err);
    arbor_id_field_id_set_value(ctx, 0, id, 1, &err);
    EXPECT_EQ(err, 2u);
    EXPECT_NE(arbor_traverse_deref_table_get(ctx, 0, t, &err), nullptr);

    // Nothing was set while the word was up.
    arbor_params_t* params = params_new();
    uint32_t ok = 0;
    arbor_params_t_set_last(ctx, 0, params, t, &ok);
    TraversalView v = params_traversals(params).at(0);
    EXPECT_FALSE(v.pq_set);
    EXPECT_FALSE(v.pq_luid);
    EXPECT_FALSE(v.key_luid || v.key_field_id || v.key_data || v.id_vec[0]);

    ok = 0;
    arbor_traverse_arbor_id_vec_set(ctx, 0, t, 2, id, &ok);
    EXPECT_EQ(ok, uint32_t(EINVAL));
    arbor_id_destroy(ctx, 0, id);
    params_free(params);
}

TEST_F(Traversal, SetLastWithAPendingErrorLeavesTheTraversalToTheCaller) {
    arbor_params_t* params = params_new();
    arbor_traverse* t = arbor_traverse_create(ctx, 0);
    uint32_t err = 5;
    arbor_params_t_set_last(ctx, 0, params, t, &err);
    EXPECT_EQ(err, 5u);
    EXPECT_TRUE(params_traversals(params).empty());
    arbor_traverse_destroy(ctx, 0, t);   // what the traversers do on a pending error

    // A traversal destroyed after the request took it is taken out of the request, so
    // that freeing the request does not free it twice.
    arbor_traverse* kept = arbor_traverse_create(ctx, 0);
    arbor_traverse* gone = arbor_traverse_create(ctx, 0);
    err = 0;
    arbor_params_t_set_last(ctx, 0, params, kept, &err);
    arbor_params_t_set_last(ctx, 0, params, gone, &err);
    arbor_params_t_set_last(ctx, 0, params, gone, &err);   // twice is refused
    EXPECT_EQ(err, uint32_t(EINVAL));
    arbor_traverse_destroy(ctx, 0, gone);
    EXPECT_EQ(params_traversals(params).size(), 1u);
    params_free(params);
}

TEST_F(Traversal, ColumnListAddsUntilTheWordIsSet) {
    arbor_ntlist* list = ntlist_new();
    uint32_t err = 0;
    char name[32] = "peer_server_key";
    arbor_fe_ntlist_add(list, name, 8, &err);
    std::strcpy(name, "compound_0.x");   // the list copied the name
    arbor_fe_ntlist_add(list, name, 103, &err);
    fault_fail_nth("arbor_fe_ntlist_add", 1);
    arbor_fe_ntlist_add(list, "lost", 4, &err);
    EXPECT_EQ(err, uint32_t(EIO));
    arbor_fe_ntlist_add(list, "after", 4, &err);   // with the word set nothing is added
    EXPECT_EQ(err, uint32_t(EIO));
    const auto& e = ntlist_entries(list);
    ASSERT_EQ(e.size(), 2u);
    EXPECT_EQ(e[0].name, "peer_server_key");
    EXPECT_EQ(e[0].code, 8u);
    EXPECT_EQ(e[1].name, "compound_0.x");
    ntlist_free(list);
}

TEST(Registration, CapturesBothCallsPerContext) {
    registration_reset();
    static const char context[] = "zan_config_db_context";
    auto lookup = [](const char*) -> const void* { return nullptr; };
    int lut = 0, gx = 0, gx_type = 0, type_gx = 0;
    EXPECT_EQ(registration(context), nullptr);
    arbor_register_fe_vectors(context, nullptr, lookup, lookup, nullptr, nullptr, &lut, &lut);
    EXPECT_EQ(arbor_register_fe_gx_vectors(context, &gx, &gx_type, nullptr, &type_gx), 0);
    const Registration* r = registration("zan_config_db_context");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->context_ptr, context);
    EXPECT_EQ(r->gx_context_ptr, context);
    EXPECT_EQ(r->table_lookup, +lookup);
    EXPECT_EQ(r->type_dispatch_type_lut, &lut);
    EXPECT_EQ(r->gx_dispatch, &gx);
    EXPECT_EQ(r->type_gx_lut, &type_gx);
    EXPECT_EQ(r->fe_vector_calls, 1);

    fault_fail_always("arbor_register_fe_gx_vectors", true);
    EXPECT_NE(arbor_register_fe_gx_vectors(context, nullptr, nullptr, nullptr, nullptr), 0);
    fault_clear_all();
    EXPECT_EQ(r->gx_vector_calls, 2);
    EXPECT_EQ(r->gx_dispatch, &gx);   // a failed call hands nothing over
    EXPECT_EQ(registration("other"), nullptr);
    registration_reset();
}

TEST(RecordSchema, StoredErrorIsPerThread) {
    rsl_stored_error_clear();
    int engine_ctx = 0;
    rsl_store_err(&engine_ctx, 14);
    ASSERT_TRUE(rsl_stored_error());
    EXPECT_EQ(rsl_stored_error()->number, 14u);
    EXPECT_EQ(rsl_stored_error()->ctx, &engine_ctx);
    std::optional<StoredError> other;
    std::thread([&] { other = rsl_stored_error(); }).join();
    EXPECT_FALSE(other);
    rsl_stored_error_clear();
}
