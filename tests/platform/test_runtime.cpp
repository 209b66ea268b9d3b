// Allocator, trace, bounded strings, fault injection, and concurrent use.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

#include "leak_check.hpp"

using namespace zan::plat;

namespace {

uint64_t type_cell, pool_cell;

void* tmalloc(uint32_t tag, const char* type, size_t n) {
    return __tallow_malloc(tag, &type_cell, type, &pool_cell, "default", n);
}

const AllocSite* find_site(const std::vector<AllocSite>& sites, uint32_t tag, const std::string& type) {
    auto it = std::find_if(sites.begin(), sites.end(),
                           [&](const AllocSite& s) { return s.tag == tag && s.type_name == type; });
    return it == sites.end() ? nullptr : &*it;
}

const char* const k_formats[] = {
    "   Found path : %s\\n",
    " nvlist_num = %d",
    " no space in buffer for attribute name %s.Availbale length is %zu",
    " PD add FE Path %s uri: %s",
    " Set arbor query inst failed, RSL err %u",
    " %s rendering error %u",
    " lengths %u %u",
    " null arguments, 100%%",
};
const lt_unit k_unit = {"test_unit", 8, k_formats};

}  // namespace

class Allocator : public LeakChecked {};

TEST_F(Allocator, AccountsPerSiteAndTypeAndFreesNull) {
    __tallow_free(nullptr);
    long count0 = alloc_count();
    void* a = tmalloc(0x1862F401, "BYTE*", 16);
    void* b = tmalloc(0x1862F401, "gx_do_value*", 16);
    char* c = __tallow_strdup(0x1861FC00, &type_cell, "BYTE", &pool_cell, "default", "singleton_id");
    ASSERT_TRUE(a && b && c);
    EXPECT_STREQ(c, "singleton_id");
    EXPECT_EQ(reinterpret_cast<uintptr_t>(a) % 16, 0u);
    EXPECT_EQ(alloc_count() - count0, 3);
    auto sites = alloc_sites();
    const AllocSite* s = find_site(sites, 0x1862F401, "BYTE*");
    ASSERT_TRUE(s);
    long total_before = s->total;
    EXPECT_GE(s->live, 1);
    __tallow_free(a);
    __tallow_free(b);
    __tallow_free(c);
    sites = alloc_sites();
    EXPECT_EQ(find_site(sites, 0x1862F401, "BYTE*")->total, total_before);
    EXPECT_EQ(find_site(sites, 0x1862F401, "BYTE*")->live, 0);
    EXPECT_EQ(find_site(sites, 0x1861FC00, "BYTE")->live, 0);
}

TEST_F(Allocator, InjectsByPositionAndBySite) {
    alloc_fail_nth(2);
    void* first = tmalloc(1, "BYTE", 8);
    void* second = tmalloc(2, "BYTE", 8);
    void* third = tmalloc(1, "BYTE", 8);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_TRUE(third);
    __tallow_free(first);
    __tallow_free(third);

    alloc_fail_site(0x1862F403u);
    EXPECT_EQ(tmalloc(0x1862F403u, "BYTE", 8), nullptr);
    EXPECT_EQ(__tallow_strdup(0x1862F403u, &type_cell, "BYTE", &pool_cell, "default", "x"), nullptr);
    void* other = tmalloc(0x1862F404u, "BYTE", 8);
    EXPECT_TRUE(other);
    __tallow_free(other);
    alloc_fail_site(std::nullopt);
    void* again = tmalloc(0x1862F403u, "BYTE", 8);
    EXPECT_TRUE(again);
    __tallow_free(again);
}

