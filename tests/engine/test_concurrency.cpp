// Many threads resolving and rendering at once, each with its own request objects and
// lists, produce exactly what one thread produces alone. Run under the thread sanitizer
// in CI.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "zan/config.hpp"
#include "zan/database.hpp"
#include "zan/engine.hpp"
#include "zan/platform.hpp"

#include "shared_engine.hpp"

namespace {

namespace db = zan::db;
namespace plat = zan::plat;

// What one row comes to: the dispatcher's answer, the rows the walk finds, and the
// row rendered through its table's slot 2.
std::string outcome(const zan::engine::Engine& e, const db::Store& store, const db::Row& row) {
    zan::engine::Request req;
    req.segments = zan::engine::row_segments(row);
    req.kind = zan::engine::k_kind_read_row;
    const zan::engine::Response r = e.request(req);
    std::string out = "code " + std::to_string(r.code);
    if (r.code != 1) return out;
    const zan::engine::Walk w = zan::engine::walk(store, r.traversals);
    out += " rows " + std::to_string(w.rows.size());
    for (const db::Row* found : w.rows) {
        const auto t = e.find_table(db::table_of(*found).name);
        if (!t || t->gx->to_properties == nullptr) return out + " no renderer";
        gx_do_properties* props = plat::properties_new();
        uint32_t err = 0;
        const int32_t status = t->gx->to_properties(zan::engine::Engine::context(), 0, found, props, 1, &err);
        out += " status " + std::to_string(status) + " err " + std::to_string(err);
        for (const plat::NamedValue& nv : plat::properties_items(props))
            out += "\n" + nv.name + "=" + plat::to_text(nv.value) + (nv.value.is_default ? " d" : "");
        plat::properties_deref(props);
    }
    return out;
}

}  // namespace

TEST(Concurrency, EightThreadsGetWhatOneThreadGets) {
    const zan::engine::Engine& e = engine();
    const db::Store& store = default_store();
    std::vector<const db::Row*> rows;
    for (const db::TableInfo* t : db::tables())
        for (const db::Row* r : store.rows(*t)) rows.push_back(r);
    ASSERT_GT(rows.size(), 400u);

    std::vector<std::string> alone;
    for (const db::Row* r : rows) alone.push_back(outcome(e, store, *r));
    size_t resolved = 0;
    for (const std::string& o : alone) resolved += o.rfind("code 1 rows 1 status 0 err 0", 0) == 0;
    EXPECT_EQ(resolved, rows.size()) << "every row of the default configuration resolves and renders";

    // Each thread walks all rows from its own starting point; every fourth step it goes
    // back to row 0, so that identical requests overlap as well as different ones.
    constexpr int k_threads = 8;
    std::atomic<long> mismatches{0};
    const long before = plat::alloc_live();
    const long objects = plat::live_objects().total();
    std::vector<std::thread> threads;
    for (int t = 0; t < k_threads; ++t)
        threads.emplace_back([&, t] {
            for (size_t i = 0; i < rows.size(); ++i) {
                const size_t k = (i % 4 == 3) ? 0 : (i + size_t(t) * rows.size() / k_threads) % rows.size();
                if (outcome(e, store, *rows[k]) != alone[k]) ++mismatches;
            }
        });
    for (auto& th : threads) th.join();
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_EQ(plat::alloc_live(), before);
    EXPECT_EQ(plat::live_objects().total(), objects);
}
