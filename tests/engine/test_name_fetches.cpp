// Name fetches. Every exported path traverser asks the platform for the segment's name
// itself, and an exported dispatcher asks its traversers in chain order (the order of the
// positions), stopping at the first one that takes the segment: the dispatchers compile
// their chains with the traversers' compares inline, and this keeps that from ever fetching
// a name once for several traversers, or asking them in another order. The top dispatcher
// fetches each segment's name once and goes straight to the traverser that has it; only a
// listing ("*") runs the chain, every traverser fetching for itself.
//
// The binary puts its own gx_do_uri_segment_get_name in front of the platform's (the front
// end's import binds to the executable's definition first) and counts the calls.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "exported_chain.hpp"
#include "shared_engine.hpp"

namespace {
std::atomic<long> g_fetches{0};
}

extern "C" const char* gx_do_uri_segment_get_name(gx_do_uri_segment* segment) {
    using get_name_fn = const char* (*)(gx_do_uri_segment*);
    static const auto platform = reinterpret_cast<get_name_fn>(dlsym(RTLD_NEXT, "gx_do_uri_segment_get_name"));
    g_fetches.fetch_add(1, std::memory_order_relaxed);
    return platform(segment);
}

// A nested column description is reached through its exported name: the executable's
// vrf_name_to_ntlist stands in front of the library's, counts and hands on.
namespace {
std::atomic<long> g_nested_columns{0};
void* fe_library() {   // the engine's: already loaded
    static void* h = dlopen(zan::engine::Engine::default_library_path().c_str(), RTLD_NOW | RTLD_NOLOAD);
    return h;
}
}  // namespace

extern "C" int32_t vrf_name_to_ntlist(arbor_ntlist* list, const char* prefix, uint32_t* err) {
    using ntlist_fn = int32_t (*)(arbor_ntlist*, const char*, uint32_t*);
    g_nested_columns.fetch_add(1, std::memory_order_relaxed);
    return reinterpret_cast<ntlist_fn>(dlsym(fe_library(), "vrf_name_to_ntlist"))(list, prefix, err);
}

namespace {

// The objects of one request: its path, the two marker lists (absent without `lists`), the
// traversals and the slot cell; released in the order an engine releases them.
struct Request {
    gx_do_uri* uri;
    gx_do_nlist* pd;
    gx_do_nlist* pdc;
    arbor_params_t* params = zan::plat::params_new();
    const void* slot = nullptr;

    Request(const std::vector<zan::plat::UriSegment>& path, bool lists)
        : uri(zan::plat::uri_new(path)),
          pd(lists ? gx_do_nlist_new() : nullptr),
          pdc(lists ? gx_do_nlist_new() : nullptr) {}
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() {
        zan::plat::params_free(params);
        if (pd) gx_do_nlist_deref(pd);
        if (pdc) gx_do_nlist_deref(pdc);
        zan::plat::uri_deref(uri);
    }
};

// Name fetches of one request through the registered dispatcher, with or without lists.
long fetches(const std::vector<zan::plat::UriSegment>& path, bool lists = false) {
    Request r(path, lists);
    g_fetches.store(0);
    engine().dispatcher()(zan::engine::Engine::context(), 0, 0, r.uri, r.pd, r.pdc, r.params, 0,
                          zan::engine::k_kind_read_row, &r.slot);
    return g_fetches.load();
}

// Name fetches of one segment offered to the exported dispatchers in chain order, as the
// segment loop of an engine of its own would: until one answers anything but "not here".
long chain_fetches(const std::string& name, bool lists = false) {
    Request r({{name, std::nullopt}}, lists);
    gx_do_uri_segment* segment = gx_do_uri_get_segment(r.uri, 1);
    g_fetches.store(0);
    for (exported_dispatcher d : exported_chain(engine())) {
        if (d(zan::engine::Engine::context(), 0, 0, segment, r.pd, r.pdc, r.params, 0, zan::engine::k_kind_read_row,
              &r.slot, 0) != 3)
            break;
    }
    return g_fetches.load();
}

// Place of each segment name in the chain, counted from 1.
const std::map<std::string, long>& chain_place() {
    static const auto places = [] {
        std::map<std::string, long> m;
        long k = 0;
        for (const zan::db::TableInfo* p : zan::db::positions()) m.emplace(std::string(p->segment), ++k);
        return m;
    }();
    return places;
}

TEST(NameFetches, TheExportedChainFetchesOncePerTraverserItAsks) {
    engine();
    const long all = static_cast<long>(zan::db::positions().size());
    EXPECT_EQ(chain_fetches("no_such_segment"), all);
    EXPECT_EQ(chain_fetches("no_such_segment", true), all);
    // A listing runs the whole chain as well.
    EXPECT_EQ(chain_fetches("*", true), all);
    ASSERT_EQ(chain_place().size(), zan::db::positions().size()) << "segment names are not unique";
    // Whatever the request then makes of it (a missing key, a child without its parent),
    // the traversers after the one that recognised the name are not asked.
    for (const auto& [segment, place] : chain_place()) EXPECT_EQ(chain_fetches(segment), place) << segment;
}

TEST(NameFetches, TheTopDispatcherFetchesEachSegmentsNameOnce) {
    engine();
    EXPECT_EQ(fetches({{"no_such_segment", std::nullopt}}), 1);
    EXPECT_EQ(fetches({{"no_such_segment", std::nullopt}}, true), 1);
    for (const auto& [segment, place] : chain_place()) EXPECT_EQ(fetches({{segment, std::nullopt}}), 1) << segment;
}

TEST(NameFetches, AListingRunsTheWholeChain) {
    engine();
    const long all = static_cast<long>(zan::db::positions().size());
    // The loop's own fetch, then every traverser's.
    EXPECT_EQ(fetches({{"*", std::nullopt}}, true), 1 + all);
    EXPECT_EQ(fetches({{"*", std::nullopt}}), 1 + all);
}

TEST(NameFetches, EverySegmentOfAConfiguredRowsPathIsFetchedOnce) {
    const zan::db::Store& store = default_store();
    size_t rows = 0;
    for (const zan::db::TableInfo* t : zan::db::tables()) {
        for (const zan::db::Row* row : store.rows(*t)) {
            const std::vector<zan::plat::UriSegment> path = zan::engine::row_segments(*row);
            EXPECT_EQ(fetches(path, true), static_cast<long>(path.size())) << t->name;
            ++rows;
        }
    }
    EXPECT_GT(rows, 0u);
}

}  // namespace

TEST(NestedColumns, GoThroughTheExportedNames) {
    engine();
    using ntlist_fn = int32_t (*)(arbor_ntlist*, const char*, uint32_t*);
    void* lib = fe_library();
    ASSERT_NE(lib, nullptr);
    const auto vrf_info = reinterpret_cast<ntlist_fn>(dlsym(lib, "vrf_info_to_ntlist"));
    ASSERT_NE(vrf_info, nullptr);
    arbor_ntlist* list = zan::plat::ntlist_new();
    uint32_t err = 0;
    g_nested_columns.store(0);
    EXPECT_EQ(vrf_info(list, "", &err), 0);
    EXPECT_EQ(g_nested_columns.load(), 1) << "vrf_info's nested vrf_name through its exported name";
    ASSERT_FALSE(zan::plat::ntlist_entries(list).empty());
    EXPECT_EQ(zan::plat::ntlist_entries(list).back().name, "namestr");
    zan::plat::ntlist_free(list);
}