// Freed small blocks are handed out again (outside the sanitizer builds): every size up to
// past the largest class, live at once, keeps its own bytes, and the counts come back even.
TEST_F(Allocator, ReusedBlocksKeepTheirBytesAndTheirAccounts) {
    const long live0 = alloc_live();
    for (int round = 0; round < 3; ++round) {
        std::vector<unsigned char*> blocks;
        for (size_t n = 0; n <= 300; n += 7) {
            auto* p = static_cast<unsigned char*>(tmalloc(0x1862F405u, "BYTE", n));
            ASSERT_TRUE(p);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 16, 0u);
            std::memset(p, int(n & 0xff), n);
            blocks.push_back(p);
        }
        EXPECT_EQ(alloc_live() - live0, long(blocks.size()));
        for (size_t i = 0; i < blocks.size(); ++i) {
            const size_t n = i * 7;
            EXPECT_EQ(std::count(blocks[i], blocks[i] + n, static_cast<unsigned char>(n & 0xff)), long(n)) << n;
            __tallow_free(blocks[i]);
        }
        EXPECT_EQ(alloc_live(), live0);
    }
}

// The allocator's own check, or, in the sanitizer builds (which keep no freed block), the
// address sanitizer's.
TEST(AllocatorDeathTest, FreeingABlockTwiceStopsTheProcess) {
    EXPECT_DEATH(
        {
            void* p = tmalloc(0x1862F406u, "BYTE", 24);
            __tallow_free(p);
            __tallow_free(p);
        },
        "already free|heap-use-after-free");
}

TEST_F(Allocator, TraversalObjectsSpendThePendingSiteTag) {
    tallow_set_callsite_tag(0x1862F7FF);
    arbor_traverse* t = arbor_traverse_create(nullptr, 0);
    ASSERT_TRUE(t);
    const AllocSite* s = nullptr;
    auto sites = alloc_sites();
    s = find_site(sites, 0x1862F7FF, "arbor_traverse");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->live, 1);

    alloc_fail_site(0x1862F7FEu);
    tallow_set_callsite_tag(0x1862F7FE);
    EXPECT_EQ(arbor_id_create(nullptr, 0), nullptr);
    arbor_id* id = arbor_id_create(nullptr, 0);   // the tag was spent: this one is untagged
    ASSERT_TRUE(id);
    uint32_t err = 0;
    tallow_set_callsite_tag(0x1862F7FE);
    arbor_traverse_arbor_id_vec_set(nullptr, 0, t, 0, id, &err);
    EXPECT_EQ(err, uint32_t(ENOMEM));
    arbor_id_destroy(nullptr, 0, id);
    arbor_traverse_destroy(nullptr, 0, t);
}

TEST(Trace, CostsNothingWithoutASink) {
    trace_clear_sink();
    // Formatting this would read through a wild pointer; with nobody listening the call
    // must not look at its arguments at all.
    __LTf_1(&k_unit, 0, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, reinterpret_cast<const char*>(16));
    __LTf_0(nullptr, 12345, 0, LT_LEVEL_ERROR);
}

TEST(Trace, FormatsEachEntryForASink) {
    TraceCapture cap;
    __LTf_1(&k_unit, 0, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, "ntp_peer_server");
    __LTf_4(&k_unit, 1, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, uint32_t(-1));
    __LTf_15(&k_unit, 2, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, "pfx", size_t(256));
    __LTf_11(&k_unit, 3, g_arbor_fe_trace_module_id, LT_LEVEL_DEBUG, "P_tbl_x", "*");
    __LTf_4(&k_unit, 4, g_arbor_fe_trace_module_id, LT_LEVEL_ERROR, 28u);
    __LTf_14(&k_unit, 5, g_arbor_fe_trace_module_id, LT_LEVEL_FATAL, "om_node", 3u);
    __LTf_44(&k_unit, 6, g_arbor_fe_trace_module_id, LT_LEVEL_FATAL, 2u, 3u);
    __LTf_0(&k_unit, 7, g_arbor_fe_trace_module_id, LT_LEVEL_END);
    auto r = cap.records();
    ASSERT_EQ(r.size(), 8u);
    EXPECT_EQ(r[0].text, "   Found path : ntp_peer_server\\n");   // backslash-n stays two characters
    EXPECT_EQ(r[0].unit, "test_unit");
    EXPECT_EQ(r[0].index, 0u);
    EXPECT_EQ(r[0].level, uint32_t(LT_LEVEL_DEBUG));
    EXPECT_EQ(r[1].text, " nvlist_num = -1");
    EXPECT_EQ(r[2].text, " no space in buffer for attribute name pfx.Availbale length is 256");
    EXPECT_EQ(r[3].text, " PD add FE Path P_tbl_x uri: *");
    EXPECT_EQ(r[4].text, " Set arbor query inst failed, RSL err 28");
    EXPECT_EQ(r[5].text, " om_node rendering error 3");
    EXPECT_EQ(r[6].text, " lengths 2 3");
    EXPECT_EQ(r[7].text, " null arguments, 100%");
    EXPECT_EQ(r[7].level, uint32_t(LT_LEVEL_END));
}

TEST(Trace, WrongEntryOrIndexShowsAsText) {
    TraceCapture cap;
    __LTf_4(&k_unit, 0, 0, LT_LEVEL_DEBUG, 7u);           // "%s" with a number
    __LTf_1(&k_unit, 1, 0, LT_LEVEL_DEBUG, "x");          // "%d" with a string
    __LTf_0(&k_unit, 0, 0, LT_LEVEL_DEBUG);               // too few arguments
    __LTf_11(&k_unit, 0, 0, LT_LEVEL_DEBUG, "a", "b");    // too many
    __LTf_0(&k_unit, 99, 0, LT_LEVEL_DEBUG);
    auto r = cap.records();
    ASSERT_EQ(r.size(), 5u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(r[size_t(i)].text.rfind("<arguments do not match>", 0), 0u) << i;
    EXPECT_EQ(r[4].text, "<no message 99>");
}

TEST(Trace, CapturesNestAndPutTheEarlierSinkBack) {
    std::atomic<int> outer{0};
    trace_set_sink([&](const TraceRecord&) { ++outer; });
    {
        TraceCapture cap;
        __LTf_0(&k_unit, 7, 0, LT_LEVEL_END);
        EXPECT_EQ(cap.records().size(), 1u);
        cap.clear();
        EXPECT_TRUE(cap.records().empty());
    }
    __LTf_0(&k_unit, 7, 0, LT_LEVEL_END);
    trace_clear_sink();
    __LTf_0(&k_unit, 7, 0, LT_LEVEL_END);
    EXPECT_EQ(outer.load(), 1);
}

TEST(BoundedStrings, StrcatSAppendsOrRefusesLeavingDestEmpty) {
    char buf[8] = "ab";
    EXPECT_EQ(strcat_s(buf, sizeof buf, "cdefg"), 0);   // exactly fills the 8 bytes
    EXPECT_STREQ(buf, "abcdefg");
    EXPECT_NE(strcat_s(buf, sizeof buf, "h"), 0);
    EXPECT_STREQ(buf, "");
    std::strcpy(buf, "ab");
    EXPECT_NE(strcat_s(buf, sizeof buf, nullptr), 0);
    EXPECT_STREQ(buf, "");
    EXPECT_NE(strcat_s(nullptr, 4, "x"), 0);
    std::memset(buf, 'z', sizeof buf);                  // no terminator within room
    EXPECT_NE(strcat_s(buf, sizeof buf, "x"), 0);
    EXPECT_EQ(buf[0], '\0');
    std::strcpy(buf, "ab");
    EXPECT_NE(strcat_s(buf, 0, "x"), 0);
    EXPECT_STREQ(buf, "ab");                            // room 0: nothing may be written
    EXPECT_NE(strcat_s(buf, sizeof buf, buf + 1), 0);   // overlapping source
}

TEST(BoundedStrings, NameBufferWithA255CharacterPrefix) {
    // A 257-byte name buffer with a 255-character prefix leaves room for one character
    // of attribute text at the tail; a longer text is refused and the prefix survives.
    char name[257] = {};
    std::string prefix(255, 'p');
    ASSERT_EQ(strcat_s(name, sizeof name, prefix.c_str()), 0);
    char* tail = name + 255;
    EXPECT_NE(strcat_s(tail, sizeof name - 255, "ab"), 0);
    EXPECT_EQ(std::string(name), prefix);
    EXPECT_EQ(strcat_s(tail, sizeof name - 255, "a"), 0);
    EXPECT_EQ(std::strlen(name), 256u);
}

TEST(BoundedStrings, StrcatToBufTruncates) {
    char buf[6] = "ab";
    __strcat_to_buf(sizeof buf, buf, "cdefgh");
    EXPECT_STREQ(buf, "abcde");
    __strcat_to_buf(sizeof buf, buf, "x");
    EXPECT_STREQ(buf, "abcde");
    __strcat_to_buf(0, buf, "x");
    __strcat_to_buf(sizeof buf, buf, nullptr);
    EXPECT_STREQ(buf, "abcde");
}

class Faults : public LeakChecked {};

TEST_F(Faults, NthCallFromNowFailsOnce) {
    long calls = fault_calls("gx_do_vlist_new");
    fault_fail_nth("gx_do_vlist_new", 2);
    gx_do_vlist* a = gx_do_vlist_new();
    gx_do_vlist* b = gx_do_vlist_new();
    gx_do_vlist* c = gx_do_vlist_new();
    EXPECT_TRUE(a);
    EXPECT_FALSE(b);
    EXPECT_TRUE(c);
    EXPECT_EQ(fault_calls("gx_do_vlist_new") - calls, 3);
    gx_do_vlist_deref(a);
    gx_do_vlist_deref(c);
}

TEST_F(Faults, EachOperationAnswersItsFailureValue) {
    for (const char* p : {"gx_do_nlist_new", "gx_do_nvlist_new", "gx_do_strbuf_new", "gx_do_nlist_add_string",
                          "gx_do_vlist_add_null", "gx_do_vlist_add_array", "gx_do_vlist_add_sequence",
                          "gx_do_vlist_add_mr_uri", "gx_do_vlist_add_all", "gx_do_nvlist_add_null",
                          "gx_do_properties_set_null", "gx_do_properties_set_array", "gx_do_strbuf_add_string",
                          "gx_do_vlist_add_value", "gx_do_nvlist_add_value", "gx_do_properties_set_value",
                          "arbor_traverse_create", "arbor_id_create", "arbor_params_t_set_last"})
        fault_fail_always(p, true);
    EXPECT_EQ(gx_do_nlist_new(), nullptr);
    EXPECT_EQ(gx_do_nvlist_new(), nullptr);
    EXPECT_EQ(gx_do_strbuf_new(), nullptr);
    EXPECT_EQ(arbor_traverse_create(nullptr, 0), nullptr);
    EXPECT_EQ(arbor_id_create(nullptr, 0), nullptr);

    gx_do_vlist* v = gx_do_vlist_new();   // not armed
    gx_do_properties* p = properties_new();
    gx_do_uri* uri = uri_new({});
    EXPECT_LT(gx_do_vlist_add_null(v), 0);
    EXPECT_LT(gx_do_vlist_add_array(v, v), 0);
    EXPECT_LT(gx_do_vlist_add_mr_uri(v, uri), 0);
    EXPECT_LT(gx_do_vlist_add_all(v, v), 0);
    EXPECT_LT(vlist_add(v, Value{}), 0);
    EXPECT_EQ(gx_do_vlist_get_len(v), 0);
    EXPECT_LT(gx_do_properties_set_null(p, "a"), 0);
    EXPECT_LT(gx_do_properties_set_array(p, "a", v), 0);
    EXPECT_LT(properties_set(p, "a", Value{}), 0);
    EXPECT_TRUE(properties_items(p).empty());

    fault_fail_always("arbor_traverse_create", false);
    arbor_params_t* params = params_new();
    arbor_traverse* t = arbor_traverse_create(nullptr, 0);
    uint32_t err = 0;
    arbor_params_t_set_last(nullptr, 0, params, t, &err);
    EXPECT_EQ(err, uint32_t(EIO));
    EXPECT_TRUE(params_traversals(params).empty());   // not taken: the caller destroys it
    arbor_traverse_destroy(nullptr, 0, t);
    params_free(params);

    fault_clear_all();
    EXPECT_GT(gx_do_vlist_add_null(v), 0);
    uri_deref(uri);
    properties_deref(p);
    gx_do_vlist_deref(v);
}

TEST_F(Faults, AccessorAndOtherNamedPoints) {
    long before = fault_calls("accessor");
    EXPECT_FALSE(fault_hit("accessor"));
    fault_fail_nth("accessor", 2);
    EXPECT_FALSE(fault_hit("accessor"));
    EXPECT_TRUE(fault_hit("accessor"));
    EXPECT_FALSE(fault_hit("accessor"));
    EXPECT_EQ(fault_calls("accessor") - before, 4);

    long custom = fault_calls("db_custom");
    EXPECT_FALSE(fault_hit("db_custom"));
    fault_fail_always("db_custom", true);
    EXPECT_TRUE(fault_hit("db_custom"));
    EXPECT_TRUE(fault_hit("db_custom"));
    fault_clear_all();
    EXPECT_FALSE(fault_hit("db_custom"));
    EXPECT_EQ(fault_calls("db_custom") - custom, 4);
    EXPECT_EQ(fault_calls("never_seen"), 0);
}

TEST(Concurrency, IndependentThreadsStayCleanAndCountsAddUp) {
    fault_clear_all();
    const long objects0 = live_objects().total(), traversals0 = live_traversals(), allocs0 = alloc_live();
    const long strbuf_calls0 = fault_calls("gx_do_strbuf_new");
    constexpr int k_threads = 4, k_rounds = 2000;
    std::atomic<int> failed_strbufs{0}, bad{0};
    TraceCapture cap;
    fault_fail_nth("gx_do_strbuf_new", 777);   // exactly one call of all threads fails
    std::vector<std::thread> threads;
    for (int n = 0; n < k_threads; ++n)
        threads.emplace_back([&, n] {
            for (int i = 0; i < k_rounds; ++i) {
                gx_do_properties* p = properties_new();
                gx_do_vlist* v = gx_do_vlist_new();
                gx_do_vlist_add_null(v);
                gx_do_properties_set_array(p, "arr", v);
                gx_do_vlist_deref(v);
                gx_do_strbuf* b = gx_do_strbuf_new();
                if (!b) ++failed_strbufs;
                gx_do_strbuf_deref(b);
                arbor_params_t* params = params_new();
                uint32_t err = 0;
                tallow_set_callsite_tag(0x1862F400u | uint32_t(n));
                arbor_params_t_set_last(nullptr, 0, params, arbor_traverse_create(nullptr, 0), &err);
                void* mem = tmalloc(0x1862F500u | uint32_t(n), "BYTE", 32);
                if (err || !mem || params_traversals(params).size() != 1 || properties_items(p).size() != 1) ++bad;
                __tallow_free(mem);
                params_free(params);
                properties_deref(p);
                __LTf_4(&k_unit, 1, 0, LT_LEVEL_DEBUG, uint32_t(i));
            }
        });
    for (auto& t : threads) t.join();
    fault_clear_all();
    EXPECT_EQ(bad.load(), 0);
    EXPECT_EQ(failed_strbufs.load(), 1);
    EXPECT_EQ(fault_calls("gx_do_strbuf_new") - strbuf_calls0, k_threads * k_rounds);
    EXPECT_EQ(cap.records().size(), size_t(k_threads * k_rounds));
    EXPECT_EQ(live_objects().total(), objects0);   // includes the counts of finished threads
    EXPECT_EQ(live_traversals(), traversals0);
    EXPECT_EQ(alloc_live(), allocs0);
}
